// check.h - walking a text with the engine: the settings of a run, the
// suggestions for a finding, and the check of a whole stream in blocks.
#ifndef LXSPELL_CHECK_H
#define LXSPELL_CHECK_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <lxengine.h>

#include "rank.h"
#include "report.h"
#include "text.h"

namespace lxspell {

// The option bits for English prose: the engine's own session defaults,
// 755344 (0xB8690: report capitalisation, check spelling, case sensitive,
// split at hyphens, typographic suggestions, strip possessives, pass words
// without letters, accents on capitals significant), with repeated words
// reported and addresses passed over: 1017744 (0xF8790).
inline constexpr uint32_t kDefaultOptions = 755344 | LX_OPT_REPORT_REPEATED | LX_OPT_IGNORE_ADDRESSES;
static_assert(kDefaultOptions == 1017744);
inline constexpr int32_t kDefaultDepth = 30;
inline constexpr int32_t kDefaultBudget = 256 * 1024;
inline constexpr int32_t kMaxSuggestions = 10;

struct Settings {
    uint32_t options = kDefaultOptions;
    int32_t depth = kDefaultDepth;
    int32_t budget = kDefaultBudget;
    Encoding encoding = Encoding::Utf8;
    bool encodingChosen = false; // --encoding given
    // A block that isn't valid UTF-8 is taken as ISO 8859-1, and its words
    // are shown in it: for editors (-l) that talk ISO 8859-1.
    bool latin1Fallback = false;
    Rank rank = Rank::Own;
};

// What to offer for a finding: the replacement the engine gave (repl) for
// a change, a capitalisation, a mixed case or digits, and LX_Suggest's
// ranked list for a misspelling. Words in the engine's form.
std::vector<RawSuggestion> suggestions_for(int32_t result, const char *word, const char *repl,
                                           LX_Lexicon *const *lexicons, const Settings &s);

// Checks the stream fp, named `name` in reports, and hands every finding
// to reporter (which, for Format::List, gets no suggestions and no
// positions). Returns false after a read error or invalid UTF-8, with a
// one-line message in err.
bool check_stream(FILE *fp, const std::string &name, LX_Lexicon *const *lexicons, const Settings &s,
                  Reporter &reporter, std::string &err);

} // namespace lxspell

#endif

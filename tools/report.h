// report.h - how lxspell shows a finding: the line compilers use
// (FILE:LINE:COLUMN: WORD: what (s1, s2, ...)), with colour on a terminal,
// one JSON object per line, or the bare word for `lxspell list`.
#ifndef LXSPELL_REPORT_H
#define LXSPELL_REPORT_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "text.h"

namespace lxspell {

struct Suggestion {
    std::string word; // in UTF-8
    int score;        // 0 to 100
};

// One report of the engine on one word, ready to print.
struct Finding {
    std::string file;  // as the user named it, "<stdin>" for standard input
    Position pos;      // of the word's first character
    std::string word;  // in UTF-8
    int32_t result;    // the LX_RES_... bits
    std::vector<Suggestion> suggestions;
};

// The names of the result bits, most telling first: "auto-change",
// "conditional change", "capitalisation", "misspelled", "mixed case",
// "digits", "repeated word". "misspelled" is left out where
// "capitalisation" says more.
std::vector<const char *> result_names(int32_t result);

// True for the results `lxspell list` prints: the word is wrong, not only
// repeated or of an unusual form.
bool is_misspelling(int32_t result);

enum class Format { Text, Json, List };
enum class ColorMode { Auto, Always, Never };

// Whether to colour: --color, then NO_COLOR, then whether out is a
// terminal.
bool use_color(ColorMode mode, FILE *out);

class Reporter {
public:
    Reporter(FILE *out, Format format, bool color) : out_(out), format_(format), color_(color) {}
    void report(const Finding &f);
    size_t count() const { return count_; }
    Format format() const { return format_; }

private:
    FILE *out_;
    Format format_;
    bool color_;
    size_t count_ = 0;
};

// A JSON string literal of a UTF-8 text.
std::string json_quote(const std::string &s);

} // namespace lxspell

#endif

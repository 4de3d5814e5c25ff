// check.cpp - the walk over a stream for `lxspell check` and `lxspell list`.
//
// The engine wants a NUL-terminated text in ISO 8859-1. The stream is read
// in blocks that end at a line end, converted, and walked with
// LX_CheckText / LX_NextTextWord. The engine finds the word before a word
// in the text itself (for the repeated-word test), so each block is preceded
// by the tail of the one before: a few bytes from a blank on, which the
// walk starts behind. Only the cursor's start moves past them.
#include "check.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace lxspell {

namespace {

// Bytes of the previous block kept in front of the next one: more than
// the longest word the engine compares (80), with the blanks around it.
constexpr size_t kCarry = 128;

bool is_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// The tail of text to put before the next block: from the first blank of
// its last kCarry bytes on.
std::string_view carry_of(std::string_view text) {
    size_t from = text.size() > kCarry ? text.size() - kCarry : 0;
    if (from > 0) {
        while (from < text.size() && !is_space(text[from])) ++from;
    }
    return text.substr(from);
}

// LX_Suggest's list for word, in its order, keeping up to capacity.
std::vector<RawSuggestion> engine_suggestions(const char *word, int32_t depth, int32_t capacity,
                                              LX_Lexicon *const *lexicons, uint32_t options) {
    std::vector<SuggEntry> entries(static_cast<size_t>(capacity));
    SuggSet set{entries.data(), 0, capacity};
    const int32_t n = LX_Suggest(word, depth, lexicons, options, &set);
    std::vector<RawSuggestion> out;
    out.reserve(static_cast<size_t>(n));
    for (int32_t i = 0; i < n; ++i) out.push_back({entries[i].word, entries[i].score});
    return out;
}

// Candidates taken from each search, and the depth of the second search,
// made when the depth asked for is from kShallowest up to kDeep. A depth-40
// search compares the word with the words of every segment whose key is
// near its beginning, several times the cost of one at 30; at 100
// every segment of a compressed lexicon is decoded.
constexpr int32_t kGather = 20, kShallowest = 30, kDeep = 40;

// lxspell's own ranking: more candidates than are shown, from the depth
// asked for and, unless one of them is a common slip away (a swap, a
// doubled letter, a vowel), from a deeper search too, which finds words
// two edits away (not below depth 30: a shallow depth asks for speed);
// then ordered by rank_candidates.
std::vector<RawSuggestion> gather(const char *word, LX_Lexicon *const *lexicons, const Settings &s) {
    std::vector<RawSuggestion> found = engine_suggestions(word, s.depth, kGather, lexicons, s.options);
    if (s.depth >= kShallowest && s.depth < kDeep && !has_slip(word, found)) {
        for (RawSuggestion &c : engine_suggestions(word, kDeep, kGather, lexicons, s.options)) {
            const bool seen = std::any_of(found.begin(), found.end(),
                                          [&](const RawSuggestion &f) { return f.word == c.word; });
            if (!seen) found.push_back(std::move(c));
        }
    }
    rank_candidates(word, found);
    return found;
}

} // namespace

std::vector<RawSuggestion> suggestions_for(int32_t result, const char *word, const char *repl,
                                           LX_Lexicon *const *lexicons, const Settings &s) {
    std::vector<RawSuggestion> out;
    const bool hasRepl = repl != nullptr && *repl != '\0' && std::strcmp(repl, word) != 0;
    if (result & (LX_RES_AUTO_CHANGE | LX_RES_COND_CHANGE | LX_RES_CAPITALISATION)) {
        if (hasRepl) out.push_back({repl, 99});
        return out;
    }
    if (result & LX_RES_MISSPELLED) {
        // A word the lexicon excludes may come with what it stores for it.
        if (hasRepl) out.push_back({repl, 99});
        std::vector<RawSuggestion> found =
            s.rank == Rank::Engine ? engine_suggestions(word, s.depth, kMaxSuggestions, lexicons, s.options)
                                   : gather(word, lexicons, s);
        for (RawSuggestion &c : found) {
            if (out.size() == kMaxSuggestions) break;
            if (hasRepl && c.word == repl) continue;
            out.push_back(std::move(c));
        }
        return out;
    }
    if ((result & (LX_RES_MIXED_CASE | LX_RES_WITH_DIGITS)) && hasRepl) out.push_back({repl, 99});
    return out;
}

bool check_stream(FILE *fp, const std::string &name, LX_Lexicon *const *lexicons, const Settings &s,
                  Reporter &reporter, std::string &err) {
    const bool list = reporter.format() == Format::List;
    BlockReader reader(fp);
    PositionTracker tracker;
    Position blockStart;
    // text is the carry and the block in the engine's encoding, converted
    // in place behind the carry: the block itself stays in the reader.
    std::string_view block;
    std::string text, carry;
    // Room for a usual block and its carry at once, so that the text
    // isn't grown (and copied, and its old memory left behind) by a block
    // a little longer than the one before.
    text.reserve(kCarry + BlockReader::kBlockSize + 1);
    while (reader.next(block)) {
        text.assign(carry);
        const int32_t base = static_cast<int32_t>(text.size());
        Encoding enc = s.encoding;
        if (enc == Encoding::Utf8) {
            const size_t bad = utf8_to_latin1(block, text);
            if (bad != std::string_view::npos && s.latin1Fallback) {
                enc = Encoding::Latin1;
                text.resize(static_cast<size_t>(base));
                text.append(block);
            } else if (bad != std::string_view::npos) {
                tracker.begin_block(std::string_view(text).substr(static_cast<size_t>(base)), block, s.encoding,
                                    blockStart);
                err = name + ":" + std::to_string(tracker.end().line) +
                      ": invalid UTF-8 (use --encoding latin1 for ISO 8859-1 text)";
                return false;
            }
        } else {
            text.append(block);
        }
        // The engine's text ends at the first NUL: let one pass as a blank.
        std::replace(text.begin() + base, text.end(), '\0', ' ');
        const std::string_view latin1 = std::string_view(text).substr(static_cast<size_t>(base));
        if (!list) tracker.begin_block(latin1, block, enc, blockStart);

        char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
        int32_t cursor = base;
        for (;;) {
            const int32_t r = LX_CheckText(text.c_str(), lexicons, s.options, &cursor, word, sizeof word, repl,
                                           sizeof repl);
            if (r == LX_RES_NONE_LEFT || cursor < base) break;
            const size_t len = std::strlen(word);
            if (!touches_foreign(text, static_cast<size_t>(cursor), len) && (!list || is_misspelling(r))) {
                Finding f;
                f.file = name;
                f.word = list ? from_latin1(word, enc) : to_utf8(word);
                f.result = r;
                if (!list) {
                    f.pos = tracker.at(static_cast<size_t>(cursor - base));
                    for (const RawSuggestion &sg : suggestions_for(r, word, repl, lexicons, s))
                        f.suggestions.push_back({to_utf8(sg.word), sg.score});
                }
                reporter.report(f);
            }
            const int32_t next = LX_NextTextWord(text.c_str(), cursor, s.options);
            if (next < 0) break;
            cursor = next;
        }
        if (list) {
            blockStart.line += static_cast<uint64_t>(std::count(block.begin(), block.end(), '\n'));
        } else {
            blockStart = tracker.end();
        }
        carry = carry_of(latin1);
    }
    if (reader.failed()) {
        err = name + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

} // namespace lxspell

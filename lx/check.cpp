// check.cpp - finding the words of a text and judging them.
//
// The scanner says where words are: letters and digits, with hyphens, full
// stops and apostrophes between them, abbreviations with their final full
// stop, and by option addresses kept whole and mark-up passed over. The rule
// chain judges one word against the lexicon list: ignore options, lookups
// with case and accent variants, division of compounds, and the reports that
// need no lexicon. The driver walks a text and stops at the first word with
// something to report.
//
// Nothing here allocates or keeps state between calls: every buffer is
// automatic, and the state of a walk is the cursor alone.
#include "check.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "chartab.h"
#include "clex.h"
#include "lexicon.h"
#include "safestr.h"

namespace {

constexpr int32_t kMaxChars = LX_MAX_WORD_SZ - 1;

// Offsets into a text are signed 32-bit numbers, so the walk treats the
// byte at this offset as the end of the text: no word reaches it, and no
// offset past it is ever formed.
constexpr int32_t kCursorLimit = INT32_MAX;

// True if offset i is where the walk over text t ends.
inline bool at_walk_end(const uchar *t, int32_t i) { return i < 0 || i >= kCursorLimit || t[i] == 0; }

const uchar *bytes(const char *s) { return reinterpret_cast<const uchar *>(s); }

bool is_name_char(uchar c) { return lx_is_alnum(c) || c == '_' || c == '-'; }

// Mail test for an '@' at text[at]: looking ahead, the address must reach
// a full stop between two name characters before any other byte; and the
// '@' must stand between two name characters.
__attribute__((noinline)) bool mail_test(const uchar *t, int32_t at) {
    for (int32_t i = at + 1;; ++i) {
        if (i >= kCursorLimit) return false; // the end of what a walk reaches
        uchar c = t[i];
        if (c == '.') {
            if (is_name_char(t[i - 1]) && is_name_char(t[i + 1])) break;
        } else if (!is_name_char(c)) {
            return false;
        }
    }
    return is_name_char(t[at - 1]) && is_name_char(t[at + 1]);
}

// The answer of the underscore test for every '_' in [from, to): the look-
// ahead of each of them ends at the same byte, `to`. In a long run such as
// "a_a_a_..." every underscore would otherwise look ahead to the run's end
// again, which makes a walk over the run quadratic; with the answer kept
// for the length of a walk, each byte is looked at once.
struct UnderscoreCache {
    int32_t from = 0;
    int32_t to = 0;
    bool yes = false;
};

// Underscore test for a '_' at text[at]: looking ahead over name
// characters, full stops and '@', an '@' or a full stop between two name
// characters says yes.
__attribute__((noinline)) bool underscore_test(const uchar *t, int32_t at, UnderscoreCache &cache) {
    if (at >= cache.from && at < cache.to) return cache.yes;
    for (int32_t i = at + 1;; ++i) {
        uchar c = i < kCursorLimit ? t[i] : 0; // the end of what a walk reaches
        bool end = true, yes = false;
        if (c == '@') {
            yes = true;
        } else if (c == '.') {
            yes = is_name_char(t[i - 1]) && is_name_char(t[i + 1]);
            end = yes;
        } else {
            end = !is_name_char(c);
        }
        if (end) {
            cache = {at, i, yes};
            return yes;
        }
    }
}

bool has_run_of_three(const char *w, int32_t n) {
    int32_t run = 0;
    for (int32_t i = 0; i < n; ++i) {
        run = lx_is_alnum(lx_byte(w[i])) ? run + 1 : 0;
        if (run >= 3) return true;
    }
    return false;
}

bool is_entity_compare_equal(const char *name, const LX_EntityRow &row) {
    return LX_Str_Cmp(name, row.name) == 0;
}

} // namespace

// ------------------------------------------------------------------ scanner

int LX_IsLetterEntity(const char *name) {
    if (LX_Str_Cmp(name, "#146") == 0) return 1;
    const void *hit = std::bsearch(name, LX_ENTITY_TABLE, LX_ENTITY_COUNT, sizeof(LX_EntityRow),
                                   [](const void *k, const void *r) -> int {
                                       return LX_Entity_Compare(k, r);
                                   });
    return hit != nullptr && is_entity_compare_equal(name, *static_cast<const LX_EntityRow *>(hit));
}

int32_t LX_SkipToWord(const char *text, int32_t cursor, uint32_t options) {
    LX_ASSERT(text != NULL);
    if (cursor < 0) return LX_ERR_NOT_FOUND;
    const uchar *t = bytes(text);
    const bool markup = (options & LX_OPT_MARKUP) != 0;
    bool inTag = false, inEntity = false;
    int32_t entityStart = 0;
    int32_t i = cursor;
    for (; i < kCursorLimit && t[i] != 0; ++i) {
        uchar c = t[i];
        if (!inTag && !inEntity && lx_is_alnum(c)) return i;
        if (!markup) continue;
        if (c == '<') {
            inTag = true;
        } else if (c == '&' && !inTag) {
            inEntity = true;
            entityStart = i;
        } else if (c == '>' && inTag) {
            inTag = false;
        } else if (inEntity && c == ';') {
            inEntity = false;
            char name[LX_MAX_WORD_SZ];
            LX_Str_CopyN(name, sizeof name, text + entityStart + 1, i - entityStart - 1);
            if (LX_IsLetterEntity(name)) return entityStart;
        } else if (inEntity && (c == '\r' || c == '\n')) {
            inEntity = false;
        }
    }
    return i;
}

namespace {

// The word that begins at start, a position that LX_SkipToWord has given
// (it gives it again from there): stored in word, its length in *length.
int32_t extract_from(const char *text, int32_t start, uint32_t options, char *word, int32_t wordSz,
                     int32_t *length, UnderscoreCache &underscores) {
    const uchar *t = bytes(text);
    if (at_walk_end(t, start)) return LX_ERR_NOT_FOUND;
    // The word ends where the buffer is full or at the walk's limit: while
    // the loop below runs, i is start + n.
    const int32_t room = wordSz - 1 < kCursorLimit - start ? wordSz - 1 : kCursorLimit - start;

    const bool markup = (options & LX_OPT_MARKUP) != 0;
    const bool addresses = (options & LX_OPT_IGNORE_ADDRESSES) != 0;
    int32_t n = 0, dots = 0, entityStart = 0;
    bool inEntity = false;
    if (wordSz >= 2) {
        word[n++] = static_cast<char>(t[start]);
        if (markup && t[start] == '&') inEntity = true;
    }
    int32_t i = start + 1;
    for (;;) {
        // Letters and digits are always taken, and they are nearly every
        // byte of a text: copy a run of them in a tight loop.
        // The scan stores nothing, so the text stays in registers.
        const int32_t stop = i + (room - n);
        int32_t j = i;
        while (j < stop && lx_is_alnum(t[j])) ++j;
        for (; i < j; ++i) word[n++] = static_cast<char>(t[i]);
        if (t[i] == 0 || n >= room) break;
        const uchar c = t[i], before = t[i - 1], after = t[i + 1];
        bool take;
        if (c == '.') {
            take = lx_is_alnum(before) && (lx_is_alnum(after) || after == '\'');
            if (take) ++dots;
        } else if (c == '-') {
            take = lx_is_alnum(before) && lx_is_alnum(after);
        } else if (c == '&' && markup) {
            inEntity = true;
            entityStart = n;
            take = true;
        } else if (c == ';' && inEntity) {
            inEntity = false;
            word[n] = '\0';
            if (LX_IsLetterEntity(word + entityStart + 1)) {
                take = true;
            } else {
                n = entityStart; // the word ends before the '&'
                take = false;
            }
        } else if (c == '#' && inEntity) {
            take = true;
        } else if (c == '@' && addresses) {
            take = mail_test(t, i);
        } else if (c == ':' && addresses) {
            take = lx_is_alnum(before) && after == '/';
        } else if (c == '/' && addresses) {
            take = dots > 0 || ((before == ':' || before == '/') && (is_name_char(after) || after == '/'));
        } else if ((c == '%' || c == '&' || c == '+' || c == '=' || c == '?') && addresses) {
            take = dots > 0;
        } else if (c == '_' && addresses) {
            take = underscore_test(t, i, underscores);
        } else {
            take = lx_is_alnum(c) || c == '\'';
        }
        if (!take) break;
        word[n++] = static_cast<char>(c);
        ++i;
    }

    bool abbreviation = !(dots > 0 && has_run_of_three(word, n));
    if (t[i] == '.' && dots > 0 && abbreviation && n < room) {
        word[n++] = '.';
        ++dots;
    }
    for (;;) {
        bool removed = false;
        if (n >= 2 && word[n - 1] == '\'' && word[n - 2] != 's' && word[n - 2] != 'S') {
            --n;
            removed = true;
        }
        if (n > 0 && word[n - 1] == '.' && (!abbreviation || dots == 1)) {
            --n;
            continue;
        }
        if (!removed) break;
    }
    if (wordSz >= 1) word[n] = '\0';
    *length = n;
    return start;
}

// LX_ExtractWord, giving the length of the stored word as well.
inline int32_t extract_word(const char *text, int32_t cursor, uint32_t options, char *word, int32_t wordSz,
                            int32_t *length, UnderscoreCache &underscores) {
    return extract_from(text, LX_SkipToWord(text, cursor, options), options, word, wordSz, length, underscores);
}

} // namespace

int32_t LX_ExtractWord(const char *text, int32_t cursor, uint32_t options, char *word, int32_t wordSz) {
    LX_ASSERT(text != NULL);
    LX_ASSERT(word != NULL);
    int32_t length;
    UnderscoreCache underscores;
    return extract_word(text, cursor, options, word, wordSz, &length, underscores);
}

void LX_PrevTextWord(const char *text, int32_t cursor, uint32_t options, char *word, int32_t wordSz) {
    LX_ASSERT(text != NULL);
    LX_ASSERT(word != NULL);
    word[0] = '\0';
    const uchar *t = bytes(text);
    int32_t i = cursor - 1;
    while (i >= 0 && lx_is_space(t[i])) --i;
    if (i <= 0) return;
    const int32_t limit = i + 1 > LX_PREV_WORD_REACH ? i + 1 - LX_PREV_WORD_REACH : 0;
    while (i > 0) {
        uchar c = t[i - 1];
        if (!(lx_is_alnum(c) || c == '\'' || c == '.' || c == '-')) break;
        if (i == limit) return; // a run too long to be a word before: none
        --i;
    }
    LX_ExtractWord(text, i, options, word, wordSz);
}

namespace {

int32_t next_text_word(const char *text, int32_t cursor, uint32_t options, UnderscoreCache &underscores) {
    char local[LX_MAX_WORD_SZ];
    int32_t length;
    int32_t start = extract_word(text, cursor, options, local, sizeof local, &length, underscores);
    if (start < 0) return start;
    int32_t next = LX_SkipToWord(text, start + length, options);
    return at_walk_end(bytes(text), next) ? LX_ERR_NOT_FOUND : next;
}

} // namespace

extern "C" LX_API int32_t LX_NextTextWord(const char *text, int32_t cursor, uint32_t options) {
    LX_ASSERT(text != NULL);
    LX_ASSERT(cursor >= 0);
    UnderscoreCache underscores;
    return next_text_word(text, cursor, options, underscores);
}

// --------------------------------------------------------------- rule chain

int16_t LX_ActionResult(int16_t action) {
    switch (action) {
    case LX_ACT_EXCLUDE: return LX_RES_MISSPELLED;
    case LX_ACT_AUTO_CHANGE:
    case LX_ACT_AUTO_CHANGE_CASE: return LX_RES_AUTO_CHANGE;
    case LX_ACT_COND_CHANGE:
    case LX_ACT_COND_CHANGE_CASE: return LX_RES_COND_CHANGE;
    default: return 0;
    }
}

int LX_IsMixedCase(const char *word) {
    const uchar *w = bytes(word);
    if (w[0] == 0) return 0;
    int32_t i = 1;
    while (w[i] != 0 && !lx_is_alpha(w[i])) ++i;
    if (w[i] == 0) return 0;
    const uchar wanted = lx_is_lower(w[i]) ? LX_CC_UPPER : LX_CC_LOWER;
    for (; w[i] != 0; ++i)
        if (lx_class(w[i]) & wanted) return 1;
    return 0;
}

int LX_IsIgnoredWord(const char *word, uint32_t options) {
    constexpr uint32_t kIgnoreAny = LX_OPT_IGNORE_CAPITALISED | LX_OPT_IGNORE_MIXED_CASE |
                                    LX_OPT_IGNORE_WITH_DIGITS | LX_OPT_IGNORE_ALL_CAPITALS |
                                    LX_OPT_IGNORE_NO_LETTERS | LX_OPT_IGNORE_ADDRESSES;
    if (!(options & kIgnoreAny)) return 0;
    const uchar *w = bytes(word);
    if ((options & LX_OPT_IGNORE_CAPITALISED) && lx_is_upper(w[0])) return 1;
    if ((options & LX_OPT_IGNORE_MIXED_CASE) && LX_IsMixedCase(word)) return 1;

    // One pass gathers what the remaining tests need.
    // The classes of all characters are or-ed and and-ed together; only the
    // rare character that is neither letter nor digit is looked at closer.
    uint32_t any = 0, all = ~0u;
    const uchar *lastDot = nullptr, *colon = nullptr, *slash = nullptr;
    for (const uchar *p = w; *p; ++p) {
        const uchar cls = lx_class(*p);
        any |= cls;
        all &= cls;
        if (cls & (LX_CC_ALPHA | LX_CC_DIGIT)) continue;
        if (*p == '.') lastDot = p;
        else if (*p == ':' && !colon) colon = p;
        else if (*p == '/' && !slash) slash = p;
    }
    const bool digit = (any & LX_CC_DIGIT) != 0, letter = (any & LX_CC_ALPHA) != 0;
    const bool allUpper = (all & LX_CC_UPPER) != 0;
    if ((options & LX_OPT_IGNORE_WITH_DIGITS) && digit) return 1;
    if ((options & LX_OPT_IGNORE_ALL_CAPITALS) && allUpper) return 1; // the empty word counts
    if ((options & LX_OPT_IGNORE_NO_LETTERS) && !letter) return 1;
    if (options & LX_OPT_IGNORE_ADDRESSES) {
        // File name: 2 to 4 letters or digits behind the last full stop.
        if (lastDot) {
            int32_t k = 0;
            while (lastDot[1 + k] && lx_is_alnum(lastDot[1 + k])) ++k;
            if (lastDot[1 + k] == 0 && k >= 2 && k <= 4) return 1;
        }
        // URL: the first ':' is followed by "//".
        if (colon && colon[1] == '/' && colon[2] == '/') return 1;
        // Domain and path: 2 to 4 letters in front of the first '/',
        // counted back to a full stop or the word's start.
        if (slash) {
            int32_t k = 0;
            bool letters = true;
            while (slash - k > w && slash[-k - 1] != '.') {
                if (!lx_is_alpha(slash[-k - 1])) letters = false;
                ++k;
            }
            if (letters && k >= 2 && k <= 4) return 1;
        }
    }
    return 0;
}

const char *LX_SplitSubWord(const char *word, uint32_t options, char *subWord) {
    LX_ASSERT(subWord != NULL);
    const bool hyphen = (options & LX_OPT_SPLIT_AT_HYPHEN) != 0;
    const bool apostrophe = (options & LX_OPT_SPLIT_AT_APOSTROPHE) != 0;
    int32_t n = 0;
    const char *p = word;
    for (; *p != '\0'; ++p) {
        if ((hyphen && *p == '-') || (apostrophe && *p == '\'')) {
            subWord[n] = '\0';
            return p + 1;
        }
        if (n < kMaxChars) subWord[n++] = *p;
    }
    subWord[n] = '\0';
    return p;
}

int16_t LX_FindInLexicon(const char *candidate, const char *caseWord, LX_Lexicon *lex,
                         uint32_t options, char *repl, int32_t replSz) {
    LX_ASSERT(lex != NULL);
    LX_ASSERT_TEXT(candidate != NULL, "word != NULL");
    int16_t action = LX_Lexicon_FindWord(lex, candidate, (options & LX_OPT_CASE_SENSITIVE) ? 1 : 0,
                                         repl, replSz);
    if ((action == LX_ACT_AUTO_CHANGE_CASE || action == LX_ACT_COND_CHANGE_CASE) && repl != nullptr)
        LX_TransferCase(caseWord, 1, (options & LX_OPT_ACCENTED_CAPITALS) ? 1 : 0, repl);
    return action;
}

int16_t LX_FindInLexicons(const char *candidate, const char *caseWord, LX_Lexicon *const *lexicons,
                          uint32_t options, char *repl, int32_t replSz) {
    for (LX_Lexicon *const *lex = lexicons; *lex != nullptr; ++lex) {
        int16_t action = LX_FindInLexicon(candidate, caseWord, *lex, options, repl, replSz);
        if (action >= 0) return action;
    }
    return LX_ERR_NOT_FOUND;
}

namespace {

// ------------------------------------------------------- run-together memo
//
// The run-together rule asks about the same pieces of a word again and
// again: every division of the word, then every division of each rest, and
// the pieces that the split rule cuts out of them. Every string it asks
// about is a stretch of the word that LX_CheckWord normalised (normalising
// a stretch again only cuts its end off), so the verdicts are kept in a
// table by stretch, start and end in that word: one table for the chain
// with the run-together option, one for the chain without it, the only two
// option sets that occur within one word. Each stretch is judged at most
// once in each, which keeps the work polynomial in the word's length
// whatever the lexicons accept. The tables live on the stack of
// LX_CheckWord and are set up when the rule first runs.
struct Span {
    int32_t start = -1; // -1: not known to be a stretch of the word
    int32_t end = -1;
    bool known() const { return start >= 0; }
    Span cut(int32_t from, int32_t to) const { return known() ? Span{start + from, start + to} : Span{}; }
};

struct RunMemo {
    static constexpr uint8_t kUnknown = 0xFF; // verdicts are below 64
    uint8_t with[LX_MAX_WORD_SZ][LX_MAX_WORD_SZ];    // run-together option on
    uint8_t without[LX_MAX_WORD_SZ][LX_MAX_WORD_SZ]; // and off
};

struct CheckContext {
    RunMemo *memo = nullptr;     // storage of LX_CheckWord
    bool memoReady = false;      // the tables have been cleared
    const char *origin = nullptr; // the word the stretches lie in
    int32_t originLen = 0;
};

// Where text stands in the word: derived from the stretch it was cut from,
// or else looked for.
Span locate(const CheckContext &ctx, const char *text, Span hint) {
    if (hint.known() || ctx.origin == nullptr) return hint;
    const int32_t n = LX_Str_Len(text);
    for (int32_t at = 0; at + n <= ctx.originLen; ++at)
        if (std::memcmp(ctx.origin + at, text, static_cast<size_t>(n)) == 0) return {at, at + n};
    return {};
}

int16_t check_word(CheckContext &ctx, const char *word, LX_Lexicon *const *lexicons, uint32_t options,
                   char *repl, int32_t replSz, int32_t *offset, Span span);
int16_t lookup_word(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                    int32_t replSz);

// The memo's place for the verdict on a stretch, or null.
uint8_t *memo_slot(CheckContext &ctx, uint32_t options, Span span) {
    if (!ctx.memoReady || !span.known()) return nullptr;
    auto &table = (options & LX_OPT_SPLIT_RUN_TOGETHER) ? ctx.memo->with : ctx.memo->without;
    return &table[span.start][span.end];
}

// The verdict of the chain on a stretch, without a replacement, remembered
// while the run-together rule is at work.
int16_t verdict(CheckContext &ctx, const char *text, LX_Lexicon *const *lexicons, uint32_t options, Span span) {
    uint8_t *known = memo_slot(ctx, options, span);
    if (known == nullptr) return check_word(ctx, text, lexicons, options, nullptr, 0, nullptr, span);
    uint8_t &slot = *known;
    if (slot == RunMemo::kUnknown)
        slot = static_cast<uint8_t>(check_word(ctx, text, lexicons, options, nullptr, 0, nullptr, span));
    return slot;
}

// ----------------------------------------------------------------- lookups

// The plain lookups of a word: as it stands, with a lower-case first letter,
// and (for a word in capitals) regardless of case. Gives the action found,
// or a value of 0 or below for none.
int16_t plain_lookup(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                     int32_t replSz) {
    int16_t action = LX_FindInLexicons(word, word, lexicons, options, repl, replSz);
    if (action > 0 || !(options & LX_OPT_CASE_SENSITIVE)) return action;
    const uchar *w = bytes(word);
    if (lx_is_upper(w[0])) {
        char lowered[LX_MAX_WORD_SZ];
        LX_Str_Copy(lowered, sizeof lowered, word);
        lowered[0] = static_cast<char>(lx_to_lower(w[0]));
        action = LX_FindInLexicons(lowered, word, lexicons, options, repl, replSz);
        if (action > 0) return action;
    }
    for (const uchar *p = w; *p; ++p)
        if (lx_is_alpha(*p) && !lx_is_upper(*p)) return action;
    return LX_FindInLexicons(word, word, lexicons, options & ~LX_OPT_CASE_SENSITIVE, repl, replSz);
}

// ------------------------------------------------------------ accent search
//
// The search tries other forms of a word's capitals in a fixed order, as a
// counter whose lowest digit is place 0. At each place it tries the word's
// own character first, then, rising in code, the other characters of the
// same base letter: in capitals only when the whole word is in capitals
// (then every place varies), in either case when only the first letter is
// a capital (then only place 0 varies). A trial is the plain lookups of
// the form with accents on capitals taken as significant, and the first
// trial that isn't misspelled gives the result.
//
// Any form the search tries has the word's base form, and a lookup finds a
// held word only if the form equals it but for case. So instead of
// stepping through every form (their number is the product of the forms
// of each letter: over a thousand million for twenty letters), the search
// asks the lexicons for the words they hold with that base form, works out
// which forms could find each of them, and makes just those trials, in
// the counter's order. Every trial it leaves out would have found nothing,
// so the result, and what a trial writes into repl, are those of the full
// search.
struct AccentSearch {
    const uchar *word;
    int32_t n;
    bool allCapitals;
    const uchar *after;         // the last trial made; the word itself at first
    uchar next[LX_MAX_WORD_SZ]; // the first trial after it that may succeed
    bool found;
};

// True if trial a comes before trial b. At every place the word's own
// character is the lowest in code of those tried, so bytes compare as the
// counter's digits do.
bool trial_before(const AccentSearch &s, const uchar *a, const uchar *b) {
    for (int32_t i = s.n - 1; i >= 0; --i)
        if (a[i] != b[i]) return a[i] < b[i];
    return false;
}

// The characters the search tries at place i that a lookup could take for
// the held character h (equal to it but for case), in rising order.
int32_t forms_at(const AccentSearch &s, int32_t i, uchar h, uchar out[3]) {
    const uchar own = s.word[i];
    const uchar lower = lx_to_lower(h);
    const bool varies = s.allCapitals || i == 0;
    uchar cand[3] = {h, lower, static_cast<uchar>(lower - 32)};
    int32_t n = 0;
    for (uchar c : cand) {
        if (lx_to_lower(c) != lower) continue;
        bool tried = c == own ||
                     (varies && c > own && lx_fold(c) == lx_fold(own) && !(s.allCapitals && lx_is_lower(c)));
        if (!tried) continue;
        bool dup = false;
        for (int32_t k = 0; k < n; ++k) dup |= out[k] == c;
        if (!dup) out[n++] = c;
    }
    std::sort(out, out + n);
    return n;
}

// Takes note of the first trial after s.after that could find held.
bool visit_held(void *ctx, const char *held) {
    AccentSearch &s = *static_cast<AccentSearch *>(ctx);
    const uchar *h = bytes(held);
    uchar forms[LX_MAX_WORD_SZ][3];
    int32_t count[LX_MAX_WORD_SZ];
    for (int32_t i = 0; i < s.n; ++i) {
        if (h[i] == 0) return true; // shorter: no form of the word finds it
        count[i] = forms_at(s, i, h[i], forms[i]);
        if (count[i] == 0) return true;
    }
    if (h[s.n] != 0) return true;

    // The smallest trial above s.after among these forms: it keeps the
    // places above some place j as they are in s.after, puts there the
    // next higher form, and the lowest forms below. The lowest j that
    // allows that gives the smallest trial.
    uchar trial[LX_MAX_WORD_SZ];
    // keep[i]: every place from i up can keep the character of s.after
    bool keep[LX_MAX_WORD_SZ + 1];
    keep[s.n] = true;
    for (int32_t i = s.n - 1; i >= 0; --i) {
        bool has = false;
        for (int32_t k = 0; k < count[i]; ++k) has |= forms[i][k] == s.after[i];
        keep[i] = keep[i + 1] && has;
    }
    for (int32_t j = 0; j < s.n; ++j) {
        if (!keep[j + 1]) continue;
        int32_t k = 0;
        while (k < count[j] && forms[j][k] <= s.after[j]) ++k;
        if (k == count[j]) continue;
        for (int32_t i = 0; i < j; ++i) trial[i] = forms[i][0];
        trial[j] = forms[j][k];
        for (int32_t i = j + 1; i < s.n; ++i) trial[i] = s.after[i];
        trial[s.n] = 0;
        if (!s.found || trial_before(s, trial, s.next)) {
            std::memcpy(s.next, trial, static_cast<size_t>(s.n) + 1);
            s.found = true;
        }
        return true;
    }
    return true;
}

__attribute__((noinline)) int16_t accent_search(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                      int32_t replSz) {
    const uchar *w = bytes(word);
    AccentSearch s{w, LX_Str_Len(word), true, w, {}, false};
    for (const uchar *p = w; *p; ++p)
        if (!lx_is_upper(*p)) s.allCapitals = false;
    if (!s.allCapitals && !lx_is_upper(w[0])) return LX_RES_MISSPELLED;

    // The first trial is the word itself, whose lookups have just failed.
    uchar last[LX_MAX_WORD_SZ];
    std::memcpy(last, w, static_cast<size_t>(s.n) + 1);
    for (;;) {
        s.after = last;
        s.found = false;
        for (LX_Lexicon *const *lex = lexicons; *lex != nullptr; ++lex)
            LX_Lexicon_ForEachBaseForm(*lex, word, visit_held, &s);
        if (!s.found) return LX_RES_MISSPELLED;
        std::memcpy(last, s.next, static_cast<size_t>(s.n) + 1);
        int16_t r = lookup_word(reinterpret_cast<const char *>(last), lexicons,
                                options | LX_OPT_ACCENTED_CAPITALS, repl, replSz);
        if (!(r & LX_RES_MISSPELLED)) return r;
    }
}

int16_t lookup_word(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                    int32_t replSz) {
    int16_t action = plain_lookup(word, lexicons, options, repl, replSz);
    if (action > 0) return LX_ActionResult(action);
    if (options & LX_OPT_ACCENTED_CAPITALS) return LX_RES_MISSPELLED;
    return accent_search(word, lexicons, options, repl, replSz);
}

// ------------------------------------------------------------------- rules

__attribute__((noinline)) void run_together_rule(CheckContext &ctx, const char *norm, Span span, LX_Lexicon *const *lexicons,
                       uint32_t options, int16_t &result) {
    if (!ctx.memoReady && ctx.memo != nullptr) {
        std::memset(ctx.memo, RunMemo::kUnknown, sizeof *ctx.memo);
        ctx.memoReady = true;
    }
    span = locate(ctx, norm, span);
    const int32_t limit = LX_Str_Len(norm) - 2;
    char piece[LX_MAX_WORD_SZ];
    const uint32_t pieceOptions = options & ~LX_OPT_SPLIT_RUN_TOGETHER;
    for (int32_t k = 2; k <= limit; ++k) {
        // A verdict the memo knows needs no copy of the piece.
        const uint8_t *known = memo_slot(ctx, pieceOptions, span.cut(0, k));
        if (known != nullptr && *known != RunMemo::kUnknown) {
            if (*known != 0) continue;
        } else {
            LX_Str_CopyN(piece, sizeof piece, norm, k);
            if (verdict(ctx, piece, lexicons, pieceOptions, span.cut(0, k)) != 0) continue;
        }
        if (verdict(ctx, norm + k, lexicons, options, span.cut(k, span.end - span.start)) != 0) continue;
        result &= ~LX_RES_MISSPELLED;
        break;
    }
}

__attribute__((noinline)) void split_rule(CheckContext &ctx, const char *norm, Span span, LX_Lexicon *const *lexicons,
                uint32_t options, char *repl, int32_t replSz, int32_t *offset, int16_t &result) {
    char piece[LX_MAX_WORD_SZ], alt[LX_MAX_WORD_SZ];
    const char *right = LX_SplitSubWord(norm, options, piece);
    if (*right == '\0') return;
    const int32_t sub0 = static_cast<int32_t>(right - norm);
    const Span left = span.cut(0, LX_Str_Len(piece));
    const Span rightSpan = span.cut(sub0, span.end - span.start);
    // A caller that wants neither replacement nor offset gets the pieces'
    // verdicts, which the memo may know already.
    if (repl == nullptr && offset == nullptr) {
        const int16_t r = verdict(ctx, piece, lexicons, options, left);
        if (r == 0) {
            result = static_cast<int16_t>((result & ~LX_RES_MISSPELLED) | verdict(ctx, right, lexicons, options, rightSpan));
        } else if (r == LX_RES_AUTO_CHANGE || r == LX_RES_COND_CHANGE) {
            result = static_cast<int16_t>((result & ~LX_RES_MISSPELLED) | r);
        }
        return;
    }
    int16_t r = check_word(ctx, piece, lexicons, options, alt, sizeof alt, nullptr, left);
    if (r != 0) {
        if (r == LX_RES_AUTO_CHANGE || r == LX_RES_COND_CHANGE) {
            result = static_cast<int16_t>((result & ~LX_RES_MISSPELLED) | r);
            if (repl) LX_Str_Copy(repl, replSz, alt);
        }
        return;
    }
    int32_t sub = sub0;
    r = check_word(ctx, right, lexicons, options, alt, sizeof alt, &sub, rightSpan);
    result &= ~LX_RES_MISSPELLED;
    if (r == 0) return;
    if (offset) *offset += sub;
    result |= r;
    if (repl) LX_Str_Copy(repl, replSz, alt);
}

__attribute__((noinline)) void digit_rule(const char *norm, char *repl, int32_t replSz, int16_t &result) {
    const uchar *w = bytes(norm);
    bool hasDigit = false;
    for (const uchar *p = w; *p && !hasDigit; ++p) hasDigit = lx_is_digit(*p);
    if (!hasDigit) return;
    result |= LX_RES_WITH_DIGITS;
    if (!repl) return;
    LX_Str_Copy(repl, replSz, norm);
    uchar *r = reinterpret_cast<uchar *>(repl);
    int32_t len = LX_Str_Len(repl);
    bool afterLetter = lx_is_alpha(r[0]);
    for (int32_t i = 0; r[i] != 0; ++i) {
        const uchar c = r[i];
        bool blank = (lx_is_digit(c) && afterLetter) || (lx_is_alpha(c) && !afterLetter);
        if (blank && len + 1 < replSz) {
            for (int32_t k = len; k >= i; --k) r[k + 1] = r[k];
            r[i++] = ' ';
            ++len;
        }
        afterLetter = lx_is_alpha(c);
    }
}

__attribute__((noinline)) void capitalisation_rule(const char *norm, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                         int32_t replSz, int16_t &result) {
    char first[LX_MAX_WORD_SZ], all[LX_MAX_WORD_SZ];
    LX_Str_Copy(first, sizeof first, norm);
    LX_Str_Copy(all, sizeof all, norm);
    first[0] = static_cast<char>(lx_to_upper(lx_byte(first[0])));
    for (char *p = all; *p; ++p) *p = static_cast<char>(lx_to_upper(lx_byte(*p)));
    const char *found;
    if (LX_FindInLexicons(first, norm, lexicons, options, repl, replSz) >= 0)
        found = first;
    else if (LX_FindInLexicons(all, norm, lexicons, options, repl, replSz) >= 0)
        found = all;
    else
        return;
    if (repl) LX_Str_Copy(repl, replSz, found);
    result |= LX_RES_CAPITALISATION;
}

int16_t check_word(CheckContext &ctx, const char *word, LX_Lexicon *const *lexicons, uint32_t options,
                   char *repl, int32_t replSz, int32_t *offset, Span span) {
    LX_ASSERT(word != NULL);
    // Mixed case is judged on the word before normalisation.
    const bool mixed = (options & LX_OPT_REPORT_MIXED_CASE) && LX_IsMixedCase(word);
    char norm[LX_MAX_WORD_SZ];
    const int32_t normLen = LX_NormaliseWord(word, options, norm);
    if (normLen == 0) return 0;
    if (ctx.memo == nullptr) {
        // Without the run-together rule no verdict is remembered.
    } else if (ctx.origin == nullptr) {
        // The word of LX_CheckWord: every stretch that the rules judge lies in it.
        ctx.origin = norm;
        ctx.originLen = normLen;
        span = {0, normLen};
    } else if (span.known()) {
        // Normalising keeps a stretch a stretch if it only cut the end off.
        if (normLen <= span.end - span.start && std::memcmp(norm, word, static_cast<size_t>(normLen)) == 0)
            span.end = span.start + normLen;
        else
            span = {};
    }
    if (repl) LX_Str_Copy(repl, replSz, word);
    if (LX_IsIgnoredWord(norm, options)) return 0;

    int16_t result = 0;
    if (options & LX_OPT_CHECK_SPELLING) {
        result = lookup_word(norm, lexicons, options, repl, replSz);
        if ((result & LX_RES_MISSPELLED) && (options & LX_OPT_SPLIT_RUN_TOGETHER))
            run_together_rule(ctx, norm, span, lexicons, options, result);
        if ((result & LX_RES_MISSPELLED) && (options & (LX_OPT_SPLIT_AT_HYPHEN | LX_OPT_SPLIT_AT_APOSTROPHE)))
            split_rule(ctx, norm, span, lexicons, options, repl, replSz, offset, result);
    }
    if (mixed) {
        result |= LX_RES_MIXED_CASE;
        if (repl) {
            LX_Str_Copy(repl, replSz, norm);
            for (char *p = repl; *p; ++p) *p = static_cast<char>(lx_to_lower(lx_byte(*p)));
            if (lx_is_upper(lx_byte(norm[0])) && repl[0] != '\0')
                repl[0] = static_cast<char>(lx_to_upper(lx_byte(repl[0])));
        }
    }
    if (options & LX_OPT_REPORT_WITH_DIGITS) digit_rule(norm, repl, replSz, result);
    if ((options & LX_OPT_REPORT_CAPITALISATION) && (options & LX_OPT_CASE_SENSITIVE) &&
        (result & LX_RES_MISSPELLED) && lx_is_lower(lx_byte(norm[0])))
        capitalisation_rule(norm, lexicons, options, repl, replSz, result);
    if (!(options & LX_OPT_ACCENTED_CAPITALS) && !(result & LX_RES_MISSPELLED)) {
        for (const uchar *p = bytes(norm); *p; ++p) {
            if (lx_is_upper(*p) && lx_fold(*p) != *p) {
                result |= LX_RES_MISSPELLED;
                break;
            }
        }
    }
    if (repl) LX_RestorePossessiveIn(word, options, repl, replSz);
    return result;
}

// LX_CheckWord with the run-together option: the chain with a memo, which
// only this frame holds, so that the stack of a plain check stays small.
__attribute__((noinline)) int16_t check_dividing(CheckContext &ctx, const char *word, LX_Lexicon *const *lexicons,
                                                 uint32_t options, char *repl, int32_t replSz, int32_t *offset) {
    RunMemo memo; // cleared only if the run-together rule runs
    ctx.memo = &memo;
    return check_word(ctx, word, lexicons, options, repl, replSz, offset, Span{});
}

inline int16_t check_top(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                         int32_t replSz, int32_t *offset) {
    CheckContext ctx;
    if (options & LX_OPT_SPLIT_RUN_TOGETHER) return check_dividing(ctx, word, lexicons, options, repl, replSz, offset);
    return check_word(ctx, word, lexicons, options, repl, replSz, offset, Span{});
}

} // namespace

int16_t LX_LookupWord(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                      int32_t replSz) {
    return lookup_word(word, lexicons, options, repl, replSz);
}

int16_t LX_CheckWord(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                     int32_t replSz, int32_t *offset) {
    return check_top(word, lexicons, options, repl, replSz, offset);
}

// ------------------------------------------------------------------- driver

namespace {

bool only_space_between(const uchar *t, int32_t cursor, const char *prev) {
    int32_t plen = LX_Str_Len(prev);
    const int last = plen > 0 ? lx_byte(prev[plen - 1]) : -1;
    for (int32_t i = cursor - 1; i >= 0; --i) {
        if (t[i] == last) return true;
        if (!lx_is_space(t[i])) return false;
    }
    return true;
}

void narrow_report(uint32_t options, int32_t delta, int32_t *cursor, char *word, int32_t wordSz) {
    if (delta > 0) *cursor += delta;
    // When repl shares the buffer of word, word may now be shorter than
    // the offset of the piece.
    int32_t len = LX_Str_Len(word);
    char piece[LX_MAX_WORD_SZ];
    LX_SplitSubWord(word + (delta < len ? delta : len), options, piece);
    LX_Str_Copy(word, wordSz, piece);
}

} // namespace

extern "C" LX_API int32_t LX_CheckText(const char *text, LX_Lexicon *const *lexicons, uint32_t options,
                                       int32_t *cursor, char *word, int32_t wordSz, char *repl,
                                       int32_t replSz) {
    LX_ASSERT(text != NULL);
    LX_ASSERT(lexicons != NULL);
    LX_ASSERT(cursor != NULL);
    LX_ASSERT(word != NULL);
    const uint32_t splitOptions = LX_OPT_SPLIT_AT_HYPHEN | LX_OPT_SPLIT_AT_APOSTROPHE;
    int32_t delta = 0;

    if (options & LX_OPT_SINGLE_WORD) {
        LX_ASSERT(*cursor >= 0);
        LX_Str_Copy(word, wordSz, text + *cursor);
        int16_t r = check_top(word, lexicons, options, repl, replSz, &delta);
        if ((r & LX_RES_MISSPELLED) && (options & splitOptions))
            narrow_report(options, delta, cursor, word, wordSz);
        return r == 0 ? LX_RES_NONE_LEFT : r;
    }

    const uchar *t = bytes(text);
    const bool reportRepeated = (options & LX_OPT_REPORT_REPEATED) != 0;
    char prev[LX_MAX_WORD_SZ];
    prev[0] = '\0';
    // Before offset 0 there is no word (and a negative cursor finds none).
    if (reportRepeated && *cursor > 0) LX_PrevTextWord(text, *cursor, options, prev, sizeof prev);

    int32_t length = 0;
    UnderscoreCache underscores;
    int32_t start = extract_word(text, *cursor, options, word, wordSz, &length, underscores);
    *cursor = start;
    if (start < 0) return LX_RES_NONE_LEFT;
    for (;;) {
        // The walk steps over the word as an 80-character buffer measures
        // it; with a word buffer of that size, that is the word just taken.
        int32_t walkLen = wordSz == LX_MAX_WORD_SZ ? length : -1;
        int32_t r = check_top(word, lexicons, options, repl, replSz, &delta);
        if (reportRepeated) {
            // The cheap test first: the word seldom equals the one before.
            const bool equal = (options & LX_OPT_CASE_SENSITIVE) ? LX_Str_Cmp(word, prev) == 0
                                                                 : LX_Str_ICmp(word, prev) == 0;
            if (equal && !LX_IsIgnoredWord(word, options) && only_space_between(t, *cursor, prev))
                r |= LX_RES_REPEATED;
        }
        if ((r & (LX_RES_MISSPELLED | LX_RES_AUTO_CHANGE | LX_RES_COND_CHANGE)) && (options & splitOptions))
            narrow_report(options, delta, cursor, word, wordSz);
        if (r != 0) return r;
        if (reportRepeated) {
            // A word taken whole into a word buffer is length bytes long.
            if (walkLen >= 0) std::memcpy(prev, word, static_cast<size_t>(walkLen) + 1);
            else LX_Str_Copy(prev, sizeof prev, word);
        }

        int32_t next;
        if (walkLen >= 0) {
            next = LX_SkipToWord(text, *cursor + walkLen, options);
            if (at_walk_end(t, next)) return LX_RES_NONE_LEFT;
        } else {
            next = next_text_word(text, *cursor, options, underscores);
            if (next < 0) return LX_RES_NONE_LEFT;
        }
        *cursor = next;
        start = extract_from(text, next, options, word, wordSz, &length, underscores);
        *cursor = start;
        if (start < 0) return LX_RES_NONE_LEFT;
    }
}

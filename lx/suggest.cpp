// suggest.cpp - LX_Suggest, the staged search for replacements of a word.
//
// The stages run from cheap to dear and all add to the caller's one ranked
// set: single edits of the word, each accepted only if the whole rule chain
// of LX_CheckText passes it; wildcard searches of the lexicons; a rescoring
// that puts every candidate on the comparator's scale; comparator sweeps
// over whole lexicons, gated by depth and by what was found so far;
// divisions into two words; spaces put into run-together text; and last
// the word's case and possessive ending given to every candidate, with
// look-alikes removed. Everything works in stack buffers; the set belongs
// to the caller.
#include <utility>

#include "chartab.h"
#include "clex.h"
#include "compare.h"
#include "lexicon.h"
#include "safestr.h"
#include "suggset.h"

namespace {

// The trial buffer holds one byte more than a word buffer: a pattern of
// stage 2 lengthens a word of 80 characters by one.
constexpr int32_t kTrialSz = LX_MAX_WORD_SZ + 1;

struct Suggester {
    const char *word;              // as the caller gave it
    LX_Lexicon *const *lexicons;
    int32_t nLexicons;
    uint32_t options;
    int32_t depth;
    SuggSet *set;
    char norm[LX_MAX_WORD_SZ];     // the normalised word, unchanged from the start
    int32_t normLen;
    int32_t start;                 // count of the set on entry

    bool full() const { return set->count >= set->capacity; }
    bool grown() const { return set->count > start; }

    // A trial passes if LX_CheckText reports nothing.
    bool trial(const char *text, uint32_t opts, bool withRepl) const {
        char scratch[LX_MAX_WORD_SZ];
        int32_t cursor = 0;
        return LX_CheckText(text, lexicons, opts, &cursor, scratch, sizeof scratch,
                            withRepl ? scratch : nullptr, withRepl ? sizeof scratch : 0) ==
               LX_RES_NONE_LEFT;
    }
    bool single_trial(const char *t) const { return trial(t, options | LX_OPT_SINGLE_WORD, false); }
    bool text_trial(const char *t) const { return trial(t, options, false); }
    bool full_text_trial(const char *t) const { return trial(t, options, true); }

    void edit_trials();
    void pattern_searches();
    void rescore();
    void comparator_sweeps();
    void sweep(bool textLexiconsOnly);
    void divisions();
    void space_behind_punctuation();
    void spaces_between_letters_and_digits();
    void case_and_possessive();
    void remove_look_alikes();
};

void Suggester::edit_trials() {
    char t[kTrialSz];
    LX_Str_Copy(t, sizeof t, norm);
    const int32_t len = normLen;

    if (!full()) { // transposition
        for (int32_t i = 1; i < len; ++i) {
            const char before = t[i];
            std::swap(t[i - 1], t[i]);
            uchar &left = reinterpret_cast<uchar &>(t[i - 1]);
            uchar &right = reinterpret_cast<uchar &>(t[i]);
            if (lx_is_lower(left) && lx_is_upper(right)) {
                left = static_cast<uchar>(left - 0x20);
                right = static_cast<uchar>(right + 0x20);
            }
            if (single_trial(t)) SuggSet_Add(set, t, 100);
            // Undo; after a case repair the capital stays lowered for the
            // later positions, so "Teh" goes on as "teh".
            t[i - 1] = t[i];
            t[i] = before;
        }
        LX_Str_Copy(t, sizeof t, norm);
    }

    if (!full() && len >= 2) { // deletion; a single letter leaves nothing to try
        for (int32_t i = 0; i < len; ++i) {
            LX_Str_Copy(t, sizeof t, norm);
            for (int32_t k = i; k < len; ++k) t[k] = t[k + 1];
            if (single_trial(t)) SuggSet_Add(set, t, 100);
        }
        LX_Str_Copy(t, sizeof t, norm);
    }

    if (!full() && (options & LX_OPT_STRIP_POSSESSIVE) && len >= 2 &&
        (t[len - 1] == 's' || t[len - 1] == 'S') && t[len - 2] != '\'') {
        t[len] = t[len - 1];
        t[len - 1] = '\'';
        t[len + 1] = '\0';
        if (single_trial(t)) SuggSet_Add(set, t, 100);
    }
}

void Suggester::pattern_searches() {
    const int16_t caseSensitive = (options & LX_OPT_CASE_SENSITIVE) ? 1 : 0;
    auto sweep_pattern = [&](const char *pattern) {
        for (int32_t k = nLexicons - 1; k >= 0; --k)
            LX_Lexicon_FindPattern(lexicons[k], pattern, caseSensitive, set);
    };
    char t[kTrialSz];
    const int32_t len = normLen;

    if (!full()) { // substitution
        LX_Str_Copy(t, sizeof t, norm);
        for (int32_t i = 0; i < len; ++i) {
            const char keep = t[i];
            t[i] = '?';
            sweep_pattern(t);
            t[i] = keep;
        }
    }
    if (!full()) { // insertion, then a '?' appended
        for (int32_t i = 0; i <= len; ++i) {
            // norm[0..i) + '?' + norm[i..]
            for (int32_t k = 0; k < i; ++k) t[k] = norm[k];
            t[i] = '?';
            for (int32_t k = i; k <= len; ++k) t[k + 1] = norm[k];
            sweep_pattern(t);
        }
    }
}

void Suggester::rescore() {
    SuggEntry *e = set->entries;
    for (int32_t i = 0; i < set->count; ++i)
        if (e[i].score == 100) e[i].score = LX_Compare_Typographic(norm, e[i].word);
    // Insertion sort: stable, so that candidates of equal score keep the
    // order in which they were found, and cheap, as only the rescored
    // entries at the head of the set are out of order. It needs no memory.
    for (int32_t i = 1; i < set->count; ++i) {
        if (e[i].score <= e[i - 1].score) continue;
        SuggEntry moving = e[i];
        int32_t k = i;
        for (; k > 0 && e[k - 1].score < moving.score; --k) e[k] = e[k - 1];
        e[k] = moving;
    }
}

void Suggester::sweep(bool textLexiconsOnly) {
    for (int32_t k = nLexicons - 1; k >= 0; --k) {
        LX_Lexicon *lex = lexicons[k];
        if (textLexiconsOnly && (lex->kind == LEX_FC || lex->kind == LEX_MC)) continue;
        if (options & LX_OPT_SUGGEST_TYPOGRAPHIC)
            LX_Lexicon_FindSimilar(lex, norm, depth, LX_Compare_Typographic, set);
        if (options & LX_OPT_SUGGEST_PHONETIC)
            LX_Lexicon_FindSimilar(lex, norm, depth, LX_Compare_Phonetic, set);
    }
}

void Suggester::comparator_sweeps() {
    const bool phonetic = (options & LX_OPT_SUGGEST_PHONETIC) != 0;
    if (depth > 30) {
        sweep(false);
    } else if (!grown()) {
        // Compressed lexicons are spared while the text lexicons give
        // something, unless phonetic suggestions are asked for.
        sweep(true);
        if (!grown() || phonetic) sweep(false);
    } else if (phonetic) {
        sweep(false);
    }
}

void Suggester::divisions() {
    char left[LX_MAX_WORD_SZ], joined[kTrialSz];
    for (int32_t cut = 2; cut <= normLen - 2; ++cut) {
        LX_Str_CopyN(left, sizeof left, norm, cut);
        const char *right = norm + cut;
        if (!text_trial(left) || !text_trial(right)) continue;
        const uint32_t hyphen = options & LX_OPT_SPLIT_AT_HYPHEN;
        const uint32_t apostrophe = options & LX_OPT_SPLIT_AT_APOSTROPHE;
        if (hyphen && (left[cut - 1] == '-' || right[0] == '-')) continue;
        if (apostrophe && (left[cut - 1] == '\'' || right[0] == '\'')) continue;
        LX_Str_Copy(joined, sizeof joined, left);
        LX_Str_Cat(joined, sizeof joined, " ");
        LX_Str_Cat(joined, sizeof joined, right);
        SuggSet_Add(set, joined, LX_Compare_Typographic(word, joined));
    }
}

void Suggester::space_behind_punctuation() {
    const uchar *w = reinterpret_cast<const uchar *>(word);
    int32_t len = 0, punct = 0, at = -1;
    for (; w[len] != 0; ++len) {
        if (len + 1 >= LX_MAX_WORD_SZ) return; // too long for a space more, whatever its length
        if (lx_class(w[len]) & LX_CC_PUNCT) {
            ++punct;
            at = len;
        }
    }
    if (punct != 1 || len + 1 >= LX_MAX_WORD_SZ) return;
    char t[kTrialSz];
    for (int32_t k = 0; k <= at; ++k) t[k] = word[k];
    t[at + 1] = ' ';
    for (int32_t k = at + 1; k <= len; ++k) t[k + 1] = word[k];
    if (full_text_trial(t)) SuggSet_Add(set, t, LX_Compare_Typographic(word, t));
}

void Suggester::spaces_between_letters_and_digits() {
    const uchar *w = reinterpret_cast<const uchar *>(word);
    bool hasDigit = false;
    for (const uchar *p = w; *p && !hasDigit; ++p) hasDigit = lx_is_digit(*p);
    if (!hasDigit) return;
    char t[kTrialSz];
    LX_Str_Copy(t, sizeof t, word);
    uchar *r = reinterpret_cast<uchar *>(t);
    int32_t len = LX_Str_Len(t);
    bool afterLetter = lx_is_alpha(r[0]);
    for (int32_t i = 0; r[i] != 0; ++i) {
        const uchar c = r[i];
        bool blank = (afterLetter && lx_is_digit(c)) || (!afterLetter && lx_is_alpha(c));
        if (blank && len + 1 < LX_MAX_WORD_SZ) {
            for (int32_t k = len; k >= i; --k) r[k + 1] = r[k];
            r[i++] = ' ';
            ++len;
        }
        afterLetter = lx_is_alpha(c);
    }
    if (full_text_trial(t)) SuggSet_Add(set, t, LX_Compare_Typographic(word, t));
}

void Suggester::case_and_possessive() {
    const int16_t keepAccents = (options & LX_OPT_ACCENTED_CAPITALS) ? 1 : 0;
    for (int32_t i = 0; i < set->count; ++i) {
        LX_TransferCase(word, 0, keepAccents, set->entries[i].word);
        LX_RestorePossessive(word, options, set->entries[i].word);
    }
}

void Suggester::remove_look_alikes() {
    const bool caseSensitive = (options & LX_OPT_CASE_SENSITIVE) != 0;
    SuggEntry *e = set->entries;
    int32_t i = 0;
    while (i < set->count) {
        bool earlierRemoved = false;
        for (int32_t j = i + 1; j < set->count;) {
            bool alike = caseSensitive ? LX_Str_Cmp(e[i].word, e[j].word) == 0
                                       : LX_Str_ICmp(e[i].word, e[j].word) == 0;
            if (!alike) {
                ++j;
                continue;
            }
            // Removing the later text takes out the first entry with exactly
            // that text: the earlier entry if the two are the same, else
            // the later one.
            char later[LX_MAX_WORD_SZ];
            LX_Str_Copy(later, sizeof later, e[j].word);
            const bool same = LX_Str_Cmp(e[i].word, later) == 0;
            SuggSet_Remove(set, later);
            if (same) {
                earlierRemoved = true;
                break;
            }
        }
        if (!earlierRemoved) ++i;
    }
}

} // namespace

extern "C" LX_API int32_t LX_Suggest(const char *word, int32_t depth, LX_Lexicon *const *lexicons,
                                     uint32_t options, SuggSet *set) {
    LX_ASSERT(word != NULL);
    LX_ASSERT(lexicons != NULL);
    LX_ASSERT(set != NULL);
    LX_ASSERT(set->entries != NULL);
    Suggester s{};
    s.word = word;
    s.lexicons = lexicons;
    s.options = options;
    s.depth = depth;
    s.set = set;
    s.start = set->count;
    s.normLen = LX_NormaliseWord(word, options, s.norm);
    if (s.normLen == 0) return 0;
    while (lexicons[s.nLexicons] != nullptr) ++s.nLexicons;

    const bool typographic = (options & LX_OPT_SUGGEST_TYPOGRAPHIC) != 0;
    if (typographic && depth >= 10) s.edit_trials();
    if (typographic && depth >= 30) s.pattern_searches();
    if (typographic && s.grown()) s.rescore();
    if (typographic || (options & LX_OPT_SUGGEST_PHONETIC)) s.comparator_sweeps();
    if (options & LX_OPT_SUGGEST_SPLIT) s.divisions();
    s.space_behind_punctuation();
    s.spaces_between_letters_and_digits();
    s.case_and_possessive();
    s.remove_look_alikes();
    return set->count;
}

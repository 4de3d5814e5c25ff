// The accent search: a word in capitals, or capitalised, is accepted when
// a lexicon holds an accented form of it. The engine asks the lexicons for
// the words of the word's base form instead of trying every form; these
// tests hold it to the full search, trial by trial.
#include <algorithm>
#include <random>

#include "chartab.h"
#include "check.h"
#include "lexicon.h"
#include "lxtest.h"
#include "safestr.h"

namespace {

constexpr uint32_t CS = LX_OPT_CHECK_SPELLING, CASE = LX_OPT_CASE_SENSITIVE, ACC = LX_OPT_ACCENTED_CAPITALS;

// The plain lookups of a trial: as it stands, with a lower-case first
// letter, and for a word in capitals regardless of case.
int16_t model_plain(const std::string &w, LX_Lexicon *const *list, uint32_t options, char *repl, int32_t replSz) {
    int16_t a = LX_FindInLexicons(w.c_str(), w.c_str(), list, options, repl, replSz);
    if (a > 0 || !(options & CASE)) return a;
    const auto u = [](char c) { return static_cast<uchar>(c); };
    if (lx_is_upper(u(w[0]))) {
        std::string lowered = w;
        lowered[0] = static_cast<char>(lx_to_lower(u(w[0])));
        a = LX_FindInLexicons(lowered.c_str(), w.c_str(), list, options, repl, replSz);
        if (a > 0) return a;
    }
    for (char c : w)
        if (lx_is_alpha(u(c)) && !lx_is_upper(u(c))) return a;
    return LX_FindInLexicons(w.c_str(), w.c_str(), list, options & ~CASE, repl, replSz);
}

// The full search, every trial in the counter's order.
int16_t model_lookup(const std::string &w, LX_Lexicon *const *list, uint32_t options, char *repl, int32_t replSz) {
    int16_t a = model_plain(w, list, options, repl, replSz);
    if (a > 0) return LX_ActionResult(a);
    if (options & ACC) return LX_RES_MISSPELLED;
    const auto u = [](char c) { return static_cast<uchar>(c); };
    const bool all = std::all_of(w.begin(), w.end(), [&](char c) { return lx_is_upper(u(c)); });
    auto trial = [&](const std::string &t, int16_t *r) {
        int16_t b = model_plain(t, list, options | ACC, repl, replSz);
        *r = b > 0 ? LX_ActionResult(b) : LX_RES_MISSPELLED;
        return !(*r & LX_RES_MISSPELLED);
    };
    int16_t r;
    std::string t = w;
    if (all) {
        for (;;) {
            size_t pos = 0;
            for (; pos < w.size(); ++pos) {
                uchar c = u(t[pos]);
                do c = LX_Char_NextVariant(lx_fold(u(w[pos])), c);
                while (c != 0 && lx_is_lower(c));
                if (c != 0) {
                    t[pos] = static_cast<char>(c);
                    break;
                }
                t[pos] = w[pos];
            }
            if (pos == w.size()) return LX_RES_MISSPELLED;
            if (trial(t, &r)) return r;
        }
    }
    if (!lx_is_upper(u(w[0]))) return LX_RES_MISSPELLED;
    for (uchar c = LX_Char_NextVariant(lx_fold(u(w[0])), u(w[0])); c != 0; c = LX_Char_NextVariant(lx_fold(u(w[0])), c)) {
        t[0] = static_cast<char>(c);
        if (trial(t, &r)) return r;
    }
    return LX_RES_MISSPELLED;
}

// The word as a writer without accented capitals types it in capitals.
std::string plain_capitals(const std::string &w) {
    std::string out;
    for (char ch : w) {
        uchar c = lx_to_upper(static_cast<uchar>(ch));
        out += static_cast<char>(lx_fold(c) != 0 ? lx_fold(c) : c);
    }
    return out;
}

} // namespace

// Random lexicons of short words in many accent and case forms, some of
// them excluded or with replacements; random lists of one to three of them.
// Every verdict and replacement of a lookup equals the full search's.
TEST(Accents, SearchAgreesWithEveryTrialInOrder) {
    std::mt19937 rng(2026);
    const std::string letters = "aAeE\xC0\xC1\xC4\xC9\xCA\xE0\xE1\xE4\xE9\xEA" "cC\xC7\xE7" "\xD0\xF0" "1-";
    auto random_word = [&](size_t n) {
        std::string w;
        for (size_t i = 0; i < n; ++i) w += letters[rng() % letters.size()];
        return w;
    };
    for (int round = 0; round < 60; ++round) {
        MemLex lexicons[3];
        for (MemLex &m : lexicons) {
            for (int k = 0, n = static_cast<int>(rng() % 40); k < n; ++k) {
                const std::string w = random_word(1 + rng() % 4);
                const char actions[] = {LX_ACT_IGNORE, LX_ACT_IGNORE, LX_ACT_EXCLUDE, LX_ACT_AUTO_CHANGE_CASE,
                                        LX_ACT_COND_CHANGE};
                const char action = actions[rng() % 5];
                m.add(w.c_str(), action, action == LX_ACT_IGNORE ? nullptr : "x\xE9");
            }
        }
        std::vector<LX_Lexicon *> list;
        for (size_t k = 0, n = 1 + rng() % 3; k < n; ++k) list.push_back(&lexicons[rng() % 3].lex);
        list.push_back(nullptr);
        for (int q = 0; q < 200; ++q) {
            // Queries in capitals or capitalised, some of them held forms.
            std::string w = random_word(1 + rng() % 4);
            for (char &c : w) c = static_cast<char>(lx_to_upper(static_cast<uchar>(c)));
            if (rng() % 3 == 0) w[0] = static_cast<char>(lx_to_upper(static_cast<uchar>(w[0])));
            if (rng() % 3 == 0 && w.size() > 1) w[1] = static_cast<char>(lx_to_lower(static_cast<uchar>(w[1])));
            const uint32_t options = CS | (rng() % 4 ? CASE : 0);
            char want[LX_MAX_WORD_SZ] = "", got[LX_MAX_WORD_SZ] = "";
            const int16_t expected = model_lookup(w, list.data(), options, want, sizeof want);
            EXPECT_EQ(expected, LX_LookupWord(w.c_str(), list.data(), options, got, sizeof got)) << w;
            EXPECT_STREQ(want, got) << w;
        }
    }
}

// Every accented word of the bundled list, typed in capitals without its
// accents, is found, whatever the number of lexicons in front of the list,
// and also as the right piece of a hyphenated compound.
TEST(Accents, EveryAccentedWordOfTheBundledListInCapitals) {
    MemLex bundled;
    std::vector<std::string> accented;
    for (const std::string &w : bundled_words()) {
        bundled.add(w.c_str());
        if (std::any_of(w.begin(), w.end(), [](char c) { return static_cast<uchar>(c) >= 0xC0; })) accented.push_back(w);
    }
    ASSERT_GT(accented.size(), 100u);
    MemLex empties[7];
    for (int n : {1, 2, 8}) {
        std::vector<LX_Lexicon *> list;
        for (int k = 0; k < n - 1; ++k) list.push_back(&empties[k].lex);
        list.push_back(&bundled.lex);
        list.push_back(nullptr);
        int failures = 0;
        for (const std::string &w : accented) {
            const std::string caps = plain_capitals(w);
            const std::string compound = "THE-" + caps;
            if (LX_CheckWord(caps.c_str(), list.data(), CS | CASE | LX_OPT_STRIP_POSSESSIVE, nullptr, 0, nullptr) != 0 ||
                LX_CheckWord(compound.c_str(), list.data(), CS | CASE | LX_OPT_STRIP_POSSESSIVE | LX_OPT_SPLIT_AT_HYPHEN, nullptr, 0,
                             nullptr) != 0) {
                if (++failures <= 5) ADD_FAILURE() << caps << " with " << n << " lexicons";
            }
        }
        EXPECT_EQ(0, failures) << n << " lexicons";
    }
}

// Words that no lexicon holds in any form end the search at once, however
// many forms they have.
TEST(Accents, WordsWithoutAnyHeldFormAreMisspelled) {
    MemLex user{"other"}, lex{"consid\xE9r\xE9" "e", "eaeiouaeiouaeiouaeiou"};
    LexList list{&user.lex, &lex.lex};
    static const struct { const char *word; int expected; } cases[] = {
        {"CONSIDEREE", 0},                     // 1,680 trials into the full search
        {"EAEIOUAEIOUAEIOUAEIOU", 0},          // held as it stands, in lower case
        {"AEIOUAEIOUAEIOUAEIOU", 1},           // thousands of millions of forms, none held
        {"\xC9" "AEIOUAEIOUAEIOUAEIOU", 1},
        {"\xC9" "AEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOUAEIOU", 1},
    };
    for (const auto &c : cases) EXPECT_EQ(c.expected, LX_CheckWord(c.word, list, CS | CASE, nullptr, 0, nullptr)) << c.word;
}

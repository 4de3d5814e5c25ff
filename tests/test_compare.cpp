// Tests of the word comparators, the phonetic key and the pattern matchers.
#include <gtest/gtest.h>

#include <string>

#include "compare.h"

namespace {

int cell(char row, char col) { return LX_LetterMatrix[row - 'A'][col - 'A']; }

struct ScoreCase {
    const char *a;
    const char *b;
    int score;
};

template <size_t N>
void expect_scores(LX_WordComparatorCb cmp, const ScoreCase (&cases)[N]) {
    for (const ScoreCase &c : cases) {
        SCOPED_TRACE(std::string("\"") + c.a + "\" vs \"" + c.b + "\"");
        EXPECT_EQ(c.score, cmp(c.a, c.b));
    }
}

std::string key_of(const char *word) {
    char key[2 * LX_MAX_WORD_SZ + 1];
    LX_PhoneticKey(word, key);
    return key;
}

} // namespace

// ------------------------------------------------------------ letter matrix

TEST(LetterMatrix, OrderMattersOnlyForFivePairs) {
    static const struct {
        char x, y;
        int xy, yx;
    } kAsymmetric[] = {
        {'C', 'T', 0, 20}, {'D', 'T', 20, 5}, {'E', 'T', 5, 10},
        {'G', 'T', 10, 0}, {'L', 'O', 5, 0},
    };
    for (const auto &p : kAsymmetric) {
        SCOPED_TRACE(std::string(1, p.x) + p.y);
        EXPECT_EQ(p.xy, cell(p.x, p.y));
        EXPECT_EQ(p.yx, cell(p.y, p.x));
    }
    for (char x = 'A'; x <= 'Z'; ++x) {
        EXPECT_EQ(100, cell(x, x));
        for (char y = 'A'; y <= 'Z'; ++y) {
            bool listed = false;
            for (const auto &p : kAsymmetric)
                listed |= (p.x == x && p.y == y) || (p.x == y && p.y == x);
            if (listed) continue;
            SCOPED_TRACE(std::string(1, x) + y);
            EXPECT_EQ(cell(x, y), cell(y, x));
        }
    }
}

// ------------------------------------------------------ typographic score

TEST(CompareTypographic, Scores) {
    static const ScoreCase kCases[] = {
        {"hello", "hello", 100}, {"Cat", "cat", 98},      {"HELLO", "hello", 95},
        {"ab", "ba", 60},        {"cat", "cot", 80},      {"cat", "bat", 66},
        {"ca", "ta", 50},        {"ta", "ca", 60},        {"abc", "xyz", 6},
        {"x", "xy", 75},         {"cat", "cats", 87},     {"abb", "ab", 83}, // left over
        {"", "abc", 0},          {"abc", "", 0},          {"", "", 0},
        {"a", "b", 0},                // nothing earned: the score stays 0
        {"abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQRSTUVWXYZ", 95},
        {"teh", "the", 73},           // swapped vowel and consonant: 120
        {"recieve", "receive", 94},   // swapped vowels: 160
        {"nmo", "mno", 83},           // swapped consonants: 150
        {"leter", "letter", 96},      // b doubles a consonant: 80
        {"book", "bok", 93},          // a doubles a vowel: 75
        {"aab", "ab", 91},            // a doubles a vowel
        {"abbc", "abc", 95},          // a doubles a consonant
        {"thecat", "the cat", 92},    // the space is b's letter too many
        {"12a", "13a", 98},           // two characters without a base letter
        {"a", "\xe1", 95},            // accent
        {"A", "\xe1", 90},            // accent and case
        {"\xc1", "\xe1", 95},         // case of an accented letter
        {"\xf0x", "ax", 50},          // eth has no base letter: no matrix credit
        {"a\xfe", "ab", 50},          // nor has thorn
    };
    expect_scores(LX_Compare_Typographic, kCases);
}

// Every pair of bytes, in words where they meet in each of the cases of
// the walk, stays in range and inside the texts (checked by the sanitizers).
TEST(CompareTypographic, AnyBytesStayInRange) {
    for (int x = 1; x < 256; ++x)
        for (int y = 1; y < 256; ++y) {
            const char cx = static_cast<char>(x), cy = static_cast<char>(y);
            const char a[] = {cx, cy, cx, '\0'};
            const char b[] = {cy, cx, '\0'};
            const char c[] = {cy, '\0'};
            for (const char *p : {a, b, c})
                for (const char *q : {a, b, c}) {
                    int t = LX_Compare_Typographic(p, q);
                    int f = LX_Compare_Phonetic(p, q);
                    if (t < 0 || t > 100 || (f != 0 && f != t)) {
                        ADD_FAILURE() << "bytes " << x << ", " << y << ": " << t << ", " << f;
                        return;
                    }
                }
        }
}

// ------------------------------------------------------------ phonetic key

TEST(PhoneticKey, Keys) {
    static const struct {
        const char *word;
        const char *key;
    } kCases[] = {
        {"knight", "NKHT"},    {"write", "RT"},      {"what", "HT"},     {"phone", "FN"},
        {"church", "KHRKH"},   {"school", "SKL"},    {"nation", "NXN"},  {"judge", "JJ"},
        {"laugh", "LK"},       {"thumb", "0M"},      {"vision", "FXN"},  {"ocean", "OSN"},
        {"cello", "SL"},       {"success", "SKKS"},  {"accept", "AKKPT"}, {"egg", "EK"},
        {"bigger", "BKR"},     {"box", "BKS"},       {"watch", "WX"},    {"yellow", "YL"},
        {"xylophone", "SLFN"}, {"ahead", "AHT"},     {"wrah", "RH"},     {"wr", "R"},
        {"w", ""},             {"aeon", "EN"},       {"gnome", "NM"},    {"pneu", "N"},
        {"", ""},              {"12345", ""},        {"Phone", "HN"},    {"social", "SXL"},
        {"scheme", "SKM"},     {"edge", "EJ"},       {"ghost", "KST"},   {"gin", "JN"},
        {"sign", "SN"},        {"ugh", "UK"},        {"tch", "X"},       {"nicked", "NKT"},
        {"\xe9h", ""},         {"oh", "O"},          {"ah\xe9", "AH"},   {"quiz", "KS"},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.word);
        EXPECT_EQ(c.key, key_of(c.word));
    }
}

TEST(PhoneticKey, LongestTexts) {
    // 'x' codes as two characters unless doubled: alternated, it gives the
    // longest keys.
    std::string bx, expected;
    for (int i = 0; i < 40; ++i) bx += "bx", expected += "BKS";
    EXPECT_EQ(expected, key_of(bx.c_str()));

    static const char *const kFill[] = {"x", "bx", "sch", "cc", "wrh"};
    for (const char *fill : kFill) {
        SCOPED_TRACE(fill);
        std::string longest;
        while (longest.size() < LX_MAX_WORD_SZ) longest += fill;
        longest.resize(LX_MAX_WORD_SZ);
        EXPECT_EQ(100, LX_Compare_Phonetic(longest.c_str(), longest.c_str()));
    }
}

// ------------------------------------------------------- phonetic score

TEST(ComparePhonetic, Scores) {
    static const ScoreCase kCases[] = {
        {"fone", "phone", 71},  // same key
        {"hello", "help", 70},  // one key starts the other
        {"help", "hello", 70},
        {"teh", "the", 0},      // T against 0
        {"123", "124", 98},     // empty keys agree
        {"", "abc", 0},         // as the typographic score
        {"PHONE", "fone", 68},  // keys are made in lower case
        {"cat", "bat", 0},
        {"Knight", "night", 91},
    };
    expect_scores(LX_Compare_Phonetic, kCases);
}

// -------------------------------------------------------------- patterns

TEST(MatchPattern, CaseAndNoCase) {
    static const struct {
        const char *pattern;
        const char *word;
        int exact, noCase;
    } kCases[] = {
        {"c?t", "cat", 100, 100}, {"c?t", "ct", 0, 0},     {"c?t", "coat", 0, 0},
        {"cat", "cats", 0, 0},    {"cats", "cat", 0, 0},   {"c?T", "cat", 0, 100},
        {"", "", 100, 100},       {"?", "", 0, 0},         {"", "a", 0, 0},
        {"???", "a?c", 100, 100}, {"\xc9t?", "\xe9tA", 0, 100}, {"?", "?", 100, 100},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(std::string(c.pattern) + " / " + c.word);
        EXPECT_EQ(c.exact, LX_Match_Pattern(c.pattern, c.word));
        EXPECT_EQ(c.noCase, LX_Match_PatternNoCase(c.pattern, c.word));
    }
}

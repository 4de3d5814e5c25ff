// Tests of the word comparators, the phonetic key and the pattern matchers.
#include "compare.h"
#include "lxtest.h"

#include <algorithm>
#include <random>

static int cell(char row, char col) { return LX_LetterMatrix[row - 'A'][col - 'A']; }

static std::string key_of(const char *word) {
    char key[2 * LX_MAX_WORD_SZ + 1];
    LX_PhoneticKey(word, key);
    return key;
}

TEST(LetterMatrix, OrderMattersOnlyForFivePairs) {
    static const struct { char x, y; int xy, yx; } kAsymmetric[] = {
        {'C', 'T', 0, 20}, {'D', 'T', 20, 5}, {'E', 'T', 5, 10}, {'G', 'T', 10, 0}, {'L', 'O', 5, 0}};
    for (const auto &p : kAsymmetric) {
        EXPECT_EQ(p.xy, cell(p.x, p.y)) << p.x << p.y;
        EXPECT_EQ(p.yx, cell(p.y, p.x)) << p.y << p.x;
    }
    for (char x = 'A'; x <= 'Z'; ++x) {
        EXPECT_EQ(100, cell(x, x));
        for (char y = 'A'; y <= 'Z'; ++y) {
            bool listed = false;
            for (const auto &p : kAsymmetric) listed |= (p.x == x && p.y == y) || (p.x == y && p.y == x);
            EXPECT_TRUE(listed || cell(x, y) == cell(y, x)) << x << y;
        }
    }
}

TEST(Compare, WorkedScores) {
    constexpr LX_WordComparatorCb T = LX_Compare_Typographic, P = LX_Compare_Phonetic;
    static const struct { LX_WordComparatorCb cmp; const char *a, *b; int score; } kCases[] = {
        {T, "hello", "hello", 100}, {T, "Cat", "cat", 98}, {T, "HELLO", "hello", 95}, {T, "ab", "ba", 60},
        {T, "cat", "cot", 80}, {T, "cat", "bat", 66}, {T, "ca", "ta", 50}, {T, "ta", "ca", 60},
        {T, "abc", "xyz", 6}, {T, "x", "xy", 75}, {T, "cat", "cats", 87}, {T, "abb", "ab", 83}, // left over
        {T, "", "abc", 0}, {T, "abc", "", 0}, {T, "", "", 0},
        {T, "a", "b", 0}, // nothing earned: the score stays 0
        {T, "abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQRSTUVWXYZ", 95},
        {T, "teh", "the", 73},         // swapped vowel and consonant: 120
        {T, "recieve", "receive", 94}, // swapped vowels: 160
        {T, "nmo", "mno", 83},         // swapped consonants: 150
        {T, "leter", "letter", 96},    // b doubles a consonant: 80
        {T, "book", "bok", 93},        // a doubles a vowel: 75
        {T, "aab", "ab", 91}, {T, "abbc", "abc", 95}, // a doubles a vowel; a consonant
        {T, "thecat", "the cat", 92},  // the space is b's letter too many
        {T, "12a", "13a", 98},         // two characters without a base letter
        {T, "a", "\xe1", 95}, {T, "A", "\xe1", 90}, {T, "\xc1", "\xe1", 95}, // accent, case
        {T, "\xf0x", "ax", 50}, {T, "a\xfe", "ab", 50}, // eth and thorn have no base letter: no matrix credit
        {P, "fone", "phone", 71},      // same key
        {P, "hello", "help", 70}, {P, "help", "hello", 70}, // one key starts the other
        {P, "teh", "the", 0},          // T against 0
        {P, "123", "124", 98},         // empty keys agree
        {P, "", "abc", 0},             // as the typographic score
        {P, "PHONE", "fone", 68},      // keys are made in lower case
        {P, "cat", "bat", 0}, {P, "Knight", "night", 91},
    };
    for (const auto &c : kCases)
        EXPECT_EQ(c.score, c.cmp(c.a, c.b)) << (c.cmp == T ? "typographic " : "phonetic ") << c.a << " / " << c.b;
}

// Every pair of bytes, in words where they meet in each of the cases of
// the walk, stays in range and inside the texts (checked by the sanitizers).
TEST(Compare, AnyBytesStayInRange) {
    for (int x = 1; x < 256; ++x)
        for (int y = 1; y < 256; ++y) {
            const char cx = static_cast<char>(x), cy = static_cast<char>(y);
            const char a[] = {cx, cy, cx, '\0'}, b[] = {cy, cx, '\0'}, c[] = {cy, '\0'};
            for (const char *p : {a, b, c})
                for (const char *q : {a, b, c}) {
                    const int t = LX_Compare_Typographic(p, q), f = LX_Compare_Phonetic(p, q);
                    if (t < 0 || t > 100 || (f != 0 && f != t)) {
                        ADD_FAILURE() << "bytes " << x << ", " << y << ": " << t << ", " << f;
                        return;
                    }
                }
        }
}

// The sums of a long comparison don't overflow: the typographic score of
// words of 50 million characters is what it is for short ones.
TEST(Compare, LongWordsKeepTheirScore) {
    const size_t n = 50'000'000;
    std::string a(n, 'a'), ab(n, 'a');
    for (size_t i = 1; i < n; i += 2) ab[i] = 'b';
    // "abab..." against "bab...b": swapped pairs of a vowel and a consonant.
    const struct { const char *a, *b; int score; } kCases[] = {
        {a.c_str(), a.c_str(), 100}, {ab.c_str(), ab.c_str() + 1, 60},
        {a.c_str(), "a", 50}, // a run of characters left over
    };
    for (const auto &c : kCases)
        EXPECT_EQ(c.score, LX_Compare_Typographic(c.a, c.b)) << std::string(c.a, 4) << "...";
}

TEST(PhoneticKey, Keys) {
    static const std::pair<const char *, const char *> kCases[] = {
        {"knight", "NKHT"}, {"write", "RT"}, {"what", "HT"}, {"phone", "FN"}, {"church", "KHRKH"},
        {"school", "SKL"}, {"nation", "NXN"}, {"judge", "JJ"}, {"laugh", "LK"}, {"thumb", "0M"},
        {"vision", "FXN"}, {"ocean", "OSN"}, {"cello", "SL"}, {"success", "SKKS"}, {"accept", "AKKPT"},
        {"egg", "EK"}, {"bigger", "BKR"}, {"box", "BKS"}, {"watch", "WX"}, {"yellow", "YL"},
        {"xylophone", "SLFN"}, {"ahead", "AHT"}, {"wrah", "RH"}, {"wr", "R"}, {"w", ""}, {"aeon", "EN"},
        {"gnome", "NM"}, {"pneu", "N"}, {"", ""}, {"12345", ""}, {"Phone", "HN"}, {"social", "SXL"},
        {"scheme", "SKM"}, {"edge", "EJ"}, {"ghost", "KST"}, {"gin", "JN"}, {"sign", "SN"}, {"ugh", "UK"},
        {"tch", "X"}, {"nicked", "NKT"}, {"\xe9h", ""}, {"oh", "O"}, {"ah\xe9", "AH"}, {"quiz", "KS"},
    };
    for (const auto &[word, key] : kCases) EXPECT_EQ(key, key_of(word)) << word;
    // 'x' codes as two characters unless doubled: alternated, it gives the
    // longest keys.
    std::string bx, expected;
    for (int i = 0; i < 40; ++i) bx += "bx", expected += "BKS";
    EXPECT_EQ(expected, key_of(bx.c_str()));
    for (const char *fill : {"x", "bx", "sch", "cc", "wrh"}) {
        std::string longest;
        while (longest.size() < LX_MAX_WORD_SZ) longest += fill;
        longest.resize(LX_MAX_WORD_SZ);
        EXPECT_EQ(100, LX_Compare_Phonetic(longest.c_str(), longest.c_str())) << fill;
    }
}

TEST(MatchPattern, CaseAndNoCase) {
    static const struct { const char *pattern, *word; int exact, noCase; } kCases[] = {
        {"c?t", "cat", 100, 100}, {"c?t", "ct", 0, 0}, {"c?t", "coat", 0, 0}, {"cat", "cats", 0, 0},
        {"cats", "cat", 0, 0}, {"c?T", "cat", 0, 100}, {"", "", 100, 100}, {"?", "", 0, 0}, {"", "a", 0, 0},
        {"???", "a?c", 100, 100}, {"\xc9t?", "\xe9tA", 0, 100}, {"?", "?", 100, 100},
    };
    for (const auto &c : kCases) {
        EXPECT_EQ(c.exact, LX_Match_Pattern(c.pattern, c.word)) << c.pattern << " / " << c.word;
        EXPECT_EQ(c.noCase, LX_Match_PatternNoCase(c.pattern, c.word)) << c.pattern << " / " << c.word;
    }
}

// A sweep's scan must give the comparator's own score whenever that is
// above the floor, whatever it kept of the word before, and never more
// than the floor otherwise. Words in sorted order, each sharing the bytes
// it has in common with the one before, as a sweep offers them; the same
// words again with nothing shared; and a few random byte strings.
TEST(TypoScan, SameScoresAsTheComparatorAboveTheFloor) {
    static const char *const kTyped[] = {"accomdate", "teh", "recieve", "abandonned", "a", "Zebra", "leter",
                                         "thecat", "aab", "12a", "", "mmmm"};
    std::vector<std::string> words = {"a", "aa", "aab", "ab", "abandon", "abandoned", "abandoning", "accommodate",
                                      "accommodated", "accommodates", "bat", "book", "bok", "cat", "cats", "cot",
                                      "letter", "letters", "nnnn", "receive", "received", "the", "the cat", "thee",
                                      "zebra", "Zebra", "zebras", "12a", "13a", "\xE9t\xE9", "mmmm", "mmmmm"};
    std::mt19937 rng(7);
    for (int i = 0; i < 200; ++i) {
        std::string w;
        const int len = 1 + static_cast<int>(rng() % 12);
        for (int k = 0; k < len; ++k) w += static_cast<char>("aabcdeilmnoprstAE' -\xE0\xE9"[rng() % 22]);
        words.push_back(w);
    }
    std::sort(words.begin(), words.end());
    for (const char *typed : kTyped) {
        for (int floor : {0, 40, 58, 59, 60, 75, 80, 90, 99, 100}) {
            LX_TypoScan scan;
            ASSERT_TRUE(LX_TypoScan_Start(&scan, typed));
            for (int pass = 0; pass < 2; ++pass) {
                const std::string *before = nullptr;
                for (const std::string &w : words) {
                    int shared = 0;
                    if (pass == 0 && before != nullptr)
                        while (w[shared] != '\0' && w[shared] == (*before)[shared]) ++shared;
                    const int got = LX_TypoScan_Score(&scan, w.c_str(), static_cast<int>(w.size()), shared, floor);
                    const int want = LX_Compare_Typographic(typed, w.c_str());
                    if (want > floor)
                        EXPECT_EQ(want, got) << typed << " / " << w << " floor " << floor;
                    else
                        EXPECT_LE(got, floor) << typed << " / " << w << " floor " << floor;
                    before = &w;
                }
            }
        }
    }
    LX_TypoScan scan;
    EXPECT_FALSE(LX_TypoScan_Start(&scan, std::string(LX_MAX_WORD_SZ, 'a').c_str()));
}

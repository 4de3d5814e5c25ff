// Word rule chain: lookups with case and accent variants, replacements,
// division of words, and the reports that need no lexicon.
#include <cstring>
#include <string>

#include "check.h"
#include "lxtest.h"

namespace {

constexpr uint32_t CS = LX_OPT_CHECK_SPELLING;
constexpr uint32_t CASE = LX_OPT_CASE_SENSITIVE;
constexpr uint32_t ACC = LX_OPT_ACCENTED_CAPITALS;

struct RuleCase {
    const char *word;
    uint32_t options;
    int expected;
    const char *repl;   // expected replacement, or null to skip the check
    int offset = 0;     // expected offset of the reported piece
};

void run_cases(LX_Lexicon *const *list, const RuleCase *cases, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        const RuleCase &c = cases[i];
        SCOPED_TRACE(std::string("word ") + c.word + " options " + std::to_string(c.options));
        char repl[LX_MAX_WORD_SZ] = "untouched";
        int32_t offset = 0;
        EXPECT_EQ(c.expected, LX_CheckWord(c.word, list, c.options, repl, sizeof repl, &offset));
        if (c.repl) {
            EXPECT_STREQ(c.repl, repl);
        }
        EXPECT_EQ(c.offset, offset);
        // Without a replacement buffer the verdict is the same.
        EXPECT_EQ(c.expected, LX_CheckWord(c.word, list, c.options, nullptr, 0, nullptr));
    }
}

TEST(Rules, CaseVariantsOfLookups) {
    MemLex lex{"hello", "London", "NASA"};
    LexList list{&lex.lex};
    const uint32_t o = CS | CASE | ACC, cap = o | LX_OPT_REPORT_CAPITALISATION;
    static const RuleCase cases[] = {
        {"hello", o, 0, nullptr},       {"Hello", o, 0, nullptr},      {"HELLO", o, 0, nullptr},
        {"hELLO", o, 1, nullptr},       {"HeLLo", o, 1, nullptr},      {"london", o, 1, nullptr},
        {"LONDON", o, 0, nullptr},      {"nasa", o, 1, nullptr},       {"Nasa", o, 1, nullptr},
        {"london", cap, 9, "London"},   {"nasa", cap, 9, "NASA"},      {"Nasa", cap, 1, nullptr},
        {"nasa", CS | ACC | LX_OPT_REPORT_CAPITALISATION, 0, nullptr},
        {"hELLO", CS | ACC, 0, nullptr}, // without case sensitivity any case is found
    };
    run_cases(list, cases, std::size(cases));
}

TEST(Rules, AccentedCapitals) {
    MemLex lex{"\xE9" "cole", "caf\xE9"};
    LexList list{&lex.lex};
    const uint32_t o = CS | CASE;
    static const RuleCase cases[] = {
        {"ECOLE", o, 0, nullptr},
        {"Ecole", o, 0, nullptr},
        {"ecole", o, 1, nullptr},
        {"CAFE", o, 0, nullptr},
        {"Cafe", o, 1, nullptr}, // only the first position varies
        {"\xC9" "cole", o, 1, nullptr},
        {"\xC9" "cole", o | ACC, 0, nullptr},
        {"ECOLE", o | ACC, 1, nullptr},
        {"Ecole", o | ACC, 1, nullptr},
        {"\xC9" "t\xE9", 0, 1, nullptr}, // an accented capital with no other option
        {"\xC9" "t\xE9", ACC, 0, nullptr},
        {"ZZZZ", o, 1, nullptr},
    };
    run_cases(list, cases, std::size(cases));
}

TEST(Rules, AccentSearchOfLongWordIsBounded) {
    MemLex user{"other"}, lex{"consid\xE9r\xE9" "e", "eaeiouaeiouaeiouaeiou"};
    LexList list{&user.lex, &lex.lex};
    // 1,680 trials into the search of a word in capitals.
    EXPECT_EQ(0, LX_CheckWord("CONSIDEREE", list, CS | CASE, nullptr, 0, nullptr));
    // Thousands of millions of accented forms, none of them held: the
    // search gives up and the verdict is a misspelling.
    EXPECT_EQ(1, LX_CheckWord("AEIOUAEIOUAEIOUAEIOU", list, CS | CASE, nullptr, 0, nullptr));
    EXPECT_EQ(1, LX_CheckWord("\xC9" "AEIOUAEIOUAEIOUAEIOU", list, CS | CASE, nullptr, 0, nullptr));
}

TEST(Rules, StoredReplacements) {
    MemLex lex;
    lex.add("teh", LX_ACT_AUTO_CHANGE_CASE, "the");
    lex.add("recieve", LX_ACT_AUTO_CHANGE, "receive");
    lex.add("wich", LX_ACT_COND_CHANGE_CASE, "which");
    lex.add("alot", LX_ACT_COND_CHANGE, "a lot");
    lex.add("bad", LX_ACT_EXCLUDE, "good");
    lex.add("odd", 'E');
    LexList list{&lex.lex};
    const uint32_t o = CS | CASE;
    static const RuleCase cases[] = {
        {"Teh", o, 2, "The"},
        {"TEH", o, 2, "THE"},
        {"Recieve", o, 2, "receive"},
        {"Wich", o, 4, "Which"},
        {"ALOT", o, 4, "a lot"},
        {"bad", o, 1, "good"}, // an excluded word, with what the entry stores
        {"odd", o, 0, ""},     // an action outside the table: found, no report
        {"Teh's", o | LX_OPT_STRIP_POSSESSIVE, 2, "The's"},
        {"tehs'", o | LX_OPT_STRIP_POSSESSIVE, 1, nullptr},
    };
    run_cases(list, cases, std::size(cases));
}

TEST(Rules, DivisionOfWords) {
    MemLex lex{"ab", "cd", "ef", "abc"};
    lex.add("teh", LX_ACT_AUTO_CHANGE, "the");
    LexList list{&lex.lex};
    const uint32_t run = CS | LX_OPT_SPLIT_RUN_TOGETHER, hy = CS | LX_OPT_SPLIT_AT_HYPHEN;
    static const RuleCase cases[] = {
        {"abef", run, 0, nullptr},
        {"abcdef", run, 0, nullptr},
        {"abcef", run, 0, nullptr}, // ab + cef fails, abc + ef works
        {"abx", run, 1, nullptr},   // too short to divide
        {"abxyef", run, 1, nullptr},
        {"ab-cd-ef", hy, 0, nullptr},
        {"ab-cd-xx", hy, 1, "xx", 6},
        {"ab-xx-ef", hy, 1, "xx-ef", 3},
        {"xx-ab", hy, 1, "xx-ab", 0},
        {"ab-", hy, 1, nullptr},
        {"teh-ab", hy, 2, "the"},
        {"ab-teh", hy, 2, "the", 3},
        {"ab'cd", CS | LX_OPT_SPLIT_AT_APOSTROPHE, 0, nullptr},
        {"ab'cd", hy, 1, nullptr},
        {"ab-cd'ef", hy | LX_OPT_SPLIT_AT_APOSTROPHE, 0, nullptr},
        {"abcd-ef", hy | run, 0, nullptr},
    };
    run_cases(list, cases, std::size(cases));
}

TEST(Rules, ReportsWithoutLexicon) {
    LexList none{};
    const uint32_t mix = LX_OPT_REPORT_MIXED_CASE, dig = LX_OPT_REPORT_WITH_DIGITS;
    static const RuleCase cases[] = {
        {"McDonald", mix, 16, "Mcdonald"},
        {"aBc", mix, 16, "abc"},
        {"abc123", dig, 32, "abc 123"},
        {"3rd", dig, 32, "3 rd"},
        {"a1b2", dig, 32, "a 1 b 2"},
        {"x-1a", dig, 32, "x-1 a"},
        {"x1-y", dig, 32, "x 1- y"},
        {"12", dig, 32, "12"},
        {"1-2", dig, 32, "1-2"},
        {"abc", dig, 0, "abc"},
        {"aB1c", mix | dig, 48, "aB 1 c"},
        {"zzZz", CS | mix, 17, "zzzz"},
        {"M\xC9" "T\xC9", 0, 1, nullptr},
    };
    run_cases(none, cases, std::size(cases));
}

TEST(Rules, DigitBlanksStopWhereTheBufferEnds) {
    LexList none{};
    char repl[4];
    EXPECT_EQ(32, LX_CheckWord("1a", none, LX_OPT_REPORT_WITH_DIGITS, repl, 4, nullptr));
    EXPECT_STREQ("1 a", repl);
    EXPECT_EQ(32, LX_CheckWord("1a", none, LX_OPT_REPORT_WITH_DIGITS, repl, 3, nullptr));
    EXPECT_STREQ("1a", repl);
}

TEST(Rules, MixedCase) {
    static const struct {
        const char *word;
        int mixed;
    } cases[] = {
        {"aBc", 1}, {"abC", 1}, {"AbC", 1}, {"ABc", 1}, {"O'Neil", 1}, {"MacDonald", 1}, {"1aB", 1},
        {"1Ab", 1}, {"abc", 0}, {"Abc", 0}, {"ABC", 0}, {"aBC", 0},    {"a", 0},         {"o'neil", 0},
        {"O'NEIL", 0}, {"A1b", 0}, {"a-B", 0}, {"", 0},
    };
    for (const auto &c : cases) EXPECT_EQ(c.mixed, LX_IsMixedCase(c.word)) << c.word;
}

TEST(Rules, IgnoreOptions) {
    const uint32_t addr = LX_OPT_IGNORE_ADDRESSES;
    static const struct {
        const char *word;
        uint32_t options;
        int ignored;
    } cases[] = {
        {"foo.ab", addr, 1},   {"foo.abcd", addr, 1}, {"foo.a1", addr, 1},   {"a.b.cd", addr, 1},
        {"ab://x", addr, 1},   {"ab/c", addr, 1},     {"abcd/c", addr, 1},   {"x.ab/c", addr, 1},
        {"foo.a", addr, 0},    {"foo.abcde", addr, 0}, {"foo.a-b", addr, 0}, {"foo.", addr, 0},
        {"e.g.", addr, 0},     {"ab:/x", addr, 0},    {"ab:x", addr, 0},     {"abcde/c", addr, 0},
        {"a/c", addr, 0},      {"x.a1/c", addr, 0},   {"x.a/c", addr, 0},    {"/c", addr, 0},
        {"ABC", LX_OPT_IGNORE_ALL_CAPITALS, 1},       {"AB1", LX_OPT_IGNORE_ALL_CAPITALS, 0},
        {"A-B", LX_OPT_IGNORE_ALL_CAPITALS, 0},       {"123", LX_OPT_IGNORE_NO_LETTERS, 1},
        {"1-2", LX_OPT_IGNORE_NO_LETTERS, 1},         {"a1", LX_OPT_IGNORE_NO_LETTERS, 0},
        {"Abc", LX_OPT_IGNORE_CAPITALISED, 1},        {"abc", LX_OPT_IGNORE_CAPITALISED, 0},
        {"aBc", LX_OPT_IGNORE_MIXED_CASE, 1},         {"x1", LX_OPT_IGNORE_WITH_DIGITS, 1},
        {"abc", 0, 0},
    };
    for (const auto &c : cases) EXPECT_EQ(c.ignored, LX_IsIgnoredWord(c.word, c.options)) << c.word;
}

TEST(Rules, IgnoredWordsBeatReports) {
    LexList none{};
    const uint32_t o = CS | LX_OPT_REPORT_MIXED_CASE | LX_OPT_REPORT_WITH_DIGITS;
    EXPECT_EQ(0, LX_CheckWord("aBc", none, o | LX_OPT_IGNORE_MIXED_CASE, nullptr, 0, nullptr));
    EXPECT_EQ(0, LX_CheckWord("ab1", none, o | LX_OPT_IGNORE_WITH_DIGITS, nullptr, 0, nullptr));
    EXPECT_EQ(0, LX_CheckWord("'s", none, o | LX_OPT_STRIP_POSSESSIVE, nullptr, 0, nullptr));
}

TEST(Rules, FirstLexiconOfTheListDecides) {
    MemLex user, main{"word"};
    user.add("word", LX_ACT_EXCLUDE);
    EXPECT_EQ(1, LX_CheckWord("word", LexList{&user.lex, &main.lex}, CS, nullptr, 0, nullptr));
    EXPECT_EQ(0, LX_CheckWord("word", LexList{&main.lex, &user.lex}, CS, nullptr, 0, nullptr));
    // A record without a kind is passed over.
    LX_Lexicon empty{};
    EXPECT_EQ(0, LX_CheckWord("word", LexList{&empty, &main.lex}, CS, nullptr, 0, nullptr));
}

TEST(Rules, SplitSubWord) {
    char piece[LX_MAX_WORD_SZ];
    const char *word = "ab-cd'ef";
    EXPECT_STREQ("cd'ef", LX_SplitSubWord(word, LX_OPT_SPLIT_AT_HYPHEN, piece));
    EXPECT_STREQ("ab", piece);
    EXPECT_STREQ("", LX_SplitSubWord(word, 0, piece));
    EXPECT_STREQ("ab-cd'ef", piece);
    EXPECT_STREQ("ef", LX_SplitSubWord(word + 3, LX_OPT_SPLIT_AT_APOSTROPHE, piece));
    EXPECT_STREQ("cd", piece);
    std::string longWord(100, 'x');
    EXPECT_EQ(longWord.c_str() + 100, LX_SplitSubWord(longWord.c_str(), 0, piece));
    EXPECT_EQ(80u, std::strlen(piece));
}

TEST(RulesDeathTest, NullArguments) {
    LexList none{};
    EXPECT_DEATH(LX_CheckWord(nullptr, none, 0, nullptr, 0, nullptr), "word != NULL");
    EXPECT_DEATH(LX_FindInLexicon("x", "x", nullptr, 0, nullptr, 0), "lex != NULL");
    EXPECT_DEATH(LX_SplitSubWord("x", 0, nullptr), "subWord != NULL");
}

} // namespace

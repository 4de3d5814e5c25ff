// Word rule chain: lookups with case and accent variants, replacements,
// division of words, and the reports that need no lexicon.
#include "check.h"
#include "lxtest.h"

constexpr uint32_t CS = LX_OPT_CHECK_SPELLING, CASE = LX_OPT_CASE_SENSITIVE, ACC = LX_OPT_ACCENTED_CAPITALS;

// The verdict on a word, the replacement (null: not checked) and the offset
// of the reported piece.
struct RuleCase { const char *word; uint32_t options; int expected; const char *repl = nullptr; int offset = 0; };

template <size_t N> static void run_cases(LX_Lexicon *const *list, const RuleCase (&cases)[N]) {
    for (const RuleCase &c : cases) {
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

TEST(Rules, LookupsWithCaseAndAccentVariants) {
    MemLex lex{"hello", "London", "NASA", "\xE9" "cole", "caf\xE9", "teh\tAthe", "recieve\tareceive",
               "wich\tCwhich", "alot\tca lot", "bad\tegood", "odd\tE"}; // 'E': an action outside the table
    const uint32_t o = CS | CASE, oa = o | ACC, cap = oa | LX_OPT_REPORT_CAPITALISATION;
    const uint32_t pos = o | LX_OPT_STRIP_POSSESSIVE;
    static const RuleCase cases[] = {
        {"hello", oa, 0}, {"Hello", oa, 0}, {"HELLO", oa, 0}, {"hELLO", oa, 1}, {"HeLLo", oa, 1}, {"london", oa, 1},
        {"LONDON", oa, 0}, {"nasa", oa, 1}, {"Nasa", oa, 1}, {"london", cap, 9, "London"}, {"nasa", cap, 9, "NASA"},
        {"Nasa", cap, 1}, {"nasa", CS | ACC | LX_OPT_REPORT_CAPITALISATION, 0},
        {"hELLO", CS | ACC, 0}, // without case sensitivity any case is found
        // Accents on capitals; in a capitalised word only the first position varies ("Cafe").
        {"ECOLE", o, 0}, {"Ecole", o, 0}, {"ecole", o, 1}, {"CAFE", o, 0}, {"Cafe", o, 1},
        {"ZZZZ", o, 1}, {"\xC9" "cole", o, 1}, {"\xC9" "cole", oa, 0}, {"ECOLE", oa, 1}, {"Ecole", oa, 1},
        {"\xC9" "t\xE9", 0, 1}, {"\xC9" "t\xE9", ACC, 0}, // an accented capital with no other option
        // Stored replacements.
        {"Teh", o, 2, "The"}, {"TEH", o, 2, "THE"}, {"Recieve", o, 2, "receive"}, {"Wich", o, 4, "Which"},
        {"ALOT", o, 4, "a lot"}, {"Teh's", pos, 2, "The's"}, {"tehs'", pos, 1},
        {"bad", o, 1, "good"}, // an excluded word, with what the entry stores
        {"odd", o, 0, ""},     // an action outside the table: found, no report
    };
    run_cases(LexList{&lex.lex}, cases);
}

TEST(Rules, RunTogetherStaysPolynomial) {
    // Every piece of "aaa...a" passes, so every division of every rest is
    // a candidate; without remembering the rests this takes ages.
    MemLex lex{"aa", "aaa"};
    LexList list{&lex.lex};
    const uint32_t run = CS | LX_OPT_SPLIT_RUN_TOGETHER;
    const std::string as(77, 'a');
    EXPECT_EQ(0, LX_CheckWord(as.c_str(), list, run, nullptr, 0, nullptr));
    EXPECT_EQ(1, LX_CheckWord((as + "qzq").c_str(), list, run, nullptr, 0, nullptr));
}

TEST(Rules, DivisionOfWords) {
    MemLex lex{"ab", "cd", "ef", "abc", "teh\tathe"};
    const uint32_t run = CS | LX_OPT_SPLIT_RUN_TOGETHER, hy = CS | LX_OPT_SPLIT_AT_HYPHEN;
    const uint32_t ap = LX_OPT_SPLIT_AT_APOSTROPHE;
    static const RuleCase cases[] = {
        {"abef", run, 0}, {"abcdef", run, 0}, {"abcef", run, 0}, // ab + cef fails, abc + ef works
        {"abx", run, 1},                                         // too short to divide
        {"abxyef", run, 1}, {"ab-cd-ef", hy, 0}, {"ab-cd-xx", hy, 1, "xx", 6}, {"ab-xx-ef", hy, 1, "xx-ef", 3},
        {"xx-ab", hy, 1, "xx-ab", 0}, {"ab-", hy, 1}, {"teh-ab", hy, 2, "the"}, {"ab-teh", hy, 2, "the", 3},
        {"ab'cd", CS | ap, 0}, {"ab'cd", hy, 1}, {"ab-cd'ef", hy | ap, 0}, {"abcd-ef", hy | run, 0},
    };
    run_cases(LexList{&lex.lex}, cases);
}

TEST(Rules, ReportsWithoutLexicon) {
    const uint32_t mix = LX_OPT_REPORT_MIXED_CASE, dig = LX_OPT_REPORT_WITH_DIGITS, all = CS | mix | dig;
    static const RuleCase cases[] = {
        {"McDonald", mix, 16, "Mcdonald"}, {"aBc", mix, 16, "abc"}, {"abc123", dig, 32, "abc 123"},
        {"3rd", dig, 32, "3 rd"}, {"a1b2", dig, 32, "a 1 b 2"}, {"x-1a", dig, 32, "x-1 a"},
        {"x1-y", dig, 32, "x 1- y"}, {"12", dig, 32, "12"}, {"1-2", dig, 32, "1-2"}, {"abc", dig, 0, "abc"},
        {"aB1c", mix | dig, 48, "aB 1 c"}, {"zzZz", CS | mix, 17, "zzzz"}, {"M\xC9" "T\xC9", 0, 1},
        // Ignored words beat reports.
        {"aBc", all | LX_OPT_IGNORE_MIXED_CASE, 0}, {"ab1", all | LX_OPT_IGNORE_WITH_DIGITS, 0},
        {"'s", all | LX_OPT_STRIP_POSSESSIVE, 0},
    };
    run_cases(LexList{}, cases);
    char repl[4]; // the blanks stop where the buffer ends
    EXPECT_EQ(32, LX_CheckWord("1a", LexList{}, dig, repl, 4, nullptr));
    EXPECT_STREQ("1 a", repl);
    EXPECT_EQ(32, LX_CheckWord("1a", LexList{}, dig, repl, 3, nullptr));
    EXPECT_STREQ("1a", repl);
}

TEST(Rules, MixedCaseAndIgnoredWords) {
    for (const char *w : {"aBc", "abC", "AbC", "ABc", "O'Neil", "MacDonald", "1aB", "1Ab"})
        EXPECT_EQ(1, LX_IsMixedCase(w)) << w;
    for (const char *w : {"abc", "Abc", "ABC", "aBC", "a", "o'neil", "O'NEIL", "A1b", "a-B", ""})
        EXPECT_EQ(0, LX_IsMixedCase(w)) << w;
    for (const char *w : {"foo.ab", "foo.abcd", "foo.a1", "a.b.cd", "ab://x", "ab/c", "abcd/c", "x.ab/c"})
        EXPECT_EQ(1, LX_IsIgnoredWord(w, LX_OPT_IGNORE_ADDRESSES)) << w;
    for (const char *w : {"foo.a", "foo.abcde", "foo.a-b", "foo.", "e.g.", "ab:/x", "ab:x", "abcde/c", "a/c",
                          "x.a1/c", "x.a/c", "/c"})
        EXPECT_EQ(0, LX_IsIgnoredWord(w, LX_OPT_IGNORE_ADDRESSES)) << w;
    const uint32_t caps = LX_OPT_IGNORE_ALL_CAPITALS, none = LX_OPT_IGNORE_NO_LETTERS;
    static const struct { const char *word; uint32_t options; int ignored; } cases[] = {
        {"ABC", caps, 1}, {"AB1", caps, 0}, {"A-B", caps, 0}, {"123", none, 1}, {"1-2", none, 1}, {"a1", none, 0},
        {"Abc", LX_OPT_IGNORE_CAPITALISED, 1}, {"abc", LX_OPT_IGNORE_CAPITALISED, 0},
        {"aBc", LX_OPT_IGNORE_MIXED_CASE, 1}, {"x1", LX_OPT_IGNORE_WITH_DIGITS, 1}, {"abc", 0, 0},
    };
    for (const auto &c : cases) EXPECT_EQ(c.ignored, LX_IsIgnoredWord(c.word, c.options)) << c.word;
}

TEST(Rules, FirstLexiconOfTheListDecides) {
    MemLex user{"word\te"}, main{"word"};
    LX_Lexicon empty{}; // a record without a kind is passed over
    EXPECT_EQ(1, LX_CheckWord("word", LexList{&user.lex, &main.lex}, CS, nullptr, 0, nullptr));
    EXPECT_EQ(0, LX_CheckWord("word", LexList{&main.lex, &user.lex}, CS, nullptr, 0, nullptr));
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
    const std::string longWord(100, 'x');
    EXPECT_EQ(longWord.c_str() + 100, LX_SplitSubWord(longWord.c_str(), 0, piece));
    EXPECT_EQ(80u, std::strlen(piece));
}

TEST(RulesDeathTest, NullArguments) {
    EXPECT_DEATH(LX_CheckWord(nullptr, LexList{}, 0, nullptr, 0, nullptr), "word != NULL");
    EXPECT_DEATH(LX_FindInLexicon("x", "x", nullptr, 0, nullptr, 0), "lex != NULL");
    EXPECT_DEATH(LX_SplitSubWord("x", 0, nullptr), "subWord != NULL");
}

// Check driver: the walk over a text, the repeated-word test, narrowing of
// reports on compounds, buffer limits, single-word mode and the host's
// whole check-and-edit loop.
#include <cstring>
#include <string>

#include "lxtest.h"

namespace {

constexpr uint32_t CS = LX_OPT_CHECK_SPELLING;
constexpr uint32_t ACC = LX_OPT_ACCENTED_CAPITALS;
constexpr uint32_t REP = LX_OPT_REPORT_REPEATED;

struct Report {
    int32_t result;
    int32_t cursor;
    std::string word;
    std::string repl;
};

Report check(const char *text, LX_Lexicon *const *list, uint32_t options, int32_t cursor = 0,
             int32_t wordSz = LX_MAX_WORD_SZ) {
    char word[256] = "unwritten";
    char repl[LX_MAX_WORD_SZ] = "";
    int32_t r = LX_CheckText(text, list, options, &cursor, word, wordSz, repl, sizeof repl);
    return {r, cursor, word, repl};
}

TEST(CheckText, WalksToTheFirstReport) {
    MemLex lex{"the", "cat"};
    LexList list{&lex.lex};
    static const struct {
        const char *text;
        uint32_t options;
        int32_t from;
        int32_t result, cursor;
        const char *word;
    } cases[] = {
        {"", CS, 0, 64, -3, "unwritten"},
        {" ,.; ", CS, 0, 64, -3, "unwritten"},
        {"the cat", CS | ACC, 0, 64, 4, "cat"},
        {"the cat sat", CS | ACC, 0, 1, 8, "sat"},
        {"the the cat", CS | REP | ACC, 0, 128, 4, "the"},
        {"the the cat", CS | REP | ACC, 4, 128, 4, "the"},
        {"the the cat", CS | REP | ACC, 8, 64, 8, "cat"},
        {"the, the", CS | REP | ACC, 0, 64, 5, "the"},
        {"the\n  the", CS | REP | ACC, 0, 128, 6, "the"},
        {"The the", CS | REP | ACC, 0, 128, 4, "the"},
        {"The the", CS | REP | ACC | LX_OPT_CASE_SENSITIVE, 0, 64, 4, "the"},
        {"the <b>the", CS | REP | ACC | LX_OPT_MARKUP, 0, 64, 7, "the"},
        {"xyz xyz", CS | REP | ACC, 0, 1, 0, "xyz"},
        {"xyz xyz", CS | REP | ACC, 4, 129, 4, "xyz"},
        {"THE THE", CS | REP | ACC | LX_OPT_IGNORE_ALL_CAPITALS, 0, 64, 4, "THE"},
        {"cat \xC9t\xE9", ACC, 0, 64, 4, "\xC9t\xE9"},
        {"cat \xC9t\xE9", 0, 0, 1, 4, "\xC9t\xE9"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        Report r = check(c.text, list, c.options, c.from);
        EXPECT_EQ(c.result, r.result);
        EXPECT_EQ(c.cursor, r.cursor);
        EXPECT_EQ(c.word, r.word);
    }
}

TEST(CheckText, NarrowsReportsOnCompounds) {
    MemLex lex{"well", "known", "the"};
    LexList list{&lex.lex};
    const uint32_t o = CS | ACC | LX_OPT_SPLIT_AT_HYPHEN;
    Report r = check("well-knwon", list, o);
    EXPECT_EQ(1, r.result);
    EXPECT_EQ(5, r.cursor);
    EXPECT_EQ("knwon", r.word);

    const char *text = "wll-knwon the";
    r = check(text, list, o);
    EXPECT_EQ(1, r.result);
    EXPECT_EQ(0, r.cursor);
    EXPECT_EQ("wll", r.word);
    // The walk goes on behind the whole compound.
    EXPECT_EQ(10, LX_NextTextWord(text, r.cursor, o));

    // Single-word mode narrows on a misspelling too.
    r = check("well-knwon", list, o | LX_OPT_SINGLE_WORD);
    EXPECT_EQ(1, r.result);
    EXPECT_EQ(5, r.cursor);
    EXPECT_EQ("knwon", r.word);
}

TEST(CheckText, LongWordsAndSmallBuffers) {
    MemLex lex;
    LexList list{&lex.lex};
    const std::string hundred(100, 'q');
    const std::string text = hundred + " end";
    Report r = check(text.c_str(), list, CS | ACC);
    EXPECT_EQ(1, r.result);
    EXPECT_EQ(std::string(80, 'q'), r.word);
    EXPECT_EQ(80, LX_NextTextWord(text.c_str(), 0, 0));
    r = check(text.c_str(), list, CS | ACC, 80);
    EXPECT_EQ(std::string(20, 'q'), r.word);

    r = check(text.c_str(), list, CS | ACC, 0, 200);
    EXPECT_EQ(hundred, r.word); // the rules judge the first 80, the host sees all

    r = check(text.c_str(), list, CS | ACC, 0, 10);
    EXPECT_EQ(std::string(9, 'q'), r.word);
    // With room for no character every word is empty and passes.
    r = check(text.c_str(), list, CS | ACC, 0, 1);
    EXPECT_EQ(64, r.result);
    EXPECT_EQ(101, r.cursor);
    EXPECT_EQ("", r.word);
}

TEST(CheckText, WordBufferOfOtherSizeWalksLikeTheDefault) {
    MemLex lex{"alpha", "beta"};
    LexList list{&lex.lex};
    const char *text = "alpha beta, e.g. alpha-beta gamma";
    for (int32_t size : {LX_MAX_WORD_SZ, 200}) {
        Report r = check(text, list, CS | ACC, 0, size);
        EXPECT_EQ(1, r.result);
        EXPECT_EQ(12, r.cursor);
        EXPECT_EQ("e.g.", r.word);
    }
}

TEST(CheckText, SingleWordMode) {
    MemLex lex{"the cat", "cat"};
    LexList list{&lex.lex};
    const uint32_t o = CS | ACC | LX_OPT_SINGLE_WORD;
    EXPECT_EQ(64, check("the cat", list, o).result);
    EXPECT_EQ(64, check("", list, o).result);
    EXPECT_EQ(64, check("the cat", list, o, 4).result);
    EXPECT_EQ(1, check("the dog", list, o).result);
    // The repeated-word test has no effect here.
    EXPECT_EQ(64, check("cat", list, o | REP).result);
}

TEST(CheckText, ReplacementBuffers) {
    MemLex lex;
    lex.add("teh", LX_ACT_AUTO_CHANGE_CASE, "the");
    lex.add("thier", LX_ACT_AUTO_CHANGE, nullptr);
    LexList list{&lex.lex};
    const uint32_t o = CS | ACC | LX_OPT_CASE_SENSITIVE;
    int32_t cursor = 0;
    char word[LX_MAX_WORD_SZ], repl[3];
    EXPECT_EQ(2, LX_CheckText("Teh", list, o, &cursor, word, sizeof word, repl, sizeof repl));
    EXPECT_STREQ("Th", repl);
    cursor = 0;
    EXPECT_EQ(2, LX_CheckText("Teh", list, o, &cursor, word, sizeof word, nullptr, 0));
    EXPECT_STREQ("Teh", word);

    // repl sharing the buffer of word: the hit rewrites word.
    cursor = 0;
    EXPECT_EQ(2, LX_CheckText("teh", list, o, &cursor, word, sizeof word, word, sizeof word));
    EXPECT_STREQ("the", word);
    cursor = 0;
    // An entry without an other word empties word, and the empty word
    // equals the empty word before it.
    EXPECT_EQ(130, LX_CheckText("thier thier", list, o | REP, &cursor, word, sizeof word, word, sizeof word));
    EXPECT_STREQ("", word);
}

TEST(CheckText, HostLoopAppliesChanges) {
    MemLex lex{"cat", "the"};
    lex.add("teh", LX_ACT_AUTO_CHANGE_CASE, "the");
    LexList list{&lex.lex};
    const uint32_t o = CS | ACC | LX_OPT_CASE_SENSITIVE;
    char text[64] = "Teh cat stae. Teh end";
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    std::string misspelled;
    int32_t cursor = 0;
    for (;;) {
        int32_t r = LX_CheckText(text, list, o, &cursor, word, sizeof word, repl, sizeof repl);
        if (r == LX_RES_NONE_LEFT) break;
        if (r & LX_RES_AUTO_CHANGE) {
            LX_DelText(text, cursor, static_cast<int32_t>(std::strlen(word)));
            ASSERT_GT(LX_InsertText(text, sizeof text, cursor, repl), 0);
        } else {
            misspelled += std::string(word) + "@" + std::to_string(cursor) + " ";
        }
        cursor = LX_NextTextWord(text, cursor, o);
        if (cursor < 0) break;
    }
    EXPECT_STREQ("The cat stae. The end", text);
    EXPECT_EQ("stae@8 end@18 ", misspelled);
}

TEST(CheckTextDeathTest, NullArguments) {
    LexList none{};
    int32_t cursor = 0;
    char word[LX_MAX_WORD_SZ];
    EXPECT_DEATH(LX_CheckText(nullptr, none, 0, &cursor, word, sizeof word, nullptr, 0), "text != NULL");
    EXPECT_DEATH(LX_CheckText("x", none, 0, &cursor, nullptr, 0, nullptr, 0), "word != NULL");
}

TEST(TextEdit, DeleteAndInsert) {
    char text[16] = "hello world";
    EXPECT_EQ(0, LX_DelText(text, 5, 0));
    EXPECT_EQ(6, LX_DelText(text, 5, 100));
    EXPECT_STREQ("hello", text);
    EXPECT_EQ(0, LX_DelText(text, 5, 3));

    char ab[5] = "ab";
    EXPECT_EQ(-8, LX_InsertText(ab, 4, 1, "xy"));
    EXPECT_STREQ("ab", ab);
    EXPECT_EQ(4, LX_InsertText(ab, 5, 1, "xy"));
    EXPECT_STREQ("axyb", ab);
    EXPECT_EQ(4, LX_InsertText(ab, 5, 2, ""));

    char edges[8] = "mid";
    EXPECT_EQ(5, LX_InsertText(edges, sizeof edges, 0, "<<"));
    EXPECT_EQ(7, LX_InsertText(edges, sizeof edges, 5, ">>"));
    EXPECT_STREQ("<<mid>>", edges);
}

TEST(TextEditDeathTest, Assertions) {
    char text[8] = "abc";
    EXPECT_DEATH(LX_DelText(text, -1, 1), "cursor >= 0");
    EXPECT_DEATH(LX_DelText(text, 0, -1), "count >= 0");
    EXPECT_DEATH(LX_InsertText(text, 0, 0, "x"), "textSz > 0");
    EXPECT_DEATH(LX_InsertText(text, 8, 0, nullptr), "str != NULL");
}

} // namespace

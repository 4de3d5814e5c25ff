// Check driver: the walk over a text, the repeated-word test, narrowing of
// reports on compounds, buffer limits, single-word mode and the host's
// whole check-and-edit loop.
#include <functional>

#include "lxtest.h"

constexpr uint32_t CS = LX_OPT_CHECK_SPELLING, ACC = LX_OPT_ACCENTED_CAPITALS, REP = LX_OPT_REPORT_REPEATED;

struct Report { int32_t result, cursor; std::string word; };

static Report check(const char *text, LX_Lexicon *const *list, uint32_t options, int32_t cursor = 0,
                    int32_t wordSz = LX_MAX_WORD_SZ) {
    char word[256] = "unwritten", repl[LX_MAX_WORD_SZ] = "";
    const int32_t r = LX_CheckText(text, list, options, &cursor, word, wordSz, repl, sizeof repl);
    return {r, cursor, word};
}

TEST(CheckText, WalksToTheFirstReport) {
    MemLex lex{"the", "cat", "the cat", "well", "known", "alpha", "beta"};
    LexList list{&lex.lex};
    const uint32_t o = CS | ACC, r = o | REP, hy = o | LX_OPT_SPLIT_AT_HYPHEN, one = o | LX_OPT_SINGLE_WORD;
    // A null word: the cursor and the word aren't checked.
    const struct { const char *text; uint32_t options; int32_t from, result, cursor; const char *word;
                   int32_t wordSz = LX_MAX_WORD_SZ; } cases[] = {
        {"", CS, 0, 64, -3, "unwritten"}, {" ,.; ", CS, 0, 64, -3, "unwritten"}, {"the cat", o, 0, 64, 4, "cat"},
        {"the cat sat", o, 0, 1, 8, "sat"}, {"cat \xC9t\xE9", ACC, 0, 64, 4, "\xC9t\xE9"},
        {"cat \xC9t\xE9", 0, 0, 1, 4, "\xC9t\xE9"},
        // The repeated-word test.
        {"the the cat", r, 0, 128, 4, "the"}, {"the the cat", r, 4, 128, 4, "the"},
        {"the the cat", r, 8, 64, 8, "cat"}, {"the, the", r, 0, 64, 5, "the"}, {"the\n  the", r, 0, 128, 6, "the"},
        {"The the", r, 0, 128, 4, "the"}, {"The the", r | LX_OPT_CASE_SENSITIVE, 0, 64, 4, "the"},
        {"the <b>the", r | LX_OPT_MARKUP, 0, 64, 7, "the"}, {"xyz xyz", r, 0, 1, 0, "xyz"},
        {"xyz xyz", r, 4, 129, 4, "xyz"}, {"THE THE", r | LX_OPT_IGNORE_ALL_CAPITALS, 0, 64, 4, "THE"},
        // In text mode a negative cursor finds nothing.
        {"the cat", r, -3, 64, -3, "unwritten"}, {"the cat", r, INT32_MIN, 64, -3, "unwritten"},
        // A report on a compound narrows to the piece at fault, in
        // single-word mode too.
        {"well-knwon", hy, 0, 1, 5, "knwon"}, {"wll-knwon the", hy, 0, 1, 0, "wll"},
        {"well-knwon", hy | LX_OPT_SINGLE_WORD, 0, 1, 5, "knwon"},
        // Single-word mode; the repeated-word test has no effect there.
        {"the cat", one, 0, 64, 0, nullptr}, {"", one, 0, 64, 0, nullptr}, {"the cat", one, 4, 64, 0, nullptr},
        {"the dog", one, 0, 1, 0, nullptr}, {"cat", one | REP, 0, 64, 0, nullptr},
        // A word buffer of another size walks like the default one.
        {"alpha beta, e.g. alpha-beta gamma", o, 0, 1, 12, "e.g."},
        {"alpha beta, e.g. alpha-beta gamma", o, 0, 1, 12, "e.g.", 200},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.text) + " from " + std::to_string(c.from));
        const Report got = check(c.text, list, c.options, c.from, c.wordSz);
        EXPECT_EQ(c.result, got.result);
        if (c.word) {
            EXPECT_EQ(c.cursor, got.cursor);
            EXPECT_EQ(c.word, got.word);
        }
    }
    // The walk goes on behind the whole compound.
    EXPECT_EQ(10, LX_NextTextWord("wll-knwon the", 0, hy));
}

TEST(CheckText, LongWordsAndSmallBuffers) {
    MemLex lex;
    LexList list{&lex.lex};
    const std::string text = std::string(100, 'q') + " end";
    // The rules judge the first 80 characters, the host sees all that its
    // buffer takes; with room for no character every word is empty and passes.
    static const struct { int32_t from, wordSz, result; size_t length; } cases[] = {
        {0, LX_MAX_WORD_SZ, 1, 80}, {80, LX_MAX_WORD_SZ, 1, 20}, {0, 200, 1, 100}, {0, 10, 1, 9}, {0, 1, 64, 0}};
    for (const auto &c : cases) {
        const Report r = check(text.c_str(), list, CS | ACC, c.from, c.wordSz);
        EXPECT_EQ(c.result, r.result) << c.wordSz;
        EXPECT_EQ(std::string(c.length, 'q'), r.word) << c.wordSz;
        EXPECT_EQ(c.result == 64 ? 101 : c.from, r.cursor) << c.wordSz;
    }
}

TEST(CheckText, ReplacementBuffers) {
    MemLex lex{"teh\tAthe", "thier\ta"};
    LexList list{&lex.lex};
    const uint32_t o = CS | ACC | LX_OPT_CASE_SENSITIVE;
    int32_t cursor = 0;
    char word[LX_MAX_WORD_SZ], repl[3];
    EXPECT_EQ(2, LX_CheckText("Teh", list, o, &cursor, word, sizeof word, repl, sizeof repl));
    EXPECT_STREQ("Th", repl);
    cursor = 0; // the possessive ending stays within a small buffer too
    EXPECT_EQ(2, LX_CheckText("Teh's", list, o | LX_OPT_STRIP_POSSESSIVE, &cursor, word, sizeof word, repl, 3));
    EXPECT_STREQ("Th", repl);
    cursor = 0;
    EXPECT_EQ(2, LX_CheckText("Teh", list, o, &cursor, word, sizeof word, nullptr, 0));
    EXPECT_STREQ("Teh", word);
    // repl sharing the buffer of word: the hit rewrites word.
    cursor = 0;
    EXPECT_EQ(2, LX_CheckText("teh", list, o, &cursor, word, sizeof word, word, sizeof word));
    EXPECT_STREQ("the", word);
    // An entry without an other word empties word, and the empty word
    // equals the empty word before it.
    cursor = 0;
    EXPECT_EQ(130, LX_CheckText("thier thier", list, o | REP, &cursor, word, sizeof word, word, sizeof word));
    EXPECT_STREQ("", word);
}

TEST(CheckText, HostLoopAppliesChanges) {
    MemLex lex{"cat", "the", "teh\tAthe"};
    LexList list{&lex.lex};
    const uint32_t o = CS | ACC | LX_OPT_CASE_SENSITIVE;
    char text[64] = "Teh cat stae. Teh end", word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    std::string misspelled;
    for (int32_t cursor = 0; cursor >= 0; cursor = LX_NextTextWord(text, cursor, o)) {
        const int32_t r = LX_CheckText(text, list, o, &cursor, word, sizeof word, repl, sizeof repl);
        if (r == LX_RES_NONE_LEFT) break;
        if (r & LX_RES_AUTO_CHANGE) {
            LX_DelText(text, cursor, static_cast<int32_t>(std::strlen(word)));
            ASSERT_GT(LX_InsertText(text, sizeof text, cursor, repl), 0);
        } else {
            misspelled += std::string(word) + "@" + std::to_string(cursor) + " ";
        }
    }
    EXPECT_STREQ("The cat stae. The end", text);
    EXPECT_EQ("stae@8 end@18 ", misspelled);
}

// A text longer than a 32-bit offset reaches is walked up to offset
// INT32_MAX, which counts as its end. The text, of 2 GiB and a little, is
// one megabyte of memory mapped again and again; the word "abcdefg" stands
// across the limit, its 'c' at INT32_MAX.
TEST(CheckText, WalkEndsAtTheLimitOfTheCursor) {
    const size_t mb = size_t{1} << 20;
    std::string chunk, tail;
    while (chunk.size() < mb) chunk += "the cat ";
    while (tail.size() < mb - 16) tail += "the cat ";
    tail += "then he sat: abcdefg end";
    MappedText big(chunk, 2047, tail);
    ASSERT_NE(nullptr, big.text) << "no room in the address space";
    const char *text = big.text;
    const int32_t sat = INT32_MAX - 7, ab = INT32_MAX - 2;
    ASSERT_EQ(0, std::memcmp(text + sat, "sat: abc", 8));

    EXPECT_EQ(ab, LX_NextTextWord(text, sat, 0));
    EXPECT_EQ(LX_ERR_NOT_FOUND, LX_NextTextWord(text, ab, 0));
    EXPECT_EQ(LX_ERR_NOT_FOUND, LX_NextTextWord(text, INT32_MAX, 0));
    MemLex lex{"sat"};
    LexList list{&lex.lex};
    const uint32_t o = CS | ACC;
    static const struct { int32_t from; uint32_t options; int32_t wordSz, result, cursor; const char *word; } cases[] = {
        {sat, o, LX_MAX_WORD_SZ, 1, ab, "ab"},          {sat, o, 200, 1, ab, "ab"},
        {sat, ACC, LX_MAX_WORD_SZ, 64, ab, "ab"},       {sat, o | REP | LX_OPT_MARKUP, 200, 1, ab, "ab"},
        {ab + 1, o, LX_MAX_WORD_SZ, 1, ab + 1, "b"},    {INT32_MAX, o, LX_MAX_WORD_SZ, 64, -3, "unwritten"},
        {sat - 8, o | LX_OPT_IGNORE_ADDRESSES, 200, 1, sat - 8, "then"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::to_string(c.from) + " " + std::to_string(c.options));
        const Report got = check(text, list, c.options, c.from, c.wordSz);
        EXPECT_EQ(c.result, got.result);
        EXPECT_EQ(c.cursor, got.cursor);
        EXPECT_EQ(c.word, got.word);
    }
}

// Programmer errors stop the process with the tested expression.
TEST(CheckTextDeathTest, ProgrammerErrors) {
    MemLex lex{"cat"};
    LexList list{&lex.lex};
    int32_t cursor = 0, negative = -1;
    char word[LX_MAX_WORD_SZ];
    const char *text = "the cat";
    SuggEntry entries[4];
    SuggSet set{entries, 0, 4}, noEntries{nullptr, 0, 4};
    const uint32_t one = CS | LX_OPT_SINGLE_WORD;
    const struct { const char *expression; std::function<void()> call; } cases[] = {
        {"text != NULL", [&] { LX_CheckText(nullptr, list, CS, &cursor, word, sizeof word, nullptr, 0); }},
        {"lexicons != NULL", [&] { LX_CheckText(text, nullptr, CS, &cursor, word, sizeof word, nullptr, 0); }},
        {"cursor != NULL", [&] { LX_CheckText(text, list, CS, nullptr, word, sizeof word, nullptr, 0); }},
        {"word != NULL", [&] { LX_CheckText(text, list, CS, &cursor, nullptr, 0, nullptr, 0); }},
        // In single-word mode a negative cursor would read before the text.
        {"\\*cursor >= 0", [&] { LX_CheckText(text, list, one, &negative, word, sizeof word, nullptr, 0); }},
        {"word != NULL", [&] { LX_Suggest(nullptr, 10, list, CS, &set); }},
        {"lexicons != NULL", [&] { LX_Suggest("cot", 10, nullptr, CS, &set); }},
        {"set != NULL", [&] { LX_Suggest("cot", 10, list, CS, nullptr); }},
        {"set->entries != NULL", [&] { LX_Suggest("cot", 100, list, CS | LX_OPT_SUGGEST_TYPOGRAPHIC, &noEntries); }},
    };
    for (const auto &c : cases) EXPECT_DEATH(c.call(), c.expression) << c.expression;
}

TEST(TextEdit, DeleteAndInsert) {
    char text[16] = "hello world", ab[5] = "ab", edges[8] = "mid";
    EXPECT_EQ(0, LX_DelText(text, 5, 0));
    EXPECT_EQ(6, LX_DelText(text, 5, 100));
    EXPECT_STREQ("hello", text);
    EXPECT_EQ(0, LX_DelText(text, 5, 3));
    EXPECT_EQ(LX_ERR_RANGE, LX_InsertText(ab, 4, 1, "xy"));
    EXPECT_STREQ("ab", ab);
    EXPECT_EQ(4, LX_InsertText(ab, 5, 1, "xy"));
    EXPECT_STREQ("axyb", ab);
    EXPECT_EQ(4, LX_InsertText(ab, 5, 2, ""));
    EXPECT_EQ(5, LX_InsertText(edges, sizeof edges, 0, "<<"));
    EXPECT_EQ(7, LX_InsertText(edges, sizeof edges, 5, ">>"));
    EXPECT_STREQ("<<mid>>", edges);
}

TEST(TextEditDeathTest, Assertions) {
    char text[8] = "abc";
    EXPECT_DEATH(LX_DelText(text, 0, -1), "count >= 0");
    EXPECT_DEATH(LX_InsertText(text, 0, 0, "x"), "textSz > 0");
    EXPECT_DEATH(LX_InsertText(text, 8, 0, nullptr), "str != NULL");
}

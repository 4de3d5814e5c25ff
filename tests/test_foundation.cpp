// Tests of the foundation: character tables, safe strings, the vector and
// the diagnostics channel.
#include "chartab.h"
#include "diag.h"
#include "lxtest.h"
#include "lxvector.h"
#include "platform.h"
#include "safestr.h"

// ---------------------------------------------------------- character tables

TEST(CharTab, ClassAndFoldEntries) {
    static const struct { unsigned code; int cls, fold; } kCases[] = {
        {'E', 97, 'E'}, {'Y', 33, 'Y'}, {'y', 17, 'Y'}, {'7', 2, 0}, {';', 4, 0}, {' ', 8, 0}, {'\t', 8, 0},
        {'\r', 8, 0}, {0x00, 0, 0}, {0x0B, 0, 0}, {0x0C, 0, 0}, {0x7F, 4, 0}, {0x80, 0, 0}, {0x91, 0, 0},
        {0x9C, 4, 0}, {0x9D, 0, 0}, {0xAA, 4, 0}, {0xB5, 4, 0}, {0xBA, 4, 0}, {0xC7, 33, 'C'}, {0xD0, 33, 0},
        {0xF0, 81, 0}, {0xD7, 4, 0}, {0xF7, 4, 0}, {0xD8, 97, 'O'}, {0xDE, 33, 0}, {0xFE, 17, 0},
        {0xDF, 17, 'S'}, {0xDD, 33, 'Y'}, {0xFD, 17, 'Y'}, {0xFF, 17, 'Y'}, {0xF1, 17, 'N'},
    };
    for (const auto &c : kCases) {
        EXPECT_EQ(c.cls, LX_CLASS_TABLE[c.code]) << c.code;
        EXPECT_EQ(c.fold, LX_FOLD_TABLE[c.code]) << c.code;
    }
    for (int c = 0; c < 256; ++c) {
        const uchar cls = LX_CLASS_TABLE[c], fold = LX_FOLD_TABLE[c];
        EXPECT_EQ(0, cls & 128) << c;
        // Every capital has its small letter 32 above; only letters fold,
        // and always to a capital.
        EXPECT_TRUE(!(cls & LX_CC_UPPER) ||
                    ((LX_CLASS_TABLE[c + 32] & LX_CC_LOWER) && fold == LX_FOLD_TABLE[c + 32])) << c;
        EXPECT_TRUE(fold == 0 || ((cls & LX_CC_ALPHA) && (LX_CLASS_TABLE[fold] & LX_CC_UPPER))) << c;
    }
}

TEST(CharTab, EntityTable) {
    std::vector<int> seen(256, 0);
    for (int i = 0; i < LX_ENTITY_COUNT; ++i) {
        const LX_EntityRow &row = LX_ENTITY_TABLE[i];
        // Sorted, without twins, and found.
        EXPECT_TRUE(i == 0 || LX_Str_Cmp(row.name, LX_ENTITY_TABLE[i - 1].name) == 1) << row.name;
        EXPECT_EQ(row.ch, LX_Entity_Find(row.name));
        ++seen[row.ch];
    }
    for (int c = 0xC0; c < 256; ++c) // each letter of the upper half, once
        EXPECT_EQ((LX_CLASS_TABLE[c] & LX_CC_ALPHA) ? 1 : 0, seen[c]) << c;
    static const std::pair<const char *, int> kCases[] = {{"ETH", 208}, {"eth", 240}, {"szlig", 223},
        {"Eacutex", 201}, {"amp", -1}, {"EACUTE", -1}, {"", -1}, {"#233", -1}};
    for (const auto &[name, ch] : kCases) EXPECT_EQ(ch, LX_Entity_Find(name)) << name;
}

TEST(CharTab, NextVariant) {
    static const std::vector<int> kFamilies[] = {
        {'E', 'e', 0xC8, 0xC9, 0xCA, 0xCB, 0xE8, 0xE9, 0xEA, 0xEB}, {'Y', 'y', 0xDD, 0xFD, 0xFF}, {'S', 's', 0xDF}};
    for (const auto &family : kFamilies) {
        const uchar base = static_cast<uchar>(family[0]);
        std::vector<int> walked{base};
        for (uchar v = LX_Char_NextVariant(base, base); v != 0; v = LX_Char_NextVariant(base, v))
            walked.push_back(v);
        EXPECT_EQ(family, walked);
    }
    EXPECT_EQ(0, LX_Char_NextVariant(0, 255));
}

// -------------------------------------------------------------- safe strings

TEST(SafeStr, BoundedCopies) {
    char buf[128];
    // CopyN of "abcd", Cat of "xyz" and CatChar of 'x' on dst in a buffer of size.
    static const struct { const char *dst; int32_t size, maxChars; const char *copyN, *cat, *catChar; } kCases[] = {
        {"ab", 81, 0, "", "abxyz", "abx"}, {"abc", 5, 2, "ab", "abcx", "abcx"},
        {"abcd", 5, 9, "abcd", "abcd", "abcd"}, {"", 3, 9, "ab", "xy", "x"}, {"", 1, 9, "", "", ""},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(std::string(c.dst) + "/" + std::to_string(c.size));
        auto run = [&](auto op) {
            std::memset(buf, 'X', sizeof buf);
            std::strcpy(buf, c.dst);
            op();
            EXPECT_EQ('X', buf[c.size]); // never a byte behind the buffer
            return std::string(buf);
        };
        EXPECT_EQ(c.copyN, run([&] { LX_Str_CopyN(buf, c.size, "abcd", c.maxChars); }));
        EXPECT_EQ(c.cat, run([&] { LX_Str_Cat(buf, c.size, "xyz"); }));
        EXPECT_EQ(c.catChar, run([&] { LX_Str_CatChar(buf, c.size, 'x'); }));
    }
}

TEST(SafeStr, CompareAndSearch) {
    static const struct { const char *a, *b; int cmp, icmp; } kCases[] = {
        {"ab", "abc", -1, -1}, {"abc", "ab", 1, 1}, {"", "", 0, 0}, {"ABC", "abc", -1, 0}, {"\xE9", "z", 1, 1},
        {"\xC9t\xC9", "\xE9t\xE9", -1, 0}, {"\xDE", "\xFE", -1, 0}, {"\xDF", "\xFF", -1, -1}, {"a", "B", 1, -1},
        {"[", "A", 1, -1}};
    for (const auto &c : kCases) {
        EXPECT_EQ(c.cmp, LX_Str_Cmp(c.a, c.b)) << c.a << " / " << c.b;
        EXPECT_EQ(c.icmp, LX_Str_ICmp(c.a, c.b)) << c.a << " / " << c.b;
    }
    const char *text = "a.b.c\xE9";
    EXPECT_EQ(text + 1, LX_Str_Chr(text, '.'));
    EXPECT_EQ(text + 3, LX_Str_RChr(text, '.'));
    EXPECT_EQ(text + 5, LX_Str_RChr(text, '\xE9'));
    EXPECT_EQ(text + 6, LX_Str_Chr(text, '\0'));
    EXPECT_EQ(nullptr, LX_Str_RChr(text, '\0'));
}

TEST(SafeStr, Numbers) {
    static const std::pair<const char *, int32_t> kToInt[] = {
        {"12a", 12}, {" 12", 0}, {"+5", 0}, {"-", 0}, {"-7x", -7}, {"", 0}, {"--1", 0},
        {"4294967297", 1}, {"2147483648", INT32_MIN}};
    for (const auto &[text, value] : kToInt) EXPECT_EQ(value, LX_Str_ToInt(text)) << text;
    static const struct { int32_t value, size; const char *expected; } kFromInt[] = {
        {0, 81, "0"}, {0, 2, "0"}, {-7, 2, "7"}, {12345, 4, "345"}, {-123, 4, "123"}, {-123, 5, "-123"},
        {0x616D, 81, "24941"}, {INT32_MAX, 81, "2147483647"}};
    for (const auto &c : kFromInt) {
        char buf[96];
        std::memset(buf, 'X', sizeof buf);
        LX_Str_FromInt(c.value, buf, c.size);
        EXPECT_STREQ(c.expected, buf) << c.value;
        EXPECT_EQ('X', buf[c.size]) << c.value;
    }
}

// -------------------------------------------------------------------- vector

static int cmp_int(const void *a, const void *b) {
    int x = *static_cast<const int *>(a), y = *static_cast<const int *>(b);
    return (x > y) - (x < y);
}

static std::vector<int> contents(const LX_Vector &v) {
    const int *p = static_cast<const int *>(v.data);
    return std::vector<int>(p, p + v.count);
}

TEST(Vector, Growth) {
    for (auto [initial, capacity] : {std::pair{0, 0}, {1, 1}, {4, 6}, {1024, 1536}}) {
        LX_Vector v;
        std::memset(&v, 0xA5, sizeof v); // Init needs nothing of the record
        ASSERT_EQ(0, LX_Vector_Init(&v, sizeof(int), initial));
        EXPECT_EQ(capacity, v.capacity) << initial;
        EXPECT_EQ(capacity == 0, v.data == nullptr) << initial;
        LX_Vector_Free(&v);
    }
    LX_Vector v; // growth is figured from the capacity asked for
    ASSERT_EQ(0, LX_Vector_Init(&v, sizeof(int), 4));
    for (auto [ask, capacity] : {std::pair{6, 6}, {7, 10}, {11, 16}, {17, 25}, {3, 25}}) {
        EXPECT_EQ(0, LX_Vector_Reserve(&v, ask));
        EXPECT_EQ(capacity, v.capacity) << ask;
    }
    LX_Vector_Free(&v);
}

TEST(Vector, Operations) {
    const long live = LX_Mem_LiveBlocks();
    LX_Vector v;
    ASSERT_EQ(0, LX_Vector_Init(&v, sizeof(int), 0));
    int key = 3, x = 5;
    EXPECT_TRUE(LX_Vector_At(&v, 0) == nullptr && LX_Vector_Search(&v, &key, cmp_int) == nullptr);
    for (int i = 0; i < 3; ++i, x -= 2) EXPECT_EQ(i, LX_Vector_Append(&v, &x));
    EXPECT_EQ(0, LX_Vector_Insert(&v, 1, &key));
    EXPECT_EQ(0, LX_Vector_Insert(&v, v.count, &key)); // at the end: a status, not the index
    EXPECT_EQ(std::vector<int>({5, 3, 3, 1, 3}), contents(v));
    EXPECT_EQ(std::vector<int>({LX_ERR_RANGE, 0, 0}),
              std::vector<int>({LX_Vector_Delete(&v, 5), LX_Vector_Delete(&v, 4), LX_Vector_Delete(&v, 1)}));
    LX_Vector_Sort(&v, cmp_int);
    EXPECT_EQ(std::vector<int>({1, 3, 5}), contents(v));
    EXPECT_EQ(LX_Vector_At(&v, 1), LX_Vector_Search(&v, &key, cmp_int));
    key = 2;
    EXPECT_EQ(nullptr, LX_Vector_Search(&v, &key, cmp_int));
    EXPECT_TRUE(LX_Vector_At(&v, -1) == nullptr && LX_Vector_At(&v, 3) == nullptr);
    // Set overwrites below count; at or above count it leaves count at index.
    EXPECT_TRUE(LX_Vector_Set(&v, 0, &key) == 0 && LX_Vector_Set(&v, v.count + 3, &key) == 0);
    const int *d = static_cast<const int *>(v.data);
    EXPECT_EQ(6, v.count);
    EXPECT_EQ((std::vector<int>{2, 3, 5, 2}), (std::vector<int>{d[0], d[1], d[2], d[6]}));
    // Clear keeps the block; Free gives it back and the vector works again.
    void *block = v.data;
    LX_Vector_Clear(&v);
    EXPECT_EQ(0, LX_Vector_Append(&v, &x));
    EXPECT_EQ(block, v.data);
    LX_Vector_Free(&v);
    EXPECT_EQ(live, LX_Mem_LiveBlocks());
    EXPECT_EQ(0, LX_Vector_Append(&v, &x));
    LX_Vector_Free(&v);
    LX_Vector_Free(&v); // nothing left to free
    EXPECT_EQ(live, LX_Mem_LiveBlocks());
}

TEST(Vector, FailedGrowthKeepsElements) {
    LX_Vector v;
    ASSERT_EQ(0, LX_Vector_Init(&v, sizeof(int), 4));
    for (int i = 0; i < 6; ++i) ASSERT_EQ(i, LX_Vector_Append(&v, &i));
    void *block = v.data;
    const long live = LX_Mem_LiveBlocks();
    int x = 6;
    LX_Mem_FailAfter(0);
    EXPECT_EQ(LX_ERR_NO_MEMORY, LX_Vector_Append(&v, &x));
    EXPECT_STREQ("out of memory", LX_Diag_GetLastMsg());
    LX_Mem_FailAfter(0);
    EXPECT_EQ(LX_ERR_NO_MEMORY, LX_Vector_Insert(&v, 0, &x));
    EXPECT_TRUE(block == v.data && v.capacity == 6 && live == LX_Mem_LiveBlocks());
    EXPECT_EQ(std::vector<int>({0, 1, 2, 3, 4, 5}), contents(v));
    EXPECT_EQ(0, LX_Vector_Delete(&v, 0)); // a full block: nothing read behind it
    EXPECT_EQ(5, LX_Vector_Append(&v, &x));
    EXPECT_EQ(6, LX_Vector_Append(&v, &x)); // the allocator is back
    EXPECT_EQ(std::vector<int>({1, 2, 3, 4, 5, 6, 6}), contents(v));
    LX_Vector_Free(&v);
}

// --------------------------------------------------------------- diagnostics

// Sends one message with LX_DEBUG as given (null: unset), read afresh
// unless reread is false, and gives what went to standard error.
static std::string trace_of(const char *text, const char *debug, bool reread = true) {
    if (debug) setenv("LX_DEBUG", debug, 1);
    else unsetenv("LX_DEBUG");
    if (reread) LX_Diag_ResetDebugSetting();
    testing::internal::CaptureStderr();
    LX_Diag_Msg("%s", text);
    return testing::internal::GetCapturedStderr();
}

TEST(DiagDeathTest, NoMessageBeforeTheFirst) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // the child runs this test alone
    EXPECT_EXIT(std::exit(LX_Diag_GetLastMsg() == nullptr ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(Diag, LastMessage) {
    LX_Diag_Msg("AddWord: %s contains invalid character (0x%x)", "a\tb", 9);
    EXPECT_STREQ("AddWord: a\tb contains invalid character (0x9)", LX_Diag_GetLastMsg());
    const std::string longText(1000, 'm'); // beyond any first buffer
    LX_Diag_Msg("<%s>", longText.c_str());
    EXPECT_EQ("<" + longText + ">", LX_Diag_GetLastMsg());
    LX_Diag_Msg("session %hd opened", static_cast<short>(-2));
    EXPECT_STREQ("session -2 opened", LX_Diag_GetLastMsg());
    EXPECT_STREQ("$Revision: 1.2 $", LX_Version);
}

TEST(Diag, DebugTrace) {
    static const std::pair<const char *, bool> kCases[] = {{nullptr, false}, {"0", false}, {"abc", false},
        {"", false}, {"1", true}, {"5", true}, {"-1", true}, {"2x", true}};
    for (auto [debug, traced] : kCases)
        EXPECT_EQ(traced ? "   LX_DEBUG: hello\n" : "", trace_of("hello", debug)) << (debug ? debug : "unset");
    // The setting is read once: later changes of the variable don't count...
    EXPECT_EQ("   LX_DEBUG: a\n", trace_of("a", "1"));
    EXPECT_EQ("   LX_DEBUG: b\n", trace_of("b", "0", false));
    // ...but -1 means "not read yet", so each message reads it again.
    EXPECT_EQ("   LX_DEBUG: c\n", trace_of("c", "-1"));
    EXPECT_EQ("", trace_of("d", "0", false));
    EXPECT_EQ("", trace_of("e", "1", false)); // 0 is cached now
    trace_of("f", nullptr);
}

// Tests of the ranked suggestion set and its segment walk callbacks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "compare.h"
#include "suggset.h"

namespace {

using Entries = std::vector<std::pair<std::string, int>>;

// A set over storage of its own, filled directly with given entries.
struct TestSet {
    std::vector<SuggEntry> storage;
    SuggSet set{};

    TestSet(int32_t capacity, const Entries &initial) : storage(capacity > 0 ? capacity : 0) {
        set.entries = storage.empty() ? nullptr : storage.data();
        set.capacity = capacity;
        for (const auto &e : initial) {
            SuggEntry &s = storage[set.count++];
            snprintf(s.word, sizeof s.word, "%s", e.first.c_str());
            s.score = static_cast<int16_t>(e.second);
        }
    }
    Entries entries() const {
        Entries out;
        for (int32_t i = 0; i < set.count; ++i)
            out.emplace_back(set.entries[i].word, set.entries[i].score);
        return out;
    }
};

} // namespace

TEST(SuggSetAdd, RankedInsertion) {
    static const struct {
        const char *name;
        int32_t capacity;
        Entries before;
        const char *word;
        int score;
        Entries after;
    } kCases[] = {
        {"into an empty set", 3, {}, "the", 80, {{"the", 80}}},
        {"behind an equal score", 3, {{"a", 90}, {"b", 80}}, "c", 80,
         {{"a", 90}, {"b", 80}, {"c", 80}}},
        {"full set, tie with the last", 3, {{"a", 90}, {"b", 80}, {"c", 70}}, "d", 70,
         {{"a", 90}, {"b", 80}, {"c", 70}}},
        {"full set, last falls off", 3, {{"a", 90}, {"b", 80}, {"c", 70}}, "d", 71,
         {{"a", 90}, {"b", 80}, {"d", 71}}},
        {"full set, new first", 3, {{"a", 90}, {"b", 80}, {"c", 70}}, "d", 99,
         {{"d", 99}, {"a", 90}, {"b", 80}}},
        {"duplicate keeps its lower score", 3, {{"x", 90}, {"the", 60}}, "the", 95,
         {{"x", 90}, {"the", 60}}},
        {"case makes another text", 3, {{"the", 60}}, "The", 95, {{"The", 95}, {"the", 60}}},
        {"full set turns a better duplicate of its last away", 2, {{"a", 90}, {"the", 60}},
         "the", 95, {{"a", 90}, {"the", 60}}},
        {"scores below 1 are taken as they come", 2, {{"a", 5}}, "b", -3, {{"a", 5}, {"b", -3}}},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.name);
        TestSet t(c.capacity, c.before);
        SuggSet_Add(&t.set, c.word, static_cast<int16_t>(c.score));
        EXPECT_EQ(c.after, t.entries());
        EXPECT_EQ(c.capacity, t.set.capacity);
    }
}

TEST(SuggSetAdd, CapacityZeroTouchesNothing) {
    SuggEntry dummy{};
    SuggSet set{&dummy, 0, 0};
    SuggSet_Add(&set, "word", 100);
    EXPECT_EQ(&dummy, set.entries);
    EXPECT_EQ(0, set.count);
    EXPECT_EQ('\0', dummy.word[0]);
}

TEST(SuggSetAdd, LongTextIsCutTo80) {
    const std::string text81 = std::string(40, 'a') + " " + std::string(40, 'b');
    TestSet t(3, {});
    SuggSet_Add(&t.set, text81.c_str(), 90);
    ASSERT_EQ(1, t.set.count);
    EXPECT_EQ(text81.substr(0, 80), t.set.entries[0].word);

    // The same text again is the same candidate, and so is its cut form.
    SuggSet_Add(&t.set, text81.c_str(), 95);
    SuggSet_Add(&t.set, text81.substr(0, 80).c_str(), 95);
    EXPECT_EQ(1, t.set.count);
}

TEST(SuggSetRemove, TakesOutAndCloses) {
    const Entries full = {{"a", 90}, {"b", 80}, {"c", 70}};
    static const struct {
        const char *word;
        Entries after;
    } kCases[] = {
        {"a", {{"b", 80}, {"c", 70}}},
        {"c", {{"a", 90}, {"b", 80}}},
        {"d", {{"a", 90}, {"b", 80}, {"c", 70}}},
        {"A", {{"a", 90}, {"b", 80}, {"c", 70}}}, // exact text only
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.word);
        TestSet t(4, full);
        SuggSet_Remove(&t.set, c.word);
        EXPECT_EQ(c.after, t.entries());
    }
}

TEST(SuggSetDeath, NullArguments) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    SuggSet set{nullptr, 0, 0};
    EXPECT_DEATH(SuggSet_Add(nullptr, "a", 1), "set != NULL");
    EXPECT_DEATH(SuggSet_Remove(&set, nullptr), "word != NULL");
    EXPECT_DEATH(SuggSet_Remove(nullptr, "a"), "set != NULL");
}

TEST(SuggSetCompareScores, SortsHighestFirst) {
    SuggEntry e[3] = {{"a", 10}, {"b", 99}, {"c", -5}};
    qsort(e, 3, sizeof e[0], SuggSet_CompareScores);
    EXPECT_EQ(99, e[0].score);
    EXPECT_EQ(-5, e[2].score);
}

// ------------------------------------------------------------- collectors

namespace {

// Runs words through a callback the way a segment walk does, stopping when
// the callback gives 0; returns how many words were offered.
size_t walk(int32_t (*cb)(const char *, const char *, void *), const char *keyWord,
            const std::vector<const char *> &words, SuggCollector *collector) {
    size_t offered = 0;
    for (const char *w : words) {
        ++offered;
        if (cb(keyWord, w, collector) == 0) break;
    }
    return offered;
}

} // namespace

TEST(SuggCollectPattern, MatchesAndEndsTheWalk) {
    // One segment: words sharing "abc", in byte order.
    const std::vector<const char *> segment = {"abcAx", "abca", "abcax", "abcdx",
                                               "abcdy", "abcex", "abcfx"};
    static const struct {
        const char *keyWord;
        int16_t caseSensitive;
        size_t offered;
        Entries found;
    } kCases[] = {
        // The first word past "abcdx" at the first difference ends the walk.
        {"abcdx", 1, 5, {{"abcdx", 100}}},
        // A '?' at the first difference always goes on.
        {"abc?x", 1, 7,
         {{"abcAx", 100}, {"abcax", 100}, {"abcdx", 100}, {"abcex", 100}, {"abcfx", 100}}},
        // Without case, the walk is never cut short.
        {"abcdx", 0, 7, {{"abcdx", 100}}},
        {"abcAX", 0, 7, {{"abcAx", 100}, {"abcax", 100}}},
        // A key shorter than every word: they are all past it.
        {"abc", 1, 1, {}},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(std::string(c.keyWord) + (c.caseSensitive ? " case" : " nocase"));
        TestSet t(10, {});
        SuggCollector col{&t.set, c.caseSensitive,
                          c.caseSensitive ? LX_Match_Pattern : LX_Match_PatternNoCase};
        EXPECT_EQ(c.offered, walk(SuggCollect_Pattern, c.keyWord, segment, &col));
        EXPECT_EQ(c.found, t.entries());
    }
}

TEST(SuggCollectSimilar, AddsScoredWordsAndGoesOn) {
    TestSet t(10, {});
    SuggCollector col{&t.set, 0, LX_Compare_Typographic};
    const std::vector<const char *> words = {"bat", "cat", "cats", "mmm", "123"};
    EXPECT_EQ(words.size(), walk(SuggCollect_Similar, "cat", words, &col));
    // "mmm" and "123" score 0 against "cat" and stay out.
    EXPECT_EQ((Entries{{"cat", 100}, {"cats", 87}, {"bat", 66}}), t.entries());
}

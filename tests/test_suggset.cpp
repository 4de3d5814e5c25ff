// Tests of the ranked suggestion set and its segment walk callbacks.
#include "compare.h"
#include "lxtest.h"
#include "suggset.h"

TEST(SuggSet, RankedInsertion) {
    static const struct { int32_t capacity; const char *before, *word; int16_t score; const char *after; } cases[] = {
        {3, "", "the", 80, "the:80"}, {3, "a:90 b:80", "c", 80, "a:90 b:80 c:80"}, // behind an equal score
        {3, "a:90 b:80 c:70", "d", 70, "a:90 b:80 c:70"}, // full: a tie with the last is turned away
        {3, "a:90 b:80 c:70", "d", 71, "a:90 b:80 d:71"}, {3, "a:90 b:80 c:70", "d", 99, "d:99 a:90 b:80"},
        {3, "x:90 the:60", "the", 95, "x:90 the:60"}, // a duplicate keeps its lower score
        {3, "the:60", "The", 95, "The:95 the:60"},     // case makes another text
        {2, "a:90 the:60", "the", 95, "a:90 the:60"}, // full: a better duplicate of the last
        {2, "a:5", "b", -3, "a:5 b:-3"},               // scores below 1 are taken as they come
        {0, "", "word", 100, ""},                      // a set of no capacity is left alone
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.before) + " + " + c.word);
        Set t(c.capacity, c.before);
        SuggSet_Add(&t.set, c.word, c.score);
        EXPECT_EQ(c.after, t.str());
        EXPECT_EQ(c.capacity, t.set.capacity);
        EXPECT_EQ(t.storage.data(), t.set.entries);
        EXPECT_TRUE(c.capacity > 0 || t.storage[0].word[0] == '\0'); // nothing written
    }
}

TEST(SuggSet, LongTextIsCutTo80) {
    const std::string text81 = std::string(40, 'a') + " " + std::string(40, 'b');
    Set t(3);
    SuggSet_Add(&t.set, text81.c_str(), 90);
    // The same text again is the same candidate, and so is its cut form.
    SuggSet_Add(&t.set, text81.c_str(), 95);
    SuggSet_Add(&t.set, text81.substr(0, 80).c_str(), 95);
    EXPECT_EQ(text81.substr(0, 80) + ":90", t.str());
}

TEST(SuggSet, RemoveTakesOutTheExactText) {
    static const std::pair<const char *, const char *> cases[] = {
        {"a", "b:80 c:70"}, {"c", "a:90 b:80"}, {"d", "a:90 b:80 c:70"}, {"A", "a:90 b:80 c:70"}};
    for (const auto &[word, after] : cases) {
        Set t(4, "a:90 b:80 c:70");
        SuggSet_Remove(&t.set, word);
        EXPECT_EQ(after, t.str()) << word;
    }
    SuggEntry e[3] = {{"a", 10}, {"b", 99}, {"c", -5}};
    qsort(e, 3, sizeof e[0], SuggSet_CompareScores); // highest first
    EXPECT_TRUE(e[0].score == 99 && e[2].score == -5);
}

// Runs words through a callback the way a segment walk does, stopping when
// the callback gives 0; returns how many words were offered.
static size_t offer(int32_t (*cb)(const char *, const char *, void *), const char *keyWord,
                    const std::vector<const char *> &words, SuggCollector *collector) {
    size_t offered = 0;
    while (offered < words.size() && cb(keyWord, words[offered++], collector) != 0) {
    }
    return offered;
}

TEST(SuggCollect, PatternMatchesAndEndsTheWalk) {
    // One segment: words sharing "abc", in byte order.
    const std::vector<const char *> segment = {"abcAx", "abca", "abcax", "abcdx", "abcdy", "abcex", "abcfx"};
    static const struct { const char *keyWord; int16_t caseSensitive; size_t offered; const char *found; } cases[] = {
        {"abcdx", 1, 5, "abcdx:100"}, // the first word past it at the first difference ends the walk
        {"abc?x", 1, 7, "abcAx:100 abcax:100 abcdx:100 abcex:100 abcfx:100"}, // a '?' there goes on
        {"abcdx", 0, 7, "abcdx:100"}, {"abcAX", 0, 7, "abcAx:100 abcax:100"}, // without case: never cut
        {"abc", 1, 1, ""}, // a key shorter than every word: they are all past it
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.keyWord) + (c.caseSensitive ? " case" : " nocase"));
        Set t;
        SuggCollector col{&t.set, c.caseSensitive, c.caseSensitive ? LX_Match_Pattern : LX_Match_PatternNoCase};
        EXPECT_EQ(c.offered, offer(SuggCollect_Pattern, c.keyWord, segment, &col));
        EXPECT_EQ(c.found, t.str());
    }
}

TEST(SuggCollect, SimilarAddsScoredWordsAndGoesOn) {
    Set t;
    SuggCollector col{&t.set, 0, LX_Compare_Typographic};
    const std::vector<const char *> words = {"bat", "cat", "cats", "mmm", "123"};
    EXPECT_EQ(words.size(), offer(SuggCollect_Similar, "cat", words, &col));
    EXPECT_EQ("cat:100 cats:87 bat:66", t.str()); // "mmm" and "123" score 0 and stay out
}

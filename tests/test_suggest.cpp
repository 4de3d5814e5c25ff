// Suggestions: the memory lexicon's pattern and comparator searches, and
// the stages of LX_Suggest with their gates, case and possessive repair,
// and removal of look-alikes.
#include <string>
#include <vector>

#include "compare.h"
#include "dmtlex.h"
#include "lexicon.h"
#include "lxtest.h"
#include "suggset.h"

namespace {

// A caller's suggestion set of a given capacity.
struct Set {
    std::vector<SuggEntry> storage;
    SuggSet set{};
    explicit Set(int32_t capacity = 10) : storage(static_cast<size_t>(capacity > 0 ? capacity : 1)) {
        set.entries = storage.data();
        set.capacity = capacity;
    }
    Set &with(const char *word, int16_t score) {
        SuggSet_Add(&set, word, score);
        return *this;
    }
    // "word:score" for each entry, in order.
    std::string str() const {
        std::string out;
        for (int32_t i = 0; i < set.count; ++i)
            out += (i ? " " : "") + std::string(set.entries[i].word) + ":" + std::to_string(set.entries[i].score);
        return out;
    }
};

TEST(DmtSearch, EmptyLexiconLeavesTheSetAlone) {
    MemLex lex;
    Set s;
    s.with("x", 50);
    EXPECT_EQ(0, LX_DMTLex_FindPattern(&lex.lex, "c?t", 1, &s.set));
    EXPECT_EQ(0, LX_DMTLex_FindSimilar(&lex.lex, "cat", 0, LX_Compare_Typographic, &s.set));
    EXPECT_EQ("x:50", s.str());
}

TEST(DmtSearch, PatternSearch) {
    MemLex lex{"Cat", "cat", "coat", "cot", "ct", "cut", "dot"};
    lex.add("bat", LX_ACT_EXCLUDE);
    lex.add("cit", LX_ACT_AUTO_CHANGE, "cat");
    lex.add("dit", LX_ACT_EXCLUDE);
    static const struct {
        const char *pattern;
        int16_t caseSensitive;
        const char *expected;
    } cases[] = {
        // With case respected the walk ends at the first word past "c", so
        // the excluded "dit" is not reached; "bat" is passed on the way.
        {"c?t", 1, "cat:100 cot:100 cut:100 dit:1"},
        {"c?t", 0, "Cat:100 cat:100 cot:100 cut:100"},
        {"?ot", 1, "cot:100 dot:100"},
        {"C?T", 0, "Cat:100 cat:100 cot:100 cut:100"},
        {"C?T", 1, "bat:1 dit:1"}, // stops at "bat", the first word past "C"
        {"coat", 1, "coat:100 dit:1"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.pattern);
        Set s;
        s.with("bat", 1).with("dit", 1);
        EXPECT_EQ(0, LX_Lexicon_FindPattern(&lex.lex, c.pattern, c.caseSensitive, &s.set));
        EXPECT_EQ(c.expected, s.str());
    }
}

TEST(DmtSearch, ComparatorSearch) {
    MemLex lex{"the", "then", "xyz"};
    lex.add("teh", LX_ACT_AUTO_CHANGE, "the");
    lex.add("thee", LX_ACT_EXCLUDE);
    lex.add("tho", 'E');
    Set s;
    s.with("thee", 90);
    EXPECT_EQ(0, LX_Lexicon_FindSimilar(&lex.lex, "teh", 30, LX_Compare_Typographic, &s.set));
    // The stored replacement for "teh" ranks at 99 though the comparator
    // gave it 73; the excluded word is gone; "tho" has no usable action.
    EXPECT_EQ("the:99 then:67 xyz:1", s.str());
    EXPECT_EQ(73, LX_Compare_Typographic("teh", "the"));
}

constexpr uint32_t CS = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE;
constexpr uint32_t TYPO = LX_OPT_SUGGEST_TYPOGRAPHIC;

std::string suggest(const char *word, int32_t depth, LX_Lexicon *const *list, uint32_t options, Set &s) {
    int32_t n = LX_Suggest(word, depth, list, options, &s.set);
    EXPECT_EQ(s.set.count, n);
    return s.str();
}

TEST(Suggest, StageGatesByDepth) {
    MemLex lex{"cat", "dog"};
    LexList list{&lex.lex};
    static const struct {
        int32_t depth;
        uint32_t options;
        const char *expected;
    } cases[] = {
        // No edit finds anything; the sweep of the text lexicon does.
        {9, CS | TYPO, "cat:80 dog:40"},
        {29, CS | TYPO, "cat:80 dog:40"},
        // The pattern search finds "cat", so the sweep doesn't run.
        {30, CS | TYPO, "cat:80"},
        // Above 30 every lexicon is swept.
        {31, CS | TYPO, "cat:80 dog:40"},
        // The phonetic option sweeps even after a find, with both comparators.
        {30, CS | TYPO | LX_OPT_SUGGEST_PHONETIC, "cat:80 dog:40"},
        {100, CS, ""},
        {100, CS | LX_OPT_SUGGEST_PHONETIC, "cat:80"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.depth);
        Set s;
        EXPECT_EQ(c.expected, suggest("cot", c.depth, list, c.options, s));
    }
}

TEST(Suggest, EditTrialsPassTheRuleChain) {
    MemLex lex{"the", "he"};
    lex.add("thw", LX_ACT_EXCLUDE);
    LexList list{&lex.lex};
    Set s;
    // Transposition finds "the", deletion "he"; the sweep doesn't run since
    // the set grew, so nothing else is proposed.
    EXPECT_EQ("the:83 he:83", suggest("hte", 10, list, CS | TYPO, s));
    Set t;
    EXPECT_EQ("he:93", suggest("hhe", 10, list, CS | TYPO, t));
}

TEST(Suggest, CaseAndPossessiveOfTheWord) {
    MemLex lex{"the", "dog"};
    LexList list{&lex.lex};
    const uint32_t o = CS | TYPO | LX_OPT_STRIP_POSSESSIVE;
    static const struct {
        const char *word;
        const char *expected;
    } cases[] = {
        {"Hte", "The:83"},     {"HTE", "THE:83"},   {"teh's", "the's:73"},
        {"TEH'S", "THE'S:73"}, {"dgo's", "dog's:73"}, {"dgos", "dog:67 the:32"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.word);
        Set s;
        EXPECT_EQ(c.expected, suggest(c.word, 10, list, o, s));
    }
}

TEST(Suggest, EmptyWordChangesNothing) {
    MemLex lex{"the"};
    LexList list{&lex.lex};
    Set s;
    s.with("keep", 50);
    EXPECT_EQ(0, LX_Suggest("'s", 100, list, CS | TYPO | LX_OPT_STRIP_POSSESSIVE, &s.set));
    EXPECT_EQ(0, LX_Suggest("", 100, list, CS | TYPO, &s.set));
    EXPECT_EQ("keep:50", s.str());
    Set none(0);
    EXPECT_EQ(0, LX_Suggest("hte", 100, list, CS | TYPO, &none.set));
}

TEST(Suggest, EarlierEntriesTakeCaseAndLookAlikesGo) {
    MemLex lex;
    LexList list{&lex.lex};
    Set s;
    s.with("the", 80).with("The", 70).with("then", 60);
    // No suggestion option: only the last stages run, on what was there.
    // Both "the" and "The" become "The"; taking out the later text takes
    // out the first entry of exactly that text.
    EXPECT_EQ("The:70 Then:60", suggest("Hte", 100, list, CS, s));
    Set u;
    u.with("the", 80).with("The", 70);
    EXPECT_EQ("the:80 The:70", suggest("hte", 100, list, CS, u));
    EXPECT_EQ("the:80", suggest("hte", 100, list, LX_OPT_CHECK_SPELLING, u));
}

TEST(Suggest, StoredReplacementRanksAt99) {
    MemLex lex{"the"};
    lex.add("teh", LX_ACT_AUTO_CHANGE, "the");
    LexList list{&lex.lex};
    Set s;
    EXPECT_EQ("the:99", suggest("teh", 100, list, CS | TYPO, s));
}

TEST(Suggest, ExcludedWordsOfAnEarlierLexiconGo) {
    MemLex user, main{"cat", "cot"};
    user.add("cat", LX_ACT_EXCLUDE);
    LexList list{&user.lex, &main.lex};
    Set s;
    EXPECT_EQ("cot:80", suggest("cit", 100, list, CS | TYPO, s));
}

TEST(Suggest, DivisionsAndSpaces) {
    MemLex lex{"the", "cat", "end", "next", "abc"};
    LexList list{&lex.lex};
    const uint32_t o = CS | LX_OPT_IGNORE_NO_LETTERS;
    static const struct {
        const char *word;
        uint32_t options;
        const char *expected;
    } cases[] = {
        {"thecat", o | LX_OPT_SUGGEST_SPLIT, "the cat:92"},
        {"thecat", o, ""},
        {"end.Next", o, "end. Next:94"},
        {"end.Next.", o, ""},      // two punctuation characters
        {"abc123", o, "abc 123:90"},
        {"abc123xyz", o, ""},      // "xyz" fails the trial
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.word);
        Set s;
        EXPECT_EQ(c.expected, suggest(c.word, 0, list, c.options, s));
    }
}

TEST(Suggest, EqualScoresKeepTheOrderFound) {
    MemLex lex{"bat", "cat", "hat", "mat"};
    LexList list{&lex.lex};
    Set s;
    // All four are one substitution away; "hat" and "mat" score alike and
    // keep the order in which the pattern search found them.
    std::string first = suggest("fat", 30, list, CS | TYPO, s);
    EXPECT_EQ("cat:70 bat:68 hat:66 mat:66", first);
    Set again;
    EXPECT_EQ(first, suggest("fat", 30, list, CS | TYPO, again));
}

TEST(SuggestDeathTest, NullArguments) {
    LexList none{};
    Set s;
    EXPECT_DEATH(LX_Suggest(nullptr, 10, none, 0, &s.set), "word != NULL");
    EXPECT_DEATH(LX_Suggest("x", 10, none, 0, nullptr), "set != NULL");
}

} // namespace

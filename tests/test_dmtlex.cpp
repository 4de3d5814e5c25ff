// Memory lexicon: order and uniqueness of entries, validation, the image,
// the dispatch by kind, allocation failures, and lookups through the index
// measured against a plain reference.
#include <algorithm>
#include <map>
#include <random>

#include "chartab.h"
#include "diag.h"
#include "dmtlex.h"
#include "lexicon.h"
#include "lxtest.h"
#include "platform.h"
#include "safestr.h"
#include "suggset.h"

static std::string image_of(LX_Lexicon *lex, int32_t expectedEntries) {
    const int32_t size = LX_Lexicon_Size(lex);
    std::string bfr(static_cast<size_t>(size), 'X');
    EXPECT_EQ(expectedEntries, LX_Lexicon_GetImage(lex, bfr.data(), size));
    return bfr;
}

TEST(DmtLex, ImageAndSize) {
    MemLex lex, teh{"teh\tAthe"};
    EXPECT_EQ(std::string(1, '\0'), image_of(&lex.lex, 0));
    lex.add("cat");
    EXPECT_EQ(std::string("cat\ti\0\0", 7), image_of(&lex.lex, 1));
    lex.add("cat", LX_ACT_IGNORE, "");
    EXPECT_EQ(std::string("cat\ti\0\0", 7), image_of(&lex.lex, 1));
    char bfr[10];
    EXPECT_EQ(10, LX_Lexicon_Size(&teh.lex));
    EXPECT_EQ(LX_ERR_RANGE, LX_Lexicon_GetImage(&teh.lex, bfr, 9));
    EXPECT_EQ(1, LX_Lexicon_GetImage(&teh.lex, bfr, 10));
    EXPECT_EQ(std::string("teh\tAthe\0\0", 10), std::string(bfr, 10));
}

TEST(DmtLex, EntriesStaySortedAndUnique) {
    MemLex up, down;
    const char *words[] = {"Apple", "Zebra", "apple", "app", "apply", "\xE9t\xE9", "zoo"};
    for (const char *w : words) up.add(w);
    for (auto it = std::rbegin(words); it != std::rend(words); ++it) down.add(*it);
    const std::vector<std::string> sorted = {"Apple", "Zebra", "app", "apple", "apply", "zoo", "\xE9t\xE9"};
    EXPECT_EQ(sorted, up.words());
    EXPECT_EQ(sorted, down.words());
    // A word stored again takes the new action and other word.
    up.add("app", LX_ACT_AUTO_CHANGE, "application");
    up.add("app", LX_ACT_EXCLUDE);
    char other[LX_MAX_WORD_SZ] = "x";
    EXPECT_EQ(LX_ACT_EXCLUDE, LX_Lexicon_FindWord(&up.lex, "app", 1, other, sizeof other));
    EXPECT_STREQ("", other);
    EXPECT_EQ(sorted.size(), up.words().size());
    // Case-insensitive lookups find the first form in byte order.
    EXPECT_EQ(LX_ACT_IGNORE, LX_Lexicon_FindWord(&up.lex, "APPLE", 0, nullptr, 0));
    EXPECT_EQ(LX_ERR_NOT_FOUND, LX_Lexicon_FindWord(&up.lex, "APPLE", 1, nullptr, 0));
    EXPECT_EQ(LX_ERR_NOT_FOUND, LX_Lexicon_DelWord(&up.lex, "ZOO"));
    EXPECT_EQ(0, LX_Lexicon_DelWord(&up.lex, "zoo"));
    EXPECT_EQ(LX_ERR_NOT_FOUND, LX_Lexicon_DelWord(&up.lex, "zoo"));
}

TEST(DmtLex, RefusesWordsItCannotStore) {
    MemLex lex;
    const std::string eighty(80, 'x'), eightyOne(81, 'x');
    const int16_t ig = LX_ACT_IGNORE;
    const struct { std::string word; int16_t action; const char *problem; } cases[] = { // no problem: stored
        {"two words", ig, nullptr}, {"caf\xE9", ig, nullptr}, {"", ig, nullptr}, {eighty, ig, nullptr},
        {"a\tb", ig, "contains invalid character (0x9)"}, {"a\x80", ig, "contains invalid character (0x80)"},
        {"a\xA0", ig, "contains invalid character (0xa0)"}, {eightyOne, ig, "is longer than 80 characters"},
        {"word", 0, "has invalid action (0)"}, {"word", -5, "has invalid action (-5)"},
    };
    for (const auto &c : cases) {
        const int32_t r = LX_Lexicon_AddWord(&lex.lex, c.word.c_str(), c.action, nullptr);
        EXPECT_EQ(c.problem ? LX_ERR_INVALID_WORD : 0, r) << c.word;
        if (c.problem) {
            EXPECT_EQ("AddWord: " + c.word + " " + c.problem, LX_Diag_GetLastMsg());
        }
    }
    EXPECT_EQ(4u, lex.words().size());
}

TEST(DmtLex, OtherWordIsCutAndClearKeepsTheLexiconOpen) {
    MemLex lex{"a", "b"};
    lex.add("w", LX_ACT_AUTO_CHANGE, std::string(100, 'r').c_str());
    char other[LX_MAX_WORD_SZ], untouched[8] = "same";
    EXPECT_EQ(LX_ACT_AUTO_CHANGE, LX_Lexicon_FindWord(&lex.lex, "w", 1, other, sizeof other));
    EXPECT_EQ(std::string(80, 'r'), other);
    EXPECT_EQ(LX_ACT_AUTO_CHANGE, LX_Lexicon_FindWord(&lex.lex, "w", 1, nullptr, 0));
    EXPECT_EQ(LX_ERR_NOT_FOUND, LX_Lexicon_FindWord(&lex.lex, "v", 1, untouched, sizeof untouched));
    EXPECT_STREQ("same", untouched);
    EXPECT_EQ(0, LX_Lexicon_Clear(&lex.lex));
    EXPECT_EQ(LX_ERR_NOT_FOUND, LX_Lexicon_FindWord(&lex.lex, "a", 1, nullptr, 0));
    lex.add("c");
    EXPECT_EQ(LX_ACT_IGNORE, LX_Lexicon_FindWord(&lex.lex, "C", 0, nullptr, 0));
    EXPECT_EQ(0, LX_Lexicon_Close(&lex.lex));
    EXPECT_EQ(0u, lex.lex.dmt.magic);
}

TEST(Lexicon, KindsWithoutRoutinesAreUnsupported) {
    for (int32_t kind : {0, 1, 4, LEX_DFT, LEX_MC, LEX_FC, 99}) {
        LX_Lexicon lex{};
        lex.kind = kind;
        char bfr[8];
        const std::vector<int32_t> results = {
            LX_Lexicon_AddWord(&lex, "a", LX_ACT_IGNORE, nullptr), LX_Lexicon_DelWord(&lex, "a"),
            LX_Lexicon_Clear(&lex), LX_Lexicon_Close(&lex), LX_Lexicon_FindWord(&lex, "a", 1, nullptr, 0),
            LX_Lexicon_GetImage(&lex, bfr, sizeof bfr), LX_Lexicon_Size(&lex)};
        EXPECT_EQ(std::vector<int32_t>(7, LX_ERR_UNSUPPORTED), results) << kind;
    }
}

TEST(DmtLexDeathTest, ProgrammerErrors) {
    MemLex lex;
    LX_Lexicon closed{};
    closed.kind = LEX_DMT;
    EXPECT_DEATH(LX_Lexicon_AddWord(nullptr, "a", LX_ACT_IGNORE, nullptr), "lex != NULL");
    EXPECT_DEATH(LX_Lexicon_GetImage(&lex.lex, nullptr, 0), "bfr != NULL");
    EXPECT_DEATH(LX_Lexicon_Size(&closed), "MAGIC == lex->magic");
}

// Every allocation of a create or an add can fail; each failure must give
// LX_ERR_NO_MEMORY, change nothing and leak nothing.
TEST(DmtLex, AllocationFailuresChangeNothing) {
    const long before = LX_Mem_LiveBlocks();
    const char *words[] = {"m", "a", "z", "b", "c"};
    for (long fail = 0;; ++fail) {
        SCOPED_TRACE(fail);
        LX_Lexicon lex{};
        lex.kind = LEX_DMT;
        LX_Mem_FailAfter(fail);
        int32_t r = LX_DMTLex_Create(&lex, 2, LX_LANG_NONE);
        if (r == LX_ERR_NO_MEMORY) {
            EXPECT_EQ(0u, lex.dmt.magic);
            continue;
        }
        ASSERT_EQ(0, r);
        int stored = 0;
        while (stored < 5 && (r = LX_Lexicon_AddWord(&lex, words[stored], LX_ACT_AUTO_CHANGE, "other")) == 0)
            ++stored;
        LX_Mem_FailAfter(-1);
        if (stored < 5) {
            ASSERT_EQ(LX_ERR_NO_MEMORY, r);
            EXPECT_EQ(stored, lex.dmt.words.count);
            EXPECT_EQ(LX_ERR_NOT_FOUND, LX_Lexicon_FindWord(&lex, words[stored], 1, nullptr, 0));
        }
        for (int i = 0; i < stored; ++i)
            EXPECT_EQ(LX_ACT_AUTO_CHANGE, LX_Lexicon_FindWord(&lex, words[i], 0, nullptr, 0));
        LX_Lexicon_Close(&lex);
        EXPECT_EQ(before, LX_Mem_LiveBlocks());
        if (stored == 5) break;
    }
}

// Lookups and pattern searches through the index agree with a plain model
// after any sequence of additions, deletions and clears.
TEST(DmtLex, IndexAgreesWithPlainLookups) {
    std::mt19937 rng(12345);
    auto random_word = [&] {
        std::string w;
        for (size_t i = 0, n = 1 + rng() % 3; i < n; ++i) w += "aAbBcC\xE9\xC9"[rng() % 8];
        return w;
    };
    MemLex lex;
    std::map<std::string, int16_t> model; // byte order of std::string is unsigned
    for (int step = 0; step < 4000; ++step) {
        const std::string w = random_word();
        const unsigned op = rng() % 100;
        if (op < 60) {
            auto action = static_cast<int16_t>('a' + rng() % 20);
            if (step < 2000 && action == LX_ACT_EXCLUDE) action = LX_ACT_IGNORE; // no exclusions at first
            lex.add(w.c_str(), action);
            model[w] = action;
        } else if (op < 95) {
            EXPECT_EQ(model.erase(w) ? 0 : LX_ERR_NOT_FOUND, LX_Lexicon_DelWord(&lex.lex, w.c_str()));
        } else if (op == 99) {
            LX_Lexicon_Clear(&lex.lex);
            model.clear();
        }
        const std::string q = random_word();
        const auto exact = model.find(q);
        EXPECT_EQ(exact == model.end() ? LX_ERR_NOT_FOUND : exact->second,
                  LX_Lexicon_FindWord(&lex.lex, q.c_str(), 1, nullptr, 0));
        int16_t folded = LX_ERR_NOT_FOUND;
        for (auto it = model.begin(); it != model.end() && folded == LX_ERR_NOT_FOUND; ++it)
            if (LX_Str_ICmp(it->first.c_str(), q.c_str()) == 0) folded = it->second;
        EXPECT_EQ(folded, LX_Lexicon_FindWord(&lex.lex, q.c_str(), 0, nullptr, 0)) << q;

        // The words of q's base form, in any order.
        std::vector<std::string> held, base;
        LX_Lexicon_ForEachBaseForm(&lex.lex, q.c_str(), [](void *ctx, const char *w) {
            static_cast<std::vector<std::string> *>(ctx)->push_back(w);
            return true;
        }, &held);
        for (const auto &kv : model) {
            bool same = kv.first.size() == q.size();
            for (size_t i = 0; same && i < q.size(); ++i)
                same = lx_fold(static_cast<uchar>(kv.first[i])) == lx_fold(static_cast<uchar>(q[i]));
            if (same) base.push_back(kv.first);
        }
        std::sort(held.begin(), held.end());
        EXPECT_EQ(base, held) << q;

        // A pattern search, against a walk over the model in byte order that
        // stops, with case respected, at the first word past the pattern's
        // fixed start.
        std::string pattern = random_word();
        pattern.insert(rng() % (pattern.size() + 1), 1, '?');
        const int16_t cs = static_cast<int16_t>(rng() % 2);
        Set got(4, "a:100 b:100 c:90"), want(4, "a:100 b:100 c:90");
        LX_Lexicon_FindPattern(&lex.lex, pattern.c_str(), cs, &got.set);
        const std::string fixed = pattern.substr(0, pattern.find('?'));
        for (const auto &[word, action] : model) {
            if (cs && fixed.compare(0, fixed.size(), word, 0, fixed.size()) < 0) break;
            if (action == LX_ACT_EXCLUDE) SuggSet_Remove(&want.set, word.c_str());
            const int16_t score = cs ? LX_Match_Pattern(pattern.c_str(), word.c_str())
                                     : LX_Match_PatternNoCase(pattern.c_str(), word.c_str());
            if (action == LX_ACT_IGNORE && score > 0) SuggSet_Add(&want.set, word.c_str(), score);
        }
        EXPECT_EQ(want.str(), got.str()) << pattern << " " << cs;
    }
    std::vector<std::string> keys;
    for (const auto &kv : model) keys.push_back(kv.first);
    EXPECT_EQ(keys, lex.words());
}

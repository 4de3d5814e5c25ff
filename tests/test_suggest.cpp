// Suggestions: the memory lexicon's pattern and comparator searches, and
// the stages of LX_Suggest with their gates, case and possessive repair,
// and removal of look-alikes.
#include <fstream>
#include <random>

#include "compare.h"
#include "dmtlex.h"
#include "filetest.h"
#include "lexicon.h"
#include "lxtest.h"

constexpr uint32_t CS = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE, TYPO = LX_OPT_SUGGEST_TYPOGRAPHIC;

// What LX_Suggest leaves in the set (a new one unless given); the result
// must be the count.
static std::string suggest(const char *word, int32_t depth, LX_Lexicon *const *list, uint32_t options,
                           Set *into = nullptr) {
    Set fresh;
    Set &s = into ? *into : fresh;
    const int32_t n = LX_Suggest(word, depth, list, options, &s.set);
    EXPECT_EQ(s.set.count, n);
    return s.str();
}

TEST(DmtSearch, PatternAndComparatorSearches) {
    MemLex empty, lex{"Cat", "cat", "coat", "cot", "ct", "cut", "dot", "bat\te", "cit\tacat", "dit\te"};
    Set s(10, "x:50"); // an empty lexicon leaves the set alone
    EXPECT_EQ(0, LX_DMTLex_FindPattern(&empty.lex, "c?t", 1, &s.set));
    EXPECT_EQ(0, LX_DMTLex_FindSimilar(&empty.lex, "cat", 0, LX_Compare_Typographic, &s.set));
    EXPECT_EQ("x:50", s.str());
    static const struct { const char *pattern; int16_t caseSensitive; const char *expected; } cases[] = {
        // With case respected the walk ends at the first word past "c", so
        // the excluded "dit" is not reached; "bat" is passed on the way.
        {"c?t", 1, "cat:100 cot:100 cut:100 dit:1"}, {"c?t", 0, "Cat:100 cat:100 cot:100 cut:100"},
        {"?ot", 1, "cot:100 dot:100"}, {"C?T", 0, "Cat:100 cat:100 cot:100 cut:100"},
        {"C?T", 1, "bat:1 dit:1"}, // stops at "bat", the first word past "C"
        {"coat", 1, "coat:100 dit:1"},
    };
    for (const auto &c : cases) {
        Set t(10, "bat:1 dit:1");
        EXPECT_EQ(0, LX_Lexicon_FindPattern(&lex.lex, c.pattern, c.caseSensitive, &t.set));
        EXPECT_EQ(c.expected, t.str()) << c.pattern;
    }
    // The stored replacement for "teh" ranks at 99 though the comparator
    // gives it 73; the excluded word is gone; "tho" has no usable action.
    MemLex teh{"the", "then", "xyz", "teh\tathe", "thee\te", "tho\tE"};
    Set u(10, "thee:90");
    EXPECT_EQ(0, LX_Lexicon_FindSimilar(&teh.lex, "teh", 30, LX_Compare_Typographic, &u.set));
    EXPECT_EQ("the:99 then:67 xyz:1", u.str());
}

TEST(Suggest, Examples) {
    const uint32_t ph = LX_OPT_SUGGEST_PHONETIC, ps = CS | TYPO | LX_OPT_STRIP_POSSESSIVE;
    const uint32_t nl = CS | LX_OPT_IGNORE_NO_LETTERS;
    const std::vector<const char *> catDog = {"cat", "dog"}, theDog = {"the", "dog"};
    const std::vector<const char *> theHe = {"the", "he", "thw\te"}, words = {"the", "cat", "end", "next", "abc"};
    const struct { std::vector<const char *> lexicon; const char *word; int32_t depth; uint32_t options;
                   const char *expected; } cases[] = {
        // Stage gates: no edit finds anything; the sweep of the text lexicon does.
        {catDog, "cot", 9, CS | TYPO, "cat:80 dog:40"}, {catDog, "cot", 29, CS | TYPO, "cat:80 dog:40"},
        {catDog, "cot", 30, CS | TYPO, "cat:80"},        // the pattern search finds "cat": no sweep
        {catDog, "cot", 31, CS | TYPO, "cat:80 dog:40"}, // above 30 every lexicon is swept
        // The phonetic option sweeps even after a find, with both comparators.
        {catDog, "cot", 30, CS | TYPO | ph, "cat:80 dog:40"},
        {catDog, "cot", 100, CS, ""}, {catDog, "cot", 100, CS | ph, "cat:80"},
        // Edit trials pass the rule chain: transposition finds "the", deletion
        // "he"; the sweep doesn't run since the set grew.
        {theHe, "hte", 10, CS | TYPO, "the:83 he:83"}, {theHe, "hhe", 10, CS | TYPO, "he:93"},
        // The case and the possessive of the word.
        {theDog, "Hte", 10, ps, "The:83"}, {theDog, "HTE", 10, ps, "THE:83"}, {theDog, "teh's", 10, ps, "the's:73"},
        {theDog, "TEH'S", 10, ps, "THE'S:73"}, {theDog, "dgo's", 10, ps, "dog's:73"},
        {theDog, "dgos", 10, ps, "dog:67 the:32"},
        {{"the", "teh\tathe"}, "teh", 100, CS | TYPO, "the:99"}, // a stored replacement ranks at 99
        // Divisions and spaces.
        {words, "thecat", 0, nl | LX_OPT_SUGGEST_SPLIT, "the cat:92"}, {words, "thecat", 0, nl, ""},
        {words, "end.Next", 0, nl, "end. Next:94"}, {words, "end.Next.", 0, nl, ""}, // two punctuation characters
        {words, "abc123", 0, nl, "abc 123:90"}, {words, "abc123xyz", 0, nl, ""},     // "xyz" fails the trial
        // All four are one substitution away; "hat" and "mat" score alike and
        // keep the order in which the pattern search found them.
        {{"bat", "cat", "hat", "mat"}, "fat", 30, CS | TYPO, "cat:70 bat:68 hat:66 mat:66"},
        // A pattern's find that the comparator finds nothing alike in keeps
        // the score it gives: 0.
        {{"x"}, "a", 30, CS | TYPO, "x:0"}, {{"x"}, "a", 100, CS | TYPO, "x:0"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.word) + " at depth " + std::to_string(c.depth));
        MemLex lex;
        for (const char *e : c.lexicon) lex.entry(e);
        EXPECT_EQ(c.expected, suggest(c.word, c.depth, LexList{&lex.lex}, c.options));
        EXPECT_EQ(c.expected, suggest(c.word, c.depth, LexList{&lex.lex}, c.options)); // nothing carried over
    }
}

TEST(Suggest, EmptyWordChangesNothing) {
    MemLex lex{"the"};
    LexList list{&lex.lex};
    Set s(10, "keep:50"), none(0);
    EXPECT_EQ(0, LX_Suggest("'s", 100, list, CS | TYPO | LX_OPT_STRIP_POSSESSIVE, &s.set));
    EXPECT_EQ(0, LX_Suggest("", 100, list, CS | TYPO, &s.set));
    EXPECT_EQ("keep:50", s.str());
    EXPECT_EQ(0, LX_Suggest("hte", 100, list, CS | TYPO, &none.set));
}

TEST(Suggest, EarlierEntriesTakeCaseAndLookAlikesGo) {
    MemLex lex, user{"cat\te"}, main{"cat", "cot"};
    LexList list{&lex.lex};
    // No suggestion option: only the last stages run, on what was there.
    // Both "the" and "The" become "The"; taking out the later text takes
    // out the first entry of exactly that text.
    Set s(10, "the:80 The:70 then:60"), u(10, "the:80 The:70");
    EXPECT_EQ("The:70 Then:60", suggest("Hte", 100, list, CS, &s));
    EXPECT_EQ("the:80 The:70", suggest("hte", 100, list, CS, &u));
    EXPECT_EQ("the:80", suggest("hte", 100, list, LX_OPT_CHECK_SPELLING, &u));
    // Words excluded by an earlier lexicon go.
    EXPECT_EQ("cot:80", suggest("cit", 100, LexList{&user.lex, &main.lex}, CS | TYPO));
}

// The searches with the typographic comparator skip what can't change the
// set; a comparator that merely calls it takes the plain way through the
// same words. Both ways, and the compressed and the memory lexicon of the
// same words, must leave the same set behind: the same words, scores and
// order, whether the set fills up or not.
namespace {

int16_t plain_typographic(const char *a, const char *b) { return LX_Compare_Typographic(a, b); }
int16_t plain_phonetic(const char *a, const char *b) { return LX_Compare_Phonetic(a, b); }

std::vector<std::string> some_bundled_words() {
    std::ifstream in(std::string(LX_DATA_DIR) + "/en_US.txt", std::ios::binary);
    std::vector<std::string> out;
    size_t n = 0;
    for (std::string line; std::getline(in, line); ++n) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty() && n % 6 == 0) out.push_back(line);
    }
    return out;
}

} // namespace

TEST(SuggestSearches, QuickWaysGiveThePlainResults) {
    const std::vector<std::string> words = some_bundled_words();
    TempDir dir;
    const std::string list = dir.path + "/words.txt", file = dir.path + "/words.lxc";
    {
        std::ofstream out(list, std::ios::binary);
        for (const std::string &w : words) out << w << "\r\n";
    }
    uint32_t errLine = 0;
    ASSERT_EQ(0, LX_Compress_Lex(list.c_str(), file.c_str(), &errLine)) << LX_Compress_GetLastMsg();
    LX_Lexicon fc{};
    fc.kind = LEX_FC;
    ASSERT_EQ(0, LX_FCLex_Open(&fc, file.c_str(), 0)) << LX_Diag_GetLastMsg();
    MemLex mem;
    for (const std::string &w : words) mem.add(w.c_str());
    LexList fcList{&fc}, memList{&mem.lex};

    // Misspellings: one or two letters swapped, dropped, added or changed.
    std::mt19937 rng(11);
    std::vector<std::string> typed = {"a", "xq", "Teh", "accomdate", "addional", "ABANDONNED", "ocur"};
    for (int i = 0; i < 40; ++i) {
        std::string w = words[rng() % words.size()];
        for (int edits = 1 + static_cast<int>(rng() % 2); edits > 0 && w.size() > 1; --edits) {
            const size_t at = rng() % w.size();
            switch (rng() % 4) {
            case 0: if (at + 1 < w.size()) std::swap(w[at], w[at + 1]); break;
            case 1: w.erase(at, 1); break;
            case 2: w.insert(at, 1, "aeinrst"[rng() % 7]); break;
            default: w[at] = "aeiouxz"[rng() % 7]; break;
            }
        }
        typed.push_back(w);
    }
    const uint32_t options = CS | TYPO | LX_OPT_SUGGEST_PHONETIC | LX_OPT_STRIP_POSSESSIVE;
    size_t differ = 0;
    for (const std::string &w : typed) {
        for (int32_t capacity : {3, 20}) {
            for (int32_t depth : {30, 40, 70}) {
                for (LX_Lexicon *lex : {&fc, &mem.lex}) {
                    Set quick(capacity), plain(capacity), quickPh(capacity), plainPh(capacity);
                    LX_Lexicon_FindSimilar(lex, w.c_str(), depth, LX_Compare_Typographic, &quick.set);
                    LX_Lexicon_FindSimilar(lex, w.c_str(), depth, plain_typographic, &plain.set);
                    if (depth == 40) { // the phonetic comparator is dearer
                        LX_Lexicon_FindSimilar(lex, w.c_str(), depth, LX_Compare_Phonetic, &quickPh.set);
                        LX_Lexicon_FindSimilar(lex, w.c_str(), depth, plain_phonetic, &plainPh.set);
                    }
                    if ((quick.str() != plain.str() || quickPh.str() != plainPh.str()) && ++differ <= 5)
                        ADD_FAILURE() << w << " depth " << depth << " capacity " << capacity << "\n"
                                      << quick.str() << "\n" << plain.str() << "\n"
                                      << quickPh.str() << "\n" << plainPh.str();
                }
            }
            // Pattern searches that fill the set or not, with a wildcard
            // in every place, through the keys or inside them.
            for (size_t at = 0; at <= w.size(); ++at) {
                for (const std::string &pattern : {w.substr(0, at) + "?" + w.substr(at),
                                                   at < w.size() ? w.substr(0, at) + "?" + w.substr(at + 1) : w}) {
                    Set fromFc(capacity * 10), fromMem(capacity * 10);
                    LX_Lexicon_FindPattern(&fc, pattern.c_str(), 1, &fromFc.set);
                    LX_Lexicon_FindPattern(&mem.lex, pattern.c_str(), 1, &fromMem.set);
                    if (fromFc.str() != fromMem.str() && ++differ <= 5)
                        ADD_FAILURE() << pattern << "\n" << fromFc.str() << "\n" << fromMem.str();
                }
            }
            Set fromFc(capacity), fromMem(capacity);
            EXPECT_EQ(suggest(w.c_str(), 100, fcList, options, &fromFc), suggest(w.c_str(), 100, memList, options, &fromMem))
                << w << " capacity " << capacity;
        }
    }
    EXPECT_EQ(0u, differ);
    LX_Lexicon_Close(&fc);
}

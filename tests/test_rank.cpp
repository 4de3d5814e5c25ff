// lxspell's own order for suggestions: the weighted edit distance and the
// sort over the engine's candidates.
#include <gtest/gtest.h>

#include "rank.h"

using namespace lxspell;

namespace {

constexpr int E = kEditCost;

TEST(LxspellRank, EditCost) {
    const struct {
        const char *typed, *candidate;
        int cost;
    } cases[] = {
        {"the", "the", 0},
        {"The", "tHE", 0},            // case is not a difference
        {"teh", "the", 2},            // a swap
        {"teh", "tech", E},           // an insertion
        {"teh", "eh", E},             // a deletion
        {"abandonned", "abandoned", 2}, // a double undone
        {"ocur", "occur", 2},         // a letter doubled
        {"definate", "definite", 3},  // a vowel for a vowel
        {"bcat", "boat", E},          // any other substitution
        {"agin", "again", 3},         // a vowel left out
        {"churchs", "church's", 5},   // an apostrophe
        {"churchs", "churches", 3},
        {"acheive", "achieve", 2},
        {"emporer", "emperor", 6},    // two vowels
        {"", "bc", 2 * E},
        {"bc", "", 2 * E},
        {"", "ab", 3 + E},            // a vowel and a consonant
        {"\xC9t\xC9", "\xE9t\xE9", 0}, // ISO 8859-1 capitals
        {"ct", "tdc", 3 * E},         // a swapped pair isn't edited again
    };
    for (const auto &c : cases) EXPECT_EQ(edit_cost(c.typed, c.candidate), c.cost) << c.typed << " -> " << c.candidate;
}

TEST(LxspellRank, Order) {
    const struct {
        const char *typed;
        std::vector<RawSuggestion> engine;
        std::vector<const char *> ranked;
    } cases[] = {
        // The swap first, then the engine's order among single edits.
        {"teh", {{"tech", 86}, {"eh", 83}, {"the", 83}}, {"the", "tech", "eh"}},
        // A first letter lost (rods) costs more than a swap (words) or a
        // substitution (woods); a vowel put in and one left out (wards)
        // less than a first letter changed and a swap (lords).
        {"wrods", {{"rods", 90}, {"woods", 87}, {"words", 85}, {"lords", 85}, {"wards", 87}}, {"words", "woods", "rods", "wards", "lords"}},
        // Other first letters and other capitals last among equals.
        {"teh", {{"eh", 83}, {"Te", 83}, {"tea", 66}}, {"tea", "eh", "Te"}},
        {"ganes", {{"genes", 80}, {"Danes", 90}, {"games", 85}}, {"genes", "games", "Danes"}},
        {"recieve", {{"receive", 94}, {"relieve", 85}}, {"receive", "relieve"}},
        {"x", {}, {}},
    };
    for (const auto &c : cases) {
        std::vector<RawSuggestion> got = c.engine;
        rank_candidates(c.typed, got);
        std::vector<std::string> words, want(c.ranked.begin(), c.ranked.end());
        for (const auto &s : got) words.push_back(s.word);
        EXPECT_EQ(words, want) << c.typed;
    }
}

TEST(LxspellRank, HasSlip) {
    const struct {
        const char *typed;
        std::vector<RawSuggestion> candidates;
        bool slip;
    } cases[] = {
        {"teh", {{"tech", 86}, {"the", 10}}, true},      // a swap, wherever it stands
        {"abandonned", {{"abandoned", 98}}, true},      // a double undone
        {"definate", {{"definite", 88}}, true},         // a vowel for a vowel
        {"agin", {{"again", 90}}, true},                // a vowel left out
        {"teh", {{"tech", 86}, {"eh", 83}}, false},     // plain single edits only
        {"adres", {{"ares", 90}, {"acres", 86}}, false}, // so "address" is looked for deeper
        {"emporer", {{"emperors", 80}, {"temporary", 70}}, false},
        {"emporer", {}, false},
    };
    for (const auto &c : cases) EXPECT_EQ(has_slip(c.typed, c.candidates), c.slip) << c.typed;
}

} // namespace

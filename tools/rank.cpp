// rank.cpp - lxspell's own order for the engine's suggestions.
//
// The engine ranks its candidates by the likeness its comparators find,
// which can put a word one letter longer before a plain swap ("teh": tech,
// eh, the). Typing slips are mostly single edits, so the candidates are
// ordered by a weighted Damerau distance (optimal string alignment: each
// substring is edited once), where the commonest slips cost less than
// other edits; the engine's score breaks ties.
#include "rank.h"

#include <algorithm>

namespace lxspell {

namespace {

// Costs of the edits, in the units of kEditCost, chosen on Wikipedia's
// list of common misspellings. A key beside the one meant turned out no
// likelier than any other and costs a plain edit.
constexpr int kSwap = 2;     // two neighbours swapped
constexpr int kDouble = 2;   // a letter doubled or a double undone
constexpr int kVowel = 3;    // one vowel for another
constexpr int kVowelIndel = 3; // a vowel put in or left out
constexpr int kApostrophe = 5; // an apostrophe put in or left out
// Added in the order: the first letter is seldom the one mistyped, and a
// capital seldom the one forgotten (or a small letter the one meant).
constexpr int kFirstLetter = 1, kCapital = 1;

// ISO 8859-1 lower case.
unsigned char lower(unsigned char c) {
    if ((c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7)) return static_cast<unsigned char>(c + 32);
    return c;
}

bool is_vowel(unsigned char c) {
    switch (c) {
    case 'a': case 'e': case 'i': case 'o': case 'u': case 'y': return true;
    default: return c >= 0xE0 && c != 0xE7 && c != 0xF1 && c != 0xF7 && c != 0xF0 && c != 0xFE;
    }
}

int substitution(unsigned char a, unsigned char b) {
    if (a == b) return 0;
    a = lower(a), b = lower(b);
    if (a == b) return 0;
    return is_vowel(a) && is_vowel(b) ? kVowel : kEditCost;
}

// The cost of inserting or deleting s[i]: less when it doubles a neighbour,
// more for an apostrophe (a plural is meant far more often than a
// possessive).
int indel(std::string_view s, size_t i) {
    const unsigned char c = lower(static_cast<unsigned char>(s[i]));
    if ((i > 0 && lower(static_cast<unsigned char>(s[i - 1])) == c) ||
        (i + 1 < s.size() && lower(static_cast<unsigned char>(s[i + 1])) == c))
        return kDouble;
    if (c == '\'') return kApostrophe;
    return c < 0x80 && is_vowel(c) ? kVowelIndel : kEditCost;
}

} // namespace

int edit_cost(std::string_view a, std::string_view b) {
    const size_t m = a.size(), n = b.size();
    const size_t w = n + 1;
    std::vector<int> d((m + 1) * w);
    auto at = [&](size_t i, size_t j) -> int & { return d[i * w + j]; };
    // The cost of putting in or leaving out each character, once.
    std::vector<int> indelB(n);
    for (size_t j = 0; j < n; ++j) indelB[j] = indel(b, j);
    for (size_t j = 1; j <= n; ++j) at(0, j) = at(0, j - 1) + indelB[j - 1];
    for (size_t i = 1; i <= m; ++i) {
        const int indelA = indel(a, i - 1);
        at(i, 0) = at(i - 1, 0) + indelA;
        const unsigned char ca = static_cast<unsigned char>(a[i - 1]);
        for (size_t j = 1; j <= n; ++j) {
            const unsigned char cb = static_cast<unsigned char>(b[j - 1]);
            int best = at(i - 1, j - 1) + substitution(ca, cb);
            best = std::min(best, at(i - 1, j) + indelA);
            best = std::min(best, at(i, j - 1) + indelB[j - 1]);
            if (i > 1 && j > 1 && lower(ca) == lower(static_cast<unsigned char>(b[j - 2])) &&
                lower(static_cast<unsigned char>(a[i - 2])) == lower(cb) && lower(ca) != lower(cb))
                best = std::min(best, at(i - 2, j - 2) + kSwap);
            at(i, j) = best;
        }
    }
    return at(m, n);
}

int rank_cost(std::string_view typed, std::string_view candidate) {
    int cost = edit_cost(typed, candidate);
    if (typed.empty() || candidate.empty()) return cost;
    const auto t = static_cast<unsigned char>(typed[0]), c = static_cast<unsigned char>(candidate[0]);
    if (lower(t) != lower(c)) cost += kFirstLetter;
    if ((lower(t) == t) != (lower(c) == c)) cost += kCapital;
    return cost;
}

void rank_candidates(std::string_view typed, std::vector<RawSuggestion> &candidates) {
    struct Keyed {
        int cost;
        size_t order;
    };
    std::vector<Keyed> keys(candidates.size());
    for (size_t i = 0; i < candidates.size(); ++i) keys[i] = {rank_cost(typed, candidates[i].word), i};
    std::vector<size_t> idx(candidates.size());
    for (size_t i = 0; i < idx.size(); ++i) idx[i] = i;
    std::stable_sort(idx.begin(), idx.end(), [&](size_t x, size_t y) {
        if (keys[x].cost != keys[y].cost) return keys[x].cost < keys[y].cost;
        return candidates[x].score > candidates[y].score;
    });
    std::vector<RawSuggestion> out;
    out.reserve(candidates.size());
    for (size_t i : idx) out.push_back(std::move(candidates[i]));
    candidates = std::move(out);
}

bool has_slip(std::string_view typed, const std::vector<RawSuggestion> &candidates) {
    for (const RawSuggestion &c : candidates) {
        if (edit_cost(typed, c.word) < kEditCost) return true;
    }
    return false;
}

} // namespace lxspell

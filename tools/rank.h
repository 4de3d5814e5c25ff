// rank.h - lxspell's own order for the engine's suggestions: the closest
// spelling first, by a weighted edit distance, the engine's score next.
#ifndef LXSPELL_RANK_H
#define LXSPELL_RANK_H

#include <string>
#include <string_view>
#include <vector>

namespace lxspell {

// How suggestions are ordered: lxspell's own ranking (the default) or the
// engine's order as LX_Suggest gives it.
enum class Rank { Own, Engine };

// One suggestion: a word in the engine's form (ISO 8859-1) and the
// engine's score for it (0 to 100).
struct RawSuggestion {
    std::string word;
    int score;
};

// The cost of one edit in the distances below.
inline constexpr int kEditCost = 4;

// The weighted edit distance from typed to candidate, letters compared
// without case, in units of kEditCost for a plain edit: an insertion, a
// deletion, a substitution or a swap of two neighbours. Slips that people
// often make cost less: a swap, a doubled or undoubled letter, a vowel for
// a vowel, a vowel put in or left out; an apostrophe costs more.
int edit_cost(std::string_view typed, std::string_view candidate);

// edit_cost, and a little more when the first letter differs, or is a
// capital in one word and not in the other: what candidates are sorted by.
int rank_cost(std::string_view typed, std::string_view candidate);

// Sorts candidates (the engine's list, best first) for the misspelling
// typed: by rank_cost, then by the engine's score, then as the engine had
// them.
void rank_candidates(std::string_view typed, std::vector<RawSuggestion> &candidates);

// True when some candidate is one of the common slips from typed, cheaper
// than a plain edit: two neighbours swapped, a letter doubled or a double
// undone, a vowel for a vowel, a vowel put in or left out. Then the
// correction is nearly always among the candidates, and a deeper search
// isn't worth its time; a plain single edit leaves room for a correction
// two edits away.
bool has_slip(std::string_view typed, const std::vector<RawSuggestion> &candidates);

} // namespace lxspell

#endif

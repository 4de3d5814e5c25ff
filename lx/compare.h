// compare.h - how near two words are: the typographic and the phonetic
// comparator, the phonetic key behind the second, and the wildcard pattern
// matchers. All of them have the shape of a word comparator, which the
// lexicon searches call once for every word they look at, so they work in
// one pass over their arguments, on the stack, without allocation.
#ifndef LX_COMPARE_H
#define LX_COMPARE_H

#include "lxbase.h"

// A comparator: a is the word at hand, b the candidate. The score runs from
// 0 to 100; 100 is an identical text, 0 (or less) means no match.
typedef int16_t (*LX_WordComparatorCb)(const char *a, const char *b);

// Credit, in percent of a matching position, for a position at which the
// base letter of the row (first word) stands where the second word has the
// base letter of the column. Indexed by base letter - 'A'. Mostly
// symmetric; five pairs are not, where one direction of a mistake is more
// likely than the other (C/T, D/T, E/T, G/T, L/O).
inline constexpr int8_t LX_LetterMatrix[26][26] = {
    //  A   B   C   D   E   F   G   H   I   J   K   L   M   N   O   P   Q   R   S   T   U   V   W   X   Y   Z
    {100, 0, 5, 15, 40, 0, 0, 0, 20, 0, 0, 0, 0, 0, 40, 0, 40, 0, 20, 0, 20, 0, 20, 0, 0, 0},   // A
    {0, 100, 0, 15, 0, 5, 10, 15, 0, 0, 0, 5, 0, 20, 10, 20, 5, 0, 0, 10, 0, 20, 0, 0, 0, 0},   // B
    {5, 0, 100, 20, 20, 10, 0, 0, 0, 0, 20, 0, 0, 0, 10, 0, 20, 0, 10, 0, 0, 20, 0, 20, 0, 20}, // C
    {15, 15, 20, 100, 10, 20, 0, 0, 0, 0, 0, 5, 0, 0, 5, 5, 5, 5, 20, 20, 0, 0, 5, 10, 0, 0},   // D
    {40, 0, 20, 10, 100, 0, 0, 0, 20, 0, 0, 0, 0, 0, 40, 0, 0, 20, 10, 5, 20, 0, 20, 0, 5, 0},  // E
    {0, 5, 10, 20, 0, 100, 20, 0, 5, 0, 0, 0, 0, 0, 0, 5, 0, 10, 10, 10, 0, 30, 0, 0, 0, 0},    // F
    {0, 10, 0, 0, 0, 20, 100, 20, 0, 20, 0, 0, 0, 0, 0, 0, 5, 5, 0, 10, 0, 10, 0, 0, 5, 0},     // G
    {0, 15, 0, 0, 0, 0, 20, 100, 0, 20, 20, 10, 0, 10, 0, 0, 0, 0, 0, 0, 5, 0, 0, 0, 10, 0},    // H
    {20, 0, 0, 0, 20, 5, 0, 0, 100, 25, 10, 25, 0, 0, 40, 0, 0, 0, 0, 5, 40, 0, 0, 0, 0, 0},    // I
    {0, 0, 0, 0, 0, 0, 20, 20, 25, 100, 20, 0, 10, 10, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0},    // J
    {0, 0, 20, 0, 0, 0, 0, 20, 10, 20, 100, 30, 10, 0, 5, 0, 20, 0, 0, 0, 0, 0, 0, 0, 0, 0},    // K
    {0, 5, 0, 5, 0, 0, 0, 10, 25, 0, 30, 100, 0, 0, 5, 0, 0, 5, 0, 20, 0, 0, 0, 0, 0, 0},       // L
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 10, 10, 0, 100, 60, 0, 0, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0},       // M
    {0, 20, 0, 0, 0, 0, 0, 10, 0, 10, 0, 0, 60, 100, 0, 0, 0, 0, 0, 0, 20, 0, 0, 0, 0, 0},      // N
    {40, 10, 10, 5, 40, 0, 0, 0, 40, 0, 5, 0, 0, 0, 100, 30, 20, 0, 0, 0, 20, 0, 10, 0, 0, 0},  // O
    {0, 20, 0, 5, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0, 30, 100, 20, 0, 0, 20, 0, 0, 0, 0, 0, 0},       // P
    {40, 5, 20, 5, 0, 0, 5, 0, 0, 0, 20, 0, 0, 0, 20, 20, 100, 0, 0, 0, 0, 0, 20, 0, 0, 0},     // Q
    {0, 0, 0, 5, 20, 10, 5, 0, 0, 0, 0, 5, 0, 0, 0, 0, 0, 100, 0, 20, 0, 0, 0, 0, 0, 0},        // R
    {20, 0, 10, 20, 10, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 100, 0, 0, 0, 10, 20, 0, 25},   // S
    {0, 10, 20, 5, 10, 10, 0, 0, 5, 0, 0, 20, 0, 0, 0, 20, 0, 20, 0, 100, 0, 0, 0, 0, 20, 0},   // T
    {20, 0, 0, 0, 20, 0, 0, 5, 40, 10, 0, 0, 0, 20, 20, 0, 0, 0, 0, 0, 100, 20, 10, 0, 20, 0},  // U
    {0, 20, 20, 0, 0, 30, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 20, 100, 20, 0, 10, 0},    // V
    {20, 0, 0, 5, 20, 0, 0, 0, 0, 0, 0, 0, 10, 0, 10, 0, 20, 0, 10, 0, 10, 20, 100, 0, 0, 0},   // W
    {0, 0, 20, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 20, 0, 0, 0, 0, 100, 0, 20},       // X
    {0, 0, 0, 0, 5, 0, 5, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 20, 20, 10, 0, 0, 100, 0},       // Y
    {0, 0, 20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 25, 0, 0, 0, 0, 20, 0, 100},        // Z
};

// Typographic likeness of a and b (normally texts of up to 81 characters,
// spaces allowed, but any length is scored right): the mean credit per
// position, 0 to 100. a empty gives 0.
int16_t LX_Compare_Typographic(const char *a, const char *b);

// LX_Compare_Typographic of one word a against many words b, as a sweep
// over a sorted lexicon asks for it, with two savings that leave every
// score that matters as it is:
//  - each step of the comparison is kept, so that the next word, which
//    mostly begins like the one before, goes on from the last step that
//    read only bytes the two words share;
//  - a word is given up as soon as the credit still open to it can't lift
//    its score above floor: a matching position earns at most 100, any
//    other at most 80, so the score is at most (sum + 100 * the positions
//    both words still have + 80 * the positions only one has) / (the
//    positions so far + those still to come); more positions than that
//    bring 60 at most each (two one-sided positions where a matching one
//    would have been), which only pulls a score of 60 or more down. So a
//    bound below floor + 1 settles it for floor 59 or more.
// The word a must stay readable, unchanged, while the scan is in use.
struct LX_TypoScan {
    static constexpr int32_t kMaxLen = LX_MAX_WORD_SZ - 1; // longest a or b
    const uchar *a;
    int32_t lenA;
    int32_t steps; // steps kept of the last word compared
    // The state before step j: offsets into a and b, sum and positions.
    uint8_t offA[2 * kMaxLen + 2];
    uint8_t offB[2 * kMaxLen + 2];
    int32_t sum[2 * kMaxLen + 2];
    int32_t n[2 * kMaxLen + 2];
};

// Starts a scan of a. Gives false if a is longer than kMaxLen: such a word
// is compared by LX_Compare_Typographic itself.
bool LX_TypoScan_Start(LX_TypoScan *scan, const char *a);

// The score of a against b (lenB its length, at most kMaxLen), where the
// first shared bytes of b are those of the word compared before (0 for a
// word unrelated to it). Gives LX_Compare_Typographic(a, b) if that is
// above floor, else some score not above floor.
int16_t LX_TypoScan_Score(LX_TypoScan *scan, const char *b, int32_t lenB, int32_t shared, int32_t floor);

// 0 unless the phonetic key of one word (compared in lower case) equals the
// other's or is the start of it; then the typographic score of a and b.
int16_t LX_Compare_Phonetic(const char *a, const char *b);

// Writes the phonetic key of word into key: capitals and the digit '0',
// NUL-terminated. The key needs up to two bytes per character of word and
// one more, so 161 bytes for a word of 80 characters.
void LX_PhoneticKey(const char *word, char *key);

// 100 if word matches pattern position by position, '?' standing for any
// one character, and both end together; else 0. Case counts.
int16_t LX_Match_Pattern(const char *pattern, const char *word);

// As LX_Match_Pattern, with both sides of a position in lower case.
int16_t LX_Match_PatternNoCase(const char *pattern, const char *word);

#endif

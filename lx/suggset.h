// suggset.h - the ranked, bounded set of suggestions, and the two callbacks
// through which a segment walk of a compressed lexicon fills one.
#ifndef LX_SUGGSET_H
#define LX_SUGGSET_H

#include "compare.h"
#include "lxbase.h"


// Ranked insertion. A newcomer goes behind all entries of its score or
// better; in a full set it must beat the last entry, which then falls off.
// A text the set holds already stays as it is, whatever the new score.
// Texts longer than 80 characters are stored, and compared, cut to 80.
void SuggSet_Add(SuggSet *set, const char *word, int16_t score);

// The score a newcomer must beat to change the set: that of the last
// entry of a full set, else 0 (SuggSet_Add is offered only scores above
// 0). No score beats that of a set of capacity 0.
inline int32_t SuggSet_Floor(const SuggSet *set) {
    if (set->capacity <= 0) return INT16_MAX;
    if (set->count < set->capacity) return 0;
    const int32_t last = set->entries[set->capacity - 1].score;
    return last > 0 ? last : 0;
}

// Takes out the first entry holding word (compared as SuggSet_Add stores
// it) and closes the gap. Nothing happens if there is none.
void SuggSet_Remove(SuggSet *set, const char *word);

// qsort comparator of two SuggEntry records: highest score first.
int32_t SuggSet_CompareScores(const void *a, const void *b);

// What the segment walk callbacks fill, and how they score.
struct SuggCollector {
    SuggSet *set;                         // where candidates go
    int16_t caseSensitive;                // pattern searches: non-zero if case counts
    LX_WordComparatorCb wordComparatorCb; // scores keyWord (or its tail) against curWord
};

// Both callbacks have the shape of the segment walk's word callback:
// keyWord is the text the walk was started with, curWord the word just
// decoded (valid during the call only), collector a SuggCollector *.
// They give 0 to end the walk and 1 to go on.

// Pattern search: the words of a segment share their first three
// characters, which the caller has matched already, so the comparator sees
// only what follows them; a match adds the whole curWord. With case
// respected, the walk ends at the first word that sorts past every match.
int32_t SuggCollect_Pattern(const char *keyWord, const char *curWord, void *collector);

// Comparator search: adds curWord with its score against keyWord when that
// is above 0. Always goes on.
int32_t SuggCollect_Similar(const char *keyWord, const char *curWord, void *collector);

#endif

// suggset.cpp - the ranked suggestion set and its segment walk callbacks.
//
// The set is small and owned by the caller; a linear search for the place
// and for duplicates is enough. Comparator searches offer every word of a
// lexicon, so a full set turns a newcomer away with one comparison, before
// any text is looked at.
#include "suggset.h"

#include <cstring>

namespace {

constexpr int32_t kMaxChars = LX_MAX_WORD_SZ - 1;

// True if stored (an entry's text) equals word as it would be stored, that
// is cut to kMaxChars characters. For words of up to 80 characters this is
// plain equality.
bool same_text(const char *stored, const char *word) {
    for (int32_t i = 0; i < kMaxChars; ++i) {
        if (stored[i] != word[i]) return false;
        if (stored[i] == '\0') return true;
    }
    return stored[kMaxChars] == '\0';
}

// The part of a word behind its first three characters, or its end if it
// is shorter.
const char *tail3(const char *word) {
    for (int i = 0; i < 3 && *word != '\0'; ++i) ++word;
    return word;
}

} // namespace

void SuggSet_Add(SuggSet *set, const char *word, int16_t score) {
    LX_ASSERT(set != NULL);
    const int32_t capacity = set->capacity;
    if (capacity <= 0) return;
    SuggEntry *const entries = set->entries;
    int32_t count = set->count;
    const bool full = count >= capacity;
    if (full) {
        count = capacity;
        if (score <= entries[count - 1].score) return;
    }

    // Behind every entry of the same score or better.
    int32_t place = 0;
    while (place < count && entries[place].score >= score) ++place;

    for (int32_t i = 0; i < count; ++i)
        if (same_text(entries[i].word, word)) return;

    // Make room; in a full set the last entry falls off.
    const int32_t moved = (full ? count - 1 : count) - place;
    if (moved > 0) std::memmove(&entries[place + 1], &entries[place], moved * sizeof(SuggEntry));

    SuggEntry &e = entries[place];
    int32_t i = 0;
    for (; i < kMaxChars && word[i] != '\0'; ++i) e.word[i] = word[i];
    e.word[i] = '\0';
    e.score = score;
    if (!full) set->count = count + 1;
}

void SuggSet_Remove(SuggSet *set, const char *word) {
    LX_ASSERT(word != NULL);
    LX_ASSERT(set != NULL);
    SuggEntry *const entries = set->entries;
    const int32_t count = set->count;
    for (int32_t i = 0; i < count; ++i) {
        if (!same_text(entries[i].word, word)) continue;
        std::memmove(&entries[i], &entries[i + 1], (count - 1 - i) * sizeof(SuggEntry));
        set->count = count - 1;
        return;
    }
}

int32_t SuggSet_CompareScores(const void *a, const void *b) {
    return static_cast<const SuggEntry *>(b)->score - static_cast<const SuggEntry *>(a)->score;
}

int32_t SuggCollect_Pattern(const char *keyWord, const char *curWord, void *collector) {
    const SuggCollector *c = static_cast<const SuggCollector *>(collector);
    const char *keyTail = tail3(keyWord);
    const char *curTail = tail3(curWord);
    const int16_t score = c->wordComparatorCb(keyTail, curTail);
    if (score > 0) SuggSet_Add(c->set, curWord, score);
    if (c->caseSensitive == 0) return 1;

    // The words of a segment are sorted: once a word is greater than the
    // pattern at a position where the pattern has no wildcard, no later
    // word can match.
    const uchar *k = reinterpret_cast<const uchar *>(keyTail);
    const uchar *w = reinterpret_cast<const uchar *>(curTail);
    while (*k == *w && *k != 0) {
        ++k;
        ++w;
    }
    if (*k == *w || *k == '?') return 1;
    return *w < *k ? 1 : 0;
}

int32_t SuggCollect_Similar(const char *keyWord, const char *curWord, void *collector) {
    const SuggCollector *c = static_cast<const SuggCollector *>(collector);
    const int16_t score = c->wordComparatorCb(keyWord, curWord);
    if (score > 0) SuggSet_Add(c->set, curWord, score);
    return 1;
}

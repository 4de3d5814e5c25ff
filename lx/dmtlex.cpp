// dmtlex.cpp - the memory text lexicon.
//
// The entries live in one LX_Vector in strictly ascending byte order of
// their words; each entry owns copies of its texts. That order is what the
// image, the searches and a disk lexicon's file rely on.
//
// Lookups don't walk that vector: beside it the lexicon keeps a private
// index of two open-addressing hash tables, one by exact word and one by
// word folded to lower case (holding the first entry of each folded form
// in byte order, which is the entry a case-insensitive scan would find).
// A bit set of hashes of the words' base forms (accents and case taken
// off) lets the accent search of the rule chain learn at once that no
// accented form of a word can be here. The index is a cache. Appends and insertions keep it up to date; a
// deletion or a clear marks it stale, and the next lookup rebuilds it. If
// memory for it can't be had, lookups fall back to a binary search and a
// linear scan, which give the same answers.
#include "dmtlex.h"

#include <cstring>

#include "chartab.h"
#include "diag.h"
#include "lexicon.h"
#include "lxvector.h"
#include "platform.h"
#include "safestr.h"
#include "suggset.h"

#define MAGIC DMTLEX_MAGIC

namespace {

// ------------------------------------------------------------------ index

// A slot holds the entry's index + 1 in its low 32 bits (0: empty) and the
// word's hash in its high 32 bits, so that most probes that miss never
// touch an entry.
struct DmtIndex {
    uint64_t *exact;
    uint64_t *folded;
    uint64_t *baseBits; // (mask + 1) * 8 bits, one set per base form
    uint8_t *lengths;   // per entry: its word's length, 255 for 255 or more;
                        // room for (mask + 1) / 2 entries, the most a table holds
    uint32_t mask;      // table size - 1; the size is a power of two
    int32_t used;       // entries indexed (the same in both tables)
    int32_t excluded;   // entries with LX_ACT_EXCLUDE
    bool stale;
};

uint8_t length_byte(const char *word) {
    size_t n = std::strlen(word);
    return static_cast<uint8_t>(n < 255 ? n : 255);
}

uint32_t hash_exact(const uchar *w) {
    uint32_t h = 2166136261u;
    for (; *w; ++w) h = (h ^ *w) * 16777619u;
    return h;
}

uint32_t hash_folded(const uchar *w) {
    uint32_t h = 2166136261u;
    for (; *w; ++w) h = (h ^ lx_to_lower(*w)) * 16777619u;
    return h;
}

// Bit of the base-form set for a base-form hash.
void base_bit(const DmtIndex *ix, uint32_t baseHash, size_t *word, uint64_t *bit) {
    size_t nbits = (static_cast<size_t>(ix->mask) + 1) * 8;
    size_t b = baseHash & (nbits - 1);
    *word = b / 64;
    *bit = uint64_t{1} << (b % 64);
}

void put_base(DmtIndex *ix, const char *word) {
    size_t w;
    uint64_t bit;
    base_bit(ix, LX_BaseFormHash(word), &w, &bit);
    ix->baseBits[w] |= bit;
}

LX_LexEntry *entries(LX_Lexicon *lex) { return static_cast<LX_LexEntry *>(lex->dmt.words.data); }

DmtIndex *index_of(LX_Lexicon *lex) { return static_cast<DmtIndex *>(lex->dmt.index); }

void index_free(LX_Lexicon *lex) {
    if (DmtIndex *ix = index_of(lex)) {
        LX_MEM_FREE(ix->exact);
        LX_MEM_FREE(ix->folded);
        LX_MEM_FREE(ix->baseBits);
        LX_MEM_FREE(ix->lengths);
        LX_MEM_FREE(ix);
        lex->dmt.index = nullptr;
    }
}

void mark_stale(LX_Lexicon *lex) {
    if (DmtIndex *ix = index_of(lex)) ix->stale = true;
}

inline bool same_word(const char *a, const char *b) {
    for (;; ++a, ++b) {
        if (*a != *b) return false;
        if (*a == '\0') return true;
    }
}

uint64_t slot(uint32_t hash, int32_t entry) {
    return (static_cast<uint64_t>(hash) << 32) | static_cast<uint32_t>(entry + 1);
}
int32_t slot_entry(uint64_t s) { return static_cast<int32_t>(static_cast<uint32_t>(s)) - 1; }
uint32_t slot_hash(uint64_t s) { return static_cast<uint32_t>(s >> 32); }

void put_exact(DmtIndex *ix, const uchar *word, int32_t entry) {
    uint32_t h = hash_exact(word);
    uint32_t i = h & ix->mask;
    while (ix->exact[i] != 0) i = (i + 1) & ix->mask;
    ix->exact[i] = slot(h, entry);
}

// Records entry as the holder of its folded form unless an entry before it
// in byte order holds that form already.
void put_folded(DmtIndex *ix, LX_LexEntry *all, const uchar *word, int32_t entry) {
    uint32_t h = hash_folded(word);
    uint32_t i = h & ix->mask;
    for (; ix->folded[i] != 0; i = (i + 1) & ix->mask) {
        uint64_t s = ix->folded[i];
        if (slot_hash(s) != h) continue;
        int32_t other = slot_entry(s);
        if (LX_Str_ICmp(all[other].word, reinterpret_cast<const char *>(word)) != 0) continue;
        if (entry < other) ix->folded[i] = slot(h, entry);
        return;
    }
    ix->folded[i] = slot(h, entry);
}

// Builds the index afresh for all entries. Gives false if memory is short.
bool index_build(LX_Lexicon *lex) {
    const int32_t count = lex->dmt.words.count;
    uint32_t size = 64;
    while (size < static_cast<uint32_t>(count) * 2u) size *= 2; // load factor at most 1/2
    DmtIndex *ix = index_of(lex);
    if (ix == nullptr || ix->mask + 1 < size || ix->mask + 1 > size * 4) {
        index_free(lex);
        ix = static_cast<DmtIndex *>(LX_MEM_ALLOC(sizeof(DmtIndex)));
        if (!ix) return false;
        ix->exact = static_cast<uint64_t *>(LX_MEM_ALLOC(size * sizeof(uint64_t)));
        ix->folded = static_cast<uint64_t *>(LX_MEM_ALLOC(size * sizeof(uint64_t)));
        ix->baseBits = static_cast<uint64_t *>(LX_MEM_ALLOC(size)); // 8 bits a slot
        ix->lengths = static_cast<uint8_t *>(LX_MEM_ALLOC(size / 2));
        if (!ix->exact || !ix->folded || !ix->baseBits || !ix->lengths) {
            LX_MEM_FREE(ix->exact);
            LX_MEM_FREE(ix->folded);
            LX_MEM_FREE(ix->baseBits);
            LX_MEM_FREE(ix->lengths);
            LX_MEM_FREE(ix);
            return false;
        }
        ix->mask = size - 1;
        lex->dmt.index = ix;
    }
    std::memset(ix->exact, 0, (ix->mask + 1) * sizeof(uint64_t));
    std::memset(ix->folded, 0, (ix->mask + 1) * sizeof(uint64_t));
    std::memset(ix->baseBits, 0, ix->mask + 1);
    LX_LexEntry *all = entries(lex);
    ix->excluded = 0;
    for (int32_t e = 0; e < count; ++e) {
        const uchar *w = reinterpret_cast<const uchar *>(all[e].word);
        put_exact(ix, w, e);
        put_folded(ix, all, w, e);
        put_base(ix, all[e].word);
        ix->lengths[e] = length_byte(all[e].word);
        if (all[e].action == LX_ACT_EXCLUDE) ++ix->excluded;
    }
    ix->used = count;
    ix->stale = false;
    return true;
}

// The index, fresh, or null if it can't be built.
DmtIndex *index_ready(LX_Lexicon *lex) {
    DmtIndex *ix = index_of(lex);
    if (ix != nullptr && !ix->stale) return ix;
    return index_build(lex) ? index_of(lex) : nullptr;
}

// Keeps a fresh index up to date after entry `at` has been inserted.
void index_inserted(LX_Lexicon *lex, int32_t at) {
    DmtIndex *ix = index_of(lex);
    if (ix == nullptr || ix->stale) return;
    if (static_cast<uint32_t>(ix->used + 1) * 2u > ix->mask + 1) {
        ix->stale = true; // the next lookup rebuilds it in a larger table
        return;
    }
    if (at < ix->used) {
        // Entries from `at` on have moved up by one.
        for (uint32_t i = 0; i <= ix->mask; ++i) {
            if (ix->exact[i] != 0 && slot_entry(ix->exact[i]) >= at) ix->exact[i] += 1;
            if (ix->folded[i] != 0 && slot_entry(ix->folded[i]) >= at) ix->folded[i] += 1;
        }
        std::memmove(ix->lengths + at + 1, ix->lengths + at, static_cast<size_t>(ix->used - at));
    }
    const LX_LexEntry &entry = entries(lex)[at];
    const uchar *w = reinterpret_cast<const uchar *>(entry.word);
    put_exact(ix, w, at);
    put_folded(ix, entries(lex), w, at);
    put_base(ix, entry.word);
    ix->lengths[at] = length_byte(entry.word);
    if (entry.action == LX_ACT_EXCLUDE) ++ix->excluded;
    ++ix->used;
}

// --------------------------------------------------------------- searching

int compare_entries(const void *v1, const void *v2) {
    LX_ASSERT(v1 != NULL);
    LX_ASSERT(v2 != NULL);
    return LX_Str_Cmp(static_cast<const LX_LexEntry *>(v1)->word,
                      static_cast<const LX_LexEntry *>(v2)->word);
}

// First index whose word is equal to or greater than word.
int32_t lower_bound(LX_Lexicon *lex, const char *word) {
    int32_t lo = 0, hi = lex->dmt.words.count;
    LX_LexEntry *all = entries(lex);
    while (lo < hi) {
        int32_t mid = lo + (hi - lo) / 2;
        if (LX_Str_Cmp(all[mid].word, word) < 0)
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo;
}

int32_t find_exact(LX_Lexicon *lex, const char *word) {
    if (DmtIndex *ix = index_ready(lex)) {
        uint32_t h = hash_exact(reinterpret_cast<const uchar *>(word));
        for (uint32_t i = h & ix->mask; ix->exact[i] != 0; i = (i + 1) & ix->mask) {
            uint64_t s = ix->exact[i];
            if (slot_hash(s) == h && same_word(entries(lex)[slot_entry(s)].word, word))
                return slot_entry(s);
        }
        return -1;
    }
    LX_LexEntry key{const_cast<char *>(word), nullptr, 0};
    void *hit = LX_Vector_Search(&lex->dmt.words, &key, compare_entries);
    return hit ? static_cast<int32_t>(static_cast<LX_LexEntry *>(hit) - entries(lex)) : -1;
}

int32_t find_folded(LX_Lexicon *lex, const char *word) {
    if (DmtIndex *ix = index_ready(lex)) {
        uint32_t h = hash_folded(reinterpret_cast<const uchar *>(word));
        for (uint32_t i = h & ix->mask; ix->folded[i] != 0; i = (i + 1) & ix->mask) {
            uint64_t s = ix->folded[i];
            if (slot_hash(s) == h && LX_Str_ICmp(entries(lex)[slot_entry(s)].word, word) == 0)
                return slot_entry(s);
        }
        return -1;
    }
    for (int32_t e = 0; e < lex->dmt.words.count; ++e)
        if (LX_Str_ICmp(entries(lex)[e].word, word) == 0) return e;
    return -1;
}

void free_texts(LX_LexEntry *entry) {
    LX_MEM_FREE(entry->word);
    LX_MEM_FREE(entry->otherWord);
}

void free_all_texts(LX_Lexicon *lex) {
    LX_LexEntry *all = entries(lex);
    for (int32_t e = 0; e < lex->dmt.words.count; ++e) free_texts(&all[e]);
}

void check_open(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    LX_ASSERT_TEXT(MAGIC == lex->dmt.magic, "MAGIC == lex->magic");
}

} // namespace

extern "C" LX_API int32_t LX_DMTLex_Create(LX_Lexicon *lex, int32_t initialCapacity, int16_t lang) {
    LX_ASSERT(lex != NULL);
    lex->dmt.index = nullptr;
    if (LX_Vector_Init(&lex->dmt.words, sizeof(LX_LexEntry), initialCapacity) != 0)
        return LX_ERR_NO_MEMORY;
    lex->dmt.lang = lang;
    lex->dmt.magic = MAGIC;
    return 0;
}

int32_t LX_DMTLex_AddWord(LX_Lexicon *lex, const char *word, int16_t action, const char *otherWord) {
    check_open(lex);
    LX_ASSERT(word != NULL);
    // The length is counted only up to one character past the longest
    // word, so that a word of any length, even beyond what 32 bits count,
    // is refused after reading no more than that.
    const size_t len = strnlen(word, static_cast<size_t>(LX_DMTLEX_MAX_WORD) + 1);
    for (size_t i = 0; i < len; ++i) {
        const uchar c = lx_byte(word[i]);
        if ((lx_class(c) & 0x0F) == 0 || c < 0x20) {
            // The word as far as it was read: all of it unless it is too long.
            LX_Diag_Msg("AddWord: %.*s contains invalid character (0x%x)", static_cast<int>(len), word, c);
            return LX_ERR_INVALID_WORD;
        }
    }
    if (len > static_cast<size_t>(LX_DMTLEX_MAX_WORD)) {
        LX_Diag_Msg("AddWord: %.*s... is longer than %d characters", static_cast<int>(LX_DMTLEX_MAX_WORD), word,
                    LX_DMTLEX_MAX_WORD);
        return LX_ERR_INVALID_WORD;
    }
    // The image keeps an action in one byte.
    if (action <= 0 || action > 255) {
        LX_Diag_Msg("AddWord: %s has invalid action (%d)", word, action);
        return LX_ERR_INVALID_WORD;
    }

    LX_Vector *words = &lex->dmt.words;
    LX_LexEntry *all = entries(lex);
    int32_t pos;
    if (words->count > 0 && LX_Str_Cmp(word, all[words->count - 1].word) > 0)
        pos = words->count;
    else
        pos = lower_bound(lex, word);

    LX_LexEntry entry{LX_Str_Dup(word), otherWord ? LX_Str_Dup(otherWord) : nullptr, action};
    if (entry.word == nullptr || (otherWord != nullptr && entry.otherWord == nullptr)) {
        free_texts(&entry);
        LX_Diag_Msg("out of memory");
        return LX_ERR_NO_MEMORY;
    }
    if (pos < words->count && LX_Str_Cmp(all[pos].word, word) == 0) {
        free_texts(&all[pos]);
        LX_Vector_Set(words, pos, &entry); // within count: can't fail
        mark_stale(lex);                   // the action may have changed
        return 0;
    }
    if (LX_Vector_Insert(words, pos, &entry) != 0) {
        free_texts(&entry);
        return LX_ERR_NO_MEMORY;
    }
    index_inserted(lex, pos);
    return 0;
}

int32_t LX_DMTLex_DelWord(LX_Lexicon *lex, const char *word) {
    check_open(lex);
    LX_ASSERT(word != NULL);
    LX_LexEntry key{const_cast<char *>(word), nullptr, 0};
    void *hit = LX_Vector_Search(&lex->dmt.words, &key, compare_entries);
    if (!hit) return LX_ERR_NOT_FOUND;
    LX_LexEntry *entry = static_cast<LX_LexEntry *>(hit);
    free_texts(entry);
    LX_Vector_Delete(&lex->dmt.words, static_cast<int32_t>(entry - entries(lex)));
    mark_stale(lex);
    return 0;
}

int32_t LX_DMTLex_Clear(LX_Lexicon *lex) {
    check_open(lex);
    free_all_texts(lex);
    LX_Vector_Clear(&lex->dmt.words);
    mark_stale(lex);
    return 0;
}

int32_t LX_DMTLex_Close(LX_Lexicon *lex) {
    check_open(lex);
    free_all_texts(lex);
    LX_Vector_Free(&lex->dmt.words);
    index_free(lex);
    lex->dmt.magic = 0;
    return 0;
}

int16_t LX_DMTLex_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive, char *otherWord,
                           int32_t otherWordSize) {
    check_open(lex);
    int32_t e = caseSensitive ? find_exact(lex, word) : find_folded(lex, word);
    if (e < 0) return LX_ERR_NOT_FOUND;
    const LX_LexEntry &entry = entries(lex)[e];
    if (otherWord != nullptr) {
        if (entry.otherWord != nullptr)
            LX_Str_Copy(otherWord, otherWordSize, entry.otherWord);
        else
            otherWord[0] = '\0';
    }
    return entry.action;
}

int LX_DMTLex_MayHoldBaseForm(LX_Lexicon *lex, uint32_t baseHash) {
    check_open(lex);
    DmtIndex *ix = index_ready(lex);
    if (ix == nullptr) return 1; // can't tell
    size_t w;
    uint64_t bit;
    base_bit(ix, baseHash, &w, &bit);
    return (ix->baseBits[w] & bit) != 0;
}

int32_t LX_DMTLex_GetImage(LX_Lexicon *lex, char *bfr, int32_t bfrSize) {
    check_open(lex);
    LX_ASSERT(bfr != NULL);
    const LX_LexEntry *all = entries(lex);
    int64_t at = 0;
    for (int32_t e = 0; e < lex->dmt.words.count; ++e) {
        const LX_LexEntry &entry = all[e];
        size_t wlen = std::strlen(entry.word);
        size_t olen = entry.otherWord ? std::strlen(entry.otherWord) : 0;
        int64_t need = static_cast<int64_t>(wlen + olen + 3);
        if (at + need + 1 > bfrSize) return LX_ERR_RANGE;
        std::memcpy(bfr + at, entry.word, wlen);
        at += static_cast<int64_t>(wlen);
        bfr[at++] = '\t';
        bfr[at++] = static_cast<char>(entry.action & 0xFF);
        if (olen) std::memcpy(bfr + at, entry.otherWord, olen);
        at += static_cast<int64_t>(olen);
        bfr[at++] = '\0';
    }
    if (at + 1 > bfrSize) return LX_ERR_RANGE;
    bfr[at] = '\0';
    return lex->dmt.words.count;
}

int32_t LX_DMTLex_Size(LX_Lexicon *lex) {
    check_open(lex);
    const LX_LexEntry *all = entries(lex);
    int64_t size = 1;
    for (int32_t e = 0; e < lex->dmt.words.count; ++e) {
        size += static_cast<int64_t>(std::strlen(all[e].word)) + 3;
        if (all[e].otherWord) size += static_cast<int64_t>(std::strlen(all[e].otherWord));
    }
    return size > INT32_MAX ? LX_ERR_RANGE : static_cast<int32_t>(size);
}

int32_t LX_DMTLex_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive,
                              SuggSet *matches) {
    check_open(lex);
    LX_ASSERT(pattern != NULL);
    LX_ASSERT(matches != NULL);
    const LX_LexEntry *all = entries(lex);
    const int32_t count = lex->dmt.words.count;
    const int32_t patternLen = LX_Str_Len(pattern);

    // The walk covers all entries, or with case respected only the run of
    // words that begin with the pattern's characters before its first '?'
    // (cut to a word's length): only they can match, and a walk from the
    // first entry would stop behind them. The excluded words it would pass
    // on the way are taken out of the set first.
    int32_t first = 0, end = count;
    if (caseSensitive) {
        char prefix[LX_MAX_WORD_SZ];
        int32_t prefixLen = 0;
        while (prefixLen < patternLen && prefixLen < LX_MAX_WORD_SZ - 1 && pattern[prefixLen] != '?')
            ++prefixLen;
        LX_Str_CopyN(prefix, sizeof prefix, pattern, prefixLen);
        first = lower_bound(lex, prefix);
        int32_t lo = first, hi = count; // first word past the run
        while (lo < hi) {
            int32_t mid = lo + (hi - lo) / 2;
            if (std::strncmp(all[mid].word, prefix, static_cast<size_t>(prefixLen)) == 0)
                lo = mid + 1;
            else
                hi = mid;
        }
        end = lo;
        for (int32_t e = 0; e < first; ++e)
            if (all[e].action == LX_ACT_EXCLUDE) SuggSet_Remove(matches, all[e].word);
    }

    // With the index, only words of the pattern's length are looked at,
    // besides excluded words when there are any.
    const DmtIndex *ix = index_ready(lex);
    const bool anyExcluded = ix == nullptr || ix->excluded > 0;
    const uint8_t wanted = static_cast<uint8_t>(patternLen < 255 ? patternLen : 255);
    for (int32_t e = first; e < end; ++e) {
        if (ix != nullptr && ix->lengths[e] != wanted && !anyExcluded) continue;
        const LX_LexEntry &entry = all[e];
        if (entry.action == LX_ACT_EXCLUDE) {
            SuggSet_Remove(matches, entry.word);
        } else if (entry.action == LX_ACT_IGNORE) {
            int16_t score = caseSensitive ? LX_Match_Pattern(pattern, entry.word)
                                          : LX_Match_PatternNoCase(pattern, entry.word);
            if (score > 0) SuggSet_Add(matches, entry.word, score);
        }
    }
    return 0;
}

int32_t LX_DMTLex_FindSimilar(LX_Lexicon *lex, const char *word, int32_t /*depth*/,
                              LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions) {
    check_open(lex);
    LX_ASSERT(word != NULL);
    LX_ASSERT(wordComparatorCb != NULL);
    LX_ASSERT(suggestions != NULL);
    const LX_LexEntry *all = entries(lex);
    const int32_t count = lex->dmt.words.count;
    for (int32_t e = 0; e < count; ++e) {
        const LX_LexEntry &entry = all[e];
        switch (entry.action) {
        case LX_ACT_AUTO_CHANGE:
        case LX_ACT_AUTO_CHANGE_CASE:
        case LX_ACT_COND_CHANGE:
        case LX_ACT_COND_CHANGE_CASE:
            if (entry.otherWord != nullptr && LX_Str_Cmp(word, entry.word) == 0) {
                SuggSet_Remove(suggestions, entry.otherWord);
                SuggSet_Add(suggestions, entry.otherWord, 99);
            }
            break;
        case LX_ACT_EXCLUDE: SuggSet_Remove(suggestions, entry.word); break;
        case LX_ACT_IGNORE: {
            int16_t score = wordComparatorCb(word, entry.word);
            if (score >= 1) SuggSet_Add(suggestions, entry.word, score);
            break;
        }
        default: break;
        }
    }
    return 0;
}

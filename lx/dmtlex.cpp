// dmtlex.cpp - the memory text lexicon.
//
// The entries live in one LX_Vector in strictly ascending byte order of
// their words; each entry owns copies of its texts. That order is what the
// image, the searches and a disk lexicon's file rely on.
//
// Lookups don't walk that vector: beside it the lexicon keeps a private
// index of hash tables by exact word, by word in lower case and by base
// form (accents and case taken off); the last serves the accent search of
// the rule chain, which asks for every held word of a base form. Every
// change keeps the index current, so lookups never write: see the index
// section below.
#include "dmtlex.h"

#include <cstdint>
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

// Two open-addressing hash tables with linear probing over a node array.
// A node is a copy of an entry (the same word, other word and action, not
// new copies of the texts); its number stays the same while entries move
// up and down the vector, so that an insertion or deletion in the middle of
// a large lexicon costs the index a few probes, not a pass. A slot holds
// the node's number + 1 in its low 32 bits (0: empty) and the key's hash
// in its high 32 bits, so that most probes that miss never touch a node.
//
// - exact:  every node, by its word.
// - folded: by word in lower case, one node for each such form: among the
//   words equal but for case, the first in byte order, which is the entry
//   a case-blind scan from the start would find.
// - base:   every node, by its word's base form (LX_BaseFormHash): all
//   words that differ only in accents or case share a key. The accent
//   search of the rule chain probes it.
//
// The index always describes all entries: every change brings it up to
// date before it returns, so lookups only read it, and any number of
// threads may look up at once while nobody changes the lexicon. If memory
// for it can't be had, the index is dropped, lookups fall back to a binary
// search and a linear scan that give the same answers, and the next change
// tries again to build it.
struct DmtIndex {
    uint64_t *exact;
    uint64_t *folded;
    uint64_t *base;
    LX_LexEntry *nodes; // nodes 0 .. used - 1
    uint8_t *lengths;   // per entry, by its place in the vector: its word's
                        // length, 255 for 255 or more
    uint32_t mask;      // table size - 1; the size is a power of two
    int32_t used;       // entries indexed; room for (mask + 1) / 2
    int32_t excluded;   // entries with LX_ACT_EXCLUDE
};

uint8_t length_byte(const char *word) {
    size_t n = std::strlen(word);
    return static_cast<uint8_t>(n < 255 ? n : 255);
}

uint32_t hash_exact(const char *word) {
    uint32_t h = 2166136261u;
    for (const uchar *w = reinterpret_cast<const uchar *>(word); *w; ++w) h = (h ^ *w) * 16777619u;
    return h;
}

LX_LexEntry *entries(LX_Lexicon *lex) { return static_cast<LX_LexEntry *>(lex->dmt.words.data); }

DmtIndex *index_of(LX_Lexicon *lex) { return static_cast<DmtIndex *>(lex->dmt.index); }

void index_release(DmtIndex *ix) {
    if (ix == nullptr) return;
    LX_MEM_FREE(ix->exact);
    LX_MEM_FREE(ix->folded);
    LX_MEM_FREE(ix->base);
    LX_MEM_FREE(ix->nodes);
    LX_MEM_FREE(ix->lengths);
    LX_MEM_FREE(ix);
}

void index_free(LX_Lexicon *lex) {
    index_release(index_of(lex));
    lex->dmt.index = nullptr;
}

inline bool same_word(const char *a, const char *b) {
    for (;; ++a, ++b) {
        if (*a != *b) return false;
        if (*a == '\0') return true;
    }
}

// True if the two words have the same base form: the same length, and at
// each place characters of the same base letter (or both without one).
bool same_base_form(const char *a, const char *b) {
    const uchar *pa = reinterpret_cast<const uchar *>(a);
    const uchar *pb = reinterpret_cast<const uchar *>(b);
    for (;; ++pa, ++pb) {
        if (lx_fold(*pa) != lx_fold(*pb)) return false;
        if (*pa == 0 || *pb == 0) return *pa == *pb;
    }
}

uint64_t slot(uint32_t hash, int32_t node) {
    return (static_cast<uint64_t>(hash) << 32) | static_cast<uint32_t>(node + 1);
}
int32_t slot_node(uint64_t s) { return static_cast<int32_t>(static_cast<uint32_t>(s)) - 1; }
uint32_t slot_hash(uint64_t s) { return static_cast<uint32_t>(s >> 32); }

void table_put(uint64_t *table, uint32_t mask, uint32_t hash, int32_t node) {
    uint32_t i = hash & mask;
    while (table[i] != 0) i = (i + 1) & mask;
    table[i] = slot(hash, node);
}

// The slot of node in a table; the node is there.
uint32_t table_find(const uint64_t *table, uint32_t mask, uint32_t hash, int32_t node) {
    uint32_t i = hash & mask;
    while (slot_node(table[i]) != node) i = (i + 1) & mask;
    return i;
}

// Takes node out of a table by backward-shift deletion, so that no probe
// run is broken and no tombstones pile up.
void table_erase(uint64_t *table, uint32_t mask, uint32_t hash, int32_t node) {
    uint32_t i = table_find(table, mask, hash, node);
    for (uint32_t j = (i + 1) & mask; table[j] != 0; j = (j + 1) & mask) {
        const uint32_t home = slot_hash(table[j]) & mask;
        // The slot at j may move to the hole at i unless its home lies
        // cyclically in (i, j].
        const bool stays = i <= j ? (i < home && home <= j) : (i < home || home <= j);
        if (!stays) {
            table[i] = table[j];
            i = j;
        }
    }
    table[i] = 0;
}

// The node of the word, or -1.
inline __attribute__((always_inline)) int32_t node_of(const DmtIndex *ix, const char *word) {
    const uint32_t h = hash_exact(word);
    for (uint32_t i = h & ix->mask; ix->exact[i] != 0; i = (i + 1) & ix->mask) {
        const uint64_t s = ix->exact[i];
        if (slot_hash(s) == h && same_word(ix->nodes[slot_node(s)].word, word)) return slot_node(s);
    }
    return -1;
}

uint32_t hash_folded(const char *word) {
    uint32_t h = 2166136261u;
    for (const uchar *w = reinterpret_cast<const uchar *>(word); *w; ++w) h = (h ^ lx_to_lower(*w)) * 16777619u;
    return h;
}

constexpr uint32_t kNoSlot = UINT32_MAX;

// The slot of the folded table that holds word's lower-case form, or kNoSlot.
inline __attribute__((always_inline)) uint32_t folded_slot(const DmtIndex *ix, const char *word, uint32_t h) {
    for (uint32_t i = h & ix->mask; ix->folded[i] != 0; i = (i + 1) & ix->mask) {
        const uint64_t s = ix->folded[i];
        if (slot_hash(s) == h && LX_Str_ICmp(ix->nodes[slot_node(s)].word, word) == 0) return i;
    }
    return kNoSlot;
}

// Makes node the holder of its lower-case form if it is the first such
// word in byte order.
void folded_put(DmtIndex *ix, int32_t node) {
    const char *word = ix->nodes[node].word;
    const uint32_t h = hash_folded(word);
    const uint32_t i = folded_slot(ix, word, h);
    if (i == kNoSlot)
        table_put(ix->folded, ix->mask, h, node);
    else if (LX_Str_Cmp(word, ix->nodes[slot_node(ix->folded[i])].word) < 0)
        ix->folded[i] = slot(h, node);
}

// Before node goes: if it holds its lower-case form, the next word of that
// form in byte order takes its place.
void folded_remove(DmtIndex *ix, int32_t node) {
    const char *word = ix->nodes[node].word;
    const uint32_t h = hash_folded(word);
    const uint32_t i = folded_slot(ix, word, h);
    if (i == kNoSlot || slot_node(ix->folded[i]) != node) return;
    table_erase(ix->folded, ix->mask, h, node);
    // Words equal but for case share the base form.
    const uint32_t b = LX_BaseFormHash(word);
    int32_t next = -1;
    for (uint32_t k = b & ix->mask; ix->base[k] != 0; k = (k + 1) & ix->mask) {
        const int32_t other = slot_node(ix->base[k]);
        if (slot_hash(ix->base[k]) != b || other == node || LX_Str_ICmp(ix->nodes[other].word, word) != 0) continue;
        if (next < 0 || LX_Str_Cmp(ix->nodes[other].word, ix->nodes[next].word) < 0) next = other;
    }
    if (next >= 0) table_put(ix->folded, ix->mask, h, next);
}

// Adds a node for entry, which stands at place `at` of the vector.
void index_put(DmtIndex *ix, const LX_LexEntry &entry, int32_t at) {
    const int32_t node = ix->used++;
    ix->nodes[node] = entry;
    table_put(ix->exact, ix->mask, hash_exact(entry.word), node);
    folded_put(ix, node);
    table_put(ix->base, ix->mask, LX_BaseFormHash(entry.word), node);
    ix->lengths[at] = length_byte(entry.word);
    if (entry.action == LX_ACT_EXCLUDE) ++ix->excluded;
}

// Builds the index afresh for all entries, in tables with room to grow;
// without memory for it, the lexicon goes on without one.
void index_build(LX_Lexicon *lex) {
    const int32_t count = lex->dmt.words.count;
    uint32_t size = 64;
    while (size < (static_cast<uint32_t>(count) + 1u) * 2u) size *= 2; // a load of at most 1/2
    index_free(lex);
    auto *ix = static_cast<DmtIndex *>(LX_MEM_ALLOC(sizeof(DmtIndex)));
    if (!ix) return;
    ix->exact = static_cast<uint64_t *>(LX_MEM_ALLOC(size * sizeof(uint64_t)));
    ix->folded = static_cast<uint64_t *>(LX_MEM_ALLOC(size * sizeof(uint64_t)));
    ix->base = static_cast<uint64_t *>(LX_MEM_ALLOC(size * sizeof(uint64_t)));
    ix->nodes = static_cast<LX_LexEntry *>(LX_MEM_ALLOC(size / 2 * sizeof(LX_LexEntry)));
    ix->lengths = static_cast<uint8_t *>(LX_MEM_ALLOC(size / 2));
    if (!ix->exact || !ix->folded || !ix->base || !ix->nodes || !ix->lengths) return index_release(ix);
    std::memset(ix->exact, 0, size * sizeof(uint64_t));
    std::memset(ix->folded, 0, size * sizeof(uint64_t));
    std::memset(ix->base, 0, size * sizeof(uint64_t));
    ix->mask = size - 1;
    ix->used = 0;
    ix->excluded = 0;
    const LX_LexEntry *all = entries(lex);
    for (int32_t e = 0; e < count; ++e) index_put(ix, all[e], e);
    lex->dmt.index = ix;
}

// Brings the index up to date after entry `at` has been inserted.
void index_inserted(LX_Lexicon *lex, int32_t at) {
    DmtIndex *ix = index_of(lex);
    if (ix == nullptr || static_cast<uint32_t>(ix->used + 1) * 2u > ix->mask + 1)
        return index_build(lex); // first build, retry, or larger tables
    std::memmove(ix->lengths + at + 1, ix->lengths + at, static_cast<size_t>(ix->used - at));
    index_put(ix, entries(lex)[at], at);
}

// Brings the index up to date before entry `at` is deleted from the vector.
void index_deleting(LX_Lexicon *lex, int32_t at) {
    DmtIndex *ix = index_of(lex);
    if (ix == nullptr) return; // LX_DMTLex_DelWord tries a build afterwards
    const char *word = entries(lex)[at].word;
    const int32_t node = node_of(ix, word);
    if (ix->nodes[node].action == LX_ACT_EXCLUDE) --ix->excluded;
    folded_remove(ix, node);
    table_erase(ix->exact, ix->mask, hash_exact(word), node);
    table_erase(ix->base, ix->mask, LX_BaseFormHash(word), node);
    // The last node takes the number that has come free.
    const int32_t last = --ix->used;
    if (node != last) {
        const LX_LexEntry &moved = ix->nodes[last];
        ix->exact[table_find(ix->exact, ix->mask, hash_exact(moved.word), last)] =
            slot(hash_exact(moved.word), node);
        ix->base[table_find(ix->base, ix->mask, LX_BaseFormHash(moved.word), last)] =
            slot(LX_BaseFormHash(moved.word), node);
        const uint32_t f = folded_slot(ix, moved.word, hash_folded(moved.word));
        if (f != kNoSlot && slot_node(ix->folded[f]) == last) ix->folded[f] = slot(hash_folded(moved.word), node);
        ix->nodes[node] = moved;
    }
    std::memmove(ix->lengths + at, ix->lengths + at + 1, static_cast<size_t>(ix->used - at));
}

// Brings the index up to date before the entry at `at` is replaced by
// replacement, an entry of the same word with new texts.
void index_replacing(LX_Lexicon *lex, int32_t at, const LX_LexEntry &replacement) {
    DmtIndex *ix = index_of(lex);
    if (ix == nullptr) return; // LX_DMTLex_AddWord tries a build afterwards
    LX_LexEntry &node = ix->nodes[node_of(ix, entries(lex)[at].word)];
    ix->excluded += (replacement.action == LX_ACT_EXCLUDE) - (node.action == LX_ACT_EXCLUDE);
    node = replacement;
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

// The entry of the word (in the vector, or its node), or null.
const LX_LexEntry *find_exact(LX_Lexicon *lex, const char *word) {
    if (const DmtIndex *ix = index_of(lex)) {
        const int32_t node = node_of(ix, word);
        return node < 0 ? nullptr : &ix->nodes[node];
    }
    LX_LexEntry key{const_cast<char *>(word), nullptr, 0};
    return static_cast<const LX_LexEntry *>(LX_Vector_Search(&lex->dmt.words, &key, compare_entries));
}

// The entry a case-blind scan from the start would find: among the words
// equal to word but for case, the first in byte order.
const LX_LexEntry *find_folded(LX_Lexicon *lex, const char *word) {
    const LX_LexEntry *first = nullptr;
    if (const DmtIndex *ix = index_of(lex)) {
        const uint32_t i = folded_slot(ix, word, hash_folded(word));
        return i == kNoSlot ? nullptr : &ix->nodes[slot_node(ix->folded[i])];
    }
    const LX_LexEntry *all = entries(lex);
    for (int32_t e = 0; e < lex->dmt.words.count && !first; ++e)
        if (LX_Str_ICmp(all[e].word, word) == 0) first = &all[e];
    return first;
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
        index_replacing(lex, pos, entry);
        free_texts(&all[pos]);
        LX_Vector_Set(words, pos, &entry); // within count: can't fail
        if (index_of(lex) == nullptr) index_build(lex);
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
    const int32_t at = static_cast<int32_t>(entry - entries(lex));
    index_deleting(lex, at);
    free_texts(entry);
    LX_Vector_Delete(&lex->dmt.words, at);
    if (index_of(lex) == nullptr) index_build(lex);
    return 0;
}

int32_t LX_DMTLex_Clear(LX_Lexicon *lex) {
    check_open(lex);
    free_all_texts(lex);
    LX_Vector_Clear(&lex->dmt.words);
    index_build(lex);
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
    const LX_LexEntry *hit = caseSensitive ? find_exact(lex, word) : find_folded(lex, word);
    if (hit == nullptr) return LX_ERR_NOT_FOUND;
    const LX_LexEntry &entry = *hit;
    if (otherWord != nullptr) {
        if (entry.otherWord != nullptr)
            LX_Str_Copy(otherWord, otherWordSize, entry.otherWord);
        else
            otherWord[0] = '\0';
    }
    return entry.action;
}

int32_t LX_DMTLex_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit,
                                  void *ctx) {
    check_open(lex);
    const LX_LexEntry *all = entries(lex);
    if (const DmtIndex *ix = index_of(lex)) {
        const uint32_t h = LX_BaseFormHash(word);
        for (uint32_t i = h & ix->mask; ix->base[i] != 0; i = (i + 1) & ix->mask) {
            const uint64_t s = ix->base[i];
            if (slot_hash(s) != h) continue;
            const char *held = ix->nodes[slot_node(s)].word;
            if (same_base_form(held, word) && !visit(ctx, held)) break;
        }
        return 0;
    }
    for (int32_t e = 0; e < lex->dmt.words.count; ++e)
        if (same_base_form(all[e].word, word) && !visit(ctx, all[e].word)) break;
    return 0;
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
    const DmtIndex *ix = index_of(lex);
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
    // The typographic comparator goes on from the steps it shares with the
    // word it scored before, and gives up words that can't get into the set.
    LX_TypoScan scan;
    const bool typo = wordComparatorCb == LX_Compare_Typographic && LX_TypoScan_Start(&scan, word);
    const char *scored = ""; // the word the scan compared last
    for (int32_t e = 0; e < count; ++e) {
        const LX_LexEntry &entry = all[e];
        if (typo && entry.action == LX_ACT_IGNORE) {
            int32_t shared = 0;
            while (entry.word[shared] != '\0' && entry.word[shared] == scored[shared]) ++shared;
            const int32_t len = shared + static_cast<int32_t>(std::strlen(entry.word + shared));
            if (len <= LX_TypoScan::kMaxLen) {
                const int32_t floor = SuggSet_Floor(suggestions);
                const int16_t score = LX_TypoScan_Score(&scan, entry.word, len, shared, floor);
                if (score > floor) SuggSet_Add(suggestions, entry.word, score);
                scored = entry.word;
                continue;
            }
        }
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

// suffix.cpp - suffix discovery. The word lists are read line by line; for
// each word the endings that front coding would leave behind (those that
// start behind the bytes it shares with the word before it, and behind its
// key) are counted in a hash table, each word for the longest ending that
// is known already. The endings whose codes would save more than their
// table room costs are written to the suffix file.
//
// Only endings that a word of a compressed lexicon can hold are counted:
// one holding a byte that the squeezer refuses in a word could never be
// coded, and one holding a CR could break the suffix file's lines. An
// ending that begins with '#' is counted but never written: the squeezer
// would take its line for a comment.
#include "suffix.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "lexsq.h"
#include "platform.h"
#include "portab.h"
#include "safestr.h"

const char *LX_SuffixMsg = nullptr;

namespace {

constexpr uint32_t kBuckets = 30000;
constexpr int16_t kLineSz = 80; // a longer line is taken in pieces
constexpr int32_t kMaxCandidates = MAX_SIMPLE_SUFFIXES + MAX_EXT_SUFFIXES;

// The state of one LX_FindSuffixes, rebuilt and released at every call.
StrHash gTable;
SuffixCandidate *gCandidates = nullptr;
int32_t gNCandidates = 0;
SuffixCountHook gCountHook = nullptr;

int32_t clamp32(int64_t v) {
    return static_cast<int32_t>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
}

bool is_storable(const char *ending) {
    for (; *ending != '\0'; ++ending)
        if (!LexSq_IsWordByte(lx_byte(*ending))) return false;
    return true;
}

// Counts the endings of one word list. False if memory ran out.
bool scan_file(const char *fileName) {
    PortFile *file = PORT_OpenFile(fileName, PORT_MODE_READ_TEXT);
    if (!file) {
        LX_SuffixMsg = "Can't open input file";
        return true;
    }
    char line[kLineSz], prev[kLineSz] = "";
    int32_t prevLen = 0;
    bool ok = true;
    for (int16_t len; ok && (len = PORT_ReadLine(file, line, kLineSz)) >= 0;) {
        if (len == 0 || line[0] == '#') continue;
        // The key's three bytes are never compared; behind them the
        // ending starts where the word first differs from the one before.
        int32_t cut = LXC_KEY_SZ;
        if (prevLen > static_cast<int32_t>(LXC_KEY_SZ))
            while (cut < len && cut < prevLen && line[cut] == prev[cut]) ++cut;
        for (int32_t start = std::max<int32_t>(cut, len - MAX_SUFFIX_LEN); start < len; ++start) {
            const char *ending = line + start;
            if (!is_storable(ending)) continue;
            if (auto *counter = static_cast<SuffixCounter *>(StrHash_Get(ending, &gTable))) {
                if (counter->count < INT32_MAX) ++counter->count;
                break;
            }
            auto *counter = static_cast<SuffixCounter *>(std::calloc(1, sizeof(SuffixCounter)));
            if (!counter || !StrHash_Put(ending, counter, &gTable)) {
                std::free(counter);
                ok = false;
                break;
            }
        }
        std::memcpy(prev, line, static_cast<size_t>(len) + 1);
        prevLen = len;
    }
    PORT_CloseFile(file);
    return ok;
}

void count_entry(const char *, void *, void *user) { ++*static_cast<int32_t *>(user); }

void fill_candidate(const char *key, void *value, void *) {
    auto *counter = static_cast<SuffixCounter *>(value);
    const int32_t len = LX_Str_Len(key);
    counter->simpleGain = Suffix_SimpleGain(counter->count, len);
    counter->extGain = Suffix_ExtGain(counter->count, len);
    if (gCountHook) gCountHook(key, counter);
    // The squeezer would read a line that begins with '#' as a comment.
    if (counter->simpleGain <= 0 || key[0] == '#') return;
    SuffixCandidate &c = gCandidates[gNCandidates++];
    LX_Str_Copy(c.suffix, sizeof c.suffix, key);
    c.count = counter->count;
    c.simpleGain = counter->simpleGain;
    c.extGain = counter->extGain;
}

// Falling gain, then the ending's bytes as unsigned values: endings are
// unique, so the order is total and the same on every machine.
bool by_bytes(const SuffixCandidate &a, const SuffixCandidate &b) {
    return std::strcmp(a.suffix, b.suffix) < 0; // strcmp compares unsigned
}
bool by_simple_gain(const SuffixCandidate &a, const SuffixCandidate &b) {
    return a.simpleGain != b.simpleGain ? a.simpleGain > b.simpleGain : by_bytes(a, b);
}
bool by_ext_gain(const SuffixCandidate &a, const SuffixCandidate &b) {
    return a.extGain != b.extGain ? a.extGain > b.extGain : by_bytes(a, b);
}

// Writes the chosen suffixes. False if a line or the final flush failed.
bool write_suffixes(PortFile *file) {
    const int32_t nSimple = std::min(gNCandidates, MAX_SIMPLE_SUFFIXES);
    for (int32_t i = 0; i < nSimple; ++i)
        if (PORT_WriteLine(file, gCandidates[i].suffix) < 0) return false;
    if (gNCandidates > MAX_SIMPLE_SUFFIXES) {
        std::sort(gCandidates + MAX_SIMPLE_SUFFIXES, gCandidates + gNCandidates, by_ext_gain);
        for (int32_t i = MAX_SIMPLE_SUFFIXES; i < std::min(gNCandidates, kMaxCandidates); ++i) {
            if (gCandidates[i].extGain <= 0) break;
            if (PORT_WriteLine(file, gCandidates[i].suffix) < 0) return false;
        }
    }
    return std::fflush(file->fp) == 0 && !std::ferror(file->fp);
}

void free_counter(void *value) { std::free(value); }

void release() {
    std::free(gCandidates);
    gCandidates = nullptr;
    gNCandidates = 0;
    StrHash_Free(&gTable, free_counter);
}

} // namespace

// ------------------------------------------------------------- StrHash

StrHash *StrHash_Init(StrHash *table, uint32_t size) {
    LX_ASSERT(table != NULL);
    if (size == 0) size = 1;
    table->buckets = static_cast<StrHashEntry **>(std::calloc(size, sizeof(StrHashEntry *)));
    table->size = table->buckets ? size : 0;
    return table->buckets ? table : nullptr;
}

uint32_t StrHash_Key(const char *text) {
    uint32_t h = 2166136261u;
    for (; *text != '\0'; ++text) h = (h ^ lx_byte(*text)) * 16777619u;
    // FNV's low bits depend little on the last bytes: mix the high ones in.
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 13;
    return h;
}

void *StrHash_Put(const char *key, void *value, StrHash *table) {
    LX_ASSERT(key != NULL);
    LX_ASSERT(table != NULL);
    StrHashEntry **bucket = &table->buckets[StrHash_Key(key) % table->size];
    for (StrHashEntry *e = *bucket; e; e = e->next) {
        if (LX_Str_Cmp(e->key, key) == 0) {
            void *old = e->value;
            e->value = value;
            return old;
        }
    }
    auto *entry = static_cast<StrHashEntry *>(std::malloc(sizeof(StrHashEntry)));
    char *copy = entry ? LX_Str_Dup(key) : nullptr;
    if (!copy) {
        std::free(entry);
        return nullptr;
    }
    *entry = {copy, value, *bucket};
    *bucket = entry;
    return value;
}

void *StrHash_Get(const char *key, const StrHash *table) {
    LX_ASSERT(key != NULL);
    LX_ASSERT(table != NULL);
    if (table->size == 0) return nullptr;
    for (StrHashEntry *e = table->buckets[StrHash_Key(key) % table->size]; e; e = e->next)
        if (LX_Str_Cmp(e->key, key) == 0) return e->value;
    return nullptr;
}

void StrHash_ForEach(const StrHash *table, void (*fn)(const char *key, void *value, void *user), void *user) {
    LX_ASSERT(table != NULL);
    LX_ASSERT(fn != NULL);
    for (uint32_t i = 0; i < table->size; ++i)
        for (StrHashEntry *e = table->buckets[i]; e; e = e->next) fn(e->key, e->value, user);
}

void StrHash_Free(StrHash *table, void (*freeValue)(void *value)) {
    LX_ASSERT(table != NULL);
    for (uint32_t i = 0; i < table->size; ++i) {
        for (StrHashEntry *e = table->buckets[i]; e;) {
            StrHashEntry *next = e->next;
            if (freeValue) freeValue(e->value);
            LX_MEM_FREE(e->key);
            std::free(e);
            e = next;
        }
    }
    std::free(table->buckets);
    table->buckets = nullptr;
    table->size = 0;
}

// ------------------------------------------------------------- discovery

int32_t Suffix_SimpleGain(int32_t count, int32_t len) {
    return clamp32((static_cast<int64_t>(count) - 1) * len - 1);
}

int32_t Suffix_ExtGain(int32_t count, int32_t len) {
    return clamp32((static_cast<int64_t>(len) - 1) * count - len - 1);
}

void Suffix_SetCountHook(SuffixCountHook hook) { gCountHook = hook; }

int32_t LX_FindSuffixes(int32_t nFiles, const char *const *fileNames, const char *suffixFileName) {
    LX_ASSERT(nFiles == 0 || fileNames != NULL);
    LX_ASSERT(suffixFileName != NULL);
    if (!StrHash_Init(&gTable, kBuckets)) {
        LX_SuffixMsg = "Can't create hash table";
        return LX_ERR_FAILED;
    }
    for (int32_t i = 0; i < nFiles; ++i) {
        if (!scan_file(fileNames[i])) {
            LX_SuffixMsg = "out of memory\n";
            release();
            return LX_ERR_FAILED;
        }
    }
    int32_t nEntries = 0;
    StrHash_ForEach(&gTable, count_entry, &nEntries);
    gCandidates = static_cast<SuffixCandidate *>(std::malloc(sizeof(SuffixCandidate) * (nEntries ? nEntries : 1)));
    if (!gCandidates) {
        LX_SuffixMsg = "out of memory\n";
        release();
        return LX_ERR_FAILED;
    }
    gNCandidates = 0;
    StrHash_ForEach(&gTable, fill_candidate, nullptr);
    std::sort(gCandidates, gCandidates + gNCandidates, by_simple_gain);

    PortFile *file = PORT_OpenFile(suffixFileName, PORT_MODE_WRITE_TEXT);
    if (!file) {
        LX_SuffixMsg = "Can't open output file";
        release();
        return LX_ERR_FAILED;
    }
    const bool written = write_suffixes(file);
    PORT_CloseFile(file);
    release();
    if (!written) {
        LX_SuffixMsg = "Can't write output file";
        return LX_ERR_FAILED;
    }
    return 0;
}

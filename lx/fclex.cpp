// fclex.cpp - the compressed lexicon reader.
//
// Opening reads the file's sections by type: the suffix tables and the
// index are kept, the segment data is only located. Everything the file
// says is checked before it is used: every length against the section or
// the file that must hold it (so that a hostile length never leads to a
// huge allocation or a read past a buffer), the index entries against the
// index section, the keys for strict ascending order, every segment
// against the data section, and each known section type once. A file that
// fails is refused as invalid. What can only be found out later (a segment
// whose bytes the file doesn't hold, a record that can't be decoded) makes
// that segment's load or scan fail, and the word counts as absent.
//
// The keys are also kept as 24-bit numbers in one array, with a hash table
// of their places behind them, so that finding the segment of a key takes
// a probe or two in a small block of memory instead of a search over the
// records. With a budget, the segments in memory are kept in a list by
// the time of their last request, so that the least recently requested one
// is found at once when room must be made. A segment gets its jumps
// (mclex.h) when it is loaded, so that a lookup decodes only a few of its
// records.
#include "fclex.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "chartab.h"
#include "clex.h"
#include "diag.h"
#include "mclex.h"
#include "platform.h"
#include "safestr.h"
#include "sma.h"
#include "suggset.h"

namespace {

constexpr int32_t kNameMax = static_cast<int32_t>(sizeof(LX_FCLex::fileName)) - 1; // 515
constexpr uint32_t kSegsPerBlock = 1000;
constexpr uint32_t kIndexChunk = 372; // index entries read at a time: 4 KiB

void check_open(const LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    LX_ASSERT_TEXT(lex->fc.magic == FCLEX_MAGIC, "MAGIC == lex->magic");
}

int16_t invalid(const LX_FCLex &fc) {
    LX_Diag_Msg("%s invalid compressed lexicon", fc.fileName);
    return LX_ERR_BAD_FORMAT;
}

int16_t out_of_memory(const LX_FCLex &fc) {
    LX_Diag_Msg("%s: out of memory", fc.fileName);
    return LX_ERR_NO_MEMORY;
}

int16_t read_error(const LX_FCLex &fc) {
    LX_Diag_Msg("%s: read error", fc.fileName);
    return LX_ERR_READ;
}

bool read32(PortFile *fid, uint32_t *value) {
    uchar bytes[LXC_NUMBER_SZ];
    if (PORT_Read(fid, bytes, sizeof bytes) != sizeof bytes) return false;
    *value = LXC_Get32(bytes);
    return true;
}

int64_t file_size(PortFile *fid) {
    PortStamp stamp;
    return PORT_FileStampOf(fid, &stamp) == 0 ? stamp.size : -1;
}

// Bytes of the file behind the present position.
int64_t bytes_left(PortFile *fid) {
    const int64_t size = file_size(fid);
    const int32_t pos = PORT_Tell(fid);
    return size < 0 || pos < 0 ? 0 : size - pos;
}

uint32_t pack_key(const uchar *key) {
    return static_cast<uint32_t>(key[0]) << 16 | static_cast<uint32_t>(key[1]) << 8 | key[2];
}

// A key is the beginning of a word: a first byte, and zeros only at its end.
bool valid_key(const uchar *key) { return key[0] != 0 && (key[1] != 0 || key[2] == 0); }

// A table's view, with the lengths that read_table keeps behind the
// pointers.
MCSuffixTable table_view(char **entries, int32_t count) {
    return {entries, count, entries ? reinterpret_cast<const uchar *>(entries + count) : nullptr};
}
MCSuffixTable simple_table(const LX_FCLex &fc) { return table_view(fc.simpleSuffixes, fc.nSimpleSuffixes); }
MCSuffixTable ext_table(const LX_FCLex &fc) { return table_view(fc.extSuffixes, fc.nExtSuffixes); }

// What a segment in memory carries beside its bytes, in the same block
// just before them, so that the records of the many segments that aren't
// in memory needn't have room for it.
struct LoadedHead {
    // The segments in memory form a list by the time of their last
    // request, oldest first (kept only while a budget is set). As each
    // request takes a new lastUse, the list's order is that of lastUse.
    FCSegment *older;
    FCSegment *newer;
    // The segment's jumps (mclex.h), behind their number: jumps[0] is n,
    // with FC_JUMPS_COMPLETE added if they are complete, and jumps[1..n]
    // the jumps. Null if it has none.
    uint32_t *jumps;
};
static_assert(sizeof(FCSegment) == 24, "a segment's record stays small: a file has thousands");

// The segment records are asked of segPool one byte short: the pool gives
// the next multiple of 8 above what is asked, so each record takes its own
// 24 bytes and not 32.
constexpr uint32_t kSegPiece = sizeof(FCSegment) - 1;
static_assert(Sma_PieceSize(kSegPiece) == sizeof(FCSegment));

LoadedHead *head_of(const FCSegment *seg) { return reinterpret_cast<LoadedHead *>(seg->data) - 1; }

MCSegment mc_segment(const FCSegment *seg) {
    MCSegment mseg{seg->data, seg->size, {seg->key[0], seg->key[1], seg->key[2]}};
    if (const uint32_t *jumps = head_of(seg)->jumps; jumps != nullptr) {
        mseg.jumps = jumps + 1;
        mseg.nJumps = static_cast<int32_t>(jumps[0] & ~FC_JUMPS_COMPLETE);
        mseg.jumpsComplete = (jumps[0] & FC_JUMPS_COMPLETE) != 0;
    }
    return mseg;
}

// The key as a text of up to three characters.
void key_text(const FCSegment *seg, char out[LXC_KEY_SZ + 1]) {
    std::memcpy(out, seg->key, LXC_KEY_SZ);
    out[LXC_KEY_SZ] = '\0';
}

// packedKeys holds, in front of the keys, where the keys of each first
// byte begin: kFirstStarts entries, the last one nSegments. Behind the
// keys stands the hash table: hash_slots(n) places in segIndex, or
// kNoSlot.
constexpr uint32_t kFirstStarts = 257;
constexpr uint16_t kNoSlot = 0xFFFF;
static_assert(MAX_SEGMENTS - 1 < kNoSlot); // the last place in segIndex
const uint32_t *keys_of(const LX_FCLex &fc) { return fc.packedKeys + kFirstStarts; }

// A power of two with room for n keys at two thirds full at most.
uint32_t hash_slots(uint32_t n) { return std::bit_ceil(n + n / 2 + 1); }
uint16_t *slots_of(const LX_FCLex &fc) {
    return reinterpret_cast<uint16_t *>(fc.packedKeys + kFirstStarts + fc.nSegments);
}
uint32_t first_slot(uint32_t packed, uint32_t nSlots) {
    return (packed * 0x9E3779B1u) >> (32 - std::countr_zero(nSlots));
}

// Index of the first key not below packed: a binary search among the keys
// of packed's first byte, in a form that the compiler makes without
// branches (a lookup's key is hard to foresee).
int32_t lower_bound(const LX_FCLex &fc, uint32_t packed) {
    const uint32_t first = packed >> 16;
    if (first > 255) return fc.nSegments;
    const uint32_t *keys = keys_of(fc);
    const uint32_t lo = fc.packedKeys[first];
    uint32_t n = fc.packedKeys[first + 1] - lo;
    if (n == 0) return static_cast<int32_t>(lo);
    const uint32_t *base = keys + lo;
    while (n > 1) {
        const uint32_t half = n / 2;
        base = base[half] < packed ? base + half : base;
        n -= half;
    }
    return static_cast<int32_t>(base - keys) + (*base < packed);
}

// The list of segments in memory, oldest request first.
void unlink_loaded(LX_FCLex &fc, FCSegment *seg) {
    LoadedHead *h = head_of(seg);
    (h->older ? head_of(h->older)->newer : fc.oldestLoaded) = h->newer;
    (h->newer ? head_of(h->newer)->older : fc.newestLoaded) = h->older;
    h->older = h->newer = nullptr;
}
void link_newest(LX_FCLex &fc, FCSegment *seg) {
    LoadedHead *h = head_of(seg);
    h->older = fc.newestLoaded;
    h->newer = nullptr;
    (fc.newestLoaded ? head_of(fc.newestLoaded)->newer : fc.oldestLoaded) = seg;
    fc.newestLoaded = seg;
}

// Gives seg a block for its bytes, with the head in front. False if
// there is no memory.
bool take_data(FCSegment *seg) {
    auto *h = static_cast<LoadedHead *>(LX_MEM_ALLOC(sizeof(LoadedHead) + seg->size));
    if (h == nullptr) return false;
    h->older = h->newer = nullptr;
    h->jumps = nullptr;
    seg->data = reinterpret_cast<uchar *>(h + 1);
    return true;
}

void drop_data(FCSegment *seg) {
    LoadedHead *h = head_of(seg);
    LX_MEM_FREE(h->jumps);
    LX_MEM_FREE(h);
    seg->data = nullptr;
}

// Gives a segment just loaded its jumps, so that lookups skip most of its
// records. The table is freed with the segment's data and isn't counted
// in the budget, which holds segment data as before; with a budget, a
// table takes at most a quarter of its segment's size (its jumps end
// there), so that all tables together stay below a quarter of the budget.
// A segment with few records, or no memory for the table, does without.
void make_jumps(const LX_FCLex &fc, FCSegment *seg) {
    uint32_t jumps[MC_MAX_JUMPS];
    int32_t capacity = MC_MAX_JUMPS;
    if (fc.budget > 0) capacity = std::min(capacity, static_cast<int32_t>(seg->size / 16) - 1);
    if (capacity <= 0) return;
    const MCSegment mseg = mc_segment(seg);
    const MCSuffixTable simple = simple_table(fc), ext = ext_table(fc);
    bool complete;
    const int32_t n = MCLex_MakeJumps(&mseg, &simple, &ext, jumps, capacity, &complete);
    if (n == 0) return;
    auto *table = static_cast<uint32_t *>(LX_MEM_ALLOC(sizeof(uint32_t) * (static_cast<size_t>(n) + 1)));
    if (table == nullptr) return;
    table[0] = static_cast<uint32_t>(n) | (complete ? FC_JUMPS_COMPLETE : 0);
    std::memcpy(table + 1, jumps, sizeof(uint32_t) * static_cast<size_t>(n));
    head_of(seg)->jumps = table;
}

// Skips to the file position target. False when target lies behind the
// end of the file, where no further section can stand.
bool skip_to(PortFile *fid, int64_t target) {
    const int64_t size = file_size(fid);
    if (target > size) return false;
    return PORT_Seek(fid, static_cast<int32_t>(target), SEEK_SET) == 0;
}

// Reads one table of the suffix section: its length, then its text.
int16_t read_table(PortFile *fid, LX_FCLex &fc, uint32_t sectionLength, uint64_t *used, char **text,
                   char ***entries, int32_t *count) {
    if (*used + LXC_NUMBER_SZ > sectionLength) return invalid(fc);
    uint32_t size;
    if (!read32(fid, &size)) return read_error(fc);
    *used += LXC_NUMBER_SZ;
    if (size == 0) return 0;
    if (*used + size > sectionLength) return invalid(fc);
    if (size > bytes_left(fid)) return read_error(fc);
    *text = static_cast<char *>(LX_MEM_ALLOC(size));
    if (*text == nullptr) return out_of_memory(fc);
    if (PORT_Read(fid, *text, size) != size) return read_error(fc);
    *used += size;
    int32_t n = 0;
    for (uint32_t i = 0; i < size; ++i) n += (*text)[i] == '\0';
    if (n == 0) return 0; // bytes without a terminator make no entry
    // The pointers, and behind them in the same block the entries'
    // lengths, which the segment scans step over records with.
    *entries = static_cast<char **>(LX_MEM_ALLOC((sizeof(char *) + 1) * static_cast<size_t>(n)));
    if (*entries == nullptr) return out_of_memory(fc);
    uchar *lengths = reinterpret_cast<uchar *>(*entries + n);
    char *p = *text;
    for (int32_t i = 0; i < n; ++i) {
        const size_t len = std::strlen(p);
        (*entries)[i] = p;
        lengths[i] = static_cast<uchar>(len < 255 ? len : 255);
        p += len + 1;
    }
    *count = n;
    return 0;
}

// The sections behind the magic: steps through them by type until the
// file ends. Gives 0 or a negative code, with a message.
int16_t read_sections(PortFile *fid, LX_Lexicon *lex) {
    LX_FCLex &fc = lex->fc;
    const int64_t fileSize = file_size(fid);
    if (fileSize < 0 || fileSize > LXC_MAX_FILE_SZ) return invalid(fc);
    uint32_t type;
    if (!read32(fid, &type)) return invalid(fc);
    bool seen[SECT_SEG_DATA + 1] = {};
    uint32_t dataLength = 0;
    for (;;) {
        uint32_t length;
        if (!read32(fid, &length)) {
            LX_Diag_Msg("%s: error reading section length", fc.fileName);
            return LX_ERR_BAD_FORMAT;
        }
        const int64_t start = PORT_Tell(fid);
        const int64_t end = start + length;
        if (type >= SECT_LANGUAGE && type <= SECT_SEG_DATA) {
            if (seen[type]) return invalid(fc); // one section of each kind
            seen[type] = true;
        }
        if (type == SECT_LANGUAGE || type == SECT_CHAR_SIZE) {
            if (length < LXC_NUMBER_SZ) return invalid(fc);
            uint32_t value;
            if (!read32(fid, &value)) break; // the file ends here
            if (type == SECT_LANGUAGE) {
                fc.lang = static_cast<int16_t>(value & 0xFFFF);
            } else {
                fc.charSize = static_cast<uint16_t>(value & 0xFFFF);
                if (value != LXC_CHAR_SIZE) {
                    LX_Diag_Msg("%s: Unicode lexicon not supported", fc.fileName);
                    return LX_ERR_UNSUPPORTED;
                }
            }
        } else if (type == SECT_SUFFIXES) {
            const int16_t r = FCLex_ReadSuffixes(fid, length, lex);
            if (r < 0) return r;
        } else if (type == SECT_SEG_INDEX) {
            const int16_t r = FCLex_ReadIndex(fid, length, lex);
            if (r < 0) return r;
        } else if (type == SECT_SEG_DATA) {
            // Positions are signed 32-bit numbers: every segment must lie
            // below 2^31 even where the file is cut short.
            if (end > LXC_MAX_FILE_SZ) return invalid(fc);
            fc.dataStart = static_cast<int32_t>(start);
            dataLength = length;
        }
        if (!skip_to(fid, end)) break;
        if (!read32(fid, &type)) break; // the end, also behind 1 to 3 stray bytes
    }
    if (!seen[SECT_SEG_INDEX] || !seen[SECT_SEG_DATA] || fc.nSegments == 0) return invalid(fc);
    // Every segment lies inside the data section, and together they don't
    // take more than it holds: segments can't make the lexicon take more
    // memory than the file has bytes.
    uint64_t total = 0;
    for (int32_t i = 0; i < fc.nSegments; ++i) {
        const FCSegment *seg = fc.segIndex[i];
        if (static_cast<uint64_t>(seg->offset) + seg->size > dataLength) return invalid(fc);
        total += seg->size;
        fc.segIndex[i]->beyondEnd = fc.dataStart + static_cast<int64_t>(seg->offset) + seg->size > fileSize;
    }
    if (total > dataLength) return invalid(fc);
    return 0;
}

} // namespace

// ------------------------------------------------------- verdicts of lookups

namespace {

// The table's size: 4096 entries (128 KiB) without a budget; with one, a
// quarter of the budget, from 256 entries (8 KiB) up to that size, so
// that a small budget stays small. Frequent words fill it: in prose, nine
// of ten lookups find their verdict there.
constexpr uint32_t kVerdictsMax = 4096, kVerdictsMin = 256;

void make_verdicts(LX_FCLex &fc) {
    uint32_t n = kVerdictsMax;
    if (fc.budget > 0) {
        const uint32_t fit = static_cast<uint32_t>(fc.budget) / 4 / sizeof(FCVerdict);
        n = std::clamp(std::bit_floor(std::max(fit, 1u)), kVerdictsMin, kVerdictsMax);
    }
    // Without the memory the lexicon works as well, only slower.
    fc.verdicts = static_cast<FCVerdict *>(LX_MEM_ALLOC(sizeof(FCVerdict) * n));
    if (fc.verdicts == nullptr) return;
    std::memset(fc.verdicts, 0, sizeof(FCVerdict) * n);
    fc.verdictMask = n - 1;
}

// The entry where word's verdict belongs, with *hash and *len set, or null
// if the word is too long to be kept (or there is no table).
FCVerdict *verdict_slot(const LX_FCLex &fc, const char *word, uint32_t *hash, int32_t *len) {
    if (fc.verdicts == nullptr) return nullptr;
    uint32_t h = 2166136261u;
    int32_t n = 0;
    for (; word[n] != '\0'; ++n) {
        if (n == FC_VERDICT_WORD_MAX) return nullptr;
        h = (h ^ static_cast<uchar>(word[n])) * 16777619u;
    }
    *hash = h;
    *len = n;
    return &fc.verdicts[(h ^ h >> 16) & fc.verdictMask];
}

// The place of the segment of key in segIndex, or kNoSlot.
uint16_t find_place(const LX_FCLex &fc, const uchar key[LXC_KEY_SZ]) {
    const uint32_t packed = pack_key(key);
    const uint32_t *keys = keys_of(fc);
    const uint16_t *slots = slots_of(fc);
    const uint32_t mask = hash_slots(static_cast<uint32_t>(fc.nSegments)) - 1;
    // The table is never full: an empty place ends every search.
    for (uint32_t h = first_slot(packed, mask + 1);; h = (h + 1) & mask) {
        if (slots[h] == kNoSlot || keys[slots[h]] == packed) return slots[h];
    }
}

bool holds(const FCVerdict *v, uint32_t hash, const char *word, int32_t len) {
    return v->len == len && v->hash == hash && std::memcmp(v->word, word, static_cast<size_t>(len)) == 0;
}

} // namespace

// ------------------------------------------------------------ open and close

extern "C" LX_API int32_t LX_FCLex_Open(LX_Lexicon *lex, const char *fileName, int32_t budget) {
    LX_ASSERT(fileName != NULL);
    LX_ASSERT(lex != NULL);
    PortFile *fid = PORT_OpenFile(fileName, PORT_MODE_READ);
    if (!PORT_IS_VALID_FILE_ID(fid)) {
        LX_Diag_Msg("file open(%s) failed", fileName);
        return LX_ERR_FILE_OPEN;
    }
    LX_FCLex &fc = lex->fc;
    fc.magic = 0;
    LX_Str_CopyN(fc.fileName, sizeof fc.fileName, fileName, kNameMax);
    fc.segIndex = nullptr;
    fc.nSegments = 0;
    fc.dataStart = 0;
    fc.lang = 0;
    fc.charSize = LXC_CHAR_SIZE; // a file without SECT_CHAR_SIZE has bytes
    fc.simpleSuffixes = fc.extSuffixes = nullptr;
    fc.nSimpleSuffixes = fc.nExtSuffixes = 0;
    fc.simpleText = fc.extText = nullptr;
    fc.packedKeys = nullptr;
    fc.oldestLoaded = fc.newestLoaded = nullptr;
    fc.verdicts = nullptr;
    fc.verdictMask = 0;
    std::memset(&fc.segPool, 0, sizeof fc.segPool);

    uchar magic[LXC_MAGIC_SZ];
    if (PORT_Read(fid, magic, sizeof magic) != sizeof magic) {
        PORT_CloseFile(fid);
        LX_Diag_Msg("%s: error reading magic number", fc.fileName);
        return LX_ERR_BAD_FORMAT;
    }
    if (LXC_Get32(magic) != FCLEX_FILE_MAGIC) {
        PORT_CloseFile(fid);
        LX_Diag_Msg("%s: magic number 0x%lx != 0x%lx", fc.fileName, static_cast<unsigned long>(LXC_Get32(magic)),
                    static_cast<unsigned long>(FCLEX_FILE_MAGIC));
        return LX_ERR_BAD_FORMAT;
    }
    if (Sma_Init(&fc.segPool, sizeof(FCSegment), kSegsPerBlock) != 0) {
        PORT_CloseFile(fid);
        return out_of_memory(fc);
    }
    const int16_t r = read_sections(fid, lex);
    PORT_CloseFile(fid);
    if (r < 0) {
        LX_FCLex_Reset(lex);
        return r;
    }

    fc.budget = fc.budgetLeft = budget;
    fc.useClock = 0;
    if (budget > 0) {
        for (int32_t i = 0; i < fc.nSegments; ++i) {
            const FCSegment *seg = fc.segIndex[i];
            if (seg->size > static_cast<uint32_t>(budget)) {
                LX_Diag_Msg("%s: segment size %lu > budget %lu", fc.fileName, static_cast<unsigned long>(seg->size),
                            static_cast<unsigned long>(budget));
                LX_FCLex_Reset(lex);
                return LX_ERR_NO_MEMORY;
            }
        }
    }
    make_verdicts(fc);
    fc.magic = FCLEX_MAGIC;
    return 0;
}

int16_t FCLex_ReadSuffixes(PortFile *fid, uint32_t length, LX_Lexicon *lex) {
    LX_ASSERT(PORT_IS_VALID_FILE_ID(fid));
    LX_ASSERT(lex != NULL);
    LX_FCLex &fc = lex->fc;
    uint64_t used = 0;
    int16_t r = read_table(fid, fc, length, &used, &fc.simpleText, &fc.simpleSuffixes, &fc.nSimpleSuffixes);
    if (r < 0) return r;
    return read_table(fid, fc, length, &used, &fc.extText, &fc.extSuffixes, &fc.nExtSuffixes);
}

int16_t FCLex_ReadIndex(PortFile *fid, uint32_t length, LX_Lexicon *lex) {
    LX_ASSERT(PORT_IS_VALID_FILE_ID(fid));
    LX_ASSERT(lex != NULL);
    LX_FCLex &fc = lex->fc;
    if (length < LXC_INDEX_HEAD_SZ) return invalid(fc);
    if (length > bytes_left(fid)) return read_error(fc);
    uint32_t n;
    if (!read32(fid, &n)) return read_error(fc);
    if (n > static_cast<uint32_t>(MAX_SEGMENTS)) {
        LX_Diag_Msg("%s: too many segments (%hu)", fc.fileName, static_cast<unsigned short>(n));
        return LX_ERR_NO_MEMORY;
    }
    if (LXC_INDEX_HEAD_SZ + static_cast<uint64_t>(LXC_INDEX_ENTRY_SZ) * n > length) return invalid(fc);
    if (n == 0) return 0;
    fc.segIndex = static_cast<FCSegment **>(LX_MEM_ALLOC(sizeof(FCSegment *) * n));
    fc.packedKeys = static_cast<uint32_t *>(
        LX_MEM_ALLOC(sizeof(uint32_t) * (kFirstStarts + n) + sizeof(uint16_t) * hash_slots(n)));
    if (fc.segIndex == nullptr || fc.packedKeys == nullptr) return out_of_memory(fc);
    fc.nSegments = 0;
    uint32_t *keys = fc.packedKeys + kFirstStarts;
    // The entries come through a buffer on the stack, a few hundred at a
    // time: the index is read once, and memory for all of it at once would
    // only add to the open's peak.
    uchar chunk[kIndexChunk * LXC_INDEX_ENTRY_SZ];
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t inChunk = i % kIndexChunk;
        if (inChunk == 0) {
            const uint32_t bytes = std::min(kIndexChunk, n - i) * LXC_INDEX_ENTRY_SZ;
            if (PORT_Read(fid, chunk, bytes) != bytes) return read_error(fc);
        }
        const LXCIndexEntry entry = LXC_GetIndexEntry(chunk + LXC_INDEX_ENTRY_SZ * inChunk);
        const uint32_t packed = pack_key(entry.key);
        if (!valid_key(entry.key) || (i > 0 && packed <= keys[i - 1])) return invalid(fc);
        auto *seg = static_cast<FCSegment *>(Sma_Alloc(&fc.segPool, kSegPiece));
        if (seg == nullptr) return out_of_memory(fc);
        std::memcpy(seg->key, entry.key, LXC_KEY_SZ);
        seg->offset = entry.offset;
        seg->size = entry.size;
        seg->data = nullptr;
        seg->lastUse = 0;
        seg->beyondEnd = false;
        fc.segIndex[i] = seg;
        keys[i] = packed;
        ++fc.nSegments;
    }
    for (uint32_t b = 0, i = 0; b < kFirstStarts; ++b) {
        while (i < n && keys[i] >> 16 < b) ++i;
        fc.packedKeys[b] = i;
    }
    const uint32_t nSlots = hash_slots(n);
    uint16_t *slots = slots_of(fc);
    std::fill(slots, slots + nSlots, kNoSlot);
    for (uint32_t i = 0; i < n; ++i) {
        uint32_t h = first_slot(keys[i], nSlots);
        while (slots[h] != kNoSlot) h = (h + 1) & (nSlots - 1);
        slots[h] = static_cast<uint16_t>(i);
    }
    return 0;
}

int32_t LX_FCLex_Close(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    LX_FCLex &fc = lex->fc;
    for (int32_t i = 0; i < fc.nSegments; ++i)
        if (fc.segIndex[i]->data != nullptr) drop_data(fc.segIndex[i]);
    fc.oldestLoaded = fc.newestLoaded = nullptr;
    LX_FCLex_Reset(lex);
    return 0;
}

void LX_FCLex_Reset(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    LX_FCLex &fc = lex->fc;
    LX_MEM_FREE(fc.segIndex);
    LX_MEM_FREE(fc.packedKeys);
    LX_MEM_FREE(fc.verdicts);
    Sma_Free(&fc.segPool);
    LX_MEM_FREE(fc.simpleSuffixes);
    LX_MEM_FREE(fc.simpleText);
    LX_MEM_FREE(fc.extSuffixes);
    LX_MEM_FREE(fc.extText);
    fc.segIndex = nullptr;
    fc.packedKeys = nullptr;
    fc.verdicts = nullptr;
    fc.verdictMask = 0;
    fc.nSegments = 0;
    fc.simpleSuffixes = fc.extSuffixes = nullptr;
    fc.simpleText = fc.extText = nullptr;
    fc.nSimpleSuffixes = fc.nExtSuffixes = 0;
    std::memset(&fc.segPool, 0, sizeof fc.segPool);
}

// ------------------------------------------------------------------ loading

namespace {

// The load of a segment that isn't in memory; see FCLex_LoadSegment.
int16_t load_from_file(LX_FCLex &fc, FCSegment *seg) {
    if (seg->size == 0) return LX_ERR_NOT_FOUND;
    if (fc.budget > 0) {
        // The open has made sure that no segment is larger than the budget,
        // so that with nothing in memory there is room.
        while (fc.budgetLeft < static_cast<int64_t>(seg->size) && fc.oldestLoaded != nullptr) {
            FCSegment *victim = fc.oldestLoaded;
            unlink_loaded(fc, victim);
            drop_data(victim);
            fc.budgetLeft += static_cast<int32_t>(victim->size);
        }
    }
    // dataStart + offset + size lies below 2^31: the open has checked it.
    const int32_t position = fc.dataStart + static_cast<int32_t>(seg->offset);
    // A file may end inside its data section; a segment behind the end
    // can't be read, and isn't allocated for either, whatever its size.
    // Other segments are no larger than the file was at the open.
    if (seg->beyondEnd) {
        PortStamp stamp;
        if (PORT_FileStamp(fc.fileName, &stamp) != 0) {
            LX_Diag_Msg("%s: can't open", fc.fileName);
            return LX_ERR_CANT_CREATE;
        }
        if (position + static_cast<int64_t>(seg->size) > stamp.size) {
            LX_Diag_Msg("%s: read error", fc.fileName);
            return LX_ERR_BAD_FORMAT;
        }
    }
    if (!take_data(seg)) {
        LX_Diag_Msg("loadSeg: out of memory");
        return LX_ERR_NO_MEMORY;
    }
    // The file is opened for this read only: an open lexicon holds no
    // file, and a load costs an open, one read and a close.
    const int32_t got = PORT_ReadAt(fc.fileName, position, seg->data, seg->size);
    if (got != static_cast<int32_t>(seg->size)) {
        drop_data(seg);
        if (got < 0) {
            LX_Diag_Msg("%s: can't open", fc.fileName);
            return LX_ERR_CANT_CREATE;
        }
        LX_Diag_Msg("%s: read error", fc.fileName);
        return LX_ERR_BAD_FORMAT;
    }
    seg->lastUse = fc.useClock;
    if (fc.budget > 0) {
        fc.budgetLeft -= static_cast<int32_t>(seg->size);
        link_newest(fc, seg);
    }
    make_jumps(fc, seg);
    return 0;
}

} // namespace

int16_t FCLex_LoadSegment(LX_Lexicon *lex, FCSegment *seg) {
    LX_ASSERT(lex != NULL);
    LX_ASSERT(lex->fc.segIndex != NULL);
    LX_ASSERT(seg != NULL);
    LX_FCLex &fc = lex->fc;
    ++fc.useClock;
    if (seg->data == nullptr) return load_from_file(fc, seg);
    seg->lastUse = fc.useClock;
    if (fc.budget > 0 && seg != fc.newestLoaded) {
        unlink_loaded(fc, seg);
        link_newest(fc, seg);
    }
    return 0;
}

const uint32_t *FCLex_Jumps(const FCSegment *seg) {
    LX_ASSERT(seg != NULL);
    return seg->data != nullptr ? head_of(seg)->jumps : nullptr;
}

// ------------------------------------------------------------------ lookups

FCSegment *FCLex_FindSegment(const LX_Lexicon *lex, const uchar key[LXC_KEY_SZ]) {
    const uint16_t place = find_place(lex->fc, key);
    return place == kNoSlot ? nullptr : lex->fc.segIndex[place];
}

int32_t FCLex_CompareSegs(const void *seg1, const void *seg2) {
    LX_ASSERT(seg1 != NULL);
    LX_ASSERT(seg2 != NULL);
    const FCSegment *a = *static_cast<const FCSegment *const *>(seg1);
    const FCSegment *b = *static_cast<const FCSegment *const *>(seg2);
    LX_ASSERT_TEXT(a != NULL, "*seg1 != NULL");
    LX_ASSERT_TEXT(b != NULL, "*seg2 != NULL");
    return LXC_CompareKeys(a->key, b->key);
}

int16_t FCLex_CheckSegment(LX_Lexicon *lex, FCSegment *seg, const char *word, int16_t caseSensitive) {
    if (word[0] == '\0' || word[1] == '\0' || word[2] == '\0') return 1; // the key is the word
    const int16_t r = FCLex_LoadSegment(lex, seg);
    if (r < 0) return r;
    const LX_FCLex &fc = lex->fc;
    const MCSegment mseg = mc_segment(seg);
    const MCSuffixTable simple = simple_table(fc), ext = ext_table(fc);
    if (caseSensitive != 0) return MCLex_Scan(&mseg, fc.charSize, &simple, &ext, word, nullptr, nullptr) == 1;
    return MCLex_FindNoCase(&mseg, &simple, &ext, word) == 1;
}

namespace {

// The case-sensitive lookup, through the table of verdicts.
int16_t find_exact(LX_Lexicon *lex, const char *word) {
    LX_FCLex &fc = lex->fc;
    uint32_t hash = 0;
    int32_t len = 0;
    FCVerdict *v = verdict_slot(fc, word, &hash, &len);
    if (v != nullptr && holds(v, hash, word, len)) {
        if (v->segment == FC_VERDICT_NO_SEGMENT) return v->found;
        FCSegment *seg = fc.segIndex[v->segment];
        // A verdict from a segment no longer in memory counts for nothing:
        // the segment is loaded again, and the load may fail.
        if (seg->data != nullptr && FCLex_LoadSegment(lex, seg) == 0) return v->found;
    }
    uchar key[LXC_KEY_SZ];
    LXC_MakeKey(word, key);
    const uint16_t place = find_place(fc, key);
    int16_t r = 0;
    if (place != kNoSlot) r = FCLex_CheckSegment(lex, fc.segIndex[place], word, 1);
    if (v != nullptr && r >= 0) {
        v->hash = hash;
        v->len = static_cast<uint8_t>(len);
        v->found = static_cast<uint8_t>(r);
        // A word of fewer than three bytes is answered by the index alone.
        v->segment = place == kNoSlot || len < static_cast<int32_t>(LXC_KEY_SZ) ? FC_VERDICT_NO_SEGMENT : place;
        std::memcpy(v->word, word, static_cast<size_t>(len));
    }
    return r;
}

} // namespace

int16_t LX_FCLex_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive, char *otherWord,
                          int32_t otherWordSize) {
    check_open(lex);
    LX_ASSERT(word != NULL);
    (void)otherWord;
    (void)otherWordSize;
    if (caseSensitive != 0) return find_exact(lex, word) == 1 ? LX_ACT_IGNORE : LX_ERR_NOT_FOUND;
    // The index holds the first three bytes as they are: try them in every
    // combination of case, all lower first, bit i of the mask making
    // position i a capital. Each variant is made from the one before.
    uchar key[LXC_KEY_SZ];
    LXC_MakeKey(word, key);
    for (uint32_t mask = 0; mask < 8; ++mask) {
        for (uint32_t i = 0; i < LXC_KEY_SZ; ++i)
            key[i] = (mask >> i & 1) ? lx_to_upper(key[i]) : lx_to_lower(key[i]);
        FCSegment *seg = FCLex_FindSegment(lex, key);
        if (seg != nullptr && FCLex_CheckSegment(lex, seg, word, 0) == 1) return LX_ACT_IGNORE;
    }
    return LX_ERR_NOT_FOUND;
}

namespace {

// MCLex_Scan of seg with SuggCollect_Pattern. With case respected, a
// pattern whose tail begins with a character (not a wildcard) can match
// only words whose tails begin with it, and the words whose first two
// bytes are below the pattern's neither match nor end the walk: the
// decoding may begin at the segment's last jump below the pattern.
void pattern_scan(const MCSegment *seg, uint16_t charSize, const MCSuffixTable *simple, const MCSuffixTable *ext,
                  const char *pattern, SuggCollector *collector) {
    const uchar *tail = reinterpret_cast<const uchar *>(pattern) + LXC_KEY_SZ;
    if (collector->caseSensitive == 0 || tail[0] == '?' || tail[0] == 0 || seg->nJumps <= 0) {
        MCLex_Scan(seg, charSize, simple, ext, pattern, SuggCollect_Pattern, collector);
        return;
    }
    if (charSize != LXC_CHAR_SIZE || seg->size == 0) return;
    const uint32_t two = static_cast<uint32_t>(tail[0]) << 8 | (tail[1] != '?' ? tail[1] : 0);
    MCDecoder dec;
    MCLex_DecodeStartAt(&dec, seg, simple, ext, two);
    while (MCLex_DecodeNext(&dec) == 1)
        if (SuggCollect_Pattern(pattern, dec.curWord, collector) <= 0) return;
}

} // namespace

int32_t LX_FCLex_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive, SuggSet *matches) {
    check_open(lex);
    LX_ASSERT(pattern != NULL);
    LX_ASSERT(matches != NULL);
    const LX_FCLex &fc = lex->fc;
    const MCSuffixTable simple = simple_table(fc), ext = ext_table(fc);
    const LX_WordComparatorCb cmp = caseSensitive != 0 ? LX_Match_Pattern : LX_Match_PatternNoCase;
    SuggCollector collector{matches, caseSensitive, cmp};
    const uchar *p = reinterpret_cast<const uchar *>(pattern);
    char keyText[LXC_KEY_SZ + 1];

    uchar key[LXC_KEY_SZ];
    LXC_MakeKey(pattern, key);
    if (caseSensitive != 0 && key[0] != '?' && key[1] != '?' && key[2] != '?') {
        // The pattern's first three characters are its key: one segment.
        FCSegment *seg = FCLex_FindSegment(lex, key);
        if (seg == nullptr) return 0;
        if (key[2] == 0) { // a pattern of no wildcard, short enough to be a key
            key_text(seg, keyText);
            if (cmp(pattern, keyText) > 0) SuggSet_Add(matches, keyText, 100);
            return 0;
        }
        const int16_t r = FCLex_LoadSegment(lex, seg);
        if (r < 0) return r;
        const MCSegment mseg = mc_segment(seg);
        pattern_scan(&mseg, fc.charSize, &simple, &ext, pattern, &collector);
        return 0;
    }

    // A pattern of three characters or more with one wildcard among the
    // first three, and a set with room: only the keys that fit can add to
    // the set, and they stand in ranges of the sorted keys. The walk below
    // would pass the others without a change and, with case respected,
    // end behind the last range; keys with a '?' of their own, which could
    // end it sooner, send the search that way.
    const int32_t nWild = (key[0] == '?') + (key[1] == '?') + (key[2] == '?');
    if (key[2] != 0 && nWild == 1 && matches->count < matches->capacity) {
        auto packed = [](uint32_t a, uint32_t b, uint32_t c) { return a << 16 | b << 8 | c; };
        auto any_keys = [&](uint32_t from, uint32_t to) { return lower_bound(fc, from) < lower_bound(fc, to); };
        int32_t visit[2 * 256]; // ranges of segIndex, in order
        int32_t nRanges = 0;
        bool walk = false;
        if (key[0] == '?') {
            walk = any_keys(packed('?', 0, 0), packed('?' + 1, 0, 0));
            for (uint32_t c = 1; c < 256 && !walk; ++c) {
                visit[nRanges++] = lower_bound(fc, packed(c, key[1], key[2]));
                visit[nRanges++] = lower_bound(fc, packed(c, key[1], key[2]) + 1);
            }
        } else if (key[1] == '?') {
            walk = any_keys(packed(key[0], '?', 0), packed(key[0], '?' + 1, 0));
            visit[nRanges++] = lower_bound(fc, packed(key[0], 0, 0));
            visit[nRanges++] = lower_bound(fc, packed(key[0] + 1, 0, 0));
        } else {
            visit[nRanges++] = lower_bound(fc, packed(key[0], key[1], 0));
            visit[nRanges++] = lower_bound(fc, packed(key[0], key[1] + 1, 0));
        }
        if (!walk) {
            for (int32_t k = 0; k < nRanges; k += 2) {
                for (int32_t s = visit[k]; s < visit[k + 1]; ++s) {
                    FCSegment *seg = fc.segIndex[s];
                    if (seg->key[2] == 0) continue; // a word of its own, shorter than the pattern
                    uint32_t i = 0;
                    while (i < LXC_KEY_SZ && (p[i] == seg->key[i] || p[i] == '?')) ++i;
                    if (i < LXC_KEY_SZ) continue;
                    const int16_t r = FCLex_LoadSegment(lex, seg);
                    if (r < 0) return r;
                    const MCSegment mseg = mc_segment(seg);
                    pattern_scan(&mseg, fc.charSize, &simple, &ext, pattern, &collector);
                    if (matches->count >= matches->capacity) return 0;
                }
            }
            return 0;
        }
    }

    for (int32_t s = 0; s < fc.nSegments; ++s) {
        FCSegment *seg = fc.segIndex[s];
        if (seg->key[2] == 0) { // the key is a word of its own
            key_text(seg, keyText);
            if (cmp(pattern, keyText) > 0) SuggSet_Add(matches, keyText, 100);
            continue;
        }
        // Position by position, with case respected: a wildcard fits
        // anything. A pattern shorter than three fails at its terminator.
        uint32_t i = 0;
        while (i < LXC_KEY_SZ && (p[i] == seg->key[i] || p[i] == '?')) ++i;
        if (i == LXC_KEY_SZ) {
            const int16_t r = FCLex_LoadSegment(lex, seg);
            if (r < 0) return r;
            const MCSegment mseg = mc_segment(seg);
            pattern_scan(&mseg, fc.charSize, &simple, &ext, pattern, &collector);
        } else if (caseSensitive != 0) {
            // Keys ascend: past the pattern at a place without a wildcard,
            // no later key can fit.
            uint32_t j = 0;
            while (j < LXC_KEY_SZ && seg->key[j] == p[j] && seg->key[j] != 0) ++j;
            if (j < LXC_KEY_SZ && p[j] != '?' && seg->key[j] > p[j]) return 0;
        }
        if (matches->count >= matches->capacity) return 0;
    }
    return 0;
}

namespace {

// What MCLex_Scan with SuggCollect_Similar and the typographic comparator
// does to set, in less time: the words of a segment share their beginnings
// with the words before them, and once the set is full most of them can't
// beat its last entry, which the scan finds out early (see LX_TypoScan).
void typo_scan(const MCSegment *seg, uint16_t charSize, const MCSuffixTable *simple, const MCSuffixTable *ext,
               LX_TypoScan *scan, SuggSet *set) {
    if (charSize != LXC_CHAR_SIZE || seg->size == 0) return;
    // A key with a zero inside (only a damaged file has one) ends its words.
    constexpr int32_t kKey = LXC_KEY_SZ;
    const int32_t keyLen = seg->key[0] == 0 ? 0 : seg->key[1] == 0 ? 1 : seg->key[2] == 0 ? 2 : kKey;
    MCDecoder dec;
    MCLex_DecodeStart(&dec, seg, simple, ext);
    // The first word shares nothing with the scan's last word; the others
    // share the key and the bytes their records keep.
    for (bool first = true; MCLex_DecodeNext(&dec) == 1; first = false) {
        const int32_t len = keyLen < kKey ? keyLen : kKey + dec.tailLen;
        int32_t shared = first ? 0 : kKey + dec.shared;
        if (shared > len) shared = len;
        const int32_t floor = SuggSet_Floor(set);
        const int16_t score = LX_TypoScan_Score(scan, dec.curWord, len, shared, floor);
        if (score > floor) SuggSet_Add(set, dec.curWord, score);
    }
}

// The typographic score of a word's first three characters against a
// key, as far as a sweep needs it: whether it reaches the depth's limit.
// A key none of whose characters has the base letter of one of the head's
// (or, for characters without one, is such a character when the head has
// one too) can only earn a substitution at each position, or 50 for one
// left over: no more than the best cell of the head's rows in the letter
// matrix, or 50. Where that is below the limit, the key is out without
// being compared.
class KeyFilter {
  public:
    KeyFilter(const char *head, int32_t limit) {
        int32_t best = 50;
        for (const uchar *h = reinterpret_cast<const uchar *>(head); *h != 0; ++h) {
            const uchar f = lx_fold(*h);
            headBases_ |= bit(f);
            if (f != 0)
                for (int32_t y = 0; y < 26; ++y)
                    if (y != f - 'A' && LX_LetterMatrix[f - 'A'][y] > best) best = LX_LetterMatrix[f - 'A'][y];
        }
        active_ = best < limit;
    }
    // True if the key's score can't reach the limit.
    bool rules_out(const uchar key[LXC_KEY_SZ]) const {
        return active_ && ((bit(lx_fold(key[0])) | bit(lx_fold(key[1])) | bit(lx_fold(key[2]))) & headBases_) == 0;
    }

  private:
    // A base letter as a bit; bit 26 for characters without one.
    static uint32_t bit(uchar base) { return base != 0 ? 1u << (base - 'A') : 1u << 26; }
    uint32_t headBases_ = 0;
    bool active_ = false;
};

} // namespace

int32_t LX_FCLex_FindSimilar(LX_Lexicon *lex, const char *word, int32_t depth,
                             LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions) {
    check_open(lex);
    LX_ASSERT(word != NULL);
    LX_ASSERT(wordComparatorCb != NULL);
    LX_ASSERT(suggestions != NULL);
    const LX_FCLex &fc = lex->fc;
    const MCSuffixTable simple = simple_table(fc), ext = ext_table(fc);
    SuggCollector collector{suggestions, 0, wordComparatorCb};
    char head[LXC_KEY_SZ + 1], keyText[LXC_KEY_SZ + 1];
    LX_Str_Copy(head, sizeof head, word);
    // The typographic comparator has a sweep of its own (see typo_scan),
    // and a quick test that passes over most keys (see KeyFilter).
    LX_TypoScan scan;
    const bool typo = wordComparatorCb == LX_Compare_Typographic && LX_TypoScan_Start(&scan, word);
    // The phonetic score is 0 or the typographic one: the test holds for it.
    const bool filtered = wordComparatorCb == LX_Compare_Typographic || wordComparatorCb == LX_Compare_Phonetic;
    const KeyFilter keys(head, filtered ? 100 - depth : INT32_MIN);
    for (int32_t s = 0; s < fc.nSegments; ++s) {
        FCSegment *seg = fc.segIndex[s];
        if (seg->key[2] != 0 && keys.rules_out(seg->key)) continue;
        key_text(seg, keyText);
        if (seg->key[2] == 0) {
            if (typo) {
                const int32_t floor = SuggSet_Floor(suggestions);
                const int16_t score = LX_TypoScan_Score(&scan, keyText, LX_Str_Len(keyText), 0, floor);
                if (score > floor) SuggSet_Add(suggestions, keyText, score);
            } else {
                SuggCollect_Similar(word, keyText, &collector);
            }
            continue;
        }
        // The segment's words begin with its key: a key far from the
        // word's beginning rules them all out.
        if (static_cast<int16_t>(wordComparatorCb(head, keyText)) < 100 - depth) continue;
        const int16_t r = FCLex_LoadSegment(lex, seg);
        if (r < 0) return r;
        const MCSegment mseg = mc_segment(seg);
        if (typo) {
            typo_scan(&mseg, fc.charSize, &simple, &ext, &scan, suggestions);
            continue;
        }
        MCLex_Scan(&mseg, fc.charSize, &simple, &ext, word, SuggCollect_Similar, &collector);
    }
    return 0;
}

namespace {

bool same_base(uchar a, uchar b) { return lx_fold(a) == lx_fold(b) && (a == 0) == (b == 0); }

// True if the two words have the same base form: the same length, and at
// each place characters of the same base letter (or both without one).
bool same_base_form(const char *a, const char *b) {
    const uchar *pa = reinterpret_cast<const uchar *>(a);
    const uchar *pb = reinterpret_cast<const uchar *>(b);
    for (;; ++pa, ++pb) {
        if (!same_base(*pa, *pb)) return false;
        if (*pa == 0) return true;
    }
}

} // namespace

int32_t LX_FCLex_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit, void *ctx) {
    check_open(lex);
    LX_ASSERT(word != NULL);
    const LX_FCLex &fc = lex->fc;
    uchar want[LXC_KEY_SZ];
    LXC_MakeKey(word, want);
    if (want[0] == 0 || LX_Str_Len(word) >= LX_MAX_WORD_SZ) return 0;
    const MCSuffixTable simple = simple_table(fc), ext = ext_table(fc);
    char keyText[LXC_KEY_SZ + 1];
    // The keys of such words begin with a byte of the first letter's base:
    // for each, the range of keys that begins with it.
    for (uint32_t c = 1; c < 256; ++c) {
        if (!same_base(static_cast<uchar>(c), want[0])) continue;
        const int32_t endAt = lower_bound(fc, (c + 1) << 16);
        for (int32_t s = lower_bound(fc, c << 16); s < endAt; ++s) {
            FCSegment *seg = fc.segIndex[s];
            if (!same_base(seg->key[1], want[1]) || !same_base(seg->key[2], want[2])) continue;
            if (want[2] == 0) { // the key is the word
                key_text(seg, keyText);
                if (!visit(ctx, keyText)) return 0;
                continue;
            }
            // A segment that can't be loaded or decoded holds nothing.
            if (FCLex_LoadSegment(lex, seg) < 0) continue;
            const MCSegment mseg = mc_segment(seg);
            MCDecoder dec;
            MCLex_DecodeStart(&dec, &mseg, &simple, &ext);
            while (MCLex_DecodeNext(&dec) == 1)
                if (same_base_form(dec.curWord, word) && !visit(ctx, dec.curWord)) return 0;
        }
    }
    return 0;
}

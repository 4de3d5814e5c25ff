// lxcformat.h - the compressed lexicon file: its constants, the layout of
// its header, sections and index, and the big-endian fields. The reader
// (fclex), the segment codec (mclex) and the compiler (lexsq) all take the
// format from here, so that what one writes the others read byte for byte.
//
// The file:
//   magic FCLEX_FILE_MAGIC (4 bytes), then sections up to the end of the
//   file, each: type (4), length (4), payload (length bytes).
// Payloads:
//   SECT_LANGUAGE   one number; the low 16 bits are a language identifier
//   SECT_CHAR_SIZE  one number: 1 (2 marks 16-bit characters, not handled)
//   SECT_SUFFIXES   S (4), the simple table (S), E (4), the extended table (E);
//                   a table is a run of texts, each with its zero byte
//   SECT_SEG_DATA   all segments, one behind the other, no gaps
//   SECT_SEG_INDEX  n (4), then n entries: key (3), offset (4), size (4);
//                   offsets count from the first payload byte of
//                   SECT_SEG_DATA; keys ascend as unsigned bytes
// Every number is an unsigned 32-bit value, most significant byte first.
// The compiler writes the sections in the order language, character size,
// suffixes, data, index; a reader goes by type and skips unknown types.
//
// A segment holds the words of one key, the first three bytes of a word
// (zero-filled for shorter words), as word records in ascending byte order;
// mclex.h codes and decodes them.
#ifndef LX_LXCFORMAT_H
#define LX_LXCFORMAT_H

#include <cstring>

#include "api.h"
#include "lxbase.h"

inline constexpr uint32_t FCLEX_FILE_MAGIC = 0x57000501;

// Section types.
inline constexpr uint32_t SECT_LANGUAGE = 1;
inline constexpr uint32_t SECT_CHAR_SIZE = 2;
inline constexpr uint32_t SECT_SUFFIXES = 3;
inline constexpr uint32_t SECT_SEG_INDEX = 4;
inline constexpr uint32_t SECT_SEG_DATA = 5;

// Sizes of the fixed parts, in bytes.
inline constexpr uint32_t LXC_MAGIC_SZ = 4;
inline constexpr uint32_t LXC_SECTION_HEAD_SZ = 8;  // type and length
inline constexpr uint32_t LXC_NUMBER_SZ = 4;        // every wide field
inline constexpr uint32_t LXC_KEY_SZ = 3;
inline constexpr uint32_t LXC_INDEX_HEAD_SZ = 4;    // n
inline constexpr uint32_t LXC_INDEX_ENTRY_SZ = 11;  // key, offset, size
inline constexpr uint32_t LXC_CHAR_SIZE = 1;        // the only character size

// A file of the compiler is LXC_FIXED_SZ + S + E + D + 11 x n bytes: the
// magic, the two one-number sections, the heads and lengths of the suffix
// section, and the heads of the data and index sections with n.
inline constexpr uint32_t LXC_FIXED_SZ = LXC_MAGIC_SZ + 2 * (LXC_SECTION_HEAD_SZ + LXC_NUMBER_SZ) +
                                         (LXC_SECTION_HEAD_SZ + 2 * LXC_NUMBER_SZ) + LXC_SECTION_HEAD_SZ +
                                         (LXC_SECTION_HEAD_SZ + LXC_INDEX_HEAD_SZ);
static_assert(LXC_FIXED_SZ == 64);

inline constexpr uint64_t LXC_FileSize(uint64_t simpleLen, uint64_t extLen, uint64_t dataLen, uint64_t nSegments) {
    return LXC_FIXED_SZ + simpleLen + extLen + dataLen + LXC_INDEX_ENTRY_SZ * nSegments;
}

// Limits.
inline constexpr int32_t MAX_SIMPLE_SUFFIXES = 30;  // codes 0x02 to 0x1F
inline constexpr int32_t MAX_EXT_SUFFIXES = 255;    // numbers 0 to 254
inline constexpr int32_t MAX_SUFFIX_LEN = 8;        // characters of one suffix
inline constexpr int32_t MAX_SEGMENTS = 65535;      // distinct keys of one file
inline constexpr int32_t LXC_MAX_TAIL_LEN = LX_MAX_WORD_SZ - 1 - static_cast<int32_t>(LXC_KEY_SZ); // 77
inline constexpr int64_t LXC_MAX_FILE_SZ = INT32_MAX; // positions are signed 32-bit numbers

// The bytes of a word record: the shared count, literals, and an end code.
inline constexpr uchar LXC_CODE_END = 0x00;     // the tail is complete
inline constexpr uchar LXC_CODE_EXT = 0x01;     // followed by an extended entry's number
inline constexpr uchar LXC_CODE_SIMPLE = 0x02;  // simple entry i has the code 0x02 + i
inline constexpr uchar LXC_FIRST_LITERAL = 0x20; // lowest byte a word can hold
// The longest record: the shared count, then 77 literals and the end code,
// or 76 literals and a two-byte code (a code stands for one byte at least).
inline constexpr int32_t LXC_MAX_RECORD_SZ = 1 + LXC_MAX_TAIL_LEN + 1;

// Big-endian 32-bit fields at any alignment.
inline uint32_t LXC_Get32(const uchar *p) {
    uint32_t value;
    std::memcpy(&value, p, sizeof value);
    return LX_Swap32(value);
}
inline void LXC_Put32(uchar *p, uint32_t value) {
    value = LX_Swap32(value);
    std::memcpy(p, &value, sizeof value);
}

// One entry of SECT_SEG_INDEX, as 11 bytes at p.
struct LXCIndexEntry {
    uchar key[LXC_KEY_SZ];
    uint32_t offset; // from the first payload byte of SECT_SEG_DATA
    uint32_t size;
};
inline LXCIndexEntry LXC_GetIndexEntry(const uchar *p) {
    LXCIndexEntry entry;
    std::memcpy(entry.key, p, LXC_KEY_SZ);
    entry.offset = LXC_Get32(p + LXC_KEY_SZ);
    entry.size = LXC_Get32(p + LXC_KEY_SZ + LXC_NUMBER_SZ);
    return entry;
}
inline void LXC_PutIndexEntry(uchar *p, const LXCIndexEntry &entry) {
    std::memcpy(p, entry.key, LXC_KEY_SZ);
    LXC_Put32(p + LXC_KEY_SZ, entry.offset);
    LXC_Put32(p + LXC_KEY_SZ + LXC_NUMBER_SZ, entry.size);
}

// The key of word: its first three bytes, stopping at the terminator, the
// rest zero. The third byte is 0 exactly when the key is the whole word.
inline void LXC_MakeKey(const char *word, uchar key[LXC_KEY_SZ]) {
    uint32_t i = 0;
    for (; i < LXC_KEY_SZ && word[i] != '\0'; ++i) key[i] = lx_byte(word[i]);
    for (; i < LXC_KEY_SZ; ++i) key[i] = 0;
}

// The tail of word: what stands behind its first three bytes; the empty
// text at its end for a word of three bytes or fewer.
inline const char *LXC_WordTail(const char *word) {
    for (uint32_t i = 0; i < LXC_KEY_SZ && *word != '\0'; ++i) ++word;
    return word;
}

// Keys compare byte by byte as unsigned values: -1, 0 or 1.
inline int32_t LXC_CompareKeys(const uchar *a, const uchar *b) {
    for (uint32_t i = 0; i < LXC_KEY_SZ; ++i)
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    return 0;
}

#endif

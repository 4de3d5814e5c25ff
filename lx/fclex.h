// fclex.h - the compressed lexicon reader: opening a file, loading its
// segments within a memory budget, and the lookups and searches over it.
//
// An open lexicon holds the file's suffix tables and an index of all its
// segments (one record per segment, sorted by key). A segment's bytes are
// read from the file when a lookup first needs them; with a budget above
// 0, the segments in memory never take more than budget bytes, and the
// least recently requested ones are thrown out to make room. The file is
// opened for each load and closed behind it. Each loaded segment may have
// a small table of jumps beside it, which the budget doesn't count (at
// most a quarter of the segment's size while a budget is set), and the
// lexicon keeps the verdicts of recent lookups in a table of its own
// (FCVerdict), also beside the budget: a quarter of it, 8 to 128 KiB.
#ifndef LX_FCLEX_H
#define LX_FCLEX_H

#include "compare.h"
#include "lexicon.h"
#include "lxbase.h"
#include "lxcformat.h"
#include "portab.h"

inline constexpr uint32_t FCLEX_MAGIC = 0x0045066B;
inline constexpr uint32_t FC_JUMPS_COMPLETE = 0x80000000;
inline constexpr int32_t FC_VERDICT_WORD_MAX = 24; // longer words aren't kept
inline constexpr uint16_t FC_VERDICT_NO_SEGMENT = 0xFFFF;

// One segment. data is null while the segment isn't in memory. A file
// has thousands of segments, so the record holds only what every segment
// needs, in 24 bytes: what a segment in memory needs besides (its place in
// the list of segments in memory, its jumps) stands in the same block as
// its bytes, just before them.
struct FCSegment {
    uchar *data;      // the segment's bytes while in memory
    uint32_t size;    // from the index
    uint32_t offset;  // from the index, relative to dataStart
    uint32_t lastUse; // useClock at the last request; 0 until the first
    uchar key[LXC_KEY_SZ];
    // True if the segment's end lay behind the end of the file at the
    // open (a file may end inside its data section): such a segment is
    // only allocated for once the file is seen to hold it.
    bool beyondEnd;
};

// The verdicts of recent case-sensitive lookups, kept so that the common
// words of a text cost a probe instead of a search of their segment. A
// direct-mapped table by a hash of the word. A verdict stands only while
// its segment is in memory, and using it requests the segment as the
// search would have done; so loads, the order of the segments in memory
// and the failures of loads are those of the lookups without the table.
struct FCVerdict {
    uint32_t hash;
    uint8_t len;      // of word; 0 for an empty entry
    uint8_t found;    // 1 if the lexicon holds word
    uint16_t segment; // place of word's segment in segIndex, FC_VERDICT_NO_SEGMENT if no request
    char word[FC_VERDICT_WORD_MAX]; // not terminated
};
static_assert(sizeof(FCVerdict) == 32, "a verdict fills half a cache line");

// Behind LX_Lexicon_Close: frees everything the lexicon holds. Gives 0.
int32_t LX_FCLex_Close(LX_Lexicon *lex);

// Frees what a failed open took (no segment is in memory then) and clears
// the pointers and the record pool.
void LX_FCLex_Reset(LX_Lexicon *lex);

// Reads the payload of SECT_SUFFIXES, length bytes, into the tables. Gives
// 0, LX_ERR_NO_MEMORY, LX_ERR_READ (the file ends inside a table) or
// LX_ERR_BAD_FORMAT (a table's length beyond the section's).
int16_t FCLex_ReadSuffixes(PortFile *fid, uint32_t length, LX_Lexicon *lex);

// Reads the payload of SECT_SEG_INDEX, length bytes, into segIndex. Gives
// 0, LX_ERR_NO_MEMORY (also for more than MAX_SEGMENTS segments),
// LX_ERR_READ (the file ends inside the index) or LX_ERR_BAD_FORMAT (the
// entries don't fit the section, or the keys don't ascend).
int16_t FCLex_ReadIndex(PortFile *fid, uint32_t length, LX_Lexicon *lex);

// Brings seg into memory, throwing out the least recently requested
// segments if the budget needs it, and marks it as requested now. seg->data
// may be used until the next load on the same lexicon. Gives 0,
// LX_ERR_NOT_FOUND (a segment of no bytes), LX_ERR_NO_MEMORY,
// LX_ERR_CANT_CREATE (the file can't be opened) or LX_ERR_BAD_FORMAT (the
// segment can't be read from it).
int16_t FCLex_LoadSegment(LX_Lexicon *lex, FCSegment *seg);

// The jumps table of a segment in memory, or null if it has none:
// jumps[0] is their number n, with FC_JUMPS_COMPLETE added if they are
// complete, and jumps[1..n] the jumps (mclex.h). Null too for a segment
// that isn't in memory.
const uint32_t *FCLex_Jumps(const FCSegment *seg);

// The segment of key, or null.
FCSegment *FCLex_FindSegment(const LX_Lexicon *lex, const uchar key[LXC_KEY_SZ]);

// The order of segIndex, for a binary search over pointers to segments.
int32_t FCLex_CompareSegs(const void *seg1, const void *seg2);

// 1 if seg holds word, 0 if not, or a negative code of FCLex_LoadSegment.
int16_t FCLex_CheckSegment(LX_Lexicon *lex, FCSegment *seg, const char *word, int16_t caseSensitive);

// The lexicon operations of a compressed lexicon (see lexicon.h). A word
// found has the action LX_ACT_IGNORE; otherWord is never written.
int16_t LX_FCLex_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive, char *otherWord,
                          int32_t otherWordSize);
int32_t LX_FCLex_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive, SuggSet *matches);
int32_t LX_FCLex_FindSimilar(LX_Lexicon *lex, const char *word, int32_t depth,
                             LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions);
int32_t LX_FCLex_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit, void *ctx);

#endif

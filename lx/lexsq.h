// lexsq.h - the squeezer: turns sorted word lists into a compressed lexicon
// file (lxcformat.h), with the suffix tables that suffix discovery chose.
//
// LexSq_Init creates the file and writes everything up to the segment data,
// the suffix tables included; LexSqFile reads a word list, sorts it and
// appends its segments; LexSq_End writes the index and completes the file;
// LexSq_Abort gives up. The output is written in place: after a failure or
// an abort what was written stays, a file without an index, which a reader
// refuses.
//
// Word list: a text file with CR LF line ends. An empty line or a line
// whose first byte is '#' is skipped; any other line is one word, spaces
// and all, of at most 80 bytes, each of which must pass LexSq_IsWordByte.
// Lines count from 1, comments and empty lines included. One bad word ends
// the list, and no segment of it is written.
//
// Suffix file: the format of suffix.h. The first 30 lines that don't begin
// with '#' fill the simple table, the next 255 the extended one; each is
// cut to 8 characters; an empty line takes a slot that never matches.
//
// Every write is checked: a failed one (a full disk) gives LX_ERR_WRITE and
// "error writing to %s" (the magic: "can't write to %s").
#ifndef LX_LEXSQ_H
#define LX_LEXSQ_H

#include "chartab.h"
#include "lxbase.h"
#include "lxcformat.h"
#include "portab.h"
#include "sma.h"

// One finished segment.
struct LexSqSegment {
    int32_t offset;     // position of the first byte in the file
    uint32_t size;      // bytes of the segment
    LexSqSegment *next; // the next greater key
    uchar key[LXC_KEY_SZ];
};

inline constexpr int32_t LEXSQ_PATH_SZ = 516;

// One run of the squeezer, owned by the caller from LexSq_Init to LexSq_End
// or LexSq_Abort.
struct LexSqContext {
    char lexFileName[LEXSQ_PATH_SZ];  // the file being written (cut to 515 bytes)
    LexSqSegment *segments;           // ascending by key; null while none
    uint16_t nSegments;
    int32_t dataStart;                // position of SECT_SEG_DATA's first payload byte
    char simple[MAX_SIMPLE_SUFFIXES][MAX_SUFFIX_LEN + 1];
    uint16_t nSimple;
    char ext[MAX_EXT_SUFFIXES][MAX_SUFFIX_LEN + 1];
    uint16_t nExt;
    int16_t fileOpen;                 // file must be closed
    PortFile *file;
    LexSqSegment *lastSegment;        // tail of segments: keys mostly arrive in order
};

// A byte that a word of a compressed lexicon can hold: a letter, digit,
// punctuation or blank, and no control byte (the codes of a word record
// lie below 0x20).
inline bool LexSq_IsWordByte(uchar c) {
    return c >= 0x1F && (LX_CLASS_TABLE[c] & (LX_CC_ALPHA | LX_CC_DIGIT | LX_CC_PUNCT | LX_CC_SPACE)) != 0;
}

// Creates lexFileName (emptying a file that is there), writes the header
// sections and the suffix tables read from suffixFileName, and opens the
// segment data. errLine receives the number of lines read for the simple
// table. 0, or LX_ERR_CANT_CREATE ("can't open %s": the output or the
// suffix file), LX_ERR_WRITE.
int16_t LexSq_Init(LexSqContext *context, const char *lexFileName, const char *suffixFileName, int16_t lang,
                   uint32_t *errLine);
// The same with the tables given: nSimple texts for the simple table (at
// most 30) and nExt for the extended one (at most 255), each cut to 8
// characters.
int16_t LexSq_InitTables(LexSqContext *context, const char *lexFileName, const char *const *simple,
                         int32_t nSimple, const char *const *ext, int32_t nExt, int16_t lang);
// Reads, sorts and writes one word list. Its keys must not have been met in
// an earlier list. errLine receives the line of the first bad word. 0, or
// LX_ERR_NO_MEMORY, LX_ERR_CANT_CREATE, LX_ERR_INVALID_WORD,
// LX_ERR_SEGMENT_EXISTS, LX_ERR_RANGE (more than 65,535 keys in the file,
// or a file that would reach 2 GiB), LX_ERR_WRITE. After a failure the file
// stays open; the caller ends with LexSq_End or LexSq_Abort.
int16_t LexSqFile(LexSqContext *context, const char *wordFileName, uint32_t *errLine);
// Patches the data section's length, writes the index, syncs and closes the
// file. 0, LX_ERR_UNSUPPORTED ("LexSq_Init not called") or LX_ERR_WRITE; on
// LX_ERR_WRITE the file is cut back to its end before the index and closed.
int16_t LexSq_End(LexSqContext *context);
// Closes the file as it stands and frees the segments.
void LexSq_Abort(LexSqContext *context);

// Internal steps, open for tests.
int16_t LexSq_ReadSuffixes(LexSqContext *context, const char *fileName, uint32_t *errLine);
int16_t LexSq_WriteSuffixes(LexSqContext *context);
int16_t LexSq_ReadWords(PortFile *file, LX_Vector *words, Sma *sma, uint32_t *errLine);
int16_t addSegment(LexSqContext *context, const LexSqSegment *seg);
void LexSq_Reset(LexSqContext *context);
int32_t LexSq_CompareKeys(const void *id1, const void *id2);
int32_t LexSq_CompareSegs(const void *p1, const void *p2);

#endif

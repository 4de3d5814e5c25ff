// mclex.h - the word records of a compressed lexicon's segments: the
// decoder that rebuilds a segment's words one at a time, and the coder
// that writes the record of one word.
//
// A word record says how a word's tail (what follows its three key bytes)
// differs from the tail before it in the segment:
//   shared   1 byte: how many bytes at the start of the tail are those of
//            the previous tail (0 in a segment's first record)
//   literals the next bytes of the tail, each 0x20 or above
//   end      0x00: the tail is complete;
//            0x01 x: extended entry x (0 to 254) is appended, and it is;
//            0x02 to 0x1F: simple entry c - 2 is appended, and it is.
#ifndef LX_MCLEX_H
#define LX_MCLEX_H

#include "lxbase.h"
#include "lxcformat.h"

// A segment's bytes in memory, as a loaded segment of the reader provides
// them.
struct MCSegment {
    const uchar *data; // the word records
    uint32_t size;     // their number of bytes
    uchar key[LXC_KEY_SZ];
    // Records at which a search may begin instead of the first (see
    // MCLex_MakeJumps); none if null.
    const uint32_t *jumps = nullptr;
    int32_t nJumps = 0;
    // True if the jumps were made from every record of the segment.
    bool jumpsComplete = false;
};

// A suffix table: count texts, numbered from 0. An empty table has count 0
// (and may have no array at all).
struct MCSuffixTable {
    const char *const *entries;
    int32_t count;
    // The entries' lengths, each cut to 255, if the owner keeps them;
    // null to have them measured.
    const uchar *lengths = nullptr;
};

// The state of one pass over a segment. curWord holds the key's three
// bytes, then the tail of the word decoded last, terminated; it changes at
// every step, so a word that is kept must be copied.
struct MCDecoder {
    const uchar *pos;                     // the next record
    const uchar *end;                     // behind the segment's last byte
    const MCSuffixTable *simpleSuffixes;
    const MCSuffixTable *extSuffixes;
    int32_t shared;                       // bytes of the tail that the last step kept
    int32_t tailLen;                      // length of the tail in curWord
    char curWord[LX_MAX_WORD_SZ];
};

// Starts a pass over seg: curWord becomes the key with an empty tail. The
// tables must outlive the pass.
void MCLex_DecodeStart(MCDecoder *dec, const MCSegment *seg, const MCSuffixTable *simpleSuffixes,
                       const MCSuffixTable *extSuffixes);

// As MCLex_DecodeStart, but from the last of seg's jumps whose two bytes
// aren't above two (the first record if there is none): the pass meets
// the same words from there on as a pass from the first record, and
// every word it leaves out has its two bytes below two.
void MCLex_DecodeStartAt(MCDecoder *dec, const MCSegment *seg, const MCSuffixTable *simpleSuffixes,
                         const MCSuffixTable *extSuffixes, uint32_t two);

// Decodes the next record into curWord. Gives 1 for a word, 0 at the end of
// the segment, and LX_ERR_BAD_FORMAT for a record that can't be honoured: a
// shared count beyond the previous tail, a tail beyond 77 bytes, a code or
// number that its table doesn't hold, or a record cut off by the segment's
// end. A damaged record ends the pass; the next call gives 0.
int16_t MCLex_DecodeNext(MCDecoder *dec);

// What MCLex_Scan does with each word: cb(keyWord, curWord, data) gives 0
// when curWord is what was sought (the scan ends and gives 1), below 0 when
// no later word can be (the scan ends and gives 0), above 0 to go on.
// curWord is valid during the call only.
typedef int32_t (*MCWordCb)(const char *keyWord, const char *curWord, void *data);

// Decodes the words of seg in order. With a callback, each word is handed
// to it. Without one (cb null), the scan looks for keyWord itself, exact in
// case: keyWord must have seg's key as its first three bytes, and the scan
// stops at the first word that sorts behind it. Gives 1 if the word was
// found, else 0; a damaged record ends the scan like the segment's end.
// This search begins at the last of seg's jumps that the word allows.
// charSize is 1 for every lexicon that can be open; a scan with any other
// size finds nothing.
uint16_t MCLex_Scan(const MCSegment *seg, uint16_t charSize, const MCSuffixTable *simpleSuffixes,
                    const MCSuffixTable *extSuffixes, const char *keyWord, MCWordCb cb, void *data);

// Gives 1 if seg holds word without regard to case (LX_Str_ICmp equal to
// 0), else 0: what MCLex_Scan gives with a callback that compares whole
// words so, but comparing each word only from the first place where it
// differs from the word before it.
uint16_t MCLex_FindNoCase(const MCSegment *seg, const MCSuffixTable *simpleSuffixes,
                          const MCSuffixTable *extSuffixes, const char *word);

// A jump is a record at which the first two bytes of the tail (a shorter
// tail filled up with zeros) are above those of the record before; it is
// kept as those two bytes << 16 | the record's offset. A jump's record
// keeps at most one byte of the tail before it, and every word before it
// sorts below its two bytes: an exact search for a word whose two bytes
// are not below a jump's may begin at that jump's record, knowing only
// them, and meets the same records from there on as a search from the
// first record. Where the jumps are complete (every record decodes, and
// the two bytes never fall), the words of two given bytes stand between
// two neighbouring jumps, which a search without regard to case uses.
// The jumps are at least MC_JUMP_GAP records apart.
inline constexpr int32_t MC_JUMP_GAP = 4;
inline constexpr int32_t MC_MAX_JUMPS = 1024;

// Fills jumps (room for capacity) with the jumps of seg, ascending, and
// gives their number. Only records that a pass from the first record
// reaches without a damaged record, within the first 64 KiB and while the
// two bytes of the tails don't fall, can be jumps: where any of that
// fails, the table ends. *complete tells whether it went to the end.
int32_t MCLex_MakeJumps(const MCSegment *seg, const MCSuffixTable *simpleSuffixes, const MCSuffixTable *extSuffixes,
                        uint32_t *jumps, int32_t capacity, bool *complete);

// Codes the record of the word whose tail is tail, behind the word whose
// tail is prevTail ("" for a segment's first word), into out, which has
// room for LXC_MAX_RECORD_SZ bytes. The longest ending of the part behind
// the shared bytes that equals a table entry is coded, the simple table
// first, lower numbers first. Gives the record's length, or
// LX_ERR_INVALID_WORD for a tail of more than 77 bytes or with a byte below
// 0x20, for which nothing is written.
int32_t MCLex_EncodeWord(const char *tail, const char *prevTail, const MCSuffixTable *simpleSuffixes,
                         const MCSuffixTable *extSuffixes, uchar *out);

#endif

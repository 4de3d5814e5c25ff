// dftlex.h - the disk text lexicon: a memory lexicon that lives in a text
// file. The whole file is held in the memory lexicon mem; lookups and
// searches work on mem alone, and every change is written through to the
// file before it returns.
#ifndef LX_DFTLEX_H
#define LX_DFTLEX_H

#include "compare.h"
#include "lexicon.h"
#include "lxbase.h"
#include "portab.h"

inline constexpr uint32_t DFTLEX_MAGIC = 0x201C7E96;

// Limits of the file: a line as read (larger lines arrive in pieces of
// this many bytes), a line as written, a token of the header line.
inline constexpr int16_t DFTLEX_LINE_SZ = 80;
inline constexpr int32_t DFTLEX_WRITE_LINE_SZ = 163;
inline constexpr int16_t DFTLEX_TOKEN_SZ = 10;

// A save writes the new version of the file under the file's name with
// this suffix, then renames it over the file.
inline constexpr char DFTLEX_SAVE_SUFFIX[] = ".lxsave";

// The embedded memory lexicon, as the record the memory routines take.
// They only touch the dmt member, which is exactly mem's storage.
inline LX_Lexicon *LX_DFTLex_Mem(LX_Lexicon *lex) { return reinterpret_cast<LX_Lexicon *>(&lex->dft.mem); }

int32_t LX_DFTLex_AddWord(LX_Lexicon *lex, const char *word, int16_t action, const char *otherWord);
int32_t LX_DFTLex_DelWord(LX_Lexicon *lex, const char *word);
int32_t LX_DFTLex_Clear(LX_Lexicon *lex);
int32_t LX_DFTLex_Close(LX_Lexicon *lex);

// These forward to the memory lexicon; none of them reads the file.
int16_t LX_DFTLex_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive, char *otherWord,
                           int32_t otherWordSize);
int32_t LX_DFTLex_GetImage(LX_Lexicon *lex, char *bfr, int32_t bfrSize);
int32_t LX_DFTLex_Size(LX_Lexicon *lex);
int32_t LX_DFTLex_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive,
                              SuggSet *matches);
int32_t LX_DFTLex_FindSimilar(LX_Lexicon *lex, const char *word, int32_t depth,
                              LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions);
int32_t LX_DFTLex_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit, void *ctx);

// Reads the lines of an open file into mem: with merge 0 in place of what
// mem held, with merge 1 beside it (an entry of the file replaces one of
// the same word). 0, or the code of the first line that can't be stored
// (message "Can't load %s"); mem is then empty with merge 0, and as it was
// with merge 1.
int32_t LX_DFTLex_Load(PortFile *file, LX_Lexicon *lex, int16_t merge);
// Writes the header (unless external) and every entry to path, replacing
// the file whole. 0, LX_ERR_CANT_CREATE or LX_ERR_WRITE; the file is then
// as it was.
int32_t LX_DFTLex_Save(LX_Lexicon *lex, const char *path);
// Takes up the file's words if another writer has changed it since it was
// last read or written. 0, LX_ERR_FILE_OPEN or the code of the load.
int32_t LX_DFTLex_Refresh(LX_Lexicon *lex);
// Reads the language of a header line into *lang. Always 0.
int32_t LX_DFTLex_ParseHeader(const char *line, int16_t *lang);
// Copies the next blank-separated token of s (at most dstSize - 1 bytes)
// to dst and gives the position of the first byte not copied.
const char *LX_DFTLex_NextToken(const char *s, char *dst, int16_t dstSize);

// Whether an entry, written as a line of this lexicon's file, reads back
// as the same entry. An entry that doesn't is refused by
// LX_DFTLex_AddWord.
bool LX_DFTLex_EntryReadsBack(const LX_Lexicon *lex, const char *word, int16_t action,
                              const char *otherWord);

#endif

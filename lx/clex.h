// clex.h - word forms: the form of a word that is looked up, and the form
// of a replacement that fits the text.
#ifndef LX_CLEX_H
#define LX_CLEX_H

#include "lxbase.h"

// Decodes entities (LX_OPT_MARKUP) and takes a possessive ending off
// (LX_OPT_STRIP_POSSESSIVE); out has LX_MAX_WORD_SZ bytes. Gives the length
// of out; 0 means that nothing is left to check.
int32_t LX_NormaliseWord(const char *word, uint32_t options, char *out);

// Puts the possessive ending of word (as it stood in the text) onto repl,
// a buffer of LX_MAX_WORD_SZ bytes.
void LX_RestorePossessive(const char *word, uint32_t options, char *repl);
// The same for a repl buffer of replSz bytes, which may be smaller.
void LX_RestorePossessiveIn(const char *word, uint32_t options, char *repl, int32_t replSz);

// Gives repl the case of word: mode 1 letter by letter, mode 0 by the
// word's kind (capitals, capitalised, other). With keepAccents 0, capitals
// in repl lose their accents.
void LX_TransferCase(const char *word, int16_t mode, int16_t keepAccents, char *repl);

// A segment scan's callback for lookups without regard to case: 0 if
// checkWord is keyWord but for case (LX_Str_ICmp), else 1, so that the scan
// goes through the whole segment unless it finds the word.
int32_t FCLex_CheckWordCb(const char *keyWord, const char *checkWord, void *data);

#endif

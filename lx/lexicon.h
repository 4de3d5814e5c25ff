// lexicon.h - the operations common to every kind of lexicon. Each looks at
// the record's kind and hands the call on to that kind's routine; a kind
// without routines answers LX_ERR_UNSUPPORTED.
#ifndef LX_LEXICON_H
#define LX_LEXICON_H

#include "compare.h"
#include "lxbase.h"

// Internal operations; the others are exported and declared in lxengine.h.
int16_t LX_Lexicon_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive,
                            char *otherWord, int32_t otherWordSize);

int32_t LX_Lexicon_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive,
                               SuggSet *matches);
int32_t LX_Lexicon_FindSimilar(LX_Lexicon *lex, const char *word, int32_t depth,
                               LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions);

// Hash of a word's base form: every letter by its base letter, every
// character without one by the same mark, so that all accented and case
// forms of a word share it.
uint32_t LX_BaseFormHash(const char *word);

// 0 if the lexicon certainly holds no word with this base-form hash, 1 if
// it may. Kinds that can't tell answer 1.
int LX_Lexicon_MayHoldBaseForm(LX_Lexicon *lex, uint32_t baseHash);

#endif

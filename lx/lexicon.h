// lexicon.h - the operations common to every kind of lexicon. Each looks at
// the record's kind and hands the call on to that kind's routine; a kind
// without routines answers LX_ERR_UNSUPPORTED.
#ifndef LX_LEXICON_H
#define LX_LEXICON_H

#include "lxbase.h"

// Internal operations; the others are exported and declared in lxengine.h.
int16_t LX_Lexicon_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive,
                            char *otherWord, int32_t otherWordSize);

#endif

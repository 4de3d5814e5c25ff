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

// Called with each held word of a base form; gives false to stop the walk.
using LX_BaseFormVisitor = bool (*)(void *ctx, const char *held);

// Calls visit for every word the lexicon holds that has the base form of
// word: the same length, and at every place a character of the same base
// letter in LX_FOLD_TABLE (or, like word's, of none). Every word that a
// lookup of any accent or case form of word could find is among them, so
// the accent search learns from this which of its trials can succeed.
// Every kind whose lookups can succeed must list its words here; a kind
// without routines answers LX_ERR_UNSUPPORTED, which is right only because
// its lookups can't succeed either. Gives 0 or a negative code.
int32_t LX_Lexicon_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit,
                                   void *ctx);

#endif

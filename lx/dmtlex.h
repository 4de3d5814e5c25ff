// dmtlex.h - the memory text lexicon: a sorted vector of entries, each a
// word with an action and an optional other word.
#ifndef LX_DMTLEX_H
#define LX_DMTLEX_H

#include "compare.h"
#include "lexicon.h"
#include "lxbase.h"

inline constexpr uint32_t DMTLEX_MAGIC = 0x01A5934B;

int32_t LX_DMTLex_AddWord(LX_Lexicon *lex, const char *word, int16_t action, const char *otherWord);
int32_t LX_DMTLex_DelWord(LX_Lexicon *lex, const char *word);
int32_t LX_DMTLex_Clear(LX_Lexicon *lex);
int32_t LX_DMTLex_Close(LX_Lexicon *lex);
int16_t LX_DMTLex_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive, char *otherWord,
                           int32_t otherWordSize);
// Visits every word of the lexicon with the base form of word (see
// LX_Lexicon_ForEachBaseForm). Gives 0.
int32_t LX_DMTLex_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit,
                                  void *ctx);
int32_t LX_DMTLex_GetImage(LX_Lexicon *lex, char *bfr, int32_t bfrSize);
int32_t LX_DMTLex_Size(LX_Lexicon *lex);

// Searches for suggestions: every entry with LX_ACT_IGNORE that matches
// the pattern ('?' stands for one character), or that the comparator
// scores 1 or more, goes into the set; excluded words are taken out of it;
// the stored replacement of a change entry for this very word goes in at 99.
int32_t LX_DMTLex_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive,
                              SuggSet *matches);
int32_t LX_DMTLex_FindSimilar(LX_Lexicon *lex, const char *word, int32_t depth,
                              LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions);

// Longest word the lexicon accepts: no check path can look up a longer one.
inline constexpr int32_t LX_DMTLEX_MAX_WORD = LX_MAX_WORD_SZ - 1;

#endif

// check.h - the word scanner, the word rule chain and the check driver.
#ifndef LX_CHECK_H
#define LX_CHECK_H

#include "lxbase.h"

// Scanner.
int32_t LX_SkipToWord(const char *text, int32_t cursor, uint32_t options);
int32_t LX_ExtractWord(const char *text, int32_t cursor, uint32_t options, char *word, int32_t wordSz);
// The word before cursor, found by walking back over blanks and then over
// the characters a word may hold. A run of such characters longer than
// LX_PREV_WORD_REACH is no word a writer repeats, and walking back over all
// of it at every word would make a walk over the run quadratic: then the
// word before is taken to be none (the empty text).
inline constexpr int32_t LX_PREV_WORD_REACH = 1024;
void LX_PrevTextWord(const char *text, int32_t cursor, uint32_t options, char *word, int32_t wordSz);
int LX_IsLetterEntity(const char *name);

// Rule chain.
int16_t LX_CheckWord(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                     int32_t replSz, int32_t *offset);
int16_t LX_LookupWord(const char *word, LX_Lexicon *const *lexicons, uint32_t options, char *repl,
                      int32_t replSz);
int16_t LX_FindInLexicons(const char *candidate, const char *caseWord, LX_Lexicon *const *lexicons,
                          uint32_t options, char *repl, int32_t replSz);
int16_t LX_FindInLexicon(const char *candidate, const char *caseWord, LX_Lexicon *lex,
                         uint32_t options, char *repl, int32_t replSz);
int16_t LX_ActionResult(int16_t action);
const char *LX_SplitSubWord(const char *word, uint32_t options, char *subWord);
int LX_IsIgnoredWord(const char *word, uint32_t options);
int LX_IsMixedCase(const char *word);

#endif

// check.h - the word scanner, the word rule chain and the check driver.
#ifndef LX_CHECK_H
#define LX_CHECK_H

#include "lxbase.h"

// Scanner.
int32_t LX_SkipToWord(const char *text, int32_t cursor, uint32_t options);
int32_t LX_ExtractWord(const char *text, int32_t cursor, uint32_t options, char *word, int32_t wordSz);
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

// The accent search tries the accented forms of a word in capitals one by
// one; their number grows with the product of the forms of each letter.
// When no lexicon of the list can hold any form of the word (they share
// one base form), the search is skipped. Otherwise it gives up, and the
// word stands as misspelled, once the searches for one word of the text
// (its pieces included) have cost this much: each trial counts 3 lookups in
// every lexicon of the list, and each lookup the length of the word plus 8.
// That is about a millisecond of work for a word of any length, and some
// 5,000 trials for a word of 10 letters in a list of two lexicons, more
// than the accented forms of real words need.
inline constexpr int32_t LX_ACCENT_SEARCH_BUDGET = 6000 * 88;

#endif

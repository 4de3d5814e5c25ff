// lexicon.cpp - dispatch of the lexicon operations on the record's kind.
//
// The dispatch keeps no state and writes no message: a kind without
// routines (including none, and LEX_MC) gets LX_ERR_UNSUPPORTED and the
// record stays as it was; every other result comes from the kind's routine
// unchanged.
#include "lexicon.h"

#include "chartab.h"
#include "dftlex.h"
#include "dmtlex.h"
#include "fclex.h"

extern "C" LX_API int32_t LX_Lexicon_AddWord(LX_Lexicon *lex, const char *word, int16_t action,
                                             const char *otherWord) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_AddWord(lex, word, action, otherWord);
    case LEX_DFT: return LX_DFTLex_AddWord(lex, word, action, otherWord);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_DelWord(LX_Lexicon *lex, const char *word) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_DelWord(lex, word);
    case LEX_DFT: return LX_DFTLex_DelWord(lex, word);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_Clear(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_Clear(lex);
    case LEX_DFT: return LX_DFTLex_Clear(lex);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_Close(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_Close(lex);
    case LEX_DFT: return LX_DFTLex_Close(lex);
    case LEX_FC: return LX_FCLex_Close(lex);
    default: return LX_ERR_UNSUPPORTED;
    }
}

int16_t LX_Lexicon_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive,
                            char *otherWord, int32_t otherWordSize) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_FindWord(lex, word, caseSensitive, otherWord, otherWordSize);
    case LEX_DFT: return LX_DFTLex_FindWord(lex, word, caseSensitive, otherWord, otherWordSize);
    case LEX_FC: return LX_FCLex_FindWord(lex, word, caseSensitive, otherWord, otherWordSize);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_GetImage(LX_Lexicon *lex, char *bfr, int32_t bfrSize) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_GetImage(lex, bfr, bfrSize);
    case LEX_DFT: return LX_DFTLex_GetImage(lex, bfr, bfrSize);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_Size(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_Size(lex);
    case LEX_DFT: return LX_DFTLex_Size(lex);
    default: return LX_ERR_UNSUPPORTED;
    }
}

int32_t LX_Lexicon_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive,
                               SuggSet *matches) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_FindPattern(lex, pattern, caseSensitive, matches);
    case LEX_DFT: return LX_DFTLex_FindPattern(lex, pattern, caseSensitive, matches);
    case LEX_FC: return LX_FCLex_FindPattern(lex, pattern, caseSensitive, matches);
    default: return LX_ERR_UNSUPPORTED;
    }
}

int32_t LX_Lexicon_FindSimilar(LX_Lexicon *lex, const char *word, int32_t depth,
                               LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_FindSimilar(lex, word, depth, wordComparatorCb, suggestions);
    case LEX_DFT: return LX_DFTLex_FindSimilar(lex, word, depth, wordComparatorCb, suggestions);
    case LEX_FC: return LX_FCLex_FindSimilar(lex, word, depth, wordComparatorCb, suggestions);
    default: return LX_ERR_UNSUPPORTED;
    }
}

int32_t LX_Lexicon_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit,
                                   void *ctx) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_ForEachBaseForm(lex, word, visit, ctx);
    case LEX_DFT: return LX_DFTLex_ForEachBaseForm(lex, word, visit, ctx);
    case LEX_FC: return LX_FCLex_ForEachBaseForm(lex, word, visit, ctx);
    default: return LX_ERR_UNSUPPORTED;
    }
}

// lexicon.cpp - dispatch of the lexicon operations on the record's kind.
//
// The dispatch keeps no state and writes no message: a kind without
// routines (including none, and LEX_MC) gets LX_ERR_UNSUPPORTED and the
// record stays as it was; every other result comes from the kind's routine
// unchanged.
#include "lexicon.h"

#include "chartab.h"
#include "dmtlex.h"

extern "C" LX_API int32_t LX_Lexicon_AddWord(LX_Lexicon *lex, const char *word, int16_t action,
                                             const char *otherWord) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_AddWord(lex, word, action, otherWord);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_DelWord(LX_Lexicon *lex, const char *word) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_DelWord(lex, word);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_Clear(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_Clear(lex);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_Close(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_Close(lex);
    default: return LX_ERR_UNSUPPORTED;
    }
}

int16_t LX_Lexicon_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive,
                            char *otherWord, int32_t otherWordSize) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_FindWord(lex, word, caseSensitive, otherWord, otherWordSize);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_GetImage(LX_Lexicon *lex, char *bfr, int32_t bfrSize) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_GetImage(lex, bfr, bfrSize);
    default: return LX_ERR_UNSUPPORTED;
    }
}

extern "C" LX_API int32_t LX_Lexicon_Size(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_Size(lex);
    default: return LX_ERR_UNSUPPORTED;
    }
}

int32_t LX_Lexicon_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive,
                               SuggSet *matches) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_FindPattern(lex, pattern, caseSensitive, matches);
    default: return LX_ERR_UNSUPPORTED;
    }
}

int32_t LX_Lexicon_FindSimilar(LX_Lexicon *lex, const char *word, int32_t depth,
                               LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_FindSimilar(lex, word, depth, wordComparatorCb, suggestions);
    default: return LX_ERR_UNSUPPORTED;
    }
}

uint32_t LX_BaseFormHash(const char *word) {
    uint32_t h = 2166136261u;
    for (const uchar *p = reinterpret_cast<const uchar *>(word); *p; ++p) {
        uchar base = lx_fold(*p);
        h = (h ^ (base != 0 ? base : 1u)) * 16777619u;
    }
    return h;
}

int32_t LX_Lexicon_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit,
                                   void *ctx) {
    LX_ASSERT(lex != NULL);
    switch (lex->kind) {
    case LEX_DMT: return LX_DMTLex_ForEachBaseForm(lex, word, visit, ctx);
    default: return LX_ERR_UNSUPPORTED;
    }
}

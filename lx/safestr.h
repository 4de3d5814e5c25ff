// safestr.h - bounded string routines. Every copy into a word buffer goes
// through them; a text too long for its buffer is cut, never overrun.
#ifndef LX_SAFESTR_H
#define LX_SAFESTR_H

#include "lxbase.h"

int32_t LX_Str_Len(const char *text);
void LX_Str_Copy(char *dst, int32_t dstSize, const char *src);
void LX_Str_CopyN(char *dst, int32_t dstSize, const char *src, int32_t maxChars);
void LX_Str_Cat(char *dst, int32_t dstSize, const char *src);
void LX_Str_CatChar(char *dst, int32_t dstSize, char ch);
const char *LX_Str_Chr(const char *text, char ch);
const char *LX_Str_RChr(const char *text, char ch);
int16_t LX_Str_Cmp(const char *a, const char *b);
int16_t LX_Str_ICmp(const char *a, const char *b);
char *LX_Str_Dup(const char *text);
void LX_Str_FromInt(int32_t value, char *dst, int32_t dstSize);
int32_t LX_Str_ToInt(const char *text);
uchar LX_Char_NextVariant(uchar base, uchar after);

#endif

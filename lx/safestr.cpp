// safestr.cpp - bounded copies, comparisons by unsigned byte, number
// conversions and the walk over the accented forms of a base letter.
// None of these routines tests its pointers; only LX_Str_Dup allocates.
#include "safestr.h"

#include <cstring>

#include "chartab.h"
#include "platform.h"

int32_t LX_Str_Len(const char *text) { return static_cast<int32_t>(std::strlen(text)); }

void LX_Str_Copy(char *dst, int32_t dstSize, const char *src) {
    const size_t n = dstSize > 1 ? strnlen(src, static_cast<size_t>(dstSize) - 1) : 0;
    std::memmove(dst, src, n); // callers may copy a string onto a part of itself
    dst[n] = '\0';
}

void LX_Str_CopyN(char *dst, int32_t dstSize, const char *src, int32_t maxChars) {
    int32_t limit = dstSize - 1 < maxChars ? dstSize - 1 : maxChars;
    int32_t i = 0;
    for (; i < limit && src[i] != '\0'; ++i) dst[i] = src[i];
    dst[i] = '\0';
}

void LX_Str_Cat(char *dst, int32_t dstSize, const char *src) {
    int32_t len = LX_Str_Len(dst);
    LX_Str_Copy(dst + len, dstSize - len, src);
}

void LX_Str_CatChar(char *dst, int32_t dstSize, char ch) {
    int32_t len = LX_Str_Len(dst);
    if (len + 1 < dstSize) {
        dst[len] = ch;
        dst[len + 1] = '\0';
    }
}

const char *LX_Str_Chr(const char *text, char ch) {
    for (;; ++text) {
        if (*text == ch) return text;
        if (*text == '\0') return nullptr;
    }
}

const char *LX_Str_RChr(const char *text, char ch) {
    for (const char *p = text + LX_Str_Len(text); p > text;) {
        --p;
        if (*p == ch) return p;
    }
    return nullptr;
}

int16_t LX_Str_Cmp(const char *a, const char *b) {
    const uchar *pa = reinterpret_cast<const uchar *>(a);
    const uchar *pb = reinterpret_cast<const uchar *>(b);
    while (*pa == *pb) {
        if (*pa == 0) return 0;
        ++pa;
        ++pb;
    }
    return *pa > *pb ? 1 : -1;
}

int16_t LX_Str_ICmp(const char *a, const char *b) {
    const uchar *pa = reinterpret_cast<const uchar *>(a);
    const uchar *pb = reinterpret_cast<const uchar *>(b);
    for (;; ++pa, ++pb) {
        uchar ca = lx_to_lower(*pa), cb = lx_to_lower(*pb);
        if (ca != cb) return ca > cb ? 1 : -1;
        if (ca == 0) return 0;
    }
}

char *LX_Str_Dup(const char *text) {
    size_t n = std::strlen(text) + 1;
    char *copy = static_cast<char *>(LX_MEM_ALLOC(n));
    if (copy) std::memcpy(copy, text, n);
    return copy;
}

void LX_Str_FromInt(int32_t value, char *dst, int32_t dstSize) {
    // Work on the magnitude as unsigned, so that the most negative value
    // has a defined form too.
    uint32_t mag = value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
    int32_t n = 0;
    do {
        dst[n++] = static_cast<char>('0' + mag % 10);
        mag /= 10;
    } while (mag != 0 && n < dstSize - 1);
    if (value < 0 && n < dstSize - 1) dst[n++] = '-';
    dst[n] = '\0';
    for (int32_t i = 0, j = n - 1; i < j; ++i, --j) {
        char t = dst[i];
        dst[i] = dst[j];
        dst[j] = t;
    }
}

int32_t LX_Str_ToInt(const char *text) {
    const uchar *p = reinterpret_cast<const uchar *>(text);
    uint32_t sign = 1;
    if (*p == '-') {
        sign = 0u - 1u;
        ++p;
    }
    uint32_t value = 0; // unsigned so that overflow wraps without undefined behaviour
    for (; *p >= '0' && *p <= '9'; ++p) value = value * 10u + (*p - '0');
    return static_cast<int32_t>(sign * value);
}

uchar LX_Char_NextVariant(uchar base, uchar after) {
    for (int c = after + 1; c <= 255; ++c)
        if (LX_FOLD_TABLE[c] == base) return static_cast<uchar>(c);
    return 0;
}

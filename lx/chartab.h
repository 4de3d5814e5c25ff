// chartab.h - the character tables: class bits, folding to base letters,
// and the table of HTML letter entities. Every test of a character in the
// engine goes through these tables, never through the C library's ctype.
#ifndef LX_CHARTAB_H
#define LX_CHARTAB_H

#include "lxbase.h"

enum : uchar {
    LX_CC_ALPHA = 1,  // letter
    LX_CC_DIGIT = 2,  // digit
    LX_CC_PUNCT = 4,  // punctuation or symbol
    LX_CC_SPACE = 8,  // blank, tab, line feed, carriage return
    LX_CC_LOWER = 16, // lower-case letter
    LX_CC_UPPER = 32, // capital letter
    LX_CC_VOWEL = 64, // vowel
};

// Class and folding tables of ISO 8859-1, 256 entries each.
extern const uchar *const LX_CLASS_TABLE;
extern const uchar *const LX_FOLD_TABLE;

// One row of the entity table: name (NUL-filled) and character.
struct LX_EntityRow {
    char name[7];
    uchar ch;
};
inline constexpr int LX_ENTITY_COUNT = 62;
extern const LX_EntityRow LX_ENTITY_TABLE[LX_ENTITY_COUNT];

inline uchar lx_class(uchar c) { return LX_CLASS_TABLE[c]; }
inline uchar lx_fold(uchar c) { return LX_FOLD_TABLE[c]; }
inline bool lx_is_alnum(uchar c) { return (LX_CLASS_TABLE[c] & (LX_CC_ALPHA | LX_CC_DIGIT)) != 0; }
inline bool lx_is_upper(uchar c) { return (LX_CLASS_TABLE[c] & LX_CC_UPPER) != 0; }
inline bool lx_is_lower(uchar c) { return (LX_CLASS_TABLE[c] & LX_CC_LOWER) != 0; }
inline bool lx_is_alpha(uchar c) { return (LX_CLASS_TABLE[c] & LX_CC_ALPHA) != 0; }
inline bool lx_is_digit(uchar c) { return (LX_CLASS_TABLE[c] & LX_CC_DIGIT) != 0; }
inline bool lx_is_vowel(uchar c) { return (LX_CLASS_TABLE[c] & LX_CC_VOWEL) != 0; }
inline bool lx_is_space(uchar c) { return (LX_CLASS_TABLE[c] & LX_CC_SPACE) != 0; }

// Case conversion: arithmetic guarded by the class bits.
inline uchar lx_to_lower(uchar c) { return lx_is_upper(c) ? static_cast<uchar>(c + 32) : c; }
inline uchar lx_to_upper(uchar c) { return lx_is_lower(c) ? static_cast<uchar>(c - 32) : c; }

// Entity lookup: the character for name (cut to 6 characters), or -1.
int LX_Entity_Find(const char *name);

// Comparator of a key text and a row of LX_ENTITY_TABLE, for bsearch.
int32_t LX_Entity_Compare(const void *key, const void *row);

#endif

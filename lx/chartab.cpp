// chartab.cpp - the class table, the folding table and the entity table of
// ISO 8859-1. The tables are built at compile time from the ranges below,
// so they are constant data shared by every thread.
#include "chartab.h"

#include <cstdlib>
#include <initializer_list>

#include "safestr.h"

namespace {

struct Tables {
    uchar cls[256];
    uchar fold[256];
};

constexpr void set_range(uchar *t, int from, int to, uchar v) {
    for (int c = from; c <= to; ++c) t[c] = v;
}

constexpr Tables build_tables() {
    Tables t{};
    constexpr uchar AU = LX_CC_ALPHA | LX_CC_UPPER;
    constexpr uchar AL = LX_CC_ALPHA | LX_CC_LOWER;
    constexpr uchar V = LX_CC_VOWEL;

    // Classes.
    set_range(t.cls, 0x09, 0x0A, LX_CC_SPACE);
    t.cls[0x0D] = LX_CC_SPACE;
    t.cls[0x20] = LX_CC_SPACE;
    set_range(t.cls, 0x21, 0x2F, LX_CC_PUNCT);
    set_range(t.cls, 0x3A, 0x40, LX_CC_PUNCT);
    set_range(t.cls, 0x5B, 0x60, LX_CC_PUNCT);
    set_range(t.cls, 0x7B, 0x7F, LX_CC_PUNCT);
    set_range(t.cls, '0', '9', LX_CC_DIGIT);
    set_range(t.cls, 'A', 'Z', AU);
    set_range(t.cls, 'a', 'z', AL);
    for (char c : {'A', 'E', 'I', 'O', 'U', 'a', 'e', 'i', 'o', 'u'})
        t.cls[static_cast<uchar>(c)] |= V;
    set_range(t.cls, 0x92, 0x9C, LX_CC_PUNCT);
    set_range(t.cls, 0xA1, 0xBF, LX_CC_PUNCT);
    set_range(t.cls, 0xC0, 0xDE, AU | V);
    for (int c : {0xC7, 0xD0, 0xD1, 0xDD, 0xDE}) t.cls[c] = AU;
    t.cls[0xD7] = LX_CC_PUNCT;
    t.cls[0xDF] = AL;
    set_range(t.cls, 0xE0, 0xFF, AL | V);
    for (int c : {0xE7, 0xF1, 0xFD, 0xFE, 0xFF}) t.cls[c] = AL;
    t.cls[0xF7] = LX_CC_PUNCT;

    // Folding to the base letter, in capitals.
    for (int c = 'A'; c <= 'Z'; ++c) {
        t.fold[c] = static_cast<uchar>(c);
        t.fold[c + 32] = static_cast<uchar>(c);
    }
    struct Fam {
        int from, to;
        uchar base;
    };
    constexpr Fam fams[] = {{0xC0, 0xC6, 'A'}, {0xC7, 0xC7, 'C'}, {0xC8, 0xCB, 'E'},
                            {0xCC, 0xCF, 'I'}, {0xD1, 0xD1, 'N'}, {0xD2, 0xD6, 'O'},
                            {0xD8, 0xD8, 'O'}, {0xD9, 0xDC, 'U'}, {0xDD, 0xDD, 'Y'}};
    for (const Fam &f : fams) {
        set_range(t.fold, f.from, f.to, f.base);
        set_range(t.fold, f.from + 32, f.to + 32, f.base);
    }
    t.fold[0xFF] = 'Y';
    t.fold[0xDF] = 'S';
    return t;
}

constexpr Tables kTables = build_tables();

static_assert(kTables.cls[0x65] == 81 && kTables.cls[0x5A] == 33 && kTables.cls[0xC9] == 97);
static_assert(kTables.cls[0xDF] == 17 && kTables.cls[0xA0] == 0 && kTables.cls[0x92] == 4);
static_assert(kTables.fold[0xE9] == 'E' && kTables.fold[0xF0] == 0 && kTables.fold[0xFF] == 'Y');

} // namespace

const uchar *const LX_CLASS_TABLE = kTables.cls;
const uchar *const LX_FOLD_TABLE = kTables.fold;

// Sorted by name in byte order, capitals first.
const LX_EntityRow LX_ENTITY_TABLE[LX_ENTITY_COUNT] = {
    {"AElig", 198},  {"Aacute", 193}, {"Acirc", 194},  {"Agrave", 192}, {"Aring", 197},
    {"Atilde", 195}, {"Auml", 196},   {"Ccedil", 199}, {"ETH", 208},    {"Eacute", 201},
    {"Ecirc", 202},  {"Egrave", 200}, {"Euml", 203},   {"Iacute", 205}, {"Icirc", 206},
    {"Igrave", 204}, {"Iuml", 207},   {"Ntilde", 209}, {"Oacute", 211}, {"Ocirc", 212},
    {"Ograve", 210}, {"Oslash", 216}, {"Otilde", 213}, {"Ouml", 214},   {"THORN", 222},
    {"Uacute", 218}, {"Ucirc", 219},  {"Ugrave", 217}, {"Uuml", 220},   {"Yacute", 221},
    {"aacute", 225}, {"acirc", 226},  {"aelig", 230},  {"agrave", 224}, {"aring", 229},
    {"atilde", 227}, {"auml", 228},   {"ccedil", 231}, {"eacute", 233}, {"ecirc", 234},
    {"egrave", 232}, {"eth", 240},    {"euml", 235},   {"iacute", 237}, {"icirc", 238},
    {"igrave", 236}, {"iuml", 239},   {"ntilde", 241}, {"oacute", 243}, {"ocirc", 244},
    {"ograve", 242}, {"oslash", 248}, {"otilde", 245}, {"ouml", 246},   {"szlig", 223},
    {"thorn", 254},  {"uacute", 250}, {"ucirc", 251},  {"ugrave", 249}, {"uuml", 252},
    {"yacute", 253}, {"yuml", 255},
};

int32_t LX_Entity_Compare(const void *key, const void *row) {
    return LX_Str_Cmp(static_cast<const char *>(key),
                      static_cast<const LX_EntityRow *>(row)->name);
}

int LX_Entity_Find(const char *name) {
    char key[7];
    LX_Str_Copy(key, sizeof key, name);
    const void *hit = std::bsearch(key, LX_ENTITY_TABLE, LX_ENTITY_COUNT, sizeof(LX_EntityRow),
                                   [](const void *k, const void *r) -> int {
                                       return LX_Entity_Compare(k, r);
                                   });
    return hit ? static_cast<const LX_EntityRow *>(hit)->ch : -1;
}

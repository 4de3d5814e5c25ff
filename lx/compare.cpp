// compare.cpp - the word comparators and the phonetic key.
//
// The typographic comparator walks both words in step and credits each
// position: a full 100 for the same character, a little less for a
// difference of case or accent, set credits for a swapped pair, a letter
// too many or a doubled letter, and the letter matrix for a substitution.
// The score is the mean credit per position. Every test of a character
// goes through the class and folding tables.
#include "compare.h"

#include <cstring>

#include "chartab.h"

namespace {

// Longest text the comparators take (80 characters of a word, or a word
// divided in two with a space between the halves), and room for its key.
constexpr int kMaxText = LX_MAX_WORD_SZ;
constexpr int kMaxKey = 2 * kMaxText + 1;

inline const uchar *bytes(const char *s) { return reinterpret_cast<const uchar *>(s); }

// Credit for a word's letter doubled where the other word has it once.
inline int doubled_credit(bool vowel) { return vowel ? 75 : 80; }

// The credit for two different characters of the same base letter: 100,
// less 5 where one is small and the other not, less 5 more where they
// differ beyond their case (an accent).
inline int same_base_credit(uchar ca, uchar cb) {
    const uchar clsA = LX_CLASS_TABLE[ca];
    const uchar clsB = LX_CLASS_TABLE[cb];
    int credit = 100;
    if (((clsA ^ clsB) & LX_CC_LOWER) != 0) credit -= 5;
    const uchar lowA = (clsA & LX_CC_UPPER) ? static_cast<uchar>(ca + 0x20) : ca;
    const uchar lowB = (clsB & LX_CC_UPPER) ? static_cast<uchar>(cb + 0x20) : cb;
    if (lowA != lowB) credit -= 5;
    return credit;
}

} // namespace

int16_t LX_Compare_Typographic(const char *a, const char *b) {
    const uchar *const cls = LX_CLASS_TABLE;
    const uchar *const fold = LX_FOLD_TABLE;
    const uchar *const startA = bytes(a);
    const uchar *const startB = bytes(b);
    const uchar *pa = startA;
    const uchar *pb = startB;
    if (*pa == 0) return 0;

    // In 64 bits: a caller may compare words of any length.
    int64_t sum = 0;
    int64_t n = 0;
    while (*pa != 0 && *pb != 0) {
        ++n;
        const uchar ca = *pa;
        const uchar cb = *pb;
        if (ca == cb) {
            sum += 100;
            ++pa;
            ++pb;
            continue;
        }
        const uchar fa = fold[ca];
        const uchar fb = fold[cb];
        if (fa == fb) {
            // The same base letter in another case or accent; also any two
            // characters without a base letter, such as a digit and a hyphen.
            sum += same_base_credit(ca, cb);
            ++pa;
            ++pb;
            continue;
        }
        // Neither text has ended here, so the next byte of each is readable
        // (it may be the terminator, whose base letter is 0).
        const uchar fa1 = fold[pa[1]];
        const uchar fb1 = fold[pb[1]];
        if (fa1 != 0 && fb1 != 0 && fa1 == fb && fb1 == fa) {
            // Swapped pair: it spans two positions.
            const bool va = lx_is_vowel(fa);
            const bool vb = lx_is_vowel(fb);
            sum += (va && vb) ? 160 : (va || vb) ? 120 : 150;
            ++n;
            pa += 2;
            pb += 2;
        } else if (fa1 != 0 && fa1 == fb) {
            // a has a letter too many; more credit when it doubles a letter
            // that both words have just had.
            if (n > 1 && pa > startA && pb > startB && ca == pa[-1] && ca == pb[-1])
                sum += doubled_credit(lx_is_vowel(ca));
            else
                sum += 50;
            ++pa;
        } else if (fb1 != 0 && fb1 == fa) {
            // b has a letter too many.
            if (n > 1 && pa > startA && pb > startB && cb == pb[-1] && cb == pa[-1])
                sum += doubled_credit(lx_is_vowel(fb));
            else
                sum += 50;
            ++pb;
        } else {
            // Substitution. Letters without a base letter (eth, thorn) have no
            // place in the matrix and earn nothing, like non-letters.
            if ((cls[ca] & cls[cb] & LX_CC_ALPHA) != 0 && fa != 0 && fb != 0)
                sum += LX_LetterMatrix[fa - 'A'][fb - 'A'];
            ++pa;
            ++pb;
        }
    }
    if (sum <= 0) return 0;

    // What is left of the longer text counts half a match per character.
    for (; *pa != 0; ++pa, ++n) sum += 50;
    for (; *pb != 0; ++pb, ++n) sum += 50;
    return static_cast<int16_t>(sum / n);
}

bool LX_TypoScan_Start(LX_TypoScan *scan, const char *a) {
    const size_t len = std::strlen(a);
    if (len > static_cast<size_t>(LX_TypoScan::kMaxLen)) return false;
    scan->a = bytes(a);
    scan->lenA = static_cast<int32_t>(len);
    scan->steps = 0;
    scan->offA[0] = scan->offB[0] = 0;
    scan->sum[0] = scan->n[0] = 0;
    return true;
}

int16_t LX_TypoScan_Score(LX_TypoScan *scan, const char *b, int32_t lenB, int32_t shared, int32_t floor) {
    const uchar *const cls = LX_CLASS_TABLE;
    const uchar *const fold = LX_FOLD_TABLE;
    const uchar *const pa = scan->a;
    const uchar *const pb = bytes(b);
    const int32_t lenA = scan->lenA;
    if (lenA == 0) return 0;

    // The last state that b shares with the word before: every step up to
    // it read b only below shared (a step reads its own byte and the next).
    int32_t j = shared > 1 ? scan->steps : 0;
    while (j > 0 && scan->offB[j - 1] + 1 >= shared) --j;
    int32_t ia = scan->offA[j], ib = scan->offB[j], sum = scan->sum[j], n = scan->n[j];

    // Whether the best that the rest of the words can bring leaves the
    // score at floor or below (see LX_TypoScan).
    const bool bounded = floor >= 59;
    const int32_t limit = floor + 1;
    auto hopeless = [&]() {
        // Positions both words still have earn 100, the others 80.
        const int32_t ra = lenA - ia, rb = lenB - ib;
        const int32_t both = ra < rb ? ra : rb, all = ra < rb ? rb : ra;
        return sum + 20 * both + 80 * all < limit * (n + all);
    };
    if (bounded && hopeless()) {
        scan->steps = j;
        return 0;
    }

    // The steps of LX_Compare_Typographic, each state kept.
    while (ia < lenA && ib < lenB) {
        ++n;
        const uchar ca = pa[ia];
        const uchar cb = pb[ib];
        bool full = false;
        if (ca == cb) {
            sum += 100;
            ++ia;
            ++ib;
            full = true;
        } else {
            const uchar fa = fold[ca];
            const uchar fb = fold[cb];
            if (fa == fb) {
                const int32_t credit = same_base_credit(ca, cb);
                sum += credit;
                ++ia;
                ++ib;
                full = credit == 100;
            } else {
                const uchar fa1 = fold[pa[ia + 1]];
                const uchar fb1 = fold[pb[ib + 1]];
                if (fa1 != 0 && fb1 != 0 && fa1 == fb && fb1 == fa) {
                    const bool va = lx_is_vowel(fa);
                    const bool vb = lx_is_vowel(fb);
                    sum += (va && vb) ? 160 : (va || vb) ? 120 : 150;
                    ++n;
                    ia += 2;
                    ib += 2;
                } else if (fa1 != 0 && fa1 == fb) {
                    if (n > 1 && ia > 0 && ib > 0 && ca == pa[ia - 1] && ca == pb[ib - 1])
                        sum += doubled_credit(lx_is_vowel(ca));
                    else
                        sum += 50;
                    ++ia;
                } else if (fb1 != 0 && fb1 == fa) {
                    if (n > 1 && ia > 0 && ib > 0 && cb == pb[ib - 1] && cb == pa[ia - 1])
                        sum += doubled_credit(lx_is_vowel(fb));
                    else
                        sum += 50;
                    ++ib;
                } else {
                    if ((cls[ca] & cls[cb] & LX_CC_ALPHA) != 0 && fa != 0 && fb != 0)
                        sum += LX_LetterMatrix[fa - 'A'][fb - 'A'];
                    ++ia;
                    ++ib;
                }
            }
        }
        ++j;
        scan->offA[j] = static_cast<uint8_t>(ia);
        scan->offB[j] = static_cast<uint8_t>(ib);
        scan->sum[j] = sum;
        scan->n[j] = n;
        // A full match leaves the bound where it was.
        if (!full && bounded && hopeless()) {
            scan->steps = j;
            return 0;
        }
    }
    scan->steps = j;
    if (sum <= 0) return 0;
    const int32_t left = (lenA - ia) + (lenB - ib);
    return static_cast<int16_t>((sum + 50 * left) / (n + left));
}

void LX_PhoneticKey(const char *word, char *key) {
    const uchar *const w = bytes(word);
    const uchar *const cls = LX_CLASS_TABLE;
    // The end of the word (0) has no class, so it is never a vowel.
    auto vowel = [cls](uchar c) { return (cls[c] & LX_CC_VOWEL) != 0; };
    char *k = key;

    // The start of the word.
    int p = 0;
    const uchar c0 = w[0];
    const uchar c1 = c0 != 0 ? w[1] : 0;
    switch (c0) {
    case 'a':
        if (c1 == 'e') {
            *k++ = 'E';
            p = 2;
        } else {
            *k++ = 'A';
            p = 1;
        }
        break;
    case 'e':
    case 'i':
    case 'o':
    case 'u':
        *k++ = static_cast<char>(c0 - 0x20);
        p = 1;
        break;
    case 'g':
    case 'k':
    case 'p':
        if (c1 == 'n') {
            *k++ = 'N';
            p = 2;
        }
        break;
    case 'w':
        if (c1 == 'r') {
            *k++ = 'R';
            p = 2;
        }
        if (w[p] != 0 && w[p + 1] == 'h') {
            *k++ = 'H';
            p += 2;
        }
        break;
    case 'x':
        *k++ = 'S';
        p = 1;
        break;
    default:
        break;
    }

    // The rest of the word. Inside the loop w[p] is not the end, so w[p + 1]
    // is readable; n2, two behind p, is read only when n1 isn't the end.
    while (w[p] != 0) {
        // A doubled letter is coded once, but "cc" and "gg" have rules of
        // their own.
        if (w[p] == w[p + 1]) {
            if (w[p] == 'c') {
                *k++ = 'K';
                *k++ = 'K';
                p += 2;
            } else if (w[p] == 'g') {
                *k++ = 'K';
                p += 2;
            } else {
                p += 1;
            }
            if (w[p] == 0) break;
        }

        const uchar c = w[p];
        const uchar n1 = w[p + 1];
        const uchar n2 = n1 != 0 ? w[p + 2] : 0;
        int used = 1;
        switch (c) {
        case 'b':
            *k++ = 'B';
            break;
        case 'c':
            if (n1 == 'i' && n2 == 'a') {
                *k++ = 'X';
                used = 3;
            } else if (n1 == 'i' || n1 == 'e' || n1 == 'y') {
                *k++ = 'S';
                used = 2;
            } else if (n1 == 'k') {
                *k++ = 'K';
                used = 2;
            } else {
                *k++ = 'K';
            }
            break;
        case 'd':
            if (n1 == 'g' && (n2 == 'e' || n2 == 'y' || n2 == 'i')) {
                *k++ = 'J';
                used = 3;
            } else {
                *k++ = 'T';
            }
            break;
        case 'f':
        case 'v':
            *k++ = 'F';
            break;
        case 'g':
            if (n1 == 'h' && (n2 == 0 || vowel(n2))) {
                *k++ = 'K';
                used = 2;
            } else if (n1 == 'n') {
                *k++ = 'N';
                used = 2;
            } else if (n1 == 'g') {
                *k++ = 'K';
                used = 2;
            } else if (n1 == 'i' || n1 == 'e' || n1 == 'y') {
                *k++ = 'J';
                used = 2;
            } else {
                *k++ = 'K';
            }
            break;
        case 'h':
            // Silent after a vowel when no vowel follows ("ah", "oht").
            if (!(p > 0 && vowel(w[p - 1]) && !vowel(n1))) *k++ = 'H';
            break;
        case 'j':
            *k++ = 'J';
            break;
        case 'k':
        case 'q':
            *k++ = 'K';
            break;
        case 'l':
            *k++ = 'L';
            break;
        case 'm':
            *k++ = 'M';
            if (n1 == 'b' && n2 == 0) used = 2;
            break;
        case 'n':
            *k++ = 'N';
            break;
        case 'p':
            if (n1 == 'h') {
                *k++ = 'F';
                used = 2;
            } else {
                *k++ = 'P';
            }
            break;
        case 'r':
            *k++ = 'R';
            break;
        case 's':
            if (n1 == 'h') {
                *k++ = 'X';
                used = 2;
            } else if (n1 == 'i' && (n2 == 'o' || n2 == 'a')) {
                *k++ = 'X';
                used = 3;
            } else if (n1 == 'c' && n2 == 'h') {
                *k++ = 'S';
                *k++ = 'K';
                used = 3;
            } else {
                *k++ = 'S';
            }
            break;
        case 't':
            if (n1 == 'h') {
                *k++ = '0';
                used = 2;
            } else if ((n1 == 'i' && (n2 == 'o' || n2 == 'a')) || (n1 == 'c' && n2 == 'h')) {
                *k++ = 'X';
                used = 3;
            } else {
                *k++ = 'T';
            }
            break;
        case 'w':
            if (vowel(n1)) *k++ = 'W';
            break;
        case 'x':
            *k++ = 'K';
            *k++ = 'S';
            break;
        case 'y':
            if (vowel(n1)) *k++ = 'Y';
            break;
        case 'z':
            *k++ = 'S';
            break;
        default:
            // Vowels, capitals, accented letters, digits and the rest.
            break;
        }
        p += used;
    }
    *k = '\0';
}

int16_t LX_Compare_Phonetic(const char *a, const char *b) {
    // Keys are made from lower-case copies, as only lower-case letters have
    // rules; the texts are cut to the longest the comparators take.
    auto lower_copy = [](const char *src, char *dst) {
        int i = 0;
        for (; i < kMaxText && src[i] != '\0'; ++i)
            dst[i] = static_cast<char>(lx_to_lower(lx_byte(src[i])));
        dst[i] = '\0';
    };
    // A sweep compares one word with every word of a lexicon, so the key
    // of a is kept for the next call (per thread: calls on different
    // lexicons may run side by side).
    thread_local char lastA[kMaxText + 1] = "";
    thread_local char keyA[kMaxKey] = "";
    thread_local bool haveKeyA = false;
    char lowA[kMaxText + 1];
    lower_copy(a, lowA);
    if (!haveKeyA || std::strcmp(lowA, lastA) != 0) {
        LX_PhoneticKey(lowA, keyA);
        std::strcpy(lastA, lowA); // both hold at most kMaxText characters
        haveKeyA = true;
    }

    char lowB[kMaxText + 1];
    char keyB[kMaxKey];
    lower_copy(b, lowB);
    LX_PhoneticKey(lowB, keyB);

    // One key must equal the other or be the start of it.
    int i = 0;
    while (keyA[i] != '\0' && keyA[i] == keyB[i]) ++i;
    if (keyA[i] != '\0' && keyB[i] != '\0') return 0;
    return LX_Compare_Typographic(a, b);
}

int16_t LX_Match_Pattern(const char *pattern, const char *word) {
    const uchar *p = bytes(pattern);
    const uchar *w = bytes(word);
    for (; *p != 0 && *w != 0; ++p, ++w)
        if (*p != '?' && *p != *w) return 0;
    return (*p == 0 && *w == 0) ? 100 : 0;
}

int16_t LX_Match_PatternNoCase(const char *pattern, const char *word) {
    const uchar *p = bytes(pattern);
    const uchar *w = bytes(word);
    for (; *p != 0 && *w != 0; ++p, ++w)
        if (*p != '?' && lx_to_lower(*p) != lx_to_lower(*w)) return 0;
    return (*p == 0 && *w == 0) ? 100 : 0;
}

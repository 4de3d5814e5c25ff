// mclex.cpp - coding and decoding of a segment's word records.
//
// The decoder works in place in curWord: a record rewrites only what lies
// behind its shared bytes, so a word costs what differs from the word
// before it. It trusts nothing in the segment: every shared count, code and
// extended number is checked against the previous tail, the tables and the
// word buffer before it is acted on, and every byte is read only inside the
// segment. A record that fails a check ends the pass; nothing is allocated.
#include "mclex.h"

#include <algorithm>
#include <cstring>

#include "chartab.h"

namespace {

constexpr int32_t kTailStart = static_cast<int32_t>(LXC_KEY_SZ);

// Entries that a record can reach: the simple codes stop at 0x1F and the
// extended numbers at 254, whatever a table holds beyond them.
int32_t reachable(const MCSuffixTable *table, int32_t limit) {
    return table->count < limit ? table->count : limit;
}

int16_t damaged(MCDecoder *dec, char *out) {
    *out = '\0';
    dec->pos = dec->end;
    return LX_ERR_BAD_FORMAT;
}

// The number of the first entry equal to rest, or -1.
int32_t find_entry(const MCSuffixTable *table, int32_t limit, const char *rest) {
    const int32_t n = reachable(table, limit);
    for (int32_t i = 0; i < n; ++i) {
        const char *entry = table->entries[i];
        if (entry[0] == rest[0] && std::strcmp(entry, rest) == 0) return i;
    }
    return -1;
}

int32_t suffix_length(const MCSuffixTable *table, int32_t i) {
    return table->lengths != nullptr ? table->lengths[i] : static_cast<int32_t>(std::strlen(table->entries[i]));
}

// The first two bytes of a tail, as a jump keeps them.
uint32_t two_bytes(const uchar *tail) { return static_cast<uint32_t>(tail[0]) << 8 | (tail[0] != 0 ? tail[1] : 0); }

template <bool NoCase>
bool same_byte(uchar a, uchar b) {
    return NoCase ? lx_to_lower(a) == lx_to_lower(b) : a == b;
}

// The records that a search goes through, from p to end, and what it
// knows at p of the word before (see find_tail).
struct Span {
    const uchar *p;
    const uchar *end;
    int32_t eq;
    int32_t tailLen;
};

Span whole(const MCSegment *seg) { return {seg->data, seg->data + seg->size, 0, 0}; }

// The span from the last jump whose two bytes aren't above two (else the
// first record) to the end, or with toNext to the first jump above two:
// where a word of these two bytes must stand, if the two bytes of the
// tails rise through the segment. The word before the jump's record kept
// the jump's first byte if the record keeps one, so eq is 1 where that
// byte is want's, else 0; the record's own check of its shared count
// needs only that count.
template <bool NoCase>
Span jump_span(const MCSegment *seg, uint32_t two, const uchar *want, bool toNext) {
    Span span = whole(seg);
    const uint32_t *const jumps = seg->jumps, *const last = jumps + seg->nJumps;
    const uint32_t *after = std::upper_bound(jumps, last, two << 16 | 0xFFFF);
    if (toNext && after != last) span.end = seg->data + (*after & 0xFFFF);
    if (after != jumps) {
        const uint32_t jump = after[-1];
        span.p = seg->data + (jump & 0xFFFF);
        span.tailLen = *span.p;
        span.eq = span.tailLen > 0 && same_byte<NoCase>(static_cast<uchar>(jump >> 24), want[0]) ? 1 : 0;
    }
    return span;
}

// The bytes that are c without regard to case, c first: 1 or 2 of them
// (lx_to_lower pairs each capital with one small letter).
int32_t case_variants(uchar c, uchar out[3]) {
    int32_t n = 0;
    out[n++] = c;
    const uchar lower = lx_to_lower(c), upper = lx_to_upper(lower);
    if (lower != c) out[n++] = lower;
    if (upper != c && upper != lower) out[n++] = upper;
    return n;
}

// Looks for the tail want among the records of a span without
// rebuilding the words. The words before the one sought share with it a
// prefix of eq bytes and are below it at eq (exact) or differ from it
// there (noCase). A record that keeps more than eq bytes of the word
// before it has that same difference, so it is only stepped over; a
// record that keeps eq bytes or fewer starts with the sought tail's own
// bytes, so its new bytes are compared with the sought tail from there on.
// Every record, stepped over or compared, is checked as the decoder checks
// it, and a damaged one ends the search: the result is that of decoding
// every word and comparing it whole.
template <bool NoCase>
uint16_t find_tail(const MCSuffixTable *simpleSuffixes, const MCSuffixTable *extSuffixes, const uchar *want,
                   Span span) {
    const uchar *p = span.p;
    const uchar *const end = span.end;
    const int32_t nSimple = reachable(simpleSuffixes, MAX_SIMPLE_SUFFIXES);
    const int32_t nExt = reachable(extSuffixes, MAX_EXT_SUFFIXES);
    auto same = same_byte<NoCase>;
    int32_t eq = span.eq;           // see above
    int32_t tailLen = span.tailLen; // of the word before
    while (p < end) {
        const int32_t shared = *p++;
        if (shared > tailLen) return 0;
        int32_t i = shared;
        if (shared > eq) {
            // The word differs from the one sought where the word before
            // did: only its length is wanted, for the checks.
            uchar c;
            for (;;) {
                if (p >= end) return 0;
                if ((c = *p++) < LXC_FIRST_LITERAL) break;
                ++i;
            }
            if (c == LXC_CODE_EXT) {
                if (p >= end || *p >= nExt) return 0;
                i += suffix_length(extSuffixes, *p++);
            } else if (c != LXC_CODE_END) {
                if (c - LXC_CODE_SIMPLE >= nSimple) return 0;
                i += suffix_length(simpleSuffixes, c - LXC_CODE_SIMPLE);
            }
            if (i > LXC_MAX_TAIL_LEN) return 0;
            tailLen = i;
            continue;
        }
        bool comparing = true;
        // Takes the byte c at place i of the new tail. False when the
        // search ends: the tail is too long, or (exact) the word is past
        // the one sought.
        auto take = [&](uchar c) {
            if (i == LXC_MAX_TAIL_LEN) return false;
            if (comparing && !same(c, want[i])) {
                if (!NoCase && c > want[i]) return false;
                comparing = false;
                eq = i;
            }
            ++i;
            return true;
        };
        for (;;) {
            if (p >= end) return 0;
            const uchar c = *p++;
            if (c >= LXC_FIRST_LITERAL) {
                if (!take(c)) return 0;
                continue;
            }
            if (c == LXC_CODE_END) break;
            const char *suffix;
            if (c == LXC_CODE_EXT) {
                if (p >= end || *p >= nExt) return 0;
                suffix = extSuffixes->entries[*p++];
            } else {
                if (c - LXC_CODE_SIMPLE >= nSimple) return 0;
                suffix = simpleSuffixes->entries[c - LXC_CODE_SIMPLE];
            }
            for (; *suffix != '\0'; ++suffix)
                if (!take(lx_byte(*suffix))) return 0;
            break;
        }
        if (comparing) {
            if (want[i] == 0) return 1;
            eq = i; // the word ends where the one sought goes on
        }
        tailLen = i;
    }
    return 0;
}

} // namespace

void MCLex_DecodeStart(MCDecoder *dec, const MCSegment *seg, const MCSuffixTable *simpleSuffixes,
                       const MCSuffixTable *extSuffixes) {
    LX_ASSERT(dec != NULL);
    LX_ASSERT(seg != NULL);
    LX_ASSERT(simpleSuffixes != NULL);
    LX_ASSERT(extSuffixes != NULL);
    LX_ASSERT(seg->data != NULL || seg->size == 0);
    dec->pos = seg->data;
    dec->end = seg->data + seg->size;
    dec->simpleSuffixes = simpleSuffixes;
    dec->extSuffixes = extSuffixes;
    dec->shared = 0;
    dec->tailLen = 0;
    std::memcpy(dec->curWord, seg->key, LXC_KEY_SZ);
    dec->curWord[kTailStart] = '\0';
}

void MCLex_DecodeStartAt(MCDecoder *dec, const MCSegment *seg, const MCSuffixTable *simpleSuffixes,
                         const MCSuffixTable *extSuffixes, uint32_t two) {
    MCLex_DecodeStart(dec, seg, simpleSuffixes, extSuffixes);
    const uint32_t *const jumps = seg->jumps, *const last = jumps + seg->nJumps;
    if (seg->nJumps <= 0) return;
    const uint32_t *after = std::upper_bound(jumps, last, two << 16 | 0xFFFF);
    if (after == jumps) return;
    // A jump's record keeps at most the first byte of the tail before it,
    // which is the jump's own first byte.
    const uint32_t jump = after[-1];
    dec->pos = seg->data + (jump & 0xFFFF);
    dec->tailLen = *dec->pos;
    dec->curWord[kTailStart] = static_cast<char>(jump >> 24);
    dec->curWord[kTailStart + dec->tailLen] = '\0';
}

int16_t MCLex_DecodeNext(MCDecoder *dec) {
    const uchar *p = dec->pos;
    const uchar *const end = dec->end;
    if (p >= end) return 0;
    char *const tail = dec->curWord + kTailStart;
    char *const limit = tail + LXC_MAX_TAIL_LEN; // where the longest tail's terminator goes
    const int32_t shared = *p++;
    if (shared > dec->tailLen) return damaged(dec, tail + dec->tailLen);
    char *out = tail + shared;
    const char *suffix = nullptr;
    for (;;) {
        if (p >= end) return damaged(dec, out);
        const uchar c = *p++;
        if (c >= LXC_FIRST_LITERAL) {
            if (out == limit) return damaged(dec, out);
            *out++ = static_cast<char>(c);
            continue;
        }
        if (c == LXC_CODE_END) break;
        if (c == LXC_CODE_EXT) {
            if (p >= end) return damaged(dec, out);
            const int32_t x = *p++;
            if (x >= reachable(dec->extSuffixes, MAX_EXT_SUFFIXES)) return damaged(dec, out);
            suffix = dec->extSuffixes->entries[x];
        } else {
            const int32_t i = c - LXC_CODE_SIMPLE;
            if (i >= reachable(dec->simpleSuffixes, MAX_SIMPLE_SUFFIXES)) return damaged(dec, out);
            suffix = dec->simpleSuffixes->entries[i];
        }
        for (; *suffix != '\0'; ++suffix) {
            if (out == limit) return damaged(dec, out);
            *out++ = *suffix;
        }
        break;
    }
    *out = '\0';
    dec->shared = shared;
    dec->tailLen = static_cast<int32_t>(out - tail);
    dec->pos = p;
    return 1;
}

uint16_t MCLex_Scan(const MCSegment *seg, uint16_t charSize, const MCSuffixTable *simpleSuffixes,
                    const MCSuffixTable *extSuffixes, const char *keyWord, MCWordCb cb, void *data) {
    LX_ASSERT(simpleSuffixes != NULL);
    LX_ASSERT(extSuffixes != NULL);
    LX_ASSERT(seg != NULL);
    LX_ASSERT(seg->data != NULL);
    LX_ASSERT(keyWord != NULL);
    if (charSize != LXC_CHAR_SIZE || seg->size == 0) return 0;
    if (cb != nullptr) {
        MCDecoder dec;
        MCLex_DecodeStart(&dec, seg, simpleSuffixes, extSuffixes);
        while (MCLex_DecodeNext(&dec) == 1) {
            const int32_t r = cb(keyWord, dec.curWord, data);
            if (r == 0) return 1;
            if (r < 0) return 0;
        }
        return 0;
    }

    const char *key = reinterpret_cast<const char *>(seg->key);
    LX_ASSERT_TEXT(keyWord[0] == key[0] && keyWord[1] == key[1] && keyWord[2] == key[2],
                   "keyWord[0] == curWord[0] && keyWord[1] == curWord[1] && keyWord[2] == curWord[2]");
    // A word of fewer than three bytes has an empty tail.
    const uchar *want = reinterpret_cast<const uchar *>(keyWord[2] != '\0' ? keyWord + kTailStart : "");
    const Span span = seg->nJumps > 0 ? jump_span<false>(seg, two_bytes(want), want, false) : whole(seg);
    return find_tail<false>(simpleSuffixes, extSuffixes, want, span);
}

uint16_t MCLex_FindNoCase(const MCSegment *seg, const MCSuffixTable *simpleSuffixes,
                          const MCSuffixTable *extSuffixes, const char *word) {
    LX_ASSERT(seg != NULL);
    LX_ASSERT(word != NULL);
    const uchar *w = reinterpret_cast<const uchar *>(word);
    // Every word of the segment begins with the key: if the key differs
    // from the word's beginning, no word of the segment is the word. A
    // word shorter than the key ends where the key has a byte (or both
    // have zeros, and the word is the key).
    for (uint32_t i = 0; i < LXC_KEY_SZ; ++i) {
        if (lx_to_lower(seg->key[i]) != lx_to_lower(w[i])) return 0;
        if (w[i] == 0) return 1; // the key is the whole word: no record to decode
    }
    const uchar *want = w + kTailStart;
    if (seg->nJumps == 0 || !seg->jumpsComplete) return find_tail<true>(simpleSuffixes, extSuffixes, want, whole(seg));
    // Every record decodes and the two bytes of the tails never fall: a
    // word that is want without regard to case has two bytes that are
    // want's in some case, and stands in the span of those two bytes.
    uchar firsts[3], seconds[3] = {0};
    const int32_t nFirsts = case_variants(want[0], firsts);
    const int32_t nSeconds = want[0] != 0 ? case_variants(want[1], seconds) : 1;
    for (int32_t i = 0; i < nFirsts; ++i)
        for (int32_t j = 0; j < nSeconds; ++j) {
            const uint32_t two = static_cast<uint32_t>(firsts[i]) << 8 | seconds[j];
            if (find_tail<true>(simpleSuffixes, extSuffixes, want, jump_span<true>(seg, two, want, true)) == 1)
                return 1;
        }
    return 0;
}

int32_t MCLex_MakeJumps(const MCSegment *seg, const MCSuffixTable *simpleSuffixes, const MCSuffixTable *extSuffixes,
                        uint32_t *jumps, int32_t capacity, bool *complete) {
    LX_ASSERT(jumps != NULL || capacity == 0);
    LX_ASSERT(complete != NULL);
    // The records are checked as the decoder checks them, but of each word
    // only its length and first two bytes are kept.
    const uchar *p = seg->data;
    const uchar *const end = p + seg->size;
    const int32_t nSimple = reachable(simpleSuffixes, MAX_SIMPLE_SUFFIXES);
    const int32_t nExt = reachable(extSuffixes, MAX_EXT_SUFFIXES);
    uchar two[2] = {0, 0}; // the first two bytes of the tail, zeros behind its end
    int32_t n = 0, sinceJump = 0, tailLen = 0;
    uint32_t before = 0; // the two bytes of the record before
    *complete = false;
    for (bool first = true; p < end; first = false) {
        const auto offset = static_cast<uint32_t>(p - seg->data);
        const int32_t shared = *p++;
        if (shared > tailLen) return n;
        int32_t i = shared;
        uchar c;
        for (;;) {
            if (p >= end) return n;
            if ((c = *p++) < LXC_FIRST_LITERAL) break;
            if (i < 2) two[i] = c;
            ++i;
        }
        const char *suffix = nullptr;
        int32_t len = 0;
        if (c == LXC_CODE_EXT) {
            if (p >= end || *p >= nExt) return n;
            suffix = extSuffixes->entries[*p];
            len = suffix_length(extSuffixes, *p++);
        } else if (c != LXC_CODE_END) {
            if (c - LXC_CODE_SIMPLE >= nSimple) return n;
            suffix = simpleSuffixes->entries[c - LXC_CODE_SIMPLE];
            len = suffix_length(simpleSuffixes, c - LXC_CODE_SIMPLE);
        }
        if (i + len > LXC_MAX_TAIL_LEN) return n; // a tail too long, by letters or the suffix
        for (int32_t k = 0; k < len && i + k < 2; ++k) two[i + k] = lx_byte(suffix[k]);
        i += len;
        for (int32_t k = i; k < 2; ++k) two[k] = 0;
        tailLen = i;

        const uint32_t now = two_bytes(two);
        if (!first) {
            if (now < before) return n; // no jump may lie behind a fall
            if (now != before && sinceJump >= MC_JUMP_GAP) {
                if (n == capacity || offset > 0xFFFF) return n;
                jumps[n++] = now << 16 | offset;
                sinceJump = 0;
            }
        }
        ++sinceJump;
        before = now;
    }
    *complete = true;
    return n;
}

int32_t MCLex_EncodeWord(const char *tail, const char *prevTail, const MCSuffixTable *simpleSuffixes,
                         const MCSuffixTable *extSuffixes, uchar *out) {
    LX_ASSERT(tail != NULL);
    LX_ASSERT(prevTail != NULL);
    LX_ASSERT(simpleSuffixes != NULL);
    LX_ASSERT(extSuffixes != NULL);
    LX_ASSERT(out != NULL);
    int32_t len = 0;
    for (; tail[len] != '\0'; ++len)
        if (len == LXC_MAX_TAIL_LEN || lx_byte(tail[len]) < LXC_FIRST_LITERAL) return LX_ERR_INVALID_WORD;

    int32_t shared = 0;
    while (shared < len && tail[shared] == prevTail[shared]) ++shared;
    int32_t n = 0;
    out[n++] = static_cast<uchar>(shared);
    // From each position on, the whole rest is compared with the entries:
    // the first position whose rest is an entry gives the longest ending
    // that either table holds.
    for (int32_t pos = shared; pos < len; ++pos) {
        const char *rest = tail + pos;
        const int32_t s = find_entry(simpleSuffixes, MAX_SIMPLE_SUFFIXES, rest);
        if (s >= 0) {
            out[n++] = static_cast<uchar>(LXC_CODE_SIMPLE + s);
            return n;
        }
        const int32_t x = find_entry(extSuffixes, MAX_EXT_SUFFIXES, rest);
        if (x >= 0) {
            out[n++] = LXC_CODE_EXT;
            out[n++] = static_cast<uchar>(x);
            return n;
        }
        out[n++] = lx_byte(*rest);
    }
    out[n++] = LXC_CODE_END;
    return n;
}

// mclex.cpp - coding and decoding of a segment's word records.
//
// The decoder works in place in curWord: a record rewrites only what lies
// behind its shared bytes, so a word costs what differs from the word
// before it. It trusts nothing in the segment: every shared count, code and
// extended number is checked against the previous tail, the tables and the
// word buffer before it is acted on, and every byte is read only inside the
// segment. A record that fails a check ends the pass; nothing is allocated.
#include "mclex.h"

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
    MCDecoder dec;
    MCLex_DecodeStart(&dec, seg, simpleSuffixes, extSuffixes);
    if (cb != nullptr) {
        while (MCLex_DecodeNext(&dec) == 1) {
            const int32_t r = cb(keyWord, dec.curWord, data);
            if (r == 0) return 1;
            if (r < 0) return 0;
        }
        return 0;
    }

    LX_ASSERT_TEXT(keyWord[0] == dec.curWord[0] && keyWord[1] == dec.curWord[1] && keyWord[2] == dec.curWord[2],
                   "keyWord[0] == curWord[0] && keyWord[1] == curWord[1] && keyWord[2] == curWord[2]");
    // eq: how many leading bytes the last tail has in common with the tail
    // sought. A tail keeps min(eq, shared) of them, so the comparison goes
    // on from there.
    const uchar *want = reinterpret_cast<const uchar *>(keyWord) + kTailStart;
    const uchar *cur = reinterpret_cast<const uchar *>(dec.curWord) + kTailStart;
    int32_t eq = 0;
    while (MCLex_DecodeNext(&dec) == 1) {
        if (dec.shared < eq) eq = dec.shared;
        while (cur[eq] == want[eq] && want[eq] != 0) ++eq;
        if (cur[eq] == want[eq]) return 1;
        if (want[eq] < cur[eq]) return 0; // past the place of the word
    }
    return 0;
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
    if (seg->size == 0) return 0;
    MCDecoder dec;
    MCLex_DecodeStart(&dec, seg, simpleSuffixes, extSuffixes);
    const uchar *want = w + kTailStart;
    const uchar *cur = reinterpret_cast<const uchar *>(dec.curWord) + kTailStart;
    int32_t eq = 0;
    while (MCLex_DecodeNext(&dec) == 1) {
        if (dec.shared < eq) eq = dec.shared;
        while (want[eq] != 0 && lx_to_lower(cur[eq]) == lx_to_lower(want[eq])) ++eq;
        if (cur[eq] == 0 && want[eq] == 0) return 1;
    }
    return 0;
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

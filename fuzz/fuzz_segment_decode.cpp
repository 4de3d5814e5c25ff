// fuzz_segment_decode - bytes as a segment of a compressed lexicon and the
// two suffix tables it refers to, decoded to the end.
//
// Input: three key bytes; a byte s and s bytes of simple table text; a
// byte e and e bytes of extended table text; the rest is the segment. A
// table text is split at its zero bytes as a reader splits it (bytes
// behind the last zero belong to no entry). Every decoded word must fit
// its buffer, and the pass must end. When every decoded tail could be
// stored again, the words are coded anew with the same tables and must
// decode to the same words, and coding them once more gives the same
// bytes. Searches that go by the segment's jumps, exact and without
// regard to case, must answer as scans from the first record, for every
// decoded word and the words beside it.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "chartab.h"
#include "mclex.h"

namespace {

void check(bool ok) {
    if (!ok) std::abort();
}

// Splits a table text into entries; the texts point into storage.
struct FuzzTable {
    std::string storage;
    std::vector<const char *> entries;
    MCSuffixTable view{};
    FuzzTable(const uint8_t *text, size_t size) : storage(reinterpret_cast<const char *>(text), size) {
        size_t start = 0;
        for (size_t i = 0; i < size; ++i)
            if (storage[i] == '\0') {
                entries.push_back(storage.c_str() + start);
                start = i + 1;
            }
        view = {entries.data(), static_cast<int32_t>(entries.size())};
    }
};

// Decodes data as a segment; the tails in order. Gives false for a
// damaged record.
bool decode(const uint8_t *data, size_t size, const uchar *key, const FuzzTable &simple, const FuzzTable &ext,
            std::vector<std::string> *tails) {
    // A block of exactly the segment's size, so that a read behind it is seen.
    std::unique_ptr<uchar[]> block(new uchar[size ? size : 1]);
    if (size) std::memcpy(block.get(), data, size);
    MCSegment seg{block.get(), static_cast<uint32_t>(size), {key[0], key[1], key[2]}};
    MCDecoder dec;
    MCLex_DecodeStart(&dec, &seg, &simple.view, &ext.view);
    int16_t r;
    size_t steps = 0;
    while ((r = MCLex_DecodeNext(&dec)) == 1) {
        check(++steps <= size); // each record takes two bytes at least
        check(std::memcmp(dec.curWord, key, 3) == 0);
        check(dec.tailLen >= 0 && dec.tailLen <= LXC_MAX_TAIL_LEN);
        check(std::strlen(dec.curWord + 3) == static_cast<size_t>(dec.tailLen));
        check(dec.shared <= dec.tailLen);
        tails->emplace_back(dec.curWord + 3);
    }
    check(r == 0 || r == LX_ERR_BAD_FORMAT);
    check(MCLex_DecodeNext(&dec) == 0);
    return r == 0;
}

// Exact scans of the segment with and without its jumps agree.
void check_jumps(const uint8_t *data, size_t size, const uchar *key, const FuzzTable &simple, const FuzzTable &ext,
                 const std::vector<std::string> &tails) {
    if (key[0] == 0 || key[1] == 0 || key[2] == 0) return; // the scan wants a word with all three key bytes
    std::unique_ptr<uchar[]> block(new uchar[size ? size : 1]);
    if (size) std::memcpy(block.get(), data, size);
    const MCSegment plain{block.get(), static_cast<uint32_t>(size), {key[0], key[1], key[2]}};
    static uint32_t jumps[MC_MAX_JUMPS];
    MCSegment jumping = plain;
    jumping.jumps = jumps;
    jumping.nJumps = MCLex_MakeJumps(&plain, &simple.view, &ext.view, jumps, MC_MAX_JUMPS, &jumping.jumpsComplete);
    check(jumping.nJumps >= 0 && jumping.nJumps <= MC_MAX_JUMPS);
    const std::string keyText(reinterpret_cast<const char *>(key), 3);
    for (const auto &tail : tails) {
        std::string upper = tail;
        for (char &c : upper) c = static_cast<char>(lx_to_upper(lx_byte(c)));
        for (const std::string &q : {tail, tail + "a", tail.substr(0, tail.size() / 2), upper}) {
            const std::string word = keyText + q.substr(0, LXC_MAX_TAIL_LEN);
            check(MCLex_Scan(&plain, 1, &simple.view, &ext.view, word.c_str(), nullptr, nullptr) ==
                  MCLex_Scan(&jumping, 1, &simple.view, &ext.view, word.c_str(), nullptr, nullptr));
            check(MCLex_FindNoCase(&plain, &simple.view, &ext.view, word.c_str()) ==
                  MCLex_FindNoCase(&jumping, &simple.view, &ext.view, word.c_str()));
        }
    }
}

std::vector<uchar> encode(const std::vector<std::string> &tails, const FuzzTable &simple, const FuzzTable &ext) {
    std::vector<uchar> out;
    const char *prev = "";
    for (const auto &tail : tails) {
        uchar record[LXC_MAX_RECORD_SZ];
        const int32_t n = MCLex_EncodeWord(tail.c_str(), prev, &simple.view, &ext.view, record);
        check(n >= 2 && n <= LXC_MAX_RECORD_SZ);
        out.insert(out.end(), record, record + n);
        prev = tail.c_str();
    }
    return out;
}

bool storable(const std::string &tail) {
    if (tail.size() > static_cast<size_t>(LXC_MAX_TAIL_LEN)) return false;
    for (char c : tail)
        if (lx_byte(c) < LXC_FIRST_LITERAL) return false;
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 4) return 0;
    const uchar key[3] = {data[0], data[1], data[2]};
    size_t pos = 3;
    const size_t s = data[pos++];
    if (size - pos < s + 1) return 0;
    const FuzzTable simple(data + pos, s);
    pos += s;
    const size_t e = data[pos++];
    if (size - pos < e) return 0;
    const FuzzTable ext(data + pos, e);
    pos += e;

    std::vector<std::string> tails;
    decode(data + pos, size - pos, key, simple, ext, &tails);
    check_jumps(data + pos, size - pos, key, simple, ext, tails);
    for (const auto &tail : tails)
        if (!storable(tail)) return 0;
    const std::vector<uchar> coded = encode(tails, simple, ext);
    std::vector<std::string> again;
    check(decode(coded.data(), coded.size(), key, simple, ext, &again));
    check(again == tails);
    check(encode(again, simple, ext) == coded);
    return 0;
}

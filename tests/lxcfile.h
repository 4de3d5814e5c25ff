// lxcfile.h - reads a compressed lexicon as the compiler writes it, for the
// tests and the fuzz target of the compiler: the sections in the compiler's
// order, the suffix tables, the index, and every segment decoded. Checks
// what a file of the compiler must satisfy: the size formula, segments
// without gaps in key order, words in ascending order under their keys.
#ifndef LX_TESTS_LXCFILE_H
#define LX_TESTS_LXCFILE_H

#include <cstring>
#include <string>
#include <vector>

#include "lxcformat.h"
#include "mclex.h"

struct LxcFile {
    int32_t lang = 0;
    std::vector<std::string> simple, ext;
    uint32_t simpleLen = 0, extLen = 0, dataLen = 0;
    std::vector<LXCIndexEntry> index;
    std::vector<std::vector<std::string>> segments; // the words of each index entry
    std::vector<std::string> words;                 // all words, in index order
};

namespace lxcfile_detail {
inline bool take_table(const uchar *p, uint32_t len, std::vector<std::string> &out) {
    if (len > 0 && p[len - 1] != 0) return false;
    for (uint32_t i = 0; i < len;) {
        const std::string t(reinterpret_cast<const char *>(p + i));
        out.push_back(t);
        i += static_cast<uint32_t>(t.size()) + 1;
    }
    return true;
}
} // namespace lxcfile_detail

// Gives "" and fills out, or the first fault found.
inline std::string LxcFile_Read(const std::string &bytes, LxcFile &out) {
    using namespace lxcfile_detail;
    const auto *p = reinterpret_cast<const uchar *>(bytes.data());
    const uint64_t size = bytes.size();
    uint64_t at = 0;
    auto need = [&](uint64_t n) { return at + n <= size; };
    auto get32 = [&]() {
        const uint32_t v = LXC_Get32(p + at);
        at += 4;
        return v;
    };
    if (!need(4) || get32() != FCLEX_FILE_MAGIC) return "no magic";
    const uint32_t order[] = {SECT_LANGUAGE, SECT_CHAR_SIZE, SECT_SUFFIXES, SECT_SEG_DATA, SECT_SEG_INDEX};
    uint64_t dataStart = 0;
    for (uint32_t type : order) {
        if (!need(8)) return "section " + std::to_string(type) + " missing";
        if (get32() != type) return "section " + std::to_string(type) + " out of order";
        const uint32_t len = get32();
        if (!need(len)) return "section " + std::to_string(type) + " beyond the end";
        const uint64_t next = at + len;
        switch (type) {
        case SECT_LANGUAGE:
            if (len != 4) return "language length";
            out.lang = static_cast<int32_t>(get32());
            break;
        case SECT_CHAR_SIZE:
            if (len != 4 || get32() != 1) return "character size";
            break;
        case SECT_SUFFIXES:
            if (len < 8) return "suffix section too short";
            out.simpleLen = get32();
            if (out.simpleLen > len - 8) return "simple table length";
            if (!take_table(p + at, out.simpleLen, out.simple)) return "simple table";
            at += out.simpleLen;
            out.extLen = get32();
            if (8 + out.simpleLen + out.extLen != len) return "suffix section length";
            if (!take_table(p + at, out.extLen, out.ext)) return "extended table";
            break;
        case SECT_SEG_DATA:
            dataStart = at;
            out.dataLen = len;
            break;
        case SECT_SEG_INDEX: {
            if (len < 4) return "index too short";
            const uint32_t n = get32();
            if (len != 4 + 11ull * n) return "index length";
            for (uint32_t i = 0; i < n; ++i, at += LXC_INDEX_ENTRY_SZ) out.index.push_back(LXC_GetIndexEntry(p + at));
            break;
        }
        }
        at = next;
    }
    if (at != size) return "bytes behind the index";
    if (size != LXC_FileSize(out.simpleLen, out.extLen, out.dataLen, out.index.size())) return "size formula";

    std::vector<const char *> sp, ep;
    for (auto &t : out.simple) sp.push_back(t.c_str());
    for (auto &t : out.ext) ep.push_back(t.c_str());
    const MCSuffixTable simpleView{sp.data(), static_cast<int32_t>(sp.size())};
    const MCSuffixTable extView{ep.data(), static_cast<int32_t>(ep.size())};
    uint64_t total = 0;
    for (size_t i = 0; i < out.index.size(); ++i) {
        const LXCIndexEntry &e = out.index[i];
        if (i > 0 && LXC_CompareKeys(out.index[i - 1].key, e.key) >= 0) return "keys don't ascend";
        if (static_cast<uint64_t>(e.offset) + e.size > out.dataLen) return "segment beyond the data";
        total += e.size;
        MCSegment seg{p + dataStart + e.offset, e.size, {e.key[0], e.key[1], e.key[2]}};
        MCDecoder dec;
        MCLex_DecodeStart(&dec, &seg, &simpleView, &extView);
        std::vector<std::string> words;
        int16_t r;
        while ((r = MCLex_DecodeNext(&dec)) == 1) {
            std::string w(dec.curWord, strnlen(dec.curWord, LXC_KEY_SZ));
            w += dec.curWord + LXC_KEY_SZ;
            if (!words.empty() && w < words.back()) return "words out of order in a segment";
            uchar key[LXC_KEY_SZ];
            LXC_MakeKey(w.c_str(), key);
            if (LXC_CompareKeys(key, e.key) != 0) return "word under a foreign key";
            words.push_back(w);
        }
        if (r < 0) return "segment " + std::to_string(i) + " doesn't decode";
        if (words.empty()) return "empty segment";
        out.words.insert(out.words.end(), words.begin(), words.end());
        out.segments.push_back(std::move(words));
    }
    if (total != out.dataLen) return "sizes don't add up to the data";
    return "";
}

#endif

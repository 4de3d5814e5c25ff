// fclexfile.h - a small writer of compressed lexicon files for tests,
// benchmarks and fuzz seeds: sorted words are cut into segments by key and
// coded with the segment codec, and the sections are put together in any
// order, so that damaged and unusual files can be made as easily as good
// ones.
#ifndef LX_TESTS_FCLEXFILE_H
#define LX_TESTS_FCLEXFILE_H

#include <algorithm>
#include <string>
#include <vector>

#include "lxcformat.h"
#include "mclex.h"

namespace fcfile {

using Bytes = std::vector<uchar>;

inline void put32(Bytes &out, uint32_t value) {
    uchar field[LXC_NUMBER_SZ];
    LXC_Put32(field, value);
    out.insert(out.end(), field, field + sizeof field);
}

struct Section {
    uint32_t type;
    Bytes payload;
    uint32_t length; // as written; normally payload.size()
};

inline Section section(uint32_t type, Bytes payload) {
    const auto n = static_cast<uint32_t>(payload.size());
    return {type, std::move(payload), n};
}

inline Section number_section(uint32_t type, uint32_t value) {
    Bytes b;
    put32(b, value);
    return section(type, b);
}

// A suffix table as a file stores it: each text with its zero byte.
inline Bytes stored_table(const std::vector<std::string> &texts) {
    Bytes out;
    for (const auto &t : texts) out.insert(out.end(), t.c_str(), t.c_str() + t.size() + 1);
    return out;
}

inline Section suffix_section(const std::vector<std::string> &simple, const std::vector<std::string> &ext) {
    Bytes b;
    const Bytes s = stored_table(simple), e = stored_table(ext);
    put32(b, static_cast<uint32_t>(s.size()));
    b.insert(b.end(), s.begin(), s.end());
    put32(b, static_cast<uint32_t>(e.size()));
    b.insert(b.end(), e.begin(), e.end());
    return section(SECT_SUFFIXES, b);
}

struct IndexEntry {
    std::string key; // up to three bytes
    uint32_t offset, size;
};

inline Section index_section(const std::vector<IndexEntry> &entries) {
    Bytes b;
    put32(b, static_cast<uint32_t>(entries.size()));
    for (const auto &e : entries) {
        LXCIndexEntry entry{};
        std::copy(e.key.begin(), e.key.begin() + std::min<size_t>(e.key.size(), LXC_KEY_SZ), entry.key);
        entry.offset = e.offset;
        entry.size = e.size;
        uchar raw[LXC_INDEX_ENTRY_SZ];
        LXC_PutIndexEntry(raw, entry);
        b.insert(b.end(), raw, raw + sizeof raw);
    }
    return section(SECT_SEG_INDEX, b);
}

// The segments of words (sorted in byte order, as the compiler sorts them)
// coded with the tables: the data section's payload and the index entries.
struct Segments {
    Bytes data;
    std::vector<IndexEntry> index;
    bool ok = true; // false if a word can't be coded
};

inline Segments encode_segments(std::vector<std::string> words, const std::vector<std::string> &simple,
                                const std::vector<std::string> &ext) {
    std::sort(words.begin(), words.end());
    std::vector<const char *> sp, ep;
    for (const auto &t : simple) sp.push_back(t.c_str());
    for (const auto &t : ext) ep.push_back(t.c_str());
    const MCSuffixTable st{sp.data(), static_cast<int32_t>(sp.size())};
    const MCSuffixTable et{ep.data(), static_cast<int32_t>(ep.size())};
    Segments out;
    const char *prev = "";
    for (const auto &w : words) {
        uchar key[LXC_KEY_SZ];
        LXC_MakeKey(w.c_str(), key);
        const std::string k(reinterpret_cast<const char *>(key), LXC_KEY_SZ);
        if (out.index.empty() || out.index.back().key != k) {
            out.index.push_back({k, static_cast<uint32_t>(out.data.size()), 0});
            prev = "";
        }
        uchar record[LXC_MAX_RECORD_SZ];
        const int32_t n = MCLex_EncodeWord(LXC_WordTail(w.c_str()), prev, &st, &et, record);
        if (n < 0) {
            out.ok = false;
            continue;
        }
        out.data.insert(out.data.end(), record, record + n);
        out.index.back().size += static_cast<uint32_t>(n);
        prev = LXC_WordTail(w.c_str());
    }
    return out;
}

// The sections in the order the compiler writes them.
inline std::vector<Section> standard_sections(const std::vector<std::string> &words,
                                              const std::vector<std::string> &simple,
                                              const std::vector<std::string> &ext) {
    Segments segs = encode_segments(words, simple, ext);
    return {number_section(SECT_LANGUAGE, 999), number_section(SECT_CHAR_SIZE, 1), suffix_section(simple, ext),
            section(SECT_SEG_DATA, segs.data), index_section(segs.index)};
}

inline Bytes file_of(const std::vector<Section> &sections, uint32_t magic = FCLEX_FILE_MAGIC) {
    Bytes out;
    put32(out, magic);
    for (const auto &s : sections) {
        put32(out, s.type);
        put32(out, s.length);
        out.insert(out.end(), s.payload.begin(), s.payload.end());
    }
    return out;
}

inline Bytes standard_file(const std::vector<std::string> &words, const std::vector<std::string> &simple = {},
                           const std::vector<std::string> &ext = {}) {
    return file_of(standard_sections(words, simple, ext));
}

} // namespace fcfile

#endif

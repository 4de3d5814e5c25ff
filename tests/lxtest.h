// lxtest.h - small helpers shared by the unit tests.
#ifndef LX_TESTS_LXTEST_H
#define LX_TESTS_LXTEST_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "lxengine.h"

// The last message of this thread, "" before the first.
inline std::string last_msg() {
    const char *m = LX_Diag_GetLastMsg();
    return m ? m : "";
}

// Lines, each ended by CR LF.
inline std::string crlf(const std::vector<std::string> &lines) {
    std::string out;
    for (const auto &l : lines) out += l + "\r\n";
    return out;
}

// Bytes as two hex digits each, split by blanks, and such a text back.
inline std::string hex(const std::string &data) {
    std::string out;
    char buf[4];
    for (unsigned char b : data) {
        std::snprintf(buf, sizeof buf, "%s%02X", out.empty() ? "" : " ", b);
        out += buf;
    }
    return out;
}
inline std::string unhex(const std::string &text) {
    std::string out;
    std::istringstream in(text);
    for (unsigned value; in >> std::hex >> value;) out += static_cast<char>(value);
    return out;
}

#ifdef LX_DATA_DIR
// The bundled word list: one word a line, CR LF.
inline std::vector<std::string> bundled_words() {
    std::ifstream in(LX_DATA_DIR "/en_US.txt", std::ios::binary);
    std::vector<std::string> out;
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) out.push_back(line);
    }
    return out;
}
#endif

// A memory lexicon that closes itself. Entries are given as in a lexicon
// image: "word", or "word<TAB><action><other word>".
struct MemLex {
    LX_Lexicon lex{};
    MemLex() {
        lex.kind = LEX_DMT;
        EXPECT_EQ(0, LX_DMTLex_Create(&lex, 0, LX_LANG_NONE));
    }
    explicit MemLex(std::initializer_list<const char *> entries) : MemLex() {
        for (const char *e : entries) entry(e);
    }
    ~MemLex() {
        if (lex.kind == LEX_DMT && lex.dmt.magic != 0) LX_Lexicon_Close(&lex);
    }
    MemLex(const MemLex &) = delete;
    MemLex &operator=(const MemLex &) = delete;
    void add(const char *word, int16_t action = LX_ACT_IGNORE, const char *other = nullptr) {
        EXPECT_EQ(0, LX_Lexicon_AddWord(&lex, word, action, other)) << word;
    }
    void entry(const std::string &e) {
        const size_t tab = e.find('\t');
        if (tab == std::string::npos) return add(e.c_str());
        add(e.substr(0, tab).c_str(), e[tab + 1], tab + 2 < e.size() ? e.c_str() + tab + 2 : nullptr);
    }
    std::vector<std::string> words() const {
        std::vector<std::string> out;
        auto *e = static_cast<const LX_LexEntry *>(lex.dmt.words.data);
        for (int32_t i = 0; i < lex.dmt.words.count; ++i) out.emplace_back(e[i].word);
        return out;
    }
};

// A null-terminated lexicon list.
struct LexList {
    std::vector<LX_Lexicon *> items;
    LexList(std::initializer_list<LX_Lexicon *> lexicons) : items(lexicons) { items.push_back(nullptr); }
    operator LX_Lexicon *const *() const { return items.data(); }
};

// A caller's suggestion set over storage of just its capacity (one entry
// for none), so that the sanitizers see a write behind it. The entries are
// given and shown as "word:score" items split by blanks; given ones are
// written straight into the storage, in that order.
struct Set {
    std::vector<SuggEntry> storage;
    SuggSet set{};
    explicit Set(int32_t capacity = 10, const std::string &items = "") : storage(capacity > 0 ? capacity : 1) {
        set = {storage.data(), 0, capacity};
        for (size_t pos = 0; pos < items.size();) {
            const size_t blank = items.find(' ', pos), end = blank == items.npos ? items.size() : blank;
            const size_t colon = items.rfind(':', end);
            SuggEntry &e = storage[set.count++];
            std::snprintf(e.word, sizeof e.word, "%s", items.substr(pos, colon - pos).c_str());
            e.score = static_cast<int16_t>(std::atoi(items.c_str() + colon + 1));
            pos = end + 1;
        }
    }
    std::string str() const {
        std::string out;
        for (int32_t i = 0; i < set.count; ++i)
            out += (i ? " " : "") + std::string(set.entries[i].word) + ":" + std::to_string(set.entries[i].score);
        return out;
    }
};

// A read-only text of gigabytes in address space only: `copies` times the
// same chunk of memory (its size a multiple of the page size), then `tail`
// and the terminator. Every copy maps the same pages, so the text costs
// the memory of one chunk. text is null if the system refused a mapping.
struct MappedText {
    char *text = nullptr;
    size_t size = 0; // the length of the text
    size_t mapped = 0;
    MappedText(const std::string &chunk, size_t copies, const std::string &tail) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t tailMap = (tail.size() / page + 1) * page;
        mapped = chunk.size() * copies + tailMap;
        void *base = mmap(nullptr, mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (base == MAP_FAILED) return;
        char *at = static_cast<char *>(base);
        const int fd = memfd_create("lxtext", 0);
        bool ok = fd >= 0 && chunk.size() % page == 0 &&
                  write(fd, chunk.data(), chunk.size()) == static_cast<ssize_t>(chunk.size());
        for (size_t k = 0; ok && k < copies; ++k, at += chunk.size())
            ok = mmap(at, chunk.size(), PROT_READ, MAP_SHARED | MAP_FIXED, fd, 0) != MAP_FAILED;
        if (fd >= 0) close(fd);
        ok = ok && mmap(at, tailMap, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED;
        if (!ok) {
            munmap(base, mapped);
            return;
        }
        std::memcpy(at, tail.c_str(), tail.size() + 1);
        text = static_cast<char *>(base);
        size = chunk.size() * copies + tail.size();
    }
    ~MappedText() {
        if (text) munmap(text, mapped);
    }
    MappedText(const MappedText &) = delete;
    MappedText &operator=(const MappedText &) = delete;
};

#endif

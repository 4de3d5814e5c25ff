// lxtest.h - small helpers shared by the unit tests.
#ifndef LX_TESTS_LXTEST_H
#define LX_TESTS_LXTEST_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lxengine.h"

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

#endif

// lxtest.h - small helpers shared by the unit tests.
#ifndef LX_TESTS_LXTEST_H
#define LX_TESTS_LXTEST_H

#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lxengine.h"

// A memory lexicon that closes itself.
struct MemLex {
    LX_Lexicon lex{};
    MemLex() {
        lex.kind = LEX_DMT;
        EXPECT_EQ(0, LX_DMTLex_Create(&lex, 0, LX_LANG_NONE));
    }
    explicit MemLex(std::initializer_list<const char *> words) : MemLex() {
        for (const char *w : words) add(w);
    }
    ~MemLex() {
        if (lex.kind == LEX_DMT && lex.dmt.magic != 0) LX_Lexicon_Close(&lex);
    }
    MemLex(const MemLex &) = delete;
    MemLex &operator=(const MemLex &) = delete;
    void add(const char *word, int16_t action = LX_ACT_IGNORE, const char *other = nullptr) {
        EXPECT_EQ(0, LX_Lexicon_AddWord(&lex, word, action, other)) << word;
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

#endif

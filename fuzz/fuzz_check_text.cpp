// fuzz_check_text - bytes as a text, walked to the end as a host does.
//
// The first four bytes choose the options; the rest is the text. Every
// report is acted on: a change is applied with LX_DelText/LX_InsertText,
// a misspelling asks LX_Suggest for proposals. The walk must end, every
// cursor must stay inside the text, and nothing may read or write outside
// its buffers.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "lxengine.h"

namespace {

LX_Lexicon *lexicon() {
    static LX_Lexicon lex = [] {
        LX_Lexicon l{};
        l.kind = LEX_DMT;
        LX_DMTLex_Create(&l, 16, LX_LANG_NONE);
        const char *words[] = {"the", "cat", "The", "NASA", "e.g.", "caf\xE9", "\xE9t\xE9", "well", "known", "it's"};
        for (const char *w : words) LX_Lexicon_AddWord(&l, w, LX_ACT_IGNORE, nullptr);
        LX_Lexicon_AddWord(&l, "teh", LX_ACT_AUTO_CHANGE_CASE, "the");
        LX_Lexicon_AddWord(&l, "alot", LX_ACT_COND_CHANGE, "a lot");
        LX_Lexicon_AddWord(&l, "bad", LX_ACT_EXCLUDE, nullptr);
        return l;
    }();
    return &lex;
}

void check(bool ok) {
    if (!ok) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 4 || size > 4096) return 0;
    uint32_t options;
    std::memcpy(&options, data, 4);
    options &= ~LX_OPT_SINGLE_WORD;
    // Room to grow: each change may lengthen the text.
    std::vector<char> text(size * 8 + 64, '\0');
    std::memcpy(text.data(), data + 4, size - 4);
    const int32_t textSz = static_cast<int32_t>(text.size());
    LX_Lexicon *list[] = {lexicon(), nullptr};
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    SuggEntry entries[5];
    int32_t cursor = 0;
    for (int steps = 0; steps < 10000; ++steps) {
        int32_t r = LX_CheckText(text.data(), list, options, &cursor, word, sizeof word, repl, sizeof repl);
        if (r == LX_RES_NONE_LEFT) break;
        const int32_t len = static_cast<int32_t>(std::strlen(text.data()));
        check(cursor >= 0 && cursor < len && r > 0 && r < 256);
        if ((r & (LX_RES_AUTO_CHANGE | LX_RES_COND_CHANGE)) && (steps & 1)) {
            LX_DelText(text.data(), cursor, static_cast<int32_t>(std::strlen(word)));
            LX_InsertText(text.data(), textSz, cursor, repl);
        } else if ((r & LX_RES_MISSPELLED) && steps < 8) {
            SuggSet set{entries, 0, 5};
            check(LX_Suggest(word, steps * 15, list, options | LX_OPT_SUGGEST_TYPOGRAPHIC, &set) <= 5);
        }
        cursor = LX_NextTextWord(text.data(), cursor, options);
        if (cursor < 0) break;
    }
    return 0;
}

// bench_check - speed of the check path.
//
// Loads the bundled word list into a memory lexicon, then walks a large
// text of ordinary prose with LX_CheckText as a host does (check, step on
// with LX_NextTextWord at each report) and prints words per second, for
// the usual option sets. Last, it times the words that cost the most: long
// words in capitals that no lexicon holds, which send the rule chain into
// its search over accented forms.
#include <cstdio>
#include <cstring>
#include <string>
#include <tuple>

#include "benchutil.h"
#include "platform.h"

namespace {

struct WalkResult {
    long words = 0;
    long reports = 0;
};

// Walks text to the end; every word looked at is counted once.
WalkResult walk(const std::string &text, LX_Lexicon *const *list, uint32_t options) {
    WalkResult res;
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    for (;;) {
        int32_t r = LX_CheckText(text.c_str(), list, options, &cursor, word, sizeof word, repl, sizeof repl);
        if (r == LX_RES_NONE_LEFT) break;
        ++res.reports;
        cursor = LX_NextTextWord(text.c_str(), cursor, options);
        if (cursor < 0) break;
    }
    return res;
}

void time_walk(const char *name, const std::string &text, LX_Lexicon *const *list, uint32_t options) {
    // Count the words of the text the way the walk steps over them.
    long words = 0;
    for (int32_t c = 0; c >= 0; c = LX_NextTextWord(text.c_str(), c, options)) ++words;
    walk(text, list, options); // warm the caches
    long allocBefore = LX_Mem_Allocations();
    double best = 1e9;
    WalkResult res;
    for (int round = 0; round < 5; ++round) {
        double t0 = now_seconds();
        res = walk(text, list, options);
        double t = now_seconds() - t0;
        if (t < best) best = t;
    }
    long allocs = LX_Mem_Allocations() - allocBefore;
    res.words = words;
    std::printf("check %-28s %8.2f M words/s  (%ld words, %ld reports, %.1f ms, %ld allocations)\n", name,
                res.words / best / 1e6, res.words, res.reports, best * 1e3, allocs);
}

void time_worst_word(const char *name, const char *word, LX_Lexicon *const *list, uint32_t options) {
    char out[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    const int rounds = 20;
    double best = 1e9;
    int32_t r = 0;
    for (int i = 0; i < rounds; ++i) {
        int32_t cursor = 0;
        double t0 = now_seconds();
        r = LX_CheckText(word, list, options | LX_OPT_SINGLE_WORD, &cursor, out, sizeof out, repl, sizeof repl);
        double t = now_seconds() - t0;
        if (t < best) best = t;
    }
    std::printf("worst word %-22s %8.3f ms  (result %d)\n", name, best * 1e3, r);
}

} // namespace

int main(int argc, char **argv) {
    std::string dataDir = argc > 1 ? argv[1] : LX_DATA_DIR;
    std::vector<std::string> words = read_word_list(dataDir + "/en_US.txt");
    std::string prose = read_file(dataDir + "/prose.txt");
    if (words.empty() || prose.empty()) {
        std::fprintf(stderr, "bench_check: can't read %s/en_US.txt or prose.txt\n", dataDir.c_str());
        return 1;
    }

    LX_Lexicon lex{};
    lex.kind = LEX_DMT;
    LX_DMTLex_Create(&lex, 0, LX_LANG_NONE);
    double t0 = now_seconds();
    int stored = load_memory_lexicon(&lex, words);
    double loadTime = now_seconds() - t0;
    LX_Lexicon *list[] = {&lex, nullptr};
    // The first lookup allocates nothing: every change keeps the index current.
    long allocBefore = LX_Mem_Allocations();
    t0 = now_seconds();
    int32_t cursor = 0;
    char w[LX_MAX_WORD_SZ];
    LX_CheckText("index", list, LX_OPT_CHECK_SPELLING, &cursor, w, sizeof w, nullptr, 0);
    double firstTime = now_seconds() - t0;
    std::printf("lexicon: %d words loaded in %.1f ms, first lookup %.3f ms (%ld allocations)\n", stored,
                loadTime * 1e3, firstTime * 1e3, LX_Mem_Allocations() - allocBefore);

    std::string text;
    while (text.size() < 8u << 20) text += prose + "\n";
    std::printf("text: %.1f MB of prose\n", text.size() / 1048576.0);

    const uint32_t base = LX_OPT_CHECK_SPELLING | LX_OPT_ACCENTED_CAPITALS;
    time_walk("case-sensitive", text, list, base | LX_OPT_CASE_SENSITIVE);
    time_walk("case-insensitive", text, list, base);
    time_walk("typical editor options", text, list,
              base | LX_OPT_CASE_SENSITIVE | LX_OPT_REPORT_REPEATED | LX_OPT_STRIP_POSSESSIVE |
                  LX_OPT_SPLIT_AT_HYPHEN | LX_OPT_IGNORE_ADDRESSES | LX_OPT_IGNORE_WITH_DIGITS);
    time_walk("accent rule on (no ACC opt)", text, list, LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE);

    // The worst words of the accent search: their base form is in a
    // lexicon, so the search over accented capitals runs, but no form it may
    // try is there (the search only rises from the word's own letters).
    const uint32_t cs = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE;
    LX_Lexicon trap{};
    trap.kind = LEX_DMT;
    LX_DMTLex_Create(&trap, 0, LX_LANG_NONE);
    std::string eA = "e" + std::string(79, 'a'), EA = "\xC9" + std::string(79, 'A');
    LX_Lexicon_AddWord(&trap, eA.c_str(), LX_ACT_IGNORE, nullptr);
    LX_Lexicon_AddWord(&trap, "eaeiouaeiou", LX_ACT_IGNORE, nullptr);
    LX_Lexicon *withTrap[] = {&lex, &trap, nullptr};
    LX_Lexicon *fourTraps[] = {&trap, &trap, &trap, &trap, nullptr};
    std::string longA(80, 'A');
    time_worst_word("80 x A, no such form", longA.c_str(), list, cs);
    time_worst_word("\\xC9 + 79 x A", EA.c_str(), withTrap, cs);
    time_worst_word("\\xC9AEIOUAEIOU", "\xC9" "AEIOUAEIOU", withTrap, cs);
    time_worst_word("\\xC9 + 79 x A, 4 lexicons", EA.c_str(), fourTraps, cs);
    time_worst_word("\\xC9 + 79 x A, case-insens.", EA.c_str(), withTrap, LX_OPT_CHECK_SPELLING);
    // Run-together words: every piece passes but no division of the whole
    // does, so every division of every rest is tried.
    LX_Lexicon_AddWord(&trap, "aa", LX_ACT_IGNORE, nullptr);
    std::string runOn = std::string(77, 'a') + "qzq";
    time_worst_word("77 x a + qzq, run-together", runOn.c_str(), withTrap, cs | LX_OPT_SPLIT_RUN_TOGETHER);
    std::string caps = "\xC1" + std::string(78, 'K') + "x";
    time_worst_word("\\xC1 + 78 x K + x, run-tog.", caps.c_str(), withTrap,
                    cs | LX_OPT_SPLIT_RUN_TOGETHER | LX_OPT_IGNORE_ALL_CAPITALS);
    // Dividing with hyphens, apostrophes and possessives on as well.
    const uint32_t divide = cs | LX_OPT_SPLIT_RUN_TOGETHER | LX_OPT_SPLIT_AT_HYPHEN | LX_OPT_SPLIT_AT_APOSTROPHE |
                            LX_OPT_STRIP_POSSESSIVE;
    std::string capsHyphen = std::string(71, 'A') + "ab-cd";
    time_worst_word("71 x A + ab-cd, divide", capsHyphen.c_str(), list, divide);
    time_worst_word("71 x A + ab-cd, divide, caps", capsHyphen.c_str(), list, divide | LX_OPT_IGNORE_ALL_CAPITALS);
    std::string thes;
    while (thes.size() < 76) thes += "the-";
    thes += "thx";
    time_worst_word("the-the-...-thx, divide", thes.c_str(), list, divide);
    // Accented words in capitals found behind an empty lexicon.
    LX_Lexicon empty{};
    empty.kind = LEX_DMT;
    LX_DMTLex_Create(&empty, 0, LX_LANG_NONE);
    LX_Lexicon *behind[] = {&empty, &lex, nullptr};
    time_worst_word("BOUTONNIERES, 2 lexicons", "BOUTONNIERES", behind, cs);

    // Host walks over texts that made every word look far ahead or back.
    std::string underscores;
    while (underscores.size() < (1u << 20)) underscores += "a_";
    std::string run(1u << 20, 'x');
    for (const auto &[name, body, options] :
         {std::tuple<const char *, const std::string *, uint32_t>{"1 MB of a_a_a_, addresses", &underscores,
                                                                  cs | LX_OPT_IGNORE_ADDRESSES},
          {"1 MB run of x, repeated words", &run, cs | LX_OPT_REPORT_REPEATED}}) {
        t0 = now_seconds();
        WalkResult res = walk(*body, list, options);
        std::printf("walk %-32s %8.1f ms  (%ld reports)\n", name, (now_seconds() - t0) * 1e3, res.reports);
    }
    LX_Lexicon_Close(&empty);
    LX_Lexicon_Close(&trap);
    LX_Lexicon_Close(&lex);
    return 0;
}

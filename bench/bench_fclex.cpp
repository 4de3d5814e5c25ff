// bench_fclex - the compressed lexicon reader on the bundled word list.
//
// Compiles data/en_US.txt with LX_Compress_Lex into a temporary file, then
// prints the time to open it, the words per second of LX_CheckText over
// the bundled prose with no budget and with a 64 KiB budget (and, with no
// budget, once more without regard to case), the allocations made during
// those walks, and the peak resident memory of fclex_rss, a minimal host
// that opens the lexicon with the 64 KiB budget and checks the prose once,
// before and after the open. Last come the
// suggestion figures of bench_suggest at depths 10, 30, 40 (the deeper
// search of lxspell) and 100, for the compressed lexicon and for a memory
// lexicon of the same words.
//
// With an argument, only the walk with that budget runs (for a profiler);
// with "suggest" as the argument, only the suggestions against the
// compressed lexicon at depth 100.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "benchutil.h"
#include "platform.h"

namespace {

const uint32_t kOptions = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE | LX_OPT_ACCENTED_CAPITALS;

bool open_fc(LX_Lexicon *lex, const char *path, int32_t budget) {
    *lex = LX_Lexicon{};
    lex->kind = LEX_FC;
    if (LX_FCLex_Open(lex, path, budget) == 0) return true;
    std::printf("open failed: %s\n", LX_Diag_GetLastMsg());
    return false;
}

long walk(const std::string &text, LX_Lexicon *const *list, uint32_t options) {
    long reports = 0;
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    for (;;) {
        if (LX_CheckText(text.c_str(), list, options, &cursor, word, sizeof word, repl, sizeof repl) ==
            LX_RES_NONE_LEFT)
            break;
        ++reports;
        cursor = LX_NextTextWord(text.c_str(), cursor, options);
        if (cursor < 0) break;
    }
    return reports;
}

// One line: the best of five walks over text after one that loads the
// segments; what names the walk, mark is the figure to reach, if any.
void time_walk(const char *path, int32_t budget, const std::string &text, long words, const char *what,
               uint32_t options, const char *mark) {
    LX_Lexicon lex;
    if (!open_fc(&lex, path, budget)) return;
    LX_Lexicon *list[] = {&lex, nullptr};
    walk(text, list, options); // the first pass loads the segments
    const long allocBefore = LX_Mem_Allocations();
    const uint32_t clockBefore = lex.fc.useClock;
    double best = 1e9;
    long reports = 0;
    const int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
        const double t0 = now_seconds();
        reports = walk(text, list, options);
        best = std::min(best, now_seconds() - t0);
    }
    const long allocs = LX_Mem_Allocations() - allocBefore;
    const double requests = static_cast<double>(lex.fc.useClock - clockBefore) / rounds;
    std::printf("check, %-22s %6.2f M words/s  (%ld words, %ld reports, %.1f ms, %.1f allocations and %.0f "
                "segment requests per walk%s%s)\n",
                what, words / best / 1e6, words, reports, best * 1e3, static_cast<double>(allocs) / rounds, requests,
                mark ? "; mark: " : "", mark ? mark : "");
    LX_Lexicon_Close(&lex);
}

// The suggestion figures of bench_suggest for both kinds of lexicon, with
// the same misspellings.
void suggest_figures(const char *path, const std::vector<std::string> &words, bool compressedOnly) {
    LX_Lexicon mem{};
    mem.kind = LEX_DMT;
    LX_DMTLex_Create(&mem, 0, LX_LANG_NONE);
    load_memory_lexicon(&mem, words);
    LX_Lexicon fc;
    if (!open_fc(&fc, path, 0)) return;
    LX_Lexicon *memList[] = {&mem, nullptr};
    LX_Lexicon *fcList[] = {&fc, nullptr};
    const uint32_t typo = kOptions | LX_OPT_SUGGEST_TYPOGRAPHIC;
    const std::vector<SuggestPair> pairs = make_suggest_pairs(words, memList, kOptions, 100);
    if (compressedOnly) {
        run_suggest("compressed", pairs, fcList, typo, 100);
    } else {
        std::printf("suggestions: %zu misspellings, %zu of each edit\n", pairs.size(), pairs.size() / 4);
        for (int32_t depth : {10, 30, 40, 100}) {
            run_suggest("memory", pairs, memList, typo, depth);
            run_suggest("compressed", pairs, fcList, typo, depth);
        }
    }
    LX_Lexicon_Close(&fc);
    LX_Lexicon_Close(&mem);
}

} // namespace

int main(int argc, char **argv) {
    std::vector<std::string> words = read_word_list(LX_DATA_DIR "/en_US.txt");
    const std::string prose = read_file(LX_DATA_DIR "/prose.txt");
    if (words.empty() || prose.empty()) {
        std::fprintf(stderr, "bench_fclex: can't read the bundled data\n");
        return 1;
    }
    char dir[] = "/tmp/bench_fclex.XXXXXX";
    if (mkdtemp(dir) == nullptr) return 1;
    const std::string lexPath = std::string(dir) + "/en_US.lxc";
    const char *path = lexPath.c_str();
    uint32_t line = 0;
    const double c0 = now_seconds();
    if (LX_Compress_Lex(LX_DATA_DIR "/en_US.txt", path, &line) != 0) {
        std::fprintf(stderr, "bench_fclex: LX_Compress_Lex failed: %s\n", LX_Compress_GetLastMsg());
        rmdir(dir);
        return 1;
    }
    const double compileTime = now_seconds() - c0;
    // One way out, which removes the lexicon.
    auto done = [&](int status) {
        std::remove(path);
        rmdir(dir);
        return status;
    };
    if (argc > 1 && std::strcmp(argv[1], "suggest") == 0) {
        suggest_figures(path, words, true);
        return done(0);
    }
    std::printf("lexicon: %zu words, file %zu bytes, compiled by LX_Compress_Lex in %.0f ms\n", words.size(),
                read_file(path).size(), compileTime * 1e3);

    // Open: the best of many opens and closes.
    double best = 1e9;
    for (int i = 0; i < 200; ++i) {
        LX_Lexicon lex;
        const double t0 = now_seconds();
        const bool opened = open_fc(&lex, path, 0);
        best = std::min(best, now_seconds() - t0);
        if (!opened) return done(1);
        LX_Lexicon_Close(&lex);
    }
    std::printf("open: %.3f ms (mark: under 1 ms)\n", best * 1e3);

    std::string text;
    while (text.size() < 2u << 20) text += prose + "\n";
    long textWords = 0;
    for (int32_t c = 0; c >= 0; c = LX_NextTextWord(text.c_str(), c, kOptions)) ++textWords;
    if (argc > 1) {
        time_walk(path, std::atoi(argv[1]), text, textWords, ("budget " + std::string(argv[1])).c_str(), kOptions,
                  nullptr);
        return done(0);
    }
    time_walk(path, 0, text, textWords, "budget 0", kOptions, "10 M");
    time_walk(path, 64 << 10, text, textWords, "budget 64 KiB", kOptions, "5 M");
    time_walk(path, 0, text, textWords, "budget 0, without case", kOptions & ~LX_OPT_CASE_SENSITIVE, nullptr);

    // Peak memory of a minimal host that opens with 64 KiB and checks the
    // prose once, in a process of its own.
    std::fflush(stdout);
    const std::string command = std::string("'") + LX_RSS_DRIVER + "' '" + lexPath + "' '" LX_DATA_DIR
                                "/prose.txt' 65536";
    FILE *child = popen(command.c_str(), "r");
    char out[256] = "";
    const bool got = child != nullptr && std::fgets(out, sizeof out, child) != nullptr;
    const int status = child != nullptr ? pclose(child) : -1;
    std::printf("peak RSS of fclex_rss, which opens (64 KiB) and checks the prose: %s", got ? out : "unknown\n");
    std::printf("(mark: under 2 MB)\n");

    suggest_figures(path, words, false);
    return done(status == 0 ? 0 : 1);
}

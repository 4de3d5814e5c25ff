// bench_fclex - the compressed lexicon reader on the bundled word list.
//
// Writes a compressed lexicon of data/en_US.txt (with a fixed table of
// common English endings standing in for the tables the compiler would
// choose), then prints the time to open it, the words per second of
// LX_CheckText over the bundled prose with no budget and with a 64 KiB
// budget, the allocations made during those walks, and the peak resident
// memory of a child process that opens the lexicon with the 64 KiB budget
// and checks the prose once. With an argument, only the walk with that
// budget runs (for a profiler).
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "benchutil.h"
#include "fclexfile.h"
#include "platform.h"

namespace {

const std::vector<std::string> &kSimple = kEnglishSimpleEndings;
const std::vector<std::string> &kExt = kEnglishExtEndings;

const uint32_t kOptions = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE | LX_OPT_ACCENTED_CAPITALS;

long walk(const std::string &text, LX_Lexicon *const *list) {
    long reports = 0;
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    for (;;) {
        if (LX_CheckText(text.c_str(), list, kOptions, &cursor, word, sizeof word, repl, sizeof repl) ==
            LX_RES_NONE_LEFT)
            break;
        ++reports;
        cursor = LX_NextTextWord(text.c_str(), cursor, kOptions);
        if (cursor < 0) break;
    }
    return reports;
}

void time_walk(const char *path, int32_t budget, const std::string &text, long words) {
    LX_Lexicon lex{};
    lex.kind = LEX_FC;
    if (LX_FCLex_Open(&lex, path, budget) != 0) {
        std::printf("open failed: %s\n", LX_Diag_GetLastMsg());
        return;
    }
    LX_Lexicon *list[] = {&lex, nullptr};
    walk(text, list); // the first pass loads the segments
    const long allocBefore = LX_Mem_Allocations();
    const uint32_t clockBefore = lex.fc.useClock;
    double best = 1e9;
    long reports = 0;
    const int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
        const double t0 = now_seconds();
        reports = walk(text, list);
        best = std::min(best, now_seconds() - t0);
    }
    const long allocs = LX_Mem_Allocations() - allocBefore;
    const double requests = static_cast<double>(lex.fc.useClock - clockBefore) / rounds;
    std::printf("check, budget %-6d %8.2f M words/s  (%ld words, %ld reports, %.1f ms, %.1f allocations "
                "and %.0f segment requests per walk)\n",
                budget, words / best / 1e6, words, reports, best * 1e3, static_cast<double>(allocs) / rounds,
                requests);
    LX_Lexicon_Close(&lex);
}

} // namespace

// The child of the memory figure: open, one check of the prose, and the
// process's peak resident memory from /proc.
double peak_mb() {
    const std::string status = read_file("/proc/self/status");
    const size_t at = status.find("VmHWM:");
    return at == std::string::npos ? -1 : std::atol(status.c_str() + at + 6) / 1024.0;
}

int rss_child(const char *path) {
    const double before = peak_mb();
    LX_Lexicon lex{};
    lex.kind = LEX_FC;
    if (LX_FCLex_Open(&lex, path, 64 << 10) != 0) return 1;
    LX_Lexicon *list[] = {&lex, nullptr};
    walk(read_file(LX_DATA_DIR "/prose.txt"), list);
    LX_Lexicon_Close(&lex);
    std::printf("%.2f MB (%.2f MB before the open)\n", peak_mb(), before);
    return 0;
}

int main(int argc, char **argv) {
    if (argc > 2 && std::strcmp(argv[1], "--rss") == 0) return rss_child(argv[2]);
    std::vector<std::string> words = read_word_list(LX_DATA_DIR "/en_US.txt");
    const std::string prose = read_file(LX_DATA_DIR "/prose.txt");
    if (words.empty() || prose.empty()) {
        std::fprintf(stderr, "bench_fclex: can't read the bundled data\n");
        return 1;
    }
    const fcfile::Bytes file = fcfile::standard_file(words, kSimple, kExt);
    char path[] = "/tmp/bench_fclex.XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0 || write(fd, file.data(), file.size()) != static_cast<ssize_t>(file.size())) {
        std::fprintf(stderr, "bench_fclex: can't write the lexicon\n");
        return 1;
    }
    close(fd);
    std::printf("lexicon: %zu words, file %zu bytes\n", words.size(), file.size());

    // Open: the best of many opens and closes.
    double best = 1e9;
    for (int i = 0; i < 200; ++i) {
        LX_Lexicon lex{};
        lex.kind = LEX_FC;
        const double t0 = now_seconds();
        const int32_t r = LX_FCLex_Open(&lex, path, 0);
        best = std::min(best, now_seconds() - t0);
        if (r != 0) {
            std::printf("open failed: %s\n", LX_Diag_GetLastMsg());
            break;
        }
        LX_Lexicon_Close(&lex);
    }
    std::printf("open: %.3f ms\n", best * 1e3);

    std::string text;
    while (text.size() < 2u << 20) text += prose + "\n";
    long textWords = 0;
    for (int32_t c = 0; c >= 0; c = LX_NextTextWord(text.c_str(), c, kOptions)) ++textWords;
    if (argc > 1) {
        time_walk(path, std::atoi(argv[1]), text, textWords);
        std::remove(path);
        return 0;
    }
    time_walk(path, 0, text, textWords);
    time_walk(path, 64 << 10, text, textWords);

    // Peak memory of a process that only opens with 64 KiB and checks the
    // prose once: a fresh process (this program again) reports its own
    // high-water mark.
    std::fflush(stdout);
    char self[4096] = "";
    const ssize_t selfLen = readlink("/proc/self/exe", self, sizeof self - 1);
    if (selfLen > 0) self[selfLen] = '\0';
    const std::string command = "'" + std::string(self) + "' --rss '" + std::string(path) + "'";
    FILE *child = popen(command.c_str(), "r");
    char line[256] = "";
    const bool got = child != nullptr && std::fgets(line, sizeof line, child) != nullptr;
    const int status = child != nullptr ? pclose(child) : -1;
    std::printf("peak RSS of a process that opens (64 KiB) and checks the prose: %s", got ? line : "unknown\n");
    std::remove(path);
    return status == 0 ? 0 : 1;
}

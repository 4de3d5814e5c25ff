// bench_compile - compiling the bundled word list into a compressed
// lexicon with LX_Compress_Lex, as a host does it.
//
// Prints the compile time (best of three runs) and the size of the lexicon
// against the list, and, measured in the same run, the sizes that gzip -9
// and xz -9 give for the list, where those tools are present. The list
// stands in the order of an English locale; suffix discovery compares each
// word with the one before it, so the two steps are also timed apart, with
// discovery on the list as it is and on a copy sorted by bytes (the order in
// which the squeezer codes the words), to show what that order would gain.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "benchutil.h"
#include "lexsq.h"
#include "suffix.h"

namespace {

struct Result {
    double discovery = 1e9, squeeze = 1e9;
    long size = 0;
};

long file_size(const std::string &path) { return static_cast<long>(read_file(path).size()); }

// The size of what a shell command writes to standard output, or -1.
long piped_size(const std::string &command) {
    FILE *p = popen(command.c_str(), "r");
    if (!p) return -1;
    char buf[65536];
    long n = 0;
    for (size_t got; (got = std::fread(buf, 1, sizeof buf, p)) > 0;) n += static_cast<long>(got);
    return pclose(p) == 0 ? n : -1;
}

bool have(const char *tool) {
    return std::system((std::string("command -v ") + tool + " >/dev/null 2>&1").c_str()) == 0;
}

Result compile(const std::string &discoveryList, const std::string &list, const std::string &dir) {
    Result best;
    const std::string suffixes = dir + "/suffixes.txt", lex = dir + "/en_US.lxc";
    for (int round = 0; round < 3; ++round) {
        const char *lists[] = {discoveryList.c_str()};
        double t0 = now_seconds();
        if (LX_FindSuffixes(1, lists, suffixes.c_str()) != 0) {
            std::printf("suffix discovery failed: %s\n", LX_SuffixMsg);
            std::exit(1);
        }
        double t1 = now_seconds();
        LexSqContext ctx{};
        uint32_t line = 0;
        int16_t r = LexSq_Init(&ctx, lex.c_str(), suffixes.c_str(), 999, &line);
        if (r == 0) r = LexSqFile(&ctx, list.c_str(), &line);
        if (r == 0) r = LexSq_End(&ctx);
        else LexSq_Abort(&ctx);
        double t2 = now_seconds();
        if (r != 0) {
            std::printf("squeezer failed: %d %s\n", r, LX_Diag_GetLastMsg());
            std::exit(1);
        }
        best.discovery = std::min(best.discovery, t1 - t0);
        best.squeeze = std::min(best.squeeze, t2 - t1);
    }
    best.size = file_size(lex);
    return best;
}

// The compile time of the exported call, best of three, and the size.
Result compile_exported(const std::string &list, const std::string &dir) {
    Result best;
    const std::string lex = dir + "/en_US.lxc";
    for (int round = 0; round < 3; ++round) {
        uint32_t line = 0;
        double t0 = now_seconds();
        const int32_t r = LX_Compress_Lex(list.c_str(), lex.c_str(), &line);
        double t1 = now_seconds();
        if (r != 0) {
            std::printf("LX_Compress_Lex failed: %d %s\n", static_cast<int>(r), LX_Compress_GetLastMsg());
            std::exit(1);
        }
        best.squeeze = std::min(best.squeeze, t1 - t0);
    }
    best.discovery = 0;
    best.size = file_size(lex);
    return best;
}

} // namespace

int main() {
    const std::string list = LX_DATA_DIR "/en_US.txt";
    char dirTemplate[] = "/tmp/bench_compile.XXXXXX";
    if (!mkdtemp(dirTemplate)) return 1;
    const std::string dir = dirTemplate;
    std::vector<std::string> words = read_word_list(list);
    std::sort(words.begin(), words.end());
    std::string sortedText;
    for (const auto &w : words) sortedText += w + "\r\n";
    const std::string sorted = dir + "/sorted.txt";
    if (FILE *f = std::fopen(sorted.c_str(), "wb")) {
        std::fwrite(sortedText.data(), 1, sortedText.size(), f);
        std::fclose(f);
    }
    const long listSize = file_size(list);
    std::printf("word list: %zu words, %ld bytes\n", words.size(), listSize);

    const Result exported = compile_exported(list, dir);
    std::printf("LX_Compress_Lex:\n");
    std::printf("  compile time: %.1f ms\n", 1e3 * exported.squeeze);
    std::printf("  lexicon: %ld bytes, %.1f%% of the word list\n", exported.size, 100.0 * exported.size / listSize);

    const struct { const char *name; std::string discoveryList; } kRuns[] = {
        {"discovery on the list as it stands", list},
        {"discovery on the list sorted by bytes", sorted},
    };
    for (const auto &run : kRuns) {
        const Result r = compile(run.discoveryList, list, dir);
        std::printf("steps apart, %s:\n", run.name);
        std::printf("  time: %.1f ms (suffix discovery %.1f ms, squeezer %.1f ms)\n",
                    1e3 * (r.discovery + r.squeeze), 1e3 * r.discovery, 1e3 * r.squeeze);
        std::printf("  lexicon: %ld bytes, %.1f%% of the word list\n", r.size, 100.0 * r.size / listSize);
    }
    for (const char *tool : {"gzip", "xz"}) {
        if (!have(tool)) {
            std::printf("%s -9: not installed\n", tool);
            continue;
        }
        const long n = piped_size(std::string(tool) + " -9 -c " + list);
        std::printf("%s -9: %ld bytes, %.1f%% of the word list\n", tool, n, 100.0 * n / listSize);
    }
    std::remove((dir + "/suffixes.txt").c_str());
    std::remove((dir + "/en_US.lxc").c_str());
    std::remove(sorted.c_str());
    rmdir(dir.c_str());
    return 0;
}

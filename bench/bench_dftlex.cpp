// bench_dftlex - cost of a disk lexicon.
//
// Writes a lexicon file of 10,000 words of the bundled word list (as the
// engine writes it: header, sorted entries, CR LF), then prints the time
// to open it, and the rate of additions to it: each addition takes the
// lock, looks at the file's stamp, and writes the whole file through
// (beside the old one, synced, renamed over it). The folder is made under
// TMPDIR (or /tmp), or under the folder given as the second argument, and
// removed at the end.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>

#include "benchutil.h"

namespace {

double time_open(const std::string &path, int *entries) {
    double best = 1e9;
    for (int round = 0; round < 7; ++round) {
        LX_Lexicon lex{};
        lex.kind = LEX_DFT;
        double t0 = now_seconds();
        if (LX_DFTLex_Open(&lex, path.c_str()) != 0) return -1;
        double t = now_seconds() - t0;
        *entries = lex.dft.mem.words.count;
        LX_Lexicon_Close(&lex);
        best = std::min(best, t);
    }
    return best;
}

} // namespace

int main(int argc, char **argv) {
    const std::string dataDir = argc > 1 ? argv[1] : LX_DATA_DIR;
    const char *tmp = argc > 2 ? argv[2] : std::getenv("TMPDIR");
    std::string folder = std::string(tmp && *tmp ? tmp : "/tmp") + "/lxbench.XXXXXX";
    if (!mkdtemp(folder.data())) {
        std::perror("mkdtemp");
        return 1;
    }
    std::vector<std::string> words = read_word_list(dataDir + "/en_US.txt");
    if (words.size() < 10200) {
        std::fprintf(stderr, "word list too short\n");
        return 1;
    }
    std::vector<std::string> base(words.begin(), words.begin() + 10000);
    std::sort(base.begin(), base.end());
    const std::string path = folder + "/user.dic";
    std::string file = "#LID 24941\r\n";
    for (const std::string &w : base) file += w + "\ti\r\n";
    if (FILE *f = std::fopen(path.c_str(), "wb")) {
        std::fwrite(file.data(), 1, file.size(), f);
        std::fclose(f);
    }

    int entries = 0;
    double open = time_open(path, &entries);
    std::printf("dftlex open %d words (%zu bytes)        %8.2f ms\n", entries, file.size(), open * 1e3);

    LX_Lexicon lex{};
    lex.kind = LEX_DFT;
    if (LX_DFTLex_Open(&lex, path.c_str()) != 0) return 1;
    const int adds = 200;
    double t0 = now_seconds();
    int failed = 0;
    for (int i = 0; i < adds; ++i)
        if (LX_Lexicon_AddWord(&lex, words[10000 + static_cast<size_t>(i)].c_str(), LX_ACT_IGNORE, nullptr) != 0)
            ++failed;
    double t = now_seconds() - t0;
    std::printf("dftlex add to %d words, written through   %8.1f adds/s  (%.2f ms each, %d failed)\n", entries,
                adds / t, t / adds * 1e3, failed);

    // The same additions where another process changes the file before each
    // one: every addition then reads the file again before writing it.
    LX_Lexicon other{};
    other.kind = LEX_DFT;
    LX_DFTLex_Open(&other, path.c_str());
    double reread = 0;
    for (int i = 0; i < adds / 4; ++i) {
        LX_Lexicon_AddWord(&other, ("zz" + std::to_string(i)).c_str(), LX_ACT_IGNORE, nullptr);
        double s = now_seconds();
        LX_Lexicon_AddWord(&lex, ("yy" + std::to_string(i)).c_str(), LX_ACT_IGNORE, nullptr);
        reread += now_seconds() - s;
    }
    std::printf("dftlex add after another writer's change  %8.1f adds/s  (%.2f ms each)\n", (adds / 4) / reread,
                reread / (adds / 4) * 1e3);
    LX_Lexicon_Close(&other);
    LX_Lexicon_Close(&lex);
    std::filesystem::remove_all(folder);
    return 0;
}

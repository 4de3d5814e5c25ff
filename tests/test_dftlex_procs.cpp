// Disk lexicon across processes: several writers adding words to one file
// at the same time, and a writer killed at random moments in the middle
// of its saves. The sizes can be raised from the environment for longer
// runs: LX_PROC_WRITERS, LX_PROC_WORDS (writers, words each) and
// LX_CRASH_KILLS, LX_CRASH_DELAY_MS (kills, longest time before a kill);
// each test prints what it did.
#include <csignal>
#include <random>
#include <set>
#include <sstream>

#include "filetest.h"
#include "lexicon.h"
#include "lxtest.h"

namespace {

int env_or(const char *name, int fallback) {
    const char *v = std::getenv(name);
    return v && std::atoi(v) > 0 ? std::atoi(v) : fallback;
}

bool has(LX_Lexicon *lex, const std::string &word) {
    return LX_Lexicon_FindWord(lex, word.c_str(), 1, nullptr, 0) >= 0;
}

void write_all(int fd, const std::string &text) {
    for (size_t done = 0; done < text.size();) {
        ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n <= 0) return;
        done += static_cast<size_t>(n);
    }
}

} // namespace

TEST(DftLexProcesses, ConcurrentWritersLoseNoWord) {
    const int writers = env_or("LX_PROC_WRITERS", 4), words = env_or("LX_PROC_WORDS", 300);
    TempDir dir;
    const std::string path = dir / "shared.dic";
    {
        LX_Lexicon lex{};
        lex.kind = LEX_DFT;
        ASSERT_EQ(0, LX_DFTLex_Create(&lex, path.c_str(), 24941));
        LX_Lexicon_Close(&lex);
    }
    // The writers wait on a pipe until all of them are there.
    int start[2];
    ASSERT_EQ(0, pipe(start));
    std::fflush(nullptr);
    std::vector<pid_t> pids;
    for (int w = 0; w < writers; ++w) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            close(start[1]);
            char c;
            (void)!read(start[0], &c, 1);
            LX_Lexicon lex{};
            lex.kind = LEX_DFT;
            if (LX_DFTLex_Open(&lex, path.c_str()) != 0) _exit(100);
            int failures = 0;
            for (int i = 0; i < words; ++i) {
                const std::string word = "p" + std::to_string(w) + "w" + std::to_string(i);
                if (LX_Lexicon_AddWord(&lex, word.c_str(), LX_ACT_IGNORE, nullptr) != 0) ++failures;
            }
            LX_Lexicon_Close(&lex);
            _exit(failures > 99 ? 99 : failures);
        }
        pids.push_back(pid);
    }
    close(start[0]);
    close(start[1]);
    for (pid_t pid : pids) {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "writer status " << status;
    }
    LX_Lexicon lex{};
    lex.kind = LEX_DFT;
    ASSERT_EQ(0, LX_DFTLex_Open(&lex, path.c_str()));
    EXPECT_EQ(0, lex.dft.external);
    EXPECT_EQ(writers * words, lex.dft.mem.words.count);
    int missing = 0;
    for (int w = 0; w < writers; ++w)
        for (int i = 0; i < words; ++i)
            if (!has(&lex, "p" + std::to_string(w) + "w" + std::to_string(i))) ++missing;
    EXPECT_EQ(0, missing);
    LX_Lexicon_Close(&lex);
    std::printf("concurrent writers: %d processes x %d words, %d in the file, %d missing\n", writers, words,
                writers * words - missing, missing);
}

TEST(DftLexProcesses, KilledWriterLeavesAWholeFile) {
    const int kills = env_or("LX_CRASH_KILLS", 40), maxDelayMs = env_or("LX_CRASH_DELAY_MS", 30);
    const unsigned seed = static_cast<unsigned>(env_or("LX_CRASH_SEED", 7));
    std::mt19937 rng(seed);
    TempDir dir;
    const std::string path = dir / "user.dic";
    {
        LX_Lexicon lex{};
        lex.kind = LEX_DFT;
        ASSERT_EQ(0, LX_DFTLex_Create(&lex, path.c_str(), 26226));
        LX_Lexicon_Close(&lex);
    }
    // What the writer has reported: words whose addition returned (must be
    // there), words whose deletion returned (must be gone), and words whose
    // deletion was under way when the writer died (either).
    std::set<std::string> present, deleted;
    long acknowledged = 0;
    for (int round = 0; round < kills; ++round) {
        int ack[2];
        ASSERT_EQ(0, pipe(ack));
        std::fflush(nullptr);
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            close(ack[0]);
            LX_Lexicon lex{};
            lex.kind = LEX_DFT;
            if (LX_DFTLex_Open(&lex, path.c_str()) != 0) _exit(3);
            for (int i = 0; i < 100000; ++i) {
                const std::string word = "r" + std::to_string(round) + "w" + std::to_string(i);
                if (LX_Lexicon_AddWord(&lex, word.c_str(), LX_ACT_IGNORE, nullptr) == 0)
                    write_all(ack[1], "+" + word + "\n");
                if (i % 4 == 3) {
                    const std::string gone = "r" + std::to_string(round) + "w" + std::to_string(i - 2);
                    write_all(ack[1], "?" + gone + "\n");
                    if (LX_Lexicon_DelWord(&lex, gone.c_str()) == 0) write_all(ack[1], "-" + gone + "\n");
                }
            }
            _exit(0);
        }
        close(ack[1]);
        // Most kills land in the middle of the run of saves, a few during
        // the writer's first load.
        const int delayUs = round % 8 == 0 ? static_cast<int>(rng() % 2000)
                                           : 1000 + static_cast<int>(rng() % (1000u * maxDelayMs));
        usleep(static_cast<useconds_t>(delayUs));
        kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
        std::string reports;
        char buf[4096];
        for (ssize_t n; (n = read(ack[0], buf, sizeof buf)) > 0;) reports.append(buf, static_cast<size_t>(n));
        close(ack[0]);
        std::istringstream lines(reports);
        for (std::string line; std::getline(lines, line);) {
            const std::string word = line.substr(1);
            if (line[0] == '+') {
                present.insert(word);
                ++acknowledged;
            } else if (line[0] == '?') {
                present.erase(word);
            } else if (line[0] == '-') {
                deleted.insert(word);
                ++acknowledged;
            }
        }
        SCOPED_TRACE("after kill " + std::to_string(round + 1));
        LX_Lexicon lex{};
        lex.kind = LEX_DFT;
        ASSERT_EQ(0, LX_DFTLex_Open(&lex, path.c_str()));
        EXPECT_EQ(0, lex.dft.external);
        EXPECT_EQ(26226, lex.dft.mem.lang);
        for (const std::string &w : present) EXPECT_TRUE(has(&lex, w)) << w << " lost";
        for (const std::string &w : deleted) EXPECT_FALSE(has(&lex, w)) << w << " came back";
        LX_Lexicon_Close(&lex);
        if (HasFailure()) break;
    }
    // Besides the file and its lock companion, at most the new version that
    // the last killed save left.
    const size_t leftovers = dir.names().size() - 2;
    EXPECT_LE(leftovers, 1u);
    std::printf("killed writer: %d kills survived, %ld saves acknowledged, %zu words checked present, "
                "%zu checked gone, %zu unfinished new file left beside it (seed %u)\n",
                kills, acknowledged, present.size(), deleted.size(), leftovers, seed);
}

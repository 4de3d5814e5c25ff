// Threads: calls that use separate lexicons run side by side without
// touching each other's state, and each thread keeps its own last message.
// These tests also run, alone, in a build with ThreadSanitizer.
#include <atomic>
#include <thread>

#include "lxtest.h"

namespace {

constexpr uint32_t kCheck = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE | LX_OPT_REPORT_REPEATED;
constexpr uint32_t kSuggest = kCheck | LX_OPT_SUGGEST_TYPOGRAPHIC | LX_OPT_SUGGEST_PHONETIC | LX_OPT_SUGGEST_SPLIT;
constexpr int kThreads = 4;

const char *const kWords[] = {"the", "cat", "sat", "on", "mat", "hello", "world", "spelling", "check",
                              "word", "words", "thread", "teh\tAthe", "bad\te"};

// One round of work of thread `id` on lexicons of its own: adds, refused
// adds, checks and suggestions. After each call it reads the last message,
// which must be the one its own last refusal left. Gives a transcript of
// the results, or the first discrepancy.
std::string round_of_work(int id, int round) {
    const std::string tag = std::to_string(id) + "x" + std::to_string(round);
    MemLex user, main;
    for (const char *w : kWords) main.entry(w);
    user.add(("word" + std::string(1, static_cast<char>('a' + id))).c_str());
    LexList list{&user.lex, &main.lex};

    std::string out;
    std::string expected;
    auto refuse = [&](const std::string &word, const std::string &problem) {
        out += std::to_string(LX_Lexicon_AddWord(&user.lex, word.c_str(), LX_ACT_IGNORE, nullptr)) + " ";
        expected = "AddWord: " + word + " " + problem;
    };
    auto message_is_own = [&](const char *after) {
        const char *msg = LX_Diag_GetLastMsg();
        if (msg == nullptr || expected != msg) {
            out += std::string("| after ") + after + " the message is <" + (msg ? msg : "null") +
                   ">, not <" + expected + ">";
            return false;
        }
        return true;
    };

    refuse("bad\t" + tag, "contains invalid character (0x9)");
    if (!message_is_own("an invalid character")) return out;
    refuse(tag + std::string(81, 'q'), "");
    {
        const char *msg = LX_Diag_GetLastMsg();
        const std::string got = msg ? msg : "null";
        if (got.rfind("AddWord: " + tag + "qq", 0) != 0 || got.find("is longer than 80") == std::string::npos)
            return out + "| after a long word the message is <" + got + ">";
        expected = got;
    }
    refuse("tab\t" + tag, "contains invalid character (0x9)");
    if (!message_is_own("a second refusal")) return out;

    const std::string text = "The cat sat on teh mat, the the worda bad word" + std::string(1, static_cast<char>('a' + id));
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    for (int32_t cursor = 0; cursor >= 0; cursor = LX_NextTextWord(text.c_str(), cursor, kCheck)) {
        const int32_t r = LX_CheckText(text.c_str(), list, kCheck, &cursor, word, sizeof word, repl, sizeof repl);
        if (r == LX_RES_NONE_LEFT) break;
        out += std::to_string(r) + ":" + word + "@" + std::to_string(cursor) + ">" + repl + " ";
    }
    if (!message_is_own("checks")) return out;

    for (const char *w : {"teh", "helo", "wrold", "thecat", "Spleling"}) {
        SuggEntry entries[6];
        SuggSet set{entries, 0, 6};
        const int32_t n = LX_Suggest(w, 100, list, kSuggest, &set);
        out += std::string(w) + "=";
        for (int32_t i = 0; i < n; ++i) out += std::string(set.entries[i].word) + ":" + std::to_string(set.entries[i].score) + ",";
        out += " ";
    }
    if (!message_is_own("suggestions")) return out;
    return out;
}

} // namespace

// Each thread makes and fills its own lexicons (the first allocations of
// the process, in the thread tests' own program), refuses words and checks
// and suggests at the same time as the others. What it sees must be what
// the same work gives on one thread alone.
TEST(Threads, SeparateLexiconsRunSideBySide) {
    constexpr int kRounds = 40;
    std::vector<std::string> reference(kThreads), failures(kThreads);
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int id = 0; id < kThreads; ++id) {
        threads.emplace_back([&, id] {
            while (!go.load()) std::this_thread::yield();
            for (int round = 0; round < kRounds && failures[id].empty(); ++round) {
                const std::string got = round_of_work(id, round);
                if (round == 0) reference[id] = got;
                if (got.find("| ") != std::string::npos || got != reference[id])
                    failures[id] = "round " + std::to_string(round) + ": " + got;
            }
        });
    }
    go.store(true);
    for (auto &t : threads) t.join();
    for (int id = 0; id < kThreads; ++id) {
        EXPECT_EQ("", failures[id]) << "thread " << id;
        // The same work alone on this thread gives the same transcript.
        EXPECT_EQ(round_of_work(id, 0), reference[id]) << "thread " << id;
    }
    EXPECT_NE(std::string::npos, reference[0].find("2:teh@15>the ")) << reference[0];
    EXPECT_NE(std::string::npos, reference[0].find("teh=the:99,")) << reference[0];
}

// A thread reads the last message of its own calls: null before its first.
TEST(Threads, LastMessageIsPerThread) {
    MemLex lex;
    EXPECT_EQ(LX_ERR_INVALID_WORD, LX_Lexicon_AddWord(&lex.lex, "a\tmain", LX_ACT_IGNORE, nullptr));
    std::string seenFirst = "unset", seenAfter;
    std::thread other([&] {
        const char *msg = LX_Diag_GetLastMsg();
        seenFirst = msg ? msg : "null";
        MemLex own;
        LX_Lexicon_AddWord(&own.lex, "a\tother", LX_ACT_IGNORE, nullptr);
        seenAfter = LX_Diag_GetLastMsg();
    });
    other.join();
    EXPECT_EQ("null", seenFirst);
    EXPECT_EQ("AddWord: a\tother contains invalid character (0x9)", seenAfter);
    EXPECT_STREQ("AddWord: a\tmain contains invalid character (0x9)", LX_Diag_GetLastMsg());
}

TEST(Threads, SharedMemoryLexiconLookups) {
    // One memory lexicon that nobody changes, checked and searched from
    // several threads at once.
    MemLex lex;
    for (const char *w : kWords) lex.entry(w);
    lex.add("caf\xE9");
    LexList list{&lex.lex};
    // Capitals take the case-blind lookups and the accent search.
    const std::string text = "The cat sat on teh mat, hello wrold, the the word CAFE HELLO";
    std::vector<std::string> seen(kThreads);
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int id = 0; id < kThreads; ++id) {
        threads.emplace_back([&, id] {
            while (!go.load()) std::this_thread::yield();
            for (int round = 0; round < 200; ++round) {
                std::string out;
                char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
                for (int32_t cursor = 0; cursor >= 0; cursor = LX_NextTextWord(text.c_str(), cursor, kCheck)) {
                    const int32_t r = LX_CheckText(text.c_str(), list, kCheck, &cursor, word, sizeof word, repl,
                                                   sizeof repl);
                    if (r == LX_RES_NONE_LEFT) break;
                    out += std::to_string(r) + ":" + word + "@" + std::to_string(cursor) + " ";
                }
                SuggEntry entries[5];
                SuggSet set{entries, 0, 5};
                LX_Suggest("wrold", 30, list, kSuggest, &set);
                for (int32_t i = 0; i < set.count; ++i) out += std::string(entries[i].word) + " ";
                if (round == 0) seen[id] = out;
                else if (out != seen[id]) seen[id] = "changed: " + out;
            }
        });
    }
    go.store(true);
    for (auto &t : threads) t.join();
    for (int id = 0; id < kThreads; ++id)
        EXPECT_EQ(seen[0], seen[id]) << "thread " << id;
    EXPECT_EQ(0u, seen[0].find("2:teh@15 1:wrold@30 128:the@41 world ")) << seen[0];
}

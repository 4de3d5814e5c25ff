// The bundled word list from end to end: compiled by LX_Compress_Lex, read
// by LX_FCLex_Open with and without a budget, it judges every word as a
// memory lexicon holding the same list does.
#include <fstream>
#include <random>

#include "filetest.h"
#include "lexicon.h"
#include "lxtest.h"

namespace {

std::vector<std::string> bundled_words() {
    std::ifstream in(std::string(LX_DATA_DIR) + "/en_US.txt", std::ios::binary);
    std::vector<std::string> out;
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) out.push_back(line);
    }
    return out;
}

int32_t check(const std::string &word, LX_Lexicon *const *list, uint32_t options) {
    char out[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    return LX_CheckText(word.c_str(), list, options | LX_OPT_SINGLE_WORD, &cursor, out, sizeof out, repl,
                        sizeof repl);
}

} // namespace

TEST(BundledLexicon, CompiledListJudgesAsTheMemoryLexicon) {
    const std::vector<std::string> words = bundled_words();
    ASSERT_GT(words.size(), 100000u);
    TempDir dir;
    const std::string file = dir.path + "/en_US.lxc";
    uint32_t errLine = 0;
    ASSERT_EQ(0, LX_Compress_Lex((std::string(LX_DATA_DIR) + "/en_US.txt").c_str(), file.c_str(), &errLine))
        << LX_Compress_GetLastMsg();

    MemLex mem;
    for (const std::string &w : words) mem.add(w.c_str());
    LexList memList{&mem.lex};

    // Every word, its capitalised and upper-case forms, and words that are
    // not in the list: one letter changed, dropped or added.
    std::mt19937 rng(5);
    std::vector<std::string> queries;
    for (const std::string &w : words) {
        queries.push_back(w);
        if (rng() % 8 != 0) continue;
        std::string cap = w, up = w, edit = w;
        cap[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(cap[0])));
        for (char &c : up) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        edit[rng() % edit.size()] = "aeiouxqz"[rng() % 8];
        queries.insert(queries.end(), {cap, up, edit, w.substr(1), w + "s", std::string(1, w[0]) + w});
    }
    const uint32_t plain = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE;
    // 16 KiB: the smallest table of verdicts, with segments thrown out and
    // loaded again all the time.
    for (int32_t budget : {0, 64 * 1024, 16 * 1024}) {
        LX_Lexicon fc{};
        fc.kind = LEX_FC;
        ASSERT_EQ(0, LX_FCLex_Open(&fc, file.c_str(), budget)) << LX_Diag_GetLastMsg();
        LexList fcList{&fc};
        size_t missing = 0, differ = 0;
        for (const std::string &w : words) missing += check(w, fcList, plain | LX_OPT_ACCENTED_CAPITALS) != LX_RES_NONE_LEFT;
        for (const std::string &q : queries) {
            for (uint32_t options : {plain, plain | LX_OPT_ACCENTED_CAPITALS, uint32_t{LX_OPT_CHECK_SPELLING}}) {
                if (check(q, fcList, options) != check(q, memList, options) && ++differ <= 5)
                    ADD_FAILURE() << q << " options " << options << " budget " << budget;
            }
        }
        EXPECT_EQ(0u, missing) << "budget " << budget;
        EXPECT_EQ(0u, differ) << "budget " << budget;
        LX_Lexicon_Close(&fc);
    }
}

// A kept verdict answers only while its segment is in memory, and it
// requests the segment as a search would: a segment thrown out is loaded
// again, and a load that fails makes the word absent.
TEST(BundledLexicon, VerdictsLastAsLongAsTheirSegment) {
    TempDir dir;
    const std::string file = dir.path + "/en_US.lxc";
    uint32_t errLine = 0;
    ASSERT_EQ(0, LX_Compress_Lex((std::string(LX_DATA_DIR) + "/en_US.txt").c_str(), file.c_str(), &errLine));
    LX_Lexicon fc{};
    fc.kind = LEX_FC;
    ASSERT_EQ(0, LX_FCLex_Open(&fc, file.c_str(), 16 * 1024));
    auto find = [&](const char *w) { return LX_Lexicon_FindWord(&fc, w, 1, nullptr, 0) == LX_ACT_IGNORE; };
    ASSERT_TRUE(find("walked"));
    const uint32_t clock = fc.fc.useClock;
    EXPECT_TRUE(find("walked"));
    EXPECT_FALSE(find("walkeds"));
    EXPECT_TRUE(find("walked"));
    EXPECT_EQ(clock + 3, fc.fc.useClock); // every lookup requested the segment

    // Words of other segments fill the budget; then the file goes.
    for (const std::string &w : bundled_words())
        if (w.rfind("wal", 0) != 0) find(w.c_str());
    ASSERT_EQ(0, std::remove(file.c_str()));
    EXPECT_FALSE(find("walked"));
    EXPECT_EQ(file + ": can't open", std::string(LX_Diag_GetLastMsg()));
    EXPECT_TRUE(find("at")); // the index alone answers for a short word
    LX_Lexicon_Close(&fc);
}

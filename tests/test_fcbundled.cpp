// The bundled word list from end to end: compiled by LX_Compress_Lex, the
// file holds every word; read by LX_FCLex_Open with and without a budget,
// it judges every word as a memory lexicon holding the same list does.
#include <algorithm>
#include <random>

#include "fclex.h"
#include "filetest.h"
#include "lexicon.h"
#include "lxcfile.h"
#include "lxtest.h"

namespace {

int32_t check(const std::string &word, LX_Lexicon *const *list, uint32_t options) {
    char out[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    return LX_CheckText(word.c_str(), list, options | LX_OPT_SINGLE_WORD, &cursor, out, sizeof out, repl,
                        sizeof repl);
}

} // namespace

TEST(BundledLexicon, CompiledListJudgesAsTheMemoryLexicon) {
    const std::vector<std::string> words = bundled_words();
    ASSERT_EQ(104334u, words.size());
    TempDir dir;
    const std::string file = dir.path + "/en_US.lxc";
    uint32_t errLine = 0;
    ASSERT_EQ(0, LX_Compress_Lex(LX_DATA_DIR "/en_US.txt", file.c_str(), &errLine)) << LX_Compress_GetLastMsg();
    EXPECT_EQ(30u, errLine); // lines read for the simple table

    // The file holds every word, in byte order, with full tables.
    LxcFile f;
    const std::string bytes = read_bytes(file);
    ASSERT_EQ("", LxcFile_Read(bytes, f));
    std::vector<std::string> sorted = words;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, f.words);
    EXPECT_EQ(999, f.lang);
    EXPECT_EQ(30u, f.simple.size());
    EXPECT_GT(f.ext.size(), 100u);
    EXPECT_LT(bytes.size(), read_bytes(LX_DATA_DIR "/en_US.txt").size() / 3);

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
        // Each segment in memory has a table of jumps; within a budget, of a
        // quarter of the segment's size at most.
        int32_t tables = 0;
        for (int32_t i = 0; i < fc.fc.nSegments; ++i) {
            const FCSegment *seg = fc.fc.segIndex[i];
            const uint32_t *jumps = FCLex_Jumps(seg);
            if (jumps == nullptr) continue;
            ++tables;
            EXPECT_NE(nullptr, seg->data);
            EXPECT_TRUE(budget == 0 || 4 * ((jumps[0] & ~FC_JUMPS_COMPLETE) + 1) <= seg->size / 4);
        }
        EXPECT_GT(tables, 0);
        Set set(10);
        EXPECT_GT(LX_Suggest("jumpd", 50, fcList, LX_OPT_CHECK_SPELLING | LX_OPT_SUGGEST_TYPOGRAPHIC, &set.set), 0);
        EXPECT_NE(std::string::npos, (" " + set.str()).find(" jumped:")) << set.str();
        LX_Lexicon_Close(&fc);
    }

    // A kept verdict answers only while its segment is in memory, and it
    // requests the segment as a search would: a segment thrown out is
    // loaded again, and a load that fails makes the word absent.
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
    for (const std::string &w : words)
        if (w.rfind("wal", 0) != 0) find(w.c_str());
    ASSERT_EQ(0, std::remove(file.c_str()));
    EXPECT_FALSE(find("walked"));
    EXPECT_EQ(file + ": can't open", std::string(LX_Diag_GetLastMsg()));
    EXPECT_TRUE(find("at")); // the index alone answers for a short word
    LX_Lexicon_Close(&fc);
}

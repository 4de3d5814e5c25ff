// Tests of the compressed lexicon reader: opening good, unusual and
// damaged files, loading segments within a budget, and the lookups and
// searches over a compressed lexicon, alone and under LX_CheckText and
// LX_Suggest.
#include <map>

#include "clex.h"
#include "compare.h"
#include "fclex.h"
#include "fclexfile.h"
#include "filetest.h"
#include "lexicon.h"
#include "lxcexample.h"
#include "lxtest.h"
#include "platform.h"

using namespace fcfile;

namespace {

const std::vector<std::string> kExampleWords = {"at", "walk", "walked", "walking", "walks", "wall"};
const std::vector<std::string> kExampleSimple = {"ed", "ing", "s"}, kExampleExt = {"l"};

Bytes hex_bytes(const char *text) {
    const std::string raw = unhex(text);
    return Bytes(raw.begin(), raw.end());
}

// A compressed lexicon over a file of its own, closed at the end.
struct FcLex {
    TempDir dir;
    std::string path = dir / "lex.lxc";
    LX_Lexicon lex{};
    FcLex() { lex.kind = LEX_FC; }
    explicit FcLex(const Bytes &file) : FcLex() { write(file); }
    ~FcLex() { close(); }
    void write(const Bytes &file) { write_bytes(path, std::string(file.begin(), file.end())); }
    int32_t open(int32_t budget = 0) { return LX_FCLex_Open(&lex, path.c_str(), budget); }
    void close() {
        if (lex.fc.magic == FCLEX_MAGIC) LX_Lexicon_Close(&lex);
        lex.fc.magic = 0;
    }
    LX_FCLex &fc() { return lex.fc; }
    bool find(const char *word, int16_t caseSensitive = 1) {
        return LX_Lexicon_FindWord(&lex, word, caseSensitive, nullptr, 0) == LX_ACT_IGNORE;
    }
    FCSegment *segment(const char *keyWord) {
        uchar key[LXC_KEY_SZ];
        LXC_MakeKey(keyWord, key);
        return FCLex_FindSegment(&lex, key);
    }
    // The keys of the segments in memory, in index order.
    std::string loaded() {
        std::string out;
        for (int32_t i = 0; i < fc().nSegments; ++i)
            if (fc().segIndex[i]->data != nullptr)
                out += (out.empty() ? "" : " ") + std::string(reinterpret_cast<char *>(fc().segIndex[i]->key), 3);
        return out;
    }
};

} // namespace

// ------------------------------------------------------------------- open

TEST(FcLex, WorkedExampleIsBuiltAndRead) {
    const Bytes file = standard_file(kExampleWords, kExampleSimple, kExampleExt);
    EXPECT_EQ(hex_bytes(kLxcExampleFile), file);
    EXPECT_EQ(file.size(), LXC_FileSize(9, 2, 14, 2));
    FcLex f(file);
    ASSERT_EQ(0, f.open());
    EXPECT_EQ(2, f.fc().nSegments);
    EXPECT_EQ(0x3F, f.fc().dataStart);
    EXPECT_EQ(999, f.fc().lang);
    EXPECT_EQ(3, f.fc().nSimpleSuffixes);
    EXPECT_EQ(1, f.fc().nExtSuffixes);
    EXPECT_STREQ("ing", f.fc().simpleSuffixes[1]);
    for (const auto &w : kExampleWords) EXPECT_TRUE(f.find(w.c_str())) << w;
    for (const char *w : {"a", "w", "wa", "wal", "walke", "walkz", "walkings", "wallz", "At", "ta", ""})
        EXPECT_FALSE(f.find(w)) << w;
    EXPECT_EQ("wal", f.loaded());
}

// Every way a file can be refused, with its code and message, and nothing
// held afterwards.
TEST(FcLex, RefusedFiles) {
    const auto good = standard_sections(kExampleWords, kExampleSimple, kExampleExt);
    auto with = [&](std::initializer_list<std::pair<size_t, Section>> changes) {
        auto s = good;
        for (const auto &[i, sec] : changes) s[i] = sec;
        return file_of(s);
    };
    auto without = [&](size_t i) {
        auto s = good;
        s.erase(s.begin() + static_cast<long>(i));
        return file_of(s);
    };
    auto cut = [&](size_t bytes) {
        Bytes f = file_of(good);
        f.resize(f.size() - bytes);
        return f;
    };
    Section hugeIndex = good[4];
    hugeIndex.length = 0xFFFFFFF0;
    Section longTable = good[2];
    longTable.payload[3] = 0x40; // S beyond the section
    Section shortLang = good[0];
    shortLang.length = 2;
    Section hugeData = good[3];
    hugeData.length = 0x7FFFFFF0;
    Section shortIndex = good[4];
    shortIndex.length = shortIndex.payload.size() - 1;
    shortIndex.payload.pop_back();
    const Bytes whole = file_of(good);
    Bytes moreThanMax;
    put32(moreThanMax, 65536);

    // The message's %s stands for the path.
    struct Case { const char *name; Bytes file; int32_t code; std::string msg; int32_t budget = 0; };
    const int32_t BF = LX_ERR_BAD_FORMAT, RE = LX_ERR_READ;
    const std::string bad = "%s invalid compressed lexicon", unicode = "%s: Unicode lexicon not supported";
    const std::vector<Case> cases = {
        {"three bytes", hex_bytes("57 00 05"), BF, "%s: error reading magic number"},
        {"other magic", file_of(good, 0x12345678), BF, "%s: magic number 0x12345678 != 0x57000501"},
        {"only the magic", hex_bytes("57 00 05 01"), BF, bad},
        {"type without length", hex_bytes("57 00 05 01 00 00 00 01 00 00"), BF, "%s: error reading section length"},
        {"two-byte characters", with({{1, number_section(SECT_CHAR_SIZE, 2)}}), LX_ERR_UNSUPPORTED, unicode},
        {"character size 3", with({{1, number_section(SECT_CHAR_SIZE, 3)}}), LX_ERR_UNSUPPORTED, unicode},
        {"no index", without(4), BF, bad},
        {"no data", without(3), BF, bad},
        {"no segments", with({{3, section(SECT_SEG_DATA, {})}, {4, index_section({})}}), BF, bad},
        {"index cut short", cut(1), RE, "%s: read error"},
        {"table cut short", Bytes(whole.begin(), whole.begin() + 0x30), RE, "%s: read error"},
        {"index longer than the file", with({{4, hugeIndex}}), RE, "%s: read error"},
        {"too many segments", with({{4, section(SECT_SEG_INDEX, moreThanMax)}}), LX_ERR_NO_MEMORY,
         "%s: too many segments (0)"},
        {"segment above the budget", file_of(good), LX_ERR_NO_MEMORY, "%s: segment size 12 > budget 11", 11},
        {"entries beyond the index", with({{4, shortIndex}}), BF, bad},
        {"keys out of order", with({{4, index_section({{"wal", 2, 12}, {"at", 0, 2}})}}), BF, bad},
        {"a key twice", with({{4, index_section({{"at", 0, 2}, {"at", 2, 12}})}}), BF, bad},
        {"a key with a hole", with({{4, index_section({{std::string("a\0t", 3), 0, 2}})}}), BF, bad},
        {"segment beyond the data", with({{4, index_section({{"at", 0, 2}, {"wal", 2, 13}})}}), BF, bad},
        {"segments overlap", with({{4, index_section({{"at", 0, 14}, {"wal", 0, 14}})}}), BF, bad},
        {"offset wraps", with({{4, index_section({{"at", 0xFFFFFFFF, 2}})}}), BF, bad},
        {"two suffix sections", file_of({good[0], good[1], good[2], good[2], good[3], good[4]}), BF, bad},
        {"two indexes", file_of({good[0], good[1], good[2], good[3], good[4], good[4]}), BF, bad},
        {"two data sections", file_of({good[0], good[1], good[2], good[3], good[3], good[4]}), BF, bad},
        {"table beyond its section", with({{2, longTable}}), BF, bad},
        {"language too short", with({{0, shortLang}}), BF, bad},
        {"data beyond 2^31", file_of({good[0], good[1], good[2], good[4], hugeData}), BF, bad},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        FcLex f(c.file);
        const long live = LX_Mem_LiveBlocks();
        EXPECT_EQ(c.code, f.open(c.budget));
        std::string msg = c.msg;
        msg.replace(msg.find("%s"), 2, f.path);
        EXPECT_EQ(msg, last_msg());
        EXPECT_NE(FCLEX_MAGIC, f.fc().magic);
        EXPECT_EQ(live, LX_Mem_LiveBlocks());
    }

    FcLex missing;
    EXPECT_EQ(LX_ERR_FILE_OPEN, missing.open());
    EXPECT_EQ("file open(" + missing.path + ") failed", last_msg());
}

// Files that differ from what the compiler writes but are sound.
TEST(FcLex, UnusualFilesOpen) {
    const auto good = standard_sections(kExampleWords, kExampleSimple, kExampleExt);
    const auto plain = standard_sections(kExampleWords, {}, {});
    const Section unknown = section(77, hex_bytes("01 02 03 04 05"));
    Bytes stray = file_of(good);
    stray.insert(stray.end(), {0, 0, 0});
    Section roomySuffixes = good[2];
    roomySuffixes.payload.insert(roomySuffixes.payload.end(), {9, 9});
    roomySuffixes.length += 2;
    Section longLang = number_section(SECT_LANGUAGE, 0x616D);
    longLang.payload.insert(longLang.payload.end(), {0, 0, 0, 0});
    longLang.length += 4;
    Section loneBytes = section(SECT_SUFFIXES, hex_bytes("00 00 00 02 61 62 00 00 00 00"));
    const std::vector<std::pair<const char *, Bytes>> files = {
        {"empty tables", file_of(plain)},
        {"unknown sections", file_of({unknown, good[0], good[1], unknown, good[2], good[3], unknown, good[4], unknown})},
        {"three stray bytes", stray},
        {"index before data", file_of({good[4], good[2], good[3]})},
        {"only index and data", file_of({plain[4], plain[3]})},
        {"bytes behind the tables", file_of({good[0], good[1], roomySuffixes, good[3], good[4]})},
        {"a longer language section", file_of({longLang, good[1], good[2], good[3], good[4]})},
        {"a table without terminator", file_of({good[0], good[1], loneBytes, plain[3], plain[4]})},
    };
    for (const auto &[name, file] : files) {
        SCOPED_TRACE(name);
        FcLex f(file);
        ASSERT_EQ(0, f.open(64));
        for (const auto &w : kExampleWords) EXPECT_TRUE(f.find(w.c_str())) << w;
        EXPECT_FALSE(f.find("walkin"));
    }
}

// What a segment load can meet, and what the lexicon is like afterwards.
TEST(FcLex, LoadFailures) {
    const auto good = standard_sections(kExampleWords, kExampleSimple, kExampleExt);
    {   // The file ends inside the data section, behind the index.
        Bytes f = file_of({good[0], good[1], good[2], good[4], good[3]});
        f.resize(f.size() - 3);
        FcLex lex(f);
        ASSERT_EQ(0, lex.open());
        EXPECT_TRUE(lex.find("at"));
        EXPECT_EQ(LX_ERR_BAD_FORMAT, FCLex_LoadSegment(&lex.lex, lex.segment("wal")));
        EXPECT_EQ(lex.path + ": read error", last_msg());
        EXPECT_FALSE(lex.find("walk"));
        EXPECT_EQ("", lex.loaded());
    }
    {   // The file is gone; a segment in memory still answers.
        FcLex lex(file_of(good));
        ASSERT_EQ(0, lex.open());
        ASSERT_EQ(0, FCLex_LoadSegment(&lex.lex, lex.segment("wal")));
        std::remove(lex.path.c_str());
        EXPECT_TRUE(lex.find("walks"));
    }
    {   // A segment of no bytes is not found, without a message.
        auto s = good;
        s[4] = index_section({{"at", 0, 2}, {"bee", 2, 0}, {"wal", 2, 12}});
        FcLex lex(file_of(s));
        ASSERT_EQ(0, lex.open());
        EXPECT_EQ(LX_ERR_NOT_FOUND, FCLex_LoadSegment(&lex.lex, lex.segment("bee")));
        EXPECT_FALSE(lex.find("beef"));
        EXPECT_TRUE(lex.find("walked"));
    }
    {   // A path cut to 515 bytes opens, but its loads look for the cut path.
        FcLex lex(file_of(good));
        std::string longPath = lex.dir.path;
        while (longPath.size() < 540) longPath += "/.";
        longPath += "/lex.lxc";
        ASSERT_EQ(0, LX_FCLex_Open(&lex.lex, longPath.c_str(), 0));
        EXPECT_EQ(515u, std::strlen(lex.fc().fileName));
        EXPECT_EQ(LX_ERR_CANT_CREATE, FCLex_LoadSegment(&lex.lex, lex.segment("wal")));
        EXPECT_EQ(std::string(lex.fc().fileName) + ": can't open", last_msg());
        EXPECT_TRUE(lex.find("at"));
    }
}

// Every allocation of an open can fail: the open gives LX_ERR_NO_MEMORY and
// holds nothing.
TEST(FcLex, AllocationFailuresAtOpen) {
    FcLex f(standard_file(kExampleWords, kExampleSimple, kExampleExt));
    for (long fail = 0;; ++fail) {
        SCOPED_TRACE(fail);
        const long live = LX_Mem_LiveBlocks();
        LX_Mem_FailAfter(fail);
        const int32_t r = f.open();
        LX_Mem_FailAfter(-1);
        if (r == 0) break;
        EXPECT_EQ(r == LX_ERR_FILE_OPEN ? LX_ERR_FILE_OPEN : LX_ERR_NO_MEMORY, r); // the file's handle
        EXPECT_EQ(live, LX_Mem_LiveBlocks());
        ASSERT_LT(fail, 100);
    }
    EXPECT_TRUE(f.find("walking"));
}

// ----------------------------------------------------------------- budget

namespace {
// Three segments of 8 bytes each ("aaa", "bbb", "ccc" and their words),
// and one of 16 ("ddd").
const std::vector<std::string> kBudgetWords = {"aaaxxxx", "bbbxxxx", "cccxxxx", "dddxxxxxxxxxxxxxx"};
} // namespace

TEST(FcLex, Budget) {
    FcLex f(standard_file(kBudgetWords));
    ASSERT_EQ(0, f.open(16));
    ASSERT_EQ(6u, f.segment("aaa")->size);
    struct Step {
        const char *word;
        const char *loaded; // after the lookup
    };
    // A, B, A, C throws out B; B then throws out A, used before C.
    for (const Step &s : std::initializer_list<Step>{{"aaaxxxx", "aaa"},
                                                     {"bbbxxxx", "aaa bbb"},
                                                     {"aaax", "aaa bbb"},
                                                     {"cccxxxx", "aaa ccc"},
                                                     {"bbbxxxx", "bbb ccc"},
                                                     {"dddxxxxxxxxxxxxxx", "ddd"},
                                                     {"aaaxxxx", "aaa"}}) {
        f.find(s.word);
        EXPECT_EQ(s.loaded, f.loaded()) << s.word;
        int32_t held = 0;
        for (int32_t i = 0; i < f.fc().nSegments; ++i)
            if (f.fc().segIndex[i]->data) held += static_cast<int32_t>(f.fc().segIndex[i]->size);
        EXPECT_EQ(16 - held, f.fc().budgetLeft);
    }
    // A request of a segment in memory needs no file and marks the segment.
    std::remove(f.path.c_str());
    const uint32_t clock = f.fc().useClock;
    EXPECT_TRUE(f.find("aaaxxxx"));
    EXPECT_EQ(clock + 1, f.segment("aaa")->lastUse);
    EXPECT_FALSE(f.find("bbbxxxx")); // thrown out, and the file is gone
    EXPECT_EQ(f.path + ": can't open", last_msg());
    // No budget, or one below zero, keeps everything.
    for (int32_t budget : {0, -5}) {
        FcLex g(standard_file(kBudgetWords));
        ASSERT_EQ(0, g.open(budget));
        for (const auto &w : kBudgetWords) EXPECT_TRUE(g.find(w.c_str()));
        EXPECT_EQ("aaa bbb ccc ddd", g.loaded());
        EXPECT_EQ(budget, g.fc().budgetLeft);
    }
}

// ---------------------------------------------------------------- lookups

TEST(FcLex, LookupsExactAndWithoutCase) {
    FcLex f(standard_file({"WALKED", "aT", "walK", "walk", "walked", "zebra", "zebu", "Paris", "x", "\xe9t\xe9s"},
                          {"ed"}, {"k"}));
    ASSERT_EQ(0, f.open());
    struct Case { const char *word; bool exact, noCase; };
    for (const Case &c : std::initializer_list<Case>{
             {"walk", true, true},   {"walK", true, true},    {"WALK", false, true},   {"walke", false, false},
             {"Walked", false, true}, {"WALKED", true, true}, {"wAlKeD", false, true}, {"AT", false, true},
             {"aT", true, true},     {"at", false, true},     {"X", false, true},      {"zebraz", false, false},
             {"zebr", false, false}, {"PARIS", false, true},  {"paris", false, true},  {"\xc9T\xc9S", false, true},
             {"y", false, false},    {"", false, false}}) {
        EXPECT_EQ(c.exact, f.find(c.word, 1)) << c.word;
        EXPECT_EQ(c.noCase, f.find(c.word, 0)) << c.word;
    }
}

// The scan without regard to case gives what a scan with the whole-word
// callback gives, for every word near the segment's words.
TEST(FcLex, CaseBlindScanAgreesWithTheCallback) {
    const std::vector<std::string> words = {"abcd", "abcdE", "abcdef", "abcDEF", "abcx", "abcxy", "abcXYZ", "abc"};
    const Segments segs = encode_segments(words, {"ef"}, {"xy"});
    const char *simple[] = {"ef"}, *ext[] = {"xy"};
    const MCSuffixTable st{simple, 1}, et{ext, 1};
    MCSegment seg{segs.data.data(), static_cast<uint32_t>(segs.data.size()), {'a', 'b', 'c'}};
    for (const char *w : {"abc", "ABC", "abcd", "ABCDE", "abcdEF", "abcDe", "abcXy", "ABCXYZ", "abcxyz", "abcz",
                          "abcdefg", "abcxyzz"}) {
        EXPECT_EQ(MCLex_Scan(&seg, 1, &st, &et, w, FCLex_CheckWordCb, nullptr), MCLex_FindNoCase(&seg, &st, &et, w))
            << w;
    }
}

// A record that can't be honoured ends its segment's scan: the words
// behind it are absent, those before it are found.
TEST(FcLex, DamagedRecordsEndTheScan) {
    Segments segs = encode_segments({"wala", "walb", "walc"}, {}, {});
    ASSERT_EQ(hex_bytes("00 61 00 00 62 00 00 63 00"), segs.data);
    const std::vector<std::pair<const char *, Bytes>> damage = {
        {"shared count beyond the tail", hex_bytes("00 61 00 05 62 00 00 63 00")},
        {"simple code without table", hex_bytes("00 61 00 00 05 00 63 00")},
        {"extended number beyond table", hex_bytes("00 61 00 00 01 07 00 63 00")},
        {"record cut by the end", hex_bytes("00 61 00 00 62")},
    };
    for (const auto &[name, data] : damage) {
        SCOPED_TRACE(name);
        auto s = standard_sections({}, {}, {});
        s[3] = section(SECT_SEG_DATA, data);
        s[4] = index_section({{"wal", 0, static_cast<uint32_t>(data.size())}});
        FcLex f(file_of(s));
        ASSERT_EQ(0, f.open());
        EXPECT_TRUE(f.find("wala"));
        EXPECT_TRUE(f.find("WALA", 0));
        EXPECT_FALSE(f.find("walb"));
        EXPECT_FALSE(f.find("walc"));
        EXPECT_FALSE(f.find("WALC", 0));
    }
}

// ----------------------------------------------------------------- searches

TEST(FcLex, PatternSearches) {
    FcLex f(standard_file({"be", "cat", "cats", "coat", "cot", "cut", "dog", "dot", "Cot", "Cat", "cute", "cutter"}));
    ASSERT_EQ(0, f.open());
    struct Case { const char *pattern; int16_t caseSensitive; int32_t capacity; const char *found, *loaded; };
    for (const Case &c : std::initializer_list<Case>{
             {"c?t", 1, 10, "cat:100 cot:100 cut:100", "cat cot cut"},
             {"c?t", 0, 10, "cat:100 cot:100 cut:100", "cat cot cut"},
             {"?ot", 1, 10, "Cot:100 cot:100 dot:100", "Cot cot dot"},
             {"cut?", 1, 10, "cute:100", "cut"},
             {"Cut?", 0, 10, "", ""},      // the key's case counts
             {"?ut?", 0, 10, "cute:100", "cut"},
             {"cu?", 1, 10, "cut:100", "cut"},
             {"b?", 1, 10, "be:100", ""},  // short keys need no load
             {"?", 1, 10, "", ""},
             {"ca??", 1, 1, "cats:100", "cat"}, // sorted keys: stops behind "cat"
             {"?at", 1, 1, "Cat:100", "Cat"},   // full after the first segment
         }) {
        FcLex g(standard_file({"be", "cat", "cats", "coat", "cot", "cut", "dog", "dot", "Cot", "Cat", "cute", "cutter"}));
        ASSERT_EQ(0, g.open());
        Set set(c.capacity);
        EXPECT_EQ(0, LX_Lexicon_FindPattern(&g.lex, c.pattern, c.caseSensitive, &set.set)) << c.pattern;
        EXPECT_EQ(c.found, set.str()) << c.pattern;
        EXPECT_EQ(c.loaded, g.loaded()) << c.pattern;
    }
    // A set that is full at the start stops behind the first key of three
    // bytes, and a better candidate from it still gets in.
    Set full(1, "zz:50");
    EXPECT_EQ(0, LX_Lexicon_FindPattern(&f.lex, "??t", 1, &full.set));
    EXPECT_EQ("Cat:100", full.str());
    EXPECT_EQ("Cat", f.loaded());
}

TEST(FcLex, PatternSearchStopsAtALoadFailure) {
    auto s = standard_sections({"cat", "cot"}, {}, {});
    Bytes file = file_of({s[0], s[1], s[2], s[4], s[3]});
    file.resize(file.size() - 2); // the segment "cot" is cut
    FcLex f(file);
    ASSERT_EQ(0, f.open());
    Set set;
    EXPECT_EQ(LX_ERR_BAD_FORMAT, LX_Lexicon_FindPattern(&f.lex, "c?t", 1, &set.set));
    EXPECT_EQ("cat:100", set.str());
    EXPECT_EQ(LX_ERR_BAD_FORMAT, LX_Lexicon_FindSimilar(&f.lex, "cit", 100, LX_Compare_Typographic, &set.set));
}

TEST(FcLex, ComparatorSearchesDecodeOnlyNearKeys) {
    const std::vector<std::string> words = {"at", "house", "housed", "mouse", "horse", "hose", "zzzz"};
    for (int32_t depth : {0, 40, 100}) {
        FcLex f(standard_file(words, {"ed"}, {}));
        ASSERT_EQ(0, f.open());
        Set set;
        EXPECT_EQ(0, LX_Lexicon_FindSimilar(&f.lex, "housr", depth, LX_Compare_Typographic, &set.set));
        // Keys scored against "hou": hou 100, hor and hos 66, mou 66, zzz 0.
        const char *loaded = depth == 0 ? "hou" : depth == 40 ? "hor hos hou mou" : "hor hos hou mou zzz";
        EXPECT_EQ(loaded, f.loaded()) << depth;
        EXPECT_EQ("house", std::string(set.set.entries[0].word)) << set.str();
    }
}

namespace {
bool collect(void *ctx, const char *held) {
    static_cast<std::vector<std::string> *>(ctx)->push_back(held);
    return true;
}
} // namespace

TEST(FcLex, WordsOfABaseForm) {
    FcLex f(standard_file({"\xe9t\xe9", "ete", "\xc9t\xe9", "et\xe9s", "eta", "ETE", "fete", "\xe9", "e", "E\xe9"}));
    ASSERT_EQ(0, f.open());
    std::vector<std::string> held;
    EXPECT_EQ(0, LX_Lexicon_ForEachBaseForm(&f.lex, "ETE", collect, &held));
    std::sort(held.begin(), held.end());
    EXPECT_EQ((std::vector<std::string>{"ETE", "ete", "\xc9t\xe9", "\xe9t\xe9"}), held);
    EXPECT_EQ("ETE ete et\xe9 \xc9t\xe9 \xe9t\xe9", f.loaded()); // not "fet" nor "eta"
    held.clear();
    EXPECT_EQ(0, LX_Lexicon_ForEachBaseForm(&f.lex, "\xc9", collect, &held));
    std::sort(held.begin(), held.end());
    EXPECT_EQ((std::vector<std::string>{"e", "\xe9"}), held);
}

TEST(FcLex, ChangesAreUnsupported) {
    FcLex f(standard_file(kExampleWords));
    ASSERT_EQ(0, f.open());
    char bfr[64];
    EXPECT_EQ(LX_ERR_UNSUPPORTED, LX_Lexicon_AddWord(&f.lex, "walker", LX_ACT_IGNORE, nullptr));
    EXPECT_EQ(LX_ERR_UNSUPPORTED, LX_Lexicon_DelWord(&f.lex, "walk"));
    EXPECT_EQ(LX_ERR_UNSUPPORTED, LX_Lexicon_Clear(&f.lex));
    EXPECT_EQ(LX_ERR_UNSUPPORTED, LX_Lexicon_GetImage(&f.lex, bfr, sizeof bfr));
    EXPECT_EQ(LX_ERR_UNSUPPORTED, LX_Lexicon_Size(&f.lex));
    EXPECT_TRUE(f.find("walk"));
}

TEST(FcLexDeathTest, ProgrammerErrors) {
    LX_Lexicon closed{};
    closed.kind = LEX_FC;
    EXPECT_DEATH(LX_FCLex_Open(nullptr, "x", 0), "lex != NULL");
    EXPECT_DEATH(LX_FCLex_Open(&closed, nullptr, 0), "fileName != NULL");
    EXPECT_DEATH(LX_Lexicon_FindWord(&closed, "word", 1, nullptr, 0), "MAGIC == lex->magic");
}

// Disk lexicon: the bytes of the files it creates and saves, headers and
// language numbers, external word lists, comments and odd lines, entries
// that couldn't be read back, the failures a test can provoke, the refresh
// between two writers, and checking and suggesting from a disk lexicon.
#include <sys/resource.h>

#include <csignal>

#include "dftlex.h"
#include "filetest.h"
#include "lexicon.h"
#include "lxtest.h"
#include "platform.h"
#include "portab.h"

namespace {

// A disk lexicon record that closes itself.
struct DiskLex {
    LX_Lexicon lex{};
    DiskLex() { lex.kind = LEX_DFT; }
    ~DiskLex() { close(); }
    DiskLex(const DiskLex &) = delete;
    DiskLex &operator=(const DiskLex &) = delete;
    int32_t create(const std::string &path, int16_t lang = 24941) {
        return LX_DFTLex_Create(&lex, path.c_str(), lang);
    }
    int32_t open(const std::string &path) { return LX_DFTLex_Open(&lex, path.c_str()); }
    void close() {
        if (lex.dft.magic == DFTLEX_MAGIC) LX_Lexicon_Close(&lex);
    }
    int32_t add(const char *word, int16_t action = LX_ACT_IGNORE, const char *other = nullptr) {
        return LX_Lexicon_AddWord(&lex, word, action, other);
    }
    int32_t del(const char *word) { return LX_Lexicon_DelWord(&lex, word); }
    bool has(const char *word) { return LX_Lexicon_FindWord(&lex, word, 1, nullptr, 0) >= 0; }
    // The entries as "word" for a word alone, else "word<TAB><action><other>",
    // split by blanks.
    std::string entries() const {
        std::string out;
        auto *e = static_cast<const LX_LexEntry *>(lex.dft.mem.words.data);
        for (int32_t i = 0; i < lex.dft.mem.words.count; ++i) {
            out += (i ? " " : "") + std::string(e[i].word);
            if (e[i].action != LX_ACT_IGNORE || (e[i].otherWord && *e[i].otherWord))
                out += "\t" + std::string(1, static_cast<char>(e[i].action)) + (e[i].otherWord ? e[i].otherWord : "");
        }
        return out;
    }
};

} // namespace

TEST(DftLex, CreateWritesTheHeaderAndRefusesWhatExists) {
    TempDir dir;
    const std::string path = dir / "user.dic";
    DiskLex lex;
    ASSERT_EQ(0, lex.create(path));
    EXPECT_EQ(path + " created", last_msg());
    EXPECT_EQ("#LID 24941\r\n", read_bytes(path));
    EXPECT_EQ(0, lex.lex.dft.external);
    EXPECT_EQ(0, LX_Lexicon_Size(&lex.lex) - 1);

    // Whatever stands at the path stays as it is.
    DiskLex again;
    EXPECT_EQ(LX_ERR_FILE_EXISTS, again.create(path, 1));
    EXPECT_EQ(path + " already exists", last_msg());
    EXPECT_EQ("#LID 24941\r\n", read_bytes(path));
    EXPECT_EQ(LX_ERR_FILE_EXISTS, again.create(dir.path));
    EXPECT_FALSE(std::filesystem::exists(dir.path + ".lock")); // nothing is left beside what stands there
    EXPECT_EQ(LX_ERR_CANT_CREATE, again.create(dir / "no/such.dic"));
    EXPECT_EQ(dir / "no/such.dic" + " already exists", last_msg());
    EXPECT_EQ(0u, again.lex.dft.magic);

    // The header is written under the lock; without it, no file is made.
    const int32_t oldWait = PORT_SetLockWait(30);
    const int16_t token = PORT_LockFile((dir / "locked.dic").c_str());
    EXPECT_EQ(LX_ERR_WRITE, again.create(dir / "locked.dic"));
    EXPECT_EQ("Can't lock " + dir / "locked.dic" + " (-1)", last_msg());
    EXPECT_FALSE(std::filesystem::exists(dir / "locked.dic"));
    PORT_UnlockFile(token);
    PORT_SetLockWait(oldWait);

    // A long path is cut to 515 bytes in the record.
    DiskLex longName;
    const std::string deep = dir / std::string(200, 'a') + "/" + std::string(200, 'b') + "/" + std::string(200, 'c');
    EXPECT_LT(longName.create(deep), 0);
    EXPECT_EQ(515u, std::strlen(longName.lex.dft.fileName));
}

// Each row: the file as found, what the open gives (the entries, or the
// error), the language and the external flag, and the file after the word
// "zz" has been added.
TEST(DftLex, OpenReadsEveryFormOfLine) {
    const std::string x79(79, 'x'), x11(11, 'x'), lf(80, '\n');
    const struct {
        const char *name;
        std::string file;
        std::string entries; // "!<code>" for a failing open
        int16_t lang;
        bool external;
        std::string saved;
    } cases[] = {
        {"engine's own", "#LID 24941\r\ncat\ti\r\nteh\tAthe\r\n", "cat teh\tAthe", 24941, false,
         "#LID 24941\r\ncat\ti\r\nteh\tAthe\r\nzz\ti\r\n"},
        {"empty file", "", "", LX_LANG_NONE, true, "zz\r\n"},
        {"comment header", "# my words\r\nw\r\n", "w", 0, false, "#LID 0\r\nw\ti\r\nzz\ti\r\n"},
        {"windows id", "#LID 1036\r\n", "", 26226, false, "#LID 26226\r\nzz\ti\r\n"},
        {"english id", "#LID 1033\r\n", "", 24941, false, "#LID 24941\r\nzz\ti\r\n"},
        {"other number", "#LID 9999\r\n", "", 9999, false, "#LID 9999\r\nzz\ti\r\n"},
        {"negative", "# -5 more\r\n", "", -5, false, "#LID -5\r\nzz\ti\r\n"},
        {"low 16 bits", "#LID 66569\r\n", "", 24941, false, "#LID 24941\r\nzz\ti\r\n"},
        {"long first token", "#LIDLIDLIDLID123 456\r\n", "", 0, false, "#LID 0\r\nzz\ti\r\n"},
        {"external list", "dog\r\ncat\r\ncat\te\r\n", "cat\te dog", LX_LANG_NONE, true, "cat\r\ndog\r\nzz\r\n"},
        {"later line wins", "#LID 1\r\ndog\ti\r\ncat\ti\r\ncat\te\r\n", "cat\te dog", 1, false,
         "#LID 1\r\ncat\te\r\ndog\ti\r\nzz\ti\r\n"},
        {"comments and empty lines", "#LID 2\r\n\r\n# note\r\nw\r\n\r\n", "w", 2, false, "#LID 2\r\nw\ti\r\nzz\ti\r\n"},
        {"line ends behind its tab", "#LID 3\r\nword\t\r\n", "word", 3, false, "#LID 3\r\nword\ti\r\nzz\ti\r\n"},
        {"last line open", "#LID 4\r\na\ti\r\nb\ti", "a", 4, false, "#LID 4\r\na\ti\r\nzz\ti\r\n"},
        {"90 bytes", "#LID 5\r\n" + x79 + x11 + "\r\n", x11 + " " + x79, 5, false,
         "#LID 5\r\n" + x11 + "\ti\r\n" + x79 + "\r\nzz\ti\r\n"},
        {"short LF lines", "one\ntwo\n", "", LX_LANG_NONE, true, "zz\r\n"},
        {"long LF lines", lf + "\r\n", "!-19", 0, false, ""},
        {"control byte in word", "#LID 6\r\nab\x01" "c\ti\r\n", "!-19", 0, false, ""},
        {"control byte in other word", "#LID 7\r\nw\tAx\x01y\r\n", "w\tAx\x01y", 7, false,
         "#LID 7\r\nw\tAx\x01y\r\nzz\ti\r\n"},
        {"accents", "#LID 8\r\ncaf\xE9\tc\xE9t\xE9\r\n", "caf\xE9\tc\xE9t\xE9", 8, false,
         "#LID 8\r\ncaf\xE9\tc\xE9t\xE9\r\nzz\ti\r\n"},
    };
    TempDir dir;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir / "lex";
        write_bytes(path, c.file);
        DiskLex lex;
        const int32_t r = lex.open(path);
        if (c.entries[0] == '!') {
            EXPECT_EQ(std::stoi(c.entries.substr(1)), r);
            EXPECT_EQ("Can't load " + path, last_msg());
            EXPECT_EQ(0u, lex.lex.dft.magic);
            continue;
        }
        ASSERT_EQ(0, r);
        EXPECT_EQ(c.entries, lex.entries());
        EXPECT_EQ(c.lang, lex.lex.dft.mem.lang);
        EXPECT_EQ(c.external, lex.lex.dft.external != 0);
        EXPECT_EQ(0, lex.add("zz"));
        EXPECT_EQ(c.saved, read_bytes(path));
        // What was saved opens to the same entries.
        const std::string before = lex.entries();
        lex.close();
        ASSERT_EQ(0, lex.open(path));
        if (!c.external) {
            EXPECT_EQ(before, lex.entries());
        }
    }
    DiskLex missing;
    EXPECT_EQ(LX_ERR_FILE_OPEN, missing.open(dir / "missing"));
    EXPECT_EQ(dir / "missing" + ": file open error", last_msg());
}

TEST(DftLex, SavesFollowEveryChange) {
    TempDir dir;
    const std::string path = dir / "lex";
    DiskLex lex;
    ASSERT_EQ(0, lex.create(path, 24941));
    EXPECT_EQ(0, lex.add("teh", LX_ACT_AUTO_CHANGE_CASE, "the"));
    EXPECT_EQ(0, lex.add("cat"));
    EXPECT_EQ(0, lex.add("alot", LX_ACT_COND_CHANGE, "a lot"));
    EXPECT_EQ(0, lex.add("bad", LX_ACT_EXCLUDE, ""));
    EXPECT_EQ("#LID 24941\r\nalot\tca lot\r\nbad\te\r\ncat\ti\r\nteh\tAthe\r\n", read_bytes(path));
    EXPECT_EQ(0, lex.del("cat"));
    EXPECT_EQ(LX_ERR_NOT_FOUND, lex.del("Cat"));
    EXPECT_EQ("Cat doesn't exist in " + path, last_msg());
    EXPECT_EQ("#LID 24941\r\nalot\tca lot\r\nbad\te\r\nteh\tAthe\r\n", read_bytes(path));
    EXPECT_EQ(0, LX_Lexicon_Clear(&lex.lex));
    EXPECT_EQ("#LID 24941\r\n", read_bytes(path));
    EXPECT_EQ("", lex.entries());
    // Nothing is left beside the file but its lock companion.
    EXPECT_EQ((std::vector<std::string>{"lex", "lex.lock"}), dir.names());
}

TEST(DftLex, ExternalListTakesOnlyPlainWords) {
    TempDir dir;
    const std::string path = dir / "words.txt";
    write_bytes(path, "dog\r\nteh\tAthe\r\n");
    DiskLex lex;
    ASSERT_EQ(0, lex.open(path));
    EXPECT_EQ(LX_ERR_UNSUPPORTED, lex.add("cat", LX_ACT_EXCLUDE));
    EXPECT_EQ("Can't use action e with external lexicon " + path, last_msg());
    EXPECT_EQ("dog\r\nteh\tAthe\r\n", read_bytes(path));
    // The other word of an entry is kept in memory, where the check finds
    // it, but not in the file.
    char other[LX_MAX_WORD_SZ];
    EXPECT_EQ(LX_ACT_AUTO_CHANGE_CASE, LX_Lexicon_FindWord(&lex.lex, "teh", 1, other, sizeof other));
    EXPECT_STREQ("the", other);
    EXPECT_EQ(0, lex.del("dog"));
    EXPECT_EQ("teh\r\n", read_bytes(path));
    EXPECT_EQ(0, lex.add("cat"));
    EXPECT_EQ("cat\r\nteh\r\n", read_bytes(path));
    EXPECT_EQ(0, LX_Lexicon_Clear(&lex.lex));
    EXPECT_EQ("", read_bytes(path));
}

// An entry is stored only if its line reads back as the same entry.
TEST(DftLex, AddRefusesEntriesThatWouldNotReadBack) {
    const std::string w75(75, 'w'), w76(76, 'w'), w77(77, 'w'), w78(78, 'w'), w79(79, 'w'), x75(75, 'x');
    const struct { std::string word; int16_t action; const char *other; bool external; bool stored; } cases[] = {
        {w75, LX_ACT_IGNORE, nullptr, false, true},  // 77 bytes with tab and action
        {w76, LX_ACT_IGNORE, nullptr, false, false}, // 78: the LF would start the next line
        {w77, LX_ACT_IGNORE, nullptr, false, true},  // 79: the buffer's size
        {w78, LX_ACT_IGNORE, nullptr, false, false},
        {"w", LX_ACT_AUTO_CHANGE, "x", false, true},
        {"w", LX_ACT_AUTO_CHANGE, x75.c_str(), false, false}, // 78 bytes
        {"#tag", LX_ACT_IGNORE, nullptr, false, false}, // would be a comment
        {"w", LX_ACT_AUTO_CHANGE, "a\r\nb", false, false},
        {"w", LX_ACT_AUTO_CHANGE, "a\r", false, false},  // CR CR LF ends no line
        {"w", LX_ACT_AUTO_CHANGE, "a\rb", false, true},
        {"w", LX_ACT_AUTO_CHANGE, "a\nb", false, true},
        {"w", '\r', nullptr, false, false},
        {"w", 0x169, nullptr, false, false}, // only the low byte would be written
        {"", LX_ACT_IGNORE, nullptr, false, true},
        {"", LX_ACT_IGNORE, nullptr, true, false}, // an empty line is passed over
        {w78, LX_ACT_IGNORE, nullptr, true, false},
        {w79, LX_ACT_IGNORE, nullptr, true, true},
    };
    TempDir dir;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.word + "/" + std::to_string(c.action) + "/" + (c.other ? c.other : "-"));
        const std::string path = dir / "lex";
        std::filesystem::remove(path);
        if (c.external) write_bytes(path, "");
        DiskLex lex;
        ASSERT_EQ(0, c.external ? lex.open(path) : lex.create(path));
        const std::string before = read_bytes(path);
        const int32_t r = lex.add(c.word.c_str(), c.action, c.other);
        if (!c.stored) {
            EXPECT_EQ(LX_ERR_INVALID_WORD, r);
            EXPECT_NE(std::string::npos, last_msg().find("would not read back whole")) << last_msg();
            EXPECT_EQ(before, read_bytes(path));
            EXPECT_FALSE(lex.has(c.word.c_str()));
            continue;
        }
        ASSERT_EQ(0, r);
        DiskLex again;
        ASSERT_EQ(0, again.open(path));
        EXPECT_EQ(lex.entries(), again.entries());
    }
}

// Lines cut into pieces by the reader give entries of their own; a save
// writes each so that it reads back as one line, never merging with the
// next one.
TEST(DftLex, PiecesOfLongLinesReadBackAfterASave) {
    const std::string w78(78, 'w'), w76(76, 'v'), x75(75, 'x');
    TempDir dir;
    const std::string path = dir / "lex";
    // A word of 78 bytes and its tab fill the buffer; a word of 76 bytes
    // with tab is 77; and a line of 78 bytes leaves its CR behind at the end.
    write_bytes(path, "#LID 1\r\n" + w78 + "\t\r\n" + w76 + "\t\r\na\tA" + x75 + "\r\n");
    DiskLex lex;
    ASSERT_EQ(0, lex.open(path));
    EXPECT_EQ("a\tA" + x75 + "\r " + w76 + " " + w78, lex.entries());
    ASSERT_EQ(0, lex.add("zz"));
    DiskLex again;
    ASSERT_EQ(0, again.open(path));
    EXPECT_EQ("a\tA" + x75 + "\r " + w76 + " " + w78 + " zz", again.entries());
}

TEST(DftLex, FailuresLeaveFileAndMemoryAsTheyWere) {
    TempDir dir;
    const std::string path = dir / "lex";
    DiskLex lex;
    ASSERT_EQ(0, lex.create(path, 1));
    ASSERT_EQ(0, lex.add("keep"));
    const std::string kept = "#LID 1\r\nkeep\ti\r\n";

    // A lock held elsewhere.
    const int32_t oldWait = PORT_SetLockWait(30);
    int16_t token = PORT_LockFile(path.c_str());
    ASSERT_GE(token, 0);
    EXPECT_EQ(LX_ERR_WRITE, lex.add("new"));
    EXPECT_EQ("Can't lock " + path + " (-1)", last_msg());
    EXPECT_EQ(LX_ERR_WRITE, lex.del("keep"));
    EXPECT_EQ(LX_ERR_WRITE, LX_Lexicon_Clear(&lex.lex));
    EXPECT_EQ("keep", lex.entries());
    EXPECT_EQ(kept, read_bytes(path));
    PORT_UnlockFile(token);
    PORT_SetLockWait(oldWait);

    // The file removed between calls: the next change writes it anew.
    std::filesystem::remove(path);
    EXPECT_EQ(0, lex.add("back"));
    EXPECT_EQ("#LID 1\r\nback\ti\r\nkeep\ti\r\n", read_bytes(path));

    // Another writer leaves a line that can't be loaded: the refresh before
    // a change fails, and the change stops.
    const std::string theirs = "#LID 1\r\nback\ti\r\nkeep\ti\r\nbad\x01word\ti\r\n";
    write_bytes(path, theirs);
    EXPECT_EQ(LX_ERR_INVALID_WORD, lex.add("new"));
    EXPECT_EQ("Can't load " + path, last_msg());
    EXPECT_EQ(LX_ERR_INVALID_WORD, lex.del("keep"));
    EXPECT_EQ("back keep", lex.entries());
    EXPECT_EQ(theirs, read_bytes(path));

    // A folder in the file's place.
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_EQ(LX_ERR_CANT_CREATE, lex.add("new"));
    EXPECT_EQ("Can't write " + path + " (-24)", last_msg());
    EXPECT_FALSE(lex.has("new"));
    EXPECT_EQ(LX_ERR_CANT_CREATE, lex.del("keep"));
    EXPECT_EQ("Can't save " + path + " (-24)", last_msg());
    EXPECT_TRUE(lex.has("keep"));
    EXPECT_EQ(LX_ERR_CANT_CREATE, LX_Lexicon_Clear(&lex.lex));
    EXPECT_EQ("Can't write " + path + " (-24)", last_msg());
    EXPECT_EQ("", lex.entries()); // a clear empties memory in any case
    std::filesystem::remove(path);
}

TEST(DftLex, PermissionFailures) {
    TempDir dir;
    chmod(dir.path.c_str(), 0777);
    const std::string path = dir / "lex";
    write_bytes(path, "#LID 1\r\nkeep\ti\r\n");
    chmod(path.c_str(), 0444);
    std::filesystem::create_directory(dir / "ro");
    write_bytes(dir / "ro/lex", "#LID 1\r\nkeep\ti\r\n");
    chmod((dir / "ro/lex").c_str(), 0666);
    chmod((dir / "ro").c_str(), 0555);
    const std::string out = in_child(
        [&] {
            DiskLex lex, inRo, created;
            std::string res = std::to_string(lex.open(path));
            res += " " + std::to_string(lex.add("new"));
            res += " " + last_msg();
            res += "|" + std::to_string(created.create(dir / "ro/new"));
            res += " " + last_msg();
            res += "|" + std::to_string(inRo.open(dir / "ro/lex"));
            res += " " + std::to_string(inRo.add("new"));
            if (lex.lex.dft.magic && inRo.lex.dft.magic)
                res += std::string(" ") + (lex.has("new") || inRo.has("new") ? "in memory" : "not in memory");
            return res;
        },
        true);
    EXPECT_EQ("0 -24 Can't write " + path + " (-24)|-24 " + dir / "ro/new" + " already exists|0 -23 not in memory",
              out);
    EXPECT_EQ("#LID 1\r\nkeep\ti\r\n", read_bytes(path));
    EXPECT_EQ("#LID 1\r\nkeep\ti\r\n", read_bytes(dir / "ro/lex"));
}

// A save that runs out of room (a file size limit stands in for a full
// disk) leaves the old file whole and the word out of memory.
TEST(DftLex, FailedWriteKeepsTheOldFile) {
    TempDir dir;
    const std::string path = dir / "lex";
    std::string file = "#LID 1\r\n";
    for (int i = 0; i < 2000; ++i) file += "word" + std::to_string(10000 + i) + "\ti\r\n";
    write_bytes(path, file);
    const std::string out = in_child([&] {
        DiskLex lex;
        if (lex.open(path) != 0) return std::string("open failed");
        signal(SIGXFSZ, SIG_IGN);
        struct rlimit lim = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &lim);
        std::string res = std::to_string(lex.add("aaa"));
        res += " " + last_msg();
        res += std::string(" ") + (lex.has("aaa") ? "in memory" : "not in memory");
        res += " " + std::to_string(lex.del("word10000"));
        res += " " + last_msg();
        res += std::string(" ") + (lex.has("word10000") ? "kept" : "lost");
        return res;
    });
    EXPECT_EQ("-23 Can't write " + path + " (-23) not in memory -23 Can't save " + path + " (-23) kept", out);
    EXPECT_EQ(file, read_bytes(path));
    EXPECT_EQ((std::vector<std::string>{"lex", "lex.lock"}), dir.names());
}

TEST(DftLex, WritersTakeUpEachOthersWords) {
    TempDir dir;
    const std::string path = dir / "lex";
    DiskLex a, b;
    ASSERT_EQ(0, a.create(path, 1));
    ASSERT_EQ(0, b.open(path));
    ASSERT_EQ(0, a.add("alpha"));
    ASSERT_EQ(0, b.add("beta", LX_ACT_EXCLUDE)); // takes up alpha first
    EXPECT_EQ("alpha beta\te", b.entries());
    // A lookup doesn't read the file; the next change does.
    EXPECT_FALSE(a.has("beta"));
    ASSERT_EQ(0, a.add("gamma"));
    EXPECT_EQ("alpha beta\te gamma", a.entries());
    // The file's entry wins over memory's for a word both have.
    ASSERT_EQ(0, b.add("alpha", LX_ACT_AUTO_CHANGE, "alfa"));
    ASSERT_EQ(0, a.add("delta"));
    EXPECT_EQ("alpha\taalfa beta\te delta gamma", a.entries());
    // A deletion is undone by a writer that still has the word.
    ASSERT_EQ(0, a.del("gamma"));
    ASSERT_EQ(0, b.add("epsilon"));
    EXPECT_EQ("#LID 1\r\nalpha\taalfa\r\nbeta\te\r\ndelta\ti\r\nepsilon\ti\r\ngamma\ti\r\n", read_bytes(path));
}

// Lookups, searches and the check and suggestion drivers reach the words of
// a disk lexicon as those of a memory lexicon.
TEST(DftLex, CheckAndSearchesWorkAsOnMemory) {
    TempDir dir;
    DiskLex lex;
    ASSERT_EQ(0, lex.create(dir / "lex"));
    for (const char *w : {"cat", "sat", "mat"}) ASSERT_EQ(0, lex.add(w));
    ASSERT_EQ(0, lex.add("teh", LX_ACT_AUTO_CHANGE_CASE, "the"));
    LexList list{&lex.lex};
    char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    const uint32_t opts = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE;
    EXPECT_EQ(LX_RES_AUTO_CHANGE, LX_CheckText("Teh cat", list, opts, &cursor, word, sizeof word, repl, sizeof repl));
    EXPECT_STREQ("The", repl);
    Set set(5), matches(5);
    EXPECT_GT(LX_Suggest("cta", 50, list, opts | LX_OPT_SUGGEST_TYPOGRAPHIC, &set.set), 0);
    EXPECT_NE(std::string::npos, set.str().find("cat:")) << set.str();
    EXPECT_EQ(0, LX_Lexicon_FindPattern(&lex.lex, "?at", 1, &matches.set));
    EXPECT_EQ("cat:100 mat:100 sat:100", matches.str());
    // The accent search finds a word of the disk lexicon in capitals.
    int held = 0;
    LX_Lexicon_ForEachBaseForm(&lex.lex, "CAT", [](void *n, const char *) { return ++*static_cast<int *>(n), true; },
                               &held);
    EXPECT_EQ(1, held);
}

// Every allocation of an open, and of an add that takes up another
// writer's words, can fail: the result is a plain code, nothing leaks, and
// the file still holds every word.
TEST(DftLex, AllocationFailuresLoseNothing) {
    TempDir dir;
    const std::string path = dir / "lex";
    write_bytes(path, "#LID 1\r\nb\ti\r\nd\tAe\r\n");
    const long before = LX_Mem_LiveBlocks();
    for (long fail = 0;; ++fail) {
        SCOPED_TRACE(fail);
        DiskLex lex;
        LX_Mem_FailAfter(fail);
        const int32_t r = lex.open(path);
        LX_Mem_FailAfter(-1);
        if (r == 0) break;
        EXPECT_TRUE(r == LX_ERR_NO_MEMORY || r == LX_ERR_FILE_OPEN) << r;
        EXPECT_EQ(before, LX_Mem_LiveBlocks());
    }
    for (long fail = 0;; ++fail) {
        SCOPED_TRACE(fail);
        write_bytes(path, "#LID 1\r\nb\ti\r\nd\tAe\r\n");
        DiskLex mine, theirs;
        ASSERT_EQ(0, mine.open(path));
        ASSERT_EQ(0, theirs.open(path));
        ASSERT_EQ(0, theirs.add(("t" + std::to_string(fail)).c_str()));
        LX_Mem_FailAfter(fail);
        const int32_t r = mine.add(("m" + std::to_string(fail)).c_str());
        LX_Mem_FailAfter(-1);
        DiskLex check;
        ASSERT_EQ(0, check.open(path));
        EXPECT_TRUE(check.has(("t" + std::to_string(fail)).c_str()));
        if (r == 0) break;
        EXPECT_TRUE(r == LX_ERR_NO_MEMORY || r == LX_ERR_FILE_OPEN || r == LX_ERR_CANT_CREATE) << r;
        EXPECT_FALSE(mine.has(("m" + std::to_string(fail)).c_str()));
        EXPECT_TRUE(mine.has("b") && mine.has("d"));
    }
    EXPECT_EQ(before, LX_Mem_LiveBlocks());
}

TEST(DftLex, HeaderTokens) {
    const struct { const char *line; int16_t lang; } cases[] = {
        {"#LID 24941", 24941}, {"#LID  \t 1036 rest", 26226}, {"#LID", 0}, {"#LID x", 0},
        {"#LID 2070", 28783},  {"#LID 1053", 29559},          {"#123456789012 5", 9012}, {"#1234567890123", 24587},
    };
    for (const auto &c : cases) {
        int16_t lang = -1;
        EXPECT_EQ(0, LX_DFTLex_ParseHeader(c.line, &lang));
        EXPECT_EQ(c.lang, lang) << c.line;
    }
    char token[10];
    const char *rest = LX_DFTLex_NextToken("  abcdefghijkl next", token, sizeof token);
    EXPECT_STREQ("abcdefghi", token);
    EXPECT_STREQ("jkl next", rest);
}

TEST(DftLexDeathTest, ProgrammerErrors) {
    LX_Lexicon closed{};
    closed.kind = LEX_DFT;
    EXPECT_DEATH(LX_DFTLex_Create(nullptr, "x", 1), "lex != NULL");
    EXPECT_DEATH(LX_DFTLex_Open(&closed, nullptr), "fileName != NULL");
    EXPECT_DEATH(LX_Lexicon_AddWord(&closed, "a", LX_ACT_IGNORE, nullptr), "MAGIC == lex->magic");
    EXPECT_DEATH(LX_DFTLex_NextToken(nullptr, nullptr, 0), "s != NULL");
    TempDir dir;
    DiskLex lex;
    ASSERT_EQ(0, lex.create(dir / "lex"));
    EXPECT_DEATH(LX_Lexicon_AddWord(&lex.lex, nullptr, LX_ACT_IGNORE, nullptr), "word != NULL");
    EXPECT_DEATH(LX_Lexicon_DelWord(&lex.lex, nullptr), "word != NULL");
}

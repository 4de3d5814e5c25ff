// Tests of the compiler's driver and its sessions: the session table's
// numbers, reuse and bad numbers; LX_Compress_Lex's codes and messages for
// each step that can fail, what each failure leaves on disk, the temporary
// suffix file removed on every way out, memory running out at each
// allocation; and the bundled word list compiled and read back whole.
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <set>
#include <sstream>

#include "api.h"
#include "diag.h"
#include "filetest.h"
#include "lexsq.h"
#include "lxcfile.h"
#include "lxtest.h"
#include "platform.h"
#include "suffix.h"

namespace {

// A session that closes itself.
struct Session {
    int16_t id = FENRO_OpenSession();
    ~Session() {
        if (id >= 0) FENRO_CloseSession(id);
    }
};

// Each test gets a folder, and TMPDIR points to a folder of its own inside
// it, so that the temporary suffix file can be seen (or found missing).
class Compress : public ::testing::Test {
protected:
    TempDir dir;
    std::string tmp = dir / "tmp";

    void SetUp() override {
        ASSERT_EQ(0, mkdir(tmp.c_str(), 0700));
        const char *old = std::getenv("TMPDIR");
        hadTmpDir_ = old != nullptr;
        if (old) oldTmpDir_ = old;
        setenv("TMPDIR", tmp.c_str(), 1);
    }
    void TearDown() override {
        if (hadTmpDir_) setenv("TMPDIR", oldTmpDir_.c_str(), 1);
        else unsetenv("TMPDIR");
        EXPECT_EQ(0, FENRO_SessionSlots()); // the table goes with each call
    }

    std::vector<std::string> temp_files() const {
        std::vector<std::string> out;
        std::error_code ec;
        for (const auto &e : std::filesystem::directory_iterator(tmp, ec)) out.push_back(e.path().filename());
        return out;
    }

    int32_t compile(const std::string &words, const std::string &lex, uint32_t *errLine = nullptr) {
        write_bytes(dir / "words.txt", words);
        uint32_t line = 12345;
        const int32_t r = LX_Compress_Lex((dir / "words.txt").c_str(), lex.c_str(), &line);
        if (errLine) *errLine = line;
        return r;
    }

private:
    bool hadTmpDir_ = false;
    std::string oldTmpDir_;
};

} // namespace

// ------------------------------------------------------------ sessions

TEST(Sessions, NumbersAreSlotsUsedAgain) {
    ASSERT_EQ(0, FENRO_SessionSlots());
    Session a, b, c;
    EXPECT_EQ(0, a.id);
    EXPECT_EQ(1, b.id);
    EXPECT_EQ(2, c.id);
    EXPECT_EQ("FENRO_OpenSession: session 2 opened", last_msg());
    EXPECT_EQ(0, FENRO_CloseSession(b.id));
    EXPECT_EQ("FENRO_CloseSession: Session 1 closed", last_msg());
    b.id = FENRO_OpenSession();
    EXPECT_EQ(1, b.id); // the first free slot
    // Five sessions: the table grows beyond its first four slots.
    Session d, e;
    EXPECT_EQ(4, e.id);
    EXPECT_EQ(5, FENRO_SessionSlots());
    for (Session *s : {&a, &b, &c, &d}) {
        EXPECT_EQ(0, FENRO_CloseSession(s->id));
        s->id = -1;
    }
    EXPECT_EQ(5, FENRO_SessionSlots()); // one is still open
    EXPECT_EQ(0, FENRO_CloseSession(e.id));
    e.id = -1;
    EXPECT_EQ(0, FENRO_SessionSlots()); // the last one took the table with it
}

TEST(Sessions, BadNumbers) {
    uint32_t line = 0;
    const struct {
        const char *op;
        std::function<int16_t(int16_t)> call;
        bool message;
    } kOps[] = {
        {"FENRO_CloseSession", [](int16_t s) { return FENRO_CloseSession(s); }, true},
        {"FENRO_CompressLexInit", [&](int16_t s) { return FENRO_CompressLexInit(s, "x", "y", 999, &line); }, true},
        {"FENRO_CompressLexFile", [&](int16_t s) { return FENRO_CompressLexFile(s, "x", &line); }, true},
        {"FENRO_CompressLexEnd", [](int16_t s) { return FENRO_CompressLexEnd(s); }, false},
        {"FENRO_CompressLexAbort",
         [](int16_t s) {
             FENRO_CompressLexAbort(s);
             return int16_t{LX_ERR_BAD_SESSION};
         },
         true},
    };
    for (const auto &op : kOps) {
        // No table at all.
        EXPECT_EQ(LX_ERR_BAD_SESSION, op.call(0)) << op.op;
        // Slot 1 closed, slot 0 open: -1, the closed slot, and beyond the table.
        Session a, b;
        ASSERT_EQ(0, FENRO_CloseSession(b.id));
        b.id = -1;
        for (int16_t bad : {int16_t{-1}, int16_t{1}, int16_t{2}, int16_t{SHRT_MIN}, int16_t{SHRT_MAX}}) {
            LX_Diag_Msg("before");
            EXPECT_EQ(LX_ERR_BAD_SESSION, op.call(bad)) << op.op << " " << bad;
            if (op.message)
                EXPECT_EQ(std::string(op.op) + ": bad session id " + std::to_string(bad), last_msg());
            else
                EXPECT_EQ("before", last_msg());
        }
    }
    EXPECT_EQ(0, FENRO_SessionSlots());
}

TEST(Sessions, ContextGoesWithAbortEndOrClose) {
    TempDir dir;
    write_bytes(dir / "suffixes.txt", crlf({"ing", "ed"}));
    write_bytes(dir / "words.txt", crlf({"walked", "walking"}));
    const std::string suffixes = dir / "suffixes.txt", words = dir / "words.txt";
    const long live = LX_Mem_LiveBlocks();
    uint32_t line = 0;
    {
        // A failed start keeps its context until the abort.
        Session s;
        const std::string bad = dir / "no/such/dir.lxc";
        EXPECT_EQ(LX_ERR_CANT_CREATE, FENRO_CompressLexInit(s.id, bad.c_str(), suffixes.c_str(), 999, &line));
        EXPECT_EQ("can't open " + bad, last_msg());
        EXPECT_LT(live, LX_Mem_LiveBlocks());
        FENRO_CompressLexAbort(s.id);
        EXPECT_EQ(LX_ERR_UNSUPPORTED, FENRO_CompressLexFile(s.id, words.c_str(), &line));
        EXPECT_EQ("FENRO_CompressLexFile: call FENRO_CompressLexInit first", last_msg());
        EXPECT_EQ(0, FENRO_CompressLexEnd(s.id)); // nothing to end
        FENRO_CompressLexAbort(s.id);             // nor to abort
        // Used again after a failed start.
        const std::string out = dir / "a.lxc";
        EXPECT_EQ(LX_ERR_CANT_CREATE, FENRO_CompressLexInit(s.id, bad.c_str(), suffixes.c_str(), 999, &line));
        EXPECT_EQ(0, FENRO_CompressLexInit(s.id, out.c_str(), suffixes.c_str(), 7, &line));
        EXPECT_EQ(2u, line);
        EXPECT_EQ(0, FENRO_CompressLexFile(s.id, words.c_str(), &line));
        EXPECT_EQ(0, FENRO_CompressLexEnd(s.id));
        EXPECT_EQ(live + 3, LX_Mem_LiveBlocks()); // the table and the session's two vectors
        LxcFile f;
        EXPECT_EQ("", LxcFile_Read(read_bytes(out), f));
        EXPECT_EQ(7, f.lang);
        EXPECT_EQ((std::vector<std::string>{"walked", "walking"}), f.words);
    }
    EXPECT_EQ(live, LX_Mem_LiveBlocks());
    {
        // Closed in the middle of a run: the context and the file are let go,
        // and what was written stays, without an index.
        Session s;
        const std::string out = dir / "b.lxc";
        EXPECT_EQ(0, FENRO_CompressLexInit(s.id, out.c_str(), suffixes.c_str(), 999, &line));
        EXPECT_EQ(0, FENRO_CompressLexFile(s.id, words.c_str(), &line));
        EXPECT_EQ(0, FENRO_CloseSession(s.id));
        s.id = -1;
        LxcFile f;
        EXPECT_NE("", LxcFile_Read(read_bytes(out), f));
    }
    EXPECT_EQ(live, LX_Mem_LiveBlocks());
}

TEST(Sessions, OpenOutOfMemory) {
    const long live = LX_Mem_LiveBlocks();
    for (long fail = 0; fail < 3; ++fail) { // the table, then each vector of the session
        LX_Mem_FailAfter(fail);
        const int16_t id = FENRO_OpenSession();
        LX_Mem_FailAfter(-1);
        EXPECT_EQ(LX_ERR_NO_MEMORY, id) << fail;
        EXPECT_EQ("FENRO_OpenSession: Out of memory", last_msg());
        EXPECT_EQ(0, FENRO_SessionSlots());
        EXPECT_EQ(live, LX_Mem_LiveBlocks()) << fail;
    }
    // Growing the table fails: the sessions that are open stay.
    std::vector<Session> open(4);
    LX_Mem_FailAfter(0);
    EXPECT_EQ(LX_ERR_NO_MEMORY, FENRO_OpenSession());
    LX_Mem_FailAfter(-1);
    Session fifth;
    EXPECT_EQ(4, fifth.id);
}

// ------------------------------------------------------------ the driver

TEST_F(Compress, FailuresTheirMessagesAndWhatStays) {
    enum Left { kNothing, kIncomplete, kNotOurs };
    const std::string words = crlf({"walk", "walked", "# note", "", "walking", "talk", "ta\tlk", "x"});
    const struct {
        const char *what;
        std::string list;      // the text of words.txt; "-" for no file
        std::string lex;       // the lexicon's path
        bool noTempFolder;     // TMPDIR names a folder that isn't there
        int32_t code;
        std::string msg;
        Left left;
    } kCases[] = {
        {"word list missing", "-", dir / "out.lxc", false, LX_ERR_CANT_CREATE,
         "FENRO_CompressLexFile: can't open " + (dir / "words.txt"), kIncomplete},
        {"lexicon can't be created", words, dir / "none/out.lxc", false, LX_ERR_CANT_CREATE,
         "FENRO_CompressLexInit: can't open " + (dir / "none/out.lxc"), kNothing},
        {"bad word on line 7", words, dir / "out.lxc", false, LX_ERR_INVALID_WORD,
         "FENRO_CompressLexFile: invalid word at line 7 [ta\tlk]", kIncomplete},
        {"word too long", crlf({"ok", std::string(81, 'w')}), dir / "out.lxc", false, LX_ERR_INVALID_WORD,
         "FENRO_CompressLexFile: word at line 2 too long", kIncomplete},
        {"full disk", crlf({"walk"}), "/dev/full", false, LX_ERR_WRITE,
         "FENRO_CompressLexEnd: error writing to /dev/full", kNotOurs},
        {"no folder for the suffix file", words, dir / "out.lxc", true, LX_ERR_FAILED,
         "Suffix: Can't open output file", kNothing},
    };
    for (const auto &c : kCases) {
        std::filesystem::remove(dir / "out.lxc");
        std::filesystem::remove(dir / "words.txt");
        if (c.noTempFolder) setenv("TMPDIR", (dir / "gone").c_str(), 1);
        uint32_t line = 0;
        int32_t r;
        if (c.list == "-") {
            r = LX_Compress_Lex((dir / "words.txt").c_str(), c.lex.c_str(), &line);
        } else {
            r = compile(c.list, c.lex);
        }
        setenv("TMPDIR", tmp.c_str(), 1);
        EXPECT_EQ(c.code, r) << c.what;
        EXPECT_EQ(c.msg, LX_Compress_GetLastMsg()) << c.what;
        EXPECT_EQ(std::vector<std::string>{}, temp_files()) << c.what;
        EXPECT_EQ(0, FENRO_SessionSlots()) << c.what;
        const bool exists = std::filesystem::exists(dir / "out.lxc");
        if (c.left == kNothing) {
            EXPECT_FALSE(exists) << c.what;
        }
        if (c.left == kIncomplete) {
            // The header and the suffix tables, and no index.
            LxcFile f;
            const std::string bytes = read_bytes(dir / "out.lxc");
            EXPECT_NE("", LxcFile_Read(bytes, f)) << c.what;
            EXPECT_EQ(static_cast<size_t>(LXC_FIXED_SZ - LXC_SECTION_HEAD_SZ - LXC_INDEX_HEAD_SZ) + f.simpleLen +
                          f.extLen,
                      bytes.size())
                << c.what;
        }
    }
}

// While suffix discovery runs, its output file exists already: created
// empty by the driver, private to the user, named LX<unique>.tmp.
std::vector<std::string> gSeenTempFiles;
std::string gSeenTempDir;

TEST_F(Compress, TemporaryFileIsClaimedBeforeUse) {
    gSeenTempFiles.clear();
    gSeenTempDir = tmp;
    Suffix_SetCountHook([](const char *, const SuffixCounter *) {
        if (!gSeenTempFiles.empty()) return;
        for (const auto &e : std::filesystem::directory_iterator(gSeenTempDir)) {
            struct stat st;
            lstat(e.path().c_str(), &st);
            char mode[16];
            std::snprintf(mode, sizeof mode, " %o %lld", static_cast<unsigned>(st.st_mode & 07777),
                          static_cast<long long>(st.st_size));
            gSeenTempFiles.push_back(e.path().filename().string() + mode);
        }
    });
    EXPECT_EQ(0, compile(crlf({"walked", "walking", "talked", "talking"}), dir / "out.lxc"));
    Suffix_SetCountHook(nullptr);
    ASSERT_EQ(1u, gSeenTempFiles.size());
    const std::string &seen = gSeenTempFiles[0];
    EXPECT_EQ(std::string("LX??????.tmp 600 0").size(), seen.size()) << seen;
    EXPECT_TRUE(seen.starts_with("LX") && seen.ends_with(".tmp 600 0")) << seen;
    EXPECT_EQ(std::vector<std::string>{}, temp_files());
}

TEST_F(Compress, MessageStaysAfterSuccessAndIsCut) {
    const std::string longPath = dir / ("none/" + std::string(300, 'x'));
    EXPECT_EQ(LX_ERR_CANT_CREATE, compile(crlf({"walk"}), longPath));
    const std::string msg = LX_Compress_GetLastMsg();
    EXPECT_EQ(255u, msg.size());
    EXPECT_EQ(("FENRO_CompressLexInit: can't open " + longPath).substr(0, 255), msg);

    EXPECT_EQ(0, compile(crlf({"walk"}), dir / "out.lxc"));
    EXPECT_EQ(msg, LX_Compress_GetLastMsg());
    EXPECT_EQ("FENRO_CloseSession: Session 0 closed", last_msg());
    EXPECT_EQ(0, compile(crlf({"talk"}), dir / "out.lxc"));
    EXPECT_EQ("FENRO_CloseSession: Session 0 closed", last_msg()); // a new table, a new session 0
    EXPECT_EQ(std::vector<std::string>{}, temp_files());
}

TEST_F(Compress, ExistingFileIsOverwrittenAndEmptyListsGiveNoSegments) {
    write_bytes(dir / "out.lxc", std::string(5000, 'z'));
    uint32_t line = 0;
    EXPECT_EQ(0, compile(crlf({"walked", "walking", "talked", "talking", "Walker"}), dir / "out.lxc", &line));
    LxcFile f;
    EXPECT_EQ("", LxcFile_Read(read_bytes(dir / "out.lxc"), f)); // also: no byte of the old file after it
    EXPECT_EQ(999, f.lang);
    EXPECT_EQ((std::vector<std::string>{"Walker", "talked", "talking", "walked", "walking"}), f.words);
    EXPECT_EQ(f.simple.size(), line); // lines read for the simple table

    for (const std::string list : {"", "# nothing\r\n\r\n"}) {
        EXPECT_EQ(0, compile(list, dir / "out.lxc", &line));
        EXPECT_EQ(0u, line);
        LxcFile empty;
        EXPECT_EQ("", LxcFile_Read(read_bytes(dir / "out.lxc"), empty));
        EXPECT_TRUE(empty.index.empty());
        EXPECT_EQ(64u, read_bytes(dir / "out.lxc").size());
    }
    EXPECT_EQ(std::vector<std::string>{}, temp_files());
}

// Enough words that the squeezer's list needs more than one block.
TEST_F(Compress, OutOfMemoryAtEveryAllocation) {
    std::vector<std::string> words;
    for (int i = 0; i < 2000; ++i) words.push_back("w" + std::to_string(i % 7) + "x" + std::to_string(i) + "ing");
    write_bytes(dir / "words.txt", crlf(words));
    const std::string out = dir / "out.lxc";
    const std::string list = dir / "words.txt";
    uint32_t line = 0;
    const long before = LX_Mem_Allocations();
    ASSERT_EQ(0, LX_Compress_Lex(list.c_str(), out.c_str(), &line));
    const long allocations = LX_Mem_Allocations() - before;
    std::set<std::string> messages;
    for (long fail = 0; fail < allocations; ++fail) {
        const long live = LX_Mem_LiveBlocks();
        std::filesystem::remove(out);
        LX_Mem_FailAfter(fail);
        const int32_t r = LX_Compress_Lex(list.c_str(), out.c_str(), &line);
        LX_Mem_FailAfter(-1);
        EXPECT_EQ(live, LX_Mem_LiveBlocks()) << fail;
        EXPECT_EQ(std::vector<std::string>{}, temp_files()) << fail;
        EXPECT_EQ(0, FENRO_SessionSlots()) << fail;
        LxcFile f;
        if (r == 0) {
            // Suffix discovery passes over a list it can't open (here: no
            // memory for the handle), and the lexicon is made without
            // suffix tables; it still holds every word.
            EXPECT_EQ("", LxcFile_Read(read_bytes(out), f)) << fail;
            EXPECT_EQ(words.size(), f.words.size()) << fail;
            continue;
        }
        EXPECT_TRUE(r == LX_ERR_NO_MEMORY || r == LX_ERR_FAILED || r == LX_ERR_CANT_CREATE) << fail << " " << r;
        EXPECT_NE("", LxcFile_Read(read_bytes(out), f)) << fail; // nothing, or no index
        messages.insert(LX_Compress_GetLastMsg());
    }
    EXPECT_EQ(1u, messages.count("FENRO_OpenSession: FENRO_OpenSession: Out of memory"));
    EXPECT_EQ(1u, messages.count("FENRO_CompressLexInit: FENRO_CompressLexInit: out of memory"));
    EXPECT_EQ(1u, messages.count("FENRO_CompressLexFile: addSegment: out of memory"));
    EXPECT_EQ(1u, messages.count("Suffix: out of memory\n"));
    // The squeezer's own: the word list's vector, a word's copy in the
    // first block and in a later one.
    EXPECT_EQ(1u, messages.count("FENRO_CompressLexFile: LexSqFile: Can't create word list vector"));
    EXPECT_EQ(1u, messages.count("FENRO_CompressLexFile: Out of memory at line 1"));
    EXPECT_TRUE(std::any_of(messages.begin(), messages.end(), [](const std::string &m) {
        return m.starts_with("FENRO_CompressLexFile: Out of memory at line ") && !m.ends_with(" line 1");
    }));
}

// Tests of the squeezer: the exact bytes it writes, its coding rules, how
// it reads suffix files and word lists, its failures with their messages,
// and a full disk. Every file it completes is read back whole: the size
// formula, the index and every segment's words.
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <set>
#include <sstream>

#include "filetest.h"
#include "lexsq.h"
#include "lxcexample.h"
#include "lxcfile.h"
#include "lxtest.h"
#include "platform.h"
#include "suffix.h"

namespace {

// Reads a completed file back; fails the test if it isn't sound.
LxcFile read_back(const std::string &path) {
    LxcFile f;
    const std::string fault = LxcFile_Read(read_bytes(path), f);
    EXPECT_EQ("", fault) << path;
    return f;
}

// The data section of a completed file, in hex.
std::string data_hex(const std::string &path) {
    const std::string bytes = read_bytes(path);
    LxcFile f;
    if (!LxcFile_Read(bytes, f).empty()) return "unreadable";
    const size_t start = LXC_FIXED_SZ - LXC_SECTION_HEAD_SZ - LXC_INDEX_HEAD_SZ + f.simpleLen + f.extLen;
    return hex(bytes.substr(start, f.dataLen));
}

// Compiles words with the tables given directly.
int16_t compile_tables(const TempDir &dir, const std::vector<std::string> &words,
                       const std::vector<const char *> &simple, const std::vector<const char *> &ext) {
    write_bytes(dir / "words.txt", crlf(words));
    LexSqContext ctx{};
    uint32_t line = 0;
    int16_t r = LexSq_InitTables(&ctx, (dir / "out.lxc").c_str(), simple.data(), static_cast<int32_t>(simple.size()),
                                 ext.data(), static_cast<int32_t>(ext.size()), 999);
    if (r == 0) r = LexSqFile(&ctx, (dir / "words.txt").c_str(), &line);
    if (r == 0) return LexSq_End(&ctx);
    LexSq_Abort(&ctx);
    return r;
}

// Compiles a word list text with a suffix file text.
int16_t compile_files(const TempDir &dir, const std::string &words, const std::string &suffixes,
                      uint32_t *suffixLines = nullptr, uint32_t *errLine = nullptr) {
    write_bytes(dir / "words.txt", words);
    write_bytes(dir / "suffixes.txt", suffixes);
    LexSqContext ctx{};
    uint32_t line = 0;
    int16_t r = LexSq_Init(&ctx, (dir / "out.lxc").c_str(), (dir / "suffixes.txt").c_str(), 999, &line);
    if (suffixLines) *suffixLines = line;
    if (r < 0) {
        LexSq_Abort(&ctx);
        return r;
    }
    r = LexSqFile(&ctx, (dir / "words.txt").c_str(), &line);
    if (errLine) *errLine = line;
    const int16_t end = LexSq_End(&ctx); // also after a bad list: the file then has no segment of it
    return r < 0 ? r : end;
}

} // namespace

// ------------------------------------------------------ exact output

TEST(LexSq, WorkedExampleByteForByte) {
    TempDir dir;
    // In any order, with comments and empty lines: the squeezer sorts.
    std::vector<std::string> words(std::begin(kLxcExampleWords), std::end(kLxcExampleWords));
    std::reverse(words.begin(), words.end());
    words.insert(words.begin() + 2, "# a comment");
    words.insert(words.begin() + 4, "");
    std::vector<const char *> simple(std::begin(kLxcExampleSimple), std::end(kLxcExampleSimple));
    std::vector<const char *> ext(std::begin(kLxcExampleExt), std::end(kLxcExampleExt));
    ASSERT_EQ(0, compile_tables(dir, words, simple, ext));
    const std::string file = read_bytes(dir / "out.lxc");
    EXPECT_EQ(111u, file.size());
    EXPECT_EQ(kLxcExampleFile, hex(file));
    EXPECT_EQ(std::vector<std::string>(std::begin(kLxcExampleWords), std::end(kLxcExampleWords)),
              read_back(dir / "out.lxc").words);

    // Through a suffix file every line up to the 30th goes to the simple
    // table: l becomes simple entry 3, and wall's record 00 05.
    ASSERT_EQ(0, compile_files(dir, crlf(words), crlf({"ed", "ing", "s", "l"})));
    const LxcFile f = read_back(dir / "out.lxc");
    EXPECT_EQ((std::vector<std::string>{"ed", "ing", "s", "l"}), f.simple);
    EXPECT_TRUE(f.ext.empty());
    EXPECT_EQ("00 00 00 6B 00 01 02 01 03 01 04 00 05", data_hex(dir / "out.lxc"));
    EXPECT_EQ(110u, read_bytes(dir / "out.lxc").size());
}

TEST(LexSq, CodingRules) {
    static const struct {
        const char *what;
        std::vector<std::string> words;
        std::vector<const char *> simple, ext;
        const char *data;
        size_t segments;
    } kCases[] = {
        {"a repeated word: shared whole tail, end", {"walk", "walk"}, {}, {}, "00 6B 00 01 00", 1},
        {"short words that repeat stay in one segment", {"ab", "ab", "abc", "abc"}, {}, {}, "00 00 00 00 00 00 00 00", 2},
        {"literals, then the code of the ending", {"kings"}, {"s"}, {}, "00 67 02", 1},
        {"only behind the shared bytes", {"runner", "running"}, {"er", "ing", "ning"}, {}, "00 6E 02 01 03", 1},
        {"a tail that begins the one before", {"walked", "walk"}, {"ed"}, {}, "00 6B 00 01 02", 1},
        {"a blank is a word", {" ", "a b"}, {}, {}, "00 00 00 00", 2},
        // Unsigned bytes: digits, capitals, lower case, accents.
        {"the longest word, byte order", {std::string(80, 'q'), "\xE9t\xE9", "Zoo", "zoo", "a", "aa", "0 1"}, {}, {},
         nullptr, 7},
    };
    for (const auto &c : kCases) {
        TempDir dir;
        ASSERT_EQ(0, compile_tables(dir, c.words, c.simple, c.ext)) << c.what;
        EXPECT_EQ(c.data ? c.data : "", c.data ? data_hex(dir / "out.lxc") : "") << c.what;
        const LxcFile f = read_back(dir / "out.lxc");
        EXPECT_EQ(c.segments, f.index.size()) << c.what;
        std::vector<std::string> sorted = c.words;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(sorted, f.words) << c.what;
    }
}

// ------------------------------------------------------ suffix files

TEST(LexSq, SuffixFileFillsTheTables) {
    std::vector<std::string> thirty, many;
    for (int i = 0; i < 30; ++i) thirty.push_back("s" + std::to_string(i));
    for (int i = 0; i < 256; ++i) many.push_back("e" + std::to_string(i));
    std::vector<std::string> withComments = thirty;
    withComments.insert(withComments.begin() + 5, "# not a suffix");
    withComments.push_back("e0");
    withComments.insert(withComments.end() - 1, "#x");
    std::vector<std::string> overfull = thirty;
    overfull.insert(overfull.end(), many.begin(), many.end());

    static const struct Case {
        const char *what;
        std::vector<std::string> lines;
        size_t nSimple, nExt;
        uint32_t lines_for_simple;
    } kCases[] = {
        {"no lines", {}, 0, 0, 0},
        {"only comments", {"# a", "#b"}, 0, 0, 2},
        {"fewer than 31", {"ed", "ing"}, 2, 0, 2},
        {"comments skipped in both tables", withComments, 30, 1, 31},
        {"the 286th is ignored", overfull, 30, 255, 30},
    };
    for (const auto &c : kCases) {
        TempDir dir;
        uint32_t lines = 99;
        ASSERT_EQ(0, compile_files(dir, crlf({"walked"}), crlf(c.lines), &lines)) << c.what;
        const LxcFile f = read_back(dir / "out.lxc");
        EXPECT_EQ(c.nSimple, f.simple.size()) << c.what;
        EXPECT_EQ(c.nExt, f.ext.size()) << c.what;
        EXPECT_EQ(c.lines_for_simple, lines) << c.what;
        if (c.nExt > 0) {
            EXPECT_EQ("e0", f.ext[0]) << c.what;
        }
        if (c.nExt == 255) {
            EXPECT_EQ("e254", f.ext[254]) << c.what;
        }
    }
    // Cut to 8 characters; an empty line takes a slot that matches nothing.
    TempDir dir;
    ASSERT_EQ(0, compile_files(dir, crlf({"xxxabcdefgh", "xxxd"}), crlf({"zzabcdefgh", "", "d"})));
    const LxcFile f = read_back(dir / "out.lxc");
    EXPECT_EQ((std::vector<std::string>{"zzabcdef", "", "d"}), f.simple);
    EXPECT_EQ("00 61 62 63 64 65 66 67 68 00 00 04", data_hex(dir / "out.lxc"));
}

// ------------------------------------------------------ bad word lists

TEST(LexSq, BadWordListsNameTheFirstBadLine) {
    static const struct {
        const char *what;
        std::string text;
        int16_t code;
        std::string msg;
        uint32_t line;
    } kCases[] = {
        {"81 bytes", crlf({"ok", "# comment", "", std::string(81, 'a'), "\x01"}), LX_ERR_INVALID_WORD,
         "word at line 4 too long", 4},
        {"a line of 200 bytes", crlf({"ok", std::string(200, 'b')}), LX_ERR_INVALID_WORD, "word at line 2 too long", 2},
        {"a tab", crlf({"ok", "a\tb"}), LX_ERR_INVALID_WORD, "invalid word at line 2 [a\tb]", 2},
        {"a byte without class", crlf({"\x80x"}), LX_ERR_INVALID_WORD, "invalid word at line 1 [\x80x]", 1},
        {"0x1F", crlf({"ok", "ok", "a\x1F"}), LX_ERR_INVALID_WORD, "invalid word at line 3 [a\x1F]", 3},
        {"a lone CR", crlf({"a\rb"}), LX_ERR_INVALID_WORD, "invalid word at line 1 [a\rb]", 1},
        {"bare LF ends, one long line", [] {
             std::string t;
             for (int i = 0; i < 30; ++i) t += "word\n";
             return t;
         }(), LX_ERR_INVALID_WORD, "word at line 1 too long", 1},
    };
    for (const auto &c : kCases) {
        TempDir dir;
        uint32_t line = 0;
        EXPECT_EQ(c.code, compile_files(dir, c.text, "", nullptr, &line)) << c.what;
        EXPECT_EQ(c.msg, last_msg()) << c.what;
        EXPECT_EQ(c.line, line) << c.what;
        // Nothing of the list was written.
        EXPECT_EQ(0u, read_back(dir / "out.lxc").index.size()) << c.what;
    }
    // Lists that give no word: no segment, a file of 64 bytes.
    for (const std::string text : {"", "# only\r\n\r\n", "abc\ndef\n", "last line without end"}) {
        TempDir dir;
        EXPECT_EQ(0, compile_files(dir, text, "")) << text;
        EXPECT_EQ(64u, read_bytes(dir / "out.lxc").size()) << text;
        EXPECT_EQ(0u, read_back(dir / "out.lxc").index.size());
    }
}

// ------------------------------------------------------ several lists, limits

TEST(LexSq, SeveralListsShareOneIndex) {
    TempDir dir;
    write_bytes(dir / "1.txt", crlf({"abd", "abc"}));
    write_bytes(dir / "2.txt", crlf({"zzz", "aaa"}));
    write_bytes(dir / "3.txt", crlf({"abcx"}));
    LexSqContext ctx{};
    uint32_t line = 0;
    ASSERT_EQ(0, LexSq_InitTables(&ctx, (dir / "out.lxc").c_str(), nullptr, 0, nullptr, 0, 999));
    EXPECT_EQ(0, LexSqFile(&ctx, (dir / "1.txt").c_str(), &line));
    EXPECT_EQ(0, LexSqFile(&ctx, (dir / "2.txt").c_str(), &line));
    EXPECT_EQ(LX_ERR_SEGMENT_EXISTS, LexSqFile(&ctx, (dir / "3.txt").c_str(), &line));
    EXPECT_EQ("addSegment: segment exists", last_msg());
    ASSERT_EQ(0, LexSq_End(&ctx));
    LxcFile f;
    ASSERT_EQ("sizes don't add up to the data", LxcFile_Read(read_bytes(dir / "out.lxc"), f)); // abcx's record
    // The index is sorted; the data stands in the order of writing.
    std::vector<std::pair<std::string, uint32_t>> index;
    for (const auto &e : f.index) index.emplace_back(std::string(reinterpret_cast<const char *>(e.key), 3), e.offset);
    EXPECT_EQ((std::vector<std::pair<std::string, uint32_t>>{{"aaa", 4}, {"abc", 0}, {"abd", 2}, {"zzz", 6}}), index);
}

TEST(LexSq, AtMost65535Keys) {
    const std::string chars = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::string list;
    int n = 0;
    for (char a : chars)
        for (char b : chars)
            for (char c : chars)
                if (n++ < MAX_SEGMENTS) list += std::string{a, b, c} + "\r\n";
    TempDir dir;
    ASSERT_EQ(0, compile_files(dir, list, ""));
    EXPECT_EQ(static_cast<size_t>(MAX_SEGMENTS), read_back(dir / "out.lxc").index.size());

    // One key more: refused before its record is written, so that even a
    // file completed after the failure holds exactly what its index says.
    const std::string more = list + "zzzz\r\nzzz\r\n";
    EXPECT_EQ(LX_ERR_RANGE, compile_files(dir, more, ""));
    EXPECT_EQ("addSegment: more than 65535 segments", last_msg());
    EXPECT_EQ(static_cast<size_t>(MAX_SEGMENTS), read_back(dir / "out.lxc").index.size());
}

// ------------------------------------------------------ failures

TEST(LexSq, FilesThatCantBeOpened) {
    TempDir dir;
    write_bytes(dir / "suffixes.txt", "");
    write_bytes(dir / "words.txt", crlf({"word"}));
    const std::string out = dir / "out.lxc", missing = dir / "missing.txt", noDir = dir / "no/out.lxc";
    LexSqContext ctx{};
    uint32_t line = 7;
    EXPECT_EQ(LX_ERR_CANT_CREATE, LexSq_Init(&ctx, noDir.c_str(), (dir / "suffixes.txt").c_str(), 999, &line));
    EXPECT_EQ("can't open " + noDir, last_msg());
    LexSq_Abort(&ctx);
    EXPECT_EQ(LX_ERR_CANT_CREATE, LexSq_Init(&ctx, out.c_str(), missing.c_str(), 999, &line));
    EXPECT_EQ("can't open " + missing, last_msg());
    EXPECT_EQ(0u, line);
    LexSq_Abort(&ctx); // harmless after a failure that closed the file
    EXPECT_EQ(LX_ERR_UNSUPPORTED, LexSq_End(&ctx));
    EXPECT_EQ("LexSq_Init not called", last_msg());
    EXPECT_EQ(LX_ERR_UNSUPPORTED, LexSqFile(&ctx, (dir / "words.txt").c_str(), &line));

    ASSERT_EQ(0, LexSq_Init(&ctx, out.c_str(), (dir / "suffixes.txt").c_str(), -2, &line));
    EXPECT_EQ(LX_ERR_CANT_CREATE, LexSqFile(&ctx, missing.c_str(), &line));
    EXPECT_EQ("can't open " + missing, last_msg());
    EXPECT_EQ(0, LexSqFile(&ctx, (dir / "words.txt").c_str(), &line));
    EXPECT_EQ(0, LexSq_End(&ctx));
    EXPECT_EQ(-2, read_back(out).lang); // sign-extended
    // An abort leaves what was written: no index.
    ASSERT_EQ(0, LexSq_Init(&ctx, out.c_str(), (dir / "suffixes.txt").c_str(), 999, &line));
    EXPECT_EQ(0, LexSqFile(&ctx, (dir / "words.txt").c_str(), &line));
    LexSq_Abort(&ctx);
    LxcFile f;
    EXPECT_NE("", LxcFile_Read(read_bytes(out), f));
    EXPECT_EQ(LXC_FIXED_SZ - LXC_SECTION_HEAD_SZ - LXC_INDEX_HEAD_SZ + 3, read_bytes(out).size());
}

TEST(LexSq, FullDiskIsAWriteError) {
    TempDir dir;
    std::string words;
    for (int i = 0; i < 3000; ++i) words += "word" + std::to_string(i * 7919) + "\r\n";
    write_bytes(dir / "words.txt", words);
    write_bytes(dir / "suffixes.txt", crlf({"ed"}));
    // A list longer than the stream's buffer fails while its records are
    // written; a short one fails at the end (the driver's tests).
    LexSqContext ctx{};
    uint32_t line = 0;
    int16_t r = LexSq_Init(&ctx, "/dev/full", (dir / "suffixes.txt").c_str(), 999, &line);
    if (r == 0) r = LexSqFile(&ctx, (dir / "words.txt").c_str(), &line);
    if (r == 0) r = LexSq_End(&ctx);
    else LexSq_Abort(&ctx);
    EXPECT_EQ(LX_ERR_WRITE, r);
    EXPECT_EQ("error writing to /dev/full", last_msg());

    // A file size limit stops the file at every possible byte: each run
    // either fails with LX_ERR_WRITE, leaving a file without an index, or
    // (with room for all 111 bytes) succeeds.
    const std::string result = in_child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        std::string out;
        std::vector<const char *> simple(std::begin(kLxcExampleSimple), std::end(kLxcExampleSimple));
        std::vector<const char *> ext(std::begin(kLxcExampleExt), std::end(kLxcExampleExt));
        write_bytes(dir / "words.txt", crlf(std::vector<std::string>(std::begin(kLxcExampleWords), std::end(kLxcExampleWords))));
        for (rlim_t limit = 0; limit <= 112; ++limit) {
            struct rlimit rl;
            getrlimit(RLIMIT_FSIZE, &rl);
            rl.rlim_cur = limit;
            if (setrlimit(RLIMIT_FSIZE, &rl) != 0) return std::string("setrlimit");
            LexSqContext ctx{};
            uint32_t line = 0;
            int16_t r = LexSq_InitTables(&ctx, (dir / "out.lxc").c_str(), simple.data(), 3, ext.data(), 1, 999);
            if (r == 0) r = LexSqFile(&ctx, (dir / "words.txt").c_str(), &line);
            if (r == 0) r = LexSq_End(&ctx);
            else LexSq_Abort(&ctx);
            rl.rlim_cur = RLIM_INFINITY;
            setrlimit(RLIMIT_FSIZE, &rl);
            LxcFile f;
            const std::string bytes = read_bytes(dir / "out.lxc");
            const bool complete = LxcFile_Read(bytes, f).empty();
            const bool expectOk = limit >= 111;
            if (expectOk ? (r != 0 || !complete) : (r != LX_ERR_WRITE || complete || bytes.size() > 77))
                out += std::to_string(limit) + ":" + std::to_string(r) + "/" + std::to_string(bytes.size()) + " ";
        }
        return out;
    });
    EXPECT_EQ("", result);
}

// Portable files: the line reader's CR LF rules, reads at a position, the line writer, open
// modes, stamps, temporary names, replacing a file whole, and the lock.
#include <algorithm>
#include <vector>

#include "filetest.h"
#include "lxtest.h"
#include "platform.h"
#include "portab.h"

namespace {

// Every result of PORT_ReadLine until the first -1, each with the buffer.
std::string read_lines(const std::string &path, int16_t size) {
    PortFile *f = PORT_OpenFile(path.c_str(), PORT_MODE_READ_TEXT);
    EXPECT_TRUE(PORT_IS_VALID_FILE_ID(f));
    std::string out;
    std::vector<char> buf(static_cast<size_t>(size) + 8, 'X');
    for (int i = 0; i < 20; ++i) {
        int16_t n = PORT_ReadLine(f, buf.data(), size);
        out += (out.empty() ? "" : " ") + std::to_string(n) + ":" + std::string(buf.data());
        if (n < 0) break;
    }
    PORT_CloseFile(f);
    return out;
}

} // namespace

TEST(Portab, ReadLineCrLfRules) {
    const std::string a79(79, 'a'), a78(78, 'a'), b21(21, 'b');
    const struct { std::string bytes; int16_t size; std::string expected; } cases[] = {
        {a79 + "\r\n", 80, "79:" + a79 + " 0: -1:"},
        {a79 + b21 + "\r\n", 80, "79:" + a79 + " 21:" + b21 + " -1:"},
        {"ab\r\n", 80, "2:ab -1:"},
        {"ab", 80, "-1:ab"},                         // a last line without CR LF isn't delivered
        {"", 80, "-1:"},
        {"a\nb\r\n", 80, "3:a\nb -1:"},              // LF alone is an ordinary byte
        {"a\rb\r\n", 80, "3:a\rb -1:"},              // and so is CR alone
        {"a\r\r\nb\r\n", 80, "5:a\r\r\nb -1:"},      // CR CR LF ends no line
        {a78 + "\r\nz\r\n", 80, "79:" + a78 + "\r 2:\nz -1:"}, // full right behind the CR
        {std::string("a\0b\r\n", 5), 80, "-1:a"}, // a byte 0 ends the file
        {"abcdef\r\n", 4, "3:abc 3:def 0: -1:"},
    };
    TempDir dir;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.bytes);
        write_bytes(dir / "f", c.bytes);
        EXPECT_EQ(c.expected, read_lines(dir / "f", c.size));
    }
}

TEST(Portab, ReadAtAPosition) {
    TempDir dir;
    write_bytes(dir / "f", "0123456789");
    const struct { std::string path; int32_t offset; uint32_t count; int32_t got; std::string bytes; } cases[] = {
        {dir / "f", 0, 10, 10, "0123456789"},
        {dir / "f", 3, 4, 4, "3456"},
        {dir / "f", 8, 4, 2, "89"},        // the file ends
        {dir / "f", 12, 4, 0, ""},
        {dir / "f", 0, 0, 0, ""},
        {dir / "gone", 0, 4, -1, ""},
        {dir.path, 0, 4, -1, ""},          // a folder isn't read
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path + " " + std::to_string(c.offset));
        std::string buf(16, 'X');
        EXPECT_EQ(c.got, PORT_ReadAt(c.path.c_str(), c.offset, buf.data(), c.count));
        EXPECT_EQ(c.bytes, buf.substr(0, std::max(c.got, 0)));
    }
}

TEST(Portab, WriteLineAndModes) {
    TempDir dir;
    PortFile *f = PORT_OpenFile((dir / "f").c_str(), PORT_MODE_WRITE_TEXT);
    ASSERT_TRUE(PORT_IS_VALID_FILE_ID(f));
    EXPECT_EQ(2, PORT_WriteLine(f, ""));
    EXPECT_EQ(5, PORT_WriteLine(f, "abc"));
    EXPECT_EQ(1u, PORT_WriteByte(f, 0xE9));
    PORT_CloseFile(f);
    EXPECT_EQ("\r\nabc\r\n\xE9", read_bytes(dir / "f"));

    // Reading bytes, seeking and telling.
    f = PORT_OpenFile((dir / "f").c_str(), PORT_MODE_READ);
    EXPECT_EQ('\r', PORT_ReadByte(f));
    EXPECT_EQ(0, PORT_Seek(f, 6, 0));
    EXPECT_EQ(6, PORT_Tell(f));
    EXPECT_EQ('\n', PORT_ReadByte(f));
    EXPECT_EQ(0xE9, PORT_ReadByte(f));
    EXPECT_EQ(-1, PORT_ReadByte(f));
    PORT_CloseFile(f);

    // Opening for writing empties a file; folders and missing files don't open.
    PORT_CloseFile(PORT_OpenFile((dir / "f").c_str(), PORT_MODE_WRITE_TEXT));
    EXPECT_EQ("", read_bytes(dir / "f"));
    EXPECT_EQ(nullptr, PORT_OpenFile(dir.path.c_str(), PORT_MODE_READ_TEXT));
    EXPECT_EQ(nullptr, PORT_OpenFile((dir / "missing").c_str(), PORT_MODE_READ_TEXT));
    EXPECT_EQ(0, PORT_FileTime((dir / "missing").c_str()));
    EXPECT_NEAR(static_cast<double>(time(nullptr)), PORT_FileTime((dir / "f").c_str()), 5.0);

    // No handle when memory is short; nothing leaks.
    const long live = LX_Mem_LiveBlocks();
    LX_Mem_FailAfter(0);
    EXPECT_EQ(nullptr, PORT_OpenFile((dir / "f").c_str(), PORT_MODE_READ_TEXT));
    EXPECT_EQ(live, LX_Mem_LiveBlocks());
}

TEST(Portab, TempNamesAreFreeAndShaped) {
    TempDir dir;
    char name[PORT_TEMP_NAME_SZ], other[PORT_TEMP_NAME_SZ];
    PORT_TempName(dir.path.c_str(), "lx", name, ".sfx");
    PORT_TempName(dir.path.c_str(), "lx", other, ".sfx");
    const std::string n(name);
    EXPECT_EQ(0u, n.rfind(dir.path + "/lx", 0)) << n;
    EXPECT_EQ(".sfx", n.substr(n.size() - 4));
    EXPECT_NE(n, std::string(other));
    EXPECT_FALSE(std::filesystem::exists(n));

    setenv("TMPDIR", dir.path.c_str(), 1);
    PORT_TempName(nullptr, "p", name, "");
    unsetenv("TMPDIR");
    EXPECT_EQ(0u, std::string(name).rfind(dir.path + "/p", 0)) << name;

    // A folder too long for the buffer gives an empty name.
    const std::string deep = dir.path + "/" + std::string(250, 'd');
    PORT_TempName(deep.c_str(), "p", name, ".tmp");
    EXPECT_STREQ("", name);
}

TEST(Portab, ReplaceIsWholeOrNothing) {
    TempDir dir;
    const std::string path = dir / "lex";
    write_bytes(path, "old\r\n");
    chmod(path.c_str(), 0640);
    PortStamp before, after;
    ASSERT_EQ(0, PORT_FileStamp(path.c_str(), &before));

    // Abandoned: the old file stays, nothing is left beside it.
    PortReplace r;
    ASSERT_EQ(0, PORT_BeginReplace(&r, path.c_str()));
    PORT_WriteLine(r.file, "half");
    PORT_AbortReplace(&r);
    EXPECT_EQ("old\r\n", read_bytes(path));
    EXPECT_EQ(std::vector<std::string>{"lex"}, dir.names());

    // Committed: new contents, new identity, same permissions.
    ASSERT_EQ(0, PORT_BeginReplace(&r, path.c_str()));
    PORT_WriteLine(r.file, "new");
    ASSERT_EQ(0, PORT_CommitReplace(&r, &after));
    EXPECT_EQ("new\r\n", read_bytes(path));
    EXPECT_EQ(std::vector<std::string>{"lex"}, dir.names());
    PortStamp now;
    ASSERT_EQ(0, PORT_FileStamp(path.c_str(), &now));
    EXPECT_TRUE(PORT_SameStamp(after, now));
    EXPECT_FALSE(PORT_SameStamp(before, now));
    struct stat st;
    stat(path.c_str(), &st);
    EXPECT_EQ(0640u, st.st_mode & 07777);

    // Through a symbolic link: the link stays and its target changes.
    ASSERT_EQ(0, symlink(path.c_str(), (dir / "link").c_str()));
    ASSERT_EQ(0, PORT_BeginReplace(&r, (dir / "link").c_str()));
    PORT_WriteLine(r.file, "via link");
    ASSERT_EQ(0, PORT_CommitReplace(&r, nullptr));
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "link"));
    EXPECT_EQ("via link\r\n", read_bytes(path));

    // Under a lock the new version has a fixed name; one left by a writer
    // that died is replaced, and a link there is not followed.
    write_bytes(path + ".new", "stale");
    ASSERT_EQ(0, PORT_BeginReplace(&r, path.c_str(), ".new"));
    EXPECT_EQ(path + ".new", std::string(r.tempPath));
    PORT_WriteLine(r.file, "locked");
    ASSERT_EQ(0, PORT_CommitReplace(&r, nullptr));
    EXPECT_EQ("locked\r\n", read_bytes(path));
    ASSERT_EQ(0, symlink((dir / "victim").c_str(), (path + ".new").c_str()));
    ASSERT_EQ(0, PORT_BeginReplace(&r, path.c_str(), ".new"));
    PORT_AbortReplace(&r);
    EXPECT_FALSE(std::filesystem::exists(dir / "victim"));
    EXPECT_FALSE(std::filesystem::exists(path + ".new"));

    // A folder at the path, or a missing folder, can't be replaced.
    EXPECT_EQ(LX_ERR_CANT_CREATE, PORT_BeginReplace(&r, dir.path.c_str()));
    EXPECT_EQ(LX_ERR_CANT_CREATE, PORT_BeginReplace(&r, (dir / "no/such").c_str()));
    EXPECT_EQ(0, PORT_CreateFile((dir / "fresh").c_str()));
    EXPECT_EQ(LX_ERR_FILE_EXISTS, PORT_CreateFile((dir / "fresh").c_str()));
    EXPECT_EQ(LX_ERR_CANT_CREATE, PORT_CreateFile((dir / "no/such").c_str()));
}

TEST(Portab, ReplaceRespectsReadOnlyFilesAndFolders) {
    TempDir dir;
    chmod(dir.path.c_str(), 0777);
    write_bytes(dir / "ro", "keep\r\n");
    chmod((dir / "ro").c_str(), 0444);
    std::filesystem::create_directory(dir / "sub");
    write_bytes(dir / "sub/f", "keep\r\n");
    chmod((dir / "sub/f").c_str(), 0666);
    chmod((dir / "sub").c_str(), 0555);
    std::string out = in_child(
        [&] {
            PortReplace r;
            std::string res = std::to_string(PORT_BeginReplace(&r, (dir / "ro").c_str()));
            res += " " + std::to_string(PORT_BeginReplace(&r, (dir / "sub/f").c_str()));
            return res;
        },
        true);
    EXPECT_EQ("-24 -24", out);
    EXPECT_EQ("keep\r\n", read_bytes(dir / "ro"));
    EXPECT_EQ("keep\r\n", read_bytes(dir / "sub/f"));
}

TEST(Portab, LockExcludesOtherHolders) {
    TempDir dir;
    const std::string path = dir / "lex";
    const int32_t oldWait = PORT_SetLockWait(50);
    int16_t token = PORT_LockFile(path.c_str());
    ASSERT_GE(token, 0);
    EXPECT_TRUE(std::filesystem::exists(path + ".lock"));
    // Another holder, in this process or another, waits and gives up.
    EXPECT_LT(PORT_LockFile(path.c_str()), 0);
    EXPECT_EQ("-1", in_child([&] { return std::to_string(PORT_LockFile(path.c_str())); }));
    EXPECT_EQ(0, PORT_UnlockFile(token));
    token = PORT_LockFile(path.c_str());
    EXPECT_GE(token, 0);
    PORT_UnlockFile(token);
    // No folder for the companion: no lock.
    EXPECT_LT(PORT_LockFile((dir / "no/such").c_str()), 0);
    PORT_SetLockWait(oldWait);
    EXPECT_EQ(0u, PORT_EnterCritical());
    PORT_LeaveCritical(0);
}

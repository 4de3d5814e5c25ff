// filetest.h - helpers for tests that work with files: a private folder
// removed at the end, reading and writing whole files, and running a piece
// of a test as a user without the rights of root.
#ifndef LX_TESTS_FILETEST_H
#define LX_TESTS_FILETEST_H

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

// A folder of its own for each test, removed with everything in it.
struct TempDir {
    std::string path;
    TempDir() {
        const char *base = std::getenv("TMPDIR");
        std::string tmpl = std::string(base && *base ? base : "/tmp") + "/lxtest.XXXXXX";
        EXPECT_NE(nullptr, mkdtemp(tmpl.data()));
        path = tmpl;
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::permissions(path, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ec);
        std::filesystem::remove_all(path, ec);
    }
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;
    std::string operator/(const std::string &name) const { return path + "/" + name; }
    // Names in the folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> out;
        for (const auto &e : std::filesystem::directory_iterator(path)) out.push_back(e.path().filename());
        std::sort(out.begin(), out.end());
        return out;
    }
};

inline std::string read_bytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

inline void write_bytes(const std::string &path, const std::string &bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Runs fn in a child process and gives back the text it returns. With
// unprivileged set and the tests running as root, the child first becomes
// the user nobody, so that file permissions apply to it.
inline std::string in_child(const std::function<std::string()> &fn, bool unprivileged = false) {
    int fds[2];
    if (pipe(fds) != 0) return "pipe failed";
    std::fflush(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        std::string out;
        if (unprivileged && geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            out = "can't drop rights";
        else
            out = fn();
        size_t done = 0;
        while (done < out.size()) {
            ssize_t n = write(fds[1], out.data() + done, out.size() - done);
            if (n <= 0) break;
            done += static_cast<size_t>(n);
        }
        _exit(0);
    }
    close(fds[1]);
    std::string out;
    char buf[4096];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;) out.append(buf, static_cast<size_t>(n));
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status)) out += " [child died]";
    return out;
}

#endif

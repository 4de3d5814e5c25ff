// compile.cpp - the word list compiler of lxspell, around LX_Compress_Lex.
#include "compile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <lxengine.h>

#include "lexicons.h"

namespace lxspell {

namespace {

// A temporary file that is removed when it goes out of scope unless kept.
struct TempFile {
    std::string path;
    bool keep = false;
    ~TempFile() {
        if (!path.empty() && !keep) unlink(path.c_str());
    }
};

// Makes a file from the template (ending in XXXXXX) with mkstemp and
// closes it; "" on failure.
std::string make_temp(std::string pattern) {
    const int fd = mkstemp(pattern.data());
    if (fd < 0) return "";
    close(fd);
    return pattern;
}

struct FileCloser {
    void operator()(FILE *fp) const {
        if (fp != nullptr) std::fclose(fp);
    }
};
using File = std::unique_ptr<FILE, FileCloser>;

// Reads lines without their LF or CR LF; the last one may lack a line end.
bool read_line(FILE *fp, std::string &line) {
    line.clear();
    int c;
    while ((c = std::getc(fp)) != EOF && c != '\n') line.push_back(static_cast<char>(c));
    if (c == EOF && line.empty()) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

// True if the whole file is valid UTF-8.
bool is_utf8_file(FILE *fp) {
    std::string line, out;
    bool ok = true;
    while (ok && read_line(fp, line)) {
        out.clear();
        ok = utf8_to_latin1(line, out) == std::string_view::npos;
    }
    std::rewind(fp);
    return ok;
}

bool fsync_path(const std::string &path, int flags) {
    const int fd = open(path.c_str(), flags);
    if (fd < 0) return false;
    const bool ok = fsync(fd) == 0;
    close(fd);
    return ok;
}

std::string dir_of(const std::string &path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

} // namespace

bool compile_lexicon(const std::string &list, const std::string &output, Encoding enc, bool chosen,
                     std::string &err) {
    File in(std::fopen(list.c_str(), "rb"));
    if (!in) {
        err = list + ": " + std::strerror(errno);
        return false;
    }
    if (!chosen) enc = is_utf8_file(in.get()) ? Encoding::Utf8 : Encoding::Latin1;

    // The list in the engine's form: ISO 8859-1, CR LF, one line for each
    // line of the user's file, so that line numbers agree.
    const char *tmpdir = std::getenv("TMPDIR");
    TempFile words;
    words.path = make_temp(std::string(tmpdir != nullptr && *tmpdir ? tmpdir : "/tmp") + "/lxspell-words.XXXXXX");
    if (words.path.empty()) {
        err = std::string("can't create a temporary file: ") + std::strerror(errno);
        return false;
    }
    {
        File out(std::fopen(words.path.c_str(), "wb"));
        if (!out) {
            err = words.path + ": " + std::strerror(errno);
            return false;
        }
        std::string line, latin1;
        for (unsigned long n = 1; read_line(in.get(), line); ++n) {
            const std::string where = list + ":" + std::to_string(n) + ": ";
            latin1.clear();
            if (enc == Encoding::Utf8) {
                if (utf8_to_latin1(line, latin1) != std::string_view::npos) {
                    err = where + "invalid UTF-8";
                    return false;
                }
                if (latin1.find(kForeign) != std::string::npos) {
                    err = where + "the word holds a character outside ISO 8859-1";
                    return false;
                }
            } else {
                latin1 = line;
            }
            if (!latin1.empty() && latin1[0] != '#') {
                if (latin1.size() > LX_MAX_WORD_SZ - 1) {
                    err = where + "the word is longer than 80 characters";
                    return false;
                }
                for (char c : latin1) {
                    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
                        err = where + "the word holds a control character";
                        return false;
                    }
                }
            }
            latin1 += "\r\n";
            if (std::fwrite(latin1.data(), 1, latin1.size(), out.get()) != latin1.size()) {
                err = words.path + ": " + std::strerror(errno);
                return false;
            }
        }
        if (std::ferror(in.get())) {
            err = list + ": " + std::strerror(errno);
            return false;
        }
        if (std::fflush(out.get()) != 0) {
            err = words.path + ": " + std::strerror(errno);
            return false;
        }
    }

    // The lexicon is written beside its final name, then renamed.
    TempFile lex;
    lex.path = make_temp(output + ".XXXXXX");
    if (lex.path.empty()) {
        err = output + ": " + std::strerror(errno);
        return false;
    }
    uint32_t errLine = 0;
    const int32_t rc = LX_Compress_Lex(words.path.c_str(), lex.path.c_str(), &errLine);
    if (rc < 0) {
        // The engine names the line of a bad word ("... at line N [...]");
        // our copy has the user's line numbers.
        // The message quotes the word in ISO 8859-1.
        const std::string msg = from_latin1(LX_Compress_GetLastMsg(), enc);
        const size_t at = msg.find("at line ");
        if (at != std::string::npos) {
            err = list + ":" + std::to_string(std::strtoul(msg.c_str() + at + 8, nullptr, 10)) + ": " + msg;
        } else {
            err = output + ": " + (msg.empty() ? engine_message(rc) : msg);
        }
        return false;
    }
    // The result must open before it replaces anything.
    {
        LX_Lexicon check;
        std::memset(&check, 0, sizeof check);
        check.kind = LEX_FC;
        const int32_t orc = LX_FCLex_Open(&check, lex.path.c_str(), 0);
        if (orc < 0) {
            err = output + ": the compiled lexicon doesn't open: " + engine_message(orc);
            return false;
        }
        LX_Lexicon_Close(&check);
    }
    const mode_t mask = umask(0);
    umask(mask);
    if (chmod(lex.path.c_str(), 0666 & ~mask) != 0 || !fsync_path(lex.path, O_RDONLY) ||
        std::rename(lex.path.c_str(), output.c_str()) != 0) {
        err = output + ": " + std::strerror(errno);
        return false;
    }
    lex.keep = true;
    fsync_path(dir_of(output), O_RDONLY | O_DIRECTORY);
    return true;
}

} // namespace lxspell

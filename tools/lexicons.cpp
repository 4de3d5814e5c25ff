// lexicons.cpp - finding and opening lxspell's lexicons.
#include "lexicons.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lxspell {

namespace {

bool file_exists(const std::string &path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

const char *code_text(int32_t code) {
    switch (code) {
    case LX_ERR_FILE_OPEN: return "can't open the file";
    case LX_ERR_NO_MEMORY: return "out of memory";
    case LX_ERR_BAD_FORMAT: return "not a valid lexicon";
    case LX_ERR_READ: return "the file is cut short";
    case LX_ERR_WRITE: return "can't write the file";
    case LX_ERR_CANT_CREATE: return "can't create the file";
    case LX_ERR_INVALID_WORD: return "invalid word";
    case LX_ERR_UNSUPPORTED: return "not supported by this lexicon";
    case LX_ERR_FILE_EXISTS: return "the file exists";
    case LX_ERR_NOT_FOUND: return "not found";
    default: return "failed";
    }
}

// Names editors pass for English that the bundled lexicon answers.
bool is_english_name(const std::string &name) {
    static const char *const names[] = {"default", "english", "american", "en", "en_US", "en-US",
                                        "en_US.UTF-8", "en_GB", "en-GB", "british", "canadian", "en_CA"};
    for (const char *n : names) {
        if (name == n) return true;
    }
    return false;
}

std::unique_ptr<LX_Lexicon> new_lexicon(int32_t kind) {
    auto lex = std::make_unique<LX_Lexicon>();
    std::memset(lex.get(), 0, sizeof(LX_Lexicon));
    lex->kind = kind;
    return lex;
}

} // namespace

std::string engine_message(int32_t code) {
    const char *msg = LX_Diag_GetLastMsg();
    if (msg != nullptr && *msg != '\0') return msg;
    return code_text(code);
}

std::string with_file(const std::string &file, const std::string &msg) {
    return msg.find(file) != std::string::npos ? msg : file + ": " + msg;
}

std::string executable_dir() {
    char buf[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0) return "";
    std::string path(buf, static_cast<size_t>(n));
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

std::vector<std::string> bundled_lexicon_candidates() {
    const std::string dir = executable_dir();
    if (dir.empty()) return {};
    return {dir + "/en_US.lxc", dir + "/../share/lxspell/en_US.lxc"};
}

std::string resolve_lexicon_name(const std::string &name) {
    if (name.find('/') != std::string::npos || file_exists(name)) return name;
    for (const std::string &bundled : bundled_lexicon_candidates()) {
        const std::string candidate = bundled.substr(0, bundled.rfind('/') + 1) + name + ".lxc";
        if (file_exists(candidate)) return candidate;
    }
    if (is_english_name(name)) {
        for (const std::string &bundled : bundled_lexicon_candidates()) {
            if (file_exists(bundled)) return bundled;
        }
    }
    return "";
}

std::string default_personal_path() {
    const char *xdg = std::getenv("XDG_DATA_HOME");
    if (xdg != nullptr && xdg[0] == '/') return std::string(xdg) + "/lxspell/personal.lex";
    const char *home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') return std::string(home) + "/.local/share/lxspell/personal.lex";
    return "";
}

bool make_parent_dirs(const std::string &path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0) return true;
    const std::string dir = path.substr(0, slash);
    for (size_t i = 1; i <= dir.size(); ++i) {
        if (i < dir.size() && dir[i] != '/') continue;
        const std::string part = dir.substr(0, i);
        if (mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) return false;
    }
    return true;
}

LexiconSet::~LexiconSet() {
    for (auto &lex : main_) LX_Lexicon_Close(lex.get());
    if (personal_) LX_Lexicon_Close(personal_.get());
    if (session_) LX_Lexicon_Close(session_.get());
}

void LexiconSet::rebuild() {
    list_.clear();
    if (session_) list_.push_back(session_.get());
    if (personal_) list_.push_back(personal_.get());
    for (auto &lex : main_) list_.push_back(lex.get());
    list_.push_back(nullptr);
}

bool LexiconSet::open_main(const std::vector<std::string> &names, int32_t budget, std::string &err) {
    std::vector<std::string> files;
    if (!names.empty()) {
        for (const std::string &name : names) {
            const std::string file = resolve_lexicon_name(name);
            if (file.empty()) {
                err = name + ": no such lexicon";
                return false;
            }
            files.push_back(file);
        }
    } else if (const char *env = std::getenv("LXSPELL_LEXICON"); env != nullptr && *env != '\0') {
        files.push_back(env);
    } else {
        for (const std::string &candidate : bundled_lexicon_candidates()) {
            if (file_exists(candidate)) {
                files.push_back(candidate);
                break;
            }
        }
        if (files.empty()) {
            err = "no lexicon found beside the program or in ../share/lxspell; name one with -d FILE";
            return false;
        }
    }
    for (const std::string &file : files) {
        auto lex = new_lexicon(LEX_FC);
        const int32_t rc = LX_FCLex_Open(lex.get(), file.c_str(), budget);
        if (rc < 0) {
            err = with_file(file, engine_message(rc));
            return false;
        }
        main_.push_back(std::move(lex));
    }
    rebuild();
    return true;
}

bool LexiconSet::open_personal(const std::string &path, bool create, std::string &err) {
    personalPath_ = path;
    if (path.empty()) {
        if (!create) return true;
        err = "no personal lexicon: set HOME or XDG_DATA_HOME, or use -p FILE";
        return false;
    }
    auto lex = new_lexicon(LEX_DFT);
    int32_t rc = LX_ERR_FILE_OPEN;
    if (file_exists(path)) {
        rc = LX_DFTLex_Open(lex.get(), path.c_str());
    } else if (!create) {
        return true;
    } else {
        if (!make_parent_dirs(path)) {
            err = path + ": can't create its folder: " + std::strerror(errno);
            return false;
        }
        rc = LX_DFTLex_Create(lex.get(), path.c_str(), kPersonalLang);
        // Another process may have made it meanwhile.
        if (rc == LX_ERR_FILE_EXISTS) rc = LX_DFTLex_Open(lex.get(), path.c_str());
    }
    if (rc < 0) {
        err = with_file(path, engine_message(rc));
        return false;
    }
    personal_ = std::move(lex);
    rebuild();
    return true;
}

bool LexiconSet::open_session(std::string &err) {
    auto lex = new_lexicon(LEX_DMT);
    const int32_t rc = LX_DMTLex_Create(lex.get(), 16, kPersonalLang);
    if (rc < 0) {
        err = "session lexicon: " + engine_message(rc);
        return false;
    }
    session_ = std::move(lex);
    rebuild();
    return true;
}

} // namespace lxspell

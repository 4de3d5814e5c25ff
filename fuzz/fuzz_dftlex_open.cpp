// fuzz_dftlex_open - bytes as a disk lexicon file: open it, look its words
// up, add, delete and suggest, then open the file again.
//
// What must hold: an open either succeeds or fails with the code of a bad
// line and a message; every word loaded can be found; each change that
// succeeds leaves a file that opens again, holding every word in memory
// and, for the words this target added, their action and other word.
//
// The file lives in a private folder made once per process (on /dev/shm
// where there is one, so that syncing costs nothing) and removed at exit.
#include <dirent.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "lexicon.h"
#include "lxengine.h"

namespace {

std::string gDir;

void remove_folder() {
    if (gDir.empty()) return;
    if (DIR *d = opendir(gDir.c_str())) {
        while (dirent *e = readdir(d))
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
                unlink((gDir + "/" + e->d_name).c_str());
        closedir(d);
    }
    rmdir(gDir.c_str());
}

const std::string &folder() {
    if (gDir.empty()) {
        const char *base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::getenv("TMPDIR");
        std::string tmpl = std::string(base ? base : "/tmp") + "/lxfuzz.XXXXXX";
        if (!mkdtemp(tmpl.data())) std::abort();
        gDir = tmpl;
        std::atexit(remove_folder);
    }
    return gDir;
}

void check(bool ok) {
    if (!ok) std::abort();
}

std::vector<std::string> words_of(const LX_Lexicon &lex) {
    std::vector<std::string> out;
    auto *e = static_cast<const LX_LexEntry *>(lex.dft.mem.words.data);
    for (int32_t i = 0; i < lex.dft.mem.words.count; ++i) out.emplace_back(e[i].word);
    return out;
}

// A text of up to 20 bytes of data from at, ending at the first 0 or line end.
std::string piece(const uint8_t *data, size_t size, size_t at) {
    std::string s;
    for (size_t i = at; i < size && i < at + 20 && data[i] != 0 && data[i] != '\n'; ++i)
        s += static_cast<char>(data[i]);
    return s;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size > 8192) return 0;
    const std::string path = folder() + "/lex.txt";
    if (FILE *f = std::fopen(path.c_str(), "wb")) {
        if (size > 0) std::fwrite(data, 1, size, f);
        std::fclose(f);
    } else {
        std::abort();
    }

    LX_Lexicon lex{};
    lex.kind = LEX_DFT;
    int32_t r = LX_DFTLex_Open(&lex, path.c_str());
    if (r != 0) {
        check(r == LX_ERR_INVALID_WORD && LX_Diag_GetLastMsg() != nullptr);
        unlink(path.c_str());
        return 0;
    }

    // Every word loaded is found, exact and folded.
    const std::vector<std::string> loaded = words_of(lex);
    for (size_t i = 0; i < loaded.size() && i < 64; ++i) {
        check(LX_Lexicon_FindWord(&lex, loaded[i].c_str(), 1, nullptr, 0) != LX_ERR_NOT_FOUND);
        char other[LX_MAX_WORD_SZ];
        check(LX_Lexicon_FindWord(&lex, loaded[i].c_str(), 0, other, sizeof other) != LX_ERR_NOT_FOUND);
    }
    const int32_t imageSize = LX_Lexicon_Size(&lex);
    check(imageSize >= 1);
    std::vector<char> image(static_cast<size_t>(imageSize));
    check(LX_Lexicon_GetImage(&lex, image.data(), imageSize) == static_cast<int32_t>(loaded.size()));

    // Changes: entries made of the data, a plain word, a deletion.
    std::map<std::string, std::pair<int16_t, std::string>> added;
    for (size_t at = 0; at + 1 < size && at < 120; at += 40) {
        const std::string word = piece(data, size, at + 1), other = piece(data, size, at + 21);
        const int16_t action = static_cast<int16_t>(data[at] % 2 ? LX_ACT_IGNORE : data[at]);
        r = LX_Lexicon_AddWord(&lex, word.c_str(), action, other.c_str());
        check(r == 0 || r == LX_ERR_INVALID_WORD || r == LX_ERR_UNSUPPORTED);
        if (r == 0) added[word] = {action, other};
    }
    check(LX_Lexicon_AddWord(&lex, "fuzz", LX_ACT_IGNORE, nullptr) == 0);
    added["fuzz"] = {LX_ACT_IGNORE, ""};
    if (!loaded.empty()) {
        r = LX_Lexicon_DelWord(&lex, loaded[0].c_str());
        check(r == 0 || r == LX_ERR_NOT_FOUND);
        if (r == 0) {
            check(LX_Lexicon_FindWord(&lex, loaded[0].c_str(), 1, nullptr, 0) == LX_ERR_NOT_FOUND);
            added.erase(loaded[0]);
        }
    }
    SuggEntry entries[5];
    SuggSet set{entries, 0, 5};
    LX_Lexicon *list[] = {&lex, nullptr};
    check(LX_Suggest("fuzx", 40, list, LX_OPT_CHECK_SPELLING | LX_OPT_SUGGEST_TYPOGRAPHIC, &set) <= 5);

    // The file as written opens again and gives back what memory holds.
    LX_Lexicon again{};
    again.kind = LEX_DFT;
    check(LX_DFTLex_Open(&again, path.c_str()) == 0);
    check(again.dft.external == lex.dft.external);
    if (!lex.dft.external) check(again.dft.mem.lang == lex.dft.mem.lang);
    for (const std::string &w : words_of(lex))
        check(LX_Lexicon_FindWord(&again, w.c_str(), 1, nullptr, 0) != LX_ERR_NOT_FOUND);
    for (const auto &[word, entry] : added) {
        char other[LX_MAX_WORD_SZ] = "";
        check(LX_Lexicon_FindWord(&again, word.c_str(), 1, other, sizeof other) == entry.first);
        if (!lex.dft.external) check(entry.second == other);
    }
    LX_Lexicon_Close(&again);
    LX_Lexicon_Close(&lex);
    unlink(path.c_str());
    unlink((path + ".lock").c_str());
    return 0;
}

// fuzz_compile - bytes as a word list, compiled as the compiler does it:
// suffix discovery into a suffix file, then the squeezer with that file.
//
// A list the squeezer accepts must give a sound file (the size formula,
// ascending keys, every segment decodes) that holds exactly the list's
// words in byte order. A list it refuses must be refused for a bad word,
// before any segment of it is written, so that completing the file gives
// one without segments. The same list then goes through LX_Compress_Lex,
// which must give the same file byte for byte, or the same code with the
// incomplete file, and leave no temporary file behind. The files live in a
// private folder (TMPDIR points there too) and are removed after each
// input.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <dirent.h>

#include "../tests/lxcfile.h"
#include "lexsq.h"
#include "portab.h"
#include "suffix.h"

namespace {

void check(bool ok) {
    if (!ok) std::abort();
}

std::string gDir;

void remove_dir() {
    if (!gDir.empty()) rmdir(gDir.c_str());
}

// A new empty file in the private folder, by mkstemp.
std::string new_file(const char *name) {
    if (gDir.empty()) {
        const char *base = std::getenv("TMPDIR");
        std::string tmpl = std::string(base && *base ? base : "/tmp") + "/fuzzcompile.XXXXXX";
        check(mkdtemp(tmpl.data()) != nullptr);
        gDir = tmpl;
        setenv("TMPDIR", gDir.c_str(), 1); // where LX_Compress_Lex makes its suffix file
        std::atexit(remove_dir);
    }
    std::string path = gDir + "/" + name + ".XXXXXX";
    const int fd = mkstemp(path.data());
    check(fd >= 0);
    close(fd);
    return path;
}

std::string read_all(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The words of an accepted list, as the squeezer reads them, sorted.
std::vector<std::string> expected_words(const std::string &path) {
    std::vector<std::string> words;
    PortFile *file = PORT_OpenFile(path.c_str(), PORT_MODE_READ_TEXT);
    check(file != nullptr);
    char line[128];
    for (int16_t len; (len = PORT_ReadLine(file, line, sizeof line)) >= 0;)
        if (len > 0 && line[0] != '#') words.emplace_back(line, static_cast<size_t>(len));
    PORT_CloseFile(file);
    std::sort(words.begin(), words.end());
    return words;
}

// Entries of the private folder, . and .. left out.
int dir_entries() {
    DIR *d = opendir(gDir.c_str());
    check(d != nullptr);
    int n = 0;
    while (const dirent *e = readdir(d))
        if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0) ++n;
    closedir(d);
    return n;
}

// The list again, through the exported driver: same result, same bytes.
void compile_exported(const std::string &wordPath, const std::string &lexPath, int16_t expected) {
    const std::string driverPath = new_file("driver");
    const int before = dir_entries();
    uint32_t line = 0;
    const int32_t r = LX_Compress_Lex(wordPath.c_str(), driverPath.c_str(), &line);
    check(dir_entries() == before); // the suffix file is gone
    check(line <= MAX_SIMPLE_SUFFIXES);
    if (expected == 0) {
        check(r == 0 && read_all(driverPath) == read_all(lexPath));
    } else {
        check(r == expected && LX_Compress_GetLastMsg()[0] != '\0');
        LxcFile f;
        check(!LxcFile_Read(read_all(driverPath), f).empty()); // no index
    }
    unlink(driverPath.c_str());
}

int16_t compile(const std::string &wordPath, const std::string &suffixPath, const std::string &lexPath) {
    const char *lists[] = {wordPath.c_str()};
    check(LX_FindSuffixes(1, lists, suffixPath.c_str()) == 0);
    LexSqContext ctx{};
    uint32_t line = 0;
    int16_t r = LexSq_Init(&ctx, lexPath.c_str(), suffixPath.c_str(), 999, &line);
    check(r == 0);
    r = LexSqFile(&ctx, wordPath.c_str(), &line);
    check(r == 0 || r == LX_ERR_INVALID_WORD || r == LX_ERR_RANGE);
    check(LexSq_End(&ctx) == 0);
    LxcFile f;
    check(LxcFile_Read(read_all(lexPath), f).empty());
    check(f.simple.size() <= MAX_SIMPLE_SUFFIXES && f.ext.size() <= MAX_EXT_SUFFIXES);
    check(f.ext.empty() || f.simple.size() == MAX_SIMPLE_SUFFIXES);
    if (r == LX_ERR_INVALID_WORD) {
        check(line > 0 && f.index.empty());
    } else if (r == 0) {
        check(f.words == expected_words(wordPath));
    }
    return r;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string wordPath = new_file("words"), suffixPath = new_file("suffixes"), lexPath = new_file("lex");
    {
        std::ofstream out(wordPath, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    }
    compile_exported(wordPath, lexPath, compile(wordPath, suffixPath, lexPath));
    unlink(wordPath.c_str());
    unlink(suffixPath.c_str());
    unlink(lexPath.c_str());
    return 0;
}

#include "benchutil.h"

#include <algorithm>
#include <fstream>
#include <sstream>

double now_seconds() {
    using clock = std::chrono::steady_clock;
    return std::chrono::duration<double>(clock::now().time_since_epoch()).count();
}

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

std::vector<std::string> read_word_list(const std::string &path) {
    std::vector<std::string> words;
    std::istringstream in(read_file(path));
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) words.push_back(line);
    }
    return words;
}

int load_memory_lexicon(LX_Lexicon *lex, std::vector<std::string> words) {
    std::sort(words.begin(), words.end()); // std::string compares bytes as unsigned
    int stored = 0;
    for (const std::string &w : words)
        if (LX_Lexicon_AddWord(lex, w.c_str(), LX_ACT_IGNORE, nullptr) == 0) ++stored;
    return stored;
}

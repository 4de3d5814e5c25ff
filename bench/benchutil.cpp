#include "benchutil.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
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

namespace {

bool rejected(const std::string &word, LX_Lexicon *const *list, uint32_t options) {
    char w[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    return LX_CheckText(word.c_str(), list, options | LX_OPT_SINGLE_WORD, &cursor, w, sizeof w, nullptr, 0) !=
           LX_RES_NONE_LEFT;
}

} // namespace

std::vector<SuggestPair> make_suggest_pairs(const std::vector<std::string> &words, LX_Lexicon *const *list,
                                            uint32_t options, int perEdit) {
    std::mt19937 rng(20261123);
    const char *edits[] = {"transposition", "deletion", "insertion", "substitution"};
    const char letters[] = "abcdefghijklmnopqrstuvwxyz";
    std::vector<SuggestPair> pairs;
    for (int kind = 0; kind < 4; ++kind) {
        int made = 0;
        while (made < perEdit) {
            const std::string &right = words[rng() % words.size()];
            if (right.size() < 4 || right.size() > 12) continue;
            bool plain = true;
            for (char c : right) plain = plain && c >= 'a' && c <= 'z';
            if (!plain) continue;
            std::string wrong = right;
            size_t i = rng() % right.size();
            char c = letters[rng() % 26];
            switch (kind) {
            case 0:
                if (i + 1 >= wrong.size() || wrong[i] == wrong[i + 1]) continue;
                std::swap(wrong[i], wrong[i + 1]);
                break;
            case 1: wrong.erase(i, 1); break;
            case 2: wrong.insert(i, 1, c); break;
            case 3:
                if (wrong[i] == c) continue;
                wrong[i] = c;
                break;
            }
            if (!rejected(wrong, list, options)) continue;
            pairs.push_back({wrong, right, edits[kind]});
            ++made;
        }
    }
    return pairs;
}

void run_suggest(const char *name, const std::vector<SuggestPair> &pairs, LX_Lexicon *const *list, uint32_t options,
                 int32_t depth) {
    std::vector<SuggEntry> storage(10);
    SuggSet set{storage.data(), 0, static_cast<int32_t>(storage.size())};
    int top1 = 0, top5 = 0, found = 0;
    double t0 = now_seconds();
    for (const SuggestPair &p : pairs) {
        set.count = 0;
        LX_Suggest(p.wrong.c_str(), depth, list, options, &set);
        for (int32_t i = 0; i < set.count; ++i) {
            if (p.right != set.entries[i].word) continue;
            ++found;
            if (i == 0) ++top1;
            if (i < 5) ++top5;
            break;
        }
    }
    double t = now_seconds() - t0;
    const double n = static_cast<double>(pairs.size());
    std::printf("suggest %-24s depth %3d: %8.1f requests/s  top-1 %5.1f%%  top-5 %5.1f%%  in list %5.1f%%\n",
                name, depth, n / t, 100.0 * top1 / n, 100.0 * top5 / n, 100.0 * found / n);
}

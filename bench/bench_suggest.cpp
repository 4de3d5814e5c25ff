// bench_suggest - speed and quality of LX_Suggest.
//
// Loads the bundled word list into a memory lexicon and builds pairs of a
// misspelling and its correction from the list's own words by one edit each
// (transposition, deletion, insertion, substitution), keeping only
// misspellings that the lexicon rejects. For each depth it prints how many
// suggestion requests run per second and how often the correction comes
// first, or among the first five.
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "benchutil.h"

namespace {

struct Pair {
    std::string wrong, right;
    const char *edit;
};

bool rejected(const std::string &word, LX_Lexicon *const *list, uint32_t options) {
    char w[LX_MAX_WORD_SZ];
    int32_t cursor = 0;
    return LX_CheckText(word.c_str(), list, options | LX_OPT_SINGLE_WORD, &cursor, w, sizeof w, nullptr, 0) !=
           LX_RES_NONE_LEFT;
}

std::vector<Pair> make_pairs(const std::vector<std::string> &words, LX_Lexicon *const *list,
                             uint32_t options, int perEdit) {
    std::mt19937 rng(20261123);
    const char *edits[] = {"transposition", "deletion", "insertion", "substitution"};
    const char letters[] = "abcdefghijklmnopqrstuvwxyz";
    std::vector<Pair> pairs;
    for (int kind = 0; kind < 4; ++kind) {
        int made = 0;
        while (made < perEdit) {
            const std::string &right = words[rng() % words.size()];
            // Plain lower-case words of 4 to 12 letters, like most typing.
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

void run(const char *name, const std::vector<Pair> &pairs, LX_Lexicon *const *list, uint32_t options,
         int32_t depth) {
    std::vector<SuggEntry> storage(10);
    SuggSet set{storage.data(), 0, static_cast<int32_t>(storage.size())};
    int top1 = 0, top5 = 0, found = 0;
    double t0 = now_seconds();
    for (const Pair &p : pairs) {
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

} // namespace

int main(int argc, char **argv) {
    std::string dataDir = argc > 1 ? argv[1] : LX_DATA_DIR;
    std::vector<std::string> words = read_word_list(dataDir + "/en_US.txt");
    if (words.empty()) {
        std::fprintf(stderr, "bench_suggest: can't read %s/en_US.txt\n", dataDir.c_str());
        return 1;
    }
    LX_Lexicon lex{};
    lex.kind = LEX_DMT;
    LX_DMTLex_Create(&lex, 0, LX_LANG_NONE);
    load_memory_lexicon(&lex, words);
    LX_Lexicon *list[] = {&lex, nullptr};

    const uint32_t check = LX_OPT_CHECK_SPELLING | LX_OPT_CASE_SENSITIVE | LX_OPT_ACCENTED_CAPITALS;
    std::vector<Pair> pairs = make_pairs(words, list, check, 100);
    std::printf("lexicon: %zu words; %zu misspellings, %zu of each edit\n", words.size(), pairs.size(),
                pairs.size() / 4);

    const uint32_t typo = check | LX_OPT_SUGGEST_TYPOGRAPHIC;
    for (int32_t depth : {10, 30, 100}) run("typographic", pairs, list, typo, depth);
    run("typographic+phonetic", pairs, list, typo | LX_OPT_SUGGEST_PHONETIC, 100);

    // Quality by kind of edit at the deepest search.
    for (const char *edit : {"transposition", "deletion", "insertion", "substitution"}) {
        std::vector<Pair> some;
        for (const Pair &p : pairs)
            if (std::strcmp(p.edit, edit) == 0) some.push_back(p);
        run(edit, some, list, typo, 100);
    }

    // The slowest requests: words of 80 characters with every option that
    // makes the check of each edit divide the word.
    const uint32_t all = typo | LX_OPT_SUGGEST_PHONETIC | LX_OPT_SUGGEST_SPLIT | LX_OPT_SPLIT_RUN_TOGETHER |
                         LX_OPT_SPLIT_AT_HYPHEN | LX_OPT_SPLIT_AT_APOSTROPHE | LX_OPT_STRIP_POSSESSIVE;
    std::string thes, letters;
    while (thes.size() < 80) thes += "the-";
    while (letters.size() < 80) letters += "abcdefghij";
    for (const std::string &w : {thes.substr(0, 80), letters.substr(0, 80), std::string(80, 'A')}) {
        SuggEntry entries[10];
        SuggSet set{entries, 0, 10};
        double t0 = now_seconds();
        int32_t n = LX_Suggest(w.c_str(), 100, list, all, &set);
        std::printf("suggest worst word %.12s... depth 100, all options: %8.1f ms (%d found)\n", w.c_str(),
                    (now_seconds() - t0) * 1e3, n);
    }
    LX_Lexicon_Close(&lex);
    return 0;
}

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
#include <string>
#include <vector>

#include "benchutil.h"

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
    std::vector<SuggestPair> pairs = make_suggest_pairs(words, list, check, 100);
    std::printf("lexicon: %zu words; %zu misspellings, %zu of each edit\n", words.size(), pairs.size(),
                pairs.size() / 4);

    const uint32_t typo = check | LX_OPT_SUGGEST_TYPOGRAPHIC;
    for (int32_t depth : {10, 30, 100}) run_suggest("typographic", pairs, list, typo, depth);
    run_suggest("typographic+phonetic", pairs, list, typo | LX_OPT_SUGGEST_PHONETIC, 100);

    // Quality by kind of edit at the deepest search.
    for (const char *edit : {"transposition", "deletion", "insertion", "substitution"}) {
        std::vector<SuggestPair> some;
        for (const SuggestPair &p : pairs)
            if (std::strcmp(p.edit, edit) == 0) some.push_back(p);
        run_suggest(edit, some, list, typo, 100);
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

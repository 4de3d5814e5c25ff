// benchutil.h - what the benchmarks share: loading the bundled word list
// into a memory lexicon, building texts, misspellings for the suggestion
// figures, and a clock.
#ifndef LX_BENCH_BENCHUTIL_H
#define LX_BENCH_BENCHUTIL_H

#include <chrono>
#include <string>
#include <vector>

#include "lxengine.h"

double now_seconds();

// The words of a CR LF word list, in file order.
std::vector<std::string> read_word_list(const std::string &path);

// Fills lex (kind set, created) with words, sorted first in byte order so
// that every addition appends. Returns the number stored.
int load_memory_lexicon(LX_Lexicon *lex, std::vector<std::string> words);

std::string read_file(const std::string &path);

// A misspelling made from a word of the list by one edit, and that word.
struct SuggestPair {
    std::string wrong, right;
    const char *edit; // "transposition", "deletion", "insertion" or "substitution"
};

// perEdit pairs of each kind of edit, from plain lower-case words of 4 to
// 12 letters picked with a fixed seed, keeping only misspellings that list
// rejects under options.
std::vector<SuggestPair> make_suggest_pairs(const std::vector<std::string> &words, LX_Lexicon *const *list,
                                            uint32_t options, int perEdit);

// Asks LX_Suggest for 10 suggestions of each misspelling and prints one
// line: requests per second, and how often the correction comes first,
// among the first five, or at all.
void run_suggest(const char *name, const std::vector<SuggestPair> &pairs, LX_Lexicon *const *list, uint32_t options,
                 int32_t depth);

// A fixed set of English endings standing in for suffix discovery, for
// benchmarks that code segments without the compiler: 30 simple and 19
// extended suffixes.
inline const std::vector<std::string> kEnglishSimpleEndings = {
    "'s", "s", "ed", "ing", "es", "ly", "er", "ers", "ion", "ions", "ness", "ies", "ism", "ist", "ists",
    "ity", "ment", "ments", "able", "al", "ally", "ation", "ations", "ic", "ical", "ize", "ized", "izes", "izing", "y"};
inline const std::vector<std::string> kEnglishExtEndings = {
    "e", "d", "n", "t", "ate", "ated", "ates", "ating", "ful", "less", "ous", "ive", "ent", "ence", "ant", "ance",
    "est", "ier", "iest"};

#endif

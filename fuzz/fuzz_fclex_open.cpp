// fuzz_fclex_open - bytes as a compressed lexicon file, opened with a small
// budget (and, if that budget is refused, with none) and searched.
//
// The input is written to a temporary file of its own. When the file
// opens, every segment is decoded, and each of its words (and a few words
// made from them) is looked up with and without regard to case, with the
// segment scans checked against a plain decode-and-compare of every word;
// then pattern searches, comparator searches and the words of a base form
// run over the lexicon. Budget 64 makes segments come and go all the time.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "clex.h"
#include "compare.h"
#include "fclex.h"
#include "lexicon.h"
#include "mclex.h"
#include "safestr.h"

namespace {

void check(bool ok) {
    if (!ok) std::abort();
}

// What an exact scan does, word by word: stop at the word or past it.
int32_t exact_cb(const char *keyWord, const char *curWord, void *) {
    const int16_t c = LX_Str_Cmp(keyWord, curWord);
    return c == 0 ? 0 : c < 0 ? -1 : 1;
}

bool count_visit(void *ctx, const char *held) {
    check(std::strlen(held) < LX_MAX_WORD_SZ);
    return ++*static_cast<int *>(ctx) < 50;
}

void search(LX_Lexicon *lex) {
    LX_FCLex &fc = lex->fc;
    std::vector<std::string> words;
    for (int32_t s = 0; s < fc.nSegments && words.size() < 200; ++s) {
        FCSegment *seg = fc.segIndex[s];
        if (FCLex_LoadSegment(lex, seg) < 0) continue;
        check(fc.budget <= 0 || (fc.budgetLeft >= 0 && fc.budgetLeft <= fc.budget));
        const MCSegment mseg{seg->data, seg->size, {seg->key[0], seg->key[1], seg->key[2]}};
        const MCSuffixTable simple{fc.simpleSuffixes, fc.nSimpleSuffixes}, ext{fc.extSuffixes, fc.nExtSuffixes};
        MCDecoder dec;
        MCLex_DecodeStart(&dec, &mseg, &simple, &ext);
        std::vector<std::string> segWords;
        while (MCLex_DecodeNext(&dec) == 1 && segWords.size() < 50) segWords.push_back(dec.curWord);
        for (const std::string &w : segWords) {
            for (std::string probe : {w, w + "a", w.substr(0, w.size() - 1)}) {
                if (probe.size() < 3 || std::memcmp(probe.data(), seg->key, 3) != 0) continue;
                // The scans over the loaded bytes agree with decoding each word.
                check(MCLex_Scan(&mseg, 1, &simple, &ext, probe.c_str(), nullptr, nullptr) ==
                      MCLex_Scan(&mseg, 1, &simple, &ext, probe.c_str(), exact_cb, nullptr));
                check(MCLex_FindNoCase(&mseg, &simple, &ext, probe.c_str()) ==
                      MCLex_Scan(&mseg, 1, &simple, &ext, probe.c_str(), FCLex_CheckWordCb, nullptr));
            }
        }
        words.insert(words.end(), segWords.begin(), segWords.end());
    }
    for (const std::string &w : words) {
        LX_Lexicon_FindWord(lex, w.c_str(), 1, nullptr, 0);
        LX_Lexicon_FindWord(lex, w.c_str(), 0, nullptr, 0);
    }
    SuggEntry entries[5];
    for (size_t i = 0; i < words.size() && i < 8; ++i) {
        std::string pattern = words[i];
        pattern[pattern.size() / 2] = '?';
        for (int16_t cs : {1, 0}) {
            SuggSet set{entries, 0, 5};
            LX_Lexicon_FindPattern(lex, pattern.c_str(), cs, &set);
            check(set.count <= set.capacity);
        }
        SuggSet set{entries, 0, 5};
        LX_Lexicon_FindSimilar(lex, words[i].c_str(), 30, LX_Compare_Typographic, &set);
        check(set.count <= set.capacity);
        int visits = 0;
        LX_Lexicon_ForEachBaseForm(lex, words[i].c_str(), count_visit, &visits);
    }
    SuggSet set{entries, 0, 5};
    LX_Lexicon_FindPattern(lex, "??", 0, &set);
    LX_Lexicon_FindPattern(lex, "a", 1, &set);
    LX_Lexicon_FindSimilar(lex, "word", 100, LX_Compare_Phonetic, &set);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const char *dir = std::getenv("TMPDIR");
    std::string path = std::string(dir && *dir ? dir : "/tmp") + "/fuzz_fclex.XXXXXX";
    const int fd = mkstemp(path.data());
    if (fd < 0) return 0;
    const bool written = size == 0 || write(fd, data, size) == static_cast<ssize_t>(size);
    close(fd);
    if (written) {
        for (int32_t budget : {64, 0}) {
            LX_Lexicon lex{};
            lex.kind = LEX_FC;
            const int32_t r = LX_FCLex_Open(&lex, path.c_str(), budget);
            if (r == 0) {
                search(&lex);
                LX_Lexicon_Close(&lex);
                break;
            }
            check(r < 0 && lex.fc.magic != FCLEX_MAGIC);
            if (r != LX_ERR_NO_MEMORY) break;
        }
    }
    std::remove(path.c_str());
    return 0;
}

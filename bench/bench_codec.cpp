// bench_codec - speed and size of the segment record codec.
//
// Codes the bundled word list, sorted and cut into segments by key, with a
// fixed table of common English endings standing in for the tables that
// the compiler would choose, then decodes every segment to its end, as a
// comparator sweep does. Prints the words per second of both directions,
// the size of the segment data against the word list, and the number and
// largest size of the segments, which bound what a reader's budget must
// hold.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "benchutil.h"
#include "mclex.h"

namespace {

const std::vector<std::string> &kSimple = kEnglishSimpleEndings;
const std::vector<std::string> &kExt = kEnglishExtEndings;

struct Segment {
    uchar key[LXC_KEY_SZ];
    size_t offset = 0, size = 0;
    long words = 0;
};

} // namespace

int main() {
    std::vector<std::string> words = read_word_list(LX_DATA_DIR "/en_US.txt");
    std::sort(words.begin(), words.end());
    size_t listBytes = 0;
    for (const auto &w : words) listBytes += w.size() + 2;
    std::vector<const char *> simplePtrs, extPtrs;
    for (const auto &s : kSimple) simplePtrs.push_back(s.c_str());
    for (const auto &s : kExt) extPtrs.push_back(s.c_str());
    const MCSuffixTable simple{simplePtrs.data(), static_cast<int32_t>(simplePtrs.size())};
    const MCSuffixTable ext{extPtrs.data(), static_cast<int32_t>(extPtrs.size())};

    const int rounds = 5;
    std::vector<uchar> data;
    std::vector<Segment> segments;
    double t0 = now_seconds();
    for (int round = 0; round < rounds; ++round) {
        data.clear();
        segments.clear();
        const char *prev = "";
        for (const auto &w : words) {
            uchar key[LXC_KEY_SZ];
            LXC_MakeKey(w.c_str(), key);
            if (segments.empty() || LXC_CompareKeys(key, segments.back().key) != 0) {
                segments.push_back({{key[0], key[1], key[2]}, data.size(), 0, 0});
                prev = "";
            }
            uchar record[LXC_MAX_RECORD_SZ];
            const int32_t n = MCLex_EncodeWord(LXC_WordTail(w.c_str()), prev, &simple, &ext, record);
            if (n < 0) {
                std::fprintf(stderr, "cannot code %s\n", w.c_str());
                return 1;
            }
            data.insert(data.end(), record, record + n);
            segments.back().size += static_cast<size_t>(n);
            ++segments.back().words;
            prev = LXC_WordTail(w.c_str());
        }
    }
    const double encodeTime = (now_seconds() - t0) / rounds;

    long decoded = 0;
    size_t checksum = 0;
    t0 = now_seconds();
    for (int round = 0; round < rounds; ++round)
        for (const auto &s : segments) {
            MCSegment seg{data.data() + s.offset, static_cast<uint32_t>(s.size), {s.key[0], s.key[1], s.key[2]}};
            MCDecoder dec;
            MCLex_DecodeStart(&dec, &seg, &simple, &ext);
            while (MCLex_DecodeNext(&dec) == 1) {
                ++decoded;
                checksum += static_cast<size_t>(dec.tailLen);
            }
        }
    const double decodeTime = (now_seconds() - t0) / rounds;

    size_t largest = 0;
    long mostWords = 0;
    for (const auto &s : segments) {
        largest = std::max(largest, s.size);
        mostWords = std::max(mostWords, s.words);
    }
    std::printf("words: %zu, word list %zu bytes\n", words.size(), listBytes);
    std::printf("segments: %zu, largest %zu bytes, most words %ld\n", segments.size(), largest, mostWords);
    std::printf("segment data: %zu bytes (%.1f%% of the word list)\n", data.size(), 100.0 * data.size() / listBytes);
    std::printf("encode: %.1f ms, %.2f M words/s\n", encodeTime * 1e3, words.size() / encodeTime / 1e6);
    std::printf("decode all segments: %.2f ms, %.1f M words/s (check %zu)\n", decodeTime * 1e3,
                decoded / rounds / decodeTime / 1e6, checksum % 10);
    return 0;
}

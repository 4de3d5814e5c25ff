// Tests of the compressed lexicon format: byte order, keys, and the coding
// and decoding of a segment's word records, including records that a
// damaged file could hold. The worked example's bytes are checked where a
// file is written (the squeezer) and read (the reader).
#include <algorithm>
#include <map>
#include <memory>
#include <random>

#include "api.h"
#include "chartab.h"
#include "lxcformat.h"
#include "lxtest.h"
#include "mclex.h"

namespace {

using Bytes = std::vector<uchar>;

Bytes bytes(const std::string &hexText) {
    const std::string raw = unhex(hexText);
    return Bytes(raw.begin(), raw.end());
}

std::string hex(const Bytes &data) { return ::hex(std::string(data.begin(), data.end())); }

// A suffix table with the view that the codec takes.
struct Table {
    std::vector<std::string> texts;
    std::vector<const char *> pointers;
    MCSuffixTable view{};
    explicit Table(std::vector<std::string> entries = {}) : texts(std::move(entries)) {
        for (const auto &t : texts) pointers.push_back(t.c_str());
        view = {pointers.empty() ? nullptr : pointers.data(), static_cast<int32_t>(pointers.size())};
    }
};

struct Tables { Table simple, ext; };

// The records of words, which share one key and stand in order.
Bytes encode(const std::vector<std::string> &words, const Tables &t) {
    Bytes out;
    const char *prev = "";
    for (const auto &w : words) {
        uchar record[LXC_MAX_RECORD_SZ];
        const int32_t n = MCLex_EncodeWord(LXC_WordTail(w.c_str()), prev, &t.simple.view, &t.ext.view, record);
        EXPECT_TRUE(n >= 2 && n <= LXC_MAX_RECORD_SZ) << w;
        if (n < 0) return out;
        out.insert(out.end(), record, record + n);
        prev = LXC_WordTail(w.c_str());
    }
    return out;
}

// Decodes a segment from a heap block of exactly its size, so that the
// sanitizers see any read behind it. Gives the words as key bytes (up to
// the first zero) and tail, and the final status in *status.
std::vector<std::string> decode(const Bytes &data, const std::string &keyWord, const Tables &t,
                                int16_t *status = nullptr) {
    std::unique_ptr<uchar[]> block(new uchar[data.size()]);
    std::copy(data.begin(), data.end(), block.get());
    MCSegment seg{block.get(), static_cast<uint32_t>(data.size()), {}};
    LXC_MakeKey(keyWord.c_str(), seg.key);
    MCDecoder dec;
    MCLex_DecodeStart(&dec, &seg, &t.simple.view, &t.ext.view);
    std::vector<std::string> words;
    int16_t r;
    while ((r = MCLex_DecodeNext(&dec)) == 1) {
        EXPECT_EQ(static_cast<size_t>(dec.tailLen), std::strlen(dec.curWord + 3));
        words.push_back(std::string(dec.curWord, strnlen(dec.curWord, 3)) + (dec.curWord + 3));
    }
    if (status) *status = r;
    if (r < 0) {
        EXPECT_EQ(0, MCLex_DecodeNext(&dec)); // a damaged record ends the pass
    }
    return words;
}

} // namespace

// ------------------------------------------------------ fields and keys

TEST(LxcFormat, BigEndianFields) {
    uchar raw[LXC_INDEX_ENTRY_SZ];
    for (uint32_t v : {0u, 999u, 0x11223344u, 0x80000000u, UINT32_MAX}) {
        LXC_Put32(raw, v);
        EXPECT_EQ(hex(Bytes{uchar(v >> 24), uchar(v >> 16), uchar(v >> 8), uchar(v)}), hex(Bytes(raw, raw + 4)));
        uint32_t native; // the bytes as this little-endian host reads them
        std::memcpy(&native, raw, 4);
        EXPECT_TRUE(LXC_Get32(raw) == v && LX_Swap32(native) == v) << v;
    }
    // An index entry: its numbers stand at odd offsets.
    const Bytes entry = bytes("77 61 6C 00 00 00 02 00 00 00 0C");
    const LXCIndexEntry e = LXC_GetIndexEntry(entry.data());
    EXPECT_TRUE(std::memcmp(e.key, "wal", 3) == 0 && e.offset == 2 && e.size == 12);
    LXC_PutIndexEntry(raw, e);
    EXPECT_EQ(hex(entry), hex(Bytes(raw, raw + sizeof raw)));
}

TEST(LxcFormat, KeysAndTails) {
    static const struct { const char *word, *key, *tail; } kCases[] = {
        {"walked", "77 61 6C", "ked"}, {"abc", "61 62 63", ""}, {"abcd", "61 62 63", "d"},
        {"ab", "61 62 00", ""},        {"a", "61 00 00", ""},   {"", "00 00 00", ""},
        {" ", "20 00 00", ""},         {"\xE9t\xE9s", "E9 74 E9", "s"},
    };
    for (const auto &c : kCases) {
        uchar key[LXC_KEY_SZ];
        LXC_MakeKey(c.word, key);
        EXPECT_EQ(c.key, hex(Bytes(key, key + 3))) << c.word;
        EXPECT_STREQ(c.tail, LXC_WordTail(c.word));
    }
    // Unsigned order, from the first byte: a short word's key sorts before
    // every longer key that begins with it.
    static const struct { const char *a, *b; int32_t cmp; } kOrder[] = {
        {"a", "aa", -1}, {"ab", "abc", -1}, {"abc", "abd", -1}, {"Zoo", "ant", -1},
        {"z", "\xE9", -1}, {"abc", "abcd", 0}, {"b", "abz", 1},
    };
    for (const auto &c : kOrder) {
        uchar a[LXC_KEY_SZ], b[LXC_KEY_SZ];
        LXC_MakeKey(c.a, a);
        LXC_MakeKey(c.b, b);
        EXPECT_EQ(c.cmp, LXC_CompareKeys(a, b)) << c.a << " " << c.b;
        EXPECT_EQ(-c.cmp, LXC_CompareKeys(b, a)) << c.a << " " << c.b;
    }
}

// ------------------------------------------------------ coding one record

TEST(LxcFormat, CodingRules) {
    static const struct { std::vector<std::string> simple, ext; const char *prevTail, *tail, *record; } kCases[] = {
        {{}, {}, "", "", "00 00"},                         // a word of three bytes
        {{}, {}, "", "abc", "00 61 62 63 00"},              // empty tables: literals only
        {{}, {}, "ked", "ked", "03 00"},                    // a repeated word
        {{}, {}, "king", "k", "01 00"},                     // the beginning of the tail before
        {{"s"}, {"ings"}, "", "ings", "00 01 00"},          // the whole rest first
        {{"s"}, {}, "", "kings", "00 6B 69 6E 67 02"},      // literals up to the ending
        {{"a", "b", "c"}, {"x", "y", "c"}, "", "zc", "00 7A 04"},
        {{}, {"a", "b", "c"}, "", "xc", "00 78 01 02"},     // a number below 0x20
        {{"er"}, {}, "ning", "ner", "01 02"},               // only what follows the shared bytes
        {{"s"}, {"ks"}, "", "aks", "00 61 01 00"},          // the longest ending, though dearer
        {{"x", "ed", "ed"}, {}, "", "ed", "00 03"},         // equal entries: the lower number
        {{"ed"}, {"ed"}, "", "ed", "00 02"},                // simple before extended
        {{""}, {""}, "", "a", "00 61 00"},                  // an empty entry never matches
        {{"walked"}, {}, "", "ked", "00 6B 65 64 00"},      // only whole rests count
        {{"\xE9s"}, {}, "ab", "a\xE9s", "01 02"},           // high bytes are ordinary
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(std::string(c.prevTail) + " -> " + c.tail);
        const Tables t{Table(c.simple), Table(c.ext)};
        uchar record[LXC_MAX_RECORD_SZ];
        const int32_t n = MCLex_EncodeWord(c.tail, c.prevTail, &t.simple.view, &t.ext.view, record);
        ASSERT_GT(n, 0);
        EXPECT_EQ(c.record, hex(Bytes(record, record + n)));
        // Behind the record of the previous word, it decodes to the word.
        const std::string prev = std::string("key") + c.prevTail, word = std::string("key") + c.tail;
        EXPECT_EQ((std::vector<std::string>{prev, word}), decode(encode({prev, word}, t), "key", t));
    }
}

TEST(LxcFormat, TableLimitsAndInvalidTails) {
    // Entries past code 0x1F and past number 254 can't be reached.
    std::vector<std::string> simple(31, "q"), ext(256, "q");
    simple[30] = "zz";
    ext[255] = "zz";
    const Tables t{Table(simple), Table(ext)};
    uchar record[LXC_MAX_RECORD_SZ];
    ASSERT_EQ(4, MCLex_EncodeWord("zz", "", &t.simple.view, &t.ext.view, record));
    EXPECT_EQ("00 7A 7A 00", hex(Bytes(record, record + 4)));
    ext[254] = "zz";
    const Tables t2{Table(simple), Table(ext)};
    ASSERT_EQ(3, MCLex_EncodeWord("zz", "", &t2.simple.view, &t2.ext.view, record));
    EXPECT_EQ("00 01 FE", hex(Bytes(record, record + 3)));

    // The longest tail fills a record; longer tails and control bytes are
    // refused without a byte written.
    const Tables none;
    const std::string longest(LXC_MAX_TAIL_LEN, 'x');
    EXPECT_EQ(LXC_MAX_RECORD_SZ, MCLex_EncodeWord(longest.c_str(), "", &none.simple.view, &none.ext.view, record));
    const Tables oneChar{Table(), Table({"x"})};
    EXPECT_EQ(LXC_MAX_RECORD_SZ, MCLex_EncodeWord(longest.c_str(), "", &oneChar.simple.view, &oneChar.ext.view, record));
    for (const std::string &bad : {longest + "x", std::string("a\x1F"), std::string("\x01"), std::string("ab\tc")}) {
        record[0] = 0xAA;
        EXPECT_EQ(LX_ERR_INVALID_WORD, MCLex_EncodeWord(bad.c_str(), "", &none.simple.view, &none.ext.view, record));
        EXPECT_EQ(0xAA, record[0]);
    }
    EXPECT_EQ(3, MCLex_EncodeWord(" ", "", &none.simple.view, &none.ext.view, record)); // space is the lowest byte
}

// ------------------------------------------------------ round trips

TEST(LxcFormat, RandomWordListsRoundTrip) {
    std::mt19937 rng(20261123);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        // Few letters make long shared runs and many endings in the tables.
        const int letters = pick(1, 6);
        auto text = [&](int len) {
            std::string s;
            for (int i = 0; i < len; ++i) s += pick(0, 9) == 0 ? static_cast<char>(pick(0x20, 0xFF)) : static_cast<char>('a' + pick(0, letters - 1));
            return s;
        };
        std::vector<std::string> words(pick(1, 60));
        for (auto &w : words) w = "ab" + text(pick(0, LX_MAX_WORD_SZ - 3));
        for (auto &w : words) if (pick(0, 4) == 0) w = words[pick(0, static_cast<int>(words.size()) - 1)];
        std::sort(words.begin(), words.end());
        std::vector<std::string> simple(pick(0, 40)), ext(pick(0, 300));
        for (auto &s : simple) s = text(pick(0, 10));
        for (auto &s : ext) s = text(pick(0, 10));
        const Tables t{Table(simple), Table(ext)};

        // Words of up to two bytes have keys of their own; the rest share "ab?".
        std::map<std::string, std::vector<std::string>> byKey;
        for (const auto &w : words) byKey[w.substr(0, 3)].push_back(w);
        for (const auto &[key, segWords] : byKey) {
            const Bytes records = encode(segWords, t);
            int16_t status;
            const std::vector<std::string> back = decode(records, key, t, &status);
            EXPECT_EQ(0, status);
            if (key.size() == 3) {
                EXPECT_EQ(segWords, back);
            } else {
                EXPECT_EQ(segWords.size(), back.size()); // taken from the key, not decoded
            }
        }
    }
}

// ------------------------------------------------------ jumps

namespace {

// The jumps of a segment as a pass of the decoder finds them, each word
// rebuilt whole: what MCLex_MakeJumps must give.
int32_t decoded_jumps(const MCSegment *seg, const Tables &t, uint32_t *jumps, int32_t capacity, bool *complete) {
    MCDecoder dec;
    MCLex_DecodeStart(&dec, seg, &t.simple.view, &t.ext.view);
    const auto *tail = reinterpret_cast<const uchar *>(dec.curWord + 3);
    int32_t n = 0, sinceJump = 0;
    uint32_t before = 0;
    *complete = false;
    for (bool first = true;; first = false) {
        const auto offset = static_cast<uint32_t>(dec.pos - seg->data);
        const int16_t r = MCLex_DecodeNext(&dec);
        if (r != 1) {
            *complete = r == 0;
            return n;
        }
        const uint32_t now = static_cast<uint32_t>(tail[0]) << 8 | (tail[0] != 0 ? tail[1] : 0);
        if (!first && now < before) return n;
        if (!first && now != before && sinceJump >= MC_JUMP_GAP) {
            if (n == capacity || offset > 0xFFFF) return n;
            jumps[n++] = now << 16 | offset;
            sinceJump = 0;
        }
        ++sinceJump;
        before = now;
    }
}

} // namespace

// A search that goes by the jumps answers as a scan from the first record,
// exact and without regard to case, for every word of a segment and words
// beside each, also where records are damaged or out of order, or the
// table is cut short (the jumps then end before them).
TEST(LxcFormat, JumpsGiveTheAnswersOfAFullScan) {
    std::mt19937 rng(7);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    const Tables t{Table({"ed", "s", "ing", "es", "aBd"}), Table({"e", "D", "b", "ca"})};
    const std::string alphabet = "abcABC\xe9\xc9";
    auto flip_case = [](std::string w, size_t from) {
        for (size_t i = from; i < w.size(); ++i) {
            const auto c = static_cast<uchar>(w[i]);
            w[i] = static_cast<char>(lx_is_upper(c) ? lx_to_lower(c) : lx_to_upper(c));
        }
        return w;
    };
    int jumped = 0, complete = 0;
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const int letters = pick(2, static_cast<int>(alphabet.size()));
        std::vector<std::string> words(pick(1, 400));
        const bool longTails = round % 4 == 0; // near the longest tail
        for (auto &w : words) {
            w = "abc";
            for (int i = longTails ? pick(LXC_MAX_TAIL_LEN - 6, LXC_MAX_TAIL_LEN) : pick(0, 6); i > 0; --i)
                w += alphabet[pick(0, letters - 1)];
        }
        std::sort(words.begin(), words.end(), [](const std::string &a, const std::string &b) {
            return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                                [](char x, char y) { return lx_byte(x) < lx_byte(y); });
        });
        words.erase(std::unique(words.begin(), words.end()), words.end());
        if (longTails && words.back() != "abc" + std::string(LXC_MAX_TAIL_LEN, '\xe9'))
            words.push_back("abc" + std::string(LXC_MAX_TAIL_LEN, '\xe9')); // the highest word
        // 1 a byte changed, 2 a byte raised by a little, 3 two words swapped, 4 a short table,
        // 5 and 6 the last word's tail made too long by a suffix or a letter
        const int mischief = pick(0, 7);
        if (mischief == 3 && words.size() > 1) std::swap(words[pick(0, static_cast<int>(words.size()) - 2)], words.back());
        Bytes records = encode(words, t);
        uchar &victim = records[pick(0, static_cast<int>(records.size()) - 1)];
        if (mischief == 1) victim = static_cast<uchar>(pick(0, 0x70));
        if (mischief == 2) victim = static_cast<uchar>(victim + pick(1, 2));
        if (mischief == 5 && longTails) records.back() = LXC_CODE_SIMPLE; // the last tail made too long
        if (mischief == 6 && longTails) {
            records.back() = 'x';
            records.push_back(LXC_CODE_END);
        }
        std::unique_ptr<uchar[]> block(new uchar[records.size()]);
        std::copy(records.begin(), records.end(), block.get());
        const MCSegment plain{block.get(), static_cast<uint32_t>(records.size()), {'a', 'b', 'c'}};
        uint32_t jumps[MC_MAX_JUMPS];
        MCSegment jumping = plain;
        jumping.jumps = jumps;
        const int32_t capacity = mischief == 4 ? pick(1, 4) : MC_MAX_JUMPS;
        jumping.nJumps = MCLex_MakeJumps(&plain, &t.simple.view, &t.ext.view, jumps, capacity, &jumping.jumpsComplete);
        uint32_t expected[MC_MAX_JUMPS];
        bool expectedComplete;
        const int32_t nExpected = decoded_jumps(&plain, t, expected, capacity, &expectedComplete);
        ASSERT_EQ(std::vector<uint32_t>(expected, expected + nExpected),
                  std::vector<uint32_t>(jumps, jumps + jumping.nJumps));
        ASSERT_EQ(expectedComplete, jumping.jumpsComplete);
        jumped += jumping.nJumps > 0;
        complete += jumping.nJumps > 0 && jumping.jumpsComplete;
        std::vector<std::string> queries = {"abc", "abcz", "abc\xff", "ABC"};
        for (const auto &w : words) {
            std::string next = w, before = w;
            next.back() = static_cast<char>(next.back() + 1);
            before.back() = static_cast<char>(before.back() - 1);
            queries.insert(queries.end(), {w, w + "a", w.substr(0, w.size() - 1), next, before, flip_case(w, 3),
                                           flip_case(w, w.size() - 1), flip_case(w, 0)});
        }
        for (const auto &q : queries) {
            const MCSuffixTable *st = &t.simple.view, *et = &t.ext.view;
            EXPECT_EQ(MCLex_FindNoCase(&plain, st, et, q.c_str()), MCLex_FindNoCase(&jumping, st, et, q.c_str()))
                << q << " mischief " << mischief;
            if (q.compare(0, 3, "abc") != 0) continue;
            ASSERT_EQ(MCLex_Scan(&plain, 1, st, et, q.c_str(), nullptr, nullptr),
                      MCLex_Scan(&jumping, 1, st, et, q.c_str(), nullptr, nullptr))
                << q << " mischief " << mischief;
        }
    }
    EXPECT_GT(jumped, 100);
    EXPECT_GT(complete, 50);
}

// ------------------------------------------------------ damaged records

TEST(LxcFormat, DamagedRecordsEndThePass) {
    const std::string x77(LXC_MAX_TAIL_LEN, 'x');
    auto literals = [](const std::string &s) { return " " + hex(Bytes(s.begin(), s.end())); };
    const Tables t{Table({"ed", "s", std::string(100, 'y')}), Table({"ing"})};
    static const std::string kWalk = "00 6B 00 ";
    const struct { std::string records, words; int16_t status; } kCases[] = {
        {"", "", 0},
        {kWalk + "01 02", "abck abcked", 0},
        {"05 00", "", LX_ERR_BAD_FORMAT},                 // shared count in the first record
        {kWalk + "02 00", "abck", LX_ERR_BAD_FORMAT},     // shared count beyond the tail before
        {kWalk + "FF 00", "abck", LX_ERR_BAD_FORMAT},
        {kWalk + "00 05", "abck", LX_ERR_BAD_FORMAT},     // a simple code beyond the table
        {kWalk + "00 1F", "abck", LX_ERR_BAD_FORMAT},
        {kWalk + "00 01 01", "abck", LX_ERR_BAD_FORMAT},  // an extended number beyond the table
        {kWalk + "00 01", "abck", LX_ERR_BAD_FORMAT},     // the number cut off
        {kWalk + "00 6B", "abck", LX_ERR_BAD_FORMAT},     // no end code
        {kWalk + "00", "abck", LX_ERR_BAD_FORMAT},        // a shared count alone
        {"00" + literals(x77) + " 00", "abc" + x77, 0},   // the longest tail
        {"00" + literals(x77) + " 78 00", "", LX_ERR_BAD_FORMAT},
        {"00" + literals(x77.substr(2)) + " 02", "abc" + x77.substr(2) + "ed", 0},
        {"00" + literals(x77.substr(1)) + " 02", "", LX_ERR_BAD_FORMAT}, // a suffix past the buffer
        {"00" + literals(x77.substr(1)) + " 00 4D 03", "abc" + x77.substr(1), LX_ERR_BAD_FORMAT},
        {kWalk + "00 04", "abck", LX_ERR_BAD_FORMAT},     // an entry longer than any tail
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.records);
        int16_t status;
        std::vector<std::string> words = decode(bytes(c.records), "abc", t, &status);
        std::string joined;
        for (const auto &w : words) joined += (joined.empty() ? "" : " ") + w;
        EXPECT_EQ(c.words, joined);
        EXPECT_EQ(c.status, status);
    }

    // Number 255 is no number, even where a table holds 256 entries.
    const Tables big{Table(), Table(std::vector<std::string>(256, "z"))};
    int16_t status;
    EXPECT_EQ(std::vector<std::string>{"abcz"}, decode(bytes("00 01 FE 00 01 FF"), "abc", big, &status));
    EXPECT_EQ(LX_ERR_BAD_FORMAT, status);
}

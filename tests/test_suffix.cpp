// Tests of suffix discovery: what is counted for each word, the gains, the
// choice and order of the suffixes written, failures, and the hash table.
#include <algorithm>
#include <map>

#include "filetest.h"
#include "lxtest.h"
#include "platform.h"
#include "suffix.h"

namespace {

std::map<std::string, SuffixCounter> gSeen;
void record(const char *ending, const SuffixCounter *counter) { gSeen[ending] = *counter; }

struct Discovery {
    int32_t result = 0;
    std::map<std::string, SuffixCounter> seen;
    std::string file; // the suffix file
};

// Runs discovery over word lists given as texts.
Discovery discover(const std::vector<std::string> &lists) {
    TempDir dir;
    std::vector<std::string> paths;
    for (size_t i = 0; i < lists.size(); ++i) {
        paths.push_back(dir / ("list" + std::to_string(i)));
        write_bytes(paths.back(), lists[i]);
    }
    std::vector<const char *> names;
    for (const auto &p : paths) names.push_back(p.c_str());
    gSeen.clear();
    Suffix_SetCountHook(record);
    Discovery run;
    run.result = LX_FindSuffixes(static_cast<int32_t>(names.size()), names.data(), (dir / "suffixes").c_str());
    Suffix_SetCountHook(nullptr);
    run.seen = gSeen;
    run.file = read_bytes(dir / "suffixes");
    return run;
}

std::map<std::string, int32_t> counts(const Discovery &run) {
    std::map<std::string, int32_t> out;
    for (const auto &[ending, c] : run.seen) out[ending] = c.count;
    return out;
}

// Words "xxx" + a distinct letter + ending, n times: the ending is met n - 1
// times again, and its one-letter tail is never met again.
std::vector<std::string> group(const std::string &ending, int n) {
    std::vector<std::string> out;
    for (int i = 0; i < n; ++i) out.push_back("xxx" + std::string(1, static_cast<char>('0' + i)) + ending);
    return out;
}

} // namespace

// ------------------------------------------------------ what is counted

TEST(Suffix, CountsTheEndingsFrontCodingLeaves) {
    using Counts = std::map<std::string, int32_t>;
    static const struct { const char *what; std::vector<std::string> words; Counts expected; } kCases[] = {
        {"each word counts for its longest known ending",
         {"walked", "walking", "talked", "talking"},
         {{"ked", 0}, {"ed", 1}, {"d", 0}, {"ing", 1}, {"ng", 0}, {"g", 0}}},
        {"comments and empty lines don't break the comparison",
         {"walked", "# c", "", "walking", "#", "talked", "talking"},
         {{"ked", 0}, {"ed", 1}, {"d", 0}, {"ing", 1}, {"ng", 0}, {"g", 0}}},
        {"three letters or fewer add nothing", {"a", "ab", "abc"}, {}},
        {"behind a word of three letters the cut is 3", {"abc", "abcd"}, {{"d", 0}}},
        {"a repeated word adds nothing", {"abcd", "abcd"}, {{"d", 0}}},
        {"at most eight characters", {"international"},
         {{"national", 0}, {"ational", 0}, {"tional", 0}, {"ional", 0}, {"onal", 0}, {"nal", 0}, {"al", 0}, {"l", 0}}},
        {"endings no word can hold aren't counted", {"abc\tde", "abc\x80x"}, {{"de", 0}, {"e", 0}, {"x", 0}}},
    };
    for (const auto &c : kCases) {
        const Discovery run = discover({crlf(c.words)});
        EXPECT_EQ(0, run.result) << c.what;
        EXPECT_EQ(c.expected, counts(run)) << c.what;
    }
    // Several lists count into one table, each list from an empty previous
    // word; the last line without CR LF is not read.
    const Discovery run = discover({crlf({"walked", "walking"}), crlf({"talked", "talking"}) + "balked"});
    EXPECT_EQ((Counts{{"ked", 1}, {"ed", 0}, {"d", 0}, {"ing", 1}, {"ng", 0}, {"g", 0}}), counts(run));
}

TEST(Suffix, Gains) {
    static const struct { int32_t count, len, simple, ext; } kCases[] = {
        {0, 1, -2, -2},   {1, 5, -1, -2},   {2, 1, 0, -2},     {3, 1, 1, -2},
        {100, 3, 296, 196}, {4, 2, 5, 1},   {INT32_MAX, 8, INT32_MAX, INT32_MAX},
    };
    for (const auto &c : kCases) {
        EXPECT_EQ(c.simple, Suffix_SimpleGain(c.count, c.len)) << c.count << " " << c.len;
        EXPECT_EQ(c.ext, Suffix_ExtGain(c.count, c.len)) << c.count << " " << c.len;
    }
    // The gains reach the counters of the table.
    std::vector<std::string> words = group("s", 4);
    const Discovery run = discover({crlf(words)});
    ASSERT_EQ(1u, run.seen.count("s"));
    EXPECT_EQ(3, run.seen.at("s").count);
    EXPECT_EQ(1, run.seen.at("s").simpleGain);
    EXPECT_EQ(-2, run.seen.at("s").extGain);
    EXPECT_EQ("s\r\n", run.file);
}

// ------------------------------------------------------ the suffix file

TEST(Suffix, ChoiceAndOrderOfTheFile) {
    auto groups = [](const std::vector<std::pair<std::string, int>> &plan) {
        std::vector<std::string> words;
        for (const auto &[ending, n] : plan) {
            auto g = group(ending, n);
            words.insert(words.end(), g.begin(), g.end());
        }
        return crlf(words);
    };
    // No words: an empty file. A count of 2 for one letter isn't enough.
    EXPECT_EQ("", discover({""}).file);
    EXPECT_EQ("", discover({groups({{"s", 3}})}).file);
    // An ending that begins with '#' would read as a comment.
    EXPECT_EQ("", discover({groups({{"#s", 6}})}).file);
    EXPECT_EQ("a#s\r\n", discover({groups({{"a#s", 6}})}).file);
    // By falling gain; ties by the ending's bytes, whatever the input order.
    EXPECT_EQ("ing\r\na\r\nb\r\nc\r\n", discover({groups({{"c", 4}, {"ing", 3}, {"b", 4}, {"a", 4}})}).file);
    EXPECT_EQ("ing\r\na\r\nb\r\nc\r\n", discover({groups({{"a", 4}, {"b", 4}, {"ing", 3}, {"c", 4}})}).file);

    // 31 candidates of equal gain: the first 30 by bytes are simple, the
    // 31st is extended, as its extended gain is positive.
    std::vector<std::pair<std::string, int>> plan;
    std::string expected;
    const std::string lasts = "ABCDEabcdefghijklmnopqrstuvwxyz";
    for (char c : lasts) plan.emplace_back(std::string("q") + c, 5); // met 4 times again
    std::reverse(plan.begin(), plan.end());
    for (char c : lasts) expected += std::string("q") + c + "\r\n";
    EXPECT_EQ(expected, discover({groups(plan)}).file);
    // With a count of 3 instead, the 31st has no extended gain.
    for (auto &s : plan) s.second = 4;
    expected.resize(expected.size() - 4);
    EXPECT_EQ(expected, discover({groups(plan)}).file);
}

TEST(Suffix, AtMost285SuffixesByGain) {
    // Endings q + two letters, met 2 to 9 times again: hundreds of candidates.
    std::vector<std::string> words;
    int k = 0;
    for (char a = 'a'; a <= 'z'; ++a)
        for (char b = 'a'; b <= 'n'; ++b, ++k) {
            auto g = group(std::string("q") + a + b, 3 + k % 8);
            words.insert(words.end(), g.begin(), g.end());
        }
    const Discovery run = discover({crlf(words)});
    std::vector<std::string> lines;
    for (size_t at = 0, end; (end = run.file.find("\r\n", at)) != std::string::npos; at = end + 2)
        lines.push_back(run.file.substr(at, end - at));
    ASSERT_EQ(285u, lines.size());
    // Simple suffixes by falling simple gain, ties by bytes; then extended
    // ones by falling extended gain, every one positive, and none left out
    // that would gain more than the last one written.
    auto before = [&](const std::string &a, const std::string &b, bool ext) {
        const SuffixCounter &x = run.seen.at(a), &y = run.seen.at(b);
        const int32_t gx = ext ? x.extGain : x.simpleGain, gy = ext ? y.extGain : y.simpleGain;
        return gx != gy ? gx > gy : a < b;
    };
    for (size_t i = 1; i < lines.size(); ++i)
        if (i != 30) {
            EXPECT_TRUE(before(lines[i - 1], lines[i], i > 30)) << i;
        }
    for (size_t i = 30; i < lines.size(); ++i) EXPECT_GT(run.seen.at(lines[i]).extGain, 0);
    for (const auto &[ending, c] : run.seen) {
        if (std::find(lines.begin(), lines.end(), ending) != lines.end()) continue;
        EXPECT_TRUE(c.simpleGain <= run.seen.at(lines[29]).simpleGain) << ending;
        EXPECT_FALSE(before(ending, lines.back(), true) && c.simpleGain > 0) << ending;
    }
}

// ------------------------------------------------------ failures

TEST(Suffix, Failures) {
    TempDir dir;
    write_bytes(dir / "words", crlf(group("s", 4)));
    const std::string words = dir / "words", missing = dir / "missing";
    LX_SuffixMsg = nullptr;
    {
        const char *lists[] = {missing.c_str(), words.c_str()};
        EXPECT_EQ(0, LX_FindSuffixes(2, lists, (dir / "out").c_str())); // goes on with the next list
        EXPECT_STREQ("Can't open input file", LX_SuffixMsg);
        EXPECT_EQ("s\r\n", read_bytes(dir / "out"));
    }
    const char *lists[] = {words.c_str()};
    EXPECT_EQ(LX_ERR_FAILED, LX_FindSuffixes(1, lists, (dir / "no/out").c_str()));
    EXPECT_STREQ("Can't open output file", LX_SuffixMsg);
    EXPECT_EQ(LX_ERR_FAILED, LX_FindSuffixes(1, lists, "/dev/full"));
    EXPECT_STREQ("Can't write output file", LX_SuffixMsg);
    EXPECT_EQ(0, LX_FindSuffixes(1, lists, (dir / "out").c_str()));
    EXPECT_STREQ("Can't write output file", LX_SuffixMsg); // not cleared by success
}

TEST(Suffix, OutOfMemoryEndsTheCall) {
    // A key that can't be stored ends the call: counts that miss an
    // ending would choose other suffixes. A list that can't be opened for
    // want of memory is passed over, as any list that can't be opened.
    const std::string list = crlf(group("ing", 5));
    const Discovery full = discover({list});
    ASSERT_EQ("ing\r\n", full.file);
    std::map<std::string, int> outcomes;
    for (long fail = 0;; ++fail) {
        const long live = LX_Mem_LiveBlocks();
        LX_Mem_FailAfter(fail);
        const Discovery run = discover({list});
        LX_Mem_FailAfter(-1);
        EXPECT_EQ(live, LX_Mem_LiveBlocks()) << fail;
        if (run.result == 0 && run.file == full.file) break;
        ++outcomes[std::to_string(run.result) + " " + LX_SuffixMsg];
        ASSERT_LT(fail, 100);
    }
    EXPECT_EQ(1, outcomes["0 Can't open input file"]);
    EXPECT_EQ(8, outcomes["-1 out of memory\n"]); // a key for each of the 8 endings
    EXPECT_EQ(1, outcomes["-1 Can't open output file"]);
    EXPECT_EQ(3u, outcomes.size());
}

// ------------------------------------------------------ the hash table

TEST(Suffix, StrHash) {
    StrHash table{};
    ASSERT_EQ(&table, StrHash_Init(&table, 30000));
    int values[3] = {1, 2, 3};
    EXPECT_EQ(&values[0], StrHash_Put("ing", &values[0], &table));
    EXPECT_EQ(&values[0], StrHash_Put("ing", &values[1], &table)); // the value held before
    EXPECT_EQ(&values[2], StrHash_Put("", &values[2], &table));
    EXPECT_EQ(&values[1], StrHash_Get("ing", &table));
    EXPECT_EQ(&values[2], StrHash_Get("", &table));
    EXPECT_EQ(nullptr, StrHash_Get("in", &table));

    // Endings of every length and letter spread over the buckets, odd and
    // even ones alike.
    std::vector<std::string> keys;
    for (char a = 'a'; a <= 'z'; ++a)
        for (char b = 'a'; b <= 'z'; ++b)
            for (char c = 'a'; c <= 'z'; ++c) keys.push_back(std::string{a, b, c} + (a < 'n' ? "ing" : ""));
    for (const auto &k : keys) StrHash_Put(k.c_str(), &values[0], &table);
    size_t longest = 0, odd = 0, entries = 0;
    for (uint32_t i = 0; i < table.size; ++i) {
        size_t n = 0;
        for (StrHashEntry *e = table.buckets[i]; e; e = e->next) ++n;
        longest = std::max(longest, n);
        if (i % 2 && n) ++odd;
        entries += n;
    }
    EXPECT_EQ(keys.size() + 2, entries);
    EXPECT_LE(longest, 6u);
    EXPECT_GT(odd, 4000u);

    int freed = 0;
    static int *counter;
    counter = &freed;
    StrHash_Free(&table, [](void *) { ++*counter; });
    EXPECT_EQ(static_cast<int>(keys.size()) + 2, freed);
    EXPECT_EQ(0u, table.size);
    EXPECT_EQ(nullptr, table.buckets);
}

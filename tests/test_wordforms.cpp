// Tests of the word forms: the normalised form that is looked up, and the
// possessive ending and case that a replacement takes from the text.
#include "clex.h"
#include "lxtest.h"

constexpr uint32_t S = LX_OPT_STRIP_POSSESSIVE, M = LX_OPT_MARKUP;

TEST(WordForms, NormaliseWord) {
    const std::string letters(100, 'a'), longName = "&eacute" + std::string(100, 'x') + ";b";
    const std::string lateEntity = std::string(79, 'a') + "&eacute;b";
    const struct { std::string word; uint32_t options; std::string expected; } kCases[] = {
        {"dog's", S, "dog"}, {"dog'S", S, "dog"}, {"dogs'", S, "dogs"}, {"s'", S, "s"}, {"dogS", S, "dogS"},
        {"'s", S, ""}, {"'", S, "'"}, {"dog's", 0, "dog's"}, {"caf&eacute;", 0, "caf&eacute;"},
        {"caf&eacute;", M, "caf\xE9"}, {"caf&#233;", M, "caf\xE9"}, {"&Eacute;cole", M, "\xC9" "cole"},
        {"&#146;", M, "\x92"}, {"&#321;", M, "A"}, {"&#0000000233;", M, "\xE9"}, {"caf&nope;s", M, "caf&nope;s"},
        {"&amp;s", M, "&amp;s"}, {"caf&eacutexyz;", M, "caf\xE9"}, {"caf&#xE9;s", M, "caf"}, {"&#256;x", M, ""},
        {"&", M, ""}, {"a&b", M, "a"}, {"AT&T", M, "AT"}, {"&x&eacute;", M, "\xE9"},
        {"caf&eacute;'s", M | S, "caf\xE9"}, {"dog&#146;s", M | S, "dog\x92s"},
        {letters, 0, letters.substr(0, 80)}, {letters, M, letters.substr(0, 80)}, {longName, M, "\xE9" "b"},
        {lateEntity, M, std::string(79, 'a') + "\xE9"},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE("\"" + c.word + "\" options " + std::to_string(c.options));
        char out[LX_MAX_WORD_SZ];
        std::memset(out, 'X', sizeof out);
        const int32_t n = LX_NormaliseWord(c.word.c_str(), c.options, out);
        EXPECT_EQ(c.expected, out);
        EXPECT_EQ(static_cast<int32_t>(c.expected.size()), n);
    }
}

TEST(WordForms, RestorePossessive) {
    const std::string a78(78, 'a'), a79(79, 'a'), a80(80, 'a');
    const struct { const char *word; uint32_t options; std::string repl, expected; } kCases[] = {
        {"dog's", S, "cat", "cat's"}, {"dog's", S, "cats", "cats'"}, {"dog's", S, "catS", "catS'"},
        {"dogs'", S, "cat", "cat's"}, {"dogs'", S, "cats", "cats'"}, {"DOG'S", S, "CAT", "CAT'S"},
        {"DOGS'", S, "CAT", "CAT'S"}, {"dog", S, "cat", "cat"}, {"dog's", 0, "cat", "cat"},
        {"'s", S, "cat", "cat's"}, {"dog's", S, "", "'s"}, {"dog'", S, "cat", "cat"}, {"Dog'S", S, "cat", "cat'S"},
        // Each of the two appends is dropped once the buffer is full.
        {"dog's", S, a78, a78 + "'s"}, {"dog's", S, a79, a79 + "'"}, {"dog's", S, a80, a80},
    };
    for (const auto &c : kCases) {
        char repl[LX_MAX_WORD_SZ + 8];
        std::memset(repl, 'X', sizeof repl);
        std::strcpy(repl, c.repl.c_str());
        LX_RestorePossessive(c.word, c.options, repl);
        EXPECT_EQ(c.expected, repl) << c.word << " / " << c.repl;
        EXPECT_EQ('X', repl[LX_MAX_WORD_SZ]) << c.word << " / " << c.repl; // nothing written behind the buffer
    }
}

TEST(WordForms, TransferCase) {
    static const struct { const char *word; int16_t mode, keepAccents; const char *repl, *expected; } kCases[] = {
        // Letter by letter; the word's last character stands for the rest.
        {"Teh", 1, 1, "the", "The"}, {"teh", 1, 1, "THE", "the"}, {"TEH", 1, 1, "therefore", "THEREFORE"},
        {"Te", 1, 1, "there", "There"}, {"tE", 1, 1, "there", "tHERE"}, {"TE", 1, 1, "don't", "DON'T"},
        {"T", 1, 1, "a lot", "A LOT"}, {"1E", 1, 1, "THE", "tHE"}, {"TEH", 1, 0, "\xE9t\xE9", "ETE"},
        {"TEH", 1, 1, "\xE9t\xE9", "\xC9T\xC9"}, {"teh", 1, 0, "\xC9t\xE9", "\xE9t\xE9"}, {"T", 1, 0, "\xFF", "S"},
        {"T", 1, 1, "\xFF", "\xDF"}, {"T", 1, 0, "\xDF", "\xBF"},
        // By the word's kind: all capitals, capitalised, or other.
        {"TEH", 0, 1, "the", "THE"}, {"Teh", 0, 1, "the", "The"}, {"teh", 0, 1, "The", "The"},
        {"tEH", 0, 1, "the", "the"}, {"T", 0, 1, "the", "the"}, {"T-H", 0, 1, "the", "THE"},
        {"1A", 0, 1, "the", "THE"}, {"12", 0, 1, "the", "THE"}, {"1", 0, 1, "the", "the"},
        {"\xC9t\xE9", 0, 1, "ete", "Ete"}, {"TEH", 0, 1, "don't", "DON'T"}, {"TEH", 0, 0, "\xFF\xDF", "S\xBF"},
        {"Teh", 0, 0, "\xE9t\xE9", "Et\xE9"}, {"Teh", 0, 0, "\xE9t\xC9", "EtE"},
        {"teh", 0, 0, "\xC9t\xE9", "Et\xE9"}, {"teh", 0, 1, "\xC9t\xE9", "\xC9t\xE9"},
        {"TEH", 0, 0, "\xD0x", "\xD0X"}, {"TEH", 0, 0, "\xF0x", "\xD0X"},
    };
    for (const auto &c : kCases) {
        char repl[LX_MAX_WORD_SZ];
        std::strcpy(repl, c.repl);
        LX_TransferCase(c.word, c.mode, c.keepAccents, repl);
        EXPECT_STREQ(c.expected, repl) << c.word << " on " << c.repl << " mode " << c.mode << " keep "
                                       << c.keepAccents;
    }
}

// The caller's word is measured in more than 32 bits: a word of 2^31 + 3
// characters ending in 's gives a replacement that ending, where a 32-bit
// length would be negative. The word is one megabyte of memory mapped
// 2048 times.
TEST(WordForms, PossessiveOfAWordBeyondThirtyTwoBits) {
    MappedText huge(std::string(size_t{1} << 20, 'a'), 2048, "a's");
    ASSERT_NE(nullptr, huge.text) << "no room in the address space";
    char repl[LX_MAX_WORD_SZ] = "aaa";
    LX_RestorePossessive(huge.text, S, repl);
    EXPECT_STREQ("aaa's", repl);
}

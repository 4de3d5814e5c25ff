// fuzz_lxspell_text - bytes as lxspell's input: a stream walked by
// `lxspell check` and `lxspell list` in both encodings, and the same bytes
// as a conversation in pipe mode. The walks must end and stay inside their
// buffers; a finding's position must lie within the input.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "check.h"
#include "lexicons.h"
#include "pipe.h"
#include "report.h"

namespace {

void check(bool ok) {
    if (!ok) std::abort();
}

// A lexicon set of the session lexicon alone, with a few words and actions.
lxspell::LexiconSet &lexicons() {
    static lxspell::LexiconSet *set = [] {
        auto *s = new lxspell::LexiconSet;
        std::string err;
        check(s->open_session(err));
        for (const char *w : {"the", "cat", "The", "caf\xE9", "well", "known", "it's", "a"})
            LX_Lexicon_AddWord(s->session(), w, LX_ACT_IGNORE, nullptr);
        LX_Lexicon_AddWord(s->session(), "teh", LX_ACT_AUTO_CHANGE_CASE, "the");
        LX_Lexicon_AddWord(s->session(), "alot", LX_ACT_COND_CHANGE, "a lot");
        return s;
    }();
    return *set;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1 || size > 8192) return 0;
    // The first byte chooses the options; the rest is the input.
    lxspell::Settings s;
    const uint8_t pick = data[0];
    if (pick & 1) s.options |= LX_OPT_MARKUP;
    if (pick & 2) s.options &= ~LX_OPT_IGNORE_ADDRESSES;
    if (pick & 4) s.encoding = lxspell::Encoding::Latin1;
    s.latin1Fallback = (pick & 8) != 0;
    s.depth = 10;
    const std::string input(reinterpret_cast<const char *>(data + 1), size - 1);

    FILE *sink = std::fopen("/dev/null", "w");
    check(sink != nullptr);
    for (lxspell::Format format : {lxspell::Format::Json, lxspell::Format::List}) {
        FILE *in = fmemopen(const_cast<char *>(input.data()), input.size(), "rb");
        if (in == nullptr) break; // fmemopen refuses an empty buffer
        lxspell::Reporter reporter(sink, format, (pick & 16) != 0);
        std::string err;
        lxspell::check_stream(in, "fuzz", lexicons().list(), s, reporter, err);
        std::fclose(in);
    }
    if (FILE *in = fmemopen(const_cast<char *>(input.data()), input.size(), "rb")) {
        check(lxspell::run_pipe(in, sink, lexicons(), s) == 0);
        std::fclose(in);
    }
    std::fclose(sink);
    return 0;
}

// pipe.cpp - the pipe protocol of `lxspell -a`.
//
// After the banner, each input line is either a command or a line of text.
// Commands ('*' add to the personal lexicon, '&' add in lower case, '@'
// accept for this session, '#' save, '!' and '%' terse mode on and off,
// '+', '-' and '~' mode switches that are ignored) get no answer. A text
// line (a leading '^' is taken off, so that any text can be sent) gets one
// answer line for each word and then an empty line:
//   *                            the word is correct (not in terse mode)
//   & WORD COUNT OFFSET: s1, s2  the word is wrong; suggestions follow
//   # WORD OFFSET                the word is wrong; no suggestion
// OFFSET counts characters (not bytes) from the start of the input line as
// it came, a leading '^' included, from 0. An empty line gets no answer.
//
// Text is UTF-8 unless --encoding latin1 was given; a line that isn't
// valid UTF-8 is taken as ISO 8859-1 and answered in it, as editors that
// talk ISO 8859-1 expect.
#include "pipe.h"

#include <cstring>
#include <string>

namespace lxspell {

namespace {

class PipeSession {
public:
    PipeSession(FILE *out, LexiconSet &lexicons, const Settings &s) : out_(out), lexicons_(lexicons), s_(s) {}
    void line(std::string input);

private:
    void add_word(const std::string &arg, bool lower, bool sessionOnly);
    void check_line(const std::string &text, size_t base, Encoding enc);
    void answer_correct() {
        if (!terse_) std::fputs("*\n", out_);
    }
    FILE *out_;
    LexiconSet &lexicons_;
    const Settings &s_;
    bool terse_ = false;
    bool personalTried_ = false;
};

void PipeSession::add_word(const std::string &arg, bool lower, bool sessionOnly) {
    std::string word;
    if (s_.encoding == Encoding::Latin1) {
        word = arg;
    } else if (utf8_to_latin1(arg, word) != std::string_view::npos) {
        word = arg; // not UTF-8: an editor talking ISO 8859-1 sends its bytes
    } else if (word.find(kForeign) != std::string::npos) {
        return;
    }
    if (lower) word = latin1_lower(word);
    if (word.empty()) return;
    if (!sessionOnly) {
        if (lexicons_.personal() == nullptr && !personalTried_) {
            personalTried_ = true;
            std::string err;
            lexicons_.open_personal(lexicons_.personal_path(), true, err);
        }
        if (lexicons_.personal() != nullptr &&
            LX_Lexicon_AddWord(lexicons_.personal(), word.c_str(), LX_ACT_IGNORE, nullptr) == 0)
            return;
        // Can't be stored: accept it for the session at least.
    }
    LX_Lexicon_AddWord(lexicons_.session(), word.c_str(), LX_ACT_IGNORE, nullptr);
}

// Walks every word of the line: LX_CheckText finds the next word to
// report, LX_NextTextWord steps over the correct ones before it. The text
// gets a one-letter word in front, so that LX_NextTextWord from 0 gives
// the line's first word.
void PipeSession::check_line(const std::string &latin1, size_t base, Encoding enc) {
    constexpr int32_t kLead = 2;
    const std::string text = "a " + latin1;
    const char *t = text.c_str();
    const uint32_t options = s_.options;
    LX_Lexicon *const *list = lexicons_.list();
    int32_t w = LX_NextTextWord(t, 0, options);
    while (w >= 0) {
        char word[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
        int32_t f = w;
        const int32_t r = LX_CheckText(t, list, options, &f, word, sizeof word, repl, sizeof repl);
        const bool none = r == LX_RES_NONE_LEFT || f < w;
        // The correct words before the one reported.
        while (w >= 0) {
            const int32_t next = LX_NextTextWord(t, w, options);
            if (!none && (next < 0 || next > f)) break;
            answer_correct();
            w = next;
        }
        if (none || w < 0) break;
        const size_t len = std::strlen(word);
        const bool reportable = (r & ~LX_RES_REPEATED) != 0 && !touches_foreign(text, static_cast<size_t>(f), len);
        if (!reportable) {
            answer_correct();
        } else {
            const std::string shown = from_latin1(word, enc);
            const size_t offset = base + static_cast<size_t>(f - kLead);
            const auto sugg = suggestions_for(r, word, repl, list, s_);
            std::string answer;
            if (sugg.empty()) {
                answer = "# " + shown + " " + std::to_string(offset) + "\n";
            } else {
                answer = "& " + shown + " " + std::to_string(sugg.size()) + " " + std::to_string(offset) + ":";
                for (size_t i = 0; i < sugg.size(); ++i) answer += (i ? ", " : " ") + from_latin1(sugg[i].word, enc);
                answer += "\n";
            }
            std::fputs(answer.c_str(), out_);
        }
        w = LX_NextTextWord(t, f, options);
    }
    std::fputs("\n", out_);
}

void PipeSession::line(std::string input) {
    if (!input.empty() && input.back() == '\r') input.pop_back();
    // Empty lines, and the "$$" commands of other spell checkers' extended
    // protocols, get no answer.
    if (input.empty() || input.rfind("$$", 0) == 0) return;
    const std::string rest = input.substr(1);
    switch (input[0]) {
    case '*': add_word(rest, false, false); return;
    case '&': add_word(rest, true, false); return;
    case '@': add_word(rest, false, true); return;
    case '#': return; // every addition is saved as it is made
    case '!': terse_ = true; return;
    case '%': terse_ = false; return;
    case '+':
    case '-':
    case '~': return;
    default: break;
    }
    const size_t base = input[0] == '^' ? 1 : 0;
    const std::string text = input.substr(base);
    std::string latin1;
    Encoding enc = s_.encoding;
    if (enc == Encoding::Utf8 && utf8_to_latin1(text, latin1) != std::string_view::npos) {
        enc = Encoding::Latin1;
        latin1.clear();
    }
    if (enc == Encoding::Latin1) latin1 = text;
    for (char &c : latin1) {
        if (c == '\0') c = ' ';
    }
    check_line(latin1, base, enc);
}

} // namespace

std::string pipe_banner() {
    return "@(#) International Ispell Version 3.1.20 (but really lxspell " LXSPELL_VERSION ")";
}

int run_pipe(FILE *in, FILE *out, LexiconSet &lexicons, const Settings &s) {
    std::fprintf(out, "%s\n", pipe_banner().c_str());
    std::fflush(out);
    PipeSession session(out, lexicons, s);
    std::string line;
    int c;
    for (;;) {
        line.clear();
        while ((c = std::getc(in)) != EOF && c != '\n') line.push_back(static_cast<char>(c));
        if (c == EOF && line.empty()) break;
        session.line(line);
        std::fflush(out);
        if (c == EOF) break;
    }
    return 0;
}

} // namespace lxspell

// lxspell.cpp - the command line: options, commands, exit status.
//
// Exit status: 0 nothing found, 1 something found (a misspelling, a word
// not in the lexicon), 2 an error (bad option, unreadable file or lexicon,
// invalid UTF-8, a failed compilation or change).
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <lxengine.h>

#include "check.h"
#include "compile.h"
#include "lexicons.h"
#include "pipe.h"
#include "report.h"
#include "text.h"

using namespace lxspell;

namespace {

constexpr int kClean = 0, kFound = 1, kError = 2;

const char kHelp[] =
    "Usage: lxspell [OPTION]... [COMMAND] [ARG]...\n"
    "Check the spelling of English text.\n"
    "\n"
    "Commands:\n"
    "  check [FILE]...        report each finding as FILE:LINE:COLUMN: WORD: what (suggestions);\n"
    "                         standard input when no FILE is given or FILE is '-' (the default command)\n"
    "  list [FILE]...         print the misspelled words only, one a line\n"
    "  suggest WORD...        print ranked suggestions with the engine's scores (0-100)\n"
    "  compile WORDLIST OUTPUT\n"
    "                         compile a word list (one word a line, LF or CR LF, UTF-8 or\n"
    "                         ISO 8859-1) into a compressed lexicon; OUTPUT is replaced only\n"
    "                         when the compilation succeeds\n"
    "  add WORD...            add words to the personal lexicon; with --exclude they count as\n"
    "                         misspellings, with --auto-change or --change give WORD=REPLACEMENT\n"
    "  remove WORD...         remove words from the personal lexicon\n"
    "  -a                     pipe mode for editors (the ispell -a protocol); the flags\n"
    "                         editors pass to other spell checkers are accepted and ignored\n"
    "  -l                     list the misspelled words of standard input, exit status 0\n"
    "  -v, -vv                print the pipe mode's identification line\n"
    "\n"
    "Lexicons:\n"
    "  -d, --lexicon FILE     a compressed lexicon to use instead of the bundled one; may be given\n"
    "                         more than once (searched in order). A bare NAME means NAME.lxc beside\n"
    "                         the bundled lexicon; English names (en_US, english, american, ...)\n"
    "                         mean the bundled one. Default: $LXSPELL_LEXICON, else en_US.lxc beside\n"
    "                         the program, else ../share/lxspell/en_US.lxc from the program's folder\n"
    "  -p, --personal FILE    the personal lexicon, consulted first (default:\n"
    "                         $XDG_DATA_HOME/lxspell/personal.lex or ~/.local/share/lxspell/personal.lex;\n"
    "                         created when the first word is added)\n"
    "      --budget BYTES     memory for lexicon segments (default 262144; 0: no limit; k and M\n"
    "                         suffixes allowed)\n"
    "\n"
    "Checking (each switch has a --no- form that turns it off):\n"
    "      --markup           the text is HTML or XML: skip tags, decode entities\n"
    "      --ignore-caps      pass words written in capitals\n"
    "      --ignore-digits    pass words that hold a digit\n"
    "      --ignore-addresses pass e-mail addresses, URLs and file names (default)\n"
    "      --repeated         report a word repeated right after itself, same case (default)\n"
    "      --split-hyphen     judge hyphenated words piece by piece (default)\n"
    "      --depth N          how far to search for suggestions, 0 to 100 (default 30)\n"
    "      --rank ORDER       the order of suggestions: lxspell (default: closest spelling first,\n"
    "                         by a weighted edit distance, then the engine's score) or engine\n"
    "                         (the engine's own order)\n"
    "      --options BITS     the engine's option bits instead of the default set (decimal or 0x..)\n"
    "      --encoding ENC     utf8 (default) or latin1 (ISO 8859-1): the text's encoding\n"
    "\n"
    "The default option set, for English prose, is the engine's session default 755344\n"
    "(0xB8690: check spelling, case sensitive, report capitalisation, split at hyphens,\n"
    "strip possessives, pass words without letters, accents on capitals significant,\n"
    "typographic suggestions) with repeated words reported and addresses passed:\n"
    "1017744 (0xF8790). Suggestion depth 30.\n"
    "\n"
    "Output:\n"
    "      --json             one JSON object per finding and line: file, line, column, offset\n"
    "                         (bytes), word, kind, kinds, suggestions with scores\n"
    "      --color[=WHEN]     colour the output: auto (default; not when NO_COLOR is set),\n"
    "                         always, never\n"
    "  -h, --help             show this help\n"
    "      --version          show the versions of lxspell and of the engine\n"
    "\n"
    "Exit status: 0 nothing found, 1 something found, 2 an error.\n";

struct Cli {
    std::string command;
    std::vector<std::string> args;
    std::vector<std::string> lexicons;
    std::string personal;
    bool personalGiven = false;
    Settings s;
    Format format = Format::Text;
    ColorMode color = ColorMode::Auto;
    int16_t action = LX_ACT_IGNORE;
};

int fail(const std::string &msg) {
    std::fprintf(stderr, "lxspell: %s\n", msg.c_str());
    return kError;
}

bool parse_int(const std::string &text, long long min, long long max, long long &out, bool sizes = false) {
    if (text.empty()) return false;
    char *end = nullptr;
    errno = 0;
    long long v = std::strtoll(text.c_str(), &end, 0);
    if (errno != 0 || end == text.c_str()) return false;
    if (sizes && (*end == 'k' || *end == 'K')) v *= 1024, ++end;
    else if (sizes && (*end == 'm' || *end == 'M')) v *= 1024 * 1024, ++end;
    if (*end != '\0' || v < min || v > max) return false;
    out = v;
    return true;
}

bool parse_encoding(std::string name, Encoding &enc) {
    for (char &c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (name == "utf8" || name == "utf-8") {
        enc = Encoding::Utf8;
        return true;
    }
    if (name == "latin1" || name == "latin-1" || name == "iso-8859-1" || name == "iso8859-1" || name == "l1") {
        enc = Encoding::Latin1;
        return true;
    }
    return false;
}

// The switches that set or, as --no-NAME, clear one option bit.
uint32_t option_bit(const std::string &name) {
    static const struct {
        const char *name;
        uint32_t bit;
    } table[] = {
        {"markup", LX_OPT_MARKUP},
        {"ignore-caps", LX_OPT_IGNORE_ALL_CAPITALS},
        {"ignore-digits", LX_OPT_IGNORE_WITH_DIGITS},
        {"ignore-addresses", LX_OPT_IGNORE_ADDRESSES},
        {"repeated", LX_OPT_REPORT_REPEATED},
        {"split-hyphen", LX_OPT_SPLIT_AT_HYPHEN},
    };
    const std::string bare = name.rfind("--no-", 0) == 0 ? name.substr(5) : name.rfind("--", 0) == 0 ? name.substr(2) : "";
    for (const auto &entry : table) {
        if (bare == entry.name) return entry.bit;
    }
    return 0;
}

bool is_command(const std::string &word) {
    return word == "check" || word == "list" || word == "suggest" || word == "compile" || word == "add" ||
           word == "remove";
}

// Parses argv into cli. Returns -1 to go on, or an exit status. In pipe
// mode (-a anywhere) the flags that editors pass to other spell checkers
// are taken and ignored.
int parse(int argc, char **argv, Cli &cli) {
    // -a (pipe mode) and -l (list the misspelled words of standard input)
    // are how editors call a spell checker.
    bool pipeMode = false;
    for (int i = 1; i < argc && !pipeMode; ++i) {
        if (std::strcmp(argv[i], "-a") == 0 || std::strcmp(argv[i], "-l") == 0) cli.command = argv[i], pipeMode = true;
    }
    bool positionalOnly = false;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (positionalOnly || arg == "-" || arg.empty() || arg[0] != '-') {
            // A command comes first: `lxspell FILE list` checks two files.
            if (cli.command.empty() && cli.args.empty() && !positionalOnly && is_command(arg)) cli.command = arg;
            else cli.args.push_back(arg);
            continue;
        }
        if (arg == "--") {
            positionalOnly = true;
            continue;
        }
        // The value of an option: "--name=value", "-dvalue" or the next argument.
        std::string name = arg, value;
        bool hasValue = false;
        if (arg.rfind("--", 0) == 0) {
            const size_t eq = arg.find('=');
            if (eq != std::string::npos) name = arg.substr(0, eq), value = arg.substr(eq + 1), hasValue = true;
        } else if (arg.size() > 2 && std::strchr("dpTwWif", arg[1]) != nullptr) {
            name = arg.substr(0, 2), value = arg.substr(2), hasValue = true;
        }
        auto need = [&](std::string &out) {
            if (hasValue) {
                out = value;
                return true;
            }
            if (i + 1 >= argc) return false;
            out = argv[++i];
            return true;
        };
        std::string v;
        long long n = 0;
        if (name == "-h" || name == "--help") {
            std::fputs(kHelp, stdout);
            return kClean;
        } else if (name == "--version") {
            std::printf("lxspell %s\nlxengine %s\n", LXSPELL_VERSION, LX_Version);
            return kClean;
        } else if (name == "-v" || name == "-vv" || name == "-V") {
            std::printf("%s\n", pipe_banner().c_str());
            return kClean;
        } else if (name == "-a" || name == "-l") {
        } else if (name == "-d" || name == "--lexicon") {
            if (!need(v)) return fail(name + " needs a lexicon");
            cli.lexicons.push_back(v);
        } else if (name == "-p" || name == "--personal") {
            if (!need(v)) return fail(name + " needs a file");
            cli.personal = v, cli.personalGiven = true;
        } else if (pipeMode && name == "-H") {
            cli.s.options |= LX_OPT_MARKUP;
        } else if (const uint32_t bit = option_bit(name); bit != 0) {
            if (name.rfind("--no-", 0) == 0) cli.s.options &= ~bit;
            else cli.s.options |= bit;
        } else if (name == "--depth") {
            if (!need(v) || !parse_int(v, 0, 100, n)) return fail("--depth needs a number from 0 to 100");
            cli.s.depth = static_cast<int32_t>(n);
        } else if (name == "--budget") {
            if (!need(v) || !parse_int(v, 0, INT32_MAX, n, true)) return fail("--budget needs a number of bytes");
            cli.s.budget = static_cast<int32_t>(n);
        } else if (name == "--options") {
            if (!need(v) || !parse_int(v, 0, UINT32_MAX, n)) return fail("--options needs a number");
            cli.s.options = static_cast<uint32_t>(n);
        } else if (name == "--encoding" || (pipeMode && name == "-i")) {
            if (!need(v) || !parse_encoding(v, cli.s.encoding))
                return fail(name + " needs utf8 or latin1");
            cli.s.encodingChosen = true;
        } else if (name == "--rank") {
            if (!need(v) || (v != "lxspell" && v != "engine")) return fail("--rank takes lxspell or engine");
            cli.s.rank = v == "engine" ? Rank::Engine : Rank::Own;
        } else if (name == "--json") {
            cli.format = Format::Json;
        } else if (name == "--color" || name == "--colour") {
            if (!hasValue || value == "auto") cli.color = ColorMode::Auto;
            else if (value == "always") cli.color = ColorMode::Always;
            else if (value == "never") cli.color = ColorMode::Never;
            else return fail("--color takes auto, always or never");
        } else if (name == "--exclude") {
            cli.action = LX_ACT_EXCLUDE;
        } else if (name == "--auto-change") {
            cli.action = LX_ACT_AUTO_CHANGE_CASE;
        } else if (name == "--change") {
            cli.action = LX_ACT_COND_CHANGE_CASE;
        } else if (pipeMode && (name == "-T" || name == "-w" || name == "-W" || name == "-f")) {
            if (!need(v)) return fail(name + " needs a value");
        } else if (pipeMode) {
            // Other flags of other spell checkers (-m, -B, -C, -S, -t, -n,
            // --sug-mode=..., ...) have no meaning here.
        } else {
            return fail("unknown option '" + arg + "'; see lxspell --help");
        }
    }
    if (cli.command.empty()) cli.command = "check";
    if (cli.format == Format::Text && (cli.command == "list" || cli.command == "-l")) cli.format = Format::List;
    return -1;
}

bool open_lexicons(const Cli &cli, LexiconSet &lexicons, bool createPersonal) {
    std::string err;
    if (!lexicons.open_main(cli.lexicons, cli.s.budget, err)) {
        fail(err);
        return false;
    }
    const std::string personal = cli.personalGiven ? cli.personal : default_personal_path();
    if (!lexicons.open_personal(personal, createPersonal, err)) {
        fail(err);
        return false;
    }
    return true;
}

int cmd_check(const Cli &cli) {
    LexiconSet lexicons;
    if (!open_lexicons(cli, lexicons, false)) return kError;
    Reporter reporter(stdout, cli.format, cli.format == Format::Text && use_color(cli.color, stdout));
    std::vector<std::string> files = cli.args;
    if (files.empty()) files.push_back("-");
    bool error = false;
    for (const std::string &file : files) {
        const bool isStdin = file == "-";
        FILE *fp = isStdin ? stdin : std::fopen(file.c_str(), "rb");
        if (fp == nullptr) {
            fail(file + ": " + std::strerror(errno));
            error = true;
            continue;
        }
        std::string err;
        if (!check_stream(fp, isStdin ? "<stdin>" : file, lexicons.list(), cli.s, reporter, err)) {
            std::fflush(stdout);
            fail(err);
            error = true;
        }
        if (!isStdin) std::fclose(fp);
    }
    if (std::fflush(stdout) != 0) return fail(std::string("standard output: ") + std::strerror(errno));
    return error ? kError : reporter.count() > 0 ? kFound : kClean;
}

int cmd_suggest(const Cli &cli) {
    if (cli.args.empty()) return fail("suggest needs at least one word");
    LexiconSet lexicons;
    if (!open_lexicons(cli, lexicons, false)) return kError;
    const bool json = cli.format == Format::Json;
    int status = kClean;
    for (const std::string &arg : cli.args) {
        std::string word;
        if (!word_to_latin1(arg, cli.s.encoding, word)) {
            fail(arg + ": the word holds a character outside ISO 8859-1 or isn't valid UTF-8");
            status = kError;
            continue;
        }
        char out[LX_MAX_WORD_SZ], repl[LX_MAX_WORD_SZ];
        int32_t cursor = 0;
        const int32_t r = LX_CheckText(word.c_str(), lexicons.list(), cli.s.options | LX_OPT_SINGLE_WORD, &cursor,
                                       out, sizeof out, repl, sizeof repl);
        const bool correct = r == LX_RES_NONE_LEFT;
        std::vector<RawSuggestion> sugg;
        if (!correct) {
            sugg = suggestions_for(r, word.c_str(), repl, lexicons.list(), cli.s);
            if (status == kClean) status = kFound;
        }
        const std::vector<const char *> names = correct ? std::vector<const char *>{"correct"} : result_names(r);
        std::string line;
        if (json) {
            line = "{\"word\":" + json_quote(arg) + ",\"correct\":" + (correct ? "true" : "false") +
                   ",\"kind\":" + json_quote(names[0]) + ",\"suggestions\":[";
            for (size_t i = 0; i < sugg.size(); ++i)
                line += std::string(i ? "," : "") + "{\"word\":" + json_quote(to_utf8(sugg[i].word)) +
                        ",\"score\":" + std::to_string(sugg[i].score) + "}";
            line += "]}\n";
        } else {
            line = arg + ": ";
            for (size_t i = 0; i < names.size(); ++i) line += std::string(i ? ", " : "") + names[i];
            if (!sugg.empty()) {
                line += " (";
                for (size_t i = 0; i < sugg.size(); ++i)
                    line += (i ? ", " : "") + to_utf8(sugg[i].word) + " " + std::to_string(sugg[i].score);
                line += ")";
            }
            line += "\n";
        }
        std::fputs(line.c_str(), stdout);
    }
    return status;
}

int cmd_compile(const Cli &cli) {
    if (cli.args.size() != 2) return fail("compile needs WORDLIST and OUTPUT");
    std::string err;
    if (!compile_lexicon(cli.args[0], cli.args[1], cli.s.encoding, cli.s.encodingChosen, err)) return fail(err);
    return kClean;
}

int cmd_add_remove(const Cli &cli, bool add) {
    if (cli.args.empty()) return fail(cli.command + " needs at least one word");
    LexiconSet lexicons;
    std::string err;
    const std::string path = cli.personalGiven ? cli.personal : default_personal_path();
    if (!lexicons.open_personal(path, add, err)) return fail(err);
    if (lexicons.personal() == nullptr) return fail(path + ": no such personal lexicon");
    const bool change = cli.action == LX_ACT_AUTO_CHANGE_CASE || cli.action == LX_ACT_COND_CHANGE_CASE;
    int status = kClean;
    for (const std::string &arg : cli.args) {
        std::string text = arg, other;
        if (add && change) {
            const size_t eq = arg.find('=');
            if (eq == std::string::npos || eq == 0 || eq + 1 == arg.size()) {
                fail(arg + ": give WORD=REPLACEMENT");
                status = kError;
                continue;
            }
            text = arg.substr(0, eq), other = arg.substr(eq + 1);
        }
        std::string word, otherWord;
        if (!word_to_latin1(text, cli.s.encoding, word) || !word_to_latin1(other, cli.s.encoding, otherWord)) {
            fail(arg + ": the word holds a character outside ISO 8859-1 or isn't valid UTF-8");
            status = kError;
            continue;
        }
        const int32_t rc = add ? LX_Lexicon_AddWord(lexicons.personal(), word.c_str(), cli.action,
                                                    change ? otherWord.c_str() : nullptr)
                               : LX_Lexicon_DelWord(lexicons.personal(), word.c_str());
        if (rc == LX_ERR_NOT_FOUND && !add) {
            std::fprintf(stderr, "lxspell: %s: not in %s\n", arg.c_str(), path.c_str());
            if (status == kClean) status = kFound;
        } else if (rc < 0) {
            fail(path + ": " + arg + ": " + engine_message(rc));
            status = kError;
        }
    }
    return status;
}

int cmd_pipe(const Cli &cli) {
    LexiconSet lexicons;
    std::string err;
    if (!open_lexicons(cli, lexicons, false)) return kError;
    if (!lexicons.open_session(err)) return fail(err);
    return run_pipe(stdin, stdout, lexicons, cli.s);
}

} // namespace

int main(int argc, char **argv) {
    Cli cli;
    const int parsed = parse(argc, argv, cli);
    if (parsed >= 0) return parsed;
    if (cli.command == "-a") return cmd_pipe(cli);
    if (cli.command == "check" || cli.command == "list") return cmd_check(cli);
    if (cli.command == "-l") {
        // As editors expect of -l: findings aren't a failure, and text that
        // isn't UTF-8 is ISO 8859-1.
        cli.s.latin1Fallback = !cli.s.encodingChosen;
        const int status = cmd_check(cli);
        return status == kFound ? kClean : status;
    }
    if (cli.command == "suggest") return cmd_suggest(cli);
    if (cli.command == "compile") return cmd_compile(cli);
    if (cli.command == "add") return cmd_add_remove(cli, true);
    if (cli.command == "remove") return cmd_add_remove(cli, false);
    return fail("unknown command '" + cli.command + "'");
}

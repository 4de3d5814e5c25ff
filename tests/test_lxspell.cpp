// The lxspell tool as a user meets it: command lines with their expected
// output and exit status, error paths included, the pipe protocol as a
// conversation, big inputs across the tool's read blocks, and two
// processes adding words to one personal lexicon at once.
//
// Every run gets HOME and XDG_DATA_HOME in a private folder and no
// LXSPELL_LEXICON, so the tool finds the bundled lexicon beside itself.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstring>
#include <string>
#include <vector>

#include "filetest.h"
#include "text.h"

#ifndef LXSPELL_EXE
#error "LXSPELL_EXE must name the lxspell executable"
#endif

extern char **environ;

namespace {

struct Outcome { int status = -1; std::string out, err; };

// Replaces every "{dir}" in text by dir.
std::string expand(std::string text, const std::string &dir) {
    for (size_t at; (at = text.find("{dir}")) != std::string::npos;) text.replace(at, 5, dir);
    return text;
}

class Lxspell {
public:
    Lxspell() { std::filesystem::create_directories(dir / "home"); }

    // Runs lxspell with args ("{dir}" stands for the test's folder), input
    // on standard input and extra environment entries.
    Outcome run(const std::vector<std::string> &args, const std::string &input = "",
                const std::vector<std::string> &extraEnv = {}, const std::string &exe = LXSPELL_EXE) const {
        // Files of this process's own, so that runs from several at once
        // don't meet.
        const std::string tag = std::to_string(getpid());
        const std::string in = dir / ("stdin." + tag), out = dir / ("stdout." + tag), err = dir / ("stderr." + tag);
        write_bytes(in, input);
        std::vector<std::string> argStore{exe};
        for (const std::string &a : args) argStore.push_back(expand(a, dir.path));
        std::vector<std::string> envStore{"HOME=" + (dir / "home"), "XDG_DATA_HOME=" + (dir / "data"),
                                          "PATH=/usr/bin:/bin"};
        for (const std::string &e : extraEnv) envStore.push_back(expand(e, dir.path));
        std::vector<char *> argv, envp;
        for (std::string &a : argStore) argv.push_back(a.data());
        for (std::string &e : envStore) envp.push_back(e.data());
        argv.push_back(nullptr);
        envp.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        Outcome r;
        pid_t pid = 0;
        if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data()) == 0) {
            int ws = 0;
            waitpid(pid, &ws, 0);
            r.status = WIFEXITED(ws) ? WEXITSTATUS(ws) : 128 + WTERMSIG(ws);
        }
        posix_spawn_file_actions_destroy(&actions);
        r.out = read_bytes(out);
        r.err = read_bytes(err);
        for (const std::string &f : {in, out, err}) unlink(f.c_str());
        return r;
    }

    TempDir dir;
};

struct Case {
    const char *name;
    std::vector<std::string> args;
    std::string input;
    int status;
    std::string out; // exact
    std::string err; // a part of standard error; "" means it must be empty
    std::vector<std::string> env = {};
};

// Files the cases below use, made in the test's folder.
void make_files(const TempDir &dir) {
    write_bytes(dir / "clean.txt", "The cat sat on the mat.\n");
    write_bytes(dir / "text.txt", "I did recieve\nthe the letter, caf\xC3\xA9 na\xC3\xAFve \xC5\x81\xC3\xB3\x64\xC5\xBAx wrods.\n");
    write_bytes(dir / "crlf.txt", "One wrod\r\nand anothr\r\n");
    write_bytes(dir / "bad-utf8.txt", "good\nbad \xFF here\n");
    write_bytes(dir / "latin1.txt", "caf\xE9 recieve\n");
    write_bytes(dir / "markup.html", "<p class=\"wrods\">Caf&eacute; recieve</p>\n");
    write_bytes(dir / "junk.lxc", "this is not a lexicon\n");
    write_bytes(dir / "words.txt", "apple\r\nbanana\r\n# a comment\r\n\r\ncherry\ncaf\xC3\xA9\n");
    write_bytes(dir / "words-latin1.txt", "apple\nbanana\ncaf\xE9\n");
    write_bytes(dir / "words-bad.txt", "apple\nbanana\nbad\x01word\ncherry\n");
    write_bytes(dir / "words-foreign.txt", "apple\n\xC5\x81\xC3\xB3\x64\xC5\xBA\n");
    write_bytes(dir / "words-engine-bad.txt", "apple\nbanana\ncherry\n\x85x\n");
    write_bytes(dir / "words-long.txt", "apple\n" + std::string(81, 'x') + "\n");
    write_bytes(dir / "existing.lxc", "an existing lexicon that a failed compile must leave alone\n");
}

const Case kCases[] = {
    // Checking.
    {"clean text", {"check", "{dir}/clean.txt"}, "", 0, "", ""},
    {"check is the default command", {"{dir}/clean.txt"}, "", 0, "", ""},
    {"findings with lines, columns in characters, repeated word, foreign word passed over",
     {"check", "{dir}/text.txt"},
     "",
     1,
     "{dir}/text.txt:1:7: recieve: misspelled (receive, relieve)\n"
     "{dir}/text.txt:2:5: the: repeated word\n"
     "{dir}/text.txt:2:22: na\xC3\xAFve: misspelled (naive, nave)\n"
     "{dir}/text.txt:2:34: wrods: misspelled (words, woods, rods, prods)\n",
     ""},
    {"standard input, CR LF line ends", {"check"}, "One wrod\r\nand anothr\r\n", 1,
     "<stdin>:1:5: wrod: misspelled (word, wood, rod, prod, trod)\n"
     "<stdin>:2:5: anothr: misspelled (another)\n",
     ""},
    {"'-' is standard input", {"list", "-"}, "a wrod\n", 1, "wrod\n", ""},
    {"json", {"--json", "check", "{dir}/text.txt"},
     "",
     1,
     "{\"file\":\"{dir}/text.txt\",\"line\":1,\"column\":7,\"offset\":6,\"word\":\"recieve\",\"kind\":\"misspelled\","
     "\"kinds\":[\"misspelled\"],\"suggestions\":[{\"word\":\"receive\",\"score\":94},{\"word\":\"relieve\",\"score\":85}]}\n"
     "{\"file\":\"{dir}/text.txt\",\"line\":2,\"column\":5,\"offset\":18,\"word\":\"the\",\"kind\":\"repeated word\","
     "\"kinds\":[\"repeated word\"],\"suggestions\":[]}\n"
     "{\"file\":\"{dir}/text.txt\",\"line\":2,\"column\":22,\"offset\":36,\"word\":\"na\xC3\xAFve\",\"kind\":\"misspelled\","
     "\"kinds\":[\"misspelled\"],\"suggestions\":[{\"word\":\"naive\",\"score\":99},{\"word\":\"nave\",\"score\":90}]}\n"
     "{\"file\":\"{dir}/text.txt\",\"line\":2,\"column\":34,\"offset\":52,\"word\":\"wrods\",\"kind\":\"misspelled\","
     "\"kinds\":[\"misspelled\"],\"suggestions\":[{\"word\":\"words\",\"score\":84},{\"word\":\"woods\",\"score\":87},"
     "{\"word\":\"rods\",\"score\":90},{\"word\":\"prods\",\"score\":80}]}\n",
     ""},
    {"list prints misspellings only", {"list", "{dir}/text.txt", "{dir}/clean.txt"}, "", 1,
     "recieve\nna\xC3\xAFve\nwrods\n", ""},
    {"--no-repeated", {"--no-repeated", "list", "{dir}/text.txt"}, "", 1, "recieve\nna\xC3\xAFve\nwrods\n", ""},
    {"colour always", {"--color=always", "check"}, "wrods\n", 1,
     "\033[1m<stdin>:1:1:\033[0m wrods: \033[1;31mmisspelled\033[0m (\033[32mwords\033[0m, \033[32mwoods\033[0m, "
     "\033[32mrods\033[0m, \033[32mprods\033[0m)\n",
     ""},
    {"colour auto is off on a file", {"--color", "check"}, "wrods\n", 1,
     "<stdin>:1:1: wrods: misspelled (words, woods, rods, prods)\n", ""},
    {"--color=always beats NO_COLOR", {"--color=always", "list"}, "wrods\n", 1, "wrods\n", "", {"NO_COLOR=1"}},
    {"--color=never", {"--color=never", "check"}, "wrods\n", 1,
     "<stdin>:1:1: wrods: misspelled (words, woods, rods, prods)\n", ""},
    {"ISO 8859-1 input, reported in UTF-8", {"--encoding", "latin1", "check", "{dir}/latin1.txt"}, "", 1,
     "{dir}/latin1.txt:1:6: recieve: misspelled (receive, relieve)\n", ""},
    {"markup", {"--markup", "check", "{dir}/markup.html"}, "", 1,
     "{dir}/markup.html:1:30: recieve: misspelled (receive, relieve)\n", ""},
    {"ignore capitals and digits", {"--ignore-caps", "--ignore-digits", "list"}, "NASAX abc1d wrods\n", 1, "wrods\n", ""},
    {"addresses pass by default", {"list"}, "Write to eleanor.hart@example.org or see http://example.org/x\n", 0, "",
     ""},
    {"capitalisation", {"check"}, "we met in paris\n", 1, "<stdin>:1:11: paris: capitalisation (Paris)\n", ""},
    {"words without letters pass", {"check"}, "1984 -- 3.14\n", 0, "", ""},
    {"a NUL in the text is a blank", {"list"}, std::string("good\0wrods\n", 11), 1, "wrods\n", ""},

    // Suggestions.
    {"suggest", {"suggest", "recieve", "the", "Teh"}, "", 1,
     "recieve: misspelled (receive 94, relieve 85)\nthe: correct\n"
     "Teh: misspelled (The 71, Th 83, TeX 66, Ted 66, Tet 66, Tex 66, Eh 83, Meh 66)\n",
     ""},
    {"suggest json", {"--json", "suggest", "wrods"}, "", 1,
     "{\"word\":\"wrods\",\"correct\":false,\"kind\":\"misspelled\",\"suggestions\":[{\"word\":\"words\",\"score\":84},"
     "{\"word\":\"woods\",\"score\":87},{\"word\":\"rods\",\"score\":90},{\"word\":\"prods\",\"score\":80}]}\n",
     ""},
    // The engine's own order, untouched.
    {"suggest in the engine's order", {"--rank=engine", "suggest", "Teh"}, "", 1,
     "Teh: misspelled (Eh 83, Th 83, The 71, Meh 66, TeX 66, Ted 66, Tet 66, Tex 66)\n", ""},
    {"suggest json in the engine's order", {"--json", "--rank", "engine", "suggest", "wrods"}, "", 1,
     "{\"word\":\"wrods\",\"correct\":false,\"kind\":\"misspelled\",\"suggestions\":[{\"word\":\"rods\",\"score\":90},"
     "{\"word\":\"woods\",\"score\":87},{\"word\":\"words\",\"score\":84},{\"word\":\"prods\",\"score\":80}]}\n",
     ""},
    {"check in the engine's order", {"--rank=engine", "check"}, "wrods\n", 1,
     "<stdin>:1:1: wrods: misspelled (rods, woods, words, prods)\n", ""},
    {"lxspell's order by name", {"--rank=lxspell", "check"}, "wrods\n", 1,
     "<stdin>:1:1: wrods: misspelled (words, woods, rods, prods)\n", ""},
    {"an unknown order", {"--rank=aspell", "check"}, "wrods\n", 2, "", "lxspell: --rank takes lxspell or engine\n"},
    {"suggest without a word", {"suggest"}, "", 2, "", "lxspell: suggest needs at least one word\n"},
    {"suggest a word outside ISO 8859-1", {"suggest", "\xC5\x81\xC3\xB3\x64\xC5\xBA"}, "", 2, "",
     "outside ISO 8859-1"},

    // Errors.
    {"missing file", {"check", "{dir}/nosuch.txt"}, "", 2, "",
     "lxspell: {dir}/nosuch.txt: No such file or directory\n"},
    {"a missing file doesn't stop the others", {"list", "{dir}/nosuch.txt", "{dir}/text.txt"}, "", 2,
     "recieve\nna\xC3\xAFve\nwrods\n", "lxspell: {dir}/nosuch.txt: No such file or directory\n"},
    {"a folder as the text", {"check", "{dir}"}, "", 2, "", "lxspell: {dir}: Is a directory\n"},
    {"lexicon that isn't one", {"-d", "{dir}/junk.lxc", "check", "{dir}/clean.txt"}, "", 2, "", "{dir}/junk.lxc"},
    {"missing lexicon", {"-d", "{dir}/nosuch.lxc", "check"}, "", 2, "", "{dir}/nosuch.lxc"},
    {"unknown lexicon name", {"-d", "klingon", "check"}, "", 2, "", "lxspell: klingon: no such lexicon\n"},
    {"lexicon from the environment", {"check", "{dir}/clean.txt"}, "", 2, "", "lxspell: {dir}/junk.lxc",
     {"LXSPELL_LEXICON={dir}/junk.lxc"}},
    {"-d before the environment", {"-d", "en_US", "list"}, "wrods\n", 1, "wrods\n", "",
     {"LXSPELL_LEXICON={dir}/junk.lxc"}},
    {"bad option", {"--frobnicate", "check"}, "", 2, "", "lxspell: unknown option '--frobnicate'; see lxspell --help\n"},
    {"bad depth", {"--depth", "101", "check"}, "", 2, "", "lxspell: --depth needs a number from 0 to 100\n"},
    {"option without its value", {"check", "-d"}, "", 2, "", "lxspell: -d needs a lexicon\n"},
    {"bad colour", {"--color=sometimes"}, "", 2, "", "lxspell: --color takes auto, always or never\n"},
    {"bad encoding", {"--encoding", "ebcdic"}, "", 2, "", "lxspell: --encoding needs utf8 or latin1\n"},
    {"invalid UTF-8 names file and line", {"check", "{dir}/bad-utf8.txt"}, "", 2, "",
     "lxspell: {dir}/bad-utf8.txt:2: invalid UTF-8 (use --encoding latin1 for ISO 8859-1 text)\n"},
    {"invalid UTF-8 checked as bytes with --encoding latin1", {"--encoding", "latin1", "list", "{dir}/bad-utf8.txt"},
     "", 1, "\xFF\n", ""},

    // Versions.
    {"version", {"--version"}, "", 0, "lxspell " LXSPELL_VERSION "\nlxengine $Revision: 1.2 $\n", ""},
    {"identification for editors", {"-vv"}, "", 0,
     "@(#) International Ispell Version 3.1.20 (but really lxspell " LXSPELL_VERSION ")\n", ""},
    {"-l lists and succeeds, ISO 8859-1 accepted", {"-l", "-B", "-d", "english"}, "caf\xE9 wrods\n", 0, "wrods\n",
     ""},
};

} // namespace

TEST(Lxspell, CommandLines) {
    Lxspell t;
    make_files(t.dir);
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.name);
        const Outcome r = t.run(c.args, c.input, c.env);
        EXPECT_EQ(c.status, r.status);
        EXPECT_EQ(expand(c.out, t.dir.path), r.out);
        if (c.err.empty()) EXPECT_EQ("", r.err);
        else EXPECT_NE(std::string::npos, r.err.find(expand(c.err, t.dir.path))) << r.err;
        if (!r.err.empty()) {
            EXPECT_EQ(1, std::count(r.err.begin(), r.err.end(), '\n')) << r.err;
        }
    }
}

TEST(Lxspell, HelpNamesEveryOptionAndTheDefaults) {
    Lxspell t;
    const Outcome r = t.run({"--help"});
    EXPECT_EQ(0, r.status);
    for (const char *word : {"check", "list", "suggest", "compile", "add", "remove", "-a", "--lexicon", "--personal",
                             "--markup", "--ignore-caps", "--ignore-digits", "--ignore-addresses", "--repeated",
                             "--split-hyphen", "--depth", "--rank", "--budget", "--encoding", "--json", "--color", "NO_COLOR",
                             "755344", "1017744", "depth 30"})
        EXPECT_NE(std::string::npos, r.out.find(word)) << word;
}

TEST(Lxspell, CompileWritesBesideAndNeverClobbers) {
    Lxspell t;
    make_files(t.dir);
    const std::string existing = read_bytes(t.dir / "existing.lxc");
    struct Bad { const char *list; std::vector<std::string> extra; const char *err; } bad[] = {
        {"words-bad.txt", {}, "lxspell: {dir}/words-bad.txt:3: the word holds a control character\n"},
        {"words-foreign.txt", {}, "lxspell: {dir}/words-foreign.txt:2: the word holds a character outside ISO 8859-1\n"},
        {"words-long.txt", {}, "lxspell: {dir}/words-long.txt:2: the word is longer than 80 characters\n"},
        {"words-engine-bad.txt", {"--encoding", "latin1"}, "lxspell: {dir}/words-engine-bad.txt:4: "},
        {"nosuch.txt", {}, "lxspell: {dir}/nosuch.txt: No such file or directory\n"},
    };
    for (const Bad &b : bad) {
        SCOPED_TRACE(b.list);
        std::vector<std::string> args = b.extra;
        args.insert(args.end(), {"compile", std::string("{dir}/") + b.list, "{dir}/existing.lxc"});
        const Outcome r = t.run(args);
        EXPECT_EQ(2, r.status);
        EXPECT_EQ(0u, r.err.find(expand(b.err, t.dir.path))) << r.err;
        EXPECT_EQ(existing, read_bytes(t.dir / "existing.lxc"));
    }
    // Nothing left beside it.
    for (const std::string &name : t.dir.names()) EXPECT_EQ(std::string::npos, name.find("existing.lxc.")) << name;

    // A good list (CR LF and LF, UTF-8, comments and empty lines) replaces it.
    Outcome r = t.run({"compile", "{dir}/words.txt", "{dir}/existing.lxc"});
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ("", r.out);
    EXPECT_NE(existing, read_bytes(t.dir / "existing.lxc"));
    r = t.run({"-d", "{dir}/existing.lxc", "list"}, "apple caf\xC3\xA9 cherry comment banana durian\n");
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("comment\ndurian\n", r.out);

    // An ISO 8859-1 list is found out; -d may come more than once.
    r = t.run({"compile", "{dir}/words-latin1.txt", "{dir}/latin1.lxc"});
    EXPECT_EQ(0, r.status) << r.err;
    r = t.run({"-d", "{dir}/latin1.lxc", "-d", "{dir}/existing.lxc", "list"}, "caf\xC3\xA9 cherry durian\n");
    EXPECT_EQ("durian\n", r.out);
    // The bundled lexicon comes after neither: only the named ones count.
    r = t.run({"-d", "{dir}/latin1.lxc", "list"}, "cherry\n");
    EXPECT_EQ("cherry\n", r.out);
}

// Without -d or LXSPELL_LEXICON the lexicon is looked for beside the
// program, then in ../share/lxspell/ from its folder: the installed layout.
TEST(Lxspell, FindsTheLexiconOfItsPrefix) {
    Lxspell t;
    std::filesystem::create_directories(t.dir / "prefix/bin");
    std::filesystem::create_directories(t.dir / "prefix/share/lxspell");
    const std::string exe = t.dir / "prefix/bin/lxspell";
    std::filesystem::copy_file(LXSPELL_EXE, exe);
    Outcome r = t.run({"list"}, "apple\n", {}, exe);
    EXPECT_EQ(2, r.status);
    EXPECT_EQ("lxspell: no lexicon found beside the program or in ../share/lxspell; name one with -d FILE\n", r.err);

    write_bytes(t.dir / "tiny.txt", "apple\nbanana\n");
    ASSERT_EQ(0, t.run({"compile", "{dir}/tiny.txt", "{dir}/prefix/share/lxspell/en_US.lxc"}).status);
    r = t.run({"list"}, "apple banana cherry\n", {}, exe);
    EXPECT_EQ(1, r.status) << r.err;
    EXPECT_EQ("cherry\n", r.out);
    // An editor's dictionary name means the same lexicon.
    r = t.run({"-a", "-d", "english"}, "^apple cherry\n", {}, exe);
    EXPECT_NE(std::string::npos, r.out.find("\n*\n# cherry 7\n\n")) << r.out;

    // One beside the program comes first.
    write_bytes(t.dir / "other.txt", "cherry\n");
    ASSERT_EQ(0, t.run({"compile", "{dir}/other.txt", "{dir}/prefix/bin/en_US.lxc"}).status);
    r = t.run({"list"}, "apple banana cherry\n", {}, exe);
    EXPECT_EQ("apple\nbanana\n", r.out);
}

TEST(Lxspell, PersonalLexicon) {
    Lxspell t;
    const std::string personal = t.dir / "data/lxspell/personal.lex";
    // Checking doesn't create it; adding does, with its folders.
    Outcome r = t.run({"list"}, "zzyzx\n");
    EXPECT_EQ("zzyzx\n", r.out);
    EXPECT_FALSE(std::filesystem::exists(personal));
    r = t.run({"add", "zzyzx", "Qwertyx"});
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_TRUE(std::filesystem::exists(personal));
    r = t.run({"list"}, "zzyzx Qwertyx qwertyx\n");
    EXPECT_EQ("qwertyx\n", r.out);

    // Actions: auto-change and conditional change show their replacement.
    for (const auto &[action, entry] : {std::pair{"--auto-change", "teh=the"}, {"--change", "recieve=receive"},
                                        {"--exclude", "alot"}}) {
        r = t.run({"add", action, entry});
        EXPECT_EQ(0, r.status) << r.err;
    }
    r = t.run({"check"}, "Teh cat did recieve alot.\n");
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("<stdin>:1:1: Teh: auto-change (The)\n"
              "<stdin>:1:13: recieve: conditional change (receive)\n"
              "<stdin>:1:21: alot: misspelled (allot, alto, alt, alit, aloft, lot, aloe, slot, clot, blot)\n",
              r.out);
    r = t.run({"add", "--change", "nothing"});
    EXPECT_EQ(2, r.status);
    EXPECT_EQ("lxspell: nothing: give WORD=REPLACEMENT\n", r.err);

    // Remove: a word that isn't there is reported with status 1.
    r = t.run({"remove", "zzyzx", "nope"});
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("lxspell: nope: not in " + personal + "\n", r.err);
    r = t.run({"list"}, "zzyzx Qwertyx\n");
    EXPECT_EQ("zzyzx\n", r.out);

    // -p names another; without HOME or XDG_DATA_HOME there is none.
    r = t.run({"-p", "{dir}/other.lex", "add", "frobz"});
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ("frobz\n", t.run({"list"}, "frobz\n").out);
    EXPECT_EQ("", t.run({"-p", "{dir}/other.lex", "list"}, "frobz\n").out);
    r = t.run({"-p", "{dir}/nosuch.lex", "remove", "x"});
    EXPECT_EQ(2, r.status);
    EXPECT_EQ("lxspell: " + (t.dir / "nosuch.lex") + ": no such personal lexicon\n", r.err);
    write_bytes(t.dir / "bad.lex", "#LID 25966\r\nbad\x01word\r\n");
    r = t.run({"-p", "{dir}/bad.lex", "list"}, "x\n");
    EXPECT_EQ(2, r.status);
    EXPECT_NE(std::string::npos, r.err.find(t.dir / "bad.lex")) << r.err;
}

TEST(Lxspell, TwoProcessesAddingWordsLoseNone) {
    Lxspell t;
    // Three at once, each adding its words one by one.
    std::vector<std::vector<std::string>> runs(3, std::vector<std::string>{"add"});
    for (size_t k = 0; k < runs.size(); ++k) {
        for (int i = 0; i < 60; ++i) runs[k].push_back(std::string(1, static_cast<char>('a' + k)) + "word" + std::to_string(i));
    }
    std::vector<pid_t> pids;
    for (const auto &args : runs) {
        std::fflush(nullptr);
        const pid_t pid = fork();
        if (pid == 0) _exit(t.run(args).status);
        pids.push_back(pid);
    }
    for (pid_t pid : pids) {
        int ws = 0;
        waitpid(pid, &ws, 0);
        EXPECT_TRUE(WIFEXITED(ws) && WEXITSTATUS(ws) == 0);
    }
    std::string text;
    for (const auto &args : runs) {
        for (size_t i = 1; i < args.size(); ++i) text += args[i] + "\n";
    }
    const Outcome r = t.run({"list"}, text);
    EXPECT_EQ(0, r.status) << r.out;
    EXPECT_EQ("", r.out);
}

// The whole walk over an input much larger than a read block: a repeated
// word across a block's end is found, positions stay right to the end, and
// a line longer than any block is checked too.
TEST(Lxspell, BigInputs) {
    Lxspell t;
    const std::string line = "the cat sat on the mat and the dog is happy\n"; // 44 bytes
    std::string text;
    std::vector<std::string> expected;
    for (int i = 0; i < 3000; ++i) {
        // Ends with "the" right before the first block's end (16 KiB).
        if (i == 371) text += "the cat sat on the mat and the dog is the\n";
        else if (i % 700 == 699) text += "caf\xC3\xA9 \xC5\x81\xC3\xB3\x64\xC5\xBA wrods\n";
        else text += line;
    }
    write_bytes(t.dir / "big.txt", text);
    Outcome r = t.run({"--json", "check", "{dir}/big.txt"});
    EXPECT_EQ(1, r.status);
    std::vector<std::string> got;
    for (size_t at = 0, nl; (nl = r.out.find('\n', at)) != std::string::npos; at = nl + 1) {
        const std::string obj = r.out.substr(at, nl - at);
        const auto field = [&](const char *name) {
            const size_t p = obj.find(std::string("\"") + name + "\":") + std::strlen(name) + 3;
            return obj.substr(p, obj.find(',', p) - p);
        };
        got.push_back(field("line") + ":" + field("column") + ":" + field("offset") + " " + field("word"));
    }
    // The line that ends in "the" is the last whole line of the first block.
    const int64_t firstBlockEnd = 372 * 44 - 2;
    ASSERT_TRUE(firstBlockEnd <= 16384 && firstBlockEnd + 44 > 16384);
    std::vector<std::string> want{"373:1:" + std::to_string(firstBlockEnd) + " \"the\""};
    for (int i = 699; i < 3000; i += 700) {
        // Lines before: 44 bytes each, but the short line 371 (42) and the
        // earlier "wrods" lines (20 bytes, 16 characters).
        const int64_t before = (i < 371 ? i * 44 : i * 44 - 2) - (i / 700) * (44 - 20);
        want.push_back(std::to_string(i + 1) + ":11:" + std::to_string(before + 14) + " \"wrods\"");
    }
    EXPECT_EQ(want, got);

    // A line of 3 MB without a line end.
    std::string longLine;
    while (longLine.size() < 3u << 20) longLine += "one two ";
    longLine += "wrods";
    write_bytes(t.dir / "long.txt", longLine);
    r = t.run({"check", "{dir}/long.txt"});
    EXPECT_EQ(1, r.status);
    EXPECT_EQ((t.dir / "long.txt") + ":1:" + std::to_string(longLine.size() - 4) +
                  ": wrods: misspelled (words, woods, rods, prods)\n",
              r.out);
}

// The pipe protocol as a conversation: lines in, lines out.
TEST(Lxspell, PipeConversation) {
    Lxspell t;
    write_bytes(t.dir / "tiny.txt", "apple\nbanana\n");
    ASSERT_EQ(0, t.run({"compile", "{dir}/tiny.txt", "{dir}/tiny.lxc"}).status);
    const std::string banner = "@(#) International Ispell Version 3.1.20 (but really lxspell " LXSPELL_VERSION ")\n";
    struct Conversation {
        const char *name;
        std::vector<std::string> args;
        std::string input;
        std::string output; // after the banner
    } conversations[] = {
        {"words, offsets from 0, a leading ^ counted",
         {"-a"},
         "hello worldd\n^teh cat\n",
         "*\n& worldd 2 6: world, worlds\n\n& teh 8 1: the, tech, tel, ten, tea, tee, eh, meh\n*\n\n"},
        {"the engine's order",
         {"-a", "--rank=engine"},
         "^teh\n",
         "& teh 8 1: tech, eh, the, tel, ten, meh, tea, tee\n\n"},
        {"offsets count characters; words outside ISO 8859-1 pass",
         {"-a"},
         "^caf\xC3\xA9 na\xC3\xAFve \xC5\x81\xC3\xB3\x64\xC5\xBA wrods\n",
         "*\n& na\xC3\xAFve 2 6: naive, nave\n*\n& wrods 4 17: words, woods, rods, prods\n\n"},
        {"a line in ISO 8859-1 is answered in it",
         {"-a"},
         "^caf\xE9 na\xEFve\n",
         "*\n& na\xEFve 2 6: naive, nave\n\n"},
        {"terse mode, empty lines and commands without answers",
         {"-a"},
         "!\n\n^good wrods\n+\n-\n~tex\n$$ra wrods,words\n%\n^good\n",
         "& wrods 4 6: words, woods, rods, prods\n\n*\n\n"},
        {"@ accepts for the session; * adds to the personal lexicon",
         {"-a", "-p", "{dir}/pers.lex"},
         "@wrods\n*zzyzx\n&Qwertyx\n#\n^wrods zzyzx qwertyx Qwertyx\n",
         "*\n*\n*\n*\n\n"},
        {"the personal lexicon keeps * and & words, not @ words",
         {"-a", "-p", "{dir}/pers.lex"},
         "!\n^wrods zzyzx qwertyx\n",
         "& wrods 4 1: words, woods, rods, prods\n\n"},
        {"words without suggestions",
         {"-a", "-d", "{dir}/tiny.lxc"},
         "^zzz apple qqqqqq\n",
         "# zzz 1\n*\n# qqqqqq 11\n\n"},
        {"flags of editors accepted",
         {"-a", "-m", "-B", "-C", "-d", "american", "-T", "latin1", "--encoding=utf-8", "--sug-mode=ultra", "-i", "utf-8"},
         "^Teh\n",
         "& Teh 8 1: The, Th, TeX, Ted, Tet, Tex, Eh, Meh\n\n"},
        {"markup with -H", {"-a", "-H"}, "^<b>wrods</b>\n", "& wrods 4 4: words, woods, rods, prods\n\n"},
        {"no line end at the end", {"-a"}, "^good", "*\n\n"},
    };
    for (const Conversation &c : conversations) {
        SCOPED_TRACE(c.name);
        const Outcome r = t.run(c.args, c.input);
        EXPECT_EQ(0, r.status);
        EXPECT_EQ(banner + c.output, r.out);
        EXPECT_EQ("", r.err);
    }
    EXPECT_NE(std::string::npos, read_bytes(t.dir / "pers.lex").find("qwertyx\t"));
}

// The tool's UTF-8 decoder: what it takes, what it refuses and where.
TEST(LxspellText, Utf8ToLatin1) {
    using lxspell::kForeign;
    struct {
        std::string in;
        size_t bad; // npos: valid
        std::string out;
    } cases[] = {
        {"plain", std::string::npos, "plain"},
        {"caf\xC3\xA9", std::string::npos, "caf\xE9"},
        {"\xC2\x80\xC3\xBF", std::string::npos, "\x80\xFF"},
        {"\xC4\x80", std::string::npos, std::string(1, kForeign)},               // U+0100
        {"\xE2\x82\xAC!", std::string::npos, std::string(1, kForeign) + "!"},    // euro sign
        {"\xF0\x9F\x98\x80", std::string::npos, std::string(1, kForeign)},       // U+1F600
        {"ab\xFF", 2, "ab"},                                                     // never in UTF-8
        {"ab\xC3", 2, "ab"},                                                     // cut short
        {"a\xC3(", 1, "a"},                                                      // bad continuation
        {"\xC0\xAF", 0, ""},                                                     // overlong '/'
        {"\xE0\x80\xAF", 0, ""},                                                 // overlong, 3 bytes
        {"\xED\xA0\x80", 0, ""},                                                 // surrogate
        {"\xF4\x90\x80\x80", 0, ""},                                             // beyond U+10FFFF
        {"x\x80", 1, "x"},                                                       // lone continuation
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.in);
        std::string out;
        EXPECT_EQ(c.bad, lxspell::utf8_to_latin1(c.in, out));
        EXPECT_EQ(c.out, out);
        if (c.bad == std::string::npos && out.find(kForeign) == std::string::npos) {
            EXPECT_EQ(c.in, lxspell::to_utf8(out));
        }
    }
}

// Blocks end at line ends and give back every byte; a line without an end
// is cut at a blank, or at a character boundary, within the limit.
TEST(LxspellText, BlockReader) {
    struct { const char *name; std::string text; std::vector<std::string> blocks; } cases[] = {
        {"empty", "", {}},
        {"short, no line end", "abc", {"abc"}},
        {"cut at the last line end", "aaaa\nbbbb\ncc\n", {"aaaa\nbbbb\n", "cc\n"}},
        {"a line longer than a block", "aaaaaaaaaaaaaaa\nb\n", {"aaaaaaaaaaaaaaa\n", "b\n"}},
        {"a line longer than the limit: at a blank", "aaa bbb ccc ddd eee fff ggg", {"aaa bbb ccc ddd ", "eee fff ggg"}},
        {"no blank: at a character boundary", "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9",
         {"\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9", "\xC3\xA9"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        FILE *fp = fmemopen(const_cast<char *>(c.text.data()), c.text.size(), "rb");
        if (c.text.empty()) fp = std::fopen("/dev/null", "rb");
        ASSERT_NE(nullptr, fp);
        lxspell::BlockReader reader(fp, 12, 19);
        std::vector<std::string> got;
        for (std::string block; reader.next(block);) got.push_back(block);
        EXPECT_FALSE(reader.failed());
        EXPECT_EQ(c.blocks, got);
        std::fclose(fp);
    }
}

// Lines and columns count characters of the original; byte offsets its bytes.
TEST(LxspellText, Positions) {
    const std::string original = "caf\xC3\xA9 x\nna\xC3\xAFve \xE2\x82\xAC y\n";
    std::string engine;
    ASSERT_EQ(std::string::npos, lxspell::utf8_to_latin1(original, engine));
    lxspell::PositionTracker tracker;
    tracker.begin_block(engine, original, lxspell::Encoding::Utf8, lxspell::Position{4, 3, 100});
    const auto at = [&](size_t offset) {
        const lxspell::Position p = tracker.at(offset);
        return std::to_string(p.line) + ":" + std::to_string(p.column) + ":" + std::to_string(p.byte);
    };
    EXPECT_EQ("4:3:100", at(0));
    EXPECT_EQ("4:8:106", at(5));   // x
    EXPECT_EQ("5:1:108", at(7));   // n
    EXPECT_EQ("5:9:119", at(15));  // y, behind a 3-byte character
    EXPECT_EQ("6:1:121", at(engine.size()));
}

// lexicons.h - the lexicons lxspell consults, in the order of lookup: the
// session's accepted words (pipe mode), the personal lexicon, then the
// compressed lexicons named by -d, LXSPELL_LEXICON or found beside the
// executable.
#ifndef LXSPELL_LEXICONS_H
#define LXSPELL_LEXICONS_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <lxengine.h>

namespace lxspell {

// Language of a personal lexicon the tool creates: "en".
inline constexpr int16_t kPersonalLang = 0x656E;

// The engine's last message, or a description of code if it left none.
std::string engine_message(int32_t code);

// "FILE: MESSAGE", or MESSAGE alone if it names the file already.
std::string with_file(const std::string &file, const std::string &msg);

// The folder of the running executable (from /proc/self/exe), or "".
std::string executable_dir();

// Where the bundled lexicon is looked for when neither -d nor
// LXSPELL_LEXICON names one: beside the executable, then in
// ../share/lxspell/ (the installed layout).
std::vector<std::string> bundled_lexicon_candidates();

// The file a -d argument stands for: a path as it is; a bare name (no '/',
// no file of that name) is looked up as NAME.lxc beside the bundled lexicon,
// and an English name that editors pass ("english", "american", "en_US", ...)
// gives the bundled lexicon. "" if nothing fits.
std::string resolve_lexicon_name(const std::string &name);

// $XDG_DATA_HOME/lxspell/personal.lex, else ~/.local/share/lxspell/personal.lex;
// "" without either variable.
std::string default_personal_path();

// mkdir -p of the folder that holds path.
bool make_parent_dirs(const std::string &path);

class LexiconSet {
public:
    LexiconSet() { rebuild(); }
    ~LexiconSet();
    LexiconSet(const LexiconSet &) = delete;
    LexiconSet &operator=(const LexiconSet &) = delete;

    // Opens the compressed lexicons: `names` (the -d arguments, in order),
    // or else the default one. On failure `err` holds a one-line message.
    bool open_main(const std::vector<std::string> &names, int32_t budget, std::string &err);

    // Opens the personal lexicon at path. A missing file is created, with
    // its folders, if `create` is set, and otherwise left for later (the
    // lexicon is then absent and the call succeeds).
    bool open_personal(const std::string &path, bool create, std::string &err);

    // Makes the in-memory lexicon of words accepted for this session.
    bool open_session(std::string &err);

    LX_Lexicon *personal() const { return personal_.get(); }
    LX_Lexicon *session() const { return session_.get(); }
    const std::string &personal_path() const { return personalPath_; }
    LX_Lexicon *const *list() const { return list_.data(); }

private:
    void rebuild();
    std::vector<std::unique_ptr<LX_Lexicon>> main_;
    std::unique_ptr<LX_Lexicon> personal_, session_;
    std::string personalPath_;
    std::vector<LX_Lexicon *> list_;
};

} // namespace lxspell

#endif

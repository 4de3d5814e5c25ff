// compile.h - `lxspell compile WORDLIST OUTPUT`.
#ifndef LXSPELL_COMPILE_H
#define LXSPELL_COMPILE_H

#include <string>

#include "text.h"

namespace lxspell {

// Compiles the word list at `list` (LF or CR LF line ends; UTF-8 or ISO
// 8859-1, told by `enc` when `chosen`, else found out) into the compressed
// lexicon `output`. The list goes to the engine's form in a private
// temporary file; the lexicon is written beside `output` and renamed into
// place only when it is complete and opens, so a failure never touches an
// existing file. Returns false with a one-line message in err.
bool compile_lexicon(const std::string &list, const std::string &output, Encoding enc, bool chosen,
                     std::string &err);

} // namespace lxspell

#endif

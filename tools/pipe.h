// pipe.h - `lxspell -a`: the pipe protocol through which editors drive a
// spell checker, line by line on standard input and output.
#ifndef LXSPELL_PIPE_H
#define LXSPELL_PIPE_H

#include <cstdio>

#include "check.h"
#include "lexicons.h"

namespace lxspell {

// The identification line, also printed by -v/-vv. Editors take the first
// number in it for the protocol's version, which must be 3.1.12 or later.
std::string pipe_banner();

// Serves the protocol until the end of input; returns the exit status.
// lexicons must hold a session lexicon; the personal lexicon is created
// when the first word is added to it.
int run_pipe(FILE *in, FILE *out, LexiconSet &lexicons, const Settings &s);

} // namespace lxspell

#endif

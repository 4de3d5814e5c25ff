#!/bin/sh
# Runs the Emacs integration test: Emacs in batch mode, with ispell.el and
# flyspell driving lxspell through its pipe mode.
# Usage: run.sh EMACS LXSPELL LEXICON
set -eu
emacs=$1 lxspell=$2 lexicon=$3
dir=$(mktemp -d "${TMPDIR:-/tmp}/lxemacs.XXXXXX")
trap 'rm -rf "$dir"' EXIT
# Nothing of the user's is read or written: no init files, a scratch home.
HOME=$dir XDG_DATA_HOME=$dir/data LC_ALL=C.UTF-8 \
  "$emacs" -Q --batch -l "$(dirname "$0")/lxspell-test.el" -- "$lxspell" "$lexicon" "$dir"

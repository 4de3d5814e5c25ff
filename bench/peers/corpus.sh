#!/usr/bin/env bash
# Assembles the English prose corpus of the side-by-side benchmark from
# Debian packages, and writes it in the two encodings the checkers read.
#
#   corpus.sh OUTDIR [MAX_BYTES]
#
# Writes OUTDIR/corpus.raw.txt (the texts one after another, as shipped),
# OUTDIR/corpus.utf8.txt and OUTDIR/corpus.latin1.txt (the same characters:
# typographic quotes, dashes and ellipses mapped to ASCII, anything else
# outside ISO 8859-1 to its unaccented letter or '?'); with MAX_BYTES, only
# evenly spaced blocks of 40 lines, at most MAX_BYTES in all. Reuses what is
# there.
#
# Needs the packages bible-kjv (with bible-kjv-text), fortunes, fortunes-min,
# jargon-text and dict-devil; base-files has the common licences.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
out=${1:?usage: corpus.sh OUTDIR [MAX_BYTES]}
max=${2:-}
mkdir -p "$out"

recipe() {
	cat <<'EOF'
Corpus recipe (in this order, concatenated):
  1. King James Bible: `bible -f gen1:1-rev22:21`, each verse's reference cut
     off (packages bible-kjv, bible-kjv-text)
  2. fortune cookies: every text file in /usr/share/games/fortunes except
     ascii-art and the .dat/.u8 files, in name order, "%" lines removed
     (packages fortunes, fortunes-min)
  3. the Jargon File: /usr/share/doc/jargon-text/jargon.txt.gz (jargon-text)
  4. The Devil's Dictionary: /usr/share/dictd/devil.dict.dz (dict-devil)
  5. the licence texts in /usr/share/common-licenses, regular files only (no
     symbolic links), in name order (base-files)
then quotes, dashes and ellipses mapped to ASCII, other characters outside
ISO 8859-1 replaced, and written as UTF-8 and as ISO 8859-1.
EOF
}

raw_corpus() {
	bible -f gen1:1-rev22:21 </dev/null | sed 's/^[^ ]* //'
	find /usr/share/games/fortunes -maxdepth 1 -type f ! -name '*.dat' \
		! -name '*.u8' ! -name 'ascii-art' -print0 | sort -z |
		xargs -0 cat | grep -v '^%$'
	zcat /usr/share/doc/jargon-text/jargon.txt.gz
	zcat /usr/share/dictd/devil.dict.dz
	find /usr/share/common-licenses -maxdepth 1 -type f -print0 | sort -z |
		xargs -0 cat
}

recipe
# Made again when the recipe (this script) or the normaliser changes.
if [[ ! -s $out/corpus.raw.txt || $0 -nt $out/corpus.raw.txt ]]; then
	raw_corpus >"$out/corpus.raw.txt.tmp"
	mv "$out/corpus.raw.txt.tmp" "$out/corpus.raw.txt"
fi
stamp="$out/corpus.max"
if [[ ! -s $out/corpus.utf8.txt || ! -s $out/corpus.latin1.txt ||
	$out/corpus.raw.txt -nt $out/corpus.utf8.txt ||
	$here/inputs.py -nt $out/corpus.utf8.txt ||
	"$(cat "$stamp" 2>/dev/null)" != "$max" ]]; then
	python3 "$here/inputs.py" normalize "$out/corpus.raw.txt" \
		"$out/corpus.utf8.txt" "$out/corpus.latin1.txt" \
		${max:+--max-bytes "$max"}
	printf '%s' "$max" >"$stamp"
fi
printf 'corpus: raw %s bytes; UTF-8 %s bytes; ISO 8859-1 %s bytes\n' \
	"$(stat -c %s "$out/corpus.raw.txt")" \
	"$(stat -c %s "$out/corpus.utf8.txt")" \
	"$(stat -c %s "$out/corpus.latin1.txt")"

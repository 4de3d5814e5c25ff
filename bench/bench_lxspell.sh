#!/usr/bin/env bash
# bench_lxspell.sh - lxspell as scripts meet it. Prints the words per second
# of `lxspell list` over a large English text (data/prose.txt repeated to
# about 20 MB) beside the engine's own check rate, the tool's peak memory
# over that text with a 64 KiB budget, with none and with its default,
# and its start-up time for a one-word input (the whole process, wall and
# CPU time, the medians of 50 runs, beside /bin/true's), each with its mark.
#
# Usage: bench_lxspell.sh [--short] [--build DIR] [--budget BYTES]
#                         [--engine-rate WORDS_PER_SECOND]
#   --short        a 2 MB text, one timed run and 20 start-ups
#   --build DIR    the build tree (default: build/ beside bench/)
#   --budget N     passed to lxspell and to the engine's benchmark; without
#                  it lxspell runs with its default and the engine with none
#   --engine-rate  the engine's figure, instead of running bench_fclex
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=$here/build short=0 budget= engine_rate=
while [ $# -gt 0 ]; do
  case $1 in
    --short) short=1 ;;
    --build) build=$2; shift ;;
    --budget) budget=$2; shift ;;
    --engine-rate) engine_rate=$2; shift ;;
    *) echo "usage: $0 [--short] [--build DIR] [--budget BYTES] [--engine-rate W/S]" >&2; exit 2 ;;
  esac
  shift
done
lxspell=$build/bin/lxspell
if [ ! -x "$lxspell" ]; then
  echo "bench_lxspell: $lxspell not built" >&2
  exit 1
fi
[ -x /usr/bin/time ] || { echo "bench_lxspell: /usr/bin/time is missing (Debian package time)" >&2; exit 1; }

tmp=$(mktemp -d "${TMPDIR:-/tmp}/lxspell-bench.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
# The user's personal lexicon and lexicon variable stay out of the figures.
export XDG_DATA_HOME=$tmp/data
unset LXSPELL_LEXICON
opts=()
[ -z "$budget" ] || opts=(--budget "$budget")

# The text: the prose and a line end, repeated, as bench_fclex builds its
# own (only longer), so that both count the same words per copy.
if [ $short = 1 ]; then size=$((2 << 20)) runs=1 starts=20; else size=$((20 << 20)) runs=3 starts=50; fi
prose=$here/data/prose.txt
copy_bytes=$(( $(wc -c <"$prose") + 1 ))
copies=$(( (size + copy_bytes - 1) / copy_bytes ))
{ cat "$prose"; echo; } >"$tmp/copy.txt"
for ((i = 0; i < copies; i++)); do echo "$tmp/copy.txt"; done | xargs cat >"$tmp/text.txt"
text_mb=$(awk -v b="$(wc -c <"$tmp/text.txt")" 'BEGIN { printf "%.1f", b / 1048576 }')

# The engine's rate, and its count of words in one copy of the prose.
words_per_copy= engine_from="given"
if [ -z "$engine_rate" ] && [ -x "$build/bench/bench_fclex" ]; then
  engine_from="bench_fclex, budget ${budget:-0}"
  line=$("$build/bench/bench_fclex" "${budget:-0}" | grep 'words/s')
  engine_rate=$(awk '{ for (i = 1; i < NF; i++) if ($(i + 1) == "M") { printf "%.0f", $i * 1e6; exit } }' <<<"$line")
  engine_words=$(sed -n 's/.*(\([0-9]*\) words,.*/\1/p' <<<"$line")
  engine_copies=$(( ((2 << 20) + copy_bytes - 1) / copy_bytes ))
  words_per_copy=$(awk -v w="$engine_words" -v c="$engine_copies" 'BEGIN { printf "%.3f", w / c }')
fi
if [ -z "$words_per_copy" ]; then
  words_per_copy=$(wc -w <"$prose")   # whitespace-separated, near the engine's count
fi
words=$(awk -v w="$words_per_copy" -v c="$copies" 'BEGIN { printf "%.0f", w * c }')

# Throughput and peak memory: the best of the runs. Findings make the exit
# status 1, which is no failure here.
time_list() { # OPTION... ; sets best (seconds) and peak (KiB)
  local r secs kb
  best= peak=
  for ((r = 0; r < runs; r++)); do
    /usr/bin/time -f '%e %M' -o "$tmp/time" "$lxspell" "$@" list <"$tmp/text.txt" >"$tmp/list.out" \
      || [ $? -eq 1 ] || { echo "bench_lxspell: lxspell list failed" >&2; cat "$tmp/time" >&2; exit 1; }
    # GNU time puts "Command exited with non-zero status 1" first when
    # something was found: the figures are on the last line.
    read -r secs kb < <(tail -n 1 "$tmp/time")
    best=$(awk -v a="$secs" -v b="${best:-1e9}" 'BEGIN { print (a < b ? a : b) }')
    peak=$(( kb > ${peak:-0} ? kb : ${peak:-0} ))
  done
}
# The engine's figure is for its benchmark's options (spelling, case and
# accents respected) and budget: the tool is held to it with the same ones.
time_list --options 0x80280 --budget "${budget:-0}"
same_best=$best
time_list "${opts[@]}"
listed=$(wc -l <"$tmp/list.out")
peak_default=$peak
# Peak memory with a small budget (what a machine short of memory would
# give), and with no limit (every segment that the text needs stays). The
# shared libraries' pages that a run maps vary by 0.1 or 0.2 MiB from run
# to run, as their addresses do: the median of a few runs.
peak_of() { # BUDGET ; prints the median peak resident memory in KiB
  local r
  for ((r = 0; r < 3; r++)); do
    /usr/bin/time -f '%M' -o "$tmp/time" "$lxspell" --budget "$1" list <"$tmp/text.txt" >/dev/null \
      || [ $? -eq 1 ] || { echo "bench_lxspell: lxspell list failed" >&2; exit 1; }
    tail -n 1 "$tmp/time"
  done | sort -n | sed -n 2p
}
peak_small=$(peak_of 65536)
peak_none=$(peak_of 0)

# Start-up: one word on standard input, the whole process, wall and CPU
# time (user and system), the medians of the runs; the same for /bin/true,
# what any process costs here. Python times each run as bench/peers does,
# from the wait for the child; without Python the shell times the runs
# (the wall time to the microsecond, the CPU time from bash's `times` to
# the millisecond, so as a mean), with its own fork and exec inside.
echo "word" >"$tmp/one.txt"
/usr/bin/time -f '%M' -o "$tmp/time1" "$lxspell" "${opts[@]}" list <"$tmp/one.txt" >/dev/null || true
peak1=$(tail -n 1 "$tmp/time1")
startup_of() { # COMMAND... ; prints "WALL_MS CPU_MS"
  if command -v python3 >/dev/null; then
    python3 - "$starts" "$tmp/one.txt" "$@" <<'PY'
import os, statistics, subprocess, sys, time
n, stdin, cmd = int(sys.argv[1]), sys.argv[2], sys.argv[3:]
walls, cpus = [], []
for _ in range(n):
    with open(stdin, "rb") as fin:
        t0 = time.perf_counter()
        p = subprocess.Popen(cmd, stdin=fin, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, _, ru = os.wait4(p.pid, 0)
        walls.append(time.perf_counter() - t0)
        cpus.append(ru.ru_utime + ru.ru_stime)
print(f"{1000 * statistics.median(walls):.3f} {1000 * statistics.median(cpus):.3f}")
PY
    return
  fi
  local r t0 t1 wall
  wall=$(for ((r = 0; r < starts; r++)); do
    t0=$EPOCHREALTIME
    "$@" <"$tmp/one.txt" >/dev/null || true
    t1=$EPOCHREALTIME
    echo "$t0 $t1"
  done | awk '{ print ($2 - $1) * 1e3 }' | sort -n |
    awk '{ v[NR] = $1 } END { print (NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2) }')
  # `times` is run by this shell, not in a pipeline, so that only the runs
  # count among the children it has waited for.
  times >"$tmp/times0"
  for ((r = 0; r < starts; r++)); do "$@" <"$tmp/one.txt" >/dev/null || true; done
  times >"$tmp/times1"
  awk -v w="$wall" -v n="$starts" -v a="$(tail -n 1 "$tmp/times0")" -v b="$(tail -n 1 "$tmp/times1")" '
    function ms(t,   f, p, i, s) { split(t, f, " "); s = 0
      for (i = 1; i <= 2; i++) { split(f[i], p, /[ms]/); s += p[1] * 60 + p[2] } return s * 1000 }
    BEGIN { printf "%.3f %.3f\n", w, (ms(b) - ms(a)) / n }'
}
read -r startup startup_cpu < <(startup_of "$lxspell" "${opts[@]}" list)
read -r true_ms true_cpu < <(startup_of /bin/true)
how=$(command -v python3 >/dev/null && echo "median" || echo "mean")

mark() { # VALUE OP LIMIT
  awk -v v="$1" -v l="$3" -v op="$2" 'BEGIN { ok = (op == "<" ? v < l : v >= l); print (ok ? "met" : "MISSED") }'
}
rate() { awk -v w="$words" -v s="$1" 'BEGIN { printf "%.0f", (s > 0 ? w / s : 0) }'; }
tool_rate=$(rate "$same_best")
echo "lxspell: $lxspell, budget ${budget:-default}"
echo "text: $text_mb MB ($copies copies of data/prose.txt, $words words), $listed words listed"
printf 'list throughput:   %6.2f M words/s  (default options; best of %d, %.2f s)\n' \
  "$(awk -v r="$(rate "$best")" 'BEGIN { print r / 1e6 }')" "$runs" "$best"
printf 'list throughput:   %6.2f M words/s  (the engine benchmark'"'"'s options and budget; %.2f s)\n' \
  "$(awk -v r="$tool_rate" 'BEGIN { print r / 1e6 }')" "$same_best"
if [ -n "$engine_rate" ]; then
  ratio=$(awk -v t="$tool_rate" -v e="$engine_rate" 'BEGIN { printf "%.0f", 100 * t / e }')
  printf 'engine check rate: %6.2f M words/s  (%s)\n' \
    "$(awk -v r="$engine_rate" 'BEGIN { print r / 1e6 }')" "$engine_from"
  # A short run lasts a few hundredths of a second, of which the start-up
  # takes a good part: its ratio is printed but not held to the mark.
  verdict=$(mark "$ratio" '>=' 80)
  [ "$short" = 1 ] && verdict="not judged in a short run"
  printf 'throughput/engine: %6s %%          mark >= 80 %%: %s\n' "$ratio" "$verdict"
else
  echo "engine check rate: unknown (build bench_fclex, or give --engine-rate)"
fi
mib() { awk -v k="$1" 'BEGIN { printf "%.2f", k / 1024 }'; }
printf 'peak memory:       %6.2f MiB         mark < 2.1 MiB: %s  (budget 64 KiB, median of 3 runs)\n' \
  "$(mib "$peak_small")" "$(mark "$(mib "$peak_small")" '<' 2.1)"
printf '                   %6.2f MiB         (no budget, median of 3 runs)\n' "$(mib "$peak_none")"
printf '                   %6.2f MiB         (budget %s; one-word input: %.2f MiB)\n' \
  "$(mib "$peak_default")" "${budget:-default}" "$(mib "$peak1")"
printf 'start-up:          %6.2f ms          mark < 5 ms: %s  (wall, one-word input, median of %d runs; /bin/true %.2f ms)\n' \
  "$startup" "$(mark "$startup" '<' 5)" "$starts" "$true_ms"
printf 'start-up CPU:      %6.2f ms          mark < 5 ms: %s  (user and system, %s of the runs; /bin/true %.2f ms)\n' \
  "$startup_cpu" "$(mark "$startup_cpu" '<' 5)" "$how" "$true_cpu"

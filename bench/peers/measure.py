#!/usr/bin/env python3
"""Runs every checker of a rows file over the same inputs and writes one table.

  measure.py ROWS CONFIG
  measure.py --render RESULTS_JSON TABLE   (the table again from a saved run)

ROWS has one checker a line, fields separated by tabs:
  name  encoding(utf8|latin1)  slow(0|1)  lexicon files (':'-separated)
  list command  pipe command
Commands are split like a shell would split them and run directly (no shell
in between, so start-up times are the tool's own); each reads standard input.

CONFIG is a JSON object: corpus_utf8, corpus_latin1, corpus_words, pairs_dir,
wordlist, runs, startup_runs, slow_cap, out_json, out_table, out_plot_data,
out_plot_script, out_plot (the PNG the script makes), scratch (a directory
for the runs' inputs and outputs), baseline (row name for the ratios), header
(list of lines for the table).

Figures:
  list      corpus words / median wall seconds of the list command over the
            corpus (and / median CPU seconds, user + system), peak resident
            memory (ru_maxrss of the child, what GNU time prints as %M), and
            the number of words the tool printed;
  start-up  median wall (and CPU) milliseconds for a one-word input, its
            peak memory;
  size      bytes of the lexicon files, against the word list and its
            gzip -9 and xz -9 sizes;
  suggest   for each pair list, words per second (wall and CPU) and peak
            memory through the pipe mode (one misspelling a line, each line
            sent as "^word"), and the share of
            pairs whose correction is the first suggestion, in the first
            five, in the first ten. A misspelling the checker accepts is a
            miss. Slow rows get an evenly spaced sample of slow_cap pairs and
            one run; a second table scores every row on that same sample.
Every run is made in turn: run 1 of every row, then run 2 of every row, ...
so that a change of load on the machine falls on all rows alike.
"""

import json
import os
import shlex
import statistics
import subprocess
import sys
import tempfile
import threading
import time


GNU_TIME = "/usr/bin/time"


def log(msg):
    print(msg, file=sys.stderr, flush=True)


class Row:
    def __init__(self, line):
        f = line.rstrip("\n").split("\t")
        if len(f) != 6:
            raise ValueError(f"bad row (want 6 tab-separated fields): {line!r}")
        self.name, self.enc = f[0], f[1]
        self.slow = f[2] == "1"
        self.lexicon = [p for p in f[3].split(":") if p]
        self.list_cmd = shlex.split(f[4])
        self.pipe_cmd = shlex.split(f[5])


def run(cmd, stdin_path, stdout_path=os.devnull, usage=True, timeout=3600):
    """Runs cmd once; returns (wall s, cpu s, maxrss KiB, exit status).

    With usage, the command runs under GNU time for its peak resident memory
    (%M): a child forked from this Python process would inherit the
    process's memory high-water mark across exec, so that figure has to come
    from a small parent. Wall time is taken here, CPU time (user + system,
    the command's and GNU time's own, a millisecond) from the wait for the
    child, in microseconds rather than GNU time's hundredths. Without usage
    (start-up timing) the command runs directly and maxrss is None.
    """
    tf = None
    if usage:
        fd, tf = tempfile.mkstemp(prefix="peers-time-")
        os.close(fd)
        cmd = [GNU_TIME, "-f", "%M", "-o", tf] + cmd
    with open(stdin_path, "rb") as fin, open(stdout_path, "wb") as fout:
        t0 = time.perf_counter()
        p = subprocess.Popen(cmd, stdin=fin, stdout=fout,
                             stderr=subprocess.DEVNULL)
        killer = threading.Timer(timeout, p.kill)
        killer.start()
        _, st, ru = os.wait4(p.pid, 0)
        wall = time.perf_counter() - t0
        killer.cancel()
        status = p.returncode = os.waitstatus_to_exitcode(st)
    rss = None
    if tf:
        with open(tf) as f:
            rss = int(f.read().split()[-1])
        os.unlink(tf)
    return wall, ru.ru_utime + ru.ru_stime, rss, status


def median(xs):
    return statistics.median(xs) if xs else None


def parse_pipe(path, n, enc):
    """Suggestion lists of a pipe-mode answer, one entry per input line:
    None when the word was accepted, else the list of suggestions."""
    with open(path, "rb") as f:
        text = f.read().decode("latin-1" if enc == "latin1" else "utf-8",
                               errors="replace")
    lines = text.split("\n")
    if lines and lines[0].startswith("@(#)"):
        lines = lines[1:]
    out, cur = [], []
    for ln in lines:
        if ln == "":
            out.append(cur)
            cur = []
        else:
            cur.append(ln)
    result = []
    for resp in out[:n]:
        sugs = None
        for ln in resp:
            if ln.startswith("&"):
                head, _, tail = ln.partition(": ")
                sugs = [s for s in tail.split(", ") if s]
                break
            if ln.startswith("#"):
                sugs = []
                break
        result.append(sugs)
    result += [None] * (n - len(result))
    return result


def score(sugs, pairs):
    first = five = ten = 0
    for s, (_, good) in zip(sugs, pairs):
        if not s or good not in s:
            continue
        r = s.index(good)
        first += r == 0
        five += r < 5
        ten += r < 10
    n = len(pairs) or 1
    return {"top1": first / n, "top5": five / n, "top10": ten / n}


def sample(items, n):
    if len(items) <= n:
        return list(range(len(items)))
    return [i * len(items) // n for i in range(n)]


def main(rows_path, config_path):
    with open(config_path) as f:
        cfg = json.load(f)
    with open(rows_path) as f:
        rows = [Row(ln) for ln in f if ln.strip() and not ln.startswith("#")]
    runs, su_runs, cap = cfg["runs"], cfg["startup_runs"], cfg["slow_cap"]
    # Inputs and outputs of the runs, kept for a look after the run.
    tmp = cfg["scratch"]
    os.makedirs(tmp, exist_ok=True)
    corpus = {"utf8": cfg["corpus_utf8"], "latin1": cfg["corpus_latin1"]}
    res = {r.name: {"name": r.name} for r in rows}

    # Inputs per encoding: a one-word text and the pipe-mode inputs.
    oneword = {}
    for enc in corpus:
        p = os.path.join(tmp, f"oneword.{enc}")
        with open(p, "wb") as f:
            f.write(b"hello\n")
        oneword[enc] = p
    lists = {}
    for name in ("wiki", "codespell"):
        with open(os.path.join(cfg["pairs_dir"], name + ".tsv"),
                  encoding="utf-8") as f:
            pairs = [tuple(ln.rstrip("\n").split("\t")) for ln in f if ln.strip()]
        lists[name] = pairs
    slow_idx = {k: sample(v, cap) for k, v in lists.items()}

    written = set()

    def pipe_input(listname, enc, idx):
        p = os.path.join(tmp, f"{listname}.{enc}.{len(idx)}")
        if p not in written:
            written.add(p)
            pairs = lists[listname]
            with open(p, "wb") as f:
                for i in idx:
                    f.write(("^" + pairs[i][0] + "\n").encode(
                        "latin-1" if enc == "latin1" else "utf-8"))
        return p

    # Lexicon sizes.
    with open(cfg["wordlist"], "rb") as f:
        wl = f.read()
    gz = len(subprocess.run(["gzip", "-9", "-c"], input=wl,
                            capture_output=True, check=True).stdout)
    xz = len(subprocess.run(["xz", "-9", "-c"], input=wl,
                            capture_output=True, check=True).stdout)
    sizes = {"wordlist": len(wl), "gzip": gz, "xz": xz}
    for r in rows:
        b = sum(os.path.getsize(p) for p in r.lexicon)
        res[r.name]["lexicon_bytes"] = b

    words = cfg["corpus_words"]

    # List mode over the corpus; the first run keeps the output to count it.
    walls = {r.name: [] for r in rows}
    cpus = {r.name: [] for r in rows}
    rss = {r.name: [] for r in rows}
    for k in range(runs):
        for r in rows:
            out = os.path.join(tmp, f"list.{k}") if k == 0 else os.devnull
            w, c, m, st = run(r.list_cmd, corpus[r.enc], out)
            if st not in (0, 1):
                log(f"  {r.name}: list mode exited with {st}")
            walls[r.name].append(w)
            cpus[r.name].append(c)
            rss[r.name].append(m)
            if k == 0:
                with open(out, "rb") as f:
                    res[r.name]["flagged"] = sum(1 for ln in f if ln.strip())
            log(f"  list run {k + 1}/{runs} {r.name}: {w:.3f} s wall, "
                f"{c:.3f} s cpu, {m / 1024:.1f} MiB")
    for r in rows:
        res[r.name]["list_wps_wall"] = words / median(walls[r.name])
        res[r.name]["list_wps_cpu"] = words / max(median(cpus[r.name]), 1e-9)
        res[r.name]["list_rss_kib"] = median(rss[r.name])

    # Start-up: one word, list mode; timed directly, and once more under
    # GNU time for its memory.
    su = {r.name: [] for r in rows}
    su_cpu = {r.name: [] for r in rows}
    for k in range(su_runs):
        for r in rows:
            w, c, _, _ = run(r.list_cmd, oneword[r.enc], usage=False)
            su[r.name].append(w)
            su_cpu[r.name].append(c)
    for r in rows:
        _, _, m, _ = run(r.list_cmd, oneword[r.enc])
        res[r.name]["startup_ms"] = 1000 * median(su[r.name])
        res[r.name]["startup_cpu_ms"] = 1000 * median(su_cpu[r.name])
        res[r.name]["startup_rss_kib"] = m
        log(f"  start-up {r.name}: {res[r.name]['startup_ms']:.1f} ms, "
            f"{res[r.name]['startup_cpu_ms']:.1f} ms cpu, {m / 1024:.1f} MiB")
        # The corpus rate without the start-up: what checking costs once
        # the lexicon is loaded.
        net = median(walls[r.name]) - median(su[r.name])
        res[r.name]["list_wps_net"] = words / net if net > 0 else float("nan")

    # Suggestions through the pipe mode.
    common = {}
    for listname, pairs in lists.items():
        all_idx = list(range(len(pairs)))
        t = {r.name: [] for r in rows}
        tc = {r.name: [] for r in rows}
        mem = {r.name: [] for r in rows}
        sug = {}
        for k in range(runs):
            for r in rows:
                if r.slow and k > 0:
                    continue
                idx = slow_idx[listname] if r.slow else all_idx
                inp = pipe_input(listname, r.enc, idx)
                out = os.path.join(tmp, f"pipe.{r.name}.{listname}")
                w, c, m, st = run(r.pipe_cmd, inp,
                                  out if k == 0 else os.devnull)
                if st != 0:
                    log(f"  {r.name}: pipe mode exited with {st}")
                t[r.name].append(w)
                tc[r.name].append(c)
                mem[r.name].append(m)
                if k == 0:
                    s = parse_pipe(out, len(idx), r.enc)
                    sug[r.name] = dict(zip(idx, s))
                log(f"  {listname} run {k + 1}/{runs} {r.name}: "
                    f"{len(idx)} words in {w:.2f} s")
        for r in rows:
            idx = slow_idx[listname] if r.slow else all_idx
            got = [sug[r.name][i] for i in idx]
            sc = score(got, [pairs[i] for i in idx])
            sc["n"] = len(idx)
            sc["wps"] = len(idx) / median(t[r.name])
            sc["wps_cpu"] = len(idx) / max(median(tc[r.name]), 1e-9)
            sc["rss_kib"] = median(mem[r.name])
            res[r.name][listname] = sc
            cidx = slow_idx[listname]
            csc = score([sug[r.name][i] for i in cidx],
                        [pairs[i] for i in cidx])
            csc["n"] = len(cidx)
            common.setdefault(listname, {})[r.name] = csc

    out = {"sizes": sizes, "rows": [res[r.name] for r in rows],
           "common": common, "pairs": {k: len(v) for k, v in lists.items()},
           "config": cfg}
    with open(cfg["out_json"], "w") as f:
        json.dump(out, f, indent=1)
    table = render(out, cfg)
    with open(cfg["out_table"], "w") as f:
        f.write(table)
    write_plot(out, cfg)
    print(table)


def write_plot(out, cfg):
    """Data and gnuplot script for the plot of suggestion rate against the
    share of corrections in the first five: one colour a row, a filled
    circle for Wikipedia's list and an open square for codespell's."""
    data = cfg["out_plot_data"]
    with open(data, "w") as f:
        for r in out["rows"]:
            f.write(f"# {r['name']}: list, words/s, top-5 share (%)\n")
            for ln in ("wiki", "codespell"):
                f.write(f"{ln} {r[ln]['wps']:.3f} {100 * r[ln]['top5']:.2f}\n")
            f.write("\n\n")
    colours = ["#1f77b4", "#ff7f0e", "#2ca02c", "#d62728", "#9467bd",
               "#8c564b", "#e377c2", "#7f7f7f", "#bcbd22", "#17becf",
               "#000000", "#aec7e8"]
    plots = []
    for i, r in enumerate(out["rows"]):
        lc = f'lc rgb "{colours[i % len(colours)]}"'
        name = r["name"].replace('"', "'")
        plots.append(f'"{data}" index {i} every ::0::0 using 2:3 with points '
                     f'pt 7 ps 1.6 {lc} title "{name}"')
        plots.append(f'"{data}" index {i} every ::1::1 using 2:3 with points '
                     f'pt 4 ps 1.6 lw 2 {lc} notitle')
    gp = f"""set terminal pngcairo size 1000,640 noenhanced
set output "{cfg['out_plot']}"
set title "Suggestions: rate against corrections in the first five\\n\
(filled circles: Wikipedia's list; open squares: codespell's list)"
set xlabel "misspellings per second (log scale)"
set ylabel "correction in the first five (%)"
set logscale x
set grid
set key outside right top
set offsets graph 0.05, graph 0.05, 1, 1
plot {", ".join(plots)}
"""
    with open(cfg["out_plot_script"], "w") as f:
        f.write(gp)


def fmt_rate(x):
    if x >= 1e6:
        return f"{x / 1e6:.2f} M"
    if x >= 1e4:
        return f"{x / 1e3:.0f} k"
    if x >= 100:
        return f"{x:,.0f}"
    return f"{x:.1f}"


def pct(x):
    return f"{100 * x:.1f}%"


def render(out, cfg):
    rows, sizes = out["rows"], out["sizes"]
    L = list(cfg.get("header", []))
    L.append("")
    L.append("| checker | list words/s (wall) | (CPU) | (wall less start-up) "
             "| flagged | list peak MB | start-up ms | (CPU) | start-up MB "
             "| lexicon bytes | / list | / gzip -9 | / xz -9 |")
    L.append("|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:"
             "|---:|")
    for r in rows:
        b = r["lexicon_bytes"]
        L.append(f"| {r['name']} | {fmt_rate(r['list_wps_wall'])} "
                 f"| {fmt_rate(r['list_wps_cpu'])} "
                 f"| {fmt_rate(r['list_wps_net'])} | {r['flagged']:,} "
                 f"| {r['list_rss_kib'] / 1024:.1f} | {r['startup_ms']:.1f} "
                 f"| {r['startup_cpu_ms']:.1f} "
                 f"| {r['startup_rss_kib'] / 1024:.1f} | {b:,} "
                 f"| {b / sizes['wordlist']:.2f} | {b / sizes['gzip']:.2f} "
                 f"| {b / sizes['xz']:.2f} |")
    L.append("")
    L.append(f"Word list: {sizes['wordlist']:,} bytes, gzip -9 "
             f"{sizes['gzip']:,}, xz -9 {sizes['xz']:,}.")
    L.append("")
    L.append("| checker | list | pairs | words/s (wall) | (CPU) | peak MB "
             "| first | top 5 | top 10 |")
    L.append("|---|---|---:|---:|---:|---:|---:|---:|---:|")
    for listname in ("wiki", "codespell"):
        for r in rows:
            s = r[listname]
            L.append(f"| {r['name']} | {listname} | {s['n']:,} "
                     f"| {fmt_rate(s['wps'])} | {fmt_rate(s['wps_cpu'])} "
                     f"| {s['rss_kib'] / 1024:.1f} | {pct(s['top1'])} "
                     f"| {pct(s['top5'])} | {pct(s['top10'])} |")
    L.append("")
    common = out["common"]
    n = {k: next(iter(v.values()))["n"] for k, v in common.items()}
    L.append("Every row on the same evenly spaced sample (the pairs the slow "
             f"rows get: wiki {n['wiki']:,}, codespell {n['codespell']:,}):")
    L.append("")
    L.append("| checker | wiki first | wiki top 5 | wiki top 10 "
             "| codespell first | codespell top 5 | codespell top 10 |")
    L.append("|---|---:|---:|---:|---:|---:|---:|")
    for r in rows:
        w, c = common["wiki"][r["name"]], common["codespell"][r["name"]]
        L.append(f"| {r['name']} | {pct(w['top1'])} | {pct(w['top5'])} "
                 f"| {pct(w['top10'])} | {pct(c['top1'])} | {pct(c['top5'])} "
                 f"| {pct(c['top10'])} |")
    base = next((r for r in rows if r["name"] == cfg.get("baseline")), None)
    L.append("")
    if base is None:
        L.append(f"No row named \"{cfg.get('baseline')}\": ratios left out.")
    else:
        def ratio(a, b):
            return f"{a / b:.2f}" if b else "-"
        L.append(f"Ratios to \"{base['name']}\" (above 1: the row's figure "
                 "is larger):")
        L.append("")
        L.append("| checker | list words/s (wall) | (CPU) | (less start-up) "
                 "| list peak MB | start-up ms | (CPU) | start-up MB "
                 "| lexicon bytes | wiki words/s | (CPU) | wiki first "
                 "| wiki top 5 | codespell words/s | (CPU) | codespell first "
                 "| codespell top 5 |")
        L.append("|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:"
                 "|---:|---:|---:|---:|---:|")
        for r in rows:
            cells = [ratio(r[k], base[k]) for k in (
                "list_wps_wall", "list_wps_cpu", "list_wps_net",
                "list_rss_kib",
                "startup_ms", "startup_cpu_ms", "startup_rss_kib",
                "lexicon_bytes")]
            for ln in ("wiki", "codespell"):
                cells += [ratio(r[ln][k], base[ln][k])
                          for k in ("wps", "wps_cpu", "top1", "top5")]
            L.append(f"| {r['name']} | " + " | ".join(cells) + " |")
    L.append("")
    return "\n".join(L)


def rerender(results_path, table_path):
    """Writes the table again from a run's saved results."""
    with open(results_path) as f:
        out = json.load(f)
    with open(table_path, "w") as f:
        f.write(render(out, out["config"]))


if __name__ == "__main__":
    if len(sys.argv) == 4 and sys.argv[1] == "--render":
        rerender(sys.argv[2], sys.argv[3])
    elif len(sys.argv) == 3:
        main(sys.argv[1], sys.argv[2])
    else:
        sys.exit(__doc__)

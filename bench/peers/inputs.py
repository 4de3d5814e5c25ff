#!/usr/bin/env python3
"""Fair inputs for the side-by-side benchmark of spell checkers.

  inputs.py normalize IN OUT_UTF8 OUT_LATIN1 [--max-bytes N]
      Maps typographic quotes, dashes and ellipses to ASCII, other
      characters outside ISO 8859-1 to their unaccented letters or '?', drops
      control characters, and writes the same text twice: UTF-8 and ISO
      8859-1 (so every tool reads identical characters in its own encoding).
      With --max-bytes, keeps evenly spaced blocks of 40 lines, at most N
      bytes in all.

  inputs.py count FILE_LATIN1
      Prints the number of words of the text, counted the one way used for
      every tool: a word is a maximal run of letters (ASCII or ISO 8859-1)
      with single apostrophes allowed between letters ("don't" is one word,
      "1990" and "--" are none).

  inputs.py flatdict WORDLIST OUTDIR
      From a word list in ISO 8859-1 (LF or CR LF) writes, in OUTDIR:
        flat.dic, flat.aff   a Hunspell dictionary without affix rules
        flat.words           the list with LF line ends, for aspell
        wordlist.txt         the same, the reference for size ratios

  inputs.py aspell-files DICT_DIR NAME
      Prints the files an installed Aspell dictionary NAME (a .multi file in
      DICT_DIR, whose "add" lines name other .multi or .rws files) is made
      of, ':'-separated, symbolic links resolved.
"""

import collections
import os
import re
import sys
import unicodedata

# Typographic punctuation mapped to its ASCII spelling.
ASCII_MAP = {
    0x2018: "'", 0x2019: "'", 0x201A: "'", 0x201B: "'", 0x2032: "'",
    0x02BC: "'", 0x0060: "'", 0x00B4: "'",
    0x201C: '"', 0x201D: '"', 0x201E: '"', 0x201F: '"', 0x2033: '"',
    0x00AB: '"', 0x00BB: '"',
    0x2010: "-", 0x2011: "-", 0x2012: "-", 0x2013: "-", 0x2212: "-",
    0x2014: "--", 0x2015: "--",
    0x2026: "...", 0x00A0: " ", 0x2009: " ", 0x200A: " ", 0x2002: " ",
    0x2003: " ", 0x00AD: "",
}

WORD_RE = re.compile(r"[^\W\d_]+(?:'[^\W\d_]+)*")


def to_latin1_repertoire(ch: str) -> str:
    """One character as text that ISO 8859-1 can hold."""
    cp = ord(ch)
    if cp in ASCII_MAP:
        return ASCII_MAP[cp]
    if cp < 0x20:
        return ch if ch in "\n\t" else ""
    if 0x7F <= cp < 0xA0:
        return ""
    if cp <= 0xFF:
        return ch
    base = "".join(c for c in unicodedata.normalize("NFKD", ch)
                   if not unicodedata.combining(c) and ord(c) <= 0xFF)
    return base if base else "?"


def normalize(src, out_utf8, out_latin1, max_bytes=None):
    with open(src, "rb") as f:
        raw = f.read()
    text = raw.decode("utf-8", errors="replace").replace("\ufffd", "?")
    cache = {}
    parts = []
    for ch in text:
        r = cache.get(ch)
        if r is None:
            r = cache[ch] = to_latin1_repertoire(ch)
        parts.append(r)
    text = "".join(parts)
    # Trailing blanks and runs of blank lines carry no words.
    text = re.sub(r"[ \t]+\n", "\n", text)
    text = re.sub(r"\n{3,}", "\n\n", text)
    data = text.encode("latin-1")
    if max_bytes is not None and len(data) > max_bytes:
        # Blocks of 40 lines spread evenly over the whole text, so that a
        # small corpus has some of every source in it.
        lines = data.splitlines(keepends=True)
        step = max(40, 40 * len(data) // max_bytes)
        kept = bytearray()
        for i in range(0, len(lines), step):
            block = b"".join(lines[i:i + 40])
            if len(kept) + len(block) > max_bytes:
                break
            kept += block
        data = bytes(kept)
    with open(out_latin1, "wb") as f:
        f.write(data)
    with open(out_utf8, "wb") as f:
        f.write(data.decode("latin-1").encode("utf-8"))


def count(path):
    with open(path, "rb") as f:
        text = f.read().decode("latin-1")
    return sum(1 for _ in WORD_RE.finditer(text))


def read_wordlist(path):
    with open(path, "rb") as f:
        data = f.read().decode("latin-1")
    return [w for w in data.replace("\r", "").split("\n") if w]


def flatdict(wordlist, outdir):
    words = read_wordlist(wordlist)
    os.makedirs(outdir, exist_ok=True)
    # Hunspell's edit-based suggestions try the characters of TRY in order;
    # with no affix file to copy it from, list the word list's own characters
    # from most to least frequent, as dictionary makers do.
    freq = collections.Counter(ch for w in words for ch in w)
    try_chars = "".join(ch for ch, _ in freq.most_common())
    aff = ("# Hunspell dictionary without affix rules: every word of the\n"
           "# list is an entry of its own.\n"
           "SET ISO8859-1\n"
           f"TRY {try_chars}\n"
           "WORDCHARS '\n")
    body = "\n".join(words) + "\n"
    with open(os.path.join(outdir, "flat.aff"), "wb") as f:
        f.write(aff.encode("latin-1"))
    with open(os.path.join(outdir, "flat.dic"), "wb") as f:
        f.write(f"{len(words)}\n{body}".encode("latin-1"))
    with open(os.path.join(outdir, "flat.words"), "wb") as f:
        f.write(body.encode("latin-1"))
    with open(os.path.join(outdir, "wordlist.txt"), "wb") as f:
        f.write(body.encode("latin-1"))
    print(f"{len(words)} words; TRY {try_chars}")


def aspell_files(dict_dir, name):
    path = name if os.path.isabs(name) else os.path.join(dict_dir, name)
    if not path.endswith((".multi", ".rws")):
        path += ".multi"
    if path.endswith(".rws"):
        return [os.path.realpath(path)]
    files = []
    with open(path, encoding="utf-8") as f:
        for line in f:
            parts = line.split()
            if len(parts) == 2 and parts[0] == "add":
                files += aspell_files(dict_dir, parts[1])
    return files


def main(argv):
    if len(argv) >= 5 and argv[1] == "normalize":
        max_bytes = None
        if len(argv) == 7 and argv[5] == "--max-bytes":
            max_bytes = int(argv[6])
        normalize(argv[2], argv[3], argv[4], max_bytes)
    elif len(argv) == 3 and argv[1] == "count":
        print(count(argv[2]))
    elif len(argv) == 4 and argv[1] == "flatdict":
        flatdict(argv[2], argv[3])
    elif len(argv) == 4 and argv[1] == "aspell-files":
        print(":".join(aspell_files(argv[2], argv[3])))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv)

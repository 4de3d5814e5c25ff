#!/bin/sh
# Compares the dynamic symbols that the library defines with the list of
# the public interface. Exits 77 (skipped) where nm is missing.
lib="$1"; expected="$2"
command -v nm >/dev/null 2>&1 || exit 77
actual=$(nm -D --defined-only "$lib" | awk '{print $3}' | grep -v '^_' | sort)
if [ "$actual" != "$(sort "$expected")" ]; then
  echo "exported symbols differ from $expected:"
  printf '%s\n' "$actual" | diff "$expected" - 
  exit 1
fi
echo "exports ok: $(printf '%s\n' "$actual" | wc -l) symbols"

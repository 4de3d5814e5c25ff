#!/usr/bin/env bash
# Installs the build tree into a temporary prefix and builds the embedding
# example against the installed tree twice, with pkg-config and with
# find_package(lxengine), running each. When the tree has lxspell, also
# checks that the installed tool runs and finds its lexicon.
# Usage: run.sh BUILD_DIR SOURCE_DIR LIBDIR CMAKE C_COMPILER [C_FLAGS]
set -euo pipefail
build=$1 src=$2 libdir=$3 cmake=$4 cc=$5 cflags=${6:-}

tmp=$(mktemp -d "${TMPDIR:-/tmp}/lxinstall.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
prefix=$tmp/prefix
fail() { echo "FAIL: $*" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$prefix" >"$tmp/install.log" \
  || { cat "$tmp/install.log"; fail "cmake --install"; }
for f in "$libdir/liblxengine.so" "$libdir/liblxengine.so.0" include/lxengine.h \
         "$libdir/pkgconfig/lxengine.pc" "$libdir/cmake/lxengine/lxengineConfig.cmake" \
         "$libdir/cmake/lxengine/lxengineConfigVersion.cmake"; do
  [ -e "$prefix/$f" ] || fail "$f not installed"
done
[ -L "$prefix/$libdir/liblxengine.so" ] || fail "liblxengine.so is not a link"
if find "$prefix" -name 'liblxcore*' -o -name 'lx_tests' -o -name 'bench_*' | grep -q .; then
  fail "a static library, test or benchmark was installed"
fi

# The README shows the example as it stands.
sed -n '/^```c$/,/^```$/p' "$src/README.md" | sed '1d;$d' >"$tmp/readme.c"
diff -u "$src/examples/embed.c" "$tmp/readme.c" || fail "README.md shows another embed.c"

check_host() { # NAME EXECUTABLE
  "$2" >"$tmp/$1.out" || fail "$1: exit status $?"
  diff -u "$src/tests/install/embed.expected" "$tmp/$1.out" || fail "$1: output differs"
  echo "$1: ok"
}

# The pkg-config way; the run path comes from the library directory it names.
if command -v pkg-config >/dev/null; then
  export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
  [ "$(pkg-config --modversion lxengine)" != "" ] || fail "pkg-config knows no version"
  pc_libdir=$(pkg-config --variable=libdir lxengine)
  # shellcheck disable=SC2046,SC2086
  "$cc" $cflags -std=c11 -Wall -Wextra -Werror "$src/examples/embed.c" -o "$tmp/embed-pc" \
    $(pkg-config --cflags --libs lxengine) -Wl,-rpath,"$pc_libdir" || fail "pkg-config build"
  check_host pkg-config "$tmp/embed-pc"
else
  echo "pkg-config not found: that way is not tried"
fi

# The CMake way: find_package(lxengine) and the imported target.
"$cmake" -S "$src/tests/install/host" -B "$tmp/host" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$cflags" -DEMBED_SOURCE="$src/examples/embed.c" \
  >"$tmp/host.log" 2>&1 || { cat "$tmp/host.log"; fail "find_package(lxengine)"; }
"$cmake" --build "$tmp/host" >>"$tmp/host.log" 2>&1 || { cat "$tmp/host.log"; fail "CMake build"; }
check_host find_package "$tmp/host/embed"

# The tool, if installed: it must run from the prefix alone, with the
# lexicon under share/.
if [ -e "$prefix/bin/lxspell" ]; then
  for f in share/lxspell/en_US.lxc share/man/man1/lxspell.1; do
    [ -e "$prefix/$f" ] || fail "$f not installed"
  done
  out=$(printf 'a sentance\n' | env -u LXSPELL_LEXICON XDG_DATA_HOME="$tmp/xdg" \
        "$prefix/bin/lxspell" list) || [ $? -eq 1 ] || fail "installed lxspell failed"
  [ "$out" = "sentance" ] || fail "installed lxspell listed '$out', not 'sentance'"
  echo "installed lxspell: ok"
fi

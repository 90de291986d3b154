#!/bin/bash
# Installs the build into a scratch prefix and stops a program that uses it in GDB, which is to
# find the printers by the shared library's name.
#
#   gdb_test.sh BUILD_FOLDER LIBDIR
set -euo pipefail
build=$1 libdir=$2
here=$(cd "$(dirname "$0")" && pwd)
if ! command -v gdb >/dev/null || ! gdb -batch -ex 'python print(1)' >/dev/null 2>&1; then
    echo "skipped: no gdb with Python is installed (Debian package gdb)"
    exit 77
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
"${CXX:-g++}" -std=c++17 -g -O0 -I "$prefix/include" "$here/numbers.cpp" -L "$prefix/$libdir" \
    -Wl,-rpath,"$prefix/$libdir" -loci_number -o "$scratch/numbers"

# debuginfod and the user's own settings stay out of it.
gdb -nx -batch -iex 'set debuginfod enabled off' \
    -iex "add-auto-load-safe-path $prefix/share/gdb/auto-load" \
    -iex "add-auto-load-scripts-directory $prefix/share/gdb/auto-load" \
    -ex 'break stop' -ex run -ex up \
    -ex 'print c_number' -ex 'print *pointer' -ex 'print garbage' -ex 'print bad_digit' \
    -ex 'print zeros' -ex 'print values' -ex 'print infinite' -ex 'print line' \
    -ex 'print column' \
    "$scratch/numbers" >"$scratch/output" 2>&1 || true

diff - <(sed -n 's/^\$[0-9]* = //p' "$scratch/output") <<'END' || {
123.45
123.45
no number: cc cc cc cc cc cc cc cc cc cc cc cc cc cc cc cc cc cc cc cc cc cc
no number: 03 c1 02 c8 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
1
{0, -0.25, -100, 12345678901234567890123456789012345678.9, 1E+125, -1.5E-100, -1234567890123456789012345678901234567890}
{~, -~}
{id = 7, amount = 19.99}
std::vector of length 2, capacity 2 = {1, 2.5}
END
    cat "$scratch/output"
    exit 1
}

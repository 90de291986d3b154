#!/bin/bash
# Compiles each published header alone, in each language and standard that it promises, with all
# warnings as errors.
#
#   header_test.sh INCLUDE_FOLDER COMPILER...
#
# The compilers are pairs of a C and a C++ one ("gcc g++"); a pair that is not installed is left
# out, but not the first.
set -euo pipefail
include=$1
use=$(dirname "$0")/use.cpp
shift
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wundef -Werror)
status=0

# check COMPILER LANGUAGE STANDARD SOURCE [FLAG...]
check() {
    "$1" -x "$2" -std="$3" "${warnings[@]}" "${@:5}" -I "$include" -fsyntax-only "$4" || {
        echo "$1 -std=$3 ${*:5} does not take $4" >&2
        status=1
    }
}

first=$1
while [[ $# -gt 0 ]]; do
    cc=$1 cxx=$2
    shift 2
    if [[ $cc != "$first" ]] && ! command -v "$cc" "$cxx" >/dev/null; then
        echo "$cc and $cxx are not installed"
        continue
    fi
    for header in oratypes.h oci.h oci_number_log.h oci_number_column.h oci_number_arrow.h; do
        for standard in c89 c99 c11 c17 c2x; do
            check "$cc" c "$standard" - -Wstrict-prototypes <<<"#include <$header>"
        done
        for standard in c++98 c++11 c++14 c++17 c++20 c++2b; do
            check "$cxx" c++ "$standard" - -Wold-style-cast <<<"#include <$header>"
        done
    done
    for standard in c++17 c++20 c++2b; do
        check "$cxx" c++ "$standard" - <<<'#include <oci_number.hpp>'
        check "$cxx" c++ "$standard" "$use" -Wold-style-cast -Wzero-as-null-pointer-constant
    done
    check "$cxx" c++ c++20 "$use" -O2 -fno-exceptions
done
exit $status

#!/bin/bash
# Runs all tests with counters, and prints which share of the lines and branches of each file of
# src/ they reach. Fails below 98 % of a file's lines. Counts are clang's: a template's line counts
# when one of its instances ran.
#
#   tools/coverage.sh [-DVAR=VALUE ...]
set -euo pipefail
cd "$(dirname "$0")/.."
build=$PWD/build/coverage
tools/install_packages.sh coverage
rm -rf "$build/profiles"
LLVM_PROFILE_FILE=$build/profiles/%8m.profraw ./test coverage -DOCI_NUMBER_BUILD_BENCHMARKS=OFF "$@"
llvm-profdata merge -o "$build/all.profdata" "$build"/profiles/*.profraw

programs=()
for program in "$build"/tests/{,*/}*_tests "$build"/tests/{memory_test,soak} "$build"/src/*.so; do
    [[ ! -x $program ]] || programs+=(-object "$program")
done
llvm-cov report "${programs[@]:1}" -instr-profile="$build/all.profdata" \
    -show-functions=false -show-region-summary=false "$PWD/src" |
    awk 'NF >= 10 && $1 != "Filename" {
        printf "%-45s %6.2f %% of %4d lines  %6.2f %% of %4d branches\n", $1, $7, $5, $10, $8
        if ($7 + 0 < 98) { print "below 98 %: " $1; failed = 1 }
    }
    END { exit failed }'

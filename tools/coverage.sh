#!/bin/bash
# Runs all tests with counters, and prints which share of the lines and branches of each file of
# src/ they reach. Fails below 98 % of a file's lines where no reason is known. Counts are clang's:
# a template's line counts when one of its instances ran.
#
#   tools/coverage.sh [-DVAR=VALUE ...]
set -euo pipefail
cd "$(dirname "$0")/.."
build=$PWD/build/coverage

reasons='
src/oci_calc_number/algebraic/sqrt.cpp      a correction that no operand is known to need
src/oci_calc_number/binary/limbs.h          computed by the compiler; shifts by whole limbs
src/oci_calc_number/elementary/exp.cpp      corrections of the reduction; records that nobody makes
src/oci_calc_number/elementary/hyperbolic.cpp   nothing remains at a width: beyond the operands allowed
src/oci_calc_number/elementary/kernels.h    computed by the compiler
src/oci_calc_number/elementary/ln.cpp       computed by the compiler
src/oci_calc_number/elementary/trig.cpp     nothing remains at a width: beyond the operands allowed
src/oci_handle.cpp                          the end of the process, behind the counters; a race
src/oci_number/round.cpp                    records below the range, which no function leaves
src/oci_number_column/to_bytes.cpp          refusals of keys that their callers make first
src/oci_number_column/window.h              computed by the compiler
src/oci_number/log_int_power.cpp            failures that the engine does not have for these records
src/oci_number/to_real.cpp                  failures that checked texts do not have
src/oci_utils/natural.h                     powers beyond those of the real types
src/oci_utils/power_of_ten.cpp              computed by the compiler
'

tools/install_packages.sh coverage
rm -rf "$build/profiles"
LLVM_PROFILE_FILE=$build/profiles/%8m.profraw ./test coverage -DOCI_NUMBER_BUILD_BENCHMARKS=OFF "$@"
llvm-profdata merge -o "$build/all.profdata" "$build"/profiles/*.profraw

programs=()
for program in "$build"/tests/{,*/}*_tests "$build"/tests/{memory_test,soak} "$build"/src/*.so; do
    [[ ! -x $program ]] || programs+=(-object "$program")
done
llvm-cov report "${programs[@]:1}" -instr-profile="$build/all.profdata" 2>/dev/null |
    awk -v reasons="$reasons" '
        BEGIN {
            count = split(reasons, lines, "\n")
            for (i = 1; i <= count; ++i) {
                name = lines[i]
                sub(/ .*/, "", name)
                sub(/^[^ ]* */, "", lines[i])
                reason[name] = lines[i]
            }
        }
        ($1 ~ /^src\// && $8 > 0) || $1 == "TOTAL" {
            why = $10 + 0 < 98 ? reason[$1] : ""
            printf "%-46s %7s of %4d lines  %7s of %4d branches  %s\n", $1, $10, $8, $13, $11, why
            if ($10 + 0 < 98 && $1 != "TOTAL" && why == "") failed = failed " " $1
            ++files
        }
        END {
            if (files < 10) failed = " counts"
            if (failed != "") { print "too few lines, and no reason:" failed; exit 1 }
        }'

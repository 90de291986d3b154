#!/bin/bash
# Runs the tests of the release build in surroundings on which no result depends: rounding modes,
# flushed denormals, a locale with a comma, one whose i and I are two letters; and under memcheck.
#
#   tools/surroundings.sh                   in each
#   tools/surroundings.sh upward memcheck   in these
set -euo pipefail
cd "$(dirname "$0")/.."
[[ $# -gt 0 ]] || set -- upward downward towardzero flush de_DE.UTF-8 tr_TR.UTF-8 memcheck

tools/install_packages.sh build gcc tool test benchmark
cmake --preset release >/dev/null
cmake --build --preset release -- --quiet

# Other programs' work (compilers, debuggers) is not under test, nor is what examples print of doubles.
others='^(abi|documents|example_(column|moved).*|fault|gdb|headers|install)$'
shim=$PWD/build/release/tests/surroundings/libsurroundings_shim.so
export LOCPATH=$PWD/build/release/tests/locales
for surroundings; do
    SECONDS=0
    if [[ $surroundings == memcheck ]]; then
        log=build/release/memcheck.log
        : >"$log"
        # Its long doubles have 64 bits: results of the tests with reals differ, their memory counts.
        reals=ConversionTraces.Calls:RealConvert.*
        for program in build/release/tests/{,*/}*_tests build/release/tests/memory_test; do
            for filter in "-$reals:HardCases.StackUse" "$reals"; do
                status=0
                valgrind --quiet --error-exitcode=99 --leak-check=full "$program" \
                    --gtest_filter="$filter" >>"$log" 2>&1 || status=$?
                [[ $status -eq 0 || ($status -eq 1 && $filter == "$reals") ]] ||
                    { tail -n 40 "$log"; exit 1; }
            done
        done
        passed=$(grep -c '^\[       OK' "$log")
    else
        log=$(SURROUNDINGS=$surroundings LD_PRELOAD=$shim \
            ctest --preset release -j "$(nproc)" -E "$others") || { tail -n 40 <<<"$log"; exit 1; }
        passed=$(grep -c ' Passed ' <<<"$log")
    fi
    printf '%-12s %4d tests passed, %4d s\n' "$surroundings" "$passed" "$SECONDS"
done

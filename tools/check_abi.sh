#!/bin/bash
# Compares what the shared library offers to programs (functions, their types, symbol versions)
# with what was released.
#
#   tools/check_abi.sh            fails when it differs
#   tools/check_abi.sh --accept   takes what there is for the released state
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install_packages.sh build gcc abi

released=tests/data/liboci_number.abi
build=build/abi
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Debug -DOCI_NUMBER_STATIC=OFF \
    -DOCI_NUMBER_BUILD_TESTS=OFF -DOCI_NUMBER_BUILD_BENCHMARKS=OFF -DOCI_NUMBER_BUILD_TOOL=OFF \
    >/dev/null
cmake --build $build >/dev/null
abidw --headers-dir include --drop-private-types --exported-interfaces-only --no-architecture \
    --no-show-locs --no-parameter-names --no-corpus-path --no-comp-dir-path --type-id-style hash \
    $build/src/liboci_number.so --out-file $build/liboci_number.abi
if [[ ${1-} == --accept ]]; then
    cp $build/liboci_number.abi $released
elif ! abidiff $released $build/liboci_number.abi; then
    echo "What the library offers to programs has changed. A change that old programs take is" \
        "accepted by \"tools/check_abi.sh --accept\"; any other needs a new major version, too." >&2
    exit 1
fi

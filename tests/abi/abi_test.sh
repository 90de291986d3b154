#!/bin/bash
# The shared library and the archive export the listed names and no others, and each public
# header compiles alone, as C99 and as C++, without a warning.
#
#   abi_test.sh SHARED_LIBRARY ARCHIVE EXPORT_LIST INCLUDE_FOLDER
set -euo pipefail
library=$1 archive=$2 list=$3 include=$4

# The version's own name is an absolute symbol.
for names in "nm -D $library" "nm -g $archive"; do
    diff --label listed <(grep -v '^#' "$list" | LC_ALL=C sort) --label "$names" \
        <($names --defined-only | awk '$2 ~ /^[B-Z]$/ { sub(/@.*/, "", $3); print $3 }' |
            LC_ALL=C sort)
done

cd "$include"
for header in *.h; do
    for mode in "$CC -std=c99 -x c" "$CXX -std=c++11 -x c++" "$CXX -std=c++20 -x c++"; do
        read -ra compiler <<<"$mode"
        "${compiler[@]}" -Wall -Wextra -pedantic -Werror -fsyntax-only -I. - <<<"#include \"$header\""
    done
done

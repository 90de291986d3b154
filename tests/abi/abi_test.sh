#!/bin/bash
# The shared library exports the listed names and no others, and each public
# header compiles alone, as C99 and as C++, without a warning.
#
#   abi_test.sh SHARED_LIBRARY EXPORT_LIST INCLUDE_FOLDER
set -euo pipefail
library=$1 list=$2 include=$3

# The version's own name is an absolute symbol.
diff --label listed <(grep -v '^#' "$list" | LC_ALL=C sort) --label exported \
    <(nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' |
        LC_ALL=C sort)

cd "$include"
for header in *.h; do
    for mode in "$CC -std=c99 -x c" "$CXX -std=c++11 -x c++" "$CXX -std=c++20 -x c++"; do
        read -ra compiler <<<"$mode"
        "${compiler[@]}" -Wall -Wextra -pedantic -Werror -fsyntax-only -I. - <<<"#include \"$header\""
    done
done

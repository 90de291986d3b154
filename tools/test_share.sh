#!/bin/bash
# Prints how many lines of tests stand beside a hundred lines of other code, and fails
# above the number given as argument. Blank lines, test data and generated tables
# do not count, nor do fuzz targets.
#
#   tools/test_share.sh 33
set -euo pipefail
cd "$(dirname "$0")/.."

lines() { git ls-files -z "$@" ':!*.inc' | xargs -0 cat | grep -c '[^[:space:]]'; }

tests=$(lines tests python/tests ':!tests/data')
code=$(lines src include tools examples bench python ':!python/tests' ':!python/requirements.txt')
share=$((100 * tests / code))
echo "$tests lines of tests, $code lines of code: $share %"
if [[ $((100 * tests)) -gt $(($1 * code)) ]]; then
    echo "more than $1 %" >&2
    exit 1
fi

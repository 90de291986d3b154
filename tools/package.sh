#!/bin/bash
# Makes the Debian packages and the source archive in build/package.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install_packages.sh build gcc tool reference package

build=build/package
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DOCI_NUMBER_DEBIAN=ON -DOCI_NUMBER_REFERENCE=ON -DOCI_NUMBER_BUILD_TESTS=OFF -DOCI_NUMBER_BUILD_BENCHMARKS=OFF
cmake --build $build
rm -f $build/*.deb $build/*.tar.gz
(cd $build && cpack && cpack --config CPackSourceConfig.cmake)
rm -rf $build/_CPack_Packages
ls $build/*.deb $build/*.tar.gz

#!/bin/bash
# Installs the build tree into a scratch prefix, checks what landed where, and
# builds and runs consumers of it.
#
#   install_test.sh BUILD_FOLDER LIBDIR VERSION [INSTALLED_TOOL]
#
# CMAKE_GENERATOR, CC, CXX, CFLAGS and CXXFLAGS are taken from the environment.
set -euo pipefail
build=$1 libdir=$2 version=$3 tool=${4-}
source=$(cd "$(dirname "$0")/consumer" && pwd)
exports=$source/../../../cmake/exports.txt
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null

# The configuration's name is part of one file's name.
diff <(LC_ALL=C sort <<<"include/oci.h
include/oci_number.hpp
include/oci_number_arrow.h
include/oci_number_column.h
include/oci_number_log.h
include/oratypes.h
$libdir/cmake/oci_number/oci_number-config-version.cmake
$libdir/cmake/oci_number/oci_number-config.cmake
$libdir/cmake/oci_number/oci_number_targets-CONFIG.cmake
$libdir/cmake/oci_number/oci_number_targets.cmake
$libdir/liboci_number.a
$libdir/liboci_number.so
$libdir/liboci_number.so.${version%%.*}
$libdir/liboci_number.so.$version
$libdir/pkgconfig/oci_number.pc
share/gdb/auto-load$prefix/$libdir/liboci_number.so.$version-gdb.py${tool:+
$tool
share/bash-completion/completions/ocinumber
share/fish/vendor_completions.d/ocinumber.fish
share/man/man1/ocinumber.1
share/zsh/site-functions/_ocinumber}") \
    <(cd "$prefix" && find . ! -type d ! -path './share/doc/*' \
        ! -name 'ocinumber-*.1' ! -path './share/man/man3/*' -printf '%P\n' |
        sed 's/targets-.*\.cmake/targets-CONFIG.cmake/' | LC_ALL=C sort)
diff <(printf '%s\n' CHANGELOG.md CONTRIBUTING.md LICENSE README.md SECURITY.md docs examples) \
    <(cd "$prefix/share/doc/oci_number" && LC_ALL=C ls -I reference)

# A manual page for every function that programs may call.
for function in $(grep -v '^#' "$exports"); do
    [[ ! -d $prefix/share/man/man3 || -f $prefix/share/man/man3/$function.3 ]] || {
        echo "no manual page of $function was installed" >&2
        exit 1
    }
done

# No text file of the installed package names the place that it was built in.
if grep -rlIF -e "$build" -e "$(dirname "$(dirname "$(dirname "$source")")")" "$prefix"; then
    echo "these files name the build's folders" >&2
    exit 1
fi

needs() { readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'; }

for language in C CXX; do
    cmake -S "$source" -B "$scratch/$language" -DLANGUAGES=$language \
        -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
    cmake --build "$scratch/$language" >/dev/null
    (cd "$scratch/$language" && ctest --output-on-failure --no-tests=error -Q) || {
        echo "find_package consumer in $language failed" >&2
        exit 1
    }
done
for binary in "$prefix/$libdir/liboci_number.so" "$scratch/C/use_number_static"; do
    if needs "$binary" | grep -E 'libstdc\+\+|libc\+\+|libgcc'; then
        echo "$binary needs the C++ runtime" >&2
        exit 1
    fi
done
if needs "$scratch/C/use_number_static" | grep oci_number; then
    echo "oci::number_static links the shared library" >&2
    exit 1
fi

# Where the flags say the same for a tree that was moved.
mv "$prefix" "$prefix-moved"
prefix=$prefix-moved
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
[[ $(pkg-config --modversion oci_number) == "$version" ]]
warnings=(-Wall -Wextra -pedantic -Werror)
read -ra shared <<<"$(pkg-config --cflags --libs oci_number)"
read -ra static <<<"$(pkg-config --static --cflags --libs oci_number)"
read -ra cflags <<<"${CFLAGS-}"
read -ra cxxflags <<<"${CXXFLAGS-}"
cd "$source"
"$CC" "${cflags[@]}" -std=c99 "${warnings[@]}" consumer.c "${shared[@]}" -o "$scratch/c_shared"
"$CC" "${cflags[@]}" -std=c99 "${warnings[@]}" consumer.c "${static[@]}" -static -o "$scratch/c_static"
"$CXX" "${cxxflags[@]}" "${warnings[@]}" consumer.cpp "${shared[@]}" -o "$scratch/cxx_shared"
"$CXX" "${cxxflags[@]}" "${warnings[@]}" consumer.cpp "${static[@]}" -static -o "$scratch/cxx_static"
for program in c_shared c_static cxx_shared cxx_static; do
    LD_LIBRARY_PATH=$prefix/$libdir "$scratch/$program" || {
        echo "pkg-config consumer $program failed" >&2
        exit 1
    }
done

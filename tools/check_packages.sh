#!/bin/bash
# Makes the packages, installs them into an empty folder, looks for every document, builds and runs
# the examples against what landed there by pkg-config and find_package, and as parts of other
# projects by add_subdirectory and FetchContent, builds the source archive in another folder to the
# same bytes, looks at how the files were built, and removes the packages again.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
tools/install_packages.sh check_packages
tools/package.sh >/dev/null
packages=(build/package/*.deb)
consumer=$root/tests/install/consumer examples=$root/examples

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
    echo "check_packages: $*" >&2
    exit 1
}

lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs --allow-root "${packages[@]}"

# What they depend on is the machine's; the folder has no database of its own for that.
tree=$scratch/tree
mkdir -p "$tree"/var/lib/dpkg/{info,updates,triggers}
touch "$tree"/var/lib/dpkg/{status,available}
installed() { find "$tree" -path "$tree/var" -prune -o ! -type d -print; }
as_root=()
[[ $(id -u) -eq 0 ]] || as_root=(sudo)
dpkg_tree() { "${as_root[@]}" dpkg --root="$tree" --log=/dev/null --force-depends --force-script-chrootless "$@" >/dev/null 2>&1; }
dpkg_tree --install "${packages[@]}" || fail "dpkg does not install the packages"
[[ $(installed | wc -l) -gt 30 ]] || fail "few files were installed"

# The documents: what the README's links lead to, and the reference, in which no function is missing.
for file in README.md docs/moving.md docs/plots/overview-dark.svg examples/invoice.c reference/index.html; do
    [[ -s $tree/usr/share/doc/oci_number/$file ]] || fail "the documents have no $file"
done
for function in $(grep -v '^#' cmake/exports.txt); do
    page=$tree/usr/share/man/man3/$function.3.gz
    [[ -s $page ]] || fail "$function has no manual page"
    # The functions of one comment share a page; the others' names only lead there.
    if ! zgrep -q '^\.so ' "$page"; then
        warnings=$(LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null)
        [[ -z $warnings ]] || fail "the manual page of $function: $warnings"
    fi
    grep -rq "$function" "$tree"/usr/share/doc/oci_number/reference/group*.html ||
        fail "the reference has no $function"
done
if grep -rlF "$root" "$tree/usr/share/doc" "$tree/usr/share/man"; then
    fail "these documents name the folder that they were built in"
fi

libdir=$(dirname "$(find "$tree/usr" -name liboci_number.so)")
LD_LIBRARY_PATH=$libdir "$tree/usr/bin/ocinumber" encode 1 >/dev/null || fail "the installed tool does not run"

# pkg-config; what compilers search anyway is left out of its flags.
export PKG_CONFIG_LIBDIR=$libdir/pkgconfig
[[ $(pkg-config --cflags --libs oci_number | xargs) == -loci_number ]] ||
    fail "pkg-config says '$(pkg-config --cflags --libs oci_number)'"
for example in invoice.c column.c invoice.cpp column.cpp moved.cpp; do
    compiler=(c++ -std=c++17)
    [[ $example == *.cpp ]] || compiler=(cc -std=c99)
    "${compiler[@]}" -I"$tree/usr/include" "$examples/$example" -L"$libdir" \
        $(pkg-config --libs oci_number) -lm -o "$scratch/by_pkg_config"
    LD_LIBRARY_PATH=$libdir "$scratch/by_pkg_config" |
        cmp - "$examples/expected/${example%.*}.txt" || fail "$example by pkg-config fails"
done

# find_package
cmake -S "$consumer" -B "$scratch/by_find_package" -DLANGUAGES=C \
    -DCMAKE_PREFIX_PATH="$tree/usr" >/dev/null
cmake --build "$scratch/by_find_package" >/dev/null
(cd "$scratch/by_find_package" && ctest -Q --no-tests=error) ||
    fail "the programs by find_package fail"
cmake -S "$examples" -B "$scratch/examples" -DCMAKE_PREFIX_PATH="$tree/usr" >/dev/null
cmake --build "$scratch/examples" -j "$(nproc)" >/dev/null
(cd "$scratch/examples" && ctest -Q --no-tests=error) || fail "the examples by find_package fail"

# A part of another project, from the source archive, with the examples: nothing but the library is
# built, nothing is installed, and the project's own settings stay.
tar -xzf build/package/oci-number-*.tar.gz -C "$scratch"
mkdir "$scratch/parent"
cat >"$scratch/parent/CMakeLists.txt" <<'EOF'
cmake_minimum_required(VERSION 3.22)
project(parent LANGUAGES C CXX)
if(ARCHIVE)
  include(FetchContent)
  FetchContent_Declare(oci_number URL ${ARCHIVE})
  FetchContent_MakeAvailable(oci_number)
else()
  add_subdirectory(${FOLDER} oci_number)
endif()
foreach(variable CMAKE_BUILD_TYPE CMAKE_C_FLAGS CMAKE_CXX_FLAGS)
  if(NOT "${${variable}}" STREQUAL "")
    message(FATAL_ERROR "${variable} has become '${${variable}}'")
  endif()
endforeach()
add_subdirectory(${EXAMPLES} examples)
add_executable(use_static ${CONSUMER})
target_link_libraries(use_static PRIVATE oci::number_static)
EOF
for way in -DFOLDER="$(echo "$scratch"/oci-number-*)" -DARCHIVE="$(echo "$PWD"/build/package/*.tar.gz)"; do
    parent=$scratch/parent/build${way%%=*}
    cmake -S "$scratch/parent" -B "$parent" -DCONSUMER="$consumer/consumer.c" -DEXAMPLES="$examples" \
        "$way" >/dev/null
    cmake --build "$parent" -j "$(nproc)" >/dev/null
    "$parent/use_static" && (cd "$parent/examples" && ctest -Q --no-tests=error) ||
        fail "the programs of the parent project fail (${way%%=*})"
    if find "$parent" -path '*-src' -prune -o \
        \( -name 'ocinumber' -o -name '*_tests' -o -name 'bench_*' \) -print | grep .; then
        fail "more than the library was built for the parent project (${way%%=*})"
    fi
    if find "$parent" -path "$parent/examples" -prune -o -name cmake_install.cmake -print0 |
        xargs -0 grep -l 'file(INSTALL'; then
        fail "the library installs itself with the parent project (${way%%=*})"
    fi
done

# A distribution's wish for large pieces does no harm; no tests are wanted, and ctest runs none
# without a word.
cmake -S "$scratch"/oci-number-* -B "$scratch/unity" -DCMAKE_UNITY_BUILD=ON \
    -DOCI_NUMBER_BUILD_TESTS=OFF -DOCI_NUMBER_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$scratch/unity" -j "$(nproc)" >/dev/null || fail "a unity build fails"
(cd "$scratch/unity" && ctest -Q) || fail "ctest fails where there are no tests"

# Another folder, the same bytes.
cmake -S "$scratch"/oci-number-* -B "$scratch/again" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX=/usr -DOCI_NUMBER_DEBIAN=ON -DOCI_NUMBER_REFERENCE=ON \
    -DOCI_NUMBER_BUILD_TESTS=OFF -DOCI_NUMBER_BUILD_BENCHMARKS=OFF -DOCI_NUMBER_BUILD_TOOL=OFF >/dev/null
cmake --build "$scratch/again" >/dev/null
for file in src/liboci_number.so src/liboci_number.a; do
    cmp "build/package/$file" "$scratch/again/$file" || fail "two builds of $file differ"
done
diff -r build/package/reference/html "$scratch/again/reference/html" &&
    diff -r build/package/reference/man3 "$scratch/again/reference/man3" ||
    fail "two builds of the reference differ"

# Hardening, on the files as they are shipped.
library=$libdir/liboci_number.so.0
for file in "$library" "$tree/usr/bin/ocinumber"; do
    dynamic=$(readelf -dW "$file") segments=$(readelf -lW "$file")
    symbols=$(readelf -sW --dyn-syms "$file")
    grep -q 'BIND_NOW\|FLAGS.*NOW' <<<"$dynamic" || fail "$file binds its names late"
    grep -q GNU_RELRO <<<"$segments" || fail "$file has writable tables"
    grep -q 'GNU_STACK.* RW ' <<<"$segments" || fail "$file has an executable stack"
    ! grep -q TEXTREL <<<"$dynamic" || fail "$file relocates its code"
    grep -q __stack_chk_fail <<<"$symbols" || fail "$file has no stack guard"
done
# The C library's start files are not marked for it, so the linker does not mark the library.
if [[ $(uname -m) == x86_64 ]]; then
    grep -A1 '<OCINumberAdd.*>:' <<<"$(objdump -d "$library")" | grep -q endbr64 ||
        fail "$library is called without a mark for indirect jumps"
fi
grep -q '_chk@' <<<"$(readelf -sW --dyn-syms "$library")" || fail "$library has no checked functions"

dpkg_tree --purge ocinumber oci-number-doc liboci-number-gdb liboci-number-dev liboci-number0 ||
    fail "dpkg does not remove the packages"
[[ -z $(installed) ]] || fail "these files stayed: $(installed)"
echo "The packages install, serve and leave."

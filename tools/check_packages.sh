#!/bin/bash
# Makes the packages, installs them into an empty folder, builds and runs a program against what
# landed there by pkg-config, find_package and as a part of another project, builds the source
# archive in another folder to the same bytes, looks at how the files were built, and removes the
# packages again.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
tools/install_packages.sh pkg-config lintian binutils
tools/package.sh >/dev/null
packages=(build/package/*.deb)
consumer=$root/tests/install/consumer

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

libdir=$(dirname "$(find "$tree/usr" -name liboci_number.so)")
LD_LIBRARY_PATH=$libdir "$tree/usr/bin/ocinumber" encode 1 >/dev/null || fail "the installed tool does not run"

# pkg-config; what compilers search anyway is left out of its flags.
export PKG_CONFIG_LIBDIR=$libdir/pkgconfig
[[ $(pkg-config --cflags --libs oci_number | xargs) == -loci_number ]] ||
    fail "pkg-config says '$(pkg-config --cflags --libs oci_number)'"
cc -std=c99 -I"$tree/usr/include" "$consumer/consumer.c" -L"$libdir" -loci_number -o "$scratch/by_pkg_config"
LD_LIBRARY_PATH=$libdir "$scratch/by_pkg_config" || fail "the program by pkg-config fails"

# find_package
cmake -S "$consumer" -B "$scratch/by_find_package" -DLANGUAGES=C \
    -DCMAKE_PREFIX_PATH="$tree/usr" >/dev/null
cmake --build "$scratch/by_find_package" >/dev/null
(cd "$scratch/by_find_package" && ctest -Q --no-tests=error) ||
    fail "the programs by find_package fail"

# A part of another project, from the source archive: nothing but the library is built, nothing is
# installed, and the project's own settings stay.
tar -xzf build/package/oci-number-*.tar.gz -C "$scratch"
mkdir "$scratch/parent"
cat >"$scratch/parent/CMakeLists.txt" <<'EOF'
cmake_minimum_required(VERSION 3.22)
project(parent LANGUAGES C CXX)
add_subdirectory(${OCI_NUMBER} oci_number)
foreach(variable CMAKE_BUILD_TYPE CMAKE_C_FLAGS CMAKE_CXX_FLAGS)
  if(NOT "${${variable}}" STREQUAL "")
    message(FATAL_ERROR "${variable} has become '${${variable}}'")
  endif()
endforeach()
add_executable(use_shared ${CONSUMER})
target_link_libraries(use_shared PRIVATE oci::number)
add_executable(use_static ${CONSUMER})
target_link_libraries(use_static PRIVATE oci::number_static)
EOF
cmake -S "$scratch/parent" -B "$scratch/parent/build" -DCONSUMER="$consumer/consumer.c" \
    -DOCI_NUMBER="$(echo "$scratch"/oci-number-*)" >/dev/null
cmake --build "$scratch/parent/build" -j "$(nproc)" >/dev/null
"$scratch/parent/build/use_shared" && "$scratch/parent/build/use_static" ||
    fail "the programs of the parent project fail"
if find "$scratch/parent/build" -name 'ocinumber' -o -name '*_tests' -o -name 'bench_*' | grep .; then
    fail "more than the library was built for the parent project"
fi
[[ ! -s $scratch/parent/build/oci_number/cmake_install.cmake ]] ||
    ! grep -q 'file(INSTALL' "$scratch"/parent/build/oci_number/{,src/}cmake_install.cmake ||
    fail "the library installs itself with the parent project"

# Another folder, the same bytes.
cmake -S "$scratch"/oci-number-* -B "$scratch/again" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX=/usr -DOCI_NUMBER_BUILD_TESTS=OFF -DOCI_NUMBER_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$scratch/again" >/dev/null
for file in src/liboci_number.so src/liboci_number.a tools/number_tool/ocinumber; do
    cmp "build/package/$file" "$scratch/again/$file" || fail "two builds of $file differ"
done

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

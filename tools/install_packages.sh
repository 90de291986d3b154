#!/bin/bash
# Installs what is missing of the named groups of tools/packages.txt. Says nothing
# when all is there; otherwise apt-get's output goes to standard error.
#
#   tools/install_packages.sh build gcc test
set -euo pipefail
list=$(dirname "$0")/packages.txt

packages=()
for group in "$@"; do
    members=$(sed -n "s/^$group  *//p" "$list")
    if [[ -z $members ]]; then
        echo "$list has no group \"$group\"" >&2
        exit 1
    fi
    packages+=($members)
done

# Of a package that is installed for several architectures, this machine's counts.
missing=()
for package in "${packages[@]}"; do
    architecture=$(dpkg --print-architecture)
    [[ $package != *:* ]] || architecture=${package#*:}
    dpkg-query -W -f='${Architecture} ${db:Status-Status}\n' "$package" 2>/dev/null |
        grep -qE "^($architecture|all) installed$" || missing+=("$package")
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

as_root=()
if [[ $(id -u) -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
        echo "missing packages: ${missing[*]}; install them as root: apt-get install ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
echo "Installing ${missing[*]}" >&2
# Of another architecture, "name:architecture".
for package in "${missing[@]}"; do
    [[ $package != *:* ]] || "${as_root[@]}" dpkg --add-architecture "${package#*:}"
done
"${as_root[@]}" apt-get update -q </dev/null >&2
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "${missing[@]}" </dev/null >&2

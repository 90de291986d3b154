#!/bin/bash
# Runs the README's commands on a bare Debian 12: each command in a root of its
# own that holds only what Debian always has and the committed sources, so that
# a package that a script uses but does not name is found missing.
#
#   tools/bare_root.sh                       ./run, ./test, ./test clang, and the installation
#   tools/bare_root.sh ./test './test asan'  these commands
#
# Needs root and some 3 GB in the folder for temporary files; needs no more of
# the machine than its network and its Debian sources.
set -euo pipefail
cd "$(dirname "$0")/.."
installation='
    tools/install_packages.sh build gcc tool
    cmake --preset release -DOCI_NUMBER_BUILD_TESTS=OFF -DOCI_NUMBER_BUILD_BENCHMARKS=OFF
    cmake --build --preset release
    cmake --install build/release --prefix /usr/local
    ldconfig
    ocinumber encode 1'
[[ $# -gt 0 ]] || set -- ./run ./test './test clang' "set -e; $installation"

tools/install_packages.sh bare_root

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# The machine's own mirror and proxy, where it has them.
mirrors=()
for file in /etc/apt/sources.list /etc/apt/sources.list.d/debian.sources; do
    if grep -qsw bookworm "$file"; then mirrors+=("$file"); fi
done
apt-config dump | grep -E '^Acquire::(http|https)::Proxy' >"$scratch/proxy" || true
settings=(PATH=/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root)
for name in http_proxy https_proxy no_proxy; do
    if [[ -n ${!name-} ]]; then settings+=("$name=${!name}"); fi
done

mmdebstrap --quiet --variant=minbase --aptopt="$scratch/proxy" bookworm "$scratch/bare.tar" "${mirrors[@]}"

# /proc and terminals are mounted in a mount namespace of the command's own: it goes when
# the command ends, and with it whatever the command left running.
run_in_bare_root() {
    local root=$scratch/root
    mkdir "$root"
    tar -xf "$scratch/bare.tar" -C "$root"
    cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
    mkdir "$root/sources"
    git archive HEAD | tar -x -C "$root/sources"
    unshare --fork --pid --kill-child --mount-proc="$root/proc" \
        chroot "$root" env -i "${settings[@]}" bash -c "
            mkdir -p /dev/pts
            mount -t devpts -o newinstance,ptmxmode=0666 devpts /dev/pts
            ln -sf pts/ptmx /dev/ptmx
            cd /sources && $1" </dev/null
    rm -rf "$root"
}

report=()
for command in "$@"; do
    printf '\n==== %s\n' "$command"
    SECONDS=0
    run_in_bare_root "$command"
    report+=("$command: $SECONDS s")
done
printf '\n==== passed on a bare root\n'
printf '%s\n' "${report[@]}"

#!/usr/bin/env bash
# Installs the Debian packages the host build, tests and VM runner need; does nothing when all are there.
set -euo pipefail

packages=(
    cmake ninja-build g++ clang llvm libclang-rt-14-dev ccache python3
    libgtest-dev libgmock-dev googletest libbenchmark-dev linux-libc-dev
    qemu-system-x86 busybox-static cpio aidl
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
echo "setup: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null

#!/usr/bin/env bash
# Builds everything and runs every test: the normal build (unit, in-process and multi-process tests on the
# real binder driver in a VM), then ASan+UBSan and TSan builds of the suites they are meant for, then
# a short libFuzzer run of each fuzzer (TPS_FUZZ_SECONDS each, default 20).
# Usage: tools/test.sh [--quick]   (--quick: normal build only)
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh

quick=0
[ "${1:-}" = "--quick" ] && quick=1
jobs=$(nproc)

build() {  # build DIR [cmake args...]
    local dir=$1; shift
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
    cmake --build "$dir" -j "$jobs"
}

build build
ctest --test-dir build --output-on-failure -j "$jobs"

if [ $quick -eq 0 ]; then
    build build-asan -DTPS_SANITIZER=address
    ctest --test-dir build-asan --output-on-failure -j "$jobs" -LE nosan
    build build-tsan -DTPS_SANITIZER=thread
    ctest --test-dir build-tsan --output-on-failure -j "$jobs" -L concurrency
    # The corpus replays ran in both builds above; this explores past them for a short while.
    fuzz/run-fuzzers.sh "${TPS_FUZZ_SECONDS:-20}"
fi

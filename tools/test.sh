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

build() {  # build DIR [cmake -D args...] [--target TARGET...]
    local dir=$1; shift
    local defs=() targets=()
    while [ $# -gt 0 ] && [ "$1" != --target ]; do defs+=("$1"); shift; done
    [ $# -gt 0 ] && { shift; targets=(--target "$@"); }
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${defs[@]}" >/dev/null
    cmake --build "$dir" -j "$jobs" "${targets[@]}"
}

build build
ctest --test-dir build --output-on-failure -j "$jobs"

if [ $quick -eq 0 ]; then
    build build-asan -DTPS_SANITIZER=address
    LSAN_OPTIONS="suppressions=$PWD/tests/lsan-suppressions.txt:print_suppressions=0" \
        ctest --test-dir build-asan --output-on-failure -j "$jobs" -LE nosan
    # Only the suites labelled "concurrency" run under TSan, so only their programs are built.
    build build-tsan -DTPS_SANITIZER=thread --target aidl_tests service_concurrency_tests \
        multiprocess_driver_tests multiprocess_tests servicemanager
    ctest --test-dir build-tsan --output-on-failure -j "$jobs" -L concurrency
    # The corpus replays ran in both builds above; this explores past them for a short while.
    fuzz/run-fuzzers.sh "${TPS_FUZZ_SECONDS:-20}"
fi

#!/usr/bin/env bash
# Builds the libFuzzer binaries with Clang (ASan+UBSan, coverage on all project code) in build-fuzz
# and runs each for a bounded time. New inputs and crash artifacts go to a temporary folder; the
# checked-in corpus is only read. Exits non-zero when any fuzzer finds a crash, leak or timeout.
# Usage: fuzz/run-fuzzers.sh [SECONDS per fuzzer, default 20]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-20}
build=build-fuzz
fuzzers=(param config_file parcel tps_callback tps)

CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTPS_FUZZ=ON -DTPS_SANITIZER=address \
    -DCMAKE_C_FLAGS=-fsanitize=fuzzer-no-link -DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link >/dev/null
cmake --build "$build" -j 2 --target "${fuzzers[@]}"

out=$(mktemp -d /tmp/tps-fuzz-XXXXXX)
echo "new inputs and artifacts: $out"
failed=0
summary=""
for name in "${fuzzers[@]}"; do
    binary=$(find "$build/fuzz" -maxdepth 2 -type f -name "$name" -perm -u+x | head -n 1)
    corpus=$(find fuzz -type d -path "*/corpus/$name" | head -n 1)
    mkdir -p "$out/$name"
    echo "== $name (${seconds}s)"
    status=0
    "$binary" "$out/$name" "$corpus" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 \
        -print_final_stats=1 -artifact_prefix="$out/$name-" >"$out/$name.log" 2>&1 || status=$?
    execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$out/$name.log")
    found=$(find "$out" -mindepth 1 -maxdepth 1 -name "$name-*" | wc -l)
    grep -E "^(INFO: *[0-9]+ files found|#[0-9]+ +DONE)" "$out/$name.log" || true
    if [ "$status" -ne 0 ]; then
        failed=1
        grep -m 20 -E "ERROR|SUMMARY|runtime error|==[0-9]+==" "$out/$name.log" || true
    fi
    summary+=$(printf '%-14s execs %-10s findings %s (exit %s)' "$name" "${execs:-?}" "$found" \
        "$status")$'\n'
done

echo
printf '%s' "$summary"
[ "$failed" -eq 0 ] || echo "crash inputs are in $out; add each to the fuzzer's corpus once fixed"
exit "$failed"

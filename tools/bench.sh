#!/usr/bin/env bash
# Builds the benchmarks in Release (build-bench) and runs every one that exists: the in-process
# service benchmark, the in-process binder round trip, and, in the binder VM, the driver round trip
# and the system figures of the service process (memory, fan-out, sensor event to visible lux).
# Usage: tools/bench.sh [--quick]   (--quick: short runs, for checking that everything still runs)
set -euo pipefail
cd "$(dirname "$0")/.."

dir=build-bench
min_time=0.5
vm_calls=
system_args=()
if [ "${1:-}" = "--quick" ]; then
    min_time=0.01
    vm_calls=200
    system_args=(--quick)
fi

cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
targets=()
for target in bench_service bench_binder driver_bench system_bench; do
    if ninja -C "$dir" -t targets all 2>/dev/null | grep -q "^$target:"; then
        targets+=("$target")
    fi
done
[ ${#targets[@]} -gt 0 ] || { echo "no benchmark targets configured" >&2; exit 1; }
cmake --build "$dir" -j 2 --target "${targets[@]}"

for target in "${targets[@]}"; do
    echo
    echo "=== $target"
    case $target in
        bench_service) "$dir/bench/service/bench_service" --benchmark_min_time="$min_time" ;;
        bench_binder) "$dir/bench/binder/bench_binder" --benchmark_min_time="$min_time" ;;
        driver_bench)
            # The host kernel has no binder driver; the runner boots one.
            tools/vm/run-in-vm --smp 2 --timeout 600 -- "$PWD/$dir/bench/driver/driver_bench" \
                $vm_calls ;;
        system_bench)
            # One CPU: under emulation a wake-up across CPUs waits for the host to schedule the
            # other CPU's thread, which swamps the figures on a loaded machine.
            echo "host load average: $(cut -d' ' -f1-3 /proc/loadavg)"
            tools/vm/run-in-vm --smp 1 --timeout 900 -- "$PWD/$dir/bench/system/system_bench" \
                "${system_args[@]}" ;;
    esac
done

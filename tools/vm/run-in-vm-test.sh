#!/usr/bin/env bash
# Checks tools/vm/run-in-vm: what the guest looks like, what comes back (output, status) and what
# happens when things go wrong. Three VM boots plus a few native runs.
set -uo pipefail

runner=$(cd "$(dirname "$0")" && pwd -P)/run-in-vm
work=$(mktemp -d "${TMPDIR:-/tmp}/run-in-vm-test.XXXXXX")
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

expect_eq() {  # what expected actual
    [ "$2" = "$3" ] || fail "$1: expected [$2], got [$3]"
}

expect_grep() {  # what pattern file
    grep -qE -- "$2" "$3" || { fail "$1: no line matching /$2/ in:"; sed 's/^/    /' "$3"; }
}

# --- Boot 1: device nodes, the writable layout, environment, working directory, output channels.
mkdir -p "$work/cwd dir" "$work/shared"
cat >"$work/setup.sh" <<'EOF'
mkdir -p /odm/etc/tavix /vendor/etc /data/vendor /sys/class/backlight/panel0-backlight
echo cfg >/odm/etc/tavix/tavix_prism_clstc.cfg
echo 255 >/sys/class/backlight/panel0-backlight/max_brightness
EOF
cat >"$work/check.sh" <<'EOF'
set -e
for dev in binder hwbinder vndbinder; do
    [ -c /dev/$dev ] && echo "char /dev/$dev"
done
echo "cwd $(pwd)"
echo "env [$TPS_RUNNER_TEST] [$EXTRA] [${UNPASSED-unset}]"
echo "odm $(cat /odm/etc/tavix/tavix_prism_clstc.cfg)"
echo "backlight $(cat /sys/class/backlight/panel0-backlight/max_brightness)"
touch /vendor/etc/x /data/vendor/x /usr/overlay-write && echo "overlay writable"
grep -q '^binder state:' /sys/kernel/debug/binder/state && echo "debugfs state"
# Host mount points share inode numbers; the guest must still tell /proc from /sys.
[ "$(readlink /proc/self/exe)" = "$(command -v readlink)" ] && echo "procfs"
echo "uid $(id -u)"
echo from-guest >"$SHARED/out.txt"
printf 'err line\n' >&2
printf 'no newline at end'
EOF
(
    cd "$work/cwd dir" &&
    TPS_RUNNER_TEST="it's a \"quoted\" \$value" UNPASSED=1 \
        "$runner" --timeout 300 --setup "$work/setup.sh" --env EXTRA=extra \
        --env SHARED="$work/shared" --rw "$work/shared" -- sh "$work/check.sh"
) >"$work/out" 2>"$work/err"
expect_eq "boot 1 status" 0 $?
for dev in binder hwbinder vndbinder; do
    expect_grep "device node" "^char /dev/$dev$" "$work/out"
done
expect_grep "working directory" "^cwd $work/cwd dir$" "$work/out"
expect_grep "environment" "^env \[it's a \"quoted\" \\\$value\] \[extra\] \[unset\]$" "$work/out"
expect_grep "setup script ran first" "^odm cfg$" "$work/out"
expect_grep "backlight tmpfs" "^backlight 255$" "$work/out"
expect_grep "overlay" "^overlay writable$" "$work/out"
expect_grep "debugfs" "^debugfs state$" "$work/out"
expect_grep "procfs" "^procfs$" "$work/out"
expect_grep "root" "^uid 0$" "$work/out"
expect_eq "last partial line" "no newline at end" "$(tail -c 17 "$work/out")"
expect_eq "stderr alone on its channel" "err line" "$(cat "$work/err")"
grep -q $'\r' "$work/out" "$work/err" && fail "carriage returns in the output"
expect_eq "rw share" from-guest "$(cat "$work/shared/out.txt" 2>/dev/null)"
[ -e /usr/overlay-write ] && fail "a guest write reached the host's /usr"

# --- Boot 2: the command's failure status comes back; nothing else is printed.
"$runner" --timeout 300 -- sh -c 'echo partial; exit 3' >"$work/out" 2>"$work/err"
expect_eq "exit status" 3 $?
expect_eq "stdout of a failing command" partial "$(cat "$work/out")"
expect_eq "stderr of a failing command" "" "$(cat "$work/err")"

# --- Boot 3: a run over its time limit is killed and says so.
"$runner" --timeout 4 -- sleep 600 >"$work/out" 2>"$work/err"
expect_eq "timeout status" 124 $?
expect_grep "timeout message" "timed out after 4 s" "$work/err"

# --- Native runs share the job script: setup failures, signals, environment filtering.
export TPS_VM=native
"$runner" --setup /bin/false -- true >"$work/out" 2>"$work/err"
expect_eq "failed setup status" 125 $?
expect_grep "failed setup message" "setup script failed" "$work/err"
"$runner" -- sh -c 'kill -KILL $$' 2>/dev/null
expect_eq "killed command status" 137 $?
TPS_A=a OTHER=b "$runner" -- sh -c 'echo "${TPS_A-}${OTHER-}"' >"$work/out"
expect_eq "native environment" a "$(cat "$work/out")"
"$runner" --bogus -- true 2>/dev/null
expect_eq "bad option status" 125 $?

if [ $failures -ne 0 ]; then
    echo "$failures check(s) failed"
    exit 1
fi
echo "all checks passed"

#!/usr/bin/env bash
# End-to-end demo of TPS on the real binder driver.
#
#   tools/demo.sh           build, start the system and run a short narrated session
#   tools/demo.sh --shell   build, start the system and give you a prompt inside it (tpsctl ...)
#
# The system runs where a binder driver exists: inside the project's VM (tools/vm/run-in-vm) on a
# host without /dev/binder, natively (as root, in a private mount namespace) on one that has it.
# It lays out a configuration file under /odm/etc/tavix/, two panels' backlight nodes, a
# persisted picture mode and a VINTF fragment, then starts servicemanager, sensord playing a lux
# trace, and vendor.tavix.tps-service. TPS_BUILD_DIR picks the build tree (default: build).
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
build=${TPS_BUILD_DIR:-$root/build}
mode=narrate

case ${1:-} in
    "") ;;
    --shell) mode=shell ;;
    -h | --help)
        sed -n '2,11s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
        exit 0
        ;;
    *)
        echo "demo: unknown argument '$1' (try --help)" >&2
        exit 2
        ;;
esac
[ $# -le 1 ] || { echo "demo: one argument at most (try --help)" >&2; exit 2; }

"$root/tools/setup.sh"

echo "demo: building the service, tpsctl, servicemanager and sensord in $build"
cmake -S "$root" -B "$build" -G Ninja >/dev/null
cmake --build "$build" -j "$(nproc)" --target vendor.tavix.tps-service tpsctl servicemanager \
    sensord | grep -v '^\[' || true
[ -x "$build/service/vendor.tavix.tps-service" ] || { echo "demo: build failed" >&2; exit 1; }

color=0
[ -t 1 ] && color=1
export TPS_DEMO_SRC=$root TPS_DEMO_BUILD=$build TPS_DEMO_COLOR=$color
runner=("$root/tools/vm/run-in-vm" --timeout 900)
if [ -c /dev/binder ] && [ "${TPS_VM:-auto}" != vm ]; then
    echo "demo: this host has /dev/binder; running natively"
else
    echo "demo: booting the binder VM (a few seconds)"
fi

if [ $mode = narrate ]; then
    exec "${runner[@]}" -- "$root/tools/demo/session.sh"
fi

# --shell: the VM's console is not interactive, so commands travel through a shared folder. Line
# editing and history happen here; Ctrl-C interrupts the command running inside.
relay=$(mktemp -d "${TMPDIR:-/tmp}/tps-demo-XXXXXX")
vm_pid=""
finish() {
    touch "$relay/quit"
    [ -n "$vm_pid" ] && wait "$vm_pid" 2>/dev/null
    rm -rf "$relay"
}
trap finish EXIT
export TPS_DEMO_RELAY=$relay
"${runner[@]}" --rw "$relay" -- "$root/tools/demo/session.sh" &
vm_pid=$!

until [ -e "$relay/ready" ]; do
    kill -0 "$vm_pid" 2>/dev/null || { echo "demo: the system did not start" >&2; exit 1; }
    sleep 0.2
done
history_file=${XDG_STATE_HOME:-$HOME/.local/state}/tps-demo-history
mkdir -p "$(dirname "$history_file")"
history -r "$history_file" 2>/dev/null || true
n=1
while :; do
    sleep 0.3  # let the last command's output arrive before the prompt
    IFS= read -r -e -p "tps> " line || { echo; break; }
    [ -n "${line//[[:space:]]/}" ] || continue
    [ "$line" = exit ] && break
    history -s "$line"
    history -w "$history_file" 2>/dev/null || true
    printf '%s\n' "$line" >"$relay/.cmd"
    mv "$relay/.cmd" "$relay/cmd.$n"
    trap 'touch "$relay/intr.$n"' INT
    until [ -e "$relay/done.$n" ]; do
        kill -0 "$vm_pid" 2>/dev/null || { echo "demo: the system has stopped" >&2; exit 1; }
        sleep 0.1
    done
    trap - INT
    n=$((n + 1))
done

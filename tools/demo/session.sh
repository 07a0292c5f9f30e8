#!/usr/bin/env bash
# The demo's guest side: runs as root where /dev/binder exists (inside the binder VM, or natively
# in a private mount namespace). Lays out the device files, starts servicemanager, sensord and the
# service, then narrates a short session, or with TPS_DEMO_RELAY serves tools/demo.sh --shell.
#
# Environment: TPS_DEMO_SRC (source tree), TPS_DEMO_BUILD (build tree), TPS_DEMO_COLOR (1 for
# colours), TPS_DEMO_RELAY (the --shell relay folder, shared with the host).
set -euo pipefail

src=${TPS_DEMO_SRC:?}
build=${TPS_DEMO_BUILD:?}

# Natively, keep the layout out of the host: a private mount namespace with tmpfs over the
# device paths, undone when the demo ends.
if [ ! -d /run/tps-vm ] && [ -z "${TPS_DEMO_NAMESPACE:-}" ]; then
    [ "$(id -u)" -eq 0 ] || { echo "demo: running natively needs root" >&2; exit 1; }
    TPS_DEMO_NAMESPACE=1 exec unshare --mount --propagation private "$0" "$@"
fi
if [ -n "${TPS_DEMO_NAMESPACE:-}" ]; then
    for dir in /odm /vendor /data /sys/class/backlight /sys/class/leds; do
        mkdir -p "$dir"
        mount -t tmpfs demo "$dir"
    done
fi

export TPS_PROPERTY_DIR=/data/property
export PATH=$build/tools/tpsctl:$PATH
work=/data/tps-demo
mkdir -p "$work" "$TPS_PROPERTY_DIR"

if [ "${TPS_DEMO_COLOR:-0}" = 1 ]; then
    bold=$'\e[1m' dim=$'\e[2m' cyan=$'\e[36m' green=$'\e[32m' reset=$'\e[0m'
else
    bold="" dim="" cyan="" green="" reset=""
fi

step() { printf '\n%s== %s%s\n' "$bold" "$*" "$reset"; }
say() { printf '%s\n' "$*" | fold -s -w 96 | sed 's/ *$//; s/^/   /'; }
# Shows a command line, runs it and indents what it prints.
show() {
    printf '   %s$ %s%s\n' "$cyan" "$1" "$reset"
    bash -c "$1" 2>&1 | sed 's/^/     /'
}

pids=()
stop_pid() {
    local pid=$1 i
    kill -TERM "$pid" 2>/dev/null || return 0
    for ((i = 0; i < 30; i++)); do
        kill -0 "$pid" 2>/dev/null || return 0
        sleep 0.1
    done
    kill -KILL "$pid" 2>/dev/null || true
}
cleanup() {
    local i
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do stop_pid "${pids[i]}"; done
}
trap cleanup EXIT

# Starts a daemon in the background with its output in $work/NAME.log.
start() {
    local name=$1; shift
    "$@" >>"$work/$name.log" 2>&1 &
    pids+=($!)
    eval "pid_${name//[^a-z]/_}=$!"
}

wait_for_log() {  # FILE TEXT
    local i
    for ((i = 0; i < 200; i++)); do
        grep -q -- "$2" "$1" 2>/dev/null && return 0
        sleep 0.1
    done
    echo "demo: '$2' never appeared in $1:" >&2
    cat "$1" >&2
    exit 1
}

lay_out_device() {
    mkdir -p /odm/etc/tavix /vendor/etc/vintf/manifest
    cp "$src/tools/demo/tavix_prism_clstc.cfg" /odm/etc/tavix/
    cp "$src/service/vendor.tavix.tps-service.xml" /vendor/etc/vintf/manifest/
    cp "$src/tools/demo/sensorservice-manifest.xml" /vendor/etc/vintf/manifest/
    local panel value
    for panel in 0 1; do
        mkdir -p "/sys/class/backlight/panel$panel-backlight"
        echo 1023 >"/sys/class/backlight/panel$panel-backlight/max_brightness"
    done
    echo 512 >/sys/class/backlight/panel0-backlight/brightness
    echo 300 >/sys/class/backlight/panel1-backlight/brightness
    # The property store keeps one file per property; an earlier run left mode 1.
    printf 1 >"$TPS_PROPERTY_DIR/persist.vendor.tavixp.mode"
}

start_service() {
    start service "$build/service/vendor.tavix.tps-service"
    tpsctl --timeout 20 version >/dev/null
}

start_system() {
    lay_out_device
    start servicemanager "$build/tools/servicemanager/servicemanager" \
        --vintf-dir /vendor/etc/vintf/manifest
    wait_for_log "$work/servicemanager.log" "ready on"
    start sensord "$build/tools/sensord/sensord" --trace "$src/tools/demo/lux-trace.csv"
    start_service
}

narrate() {
    step "1. The device"
    say "Laid out as on a phone (this is a tmpfs view; the host is not touched):"
    say "  /odm/etc/tavix/tavix_prism_clstc.cfg   BLUMode = 0, displays 0 and 1"
    say "  /sys/class/backlight/panel0-backlight  brightness 512 of max_brightness 1023"
    say "  /sys/class/backlight/panel1-backlight  brightness 300 of max_brightness 1023"
    say "  persist.vendor.tavixp.mode = 1         kept from an earlier run"
    say "  /vendor/etc/vintf/manifest/            declares vendor.tavix.tps.ITps/default"
    say "Running: servicemanager (the binder context manager), sensord (a light sensor playing" \
        "tools/demo/lux-trace.csv: 320 lux, then a window at 3200 lux) and the service."
    show 'tpsctl version'

    step "2. A watcher registers a callback"
    say "It prints every notification the service sends, with the time it arrived."
    printf '   %s$ tpsctl watch &%s\n' "$cyan" "$reset"
    mkfifo "$work/watcher"
    sed -u "s/^/     ${green}watcher |${reset} /" <"$work/watcher" &
    tpsctl watch >"$work/watcher" 2>&1 &
    pids+=($!)
    sleep 1

    step "3. The status before any processor"
    say "No sensor session is open, so the service reports what it has stored: brightness 255," \
        "lux 0, and the picture mode read from its property at start."
    show 'tpsctl status'

    step "4. A display processor starts work, with filtering"
    say "The processor sends register_TPDPUProcessor=1: one render, logo and sensor session." \
        "The first render and logo sessions notify every client; the first sensor session" \
        "creates the reader, which enables the light sensor and reads the panel0 backlight node."
    show "tpsctl set 'register_TPDPUProcessor=1'"
    sleep 1

    step "5. Lux rises through the filter, brightness comes from the node"
    say "A second watcher polls the status every 500 ms. 5 s after the sensor was enabled its" \
        "lux jumps from 320 to 3200; the filtered lux follows in the perceptual domain, about half the" \
        "remaining way per second. No client has set a brightness, so with BLUMode 0 it is" \
        "read from the node: 512 x 255 / 1023 = 127."
    show 'timeout --preserve-status -s INT 9 tpsctl watch --status-interval 500'

    step "6. The panel driver and then a client change the brightness"
    say "The node goes to 1023 (full): the filtered brightness climbs towards 255 with" \
        "every query. Then a client sets brightness=40, which BLUMode 0 prefers to the node."
    show 'echo 1023 > /sys/class/backlight/panel0-backlight/brightness'
    show 'for i in 1 2 3 4; do tpsctl get brightness; done'
    show "tpsctl set 'brightness=40'"
    show 'for i in 1 2 3 4; do tpsctl get brightness; done'

    step "7. The processor stops"
    say "The last render and logo sessions close and the clients hear the stops. The second" \
        "watcher has exited: its notification fails and the service drops it."
    show "tpsctl set 'Unregister_TPDPUProcessor'"
    sleep 1
    show "grep -a 'transaction fail' $work/service.log"

    step "8. The picture mode survives a restart"
    show "tpsctl set 'pqMode=2'"
    show "cat $TPS_PROPERTY_DIR/persist.vendor.tavixp.mode; echo"
    say "(restarting the service: the first watcher sees it die and stops)"
    kill "$pid_service"
    wait "$pid_service" 2>/dev/null || true
    start_service
    show 'tpsctl get pqMode'

    step "9. The service's own log"
    say "Tag TavixPrismAIDLService at log level 2 (persist.vendor.tavix.loglevel); the lines" \
        "around the stop and the restart:"
    grep -a "TavixPrismAIDLService" "$work/service.log" | tail -n 12 | cut -c 1-150 |
        sed "s/^/     ${dim}/; s/\$/${reset}/"

    step "Done"
    say "Try it by hand: tools/demo.sh --shell"
}

# The --shell relay: the host writes cmd.N into the shared folder, we run it and write done.N;
# intr.N asks to interrupt the running command, quit ends the session.
serve_relay() {
    local relay=$TPS_DEMO_RELAY n=1 pid
    say "System up: servicemanager, sensord (lux trace), vendor.tavix.tps-service."
    say "tpsctl is on PATH (tpsctl --help). Service log: $work/service.log. Type exit to leave."
    touch "$relay/ready"
    while :; do
        while [ ! -e "$relay/cmd.$n" ] && [ ! -e "$relay/quit" ]; do sleep 0.1; done
        [ -e "$relay/cmd.$n" ] || break
        setsid bash -c "$(cat "$relay/cmd.$n")" </dev/null 2>&1 &
        pid=$!
        while kill -0 "$pid" 2>/dev/null; do
            if [ -e "$relay/intr.$n" ]; then
                kill -INT -- "-$pid" 2>/dev/null || true
                rm -f "$relay/intr.$n"
            fi
            sleep 0.1
        done
        wait "$pid" || true
        touch "$relay/done.$n"
        n=$((n + 1))
    done
}

start_system
if [ -n "${TPS_DEMO_RELAY:-}" ]; then
    serve_relay
else
    narrate
fi

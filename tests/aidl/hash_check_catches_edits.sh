#!/usr/bin/env bash
# Runs aidl/check-api-hash.sh on edited copies of the aidl folder: each edit must make it fail,
# and the untouched copy must pass.
# Usage: hash_check_catches_edits.sh AIDL_DIR
set -euo pipefail

source_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fresh_copy() {
    rm -rf "$work/aidl"
    mkdir -p "$work/aidl"
    cp -r "$source_dir/aidl_api" "$source_dir/vendor" "$source_dir/include" \
        "$source_dir/check-api-hash.sh" "$work/aidl/"
}

expect_failure() {  # expect_failure DESCRIPTION
    if "$work/aidl/check-api-hash.sh" "$work/aidl" >/dev/null 2>&1; then
        echo "FAIL: the check passed after: $1"
        exit 1
    fi
    echo "ok: caught $1"
}

frozen=aidl_api/vendor.tavix.tps/1/vendor/tavix/tps
current=aidl_api/vendor.tavix.tps/current/vendor/tavix/tps

fresh_copy
"$work/aidl/check-api-hash.sh" "$work/aidl" >/dev/null

fresh_copy
echo "" >> "$work/aidl/$frozen/ITpsCallback.aidl"
cp "$work/aidl/$frozen/ITpsCallback.aidl" "$work/aidl/$current/ITpsCallback.aidl"
expect_failure "a changed frozen file"

fresh_copy
sed -i 's/void unregisterProcessor();/void unregisterProcessor(in int id);/' \
    "$work/aidl/$current/ITps.aidl"
expect_failure "current/ drifting from the frozen version"

fresh_copy
sed -i 's/^}$/    void reset();\n}/' "$work/aidl/vendor/tavix/tps/ITps.aidl"
expect_failure "a method added to the source only"

fresh_copy
sed -i 's/hash = "[0-9a-f]*"/hash = "0000000000000000000000000000000000000000"/' \
    "$work/aidl/include/aidl/vendor/tavix/tps/ITpsCallback.h"
expect_failure "a header with a stale hash"

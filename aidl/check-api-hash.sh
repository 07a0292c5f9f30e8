#!/usr/bin/env bash
# Checks the frozen AIDL snapshots under aidl_api/ the way the Android build does, plus the links to
# the hand-kept NDK sources that the Android build would otherwise generate:
#   1. each aidl_api/<module>/<N>/.hash ends with the hash recomputed from that snapshot;
#   2. aidl_api/<module>/current/ equals the newest frozen version (the interface is frozen);
#   3. the newest snapshot declares the same methods as the .aidl sources;
#   4. every interface header under include/aidl/ carries the newest hash.
# Usage: check-api-hash.sh [AIDL_DIR]   (default: the folder holding this script)
# Prints one line per problem and exits 1 if there is any.
set -euo pipefail

root=$(cd "${1:-$(dirname "$0")}" && pwd)
failures=0

fail() {
    echo "check-api-hash: $*" >&2
    failures=$((failures + 1))
}

# The frozen-API hash: SHA-1 over the sha1sum lines of the snapshot's files in C-locale path order,
# followed by the previous version number, or "latest-version" for version 1.
api_hash() {  # api_hash DIR VERSION
    local dir=$1 version=$2 tail_line
    if [ "$version" -gt 1 ]; then tail_line=$((version - 1)); else tail_line=latest-version; fi
    (cd "$dir" && find ./ -name "*.aidl" -print0 | LC_ALL=C sort -z | xargs -0 sha1sum &&
        echo "$tail_line") | sha1sum | cut -d " " -f 1
}

# Method declarations of one .aidl file, one per line, comments and annotations dropped, types
# unqualified and whitespace collapsed, so a source file and its dump compare equal.
methods_of() {  # methods_of FILE
    sed -e 's://.*$::' "$1" | tr '\n' ' ' |
        sed -e 's:/\*\([^*]\|\*\+[^*/]\)*\*\+/: :g' |
        sed -e 's/^[^{]*{//' -e 's/}[^}]*$//' -e 's/@[A-Za-z]*//g' |
        tr ';' '\n' |
        sed -e 's/[A-Za-z_][A-Za-z0-9_]*\.//g' -e 's/[[:space:]]\+/ /g' -e 's/^ //' -e 's/ $//' \
            -e 's/ *( */(/' -e 's/ *) */)/' -e 's/ *, */, /g' |
        grep -v '^$' || true
}

found_module=0
for module_dir in "$root"/aidl_api/*/; do
    [ -d "$module_dir" ] || continue
    found_module=1
    module=$(basename "$module_dir")
    latest=0
    for version_dir in "$module_dir"*/; do
        version=$(basename "$version_dir")
        [[ $version =~ ^[0-9]+$ ]] || continue
        [ "$version" -gt "$latest" ] && latest=$version
        if [ ! -s "$version_dir/.hash" ]; then
            fail "$module/$version: missing .hash"
            continue
        fi
        recorded=$(tail -n 1 "$version_dir/.hash")
        computed=$(api_hash "$version_dir" "$version")
        if [ "$recorded" != "$computed" ]; then
            fail "$module/$version: .hash says $recorded but the snapshot hashes to $computed"
        fi
    done
    if [ "$latest" -eq 0 ]; then
        fail "$module: no frozen version"
        continue
    fi
    latest_dir="$module_dir$latest"
    latest_hash=$(tail -n 1 "$latest_dir/.hash" 2>/dev/null || true)

    if [ -d "$module_dir/current" ]; then
        if ! diff -r -q -x .hash "$module_dir/current" "$latest_dir" >/dev/null; then
            fail "$module: current/ differs from frozen version $latest"
        fi
    else
        fail "$module: missing current/"
    fi

    while IFS= read -r -d '' dumped; do
        relative=${dumped#"$latest_dir"/}
        source_file="$root/$relative"
        if [ ! -f "$source_file" ]; then
            fail "$module/$latest: $relative has no source file"
            continue
        fi
        if [ "$(methods_of "$source_file")" != "$(methods_of "$dumped")" ]; then
            fail "$module/$latest: $relative declares other methods than its source"
        fi
        header="$root/include/aidl/${relative%.aidl}.h"
        if [ ! -f "$header" ]; then
            fail "$module/$latest: no NDK header ${header#"$root"/}"
        elif ! grep -q "hash = \"$latest_hash\"" "$header"; then
            fail "$module/$latest: ${header#"$root"/} does not carry hash $latest_hash"
        fi
    done < <(find "$latest_dir" -name "*.aidl" -print0)
done

[ $found_module -eq 1 ] || fail "no module under $root/aidl_api"
if [ $failures -ne 0 ]; then
    exit 1
fi
echo "check-api-hash: ok"

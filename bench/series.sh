#!/bin/bash
# Measures extraction by the archive reader, unzip, bsdtar and 7z over payloads that grow: in megabytes, and in files. A
# figure of it is drawn by bench/figure.sh.
#
#   bench/series.sh [--runs N] [--program FILE] >TABLE
#
# Prints a line "megabytes|files N TOOL SECONDS" a measurement, the median of N runs (3) in which the tools take turns.
# Needs about 5 GB of memory or disk below TMPDIR.
set -euo pipefail
cd -- "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/.."
source bench/common.sh

runs=3 program=
while (($# > 0)); do
    case "$1" in
        --runs) runs=${2:?} ;;
        --program) program=$(realpath -- "${2:?}") ;;
        *) die "unknown option $1" ;;
    esac
    shift 2
done
[[ -n $program ]] || program=$(build_release "build bench" extract_bench)/bench/extract_bench
work=$(mktemp -d "${TMPDIR:-/tmp}/kalmo-bench.XXXXXX")
trap 'rm -rf -- "$work"' EXIT

measure() { # KIND NUMBER: the payload in $work/in
    local -A seconds=()
    local run tool clock
    rm -f "$work/payload.zip"
    # -fz: more than 65535 entries need the Zip64 records.
    (cd "$work/in" && zip -q -X -fz -r ../payload.zip .)
    for ((run = 0; run <= runs; run++)); do
        for tool in kalmo "${OTHERS[@]}"; do
            rm -rf "$work/out"
            mkdir "$work/out"
            command=("$program" extract "$work/payload.zip" "$work/out")
            command_of "$tool" "$work/payload.zip" "$work/out"
            read -r clock _ < <(cost_of "${command[@]}") || exit 2
            ((run == 0)) || seconds[$tool]+=" $clock" # the first round warms the caches
        done
    done
    for tool in kalmo "${OTHERS[@]}"; do
        # shellcheck disable=SC2086 # a list of numbers
        echo "$1 $2 $tool $(median ${seconds[$tool]})"
    done
    rm -rf "$work/out"
}

# The largest payload is the ones before it, side by side: there are not that many programs on a machine.
for megabytes in 10 30 100 300; do
    rm -rf "$work/in"
    make_real_payload "$work/in" "$megabytes"
    measure megabytes "$megabytes"
done
mv "$work/in" "$work/300"
for copies in 3 7; do
    mkdir -p "$work/in"
    for ((copy = 1; copy <= copies; copy++)); do
        [[ -e $work/in/$copy ]] || cp -r "$work/300" "$work/in/$copy"
    done
    measure megabytes "$((300 * copies))"
done
rm -rf "$work/in" "$work/300"

# Files of 1 to 8 KiB, each a piece of a program.
find /usr/bin /usr/lib -type f -size +100k -size -1000k 2>/dev/null | sort | sed -n 1,300p | xargs cat >"$work/pieces"
for files in 10 100 1000 10000 100000; do
    mkdir -p "$work/in"
    python3 - "$work" "$files" <<'END'
import os, sys
work, files = sys.argv[1], int(sys.argv[2])
with open(work + "/pieces", "rb") as pieces:
    data = pieces.read()
for n in range(files):
    folder = f"{work}/in/{n // 1000}"
    if n % 1000 == 0:
        os.makedirs(folder, exist_ok=True)
    start = n * 4099 % (len(data) - 8192)
    with open(f"{folder}/{n}", "wb") as file:
        file.write(data[start:start + 1024 + n * 37 % 7169])
END
    measure files "$files"
    rm -rf "$work/in"
done

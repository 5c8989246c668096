#!/bin/bash
# Measures the archive reader side by side with unzip, bsdtar and 7z, all in one run on one payload.
#
#   bench/extract.sh [--runs N] [--megabytes N] [--program FILE]
#
# The payload is a ZIP of this machine's own programs and libraries, at least 500 MB of them unless --megabytes
# says otherwise, made in a folder below TMPDIR that is removed at the end. Each tool extracts it N times (5),
# the tools taking turns; the median counts. --program takes an extract_bench that is built already.
# Exit status: 0 every target is met, 1 one is missed, 2 the measurement could not be made.
set -euo pipefail
cd -- "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/.."
source bench/common.sh

# The targets: our time as a part of theirs, peak memory in KiB, growth of opening and of a lookup when the
# entries grow tenfold. Linear is 10 and quadratic 100; a large directory no longer fits the processor's
# caches, which alone makes it 10 to 18.
declare -A MAX_OF=([unzip]=0.35 [bsdtar]=0.62 [7z]=0.50)
MAX_MEMORY=16384 MAX_OPEN_GROWTH=20 MAX_LOOKUP_GROWTH=1.5

runs=5 megabytes=500 program=
while (($# > 0)); do
    case "$1" in
        --runs) runs=${2:?} ;;
        --megabytes) megabytes=${2:?} ;;
        --program) program=$(realpath -- "${2:?}") ;;
        *) die "unknown option $1" ;;
    esac
    shift 2
done

if [[ -z $program ]]; then
    program=$(build_release "build bench" extract_bench)/bench/extract_bench
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/kalmo-bench.XXXXXX")
trap 'rm -rf -- "$work"' EXIT

run_once() { # TOOL
    local command=("$program" extract "$work/payload.zip" "$work/out")
    rm -rf -- "$work/out"
    mkdir -- "$work/out"
    command_of "$1" "$work/payload.zip" "$work/out"
    cost_of "${command[@]}"
}

echo "making the payload of ${megabytes} MB ..." >&2
make_real_payload "$work/in" "$megabytes"
(cd "$work/in" && zip -q -r ../payload.zip .)
declare -A seconds processor memory
tools=(kalmo "${OTHERS[@]}")
for ((run = 0; run <= runs; run++)); do
    for tool in "${tools[@]}"; do
        read -r clock used kib < <(run_once "$tool") || exit 2
        # The first round warms the caches and is checked rather than counted.
        if ((run == 0)); then
            diff -r "$work/in" "$work/out" >&2 || die "$tool extracted something else"
            memory[$tool]=$kib
            continue
        fi
        seconds[$tool]+=" $clock" processor[$tool]+=" $used"
        ((kib <= memory[$tool])) || memory[$tool]=$kib
    done
done

# shellcheck disable=SC2086 # lists of numbers
median_of() { median ${seconds[$1]}; }
files=$(find "$work/in" -type f | wc -l)
printf '%s files, %s bytes, as ZIP %s bytes; median of %s\n' "$files" "$(du -bs "$work/in" | cut -f1)" \
    "$(stat -c %s "$work/payload.zip")" "$runs"
printf '%-8s %9s %12s %10s %12s\n' tool seconds "kalmo takes" processor "peak KiB"
for tool in "${tools[@]}"; do
    # shellcheck disable=SC2086
    printf '%-8s %9s %12s %10s %12s\n' "$tool" "$(median_of "$tool")" \
        "$(ratio "$(median_of kalmo)" "$(median_of "$tool")") of it" "$(median ${processor[$tool]})" "${memory[$tool]}"
done
for tool in "${OTHERS[@]}"; do
    at_most "$(ratio "$(median_of kalmo)" "$(median_of "$tool")")" "${MAX_OF[$tool]}" "time as a part of $tool's"
done
at_most "${memory[kalmo]}" "$MAX_MEMORY" "peak memory in KiB"

rm -rf -- "$work/in" "$work/out" "$work/payload.zip"
echo
printf '%8s %14s %16s\n' entries "open seconds" "lookup seconds"
for entries in 10000 100000; do
    mkdir -- "$work/many"
    (cd "$work/many" && seq -f 'program-%08.0f' "$entries" | xargs touch)
    # -fz: more than 65535 entries need the Zip64 records.
    (cd "$work/many" && zip -q -X -fz -r "$work/many.zip" .)
    open=1000 lookup=1000
    for ((run = 0; run < 2 * runs; run++)); do
        read -r count opened looked < <("$program" open "$work/many.zip") || die "cannot open $entries entries"
        open=$(lesser "$open" "$opened") lookup=$(lesser "$lookup" "$looked")
    done
    printf '%8s %14s %16s\n' "$count" "$open" "$lookup"
    if ((entries == 10000)); then
        first_open=$open first_lookup=$lookup
    else
        at_most "$(awk -v a="$open" -v b="$first_open" 'BEGIN { printf "%.2f", a / b }')" "$MAX_OPEN_GROWTH" \
            "growth of opening from 10000 to 100000 entries"
        at_most "$(awk -v a="$lookup" -v b="$first_lookup" 'BEGIN { printf "%.2f", a / b }')" "$MAX_LOOKUP_GROWTH" \
            "growth of a lookup from 10000 to 100000 entries"
    fi
    rm -rf -- "$work/many" "$work/many.zip"
done
exit "$missed"

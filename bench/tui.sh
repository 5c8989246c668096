#!/bin/bash
# Measures the screen: what a key costs, in bytes sent to the terminal and in time until the program waits for the
# next one, and how long the directory chooser takes to list 10,000 directories.
#
#   bench/tui.sh [--program FILE]
#
# The keys are pressed in the gallery at an emulated terminal of 80 by 24, so the times include the emulator.
# --program takes a tui_bench that is built already.
# Exit status: 0 every target is met, 1 one is missed, 2 the measurement could not be made.
set -euo pipefail
start=$PWD
cd -- "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/.."
source bench/common.sh

# The targets: bytes of a key that changes a line or two, of one that scrolls a list, and the time of filling the
# chooser as a multiple of reading and sorting alone.
MAX_BYTES=300 MAX_BYTES_SCROLLING=600 MAX_FILLING=2.0

program=
while (($# > 0)); do
    case "$1" in
        --program) program=$(cd "$start" && realpath -e -- "${2:?}") || exit 2 ;;
        *) die "unknown option $1" ;;
    esac
    shift 2
done

if [[ -z $program ]]; then
    program=$(build_release build tui_bench)/bench/tui_bench
fi

# A file system in memory where there is one: the disk is not what is measured.
[[ -d /dev/shm && -w /dev/shm ]] && TMPDIR=/dev/shm
work=$(mktemp -d "${TMPDIR:-/tmp}/kalmo-bench.XXXXXX")
trap 'rm -rf -- "$work"' EXIT

(cd "$work" && seq -f 'd%.0f' 10001 20000 | xargs mkdir)

measured=$("$program" keys "$work") || die "cannot measure the keys"
printf '%-26s %10s %12s %12s\n' key "bytes" "median ms" "longest ms"
while IFS=$'\t' read -r name bytes median longest; do
    printf '%-26s %10s %12s %12s\n' "$name" "$bytes" "$(awk "BEGIN { printf \"%.2f\", 1000 * $median }")" \
        "$(awk "BEGIN { printf \"%.2f\", 1000 * $longest }")"
    limit=$MAX_BYTES
    [[ $name != *scrolls ]] || limit=$MAX_BYTES_SCROLLING
    at_most "$bytes" "$limit" "bytes of $name"
done <<<"$measured"

IFS=$'\t' read -r reading filling < <("$program" fill "$work") || die "cannot fill the chooser"
ratio=$(awk "BEGIN { printf \"%.2f\", $filling / $reading }")
echo
echo "10,000 directories: reading and sorting $reading s, filling the chooser $filling s, $ratio times as long"
at_most "$ratio" "$MAX_FILLING" "filling the chooser as a multiple of reading and sorting"
exit "$missed"

#!/bin/bash
# Fuzzes: builds the targets and runs each for a while, then keeps the fewest inputs that reach what was reached.
#
#   fuzz/run.sh SECONDS [TARGET...]       targets are named as in fuzz/corpus; all of them without one
#
# New inputs and findings are kept in build/fuzz/. Exit status: 0 when nothing was found.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:?usage: fuzz/run.sh SECONDS [TARGET...]}
shift
if (($# == 0)); then
    mapfile -t all < <(ls fuzz/corpus)
    set -- "${all[@]}"
fi
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${@/#/fuzz_}"
found=0
for target; do
    program=build/fuzz/fuzz/fuzz_$target
    kept=fuzz/corpus/$target
    new=build/fuzz/new/$target
    fewest=build/fuzz/fewest/$target
    mkdir -p "$new" "build/fuzz/found/$target"
    if ! nice -n 19 "$program" -max_total_time="$seconds" -timeout=20 -malloc_limit_mb=64 -max_len=8192 \
            -artifact_prefix="build/fuzz/found/$target/" "$new" "$kept"; then
        echo "FOUND: see build/fuzz/found/$target"
        found=1
        continue
    fi
    rm -rf "$fewest"
    mkdir -p "$fewest"
    "$program" -set_cover_merge=1 -use_counters=0 "$fewest" "$kept" "$new"
    rm -f "$kept"/*
    cp "$fewest"/* "$kept"
done
exit $found

#!/bin/bash
# The checks that take too long for check.sh, one after the other, on this machine with nothing else to do.
#
#   tools/soak.sh              every step; prints a line each, exits with 1 when one failed
#   tools/soak.sh NAME...      only these
#   tools/soak.sh --list       their names and how long they take on two cores
set -u
cd "$(dirname "$0")/.." || exit 1

machine=tests/machine/machine
logs=build/soak
wanted=" $* "
failed=()

# step NAME MINUTES COMMAND...
step() {
    local name=$1 minutes=$2 start=$SECONDS
    shift 2
    if [[ $wanted == *" --list "* ]]; then
        printf '%-24s %4d min\n' "$name" "$minutes"
        return
    fi
    [[ $wanted == "  " || $wanted == *" $name "* ]] || return
    if "$@" >"$logs/$name.log" 2>&1; then
        printf 'ok      %-24s %5d s of about %d min\n' "$name" $((SECONDS - start)) "$minutes"
    else
        printf 'FAILED  %-24s %5d s\n' "$name" $((SECONDS - start))
        tail -n 60 "$logs/$name.log" | sed 's/^/        /'
        failed+=("$name")
    fi
}

build() { cmake --preset "$1" && cmake --build --preset "$1" --target "${@:2}"; }

# sweep KILL_OR_ERROR KIND BUILD WHICH: faults at the calls of an installation, an upgrade and an uninstallation.
sweep() {
    build "$3" payload_current payload_next &&
        "$machine" "$2" -- /usr/bin/python3 tests/faults/sweep.py \
            "$1" "$PWD/build/$3/payload/current" "$PWD/build/$3/payload/next" "$4"
}

# fuzz TARGET MINUTES: what is found new stays in build/soak/TARGET, the corpus as it is.
fuzz() {
    mkdir -p "$logs/$1" && build fuzz "$1" &&
        build/fuzz/fuzz/"$1" -max_total_time=$(($2 * 60)) -artifact_prefix="$logs/$1/" "$logs/$1" "fuzz/corpus/${1#fuzz_}"
}

[[ $wanted == *" --list "* ]] || { tools/install_packages.sh check && mkdir -p "$logs"; } || exit 1

step kill_sysv 5 sweep kill sysv release all
step kill_systemd 15 sweep kill systemd release all
step kill_sanitized 30 sweep kill sysv dev 200
step error_sysv 30 sweep error sysv release all
step error_systemd 60 sweep error systemd release all
for source in fuzz/fuzz_*.cpp; do
    name=$(basename "$source" .cpp)
    step "$name" 31 fuzz "$name" 30
done

if ((${#failed[@]} > 0)); then
    echo "FAILED: ${failed[*]}"
    exit 1
fi

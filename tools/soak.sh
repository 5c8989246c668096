#!/bin/bash
# The checks that take too long for check.sh, or download, one after the other, on this machine with nothing else to do.
#
#   tools/soak.sh              every step; prints a line each, exits with 1 when one failed
#   tools/soak.sh NAME...      only these
#   tools/soak.sh --list       their names and how long they take on two cores
set -u
cd "$(dirname "$0")/.." || exit 1

machine=testkit/machine
logs=build/soak
wanted=" $* "
ran=0
failed=()

# step NAME MINUTES COMMAND...
step() {
    local name=$1 minutes=$2 start=$SECONDS
    shift 2
    if [[ $wanted == *" --list "* ]]; then
        printf '%-24s %4d min\n' "$name" "$minutes"
        ran=1
        return
    fi
    [[ $wanted == "  " || $wanted == *" $name "* ]] || return
    ran=$((ran + 1))
    if "$@" >"$logs/$name.log" 2>&1; then
        printf 'ok      %-24s %5d s of about %d min\n' "$name" $((SECONDS - start)) "$minutes"
    else
        printf 'FAILED  %-24s %5d s\n' "$name" $((SECONDS - start))
        tail -n 60 "$logs/$name.log" | sed 's/^/        /'
        failed+=("$name")
    fi
}

# sweep KILL_OR_ERROR KIND BUILD WHICH: faults at the calls of an installation, an upgrade and an uninstallation.
sweep() {
    cmake --preset "$3" && cmake --build --preset "$3" --target payload_current payload_next &&
        "$machine" "$2" -- /usr/bin/python3 tests/faults/sweep.py \
            "$1" "$PWD/build/$3/payload/current" "$PWD/build/$3/payload/next" "$4"
}

# lock_wait: an unattended run gives up after ten minutes when another installer keeps the machine.
lock_wait() {
    # shellcheck disable=SC2016 # the machine's shell expands it
    cmake --preset release && cmake --build --preset release --target payload_current &&
        "$machine" sysv -- bash -c '
            cd /tmp && printf "[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=x\nRepertoire=/srv/x\n" >orders
            flock /run/kalmoinstall.lock sleep 700 &
            sleep 1
            "$1/kalmoinstall" /PILOT=/tmp/orders /DEBUG=/tmp/trace
            cat trace
            grep -q "another installer has it for ten minutes" trace && [ ! -e /srv/x ]' - "$PWD/build/release/payload/current"
}

# release RELEASE: the portable program on the machine of another release, unattended and with an operator, with systemd
# and without. What it needs of that release is downloaded once.
release() {
    local kind build=$PWD/build/portable tree=build/trees/$1 result=0
    cmake --preset portable && cmake --build --preset portable --target payload_current payload_next interactive_test &&
        tools/make_tree.sh "$1" || return
    for kind in systemd sysv; do
        "$machine" $kind --tree "$tree" --timeout 300 -- \
            samples/story/unattended.sh "$build"/payload/{current,next} || result=1
        "$machine" $kind --tree "$tree" --timeout 300 -- "$build/tests/interactive/interactive_test" \
            --gtest_filter='*/Everywhere_FromStartToEnd:*/InFrench:*/InSpanish:*SmallTerminal*' |
            tee >(cat >&2) | grep -F '[  PASSED  ] 4 tests.' >/dev/null || result=1
    done
    return $result
}

# old_kernel KIND: the unattended story on a kernel that lacks one newer system call, for each.
old_kernel() {
    cmake --preset portable && cmake --build --preset portable --target payload_current payload_next &&
        "$machine" "$1" -- tests/faults/old_kernel.sh build/portable/payload/{current,next} each
}

# fleet: the role for Ansible on eight machines and on twenty. What each run took is shown too.
fleet() (
    set -o pipefail
    cmake --preset portable && cmake --build --preset portable --target payload_current payload_next || exit
    for number in 8 20; do
        tests/fleet/fleet.py build/portable/payload $number | tee /dev/fd/3 || exit
    done
)
exec 3>&1

# reproducible: a release of the last commit, by two whole builds in folders of other names and lengths.
reproducible() {
    local folder all result=1
    cmake --preset portable && cmake --build --preset portable --target payload_current && all=$(mktemp -d) || return
    for folder in one elsewhere/the-other; do
        mkdir -p "$all/$folder"
        git archive HEAD | tar -x -C "$all/$folder"
        SOURCE_DATE_EPOCH=$(git log -1 --format=%ct) "$all/$folder/tools/make_release.sh" \
            "$PWD/build/portable/payload/current/kalmoinstall.zip"
    done
    diff "$all"/one/build/release-*/SHA256SUMS "$all"/elsewhere/the-other/build/release-*/SHA256SUMS && result=0
    rm -rf "$all"
    return $result
}

# check_under_load: the whole check three times, on processors that have other work.
check_under_load() {
    local load result=0
    stress-ng --quiet --cpu "$(nproc)" &
    load=$!
    for _ in 1 2 3; do ./check.sh || result=1; done
    kill "$load"
    return $result
}

[[ $wanted == *" --list "* ]] || { tools/install_packages.sh soak && mkdir -p "$logs"; } || exit 1

step kill_sysv 5 sweep kill sysv release all
step kill_systemd 15 sweep kill systemd release all
step kill_sanitized 30 sweep kill sysv dev 200
step error_sysv 30 sweep error sysv release all
step error_systemd 90 sweep error systemd release all
step lock_wait 11 lock_wait
for release in debian-11 debian-13 ubuntu-22.04; do
    step "$release" 3 release "$release"
done
step old_kernel 5 old_kernel sysv
# obstacles: what --check says of them, where systemd has a say; check.sh does it with init scripts.
obstacles() {
    cmake --preset portable && cmake --build --preset portable --target payload_current payload_next &&
        "$machine" systemd -- /usr/bin/python3 tests/faults/cases.py ways "$PWD"/build/portable/payload/{current,next}
}

step fleet 15 fleet
step obstacles 5 obstacles
step reproducible 5 reproducible
step check_under_load 60 check_under_load
step mutants 20 tools/mutants.sh
for corpus in fuzz/corpus/*; do
    step "fuzz_${corpus##*/}" 31 fuzz/run.sh 1800 "${corpus##*/}"
done

((ran > 0)) || { echo "no such step:$wanted" >&2; exit 2; }
if ((${#failed[@]} > 0)); then
    echo "FAILED: ${failed[*]}"
    exit 1
fi

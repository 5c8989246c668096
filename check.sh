#!/bin/bash
# Checks everything: format, both compilers, both build modes, every test, the linter.
# Prints a line a step; the output of a step that fails is shown, of all of them kept in build/check/.
#
#   ./check.sh           before a change lands; CONTRIBUTING.md tells what each step costs and finds
#   ./check.sh quick     what has changed since the last commit on main: format, build, tests that need no machine
set -u
cd "$(dirname "$0")" || exit 1

tools/install_packages.sh check || exit 1

logs=build/check
mkdir -p "$logs"
failed=()
cores=$(nproc)

# run NAME COMMAND...: runs a step and prints its line: the seconds that passed, and those that processors worked for it.
run() {
    local name=$1 start=$SECONDS status=0 TIMEFORMAT='%U %S'
    shift
    { time "$@" >"$logs/$name.log" 2>&1; } 2>"$logs/$name.time" || status=$?
    printf '%-7s %-18s %4d s, processors %4.0f s\n' "$( ((status)) && echo FAILED || echo ok)" "$name" \
        $((SECONDS - start)) "$(awk 'END { print $1 + $2 }' "$logs/$name.time")"
    ((status == 0)) || tail -n 60 "$logs/$name.log" | sed 's/^/        /'
    return "$status"
}
# step NAME COMMAND...: the next one waits for it.
step() { run "$@" || failed+=("$1"); }
# beside NAME COMMAND...: goes on beside the steps behind it, until wait_for_beside.
beside() {
    run "$@" &
    jobs_beside[$!]=$1
}
# idly COMMAND...: gets the processors when nobody else wants them. Sessions share them as groups, so that a low priority
# counts against others only when the whole session has it.
idly() {
    # shellcheck disable=SC2016 # the inner shell expands it
    setsid --wait setpriv --pdeathsig TERM bash -c 'echo 19 2>/dev/null >/proc/self/autogroup; exec chrt --idle 0 "$@"' - "$@"
}
declare -A jobs_beside=()
wait_for_beside() {
    local pid
    for pid in "${!jobs_beside[@]}"; do
        wait "$pid" || failed+=("${jobs_beside[$pid]}")
    done
}
built() { [[ " ${failed[*]} " != *" build-$1 "* ]]; }

sources() { git ls-files '*.h' '*.cpp'; }
format() { sources | xargs clang-format --dry-run -Werror; }
# Every shell script of the project, by its first line.
files() { git ls-files -- ':!fuzz/corpus'; }
shell_scripts() {
    files | while read -r file; do
        case $(head -c 30 "$file" 2>/dev/null | head -n 1 | tr -d '\0') in
            '#!/bin/sh'* | '#!/bin/bash'*) echo "$file" ;;
        esac
    done
}
shells() { shell_scripts | xargs -r shellcheck --external-sources; }
# What ansible-lint writes besides goes to the folder of the logs.
ansible_role() (
    export HOME=$PWD/$logs/home ANSIBLE_HOME=$PWD/$logs/home/.ansible
    mkdir -p "$HOME" && cd ansible && ansible-lint --offline --profile production --nocolor &&
        ansible-playbook --syntax-check playbooks/*.yml
)
# build PRESET [TARGET...]
build() { cmake --preset "$1" && cmake --build --preset "$1" ${2:+--target "${@:2}"}; }
# build_dev: from nothing, the sources of a folder as one, which takes half the time. Whoever works on them has a build in
# which each is compiled by itself, and keeps it.
build_dev() {
    [[ -e build/dev/CMakeCache.txt ]] || cmake --preset dev -DKALMO_UNITY=ON || return
    build dev
}

# The folders of tests that look at a file, by the layers; "all" of them where no layer is told.
folders_of() { # FILE
    case $1 in
        docs/* | *.md | bench/* | packaging/* | samples/story/* | tests/interactive/* | tests/faults/* | tests/init/*) ;;
        tests/support/*) echo all ;;
        tests/*/* | fuzz/*) sed -E 's,^(tests/[^/]*)/.*,\1,; s,^fuzz.*,fuzz,' <<<"$1" ;;
        archive/*) echo tests/archive tests/hostile tests/services tests/app fuzz ;;
        services/*) echo tests/services tests/app fuzz ;;
        tui/* | samples/gallery/*) echo tests/tui tests/app samples/gallery ;;
        app/*) echo tests/app ;;
        *) echo all ;;
    esac
}
# quick: what has changed since the last commit on main.
quick() {
    local base changed folders folder
    base=$(git merge-base HEAD main 2>/dev/null || git merge-base HEAD origin/main 2>/dev/null || echo HEAD)
    changed=$({ git diff --name-only --diff-filter=d "$base"; git ls-files --others --exclude-standard; } | sort -u)
    sources() { grep -E '\.(h|cpp)$' <<<"$changed"; }
    files() { grep -v '^fuzz/corpus' <<<"$changed"; }
    folders=$(while read -r file; do folders_of "$file"; done <<<"$changed" | tr ' ' '\n' | sort -u)
    ! grep -qx all <<<"$folders" || folders=$'tests\nsamples/gallery\nfuzz'
    ! sources >/dev/null || step format format
    step shell shells
    step build-dev build dev
    built dev || return
    for folder in $folders; do
        # What needs a machine takes longer, and is left to the whole check.
        step "${folder//\//-}" ctest --test-dir "build/dev/$folder" --output-on-failure -j "$cores" -LE machine
    done
}

whole() {
    step format format
    step shell shells
    step ansible ansible_role
    step manual mandoc -Tlint -Wwarning docs/man/*
    step build-clang build clang
    # It works for minutes, and takes what the builds and the tests, which mostly wait, leave of the processors.
    ! built clang || beside tidy idly tools/lint.py build/clang "$cores"
    step build-dev build_dev
    step build-portable build portable
    step build-release build release payload_current payload_next valgrind_tests
    ! built portable || beside portable ctest --preset portable -j $((2 * cores))
    ! built release || beside valgrind ctest --preset release --no-tests=error -L valgrind
    # The test runner's own output is shown: its last lines say how many tests ran.
    ! built dev || ctest --preset dev -j $((cores + 1)) || failed+=(tests)
    step demo ./demo.sh --unattended
    wait_for_beside
    ! built portable || tail -n 12 "$logs/portable.log"
}

case ${1-} in
    '') whole ;;
    quick) quick ;;
    *) echo "usage: $0 [quick]" >&2; exit 2 ;;
esac
if ((${#failed[@]} > 0)); then
    echo "FAILED: ${failed[*]}"
    exit 1
fi
echo "Everything is in order ($SECONDS s)."

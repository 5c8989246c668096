#!/bin/bash
# Checks everything: format, both compilers, both build modes, every test, the linter.
# Prints a line a step; the output of a step that fails is shown, of all of them kept in build/check/.
set -u
cd "$(dirname "$0")" || exit 1

tools/install_packages.sh check || exit 1

logs=build/check
mkdir -p "$logs"
failed=()

# step NAME COMMAND...
step() {
    local name=$1 start=$SECONDS
    shift
    if "$@" >"$logs/$name.log" 2>&1; then
        printf 'ok      %-18s %4d s\n' "$name" $((SECONDS - start))
    else
        printf 'FAILED  %-18s %4d s\n' "$name" $((SECONDS - start))
        tail -n 60 "$logs/$name.log" | sed 's/^/        /'
        failed+=("$name")
    fi
}

sources() { git ls-files '*.h' '*.cpp'; }

format() { sources | xargs clang-format --dry-run -Werror; }
# Every shell script of the project, by its first line.
shell_scripts() {
    git ls-files -- ':!fuzz/corpus' | while read -r file; do
        case $(head -c 30 "$file" 2>/dev/null | head -n 1 | tr -d '\0') in
            '#!/bin/sh'* | '#!/bin/bash'*) echo "$file" ;;
        esac
    done
}
shells() { shell_scripts | xargs shellcheck --external-sources; }
build() { cmake --preset "$1" && cmake --build --preset "$1"; }
# The tests themselves are read by the compilers; the linter reads what ships.
tidy() { git ls-files '*.cpp' | grep -vE '^(tests|testkit|fuzz|bench)/|/make_pictures' | xargs -P "$(nproc)" -n 4 clang-tidy -quiet -p build/clang; }

step format format
step shell shells
step manual mandoc -Tlint -Wwarning docs/man/*
step build-dev build dev
step build-release build release
step build-clang build clang
step build-portable build portable

# The test runner's own output is shown: its last lines say how many tests ran.
if [[ ! " ${failed[*]} " =~ " build-dev " ]]; then
    ctest --preset dev -j "$(nproc)" || failed+=(tests)
fi
if [[ ! " ${failed[*]} " =~ " build-portable " ]]; then
    ctest --preset portable -j "$(nproc)" || failed+=(portable)
fi
if [[ ! " ${failed[*]} " =~ " build-release " ]]; then
    step valgrind ctest --preset release --no-tests=error -L valgrind
fi
step demo ./demo.sh --unattended
step tidy tidy

if ((${#failed[@]} > 0)); then
    echo "FAILED: ${failed[*]}"
    exit 1
fi
echo "Everything is in order ($SECONDS s)."

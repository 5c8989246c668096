#!/bin/bash
# Prints docs/hardening.md: what protects the programs that are delivered against their own mistakes, measured, beside two
# programs of Debian that root runs.
#
#   tools/hardening.sh [PROGRAM...] >docs/hardening.md
#
# Without a PROGRAM: the portable and the shared one of build/, and Debian's two. One in a build tree of this project is
# also judged by its object files and the commands that made them.
# shellcheck disable=SC2016 # what is searched, and what is printed, holds dollars and backquotes
set -euo pipefail
export LC_ALL=C
cd "$(dirname "$0")/.."
(($# > 0)) || set -- build/portable/app/kalmoinstall build/release/app/kalmoinstall /usr/bin/dpkg /bin/systemctl

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What is asked of one program. Sets: file, its build tree or nothing.
look_at() {
    file=$1 tree=''
    [[ -f $file ]] || { echo "hardening.sh: no $file" >&2; exit 2; }
    [[ ! -f ${file%/app/*}/compile_commands.json ]] || tree=${file%/app/*}
    readelf -W --file-header --segments --dynamic --notes --sections "$file" >"$work/elf" 2>/dev/null
    objdump -d "$file" >"$work/code"
    if [[ -n $tree ]]; then
        find "$tree"/{framework,archive,services,tui,app} -name '*.cpp.o' >"$work/objects"
        xargs nm -u <"$work/objects" | sed -n 's/^ *U //p' >"$work/used"
        grep -E '"command":.* '"$PWD"'/(framework|archive|services|tui|app)/[^ ]*\.cpp"' "$tree/compile_commands.json" >"$work/commands"
    else
        nm -D -u "$file" | sed -n 's/^ *U //p; s/@.*//' | sed 's/@.*//' >"$work/used"
    fi
}
elf() { grep -q -- "$1" "$work/elf"; }
yes_if() { if "$@"; then echo yes; else echo no; fi; }
not() { ! "$@"; }
places() { echo "$(grep -c -- "$1" "$work/code" || true) places"; }
# Of the commands that compiled the program those with a flag.
flagged() {
    local count all
    [[ -n $tree ]] || { echo "not to be seen"; return; }
    count=$(grep -c -- "$1" "$work/commands" || true) all=$(wc -l <"$work/commands")
    if ((count == all)); then echo yes; else echo "$count of $all files"; fi
}

pie() { yes_if elf 'FLAGS_1.* PIE'; }
relro() { yes_if elf GNU_RELRO; }
now() { yes_if elf 'FLAGS.* NOW'; }
stack() { yes_if elf 'GNU_STACK .* RW  '; }
canaries() { places '%fs:0x28'; }
# Calls of the C library that have a checking form, by name: those that take it, of all that could.
fortified() {
    nm -D --defined-only "$(g++ -print-file-name=libc.so.6)" | sed -nE 's/.* __(.*)_chk@.*/\1/p' | grep -v longjmp | sort -u >"$work/checkable"
    sed -nE 's/^__(.*)_chk$/\1/p' "$work/used" | sort -u | comm -12 - "$work/checkable" >"$work/checked"
    sort -u "$work/used" "$work/checked" | comm -12 - "$work/checkable" >"$work/could"
    echo "$(wc -l <"$work/checked") of $(wc -l <"$work/could") functions"
}
level() {
    if [[ -n $tree ]]; then
        grep -oE 'D_FORTIFY_SOURCE=[0-9]' "$work/commands" | sort -u | sed 's/.*=//'
    else
        echo "not to be seen; Debian's rule: $(dpkg-buildflags --get CPPFLAGS | grep -oE 'SOURCE=[0-9]' | sed 's/.*=//')"
    fi
}
assertions() {
    if [[ -z $tree ]] && not elf 'NEEDED.*libstdc++'; then
        echo "no C++"
    else
        yes_if grep -q __glibcxx_assert_fail "$work/used"
    fi
}
clash() { echo "$(flagged ' -fstack-clash-protection '); $(places 'orq  *\$0x0,(%rsp)')"; }
branches() { places endbr64; }
branches_note() { yes_if elf 'x86 feature: .*IBT'; }
initialised() { flagged ' -ftrivial-auto-var-init=zero '; }
stripped() { yes_if not elf ' \.symtab '; }
rpath() { yes_if not elf 'R\(UN\)\?PATH'; }
textrel() { yes_if not elf TEXTREL; }

# The rows: what is measured, by which of the functions above, and how.
rows=(
    "position-independent|pie|\`DT_FLAGS_1\` says PIE"
    "read-only relocations|relro|a segment \`GNU_RELRO\`"
    "bound at the start|now|\`DT_FLAGS\` or \`DT_FLAGS_1\` say NOW"
    "stack not executable|stack|the segment \`GNU_STACK\` is RW"
    "stack canaries|canaries|instructions that load or compare the canary, \`%fs:0x28\`. In a static program those of the libraries are among them"
    "fortified calls|fortified|functions of the C library with a checking form: those used in it, of all used. Where the compiler knows that there is room enough, or nothing about it, the plain form stays. Of a build tree's program by its object files, otherwise by its dynamic symbols"
    "their level|level|no file tells: from the commands that compiled it; what Debian's packages are built with, unless they say otherwise, \`dpkg-buildflags\` tells"
    "\`_GLIBCXX_ASSERTIONS\`|assertions|object files, or dynamic symbols, use \`__glibcxx_assert_fail\`"
    "stack-clash protection|clash|the commands that compiled it, and instructions that probe the stack's next page: only functions with large frames have any"
    "control-flow protection: targets|branches|instructions \`endbr64\`, where indirect branches may land"
    "control-flow protection: marked|branches_note|the program's property says IBT. No program linked with the start-up files of Debian's C library can have it: they lack it"
    "zeroed automatic variables|initialised|no file tells: from the commands that compiled it"
    "stripped|stripped|no section \`.symtab\`"
    "no search path for libraries|rpath|neither \`DT_RPATH\` nor \`DT_RUNPATH\`"
    "no relocations in code|textrel|no \`DT_TEXTREL\`"
)
columns=0
for program; do
    look_at "$program"
    for row in "${rows[@]}"; do
        IFS='|' read -r _ function _ <<<"$row"
        "$function"
    done >"$work/column.$((++columns))"
done

cat <<END_OF_TEXT
# Hardening

Made by \`tools/hardening.sh\` on $(. /etc/os-release && echo "$PRETTY_NAME"), $(g++ --version | head -n 1). The flags stand in
\`cmake/build_modes.cmake\`. \`portable\` is what \`tools/make_release.sh\` ships.

END_OF_TEXT
printf '| |'
printf ' `%s` |' "$@"
printf '\n|---|'
printf -- '---|%.0s' "$@"
echo
for ((i = 0; i < ${#rows[@]}; ++i)); do
    printf '| %s |' "${rows[i]%%|*}"
    for ((column = 1; column <= columns; ++column)); do
        printf ' %s |' "$(sed -n "$((i + 1))p" "$work/column.$column")"
    done
    echo
done
printf '\nHow each is measured:\n\n'
for row in "${rows[@]}"; do
    IFS='|' read -r what _ how <<<"$row"
    printf -- '- %s: %s\n' "$what" "$how"
done

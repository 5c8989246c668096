#!/bin/bash
# Counts what an unattended installation and an upgrade of the sample do, under systemd and under SysV init: the
# commands that the installer runs, and its system calls on the payload and on the instance's directory. Each
# stands beside the fewest that the work allows.
#
#   bench/install_calls.sh [--build FOLDER] [--log FOLDER]
#
# --build takes a build folder that is built already, --log keeps the records of strace. In throwaway machines; needs
# root and strace. Exit status: 0 no count is above its target, 1 one is, 2 the counting could not be done.
#
# How the fewest come about. Commands, under systemd:
#   installation  1 asks systemd whether it runs the machine, 1 whether the instance exists, 2 are the server's
#                 programs that register it. That nobody else's directory is taken costs 4 questions more: the loaded
#                 units, the unit files, the shared manager among them, and whether the unit is masked.
#   upgrade       1 asks systemd whether it runs the machine, 2 what the instance and the shared manager are, 2 whether
#                 they run; 2 stop and 2 start them.
# Under SysV init a script that is there is read and not asked: the installation asks systemctl in vain and runs the
# server's two programs; the upgrade asks it too, asks both scripts for their status, stops and starts both.
#
# System calls on a file: its making, a write for each 32 KiB, its time, its mode, its close, and for the shared manager
# its owner. On one that is replaced besides: the making that is refused, a look at what is there before it is opened, a
# look at what was opened, its emptying, and the mode that nobody reads until it is whole. A directory that an entry's
# name leads through is opened from the one above it and closed, the instance's own before it; one that is not there is
# looked for in vain, made, and given its mode. The instance's directory is made, and opened and closed to be put on the
# disk. Whether an upgrade may be done, a few looks at its programs and its directory find out. On the payload: two reads
# for the directory at its end, and one for each 16 KiB of header and data of an entry; what the inflate leaves of one
# piece is topped up, so that a large entry takes some more.
set -euo pipefail
start=$PWD
cd -- "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/.."
source bench/common.sh

# Commands: the fewest that the work needs, and those that find out whether it may be done. Calls that do so.
declare -A WORK=([systemd.install]=4 [systemd.upgrade]=9 [sysv.install]=3 [sysv.upgrade]=7)
declare -A REFUSALS=([systemd.install]=4 [systemd.upgrade]=0 [sysv.install]=0 [sysv.upgrade]=0)
declare -A LOOKS=([systemd.install]=0 [systemd.upgrade]=3 [sysv.install]=0 [sysv.upgrade]=5)

if [[ ${1-} != __inside ]]; then
    build="" log=""
    while (($# > 0)); do
        case $1 in
            --build) build=$(cd "$start" && realpath -e -- "${2:?}") || exit 2 ;;
            --log) log=$(cd "$start" && mkdir -p -- "${2:?}" && realpath -e -- "$2") || exit 2 ;;
            *) die "unknown option $1" ;;
        esac
        shift 2
    done
    if [[ -z $build ]]; then
        build=$(build_release "build test demo" all)
    fi
    work=$(mktemp -d "${TMPDIR:-/tmp}/kalmo-calls.XXXXXX")
    trap 'rm -rf -- "$work"' EXIT
    printf '%-16s %9s %7s %9s %12s %7s %9s %12s %7s %9s\n' "" commands fewest refusals "on instance" fewest refusals \
        "on payload" fewest "in all"
    for kind in systemd sysv; do
        mkdir "$work/$kind"
        testkit/machine "$kind" --bind "${log:-$work}" --timeout 300 -- bench/install_calls.sh __inside "$build" "$kind" \
            "${log:-$work}" || missed=$?
        ((missed < 2)) || exit 2
    done
    exit "$missed"
fi

build=$2 kind=$3 log=$4
[[ -n ${KALMO_MACHINE-} ]] || die "it would change this machine"
instance=/srv/one

# files FOLDER new|old: the fewest calls on the instance's directory and on the payload for the entries of a payload.
files() {
    python3 - "$1/kalmoinstall.zip" "$2" <<'END'
import sys
import zipfile

on_instance, on_payload = 3 if sys.argv[2] == "new" else 2, 2
made = set()
for entry in zipfile.ZipFile(sys.argv[1]).infolist():
    if entry.is_dir() or entry.filename == "license.txt":
        continue
    folders = entry.filename.split("/")[:-1]
    if folders:
        on_instance += 2 + 2 * len(folders)  # opened and closed
    for depth in range(len(folders)):
        if sys.argv[2] == "new" and tuple(folders[:depth + 1]) not in made:
            made.add(tuple(folders[:depth + 1]))
            on_instance += 3  # looked for in vain, made, its mode
    on_instance += 4 + -(-entry.file_size // 32768) + (entry.filename == "kalmomanager")
    if sys.argv[2] == "old":
        on_instance += 5
    on_payload += -(-(30 + len(entry.filename) + entry.compress_size) // 16384)
print(on_instance, on_payload)
END
}

# count NAME PAYLOAD new|old ORDERS: runs the installer and tells of it.
count() {
    local name=$kind.$1 folder=/root/$1 record=$log/$kind.$1
    mkdir "$folder"
    cp "$build/payload/$2/kalmoinstall.zip" "$build/app/kalmoinstall" "$folder" || die "no payload in $build"
    printf '%b' "$4" >"$folder/pilot.ini"
    # What it runs is let go: only its own calls are counted, and the commands by the calls that begin them.
    strace -f -b execve -qq -y -e signal=none -o "$record" "$folder/kalmoinstall" "/PILOT=$folder/pilot.ini" ||
        die "$name ended with $?"
    [[ $(cat $instance/Install.log) == OK ]] || die "$name did not succeed"
    local own
    own=$(head -n 1 "$record")
    own=${own%% *}
    local commands on_instance on_payload all fewest_instance fewest_payload
    commands=$(awk -v own="$own" '$1 != own && /execve\(/ { run[$1] = 1 } END { print length(run) }' "$record")
    # Configuration, database directory and marker are other work.
    on_instance=$(awk -v own="$own" -v dir="$instance" '$1 == own && index($0, dir) &&
        !/ZDConf|Install.log|INSTALL.LOG|BDD|execve|syncfs/' "$record" | grep -c -v 'resumed')
    on_payload=$(grep -c "^$own .*pread64(.*kalmoinstall.zip" "$record")
    all=$(grep -c "^$own [^<]" "$record")
    read -r fewest_instance fewest_payload < <(files "$folder" "$3")
    printf '%-16s %9s %7s %9s %12s %7s %9s %12s %7s %9s\n' "$name" "$commands" "${WORK[$name]}" "${REFUSALS[$name]}" \
        "$on_instance" "$fewest_instance" "${LOOKS[$name]}" "$on_payload" "$fewest_payload" "$all"
    at_most "$commands" $((WORK[$name] + REFUSALS[$name])) "commands of $name"
    at_most "$on_instance" $((fewest_instance + LOOKS[$name])) "calls of $name on the instance's directory"
    at_most "$on_payload" $((fewest_payload * 3 / 2)) "calls of $name on the payload"
}

count install current new "[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=one\nRepertoire=$instance\nPort=4901\n"
count upgrade next old '[PILOTAGE]\nMAJ=1\n[SERVEUR]\nServeur=one\n'
exit "$missed"

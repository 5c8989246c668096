#!/bin/bash
# Measures the interactive installer at an emulated terminal: how long after its start the licence is on the
# screen, beyond what opening the payload takes, and how long an installation takes, compared with extracting the
# payload alone. Then a whole unattended installation against plain extraction by unzip, bsdtar and 7z, all in one run,
# in memory and on ext4 on a loop device. The server's programs in the payload do nothing, so that nothing of theirs is
# measured. At last the commands and system calls of both kinds of machine, by bench/install_calls.sh.
#
#   bench/install.sh [--runs N] [--megabytes N] [--build FOLDER]
#
# --build takes a build folder that is built already. Installs into a copy in memory of this machine. Needs root.
# Exit status: 0 every target is met, 1 one is missed, 2 the measurement could not be made.
set -euo pipefail
cd -- "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/.."
source bench/common.sh

# The targets: seconds to the licence beyond opening, and the installation as a multiple of the extraction.
MAX_LICENCE=0.050 MAX_INSTALLATION=1.05
# An unattended installation as a part of the others' extraction, in memory, and its peak memory in KiB.
declare -A MAX_OF=([unzip]=0.35 [bsdtar]=0.62 [7z]=0.50)
MAX_MEMORY=16384

if [[ ${1-} != __inside ]]; then
    runs=5 megabytes=224 build=
    while (($# > 0)); do
        case "$1" in
            --runs) runs=${2:?} ;;
            --megabytes) megabytes=${2:?} ;;
            --build) build=$(realpath -- "${2:?}") ;;
            *) die "unknown option $1" ;;
        esac
        shift 2
    done
    if [[ -z $build ]]; then
        build=$(build_release "build bench demo" all)
    fi
    status=0
    testkit/in_private_root "$PWD/bench/install.sh" __inside "$build" "$runs" "$megabytes" || status=$?
    echo
    bench/install_calls.sh --build "$build" || status=$((status > $? ? status : $?))
    exit "$status"
fi

build=$2 runs=$3 megabytes=$4
work=/tmp/bench
rm -f /bin/systemctl # in a changed root it succeeds without doing anything
mkdir -p "$work/many" "$work/in"

# pack FOLDER: adds what an installation needs to the files in FOLDER and packs all beside the installer.
pack() {
    printf '#!/bin/sh\n' | tee "$1/kalmo" >"$1/kalmomanager"
    echo 'A licence that fits the screen.' >"$1/license.txt"
    mkdir "$1.run"
    (cd "$1" && zip -q -X -r "$1.run/kalmoinstall.zip" .)
    cp "$build/app/kalmoinstall" "$1.run/"
}

echo "making payloads of 10,000 entries and of ${megabytes} MB ..." >&2
(cd "$work/many" && seq -f 'help-%08.0f' 10000 | xargs touch)
make_real_payload "$work/in" "$megabytes"
pack "$work/many"
pack "$work/in"
rm -rf "$work/many" "$work/in"

licence=1000 opening=1000
for ((run = 0; run < 2 * runs; run++)); do
    licence=$(lesser "$licence" "$("$build/bench/install_bench" license "$work/many.run")")
    read -r _ opened _ < <("$build/bench/extract_bench" open "$work/many.run/kalmoinstall.zip")
    opening=$(lesser "$opening" "$opened")
done
beyond=$(awk "BEGIN { printf \"%.4f\", $licence - $opening }")
echo "licence of a payload with 10,000 entries: $licence s, opening alone $opening s, $beyond s beyond"
at_most "$beyond" "$MAX_LICENCE" "seconds to the licence beyond opening"

installation=1000 extraction=1000
for ((run = 0; run <= runs; run++)); do
    rm -rf /usr/local/ZDSQL
    seconds=$("$build/bench/install_bench" install "$work/in.run")
    rm -rf /usr/local/ZDSQL
    mkdir /usr/local/ZDSQL
    start=$EPOCHREALTIME
    "$build/bench/extract_bench" extract "$work/in.run/kalmoinstall.zip" /usr/local/ZDSQL
    extracted=$(awk -v s="$start" -v e="$EPOCHREALTIME" 'BEGIN { print e - s }')
    ((run > 0)) || continue # the first round warms the caches
    installation=$(lesser "$installation" "$seconds")
    extraction=$(lesser "$extraction" "$extracted")
done
ratio=$(awk "BEGIN { printf \"%.3f\", $installation / $extraction }")
echo "installing $megabytes MB: $installation s, extracting alone $extraction s, $ratio times as long; best of $runs"
at_most "$ratio" "$MAX_INSTALLATION" "the installation as a multiple of the extraction"

truncate -s "$((4 * megabytes))M" "$work/disk"
mkfs.ext4 -q "$work/disk"
mkdir "$work/ext4" "$work/memory"
mount -o loop "$work/disk" "$work/ext4"
trap 'umount "$work/ext4"' EXIT
tools=(kalmo "${OTHERS[@]}")
peak=0
for place in memory ext4; do
    folder=$work/$place/zd
    printf '[PILOTAGE]\nMAJ=2\n[SERVEUR]\nServeur=bench\nRepertoire=%s\n' "$folder" >"$work/orders"
    declare -A seconds=()
    for ((run = 0; run <= runs; run++)); do
        for tool in "${tools[@]}"; do
            rm -rf "$folder"
            mkdir "$folder"
            sync -f "$folder" # what the one before has left to be written is not this one's
            command=("$work/in.run/kalmoinstall" "/PILOT=$work/orders")
            command_of "$tool" "$work/in.run/kalmoinstall.zip" "$folder"
            read -r clock _ kib < <(cost_of "${command[@]}") || exit 2
            [[ $tool != kalmo || $(cat "$folder/Install.log") == OK ]] || die "not installed"
            [[ $tool != kalmo || $kib -le $peak ]] || peak=$kib
            ((run == 0)) || seconds[$tool]+=" $clock" # the first round warms the caches
        done
    done
    echo
    echo "an unattended installation of $megabytes MB, $place; median of $runs"
    # shellcheck disable=SC2086 # lists of numbers
    kalmo=$(median ${seconds[kalmo]})
    for tool in "${tools[@]}"; do
        # shellcheck disable=SC2086
        of=$(ratio "$kalmo" "$(median ${seconds[$tool]})")
        # shellcheck disable=SC2086
        printf '%-8s %9s %12s\n' "$tool" "$(median ${seconds[$tool]})" "$of of it"
        [[ $tool == kalmo || $place == ext4 ]] || at_most "$of" "${MAX_OF[$tool]}" "an installation as a part of $tool's time"
    done
done
echo "peak memory $peak KiB"
at_most "$peak" "$MAX_MEMORY" "peak memory in KiB"
exit "$missed"

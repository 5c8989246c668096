#!/bin/bash
# Measures what many instances on one machine cost the installer: listing them when it starts, and comparing the name
# and the port of a new one with those of all.
#
#   bench/services.sh [--build FOLDER] [--processor]
#
# --build takes a build folder that is built already. --processor judges by the time that the processors work, which
# hardly depends on what else the machine does, instead of the time that passes. The instances are units of systemd in
# a throwaway machine. Needs root. Exit status: 0 every target is met, 1 one is missed, 2 the measurement could not be made.
set -euo pipefail
cd -- "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/.."
source bench/common.sh

# The targets: seconds an instance, and how many times as long four times as many instances may take.
MAX_SECONDS=0.020 MAX_GROWTH=5.5
COUNTS=(50 100 200)
RUNS=3

if [[ ${1-} != __inside ]]; then
    build="" judge=time
    while (($# > 0)); do
        case $1 in
            --build) build=$(realpath -e -- "${2:?}") || exit 2; shift ;;
            --processor) judge=processors ;;
            *) die "unknown option $1" ;;
        esac
        shift
    done
    if [[ -z $build ]]; then
        build=$(build_release "build demo" services_bench)
    fi
    exec testkit/machine systemd --timeout 300 -- bench/services.sh __inside "$build/bench/services_bench" "$judge"
fi

program=$2 judge=$3
[[ -n ${KALMO_MACHINE-} ]] || die "it would change this machine"

# What an instance leaves on a machine, as far as the installer looks at it.
make_instance() { # NUMBER
    local directory=/srv/zd/$1
    mkdir -p "$directory"
    printf '[INIT]\nDBRootPath = %s/BDD/\nAccessPort = %s\nName = %s\n' "$directory" "$((5000 + $1))" "$1" >"$directory/ZDConf.ini"
    printf '[Unit]\nDescription=Database server %s\n[Service]\nExecStart="%s/kalmo" --service\n[Install]\nWantedBy=multi-user.target\n' \
        "$1" "$directory" >"/etc/systemd/system/ZDCS-$1.service"
}

made=0 first=
for count in "${COUNTS[@]}"; do
    while ((made < count)); do make_instance $((++made)); done
    systemctl --quiet enable /etc/systemd/system/ZDCS-*.service
    systemctl daemon-reload
    best=1000
    for ((run = 0; run < RUNS; ++run)); do
        read -r found listing names ports processor < <("$program") || die "no measurement"
        ((found == count)) || die "$found of $count instances were found"
        total=$processor
        [[ $judge == processors ]] || total=$(awk "BEGIN { printf \"%.6f\", $listing + $names + $ports }")
        awk "BEGIN { exit !($total < $best) }" || continue
        best=$total
        parts="listing $listing s, names $names s, ports $ports s, processors $processor s"
    done
    each=$(awk "BEGIN { printf \"%.4f\", $best / $count }")
    echo "$count instances: $parts, $each s of $judge an instance; best of $RUNS"
    at_most "$each" "$MAX_SECONDS" "seconds an instance"
    first=${first:-$best}
done
growth=$(awk "BEGIN { printf \"%.2f\", $best / $first }")
echo "${COUNTS[-1]} instances take $growth times as long as ${COUNTS[0]}"
at_most "$growth" "$MAX_GROWTH" "the growth from ${COUNTS[0]} to ${COUNTS[-1]} instances"
exit "$missed"

# shellcheck shell=bash
# What the measurements of this folder have in common. They source this in the project's folder.

die() {
    echo "${0##*/}: $*" >&2
    exit 2
}

# shellcheck disable=SC2034 # what the script ends with
missed=0

# at_most VALUE LIMIT WHAT: tells when a target is missed.
at_most() {
    awk -v is="$1" -v limit="$2" 'BEGIN { exit !(is <= limit) }' && return
    echo "MISSED: $3 is $1, the target is $2"
    # shellcheck disable=SC2034
    missed=1
}

# median VALUE...: of an odd number of them.
median() { printf '%s\n' "$@" | sort -g | sed -n "$((($# + 1) / 2))p"; }

# ratio A B: A as a part of B.
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", a / b }'; }

# The archivers that everything is compared with.
# shellcheck disable=SC2034
OTHERS=(unzip bsdtar 7z)

# command_of TOOL ARCHIVE FOLDER: makes of the array "command" how one of them extracts an archive into a folder.
# shellcheck disable=SC2034
command_of() {
    case "$1" in
        unzip) command=(unzip -q -d "$3" "$2") ;;
        bsdtar) command=(bsdtar -x -f "$2" -C "$3") ;;
        7z) command=(7z x -y -bd -mmt=1 "-o$3" "$2") ;;
    esac
}

# cost_of COMMAND...: prints seconds by the clock, seconds of the processor, and peak memory in KiB.
# The caller has a folder $work.
# shellcheck disable=SC2154
cost_of() {
    local start=$EPOCHREALTIME end
    /usr/bin/time -o "$work/cost" -f '%U %S %M' "$@" >/dev/null || die "$1 failed"
    end=$EPOCHREALTIME
    awk -v s="$start" -v e="$end" '{ printf "%.3f %.2f %d\n", e - s, $1 + $2, $3 }' "$work/cost"
}

lesser() { awk -v a="$1" -v b="$2" 'BEGIN { print a < b ? a : b }'; }

# build_release PACKAGES TARGET...: installs what is needed, builds the targets of a release, prints its folder.
build_release() {
    local packages=$1
    shift
    # shellcheck disable=SC2086 # several lists of packages
    { tools/install_packages.sh $packages && cmake --preset release && cmake --build --preset release --target "$@"; } >&2
    echo "$PWD/build/release"
}

# make_real_payload FOLDER MEGABYTES: copies this machine's own programs and libraries into FOLDER, keeping their
# paths, until there are that many megabytes of them.
make_real_payload() {
    local file magic bytes=0
    while ((bytes < $2 * 1000 * 1000)) && IFS= read -r -d '' file; do
        IFS= read -r -n 4 magic <"$file" 2>/dev/null || continue
        [[ $magic == $'\x7fELF' ]] || continue
        mkdir -p -- "$1${file%/*}"
        cp -- "$file" "$1$file"
        bytes=$((bytes + $(stat -c %s -- "$file")))
    done < <(find /usr/bin /usr/sbin /usr/lib -type f -size +3k -size -40M -print0 2>/dev/null | sort -z)
    ((bytes >= $2 * 1000 * 1000)) || die "only $bytes bytes of programs and libraries here"
}

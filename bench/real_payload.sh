# shellcheck shell=bash
# The payload that the measurements work on. bench/extract.sh and bench/install.sh source this.

die() {
    echo "${0##*/}: $*" >&2
    exit 2
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

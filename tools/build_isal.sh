#!/bin/bash
# Builds the parts of ISA-L that inflate and compute CRCs as a static library, which Debian does not have. The sources
# are those of the package libisal-dev that is installed, so that both kinds of program hold the same.
#
#   tools/build_isal.sh DIR [COMPILER FLAG...]      makes DIR/lib/libisal.a and DIR/include/isa-l
#
# COMPILER and its FLAGs: gcc, and those of a release.
# Does nothing when DIR has them. Asks the package servers of this machine, whose settings stay as they are; apt checks
# the signatures. The same version and compiler give the same bytes whatever DIR is. Exit status: 0 it is there.
set -euo pipefail
umask 022
export LC_ALL=C.UTF-8

die() {
    echo "build_isal.sh: $*" >&2
    exit 1
}

(($# > 0)) || die "usage: ${0##*/} DIR [COMPILER FLAG...]"
read -r source version < <(dpkg-query -W -f='${source:Package} ${source:Version}\n' libisal-dev 2>/dev/null) ||
    die "the package libisal-dev, whose version is taken, is not installed"
for tool in nasm make dpkg-source; do
    [[ $tool == nasm && $(uname -m) != x86_64 ]] || command -v "$tool" >/dev/null || die "$tool is missing"
done
mkdir -p "$1"
dir=$(cd "$1" && pwd -P)
shift
if (($# == 0)); then
    set -- gcc -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fstack-protector-strong -fstack-clash-protection -ftrivial-auto-var-init=zero
    [[ $(uname -m) != x86_64 ]] || set -- "$@" -fcf-protection
fi
stamp="$source $version $(sha256sum <"${BASH_SOURCE[0]}" | cut -c 1-64) $("$1" --version | head -n 1) $*"
[[ ! -f $dir/made ]] || [[ $(<"$dir/made") != "$stamp" ]] || exit 0

# A configuration of apt of its own: the machine's package servers, of which only the sources are asked.
work=$dir/work
rm -rf "$work" "${dir:?}"/{made,lib,include}
mkdir -p "$work"/sources.list.d "$work"/lists/partial "$work"/cache/archives/partial
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ ! -f $list ]] || sed -n -E '/^[[:blank:]]*deb[[:blank:]]/{s/(trusted|allow-insecure)=yes/allow-insecure=no/Ig; s/^[[:blank:]]*deb/deb-src/p}' \
        "$list" >"$work/sources.list.d/${list##*/}.list"
done
for list in /etc/apt/sources.list.d/*.sources; do
    [[ ! -f $list ]] || sed -E '/^(Trusted|Allow-Insecure):/Id; s/^Types:.*/Types: deb-src/I' "$list" >"$work/sources.list.d/${list##*/}"
done
apt_get() {
    # What the machine allows of unsigned sources does not count here. The user that apt gives its rights up for
    # cannot be expected to reach DIR.
    apt-get -qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$work/sources.list.d" \
        -o Dir::State::Lists="$work/lists" -o Dir::Cache="$work/cache" -o APT::Sandbox::User=root \
        -o APT::Get::AllowUnauthenticated=false -o Acquire::AllowInsecureRepositories=false "$@" >&2
}
# Of several servers one may have no sources; what counts is whether these are found.
apt_get update || true
(cd "$work" && apt_get source --only-source "$source=$version") ||
    die "the sources of $source $version could not be had from the package servers; is there a network, and does the installed libisal-dev still stand there?"
tree=$(echo "$work/$source"-*/)
[[ -f $tree/Makefile.unx ]] || die "no makefile in the sources of $source $version"

# The makefile optimises, and puts no debugging information into the library; it asks for a compiler's name, not a path.
make -C "$tree" -s -j "$(nproc)" -f Makefile.unx units="igzip crc" lib D=INTEL_CET_ENABLED \
    CC="${1##*/}" "CFLAGS_${1##*/}=${*:2} -fPIC -w -ffile-prefix-map=$tree=." >"$work/log" 2>&1 || {
    tail -n 20 "$work/log" >&2
    die "building failed"
}
mkdir -p "$dir/lib" "$dir/include/isa-l"
cp "$tree/bin/isa-l.a" "$dir/lib/libisal.a"
cp "$tree"/include/*.h "$dir/include/isa-l/"
rm -rf "$work"
echo "$stamp" >"$dir/made"

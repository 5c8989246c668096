#!/bin/bash
# Makes what a vendor ships from a payload: an archive, a .deb and an .rpm with the program for every Linux, the payload,
# the manual and the schema of the answers for programs, and SHA256SUMS.
#
#   tools/make_release.sh [OPTION]... PAYLOAD.zip
#
#   --license FILE        the terms under which all of it is given, for the packages' copyright file and the archive
#   --maintainer CONTACT  "Name <mail address>" of who answers for the packages
#   --out DIR             where it goes; default: build/release-VERSION
#   --program FILE        the program, where it is not the one that this builds
#
# The same sources, payload and options give the same bytes, wherever they lie and whoever makes them. All dates are
# SOURCE_DATE_EPOCH; where it is not set, that of the last commit.
set -euo pipefail
umask 022
export LC_ALL=C.UTF-8 TZ=UTC

die() {
    echo "make_release.sh: $*" >&2
    exit 2
}

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
license='' out='' program='' payload='' maintainer='The ZDSQL makers <packages@zdsql.example>'
while (($# > 0)); do
    case "$1" in
        --license) license=${2-} ;;
        --maintainer) maintainer=${2-} ;;
        --out) out=${2-} ;;
        --program) program=${2-} ;;
        -*) die "unknown option $1" ;;
        *)
            [[ -z $payload ]] || die "give one payload"
            payload=$1
            shift
            continue
            ;;
    esac
    (($# > 1)) || die "$1 needs a value"
    shift 2
done
[[ -n $payload ]] || die "give a payload"
for file in "$payload" ${license:+"$license"} ${program:+"$program"}; do
    [[ -f $file && -r $file ]] || die "$file cannot be read"
done
[[ $maintainer == ?*' <'?*@?*'>' ]] || die "not of the form \"Name <mail address>\": $maintainer"

"$project/tools/install_packages.sh" release
# The installer refuses a payload without one.
unzip -Z1 "$payload" 2>/dev/null | grep -ix 'license\.txt' >/dev/null || die "$payload is no ZIP file with a license.txt"
! unzip -Zv "$payload" 2>/dev/null | grep 'of a multi-part archive' >/dev/null ||
    die "$payload is the last of several volumes; \"zip -s 0\" makes one file of them"
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$project" log -1 --format=%ct)} ||
    die "set SOURCE_DATE_EPOCH: there is no commit to take the date from"
export SOURCE_DATE_EPOCH

if [[ -z $program ]]; then
    (cd "$project" && cmake --preset portable >&2 && cmake --build --preset portable --target kalmoinstall >&2)
    program=$project/build/portable/app/kalmoinstall
fi
program=$(realpath "$program") # never one of the PATH
version=$("$program" --version | sed -n 's/^kalmoinstall //p')
[[ $version =~ ^[0-9.]+$ ]] || die "$program tells no version"
name=kalmoinstall-$version-linux-$(uname -m)
[[ -n $out ]] || out=$project/build/release-$version
mkdir -p "$out"
out=$(cd "$out" && pwd)
rm -f "$out/$name".tar.zst "$out"/kalmoinstall[-_]"$version"-1* "$out/SHA256SUMS"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The terms, and those of the libraries that are a part of the program.
{
    echo "kalmoinstall, the installer of the ZDSQL database server"
    printf 'Copyright (C) %s %s\n\n' "$(date -ud "@$SOURCE_DATE_EPOCH" +%Y)" "${maintainer% <*}"
    if [[ -n $license ]]; then
        cat "$license"
    else
        echo "The terms are those of the licence agreement in kalmoinstall.zip (license.txt),"
        echo "which is shown before anything is installed."
    fi
} >"$work/copyright"
notices() {
    local package
    echo "The program holds parts of the libraries below. Their terms, as Debian tells them:"
    for package in libc6 libstdc++6 libncursesw6 libtinfo6 zlib1g libisal2 nlohmann-json3-dev; do
        printf '\n==== %s ====\n\n' "$package"
        cat "/usr/share/doc/$package/copyright"
    done
}
changelog() {
    printf 'kalmoinstall (%s-1) unstable; urgency=medium\n\n' "$version"
    printf '  * Release %s. What it brings is told by changelog.gz.\n\n' "$version"
    printf ' -- %s  %s\n' "$maintainer" "$(date -uRd "@$SOURCE_DATE_EPOCH")"
}

# The packages' file tree.
tree=$work/tree docs=$work/tree/usr/share/doc/kalmoinstall
install -D "$program" "$tree/usr/lib/kalmoinstall/kalmoinstall"
install -m 644 "$payload" "$tree/usr/lib/kalmoinstall/kalmoinstall.zip"
install -d "$tree/usr/sbin" "$docs"
ln -s ../lib/kalmoinstall/kalmoinstall "$tree/usr/sbin/kalmoinstall"
install -m 644 "$work/copyright" "$docs/copyright"
install -m 644 "$project/docs/schema.json" "$project/docs/check.md" "$docs"
notices | gzip -9n >"$docs/third-party.gz"
changelog | gzip -9n >"$docs/changelog.Debian.gz"
gzip -9nc "$project/CHANGELOG.md" >"$docs/changelog.gz"
for page in "$project"/docs/man/*; do
    install -d "$tree/usr/share/man/man${page##*.}"
    gzip -9nc "$page" >"$tree/usr/share/man/man${page##*.}/${page##*/}.gz"
done
install -D -m 644 "$project/packaging/lintian-overrides" "$tree/usr/share/lintian/overrides/kalmoinstall"

# The archive: a folder to unpack anywhere.
folder=$work/kalmoinstall-$version
install -D "$program" "$folder/kalmoinstall"
install -m 644 "$payload" "$folder/kalmoinstall.zip"
install -D -m 644 -t "$folder/man" "$project"/docs/man/*
(cd "$project" && find ansible -type f -exec install -D -m 644 {} "$folder/{}" \;)
install -m 644 "$project/docs/schema.json" "$project/docs/check.md" "$folder"
install -m 644 "$work/copyright" "$folder/COPYRIGHT"
notices >"$folder/THIRD-PARTY"
tar -C "$work" --sort=name --format=gnu --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
    -cf - "${folder##*/}" | zstd -q -9 --single-thread -o "$out/$name.tar.zst"

find "$tree" -exec touch -hd "@$SOURCE_DATE_EPOCH" {} +
(cd "$work" && KALMO_TREE=$tree KALMO_VERSION=$version KALMO_MAINTAINER=$maintainer KALMO_OUT=$work/packages \
    cpack --config "$project/packaging/cpack.cmake" -G "DEB;RPM") >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
mv "$work"/packages/*.deb "$work"/packages/*.rpm "$out"

cd "$out"
sha256sum -- "$name.tar.zst" kalmoinstall[-_]"$version"-1* >SHA256SUMS
cat SHA256SUMS

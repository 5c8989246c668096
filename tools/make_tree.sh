#!/bin/bash
# Makes the file tree of another release, for testkit/machine --tree, out of the packages of the registry that this
# machine's apt knows.
#
#   tools/make_tree.sh RELEASE [DIR]    RELEASE: debian-11, debian-13, ubuntu-22.04; DIR: build/trees/RELEASE
#
# Needs root, and debootstrap (tools/install_packages.sh soak). A tree that is there is left as it is; one whose making
# was cut short, or that was made for another list of packages, is made again.
set -euo pipefail
project=$(realpath -e -- "${BASH_SOURCE[0]%/*}/..")

release=${1-}
dir=${2-$project/build/trees/$release}
# What the machine and the stories call inside.
packages=systemd,systemd-sysv,dbus,init-system-helpers,sysvinit-utils,lsb-base,passwd,procps,util-linux
distribution=debian
keyring=/usr/share/keyrings/debian-archive-keyring.gpg
case "$release" in
    debian-11) suite=bullseye ;;
    debian-13) suite=trixie packages+=,ubuntu-keyring ;; # the keys that vouch for the Ubuntu tree
    ubuntu-22.04) suite=jammy distribution=ubuntu keyring=$project/build/trees/debian-13/usr/share/keyrings/ubuntu-archive-keyring.gpg ;;
    *) echo "usage: ${0##*/} debian-11|debian-13|ubuntu-22.04 [DIR]" >&2; exit 2 ;;
esac

# Two who want the same tree make it once.
mkdir -p "$(dirname "$dir")"
exec {lock}>"$dir.lock"
flock "$lock"
done=$dir/etc/kalmo-tree
[[ ! -e $done || $(<"$done") != "$packages" ]] || exit 0

[[ $distribution != ubuntu || -e $keyring ]] || "$project/tools/make_tree.sh" debian-13
# shellcheck source=/dev/null
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
# shellcheck disable=SC2016 # apt's own variable
uri=$(apt-get indextargets --format '$(REPO_URI)' "Release: $codename" | head -n 1)
[[ $uri == */debian/ ]] || { echo "${0##*/}: apt on this machine has no registry of Debian: ${uri:-none}" >&2; exit 1; }

rm -rf --one-file-system "$dir.part" "$dir"
trap 'rm -rf --one-file-system "$dir.part"' EXIT
# What debootstrap mounts goes with it, however it ends.
unshare --mount --propagation private -- debootstrap --variant=minbase --include="$packages" --keyring="$keyring" \
    --force-check-gpg "$suite" "$dir.part" "${uri%debian/}$distribution"
rm -f "$dir.part"/var/cache/apt/archives/*.deb
echo "$packages" >"$dir.part/etc/kalmo-tree"
mv "$dir.part" "$dir"

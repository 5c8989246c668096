#!/bin/bash
# What tools/make_release.sh makes, on a throwaway machine: the same bytes each time, and packages that are installed,
# used, upgraded and removed while the server goes on.
#
#   packages.sh CURRENT NEXT     folders with "kalmoinstall" and "kalmoinstall.zip" of two versions
set -e
[[ ${KALMO_MACHINE-} == systemd ]] || { echo "$0: it would change this machine" >&2; exit 1; }
project=$(realpath "${BASH_SOURCE[0]%/*}/../..")
# shellcheck source=samples/story/server_state.sh
source "$project/samples/story/server_state.sh"
cd "$(mktemp -d)"
trap 'echo "line $LINENO: $BASH_COMMAND"; cat trace 2>/dev/null' ERR
is() { [[ $1 == "$2" ]] || { printf 'expected: %s\nis:       %s\n' "$1" "$2"; false; }; }
version() { "$1" --version | sed 's/.* //'; }
release() { "${3-$project}/tools/make_release.sh" --program "$1/kalmoinstall" --out "$2" "$1/kalmoinstall.zip" >/dev/null; }
pilot() { printf '[PILOTAGE]\nMAJ=%s\n[SERVEUR]\nServeur=%s\nRepertoire=/srv/zd\n' "$@" >orders; kalmoinstall /PILOT=orders /DEBUG=trace; }

export SOURCE_DATE_EPOCH=1700000000
# What an installation from the sources brings is the same program.
DESTDIR=$PWD/staged cmake --install "${1%/payload/*}" --prefix /usr >/dev/null
is "$(version "$1/kalmoinstall")" "$(version staged/usr/sbin/kalmoinstall)"
# A package brings one file, and none that lacks its other volumes.
zip -qs 1m -O volumes.zip "$1/kalmoinstall.zip"
is 2 "$("$project/tools/make_release.sh" --program "$1/kalmoinstall" --out volumes volumes.zip 2>/dev/null; echo "$?")"
[[ ! -e volumes ]]
release "$1" current
release "$2" next
# By somebody else, elsewhere.
mkdir elsewhere
cp -r "$project"/{tools,packaging,docs,ansible,CHANGELOG.md} elsewhere
chmod -R go-rwx elsewhere
(umask 077; TZ=Asia/Tokyo LC_ALL=C release "$1" again "$PWD/elsewhere")
cmp current/SHA256SUMS again/SHA256SUMS
lintian --fail-on error,warning next/*.deb
tar -xf current/*.tar.zst
is "$(version "$1/kalmoinstall")" "$(version kalmoinstall-*/kalmoinstall)"
cmp "$project/docs/schema.json" kalmoinstall-*/schema.json
diff -r "$project/ansible" kalmoinstall-*/ansible

for kind in deb rpm; do
    case $kind in
        deb) put="dpkg -i" remove="dpkg -r" ;;
        rpm) put="rpm --force-debian -U" remove="rpm --force-debian -e" ;;
    esac
    $put current/*.$kind
    is "$(version "$1/kalmoinstall")" "$(version kalmoinstall)"
    is /usr/share/man/man8/kalmoinstall.8.gz "$(man -w kalmoinstall)"
    is 0:0:755 "$(stat -c %u:%g:%a /usr/lib/kalmoinstall)"
    cmp "$project/docs/schema.json" /usr/share/doc/kalmoinstall/schema.json
    pilot 2 first
    is "ZDSQL first $(version "$1/tree/kalmo") ready" "$(greeting 4900)"
    server=$(pid ZDCS-first)
    $put next/*.$kind
    is "$(version "$2/kalmoinstall")" "$(version kalmoinstall)"
    is "$server" "$(pid ZDCS-first)"
    pilot 1 first
    is "ZDSQL first $(version "$2/tree/kalmo") ready" "$(greeting 4900)"
    server=$(pid ZDCS-first)
    $remove kalmoinstall
    is "" "$(find /usr/lib /usr/sbin /usr/share -name 'kalmoinstall*')"
    is "$server" "$(pid ZDCS-first)"
    # Nothing is left that would keep it from coming back.
    $put next/*.$kind
    for name in first kalmomanager; do
        pilot 3 $name
        is OK "$(cat /srv/zd/Install.log)"
    done
    $remove kalmoinstall
    rm -r /srv/zd
done

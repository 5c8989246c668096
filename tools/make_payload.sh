#!/bin/sh
# Builds a payload archive from a folder: every file below it becomes an entry under its path in the folder.
#
#   make_payload.sh [--password-from PROGRAM] [--encipher PATTERN]... FOLDER ARCHIVE.zip
#
# PROGRAM prints the archive password (the build's kalmo_archive_password). Entries whose path matches a
# PATTERN of the archiver zip ("tv*.so") are enciphered with it, the others are not. Names are UTF-8.
set -eu

die() {
    echo "make_payload.sh: $*" >&2
    exit 2
}

password_program=
patterns=
while [ $# -gt 2 ]; do
    case "$1" in
        --password-from) password_program=$2 ;;
        --encipher) patterns="$patterns $2" ;;
        *) die "unknown option $1" ;;
    esac
    shift 2
done
[ $# -eq 2 ] || die "give a folder and an archive"
[ -d "$1" ] || die "$1 is no folder"
[ -z "$patterns" ] || [ -n "$password_program" ] || die "--encipher needs --password-from"

folder=$1
archive=$(cd "$(dirname "$2")" && pwd)/$(basename "$2")
partial=$archive.partial.zip
rm -f "$partial"
locales=$(mktemp -d)
trap 'rm -rf "$partial" "$locales"' EXIT

password=
[ -z "$password_program" ] || password=$("$password_program")

cd "$folder"
# zip marks names as UTF-8 only under the locale en_US.UTF-8, whatever the user's own is. It gets the one that every
# system has under that name.
for directory in /usr/lib/locale/C.utf8 /usr/lib/locale/C.UTF-8; do
    [ ! -d "$directory" ] || ln -sfn "$directory" "$locales/en_US.UTF-8"
done
export LOCPATH="$locales"
find -L . ! -type d >"$locales/names"
if LC_ALL=C grep -q '[^ -~]' "$locales/names"; then
    iconv -f UTF-8 -t UTF-8 "$locales/names" >/dev/null 2>&1 || die "a name in $folder is not UTF-8"
    [ "$(LC_ALL=en_US.UTF-8 locale charmap 2>/dev/null)" = UTF-8 ] ||
        die "names outside ASCII cannot be packed here: there is no locale C.UTF-8"
fi

# -X leaves out owners, also since the installer reads a Zip64 block only as the first one; -D leaves out directory
# entries: the installer makes what directories it needs. The installer reads counts of more than 16 bits only where
# the offset is a Zip64 one too, which -fz makes it.
set -- -q -X -D -r
[ "$(wc -l <"$locales/names")" -le 65534 ] || set -- "$@" -fz
set -f # the patterns are for zip, not for the shell
if [ -z "$patterns" ]; then
    zip "$@" "$partial" .
else
    # shellcheck disable=SC2086 # one word a pattern
    zip "$@" "$partial" . -x $patterns
    # shellcheck disable=SC2086
    zip "$@" -P "$password" "$partial" . -i $patterns
fi
mv "$partial" "$archive"

#!/bin/sh
# Builds a payload archive from a folder: every file below it becomes an entry under its path in the folder.
#
#   make_payload.sh [--password-from PROGRAM] [--encipher PATTERN]... FOLDER ARCHIVE.zip
#
# PROGRAM prints the archive password (the build's kalmo_archive_password). Entries whose path matches a
# PATTERN of the archiver zip ("tv*.so") are enciphered with it, the others are not.
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
trap 'rm -f "$partial"' EXIT

password=
[ -z "$password_program" ] || password=$("$password_program")

cd "$folder"
set -f # the patterns are for zip, not for the shell
# -X leaves out owners, -D directory entries: the installer makes what directories it needs.
if [ -z "$patterns" ]; then
    zip -q -X -D -r "$partial" .
else
    # shellcheck disable=SC2086 # one word a pattern
    zip -q -X -D -r "$partial" . -x $patterns
    # shellcheck disable=SC2086
    zip -q -X -D -r -P "$password" "$partial" . -i $patterns
fi
mv "$partial" "$archive"

#!/bin/bash
# A power cut at the moment at which an installation first runs a program of the server, and one at which an upgrade
# starts the service: what is on the disk then holds every file of the payload. The install directory is a file system
# of its own on a loop device; its image, copied by the very program that is run, is what a disk holds after a cut.
#
#   power_cut.sh FOLDER    a folder with "kalmoinstall"; run it in testkit/in_private_root
set -euo pipefail
[[ -n ${KALMO_PRIVATE_ROOT-} ]] || { echo "$0: run this in testkit/in_private_root" >&2; exit 1; }
project=$(realpath -e -- "${BASH_SOURCE[0]%/*}/../..")
work=$(mktemp -d)
target=/srv/zd/power
mkdir -p "$target" "$work"/{tree/help,program,cut}
cp "$1/kalmoinstall" "$work/program/"

cat >"$work/copy_disk" <<END
#!/bin/sh
[ -e $work/cut.img ] || cp --sparse=always $work/disk.img $work/cut.img
END
chmod +x "$work/copy_disk"
for program in kalmo kalmomanager; do cp "$work/copy_disk" "$work/tree/$program"; done

# A machine with init scripts, whose only instance copies the disk when it is started.
printf '#!/bin/sh\nexit 1\n' >/bin/systemctl
echo 12 >/etc/debian_version
make_service() {
    cat >/etc/init.d/ZDCS-power <<END
#!/bin/sh
Name="power"
Program="$target/kalmo --service"
case "\$1" in start) $work/copy_disk ;; status) exit 3 ;; esac
END
    chmod +x /etc/init.d/ZDCS-power
}

make_payload() { # new content for every file, of sizes around those of blocks and buffers
    local size
    for size in 0 1 4095 4096 4097 65536 65537 300000 2000000; do
        head -c "$size" /dev/urandom >"$work/tree/help/file.$size"
    done
    "$project/tools/make_payload.sh" "$work/tree" "$work/program/kalmoinstall.zip"
}

failures=0
run() { # NAME OPERATION
    local lost
    rm -f "$work/cut.img"
    printf '[PILOTAGE]\nMAJ=%s\n[SERVEUR]\nServeur=power\nRepertoire=%s\n' "$2" "$target" >"$work/pilot.ini"
    : >"$work/trace"
    "$work/program/kalmoinstall" "/PILOT=$work/pilot.ini" "/DEBUG=$work/trace"
    mount -o loop "$work/cut.img" "$work/cut" # replays the journal
    lost=$(cd "$work/tree" && find . -type f ! -exec cmp -s {} "$work/cut/{}" \; -print)
    if [[ -z $lost && $(cat "$target/Install.log") == OK ]] && grep -qs "^Name = power" "$work/cut/ZDConf.ini"; then
        echo "ok      power cut during an $1: $(find "$work/tree" -type f | wc -l) files, all whole"
    else
        printf 'FAILED  power cut during an %s, lost or damaged:\n%s\n' "$1" "$lost"
        cat "$work/trace"
        failures=$((failures + 1))
    fi
    umount "$work/cut"
    sync --file-system "$target"
}

truncate -s 32M "$work/disk.img"
mkfs.ext4 -q "$work/disk.img"
mount -o loop "$work/disk.img" "$target"
make_payload
run install 2
make_service
make_payload
run upgrade 1
umount "$target"
exit $((failures > 0))

#!/usr/bin/python3
"""Unattended runs onto real file systems that are full, out of inodes or read-only, in a throwaway machine.

    small_disk.py CURRENT NEXT     folders with the installer and the payload of two versions

Once there is room and leave to write, the same order must do its work. Exits with 1 when a check failed.
"""
import shutil
import sys

from scene import DIRECTORY, SHORT_PAUSES, SYSTEMD, WORK, Snapshot, check_case, prepare, sh

FULL, READ_ONLY = "No space left on device", "Read-only file system"
# Order, file system, what the trace tells, whether the marker says OK afterwards, whether the server runs.
CASES = [
    # Neither a failed extraction nor what the missing programs answer decides an unattended installation.
    ("install", "size=64k", f"install .*{FULL}", True, False),
    ("install", "nr_inodes={inodes}", f"create directory {DIRECTORY}/BDD/: .*{FULL}", False, False),
    ("install", "ro", f"failed .*{READ_ONLY}", False, False),
    ("upgrade", "size={used}k", f"install .*{FULL}", False, False),
    ("upgrade", "nr_inodes={inodes}", f"install .*{FULL}", False, False),
    # The marker of the installation cannot be taken away, so nothing is begun.
    ("upgrade", "ro", f"failed .*{READ_ONLY}", True, True),
    ("uninstall", "ro", f"failed .*{READ_ONLY}", True, True),
]


def squeeze(options):
    """Makes the file system of the install directory what a case asks for, with 64 KiB or no inode to spare."""
    used = int(sh(f"du -sk {DIRECTORY}").stdout.split()[0]) + 64
    inodes = int(sh(f"find {DIRECTORY} | wc -l").stdout)
    # Whoever has a file open for writing keeps a file system from becoming read-only, but not a view of it.
    done = sh(f"mount --bind {DIRECTORY} {DIRECTORY} && mount -o remount,bind,ro {DIRECTORY}" if options == "ro" else
              f"mount -o remount,{options.format(used=used, inodes=inodes)} {DIRECTORY}")
    if done.returncode:
        raise SystemExit(done.stderr)


def main(current, next_version):
    orders = prepare(current, next_version)
    # The next version has two files more, for which there is no room; the marker leaves it for one.
    shutil.copytree(next_version, WORK + "/next")
    sh(f"cd {WORK}/next/tree && head -c 200000 /dev/urandom >more && cp more most && zip -q ../kalmoinstall.zip more most")
    orders["upgrade"] = orders["upgrade"]._replace(folder=WORK + "/next")

    fresh = Snapshot()
    orders["install"].run()
    installed = Snapshot()
    good = True
    for name, disk, told, marked, running in CASES:
        sh(f"mount -t tmpfs -o size=100m disk {DIRECTORY}")
        (fresh if name == "install" else installed).restore()
        squeeze(disk)
        status = orders[name].run([SHORT_PAUSES], trace=True)
        good &= check_case(f"{name} onto {disk}", status, told, marked, running)
        sh(f"umount {DIRECTORY}" if disk == "ro" else f"mount -o remount,size=100m,nr_inodes=9999 {DIRECTORY}")
        # Without systemd an uninstallation leaves a running server running.
        good &= check_case("    then with room", orders[name].run(trace=True), "unattended run: ok", True,
                           name != "uninstall" or not SYSTEMD)
        fresh.restore()
        sh(f"umount {DIRECTORY}")
    raise SystemExit(not good)


main(*sys.argv[1:])

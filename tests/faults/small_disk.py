#!/usr/bin/python3
"""Unattended runs onto real file systems that are full, out of inodes or read-only, in a throwaway machine.

    small_disk.py CURRENT NEXT     folders with the installer and the payload of two versions

Once there is room and leave to write, the same order must do its work. Exits with 1 when a check failed.
"""
import os
import re
import shutil
import sys

from scene import (DIRECTORY, INSTANCE, MANAGER, MARKER, TRACE, WORK, Snapshot, greeting, prepare,
                   program_of, read, sh, wait_for)

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


def runs():
    return bool(greeting() and program_of(INSTANCE) and program_of(MANAGER))


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
    failures = 0
    for name, disk, told, marked, running in CASES:
        sh(f"mount -t tmpfs -o size=100m disk {DIRECTORY}")
        (fresh if name == "install" else installed).restore()
        squeeze(disk)
        status = orders[name].run(["clock_nanosleep:retval=0"], trace=True)  # waiting makes no room
        trace = read(TRACE).decode()
        wrong = [f"it ended with {status}"] * (status != 0)
        wrong += [f"the trace does not tell \"{told}\""] * (not re.search(told, trace))
        wrong += [f"the marker says {read(MARKER)!r}"] * ((read(MARKER) == b"OK") != marked)
        wrong += [f"the server {'does not run' if running else 'runs'}"] * (runs() != running)
        sh(f"umount {DIRECTORY}" if disk == "ro" else f"mount -o remount,size=100m,nr_inodes=9999 {DIRECTORY}")
        orders[name].run(trace=True)
        done = (lambda: not os.path.exists(DIRECTORY + "/kalmo")) if name == "uninstall" else runs
        wrong += ["the next run did not do its work"] * (read(MARKER) != b"OK" or not wait_for(done, 5))
        print(f"{'FAILED' if wrong else 'ok':8}{name} onto {disk}", *wrong, *[trace, read(TRACE).decode()] * bool(wrong),
              sep="\n  ", flush=True)
        failures += bool(wrong)
        fresh.restore()
        sh(f"umount {DIRECTORY}")
    raise SystemExit(failures > 0)


main(*sys.argv[1:])

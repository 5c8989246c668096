#!/usr/bin/python3
"""Unattended removals that did not end, and what comes after them, in a throwaway machine with systemd.

    unfinished.py CURRENT     folder with the installer and its payload

Exits with 1 when something did not hold.
"""
import os
import shutil
import sys

from scene import DIRECTORY, INSTANCE, MANAGER, MARKER, NOTES, TRACE, Snapshot, prepare, program_of, read, sh

PROGRAM, UNIT = DIRECTORY + "/kalmo", f"/etc/systemd/system/{INSTANCE}.service"
good = True


def expect(what, *conditions):
    global good
    good &= all(conditions)
    print(f"{'ok' if all(conditions) else 'FAILED':8}{what}", *[read(TRACE).decode()] * (not all(conditions)), sep="\n  ")


def marked():
    return read(MARKER) == b"OK"


def told(text):
    return text in read(TRACE).decode()


def removed():
    return marked() and not any(map(os.path.exists, (PROGRAM, UNIT, NOTES)))


def main(current):
    orders = prepare(current, current)
    install, uninstall = orders["install"], orders["uninstall"]
    install.run()
    installed = Snapshot()

    os.unlink(DIRECTORY + "/tvsqlsrv.so")
    uninstall.run(trace=True)
    expect("a missing library ends it, with a note", not marked(), os.path.exists(NOTES), not os.path.exists(UNIT))
    install._replace(text=install.text.replace("Serveur=first", "Serveur=second")).run(trace=True)
    expect("another instance in its directory makes the note void", marked(), not os.path.exists(NOTES))
    uninstall.run(trace=True)
    expect("and keeps its files", told("no such instance"), os.path.exists(PROGRAM), program_of("ZDCS-second"))
    uninstall._replace(text=uninstall.text.replace("Serveur=first", "Serveur=second")).run()

    installed.restore()
    uninstall.run(["unlink:signal=KILL:when=2"])  # the first deletes the marker
    sh("mv /bin/systemctl /bin/systemctl.real; printf '#!/bin/sh\\nexit 1\\n' >/bin/systemctl; chmod 755 /bin/systemctl")
    uninstall.run(trace=True)
    expect("a service that cannot be asked about is not gone", told("no such instance"), not marked(),
           os.path.exists(PROGRAM))
    sh("mv /bin/systemctl.real /bin/systemctl")
    uninstall.run(trace=True)
    expect("until it can", removed())

    installed.restore()
    uninstall.run(["unlink:error=EIO:when=2"], trace=True)
    expect("a unit that stays is told", told(f"unit or script of {INSTANCE}: failed (Input/output error)"),
           os.path.exists(UNIT))
    uninstall.run(trace=True)
    expect("and deleted the next time", removed())

    installed.restore()
    shutil.rmtree(DIRECTORY)
    orders["upgrade"].run(trace=True)
    expect("a lost directory cannot be upgraded, and stops nothing", told("is gone"), program_of(MANAGER))
    uninstall.run()
    uninstall.run(trace=True)
    expect("but removed in the end", told("going on"), not os.path.exists(UNIT), not os.path.exists(NOTES))
    install.run()
    expect("and installed again, and the manager runs", marked(), program_of(INSTANCE), program_of(MANAGER))
    raise SystemExit(not good)


main(*sys.argv[1:])

#!/usr/bin/python3
"""Unattended runs whose commands are missing, die, hang, close or flood their output, on a machine with init scripts.

    commands.py CURRENT NEXT     folders with the installer and the payload of two versions

Exits with 1 when a run did not end in time or not as it must.
"""
import shutil
import sys

from scene import INSTANCE, WORK, Snapshot, check_case, prepare, sh

SYSTEMCTL = "rm -f /bin/systemctl; printf '#!/bin/sh\\n%s\\n' '{}' >/bin/systemctl; chmod 755 /bin/systemctl"
SCRIPT = f"sed -i '2i [ \"$1\" != {{}} ] || {{}}' /etc/init.d/{INSTANCE}"
# Programs of the payload that do something else in installer mode.
PROGRAM = ("cd " + WORK + "/odd && printf '#!/bin/sh\\n%s\\n' '{}' | tee kalmo >kalmomanager && "
           "zip -q kalmoinstall.zip kalmo kalmomanager")
# Order, what is made of the machine, the longest time, what the trace tells, whether the marker says OK, what runs.
CASES = [
    # Without a systemctl that answers the machine works with init scripts.
    ("install", "rm /bin/systemctl", 10, "", True, True),
    ("install", SYSTEMCTL.format("kill -9 $$"), 10, "", True, True),
    ("install", SYSTEMCTL.format("exec >&- 2>&-; exit 1"), 10, "", True, True),
    ("install", SYSTEMCTL.format("exec yes"), 10, "", True, True),
    # A question gets half a minute.
    ("uninstall", SYSTEMCTL.format("exec sleep 1000"), 45, "", True, True),
    ("uninstall", SYSTEMCTL.format("sleep 3 & exit 0"), 15, "", True, True),
    # What the server's programs answer does not decide, nor whether they are there.
    ("odd", "cd " + WORK + "/odd && zip -qd kalmoinstall.zip kalmo kalmomanager", 10, "exit code 127", True, False),
    ("odd", PROGRAM.format("kill -9 $$"), 10, "exit code 137|killed by signal 9", True, False),
    ("odd", PROGRAM.format("yes | head -c 100000000; exec >&- 2>&-"), 10, "exit code 0", True, False),
    # A service that cannot be asked or stopped keeps its program busy: nothing is replaced by halves unseen.
    ("upgrade", SCRIPT.format("status", "exec sleep 1000"), 60, "kalmo.*busy", False, True),
    ("upgrade", SCRIPT.format("stop", "kill -9 $$"), 30, f"stop {INSTANCE}: failed", False, True),
    ("upgrade", SCRIPT.format("start", "yes | head -c 100000000 >&2"), 10, f"start {INSTANCE}: ok", True, True),
    # Under SysV init an uninstallation does not stop the service.
    ("uninstall", "rm /usr/sbin/update-rc.d", 10, "unregister ZDCS-first: ok", True, True),
]


def main(current, next_version):
    orders = prepare(current, next_version)
    orders["odd"] = type(orders["install"])(WORK + "/odd", orders["install"].text)
    sh(f"cp -p /bin/systemctl {WORK}/systemctl; cp -p /usr/sbin/update-rc.d {WORK}/update-rc.d")
    fresh = Snapshot()
    orders["install"].run()
    installed = Snapshot()
    good = True
    for name, made, longest, told, marked, running in CASES:
        (fresh if name in ("install", "odd") else installed).restore()
        shutil.rmtree(WORK + "/odd", ignore_errors=True)
        shutil.copytree(current, WORK + "/odd")
        if (done := sh(made)).returncode:
            raise SystemExit(done.stderr)
        good &= check_case(f"{name}: {made}", orders[name].run(trace=True, seconds=longest), told, marked, running)
        sh(f"pkill -f '^sleep 1000'; cp -p {WORK}/systemctl /bin/; cp -p {WORK}/update-rc.d /usr/sbin/")
    raise SystemExit(not good)


main(*sys.argv[1:])

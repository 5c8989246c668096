#!/usr/bin/python3
"""Unattended runs in which something around them fails, in a throwaway machine, and the runs that come after them.

    cases.py commands|disks|unfinished|ways|plan CURRENT NEXT    folders with the installer and the payload of two versions

Before each run --check is asked whether it will work, and must be right.

Prints a line a run; exits with 1 when one did not end in time or not as it must.
"""
import itertools
import json
import os
import re
import shutil
import sys
import typing

from run import (CALLS, DIRECTORY, INSTANCE, LOG, MARKER, NOTES, SHORT_PAUSES, SYSTEMD, TRACE, WORK, Snapshot, calls, greeting,
                 prepare, read, result, sh, wait_for)

UNIT, PROGRAM = f"/etc/systemd/system/{INSTANCE}.service", DIRECTORY + "/kalmo"
DEFINITION = UNIT if SYSTEMD else "/etc/init.d/" + INSTANCE
SYSTEMCTL = "rm -f /bin/systemctl; printf '#!/bin/sh\\n%s\\n' '{}' >/bin/systemctl; chmod 755 /bin/systemctl"
SCRIPT = f"sed -i '2i [ \"$1\" != {{}} ] || {{}}' /etc/init.d/{INSTANCE}"
# Programs of the payload that do something else in installer mode.
ODD = f"cd {WORK}/odd && printf '#!/bin/sh\\n%s\\n' '{{}}' | tee kalmo >kalmomanager && zip -q kalmoinstall.zip kalmo kalmomanager"
# The file system of the install directory, with 64 KiB or no inode to spare. Whoever has a file open for writing keeps it
# from becoming read-only, but not a view of it.
FULL = f"mount -o remount,size=$(($(du -sk {DIRECTORY} | cut -f1) + 64))k {DIRECTORY}"
NO_INODES = f"mount -o remount,nr_inodes=$(find {DIRECTORY} | wc -l) {DIRECTORY}"
READ_ONLY = f"mount --bind {DIRECTORY} {DIRECTORY} && mount -o remount,bind,ro {DIRECTORY}"
NO_SPACE, NO_WRITING = "No space left on device", "Read-only file system"


class Case(typing.NamedTuple):
    start: str  # the machine: "fresh", "installed", or as the run before left it
    order: str
    made: str  # what a shell makes of the machine
    seconds: int
    told: str  # by the trace
    marked: bool
    running: bool
    state: str  # by the result
    then: str = "true"  # holds afterwards
    inject: tuple = ()
    foretold: bool = True  # whether it fails or works is nothing that a check cannot know


# What stands in the way, the runs that are tried with it, and those of them that fail: i(nstall), u(pgrade), r(emoval).
WAYS = [
    (f"rm -f {MARKER}; mkdir {MARKER}", "iur", "iur"),
    (f"rm -f {MARKER}; ln -s /nowhere/x {MARKER}", "iur", ""),
    (READ_ONLY, "iur", "iur"),
    (f"rm -f {MARKER}; chattr +a {DIRECTORY}", "iur", "r"),
    (f"touch {PROGRAM}; chattr +i {PROGRAM}", "iur", "iur"),
    (f"touch {PROGRAM}; chattr +a {PROGRAM}", "iur", "iur"),
    (f"touch {DIRECTORY}/tvsqlsrv.so; mount --bind {DIRECTORY}/tvsqlsrv.so {DIRECTORY}/tvsqlsrv.so", "iur", "r"),
    (f"rm -f {DIRECTORY}/zdlogger; mkdir {DIRECTORY}/zdlogger {DIRECTORY}/tvx.so", "iur", "iur"),
    (f"mkdir -p {DIRECTORY}/help; chattr +i {DIRECTORY}/help", "iur", "i"),
    (f"chattr +i {DIRECTORY}/ZDConf.ini", "iur", "i"),
    (f"rm {DIRECTORY}/ZDConf.ini; ln -s /nowhere/x {DIRECTORY}/ZDConf.ini", "iur", ""),
    (f"touch {os.path.dirname(DEFINITION)}/x; chattr +i {os.path.dirname(DEFINITION)}", "iur", "ir"),
    (f"chattr +i {DEFINITION}", "ur", "r"),
    ("chattr +i /etc/systemd/system/multi-user.target.wants", "ur" * SYSTEMD, "r"),
    (f"sed -i 's/.Unit./&\\nRefuseManualStart=yes/' {UNIT}; systemctl daemon-reload", "ur" * SYSTEMD, "u"),
    (f"sed -i 's/.Unit./&\\nRefuseManualStop=yes/' {UNIT}; systemctl daemon-reload", "u" * SYSTEMD, "u"),
    ("touch /etc/rc2.d/x; chattr +i /etc/rc2.d", "ur" * (not SYSTEMD), ""),
    ("mount --bind /etc /etc && mount -o remount,bind,ro /etc", "iur", "ir"),
    ("mount --bind /var /var && mount -o remount,bind,ro /var", "iur", ""),
    (f"mkdir -p {NOTES}; chattr +a {NOTES}", "iur", "r"),
    (f"mkdir -p {NOTES}; chattr +i {NOTES}", "iur", ""),
    ("rm /usr/sbin/update-rc.d", "ur" * (not SYSTEMD), "r"),
]
CLEAR = f"umount {DIRECTORY}/tvsqlsrv.so {DIRECTORY} /etc /var; chattr -R -ai {DIRECTORY} {NOTES} /etc/systemd /etc/init.d /etc/rc2.d"


def on_disk(order, made, told, marked, running):
    """Once there is room and leave to write, the same order must do its work."""
    return [Case("fresh" if order == "install" else "installed", order, made, 120, told, marked, running, "failed",
                 inject=(SHORT_PAUSES,)),
            Case("", order, "", 120, "unattended run: ok", True, order != "uninstall", "ok")]


TABLES = {
    "commands": [
        # Without a systemctl that answers the machine works with init scripts.
        Case("fresh", "install", "rm /bin/systemctl", 300, "", True, True, "ok"),
        Case("fresh", "install", SYSTEMCTL.format("kill -9 $$"), 300, "", True, True, "ok"),
        Case("fresh", "install", SYSTEMCTL.format("exec >&- 2>&-; exit 1"), 300, "", True, True, "ok"),
        Case("fresh", "install", SYSTEMCTL.format("exec yes"), 300, "", True, True, "ok"),
        # A question gets half a minute.
        Case("installed", "uninstall", SYSTEMCTL.format("exec sleep 1000"), 300, "", True, True, "ok"),
        Case("installed", "uninstall", SYSTEMCTL.format("sleep 3 & exit 0"), 300, "", True, True, "failed"),
        # What the server's programs answer does not decide, nor whether they are there.
        Case("fresh", "odd", f"cd {WORK}/odd && zip -qd kalmoinstall.zip kalmo kalmomanager", 300, "exit code 127", True, False, "failed"),
        Case("fresh", "odd", ODD.format("kill -9 $$"), 300, "exit code 137|killed by signal 9", True, False, "failed",
             foretold=False),
        Case("fresh", "odd", ODD.format("yes | head -c 100000000; exec >&- 2>&-"), 300, "exit code 0", True, False, "failed",
             foretold=False),
        # A service that cannot be asked or stopped keeps its program busy: nothing is replaced by halves unseen.
        Case("installed", "upgrade", SCRIPT.format("status", "exec sleep 1000"), 300, "kalmo.*busy", False, True, "failed"),
        Case("installed", "upgrade", SCRIPT.format("stop", "kill -9 $$"), 300, f"stop {INSTANCE}: failed", False, True, "failed",
             foretold=False),
        Case("installed", "upgrade", SCRIPT.format("start", "yes | head -c 100000000 >&2"), 300, f"start {INSTANCE}: ok", True, True, "ok"),
        # Under SysV init an uninstallation does not stop the service.
        Case("installed", "uninstall", "rm /usr/sbin/update-rc.d", 300, "unregister ZDCS-first: ok", True, True, "failed"),
    ],
    "disks": [
        # Neither a failed extraction nor what the missing programs answer decides an unattended installation.
        *on_disk("install", f"mount -o remount,size=64k {DIRECTORY}", f"install .*{NO_SPACE}", True, False),
        *on_disk("install", NO_INODES, f"create directory {DIRECTORY}/BDD/: .*{NO_SPACE}", False, False),
        *on_disk("install", READ_ONLY, f"failed .*{NO_WRITING}", False, False),
        *on_disk("upgrade", FULL, f"install .*{NO_SPACE}", False, False),
        *on_disk("upgrade", NO_INODES, f"install .*{NO_SPACE}", False, False),
        # The marker of the installation cannot be taken away, so nothing is begun.
        *on_disk("upgrade", READ_ONLY, f"failed .*{NO_WRITING}", True, True),
        *on_disk("uninstall", READ_ONLY, f"failed .*{NO_WRITING}", True, True),
    ],
    "unfinished": [
        # A removal that is ended leaves a note, which another instance in its directory makes void.
        Case("installed", "uninstall", f"rm {DIRECTORY}/tvsqlsrv.so", 60, "", False, False, "failed", f"test -e {NOTES} -a ! -e {UNIT}"),
        Case("", "second", "", 60, "", True, True, "ok", f"test ! -e {NOTES}"),
        Case("", "uninstall", "", 60, "no such instance", True, True, "failed", f"test -e {PROGRAM}"),
        Case("", "remove second", "", 60, "", True, False, "ok"),
        # A service that cannot be asked about is not gone, until it can. The first call deletes the marker.
        Case("installed", "uninstall", "", 60, "", False, False, "running", inject=("unlink:signal=KILL:when=2",)),
        Case("", "uninstall", SYSTEMCTL.format("exit 1"), 60, "no such instance", False, False, "failed", f"test -e {PROGRAM}"),
        Case("", "uninstall", "", 60, "", True, False, "ok", f"test ! -e {PROGRAM} -a ! -e {UNIT} -a ! -e {NOTES}"),
        # A unit that stays is told, and deleted the next time.
        Case("installed", "uninstall", "", 60, f"unit or script of {INSTANCE}: failed .Input/output error", True, False, "failed",
             f"test -e {UNIT}", ("unlink:error=EIO:when=2",)),
        Case("", "uninstall", "", 60, "", True, False, "ok", f"test ! -e {PROGRAM} -a ! -e {UNIT} -a ! -e {NOTES}"),
        # A lost directory cannot be upgraded, and stops nothing, but removed and installed again.
        Case("installed", "upgrade", f"rm -r {DIRECTORY}", 60, "is gone", False, True, "failed", "systemctl is-active KalmoManager"),
        Case("", "uninstall", "", 60, "", False, False, "failed"),
        Case("", "uninstall", "", 60, "going on", False, False, "ok", f"test ! -e {UNIT} -a ! -e {NOTES}"),
        Case("", "install", "", 60, "", True, True, "ok", "systemctl is-active KalmoManager"),
    ],
}


def foretold(order):
    """Whether --check says that a run will work."""
    order.write()
    return sh(f"{order.folder}/kalmoinstall --check {WORK}/pilot.ini").returncode == 0


def other_than_foretold(works):
    return [f"--check said that it {'works' if works else 'would not work'}"] * (works != (result()["state"] == "ok"))


def ways(made, tried, fail, orders, machines):
    good = True
    for letter, order in [pair for pair in zip("iur", orders) if pair[0] in tried]:
        machines["fresh" if order == "install" else "installed"].restore()
        if (done := sh(made)).returncode:
            raise SystemExit(done.stderr)
        works = foretold(orders[order])
        orders[order].run((SHORT_PAUSES,), True)
        wrong = other_than_foretold(works)
        wrong += [f"the result says {result()}"] * ((result()["state"] == "ok") == (letter in fail))
        sh(f"{CLEAR}; cp -p {WORK}/update-rc.d /usr/sbin/")
        print(f"{'FAILED' if wrong else 'ok':8}{order}: {made}", *wrong, sep="\n  ", flush=True)
        good &= not wrong
    return good


def check(case, status, works):
    trace = read(TRACE).decode()
    wrong = other_than_foretold(works) if case.foretold and case.inject in ((), (SHORT_PAUSES,)) else []
    wrong += [f"it ended with {status}"] * (status != (-9 if "KILL" in "".join(case.inject) else 0))
    wrong += [f"the trace does not tell \"{case.told}\""] * (not re.search(case.told, trace))
    wrong += [f"the marker says {read(MARKER)!r}"] * ((read(MARKER) == b"OK") != case.marked)
    wrong += [f"the server {'does not run' if case.running else 'runs'}"] * (
        bool(wait_for(greeting, 30 if case.running else 0.2)) != case.running)
    wrong += [f"the result says {result()}"] * (result()["state"] != case.state)
    wrong += [f"not so: {case.then}"] * (sh(case.then).returncode != 0)
    print(f"{'FAILED' if wrong else 'ok':8}{case.order}: {case.made}", *wrong, *[trace] * bool(wrong), sep="\n  ", flush=True)
    return not wrong


def commands_of(step):
    """What a step of a plan runs, in the words of systemctl or of a shell."""
    what, _, outcome = step.rpartition(": ")
    verb, _, service = what.partition(" ")
    if outcome == "exit code 0":
        return [what]
    if verb in ("stop", "start"):
        return [what]
    return [f"disable {service}", f"stop {service}", "daemon-reload"] if verb == "unregister" and SYSTEMD else []


def commands_in(log):
    """The commands that changed something, in the same words."""
    found = []
    for arguments in re.findall(r'execve\("[^"]*", \[(.*?)\], 0x', log)[1:]:
        words = re.findall(r'"((?:[^"\\]|\\.)*)"', arguments)
        if words[0] == "sh":
            found.append(re.sub(r"^/etc/init.d/(\S+) (stop|start) .*", r"\2 \1", words[-1]))
        elif words[0] == "/bin/systemctl" and words[1] in ("stop", "start", "disable", "daemon-reload"):
            found.append(" ".join(words[1:]))
    return found


def planned(name, order):
    """Whether a run did what was told before: the steps, and in them all that it changes and runs. Asking changes nothing."""
    order.run(asked=("--check", WORK + "/pilot.ini"))
    wrong = [f"asking: {call.text}" for call in calls() if call.path and not call.path.startswith(("/dev/", "pipe:"))]
    check = json.loads(sh(f"{order.folder}/kalmoinstall --check --json {WORK}/pilot.ini").stdout)
    steps = [f"{step['step']}: {step['result']}" for step in check["plan"]]
    order.run(trace=True, options=("-f", "-b", "execve", "-e", "trace=" + ",".join((*CALLS, "execve"))))
    log = read(LOG).decode("latin-1")
    # What the installer's children do until they are programs is no change.
    own = log.split()[0]
    with open(LOG, "w") as file:
        file.writelines(line.partition(" ")[2].lstrip() + "\n" for line in log.splitlines() if line.split()[0] == own)
    told = [line[25:] for line in read(TRACE).decode().splitlines()]
    wrong += [f"{a!r} was told, {b!r} done" for a, b in itertools.zip_longest(steps, told) if a != b]
    plan = "\n".join(steps)
    known = {DIRECTORY, os.path.dirname(NOTES), NOTES, TRACE, "/run/kalmoinstall.lock", ""}
    known |= {f"/etc/init.d/{INSTANCE}", UNIT} if "unregister" in plan else set()
    seen = {call.path for call in calls() if call.name != "execve" and not call.path.startswith(("/dev/", "/proc/", "pipe:", NOTES))} - known
    wrong += [f"{path} was not told" for path in seen if f" {path}" not in plan and not f"{path}/".startswith(DIRECTORY + "/help")]
    named = set(re.findall(r"(?:install|create directory|configuration|delete|marker) (/\S+?)/?: ok", plan))
    wrong += [f"{path} was not touched" for path in named - {DIRECTORY} if path not in seen]
    run = commands_in(log)
    wrong += [f"{run} was run"] * (run != [command for step in steps for command in commands_of(step)] or not run)
    print(f"{'FAILED' if wrong else 'ok':8}plan of {name}", *wrong, sep="\n  ", flush=True)
    return not wrong


def main(table, current, next_version):
    orders = prepare(current, next_version)
    if table == "plan":
        raise SystemExit(not all([planned(name, order) for name, order in orders.items()]))
    install, uninstall = orders["install"], orders["uninstall"]
    orders["odd"] = install._replace(folder=WORK + "/odd")
    orders["second"] = install._replace(text=install.text.replace("Serveur=first", "Serveur=second"))
    orders["remove second"] = uninstall._replace(text=uninstall.text.replace("Serveur=first", "Serveur=second"))
    if table == "disks":
        # The next version has two files more, for which there is no room; the marker leaves it for one.
        shutil.copytree(next_version, WORK + "/next")
        sh(f"cd {WORK}/next/tree && head -c 200000 /dev/urandom >more && cp more most && zip -q ../kalmoinstall.zip more most")
        orders["upgrade"] = orders["upgrade"]._replace(folder=WORK + "/next")
        sh(f"cp {DIRECTORY}/* {WORK}; mount -t tmpfs -o size=100m disk {DIRECTORY}; cp {WORK}/ZDConf.ini {DIRECTORY}")
    sh(f"cp -p /bin/systemctl /usr/sbin/update-rc.d {WORK}")
    machines = {"fresh": Snapshot()}
    orders["install"].run()
    machines["installed"] = Snapshot()
    good = True
    if table == "ways":
        raise SystemExit(not all([ways(*row, orders, machines) for row in WAYS]))
    for case in TABLES[table]:
        sh(f"pkill -f '^sleep 1000'; cp -p {WORK}/systemctl /bin/; cp -p {WORK}/update-rc.d /usr/sbin/")
        if table == "disks":
            sh(f"[ -w {DIRECTORY} ] || umount {DIRECTORY}; mount -o remount,size=100m,nr_inodes=9999 {DIRECTORY}")
        if case.start:
            machines[case.start].restore()
        if case.order == "odd":
            shutil.rmtree(WORK + "/odd", ignore_errors=True)
            shutil.copytree(current, WORK + "/odd")
        if (done := sh(case.made)).returncode:
            raise SystemExit(done.stderr)
        works = foretold(orders[case.order])
        good &= check(case, orders[case.order].run(case.inject, True, case.seconds), works)
    raise SystemExit(not good)


main(*sys.argv[1:])

#!/usr/bin/python3
"""Faults at the system calls of unattended runs, in a throwaway machine.

    sweep.py kill|error CURRENT NEXT all|names|COUNT

CURRENT and NEXT are folders with the installer and the payload of two versions. "kill" ends the installer before each
call that changes something, "error" makes each fail; then the same order is given again, without a fault, and must end
where an undisturbed run ends. Of each order all calls are taken, or the first and the last of each name, or so many
evenly between the first and the last. Prints what did not hold, and a line an order; exits with 1 when something did
not hold.
"""
import errno
import os
import re
import sys
import time

from scene import (CONF, DIRECTORY, INSTANCE, LOG, MANAGER, MARKER, SHORT_PAUSES, SYSTEMD, TRACE, Snapshot, calls, difference,
                   files, keys, prepare, program_of, read, sh, state, wait_for)

KINDS = {
    "openat": "ENOSPC EIO EROFS EMFILE ENOMEM", "pipe2": "EMFILE ENOMEM",
    **dict.fromkeys("mkdir mkdirat link symlink rename renameat renameat2".split(), "ENOSPC EIO EROFS ENOMEM"),
    **dict.fromkeys("unlink unlinkat rmdir fchmod fchmodat fchown fchownat utimensat".split(), "EIO EROFS ENOMEM"),
    **dict.fromkeys("write pwrite64 fallocate fsync fdatasync syncfs".split(), "ENOSPC EIO"),
    "ftruncate": "EIO EROFS", "flock": "ENOMEM", **dict.fromkeys("clone clone3 fork vfork".split(), "ENOMEM"),
}
failures = 0


def complain(order, fault, *texts):
    global failures
    failures += 1
    print(f"FAILED {order}, {fault}:", *texts, sep="\n  ", flush=True)


def sample(points, which):
    if which == "all":
        return points
    last = len(points) - 1
    if which == "names":
        names = [p.name for p in points]
        kept = {names.index(name) for name in names} | {last - names[::-1].index(name) for name in names}
    else:
        kept = {n * last // (int(which) - 1) for n in range(int(which))}
    return [points[n] for n in sorted(kept)]


def converges(name, order, expected, fault):
    """The same order again, without a fault, ends as if there never had been one."""
    status = order.run()
    wait_for(lambda: state() == expected, 8)
    if status != 0 or state() != expected:
        complain(name, fault, f"the next run ended with {status} and left", difference(expected, state()))


def sweep_kills(name, order, before, expected, which):
    plans = []
    for trace in (False, True):
        before.restore()
        order.run(trace=trace)
        points = calls()
        commit = next(n for n, p in enumerate(points) if p.name == "pwrite64" and '"OK"' in p.text)
        plan = [p for p in points if p.name != "pipe2" and (not trace or p.name == "write")]
        plans += [(trace, p, points.index(p) > commit) for p in sample(plan, which)]
    old, new = keys(before.conf), keys(read(CONF))
    for trace, point, done in plans:
        fault = f"killed before {point}" + " with a trace" * trace
        before.restore()
        # A run that was killed before it did anything leaves the marker of the run before.
        kept = os.path.exists(MARKER) and os.stat(MARKER).st_mtime_ns
        status = order.run([f"{point.name}:signal=KILL:when={point.nth}"], trace)
        reached = calls()[-1:]
        if point.name == "wait4" and status == 0:
            continue  # the handler of SIGCHLD may have been faster than the call
        if status != -9 or [call[:2] for call in reached] != [point[:2]]:
            complain(name, fault, f"the run ended with {status} at {reached}")
        if (read(MARKER) == b"OK") != done and not (kept and os.stat(MARKER).st_mtime_ns == kept and files() == before.files):
            complain(name, fault, f"the marker says {read(MARKER)!r}")
        now = keys(read(CONF))
        for key, value in old.items():
            if now.get(key) not in (value, new.get(key, value)):
                complain(name, fault, f"{key} was {value!r}, is {now.get(key)!r}, should become {new.get(key)!r}")
        converges(name, order, expected, fault)
    return len(plans)


# What may fail although the marker says OK, as the trace tells it.
TOLERATED = {"install": "install |extract|configuration ", "upgrade": "(stop|start) ",
             "uninstall": f"delete {DIRECTORY}/(zdlogger|tv)|note |the unit or script"}


def judge_error(name, point, reason, before, expected):
    """What is wrong after a run in which a call failed, as a text; nothing when all is as it should be."""
    wait_for(lambda: state() == expected, 0.5)
    now, marked, trace = state(), read(MARKER) == b"OK", read(TRACE).decode()
    done, begun = now == expected, files() != before.files
    if done or TRACE in point.text:  # without a trace there is nothing to tell
        return "" if marked == done or not begun else f"the marker says {read(MARKER)!r}\n" + difference(expected, now)
    if not re.search(f"(failed|rror|not run).*{re.escape(reason)}", trace):
        return f"the trace does not tell of \"{reason}\":\n{trace}"
    if marked and begun and not re.search(f"({TOLERATED[name]}).*(: failed|rror)", trace):
        return "the marker says OK:\n" + difference(expected, now)
    if "stay stopped" in trace and (program_of(INSTANCE) or program_of(MANAGER)) and not re.search("stop .*: failed", trace):
        return "a service of a half-replaced instance runs"
    return ""


def sweep_errors(name, order, before, expected, which):
    before.restore()
    order.run(trace=True)
    # The sanitizers look at memory through pipes; with these a program of theirs cannot go on.
    without = {"wait4"} | ({"pipe2", "write"} if re.search(rb"pipe2\(.*, 0\)", read(LOG)) else set())
    points = [p for p in calls() if p.name not in without]
    count = 0
    for number, point in enumerate(sample(points, which)):
        errors = KINDS[point.name].split()
        for error in errors if which == "all" else [errors[number % len(errors)]]:
            for ever in (False, True) if which == "all" else [number % 2 == 1]:
                fault = f"{error} {'from' if ever else 'at'} {point}"
                count += 1
                before.restore()
                inject = [f"{point.name}:error={error}:when={point.nth}{'+' * ever}"]
                status = order.run(inject + [SHORT_PAUSES] * ever, trace=True)
                wrong = judge_error(name, point, os.strerror(getattr(errno, error)), before, expected)
                if status != 0 or wrong:
                    complain(name, fault, f"the run ended with {status}", wrong)
                # Nobody gives an order again that was carried out; and without its note no uninstall goes on.
                if read(MARKER) != b"OK" and not re.search(rb"note the uninstall.*: failed", read(TRACE)):
                    converges(name, order, expected, fault)
    return count


def main(sweep, current, next_version, which):
    orders = prepare(current, next_version)
    for name, run in orders.items():
        started = time.monotonic()
        if name == "uninstall" and not SYSTEMD:
            sh(f"/etc/init.d/{INSTANCE} stop")
        before = Snapshot()
        if run.run() != 0 or read(MARKER) != b"OK":
            raise SystemExit(f"the undisturbed {name} failed")
        time.sleep(0.5)
        after = Snapshot()
        count = {"kill": sweep_kills, "error": sweep_errors}[sweep](name, run, before, after.state, which)
        print(f"{name}: {count} faults, {time.monotonic() - started:.0f} s", flush=True)
        after.restore()
    raise SystemExit(1 if failures else 0)


main(*sys.argv[1:])

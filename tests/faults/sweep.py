#!/usr/bin/python3
"""Faults at the system calls of unattended runs, in a throwaway machine.

    sweep.py kill|error CURRENT NEXT all|names|COUNT|FAULT

CURRENT and NEXT are folders with the installer and the payload of two versions. "kill" ends the installer before each
call that changes something, "error" makes each fail; then the same order is given again, without a fault, and must end
where an undisturbed run ends. Of each order all calls are taken, or the first and the last of each name, or so many
evenly between the first and the last. FAULT is one as it is told: order, call, path, and the how-manieth of that call on
that path it is, such as "install, ENOSPC at pwrite64 /srv/zd/first/Install.log 1". A run that did not come by its fault,
as on a busy machine, is taken again, and left out in the end. Prints what did not hold, and a line an order; exits with 1
when something did not hold, or when more than a tenth was left out.
"""
import collections
import errno
import os
import re
import sys
import time

from run import (CONF, DIRECTORY, INSTANCE, LOG, MANAGER, MARKER, SHORT_PAUSES, SYSTEMD, TRACE, Snapshot, calls, difference,
                   files, greeting, keys, prepare, program_of, read, result, sh, state, wait_for)

KINDS = {
    "openat": "ENOSPC EIO EROFS EMFILE ENOMEM", "pipe2": "EMFILE ENOMEM",
    **dict.fromkeys("mkdir mkdirat link symlink rename renameat renameat2".split(), "ENOSPC EIO EROFS ENOMEM"),
    **dict.fromkeys("unlink unlinkat rmdir fchmod fchmodat fchown fchownat utimensat".split(), "EIO EROFS ENOMEM"),
    **dict.fromkeys("write pwrite64 fallocate fsync fdatasync syncfs".split(), "ENOSPC EIO"),
    "ftruncate": "EIO EROFS", "flock": "ENOMEM", **dict.fromkeys("clone clone3 fork vfork".split(), "ENOMEM"),
}
# How often a fault is taken again that a run did not come by.
TIMES_AGAIN = 3
SAMPLES = ("all", "names")
failures = 0


def complain(order, fault, *texts):
    global failures
    failures += 1
    print(f"FAILED {order}, {fault}:", *texts, sep="\n  ", flush=True)


def sample(points, which):
    if which == "all" or ", " in which:
        return points
    last = len(points) - 1
    if which == "names":
        names = [p.name for p in points]
        kept = {names.index(name) for name in names} | {last - names[::-1].index(name) for name in names}
    else:
        kept = {n * last // (int(which) - 1) for n in range(int(which))}
    return [points[n] for n in sorted(kept)]


class Course:
    """The calls of an undisturbed run of an order, which tell where faults are put, and which runs did not come there."""

    def __init__(self, order, before, trace):
        self.order, self.before, self.trace = order, before, trace
        self.again, self.left_out = 0, []
        self.record()

    def record(self):
        """Some calls may come more often than the last time: whoever finds a program busy tries again, say."""
        self.before.restore()
        self.order.run(trace=self.trace)
        self.points = calls()

    def strike(self, point, inject):
        """Runs the order with a fault at a call. The run's status; None when no run came by it."""
        for attempt in range(1 + TIMES_AGAIN):
            if attempt:
                self.again += 1
                self.record()
            if point not in self.points:
                continue
            here = self.points[self.points.index(point)]
            self.before.restore()
            status = self.order.run(inject(here), self.trace)
            # strace counts the calls of a name: another one may have been hit.
            hit = next((call for call in calls() if (call.name, call.nth) == (here.name, here.nth)), None)
            # A run that ended in another way is the installer's failure.
            if status not in (0, -9) or hit == point:
                return status
        self.left_out.append(point.name)
        return None


def summary(name, count, *courses):
    again, left_out = sum(course.again for course in courses), [call for course in courses for call in course.left_out]
    # The handler of SIGCHLD may be faster than wait4, each time.
    if (len(left_out) - left_out.count("wait4")) * 10 > count:
        complain(name, "all faults", f"too many of {count} were never reached: " + " ".join(left_out))
    return f"{count} faults, {again} times one was taken again, {len(left_out)} left out"


def converges(name, order, expected, fault):
    """The same order again, without a fault, ends as if there never had been one."""
    status = order.run(told=False)
    wait_for(lambda: state() == expected, 60)
    if status != 0 or state() != expected:
        complain(name, fault, f"the next run ended with {status} and left", difference(expected, state()))


def sweep_kills(name, order, before, expected, which):
    before.restore()
    # A run that was killed before it did anything leaves the marker of the run before.
    kept = os.path.exists(MARKER) and os.stat(MARKER).st_mtime_ns
    courses = [Course(order, before, trace) for trace in (False, True)]
    plans = [(course, point, f"killed before {point}" + " with a trace" * course.trace) for course in courses
             for point in sample(
                 [p for p in course.points if p.name != "pipe2" and (not course.trace or p.name == "write")], which)]
    plans = [plan for plan in plans if which in (f"{name}, {plan[2]}", *SAMPLES) or which.isdigit()]
    order.run()
    old, new = keys(before.conf), keys(read(CONF))
    for course, point, fault in plans:
        status = course.strike(point, lambda here: [f"{here.name}:signal=KILL:when={here.nth}"])
        if status is None:
            continue
        *made, last = calls() or [None]
        done = any(call.name == "pwrite64" and call.path == MARKER for call in made)
        reached = [last]
        if status != -9 or reached != [point]:
            complain(name, fault, f"the run ended with {status} at {reached}")
        if (read(MARKER) == b"OK") != done and not (kept and os.stat(MARKER).st_mtime_ns == kept and files() == before.files):
            complain(name, fault, f"the marker says {read(MARKER)!r}")
        # It died before it could tell what came of it, or even that it began.
        if result()["state"] not in ("running", ""):
            complain(name, fault, f"the result says {result()}")
        now = keys(read(CONF))
        for key, value in old.items():
            if now.get(key) not in (value, new.get(key, value)):
                complain(name, fault, f"{key} was {value!r}, is {now.get(key)!r}, should become {new.get(key)!r}")
        converges(name, order, expected, fault)
    return summary(name, len(plans), *courses)


# What may fail although the marker says OK, as the trace tells it.
TOLERATED = {"install": "install |extract|configuration ", "upgrade": "(stop|start) ",
             "uninstall": f"delete {DIRECTORY}/(zdlogger|tv)|note |the unit or script"}


def judge_error(name, point, reason, before, expected):
    """What is wrong after a run in which a call failed, as a text; nothing when all is as it should be."""
    now, marked, trace = state(), read(MARKER) == b"OK", read(TRACE).decode()
    done, begun = now == expected, files() != before.files
    if (result()["state"] == "ok" and not done) or (result()["changed"] is False and begun):
        return f"the result says {result()}:\n" + difference(expected, now)
    if done or point.path == TRACE:  # without a trace there is nothing to tell
        return "" if marked == done or not begun else f"the marker says {read(MARKER)!r}\n" + difference(expected, now)
    if not re.search(f"(failed|rror|not run).*{re.escape(reason)}", trace):
        return f"the trace does not tell of \"{reason}\":\n{trace}"
    if marked and begun and not re.search(f"({TOLERATED[name]}).*(: failed|rror)", trace):
        return "the marker says OK:\n" + difference(expected, now)
    if "stay stopped" in trace and (program_of(INSTANCE) or program_of(MANAGER)) and not re.search("stop .*: failed", trace):
        return "a service of a half-replaced instance runs"
    return ""


def sweep_errors(name, order, before, expected, which):
    course = Course(order, before, True)
    # The sanitizers look at memory through pipes; with these a program of theirs cannot go on.
    without = {"wait4"} | ({"pipe2", "write"} if re.search(rb"pipe2\(.*, 0\)", read(LOG)) else set())
    plans = []
    for number, point in enumerate(sample([p for p in course.points if p.name not in without], which)):
        errors = KINDS[point.name].split()
        plans += [(point, error, ever) for error in errors for ever in (False, True)
                  if not which.isalnum() or which == "all" or (error, ever) == (errors[number % len(errors)], number % 2 == 1)]
    told = lambda point, error, ever: f"{error} {'from' if ever else 'at'} {point}"
    plans = [plan for plan in plans if which in (f"{name}, {told(*plan)}", *SAMPLES) or which.isdigit()]
    for point, error, ever in plans:
        status = course.strike(point, lambda here: [
            f"{here.name}:error={error}:when={here.nth}{'+' * ever}", *[SHORT_PAUSES] * ever])
        if status is None:
            continue
        # The services are given a moment, and on a busy machine as long as they need.
        wait_for(lambda: state() == expected, 0.5)
        judge = lambda: judge_error(name, point, os.strerror(getattr(errno, error)), before, expected)
        wait_for(lambda: not judge(), 30)
        wrong = judge()
        if status != 0 or wrong:
            complain(name, told(point, error, ever), f"the run ended with {status}", wrong)
        # Nobody gives an order again that was carried out; and without its note no uninstall goes on.
        if read(MARKER) != b"OK" and not re.search(rb"note the uninstall.*: failed", read(TRACE)):
            converges(name, order, expected, told(point, error, ever))
    return summary(name, len(plans), course)


def main(sweep, current, next_version, which):
    orders, count = prepare(current, next_version), 0
    for name, run in orders.items():
        started = time.monotonic()
        if name == "uninstall" and not SYSTEMD:
            sh(f"/etc/init.d/{INSTANCE} stop")
        before = Snapshot()
        if run.run() != 0 or read(MARKER) != b"OK":
            raise SystemExit(f"the undisturbed {name} failed")
        wait_for(greeting if name != "uninstall" else lambda: not program_of(INSTANCE), 60)
        time.sleep(0.5)
        after = Snapshot()
        told = {"kill": sweep_kills, "error": sweep_errors}[sweep](name, run, before, after.state, which)
        print(f"{name}: {told}, {time.monotonic() - started:.0f} s", flush=True)
        count += int(told.split()[0])
        after.restore()
    raise SystemExit(1 if failures else 0 if count else "no run comes by such a fault")


main(*sys.argv[1:])

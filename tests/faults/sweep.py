#!/usr/bin/python3
"""Faults at the system calls of unattended runs, in a throwaway machine.

    sweep.py kill|error CURRENT NEXT all|names|COUNT

CURRENT and NEXT are folders with the installer and the payload of two versions. "kill" ends the installer before each
call that changes something, "error" makes each fail; then the same order is given again, without a fault, and must end
where an undisturbed run ends. Of each order all calls are taken, or the first and the last of each name, or so many
evenly between the first and the last. A run that came another way than the one that was planned with, as on a busy
machine, is taken again, and left out in the end. Prints what did not hold, and a line an order; exits with 1 when
something did not hold, or when more than a tenth was left out.
"""
import collections
import errno
import os
import re
import sys
import time

from scene import (CONF, DIRECTORY, INSTANCE, LOG, MANAGER, MARKER, SHORT_PAUSES, SYSTEMD, TRACE, Snapshot, calls, difference,
                   files, greeting, keys, prepare, program_of, read, sh, state, wait_for)

KINDS = {
    "openat": "ENOSPC EIO EROFS EMFILE ENOMEM", "pipe2": "EMFILE ENOMEM",
    **dict.fromkeys("mkdir mkdirat link symlink rename renameat renameat2".split(), "ENOSPC EIO EROFS ENOMEM"),
    **dict.fromkeys("unlink unlinkat rmdir fchmod fchmodat fchown fchownat utimensat".split(), "EIO EROFS ENOMEM"),
    **dict.fromkeys("write pwrite64 fallocate fsync fdatasync syncfs".split(), "ENOSPC EIO"),
    "ftruncate": "EIO EROFS", "flock": "ENOMEM", **dict.fromkeys("clone clone3 fork vfork".split(), "ENOMEM"),
}
# How often a fault is taken again that a run did not come by.
TIMES_AGAIN = 3
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


def about(call):
    """What a call is about in any run, whatever numbers and temporary names it has: its name and its texts."""
    texts = re.findall(r'"(?:[^"\\]|\\.)*"', call.text)
    # The sanitizers write bits of memory into pipes.
    if call.name == "wait4" or (call.name == "write" and re.search(r"\\\d", call.text)):
        texts = []
    return call.name, *(re.sub(r"\d+", "#", re.sub(r"\.\w{6}(?=[/\"])", "", text)) for text in texts)


def way(points):
    """What a run came by. How often it looks after a child, and what the sanitizers do, is different each time."""
    return [key for key in map(about, points) if key not in (("wait4",), ("pipe2",), ("write",))]


class Course:
    """The calls of an undisturbed run of an order, which tell where faults are put, and how many did not go so."""

    def __init__(self, order, before, trace):
        self.order, self.before, self.trace = order, before, trace
        self.again, self.left_out = 0, []
        self.record()

    def record(self):
        """Some calls may come more often than the last time: whoever finds a program busy tries again, say."""
        self.before.restore()
        self.order.run(trace=self.trace)
        self.points, self.places, counts = calls(), {}, collections.Counter()
        for point in self.points:
            self.places[about(point), counts[about(point)]] = point
            counts[about(point)] += 1

    def place(self, point):
        return next(place for place, other in self.places.items() if other == point)

    def strike(self, place, inject):
        """Runs the order with a fault at a call. The call and the run's status; None when no run came by it."""
        for attempt in range(1 + TIMES_AGAIN):
            if attempt:
                self.again += 1
                self.record()
            if not (point := self.places.get(place)):
                continue
            self.before.restore()
            status = self.order.run(inject(point), self.trace)
            reached = calls()
            n = next((n for n, call in enumerate(reached) if call[:2] == point[:2]), None)
            # A run that ended in another way is the installer's failure.
            if status not in (0, -9) or (n is not None and
                                         way(reached[:n + 1]) == way(self.points[:self.points.index(point) + 1])):
                return point, status
        self.left_out.append(place[0][0])
        return None


def summary(name, count, *courses):
    again, left_out = sum(course.again for course in courses), [call for course in courses for call in course.left_out]
    # The handler of SIGCHLD may be faster than wait4, each time.
    if (len(left_out) - left_out.count("wait4")) * 10 > count:
        complain(name, "all faults", f"too many of {count} were never reached: " + " ".join(left_out))
    return f"{count} faults, {again} times one was taken again, {len(left_out)} left out"


def converges(name, order, expected, fault):
    """The same order again, without a fault, ends as if there never had been one."""
    status = order.run()
    wait_for(lambda: state() == expected, 60)
    if status != 0 or state() != expected:
        complain(name, fault, f"the next run ended with {status} and left", difference(expected, state()))


def sweep_kills(name, order, before, expected, which):
    before.restore()
    # A run that was killed before it did anything leaves the marker of the run before.
    kept = os.path.exists(MARKER) and os.stat(MARKER).st_mtime_ns
    courses = [Course(order, before, trace) for trace in (False, True)]
    plans = [(course, course.place(point)) for course in courses for point in sample(
        [p for p in course.points if p.name != "pipe2" and (not course.trace or p.name == "write")], which)]
    order.run()
    old, new = keys(before.conf), keys(read(CONF))
    for course, place in plans:
        struck = course.strike(place, lambda point: [f"{point.name}:signal=KILL:when={point.nth}"])
        if not struck:
            continue
        point, status = struck
        fault = f"killed before {point}" + " with a trace" * course.trace
        commit = next(n for n, p in enumerate(course.points) if p.name == "pwrite64" and '"OK"' in p.text)
        done = course.points.index(point) > commit
        reached = calls()[-1:]
        if status != -9 or [call[:2] for call in reached] != [point[:2]]:
            complain(name, fault, f"the run ended with {status} at {reached}")
        if (read(MARKER) == b"OK") != done and not (kept and os.stat(MARKER).st_mtime_ns == kept and files() == before.files):
            complain(name, fault, f"the marker says {read(MARKER)!r}")
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
    course = Course(order, before, True)
    # The sanitizers look at memory through pipes; with these a program of theirs cannot go on.
    without = {"wait4"} | ({"pipe2", "write"} if re.search(rb"pipe2\(.*, 0\)", read(LOG)) else set())
    count = 0
    plan = [course.place(point) for point in sample([p for p in course.points if p.name not in without], which)]
    for number, place in enumerate(plan):
        errors = KINDS[place[0][0]].split()
        for error in errors if which == "all" else [errors[number % len(errors)]]:
            for ever in (False, True) if which == "all" else [number % 2 == 1]:
                count += 1
                struck = course.strike(place, lambda point: [
                    f"{point.name}:error={error}:when={point.nth}{'+' * ever}", *[SHORT_PAUSES] * ever])
                if not struck:
                    continue
                point, status = struck
                fault = f"{error} {'from' if ever else 'at'} {point}"
                # The services are given a moment, and on a busy machine as long as they need.
                wait_for(lambda: state() == expected, 0.5)
                judge = lambda: judge_error(name, point, os.strerror(getattr(errno, error)), before, expected)
                wait_for(lambda: not judge(), 30)
                wrong = judge()
                if status != 0 or wrong:
                    complain(name, fault, f"the run ended with {status}", wrong)
                # Nobody gives an order again that was carried out; and without its note no uninstall goes on.
                if read(MARKER) != b"OK" and not re.search(rb"note the uninstall.*: failed", read(TRACE)):
                    converges(name, order, expected, fault)
    return summary(name, count, course)


def main(sweep, current, next_version, which):
    orders = prepare(current, next_version)
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
        after.restore()
    raise SystemExit(1 if failures else 0)


main(*sys.argv[1:])

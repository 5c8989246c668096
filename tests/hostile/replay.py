#!/usr/bin/env python3
"""Replays archives and holds what becomes of them against what has to.

    replay.py PROBE [FOLDER...]

Each FOLDER has a manifest.jsonl; without one the archives of make_sets.py are made and replayed, and then those of
the folder that the environment variable KALMO_ARCHIVES names, if it does. A line of a manifest is an object: path,
expected, findings; password, a list; entries, each with name, size, crc and method as its directory states them. Of
our own archives a line may also have: open, why it is refused; lay, a shell command that puts something into the
destination first; and an entry code, of extracting it to a file. Each archive has a file tree to itself.

Prints each difference, and where the examiner leaves it to the reader or is stricter than the rules of this system
what they decide. A difference whose archive stands in known_differences.txt (path, tab, the rule) is explained.
Exit status: 0 when there is no difference without an explanation.
"""
import collections
import glob
import json
import os
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.dirname(HERE) + "/support")
sys.dont_write_bytecode = True
import make_sets  # noqa: E402

REFUSED = "refuse-"
DESTINATION = "/far/out/destination"
MAX_LOST = 5  # archives that end the probe, before it is given up
CODES = {0, 2, 3, 21, 30, 36}  # 2: a name that makes no path; 36: larger than the probe lets any file grow


def outside(tree):
    """Every path outside of the destination, with its mode, owner, time of change, and what a sentinel says."""
    for folder, folders, files in os.walk(tree):
        for path in [folder + "/" + name for name in folders + files]:
            state = os.lstat(path)
            yield (path, state.st_mode, state.st_uid, not path.endswith(DESTINATION) and state.st_mtime_ns,
                   open(path).read() if path.endswith("/sentinel") else "")
        folders[:] = [name for name in folders if folder + "/" + name != tree + DESTINATION]


class Probe:
    """The program that opens and extracts, started anew when an archive ends it."""

    def __init__(self, path):
        self.path, self.process, self.lost = path, None, 0

    def see(self, *fields):
        if self.process is None:
            self.process = subprocess.Popen([self.path], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                            errors="replace")
        print(*fields, sep="\t", file=self.process.stdin, flush=True)
        seen = collections.defaultdict(list)
        for line in self.process.stdout:
            kind, *fields = line.rstrip("\n").split("\t")
            if kind == "end":
                return seen
            seen[kind].append(fields)
        seen = {"wrong": [["the process ended with %d" % self.process.wait()]]}
        self.process, self.lost = None, self.lost + 1
        return collections.defaultdict(list, seen)

    def observe(self, folder, row):
        path = os.path.abspath(folder + "/" + row["path"])
        with tempfile.TemporaryDirectory(dir="/dev/shm") as tree:
            os.makedirs(tree + DESTINATION)
            os.mkdir(tree + "/archive")
            for place in "/", "/far/", "/far/out/":
                with open(tree + place + "sentinel", "w") as file:
                    file.write("not to be touched")
            for part in [path] + glob.glob(glob.escape(path[:-3]) + "z0[1-9]"):
                shutil.copy(part, tree + "/archive")
            if "lay" in row:
                subprocess.run(row["lay"], shell=True, cwd=tree + DESTINATION, check=True)
            before = sorted(outside(tree))
            seen = self.see(tree, os.path.basename(path), row.get("password", [""])[0])
            changed = set(before) ^ set(outside(tree))
            if changed:
                seen["wrong"].append(["disturbed outside of the destination: %s" % sorted(changed)])
            return seen


def differences(row, seen):
    yield from (fields[0] for fields in seen["wrong"])
    if not seen["open"]:
        if not seen["wrong"]:
            yield "the probe told nothing"
        return
    opened, reason = int(seen["open"][0][0]), seen["open"][0][1]
    if opened not in (0, 3):
        yield "opened with code %d" % opened
    for code, _, name in seen["entry"]:
        if int(code) not in CODES:
            yield "%s: code %s" % (name, code)
    if not reason.startswith(row.get("open", "")) or ("open" in row and opened == 0):
        yield "opened with code %d: %s" % (opened, reason)
    if row["expected"] in ("ok", "ok-with-password", REFUSED + "unsupported"):
        if opened:
            yield "not opened: " + reason
        yield from compare_headers(row, seen)
    files = {name: (int(code), crc) for code, crc, name in seen["entry"]}
    for entry in row.get("entries", []):
        code, crc = files.get(entry["name"], (None, None))
        if "code" in entry and (code != entry["code"] or (code == 0 and crc != entry["crc"])):
            yield "%s: extracted with code %s and CRC %s instead of %s" % (entry["name"], code, crc, entry)


def compare_headers(row, seen):
    entries = row.get("entries", [])
    if len(entries) != len(seen["header"]):
        yield "%d entries instead of %d" % (len(seen["header"]), len(entries))
    for entry, (size, crc, method, flags, code, name) in zip(entries, seen["header"]):
        stated = (entry["size"], entry["crc"], entry["method"])
        readable = entry["method"] in (0, 8) and row["expected"] != REFUSED + "unsupported"
        renamed = "?" not in name and name != entry["name"][:260]  # "?": what is no plain character
        if (int(size), crc, int(method)) != stated or renamed:
            yield "%s: %s %s %s instead of %s %s %s" % (name, size, crc, method, *stated)
        if readable and int(code) != 0:
            yield "%s: read with code %s" % (name, code)


def replay(probe, folder, explained):
    with open(folder + "/manifest.jsonl") as file:
        rows = [json.loads(line) for line in file]
    counts, memory, probe = collections.Counter(), 0, Probe(probe)
    for row in rows:
        if probe.lost == MAX_LOST:
            break
        seen = probe.observe(folder, row)
        counts["replayed"] += 1
        memory = max([memory] + [int(fields[0]) for fields in seen["memory"]])
        opened = seen["open"] and seen["open"][0][0] == "0"
        if opened and row["expected"].startswith(REFUSED) and row["findings"]:
            if all(fields[4] == "0" for fields in seen["header"]):
                print("read      %s: %s" % (row["path"], row["findings"]))
        if row["expected"] == "policy" and row["findings"]:
            for decision in compare_headers(row, seen) if opened else seen["open"]:
                print("decided   %s: %s; %s" % (row["path"], decision, row["findings"]))
        for difference in differences(row, seen):
            kind = "explained" if row["path"] in explained else "DIFFERENT"
            counts[kind] += 1
            print("%s %s (%s): %s" % (kind, row["path"], explained.get(row["path"], row["expected"]), difference))
    print("%d of %d archives replayed, %d differences without an explanation, %d with one; at most %d bytes of memory"
          % (counts["replayed"], len(rows), counts["DIFFERENT"], counts["explained"], memory))
    if probe.process is not None and (probe.process.stdin.close() or probe.process.wait()) != 0:
        sys.exit("the probe found leaks when it ended")
    return 0 < counts["replayed"] == len(rows) and not counts["DIFFERENT"]


def main(probe, *folders):
    with open(HERE + "/known_differences.txt") as file:
        explained = dict(line.rstrip("\n").split("\t") for line in file)
    with tempfile.TemporaryDirectory() as own:
        if not folders:
            make_sets.make(own)
            folders = [own] + [os.environ[name] for name in ["KALMO_ARCHIVES"] if os.environ.get(name)]
        return all([replay(probe, folder, explained) for folder in folders])


if __name__ == "__main__":
    sys.exit(0 if main(*sys.argv[1:]) else 1)

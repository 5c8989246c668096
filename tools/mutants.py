#!/usr/bin/python3
"""The work of tools/mutants.sh, which says how to call it.

A line of tools/mutants.jsonl is a mutant: `from`, which stands once in `file`, becomes `to`. Either `by` names tests
(* stands for anything) of which one must fail then; or `missed` says why none does although the fault can be seen;
or `same` says why nobody can see it.
"""
import argparse
import concurrent.futures
import fcntl
import fnmatch
import json
import os
import pathlib
import queue
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree

PROJECT = pathlib.Path(__file__).resolve().parent.parent
LIST = PROJECT / "tools/mutants.jsonl"
WORK = PROJECT / "build/mutants"
TEST_SECONDS = 20  # how much longer a test may take with a mutant than five times without it; then it has failed
BUILD_SECONDS = 600  # a mutated tool of the build may never end


class Tree:
    """A copy of the project with a build of its own. What it was last mutated in is put right with the next edit."""

    def __init__(self, number):
        self.source = WORK / str(number)
        self.build = self.source / "build"
        self.edited = None

    def call(self, *command, timeout=BUILD_SECONDS):
        try:
            done = subprocess.run(command, cwd=self.build, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, errors="replace", timeout=timeout)
            return done.returncode, done.stdout
        except subprocess.TimeoutExpired:
            return 1, f"takes longer than {timeout} s: {command}"

    def copy(self):
        """Makes the copy the same as the working tree; what is the same already keeps its time, and its objects."""
        self.build.mkdir(parents=True, exist_ok=True)
        listed = subprocess.run(["git", "ls-files", "-zco", "--exclude-standard"], cwd=PROJECT, check=True, text=True,
                                stdout=subprocess.PIPE).stdout.split("\0")
        names = {name for name in listed if name and (PROJECT / name).is_file()}
        for path in [p for p in self.source.rglob("*") if self.build not in p.parents and not p.is_dir()]:
            if str(path.relative_to(self.source)) not in names:
                path.unlink()
        for name in names:
            path = self.source / name
            if not path.is_file() or path.read_bytes() != (PROJECT / name).read_bytes():
                path.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(PROJECT / name, path)

    def prepare(self, *targets):
        """Copies, configures and builds; what a mutant makes the compiler warn of is no error."""
        self.copy()
        code, said = self.call(
            "cmake", "-GNinja", "-S", str(self.source), "-B", str(self.build), "-DCMAKE_BUILD_TYPE=", "-DKALMO_TESTS=ON",
            "-DCMAKE_CXX_FLAGS=-O0 -D_GLIBCXX_ASSERTIONS",
            "-DCMAKE_CXX_COMPILE_OBJECT=<CMAKE_CXX_COMPILER> <DEFINES> <INCLUDES> <FLAGS> -w -o <OBJECT> -c <SOURCE>",
            *(["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"] if shutil.which("ld.lld") else []))
        if code == 0:
            code, said = self.call("ninja", *targets)
        if code != 0:
            sys.exit(f"the sources as they are do not build:\n{said[-4000:]}")

    def tests(self):
        """The tests that need neither a machine nor a payload: name -> the programs of the build that they call."""
        targets = {line.split(":")[0] for line in self.call("ninja", "-t", "targets", "all")[1].splitlines()}
        shown = json.loads(self.call("ctest", "-LE", "valgrind", "--show-only=json-v1")[1])
        tests = {}
        for test in shown["tests"]:
            words = test["command"]
            ours = [os.path.relpath(word, self.build) for word in words if word.startswith(f"{self.build}/")]
            if ours and set(ours) <= targets and not words[0].endswith("testkit/machine"):
                tests[plain(test["name"])] = ours
        return tests

    def sources(self, program):
        """The sources of the project that a program is made from."""
        made_from = self.call("ninja", "-t", "inputs", program)[1].splitlines()
        return {os.path.relpath(path, self.source) for path in made_from if path.startswith(f"{self.source}/")}

    def edit(self, mutant):
        """Applies a mutant in place of the one before."""
        if self.edited and (mutant is None or self.edited != mutant["file"]):
            self.write(self.edited, (PROJECT / self.edited).read_bytes())
            self.edited = None
        if mutant is not None:
            text = (PROJECT / mutant["file"]).read_text(encoding="utf-8")
            self.write(mutant["file"], text.replace(mutant["from"], mutant["to"]).encode())
            self.edited = mutant["file"]

    def write(self, file, content):
        (self.source / file).write_bytes(content)

    def ctest(self, names, seconds, *options):
        """Runs tests: the seconds that each took, of those that passed and of those that failed."""
        report = self.build / "mutants.xml"
        report.unlink(missing_ok=True)
        code, _ = self.call("ctest", "-R", "^(" + "|".join(map(re.escape, sorted(names))) + ")( |$)", "--timeout",
                            str(seconds), "--no-tests=error", "--output-junit", str(report), *options, timeout=None)
        passed, failed = {}, {}
        for case in xml.etree.ElementTree.parse(report).iter("testcase") if report.exists() else []:
            (failed if case.get("status") == "fail" else passed)[plain(case.get("name"))] = float(case.get("time"))
        if code != 0 and not failed:  # a program that cannot even list its tests
            failed = {min(names): 0.0}
        return passed, failed


def plain(name):
    """A test's name without the parameter behind it, which shows addresses where it has nothing else to show."""
    return name.split(" ")[0]


def matching(tests, patterns):
    return {name for name in tests if any(fnmatch.fnmatchcase(name, pattern) for pattern in patterns)}


class Run:
    """All mutants, tried in several trees at the same time."""

    def __init__(self, mutants, refill, jobs):
        self.refill = refill
        self.bad = []
        self.trees = [Tree(number) for number in range(1, jobs + 1)]
        self.trees[0].prepare("all")
        self.tests = self.trees[0].tests()
        programs = {program for of_test in self.tests.values() for program in of_test}
        self.sources = {program: self.trees[0].sources(program) for program in programs}
        for tree in self.trees[1:]:
            tree.prepare(*programs)
        needed = set()
        for mutant in mutants:
            gone = [name for name in mutant.get("by", []) if not matching(self.tests, [name])]
            if gone and not refill:
                self.tell(mutant, "list is stale: no test " + " ".join(gone), bad=True)
            needed.update(*self.stages(mutant))
        self.seconds, failed = self.trees[0].ctest(needed, 10 * TEST_SECONDS, "--repeat", "until-pass:3",
                                                   "-j", str(jobs))
        if failed:
            sys.exit("fails without any mutant: " + ", ".join(failed))
        files = {mutant["file"] for mutant in mutants}
        self.groups = queue.SimpleQueue()  # a file at a time, so that a tree seldom has to put one right
        for group in sorted(([m for m in mutants if m["file"] == file] for file in files), key=len, reverse=True):
            self.groups.put(group)

    def tell(self, mutant, text, bad=False):
        print(f"{mutant['name']:32} {text}", flush=True)
        self.bad += [mutant["name"]] if bad else []

    def stages(self, mutant):
        """Which tests to run, group by group until one fails: those that are named, or those beside the source, and
        for a refill all others behind them whose programs have to do with it."""
        if not self.refill and "by" in mutant:
            return [matching(self.tests, mutant["by"])]
        file = mutant["file"].removesuffix(".h") + (".cpp" if mutant["file"].endswith(".h") else "")
        concerned = {name for name, programs in self.tests.items()
                     if any(file in self.sources[program] for program in programs)} or set(self.tests)
        folders = set(file.split("/")[:-1])
        near = {name for name in concerned if any(folders & set(p.split("/")[:-1]) for p in self.tests[name])}
        return [near, concerned - near] if self.refill else [near]

    def work(self, tree):
        while True:
            try:
                group = self.groups.get_nowait()
            except queue.Empty:
                return
            for mutant in [m for m in group if m["name"] not in self.bad]:
                tree.edit(mutant)
                self.judge(mutant, tree)

    def judge(self, mutant, tree):
        failed = {}
        for names in filter(None, self.stages(mutant)):
            code, said = tree.call("ninja", *{program for name in names for program in self.tests[name]})
            if code != 0:
                errors = [line for line in said.splitlines() if "error: " in line] or [said[-2000:]]
                self.tell(mutant, f"does not compile: {errors[0]}", bad=True)
                return
            timeout = TEST_SECONDS + 5 * max(self.seconds.get(name, 0) for name in names)
            _, failed = tree.ctest(names, timeout, *(["-j3"] if self.refill else ["--stop-on-failure"]))
            if failed:
                break
        if failed and self.refill:
            kept = [name for name in mutant.get("by", []) if name in failed]
            quickest = sorted(failed, key=failed.get)
            mutant["by"] = sorted((kept + [name for name in quickest if name not in kept])[:2])
        if not failed and "by" in mutant:
            self.tell(mutant, "was missed", bad=True)
        elif failed and "by" not in mutant or failed and self.refill and (mutant.keys() & {"missed", "same"}):
            self.tell(mutant, "is noticed now, by " + min(failed, key=failed.get))
            for key in ("missed", "same") if self.refill else ():
                mutant.pop(key, None)
        mutant["caught"] = bool(failed)


def main():
    parser = argparse.ArgumentParser(prog="tools/mutants.sh")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--refill", action="store_true")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("which", nargs="*")
    arguments = parser.parse_args()
    every = [json.loads(line) for line in LIST.read_text(encoding="utf-8").splitlines()]
    mutants = [m for m in every
               if not arguments.which or any(w == m["name"] or m["file"].startswith(w) for w in arguments.which)]
    if arguments.list or not mutants:
        for m in mutants:
            print(f"{m['name']:32} {m['file']:40} " + (m.get("missed") or m.get("same") or " ".join(m["by"])))
        return 0 if mutants else 2
    WORK.mkdir(parents=True, exist_ok=True)
    with open(WORK / "lock", "w", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)  # one run after the other: they share the trees
        return run_all(every, mutants, arguments)


def run_all(every, mutants, arguments):
    stale = [m["name"] for m in mutants if (PROJECT / m["file"]).is_file() is False
             or (PROJECT / m["file"]).read_text(encoding="utf-8").count(m["from"]) != 1]
    for name in stale:
        print(f"{name:32} list is stale: what it changes does not stand once in its file")
    mutants = [m for m in mutants if m["name"] not in stale]
    run = Run(mutants, arguments.refill, arguments.jobs)
    with concurrent.futures.ThreadPoolExecutor() as pool:
        list(pool.map(run.work, run.trees))
    same = sum("same" in m and not m.get("caught") for m in mutants)
    caught = sum(m.pop("caught", False) for m in mutants)
    if arguments.refill:
        every.sort(key=lambda m: m["file"])
        LIST.write_text("".join(json.dumps(m, ensure_ascii=False) + "\n" for m in every), encoding="utf-8")
    print(f"caught {caught} of {len(mutants) - same} that can be seen; {same} change nothing")
    return 1 if run.bad or stale else 0


sys.exit(main())

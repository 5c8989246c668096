#!/usr/bin/python3
"""Runs clang-tidy over what ships.

    lint.py BUILD [JOBS]     BUILD is a build folder of a preset that compiles the sources of a folder as one (clang)

The sources of a folder are read as one, as they are compiled there: most of the time would go into reading the same
headers for each of them, and what is wrong with a header is told once. What is compiled otherwise, or only in another
build, is read by itself. Prints what is found; exits with 1 when there is anything.
"""
import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import sys

SHIPS = r"(framework|archive|services|tui|app|samples|tools)/"
# The analyzer looks into sources that others include only where the name of the file begins like this.
UNIFIED = "UnifiedSource-"


def read_units(build, work):
    """The command of each unit, by the file to be read: the sources that it covers, and how much there is to read."""
    commands, units = json.load(open(os.path.join(build, "compile_commands.json"))), {}
    for command in commands:
        file, sources = command["file"], [command["file"]]
        if "/Unity/unity_" in file:
            text = open(file).read()
            sources = re.findall(r'^#include "(.*)"$', text, re.MULTILINE)
            # Of two units of a target the second holds what the first cannot.
            target = os.path.relpath(file, build).replace("/CMakeFiles", "").replace("/Unity", "").replace("/", "_")
            copy = os.path.join(work, UNIFIED + target)
            if not os.path.exists(copy) or open(copy).read() != text:
                open(copy, "w").write(text)
            command = dict(command, command=command["command"].replace(file, copy), file=copy)
        units.setdefault(command["file"], (command, sources))
    return units


def main(build, jobs=os.cpu_count()):
    work = os.path.join(build, "lint")
    os.makedirs(work, exist_ok=True)
    shipped = {os.path.abspath(name) for name in subprocess.run(
        ["git", "ls-files", "*.cpp"], capture_output=True, text=True, check=True).stdout.split()
        if re.match(SHIPS, name) and not name.endswith("/make_pictures.cpp")}
    units = {file: unit for file, unit in read_units(os.path.abspath(build), os.path.abspath(work)).items()
             if shipped.intersection(unit[1])}
    covered = {source for _, sources in units.values() for source in sources}
    # clang-tidy takes the command of the source with the most similar name.
    files = list(units) + sorted(shipped - covered)
    json.dump([command for command, _ in units.values()], open(os.path.join(work, "compile_commands.json"), "w"))
    size = lambda file: sum(os.path.getsize(source) for source in (units[file][1] if file in units else [file]))

    def lint(file):
        return subprocess.run(["clang-tidy", "-quiet", "--config-file=.clang-tidy", "-p", work, file],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)

    failed = False
    with concurrent.futures.ThreadPoolExecutor(int(jobs)) as pool:
        for done in pool.map(lint, sorted(files, key=size, reverse=True)):
            if done.returncode:
                failed = True
                print(done.stdout, done.stderr, sep="\n", flush=True)
    print(f"{len(shipped)} sources in {len(files)} units")
    sys.exit(failed)


main(*sys.argv[1:])

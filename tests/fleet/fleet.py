#!/usr/bin/python3
"""The role for Ansible on a fleet of throwaway machines, with systemd and without.

    fleet.py PAYLOADS NUMBER

PAYLOADS holds "current" and "next", each with a program and its payload. Prints what each run of a playbook took and
every check that does not hold; exits with 1 when there was one."""
import json
import os
import re
import subprocess
import sys
import tempfile
import time

PROJECT = os.path.realpath(__file__ + "/../../..")
TOOL = PROJECT + "/testkit/machine"
NOW = """find /srv /etc /var/lib -printf '%p %m %s %T@\\n' | sort; pgrep -a 'kalmo|zdlogger'"""
LEFT = "find /tmp /var/tmp /root/.ansible/tmp -mindepth 1 ! -path '*/systemd-private-*' ! -name '.*-unix' 2>/dev/null"
# The server's program waits for what its file of failures tells, and the run for the program, until both are killed.
KILL = """mkdir -p /srv/zd/first; mkfifo /srv/zd/first/kalmo.fail; setsid bash -c '
    until pgrep -f "kalmo --[I]NSTALLER"; do sleep 0.1; done; pkill -KILL kalmoinstall; pkill -KILL -f "[I]NSTALLER"
    ' </dev/null >/dev/null 2>&1 &"""
GREETING = "source " + PROJECT + "/samples/story/server_state.sh; greeting %d"
failures = 0


def check(what, wanted, got):
    global failures
    if wanted != got:
        failures += 1
        print("FAILED: %s\n  wanted: %s\n  got:    %s" % (what, wanted, got))


class Fleet:
    def __init__(self, payloads, number, work):
        self.work = work
        self.tools = {}
        for n in range(1, number + 1):
            ready = open("%s/ready.%d" % (work, n), "w+")
            self.tools["m%02d" % n] = (subprocess.Popen(
                [TOOL, "systemd" if n % 2 else "sysv", "--timeout", "1500", "--", "sh", "-c", "echo ready; exec sleep infinity"],
                stdin=subprocess.DEVNULL, stdout=ready, cwd=PROJECT), ready)
        for tool, ready in self.tools.values():
            while os.fstat(ready.fileno()).st_size == 0 and tool.poll() is None:
                time.sleep(0.1)
        self.names = list(self.tools)
        hosts = {name: {"ansible_host": str(tool.pid)} for name, (tool, _) in self.tools.items()}
        # One machine has the program already, as a package brings it.
        hosts[self.names[-1]].update(zdsql_program="", zdsql_payload="", zdsql_folder=payloads + "/{{ release }}")
        with open(work + "/inventory.json", "w") as file:
            json.dump({"zdsql": {"hosts": hosts, "vars": {
                "ansible_connection": "machine", "ansible_become": False, "ansible_python_interpreter": "/usr/bin/python3",
                "zdsql_name": "first", "zdsql_directory": "/srv/zd/first", "zdsql_port": 4901,
                "zdsql_program": payloads + "/{{ release }}/kalmoinstall",
                "zdsql_payload": payloads + "/{{ release }}/kalmoinstall.zip"}}}, file)
        self.environment = dict(
            os.environ, LC_ALL="C.UTF-8", PYTHONDONTWRITEBYTECODE="1", ANSIBLE_HOME=work,
            ANSIBLE_LOCAL_TEMP=work + "/local", ANSIBLE_FORKS="8", ANSIBLE_NOCOLOR="1", ANSIBLE_PIPELINING="1",
            ANSIBLE_CONFIG=PROJECT + "/ansible/ansible.cfg",
            ANSIBLE_CONNECTION_PLUGINS=PROJECT + "/testkit/connection_plugins")

        self.temporary = self.ask_all(LEFT)

    def end(self):
        for tool, _ in self.tools.values():
            tool.terminate()
        for tool, _ in self.tools.values():
            tool.wait()

    def ask(self, name, script):
        return subprocess.run([TOOL, "enter", str(self.tools[name][0].pid), "--", "bash", "-c", script], cwd="/",
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout

    def ask_all(self, script):
        return {name: self.ask(name, script) for name in self.names}

    def play(self, what, playbook, release, changed, failed=None, *options):
        """Runs a playbook, and checks which machines it changed and which fail; returns what the last task told by machine."""
        start = time.monotonic()
        said = subprocess.run(
            ["ansible-playbook", "-v", "-i", self.work + "/inventory.json", "-e", "release=" + release, *options,
             "%s/ansible/playbooks/%s.yml" % (PROJECT, playbook)],
            env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout
        print("%-44s %3d machines %6.1f s" % (what, len(self.names), time.monotonic() - start), flush=True)
        with open(self.work + "/said", "a") as file:
            file.write("==== %s\n%s" % (what, said))
        recap = {line[0]: dict(item.split("=") for item in line[1].split())
                 for line in re.findall(r"^(m\d+) +: (.*)$", said, re.M)}
        before = failures
        check(what + ": changed", list(changed), [name for name in recap if recap[name]["changed"] != "0"])
        check(what + ": failed", failed or [], [name for name in recap if recap[name]["failed"] != "0"])
        if failures > before:
            print(said)
        check(what + ": nothing is left", self.temporary, self.ask_all(LEFT))
        return {name: json.loads(told) for name, told in
                re.findall(r"^(?:changed|failed|fatal): \[(m\d+)\](?:: FAILED!)? => (\{.*\})$", said, re.M)}

    def versions(self):
        return [greeting.split()[2] if greeting else "" for greeting in self.ask_all(GREETING % 4901).values()]


def story(fleet, current, following):
    names = fleet.names
    broken, killed, others = names[1], names[2], names[:1] + names[3:]

    before = fleet.ask_all(NOW)
    predicted = fleet.play("check mode", "site", "current", names, None, "--check", "--diff")
    check("check mode changes nothing", before, fleet.ask_all(NOW))

    fleet.ask(broken, "mkdir -p /srv/zd/first; printf '255\\nbroken on purpose\\n' >/srv/zd/first/kalmo.fail")
    fleet.ask(killed, KILL)
    told = fleet.play("first run, two machines broken", "site", "current", others, [broken, killed])
    for name in others:
        check(name + ": did what was predicted", steps(predicted[name]["plan"]), steps(told[name]["trace"]))
    check("the reason is told", True, "kalmo --INSTALLER" in told[broken]["msg"])
    check("a kill is told", True, "ended in the middle (ended by signal 9)" in told[killed]["msg"])
    for name in (broken, killed):
        fleet.ask(name, "rm /srv/zd/first/kalmo.fail")
    fleet.play("the broken ones mended", "site", "current", [broken, killed])
    fleet.play("second run", "site", "current", [])
    check("nothing is unfinished", dict.fromkeys(names, ""), fleet.ask_all("ls -d /var/lib/kalmoinstall* 2>/dev/null"))
    check("all answer", [current] * len(names), fleet.versions())
    fleet.play("a second instance on two", "site", "current", names[1:3], None, "--limit", ",".join(names[1:3]),
               "-e", "zdsql_name=second zdsql_directory='/srv/zd/second one' zdsql_port=4902")

    before = fleet.ask_all(NOW)
    fleet.play("check mode of an upgrade", "upgrade_at_once", "next", names, None, "--check")
    check("check mode changes nothing", before, fleet.ask_all(NOW))
    fleet.ask(broken, "mount --bind /srv/zd/first /srv/zd/first && mount -o remount,bind,ro /srv/zd/first")
    fleet.play("rolling run, stopped by the second", "upgrade", "next", names[:1], [broken],
               "-e", "zdsql_serial=2")
    check("it stopped there", [following] + [current] * (len(names) - 1), fleet.versions())
    fleet.ask(broken, "umount /srv/zd/first")
    fleet.play("rolling run", "upgrade", "next", names[1:])
    check("all are new", [following] * len(names), fleet.versions())
    check("the second instance too", following, fleet.ask(broken, GREETING % 4902).split()[2])
    fleet.play("a downgrade, at once", "upgrade_at_once", "current", [], names)
    told = fleet.play("another port", "site", "next", [], names[:1], "--limit", names[0], "-e", "zdsql_port=4999")
    check("what is told of it", "first has the port 4901, not 4999; it is changed in ZDConf.ini", told[names[0]]["msg"])
    fleet.play("remove", "remove", "next", names)
    check("no process is left", dict.fromkeys(names, ""), fleet.ask_all("pgrep -a 'kalmo|zdlogger'"))
    fleet.play("remove again", "remove", "next", [])


def steps(lines):
    """What differs each time in them are the names of temporary folders."""
    return [re.sub(r"/[^ ]*/(zdsql\.|ansible-)[^/]*(/orders\.[^\"]*)?", "", line) for line in lines]


def version_of(folder):
    return subprocess.run([folder + "/tree/kalmo", "--version"], stdout=subprocess.PIPE, text=True).stdout.split()[-1]


def main():
    payloads = os.path.realpath(sys.argv[1])
    with tempfile.TemporaryDirectory() as work:
        start = time.monotonic()
        fleet = Fleet(payloads, int(sys.argv[2]), work)
        try:
            print("%-44s %3d machines %6.1f s" % ("up", len(fleet.names), time.monotonic() - start))
            story(fleet, version_of(payloads + "/current"), version_of(payloads + "/next"))
        finally:
            fleet.end()
    print("all checks held" if failures == 0 else "%d checks failed" % failures)
    sys.exit(failures > 0)


main()

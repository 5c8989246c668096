#!/usr/bin/python
DOCUMENTATION = r"""
---
module: zdsql_instance
short_description: Install, upgrade or uninstall one ZDSQL instance
description:
  - Runs C(kalmoinstall) unattended on the machine. What is to be done is checked first with C(--check), and what came of
    it is read from the file of C(/RESULT=).
  - In check mode it stops behind the check, and tells what a run would change.
  - An unattended run is told no password, so nothing here is secret.
options:
  name:
    description: The instance's name; for C(absent) also C(kalmomanager), the supervisor that all instances share.
    type: str
    required: true
  state:
    description:
      - C(present) installs an instance that is not there, and leaves one that is.
      - C(latest) also upgrades one whose version is not that of the program in C(folder).
      - C(absent) uninstalls. Configuration, databases, directory and system account stay.
      - An instance whose last run from here did not end well is worked on again, whatever its version.
    type: str
    choices: [present, latest, absent]
    default: present
  directory:
    description: The install directory, which an installation needs. An instance in another one is a failure.
    type: str
  port:
    description: The TCP port; an installation without one takes 4900. An instance with another one is a failure.
    type: int
  folder:
    description: The folder on the machine that holds C(kalmoinstall) and C(kalmoinstall.zip).
    type: path
    default: /usr/lib/kalmoinstall
  allow_downgrade:
    description: Whether C(latest) may replace a version by an older one.
    type: bool
    default: false
  decide_only:
    description: Tell in C(operation) what is to be done, and do nothing. Needs no C(kalmoinstall.zip).
    type: bool
    default: false
author:
  - the makers of ZDSQL
"""

EXAMPLES = r"""
- name: An instance of the version that a package has brought
  zdsql_instance:
    name: first
    state: latest
    directory: /srv/zd/first
    port: 4900
"""

RETURN = r"""
operation:
  description: install, upgrade, uninstall, or nothing.
  returned: always
  type: str
plan:
  description: The steps as C(--check) tells them.
  returned: when something is to be done
  type: list
  elements: str
trace:
  description: The steps of the run, in the same words.
  returned: when there was a run
  type: list
  elements: str
result:
  description: What the run wrote to the file of C(/RESULT=); docs/schema.json describes it.
  returned: when there was a run
  type: dict
instance:
  description: The instance as C(kalmoinstall --list --json) tells it; null when there is none.
  returned: success
  type: dict
ansible_facts:
  description: C(zdsql_instances) as it is after a run.
  returned: when there was a run
  type: dict
"""

import hashlib
import os
import re

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.kalmoinstall import OPERATIONS, Installer, Trouble, read_answer, write_private

MANAGER = "kalmomanager"
# The results of runs that did not end well: what they left half done does not show in a list of instances.
UNFINISHED = "/var/lib/kalmoinstall-ansible"


def order(version):
    """What versions are compared by."""
    return [int(number) for number in re.findall("[0-9]+", version)]


def same_folder(one, other):
    return os.path.realpath(one) == os.path.realpath(other)


class Instance:
    def __init__(self, module):
        self.module = module
        self.name = module.params["name"]
        self.state = module.params["state"]
        self.directory = module.params["directory"]
        self.port = module.params["port"]
        self.installer = Installer(module.params["folder"])
        # A name may have letters that no name of a file has, and be too long for one.
        self.result = os.path.join(UNFINISHED, hashlib.sha256(self.name.encode("utf-8")).hexdigest()[:32] + ".json")

    def look(self):
        """Asks what is installed."""
        self.found = self.installer.list()
        is_manager = self.name.lower() == MANAGER
        self.now = next((one for one in self.found["instances"]
                         if (one["kind"] == "manager" if is_manager else one["name"] == self.name)), None)

    def judge_parameters(self):
        for what in (self.name, self.directory or ""):
            if re.search("[\x00-\x1f\x7f]", what) or what != what.strip():
                raise Trouble("%r has a control character, or a blank at its ends" % what)
        if self.name.lower() == MANAGER and self.state != "absent":
            raise Trouble("the manager comes and is upgraded with the instance of its directory: only "
                          "state absent is for %s" % MANAGER)

    def judge_instance(self):
        """Whether the instance that is there is the one that is meant."""
        if not self.now["ours"]:
            raise Trouble("the service %s runs something else than a ZDSQL server, and is left alone" %
                          self.now["service"])
        if self.directory and self.now["directory"] and not same_folder(self.directory, self.now["directory"]):
            raise Trouble("%s is installed in %s, not in %s; an instance cannot be moved" % (
                self.name, self.now["directory"], self.directory))
        if self.port and self.now["port"] and self.port != self.now["port"]:
            raise Trouble("%s has the port %d, not %d; it is changed in ZDConf.ini" % (
                self.name, self.now["port"], self.port))

    def decide(self):
        """What is to be done: install, upgrade, uninstall, or nothing."""
        self.judge_parameters()
        self.look()
        if self.now is None:
            if self.state != "absent":
                return "install"
            # An uninstallation that was cut short, by whomever, goes on without its service.
            check = self.installer.check(self.write_orders("uninstall"))
            return "nothing" if "no-instance" in (finding["code"] for finding in check["findings"]) else "uninstall"
        self.judge_instance()
        if self.state == "absent":
            return "uninstall"
        stale = self.state == "latest" and self.now["version"] != self.found["version"]
        if not stale and not self.is_unfinished():
            return "nothing"
        if (self.now["version"] and order(self.now["version"]) > order(self.found["version"]) and
                not self.module.params["allow_downgrade"]):
            raise Trouble("%s has version %s, and %s is older: that would be a downgrade, which nobody has allowed" % (
                self.name, self.now["version"], self.found["version"]))
        return "upgrade"

    def is_unfinished(self):
        # What cannot be read was being written when the machine lost its power.
        return os.path.exists(self.result) and (self.last_result() or {}).get("state") != "ok"

    def must_be_stopped(self, operation):
        # With init scripts an unattended uninstallation does not end the server.
        return operation == "uninstall" and self.found["init"] == "scripts" and self.now and \
            self.now["state"] not in ("stopped", "failed")

    def write_orders(self, operation):
        lines = ["[PILOTAGE]", "MAJ=%d" % OPERATIONS[operation], "[SERVEUR]", "Serveur=" + self.name]
        if operation == "install":
            if not self.directory:
                raise Trouble("%s is not installed, and there is no directory to install it into" % self.name)
            lines.append("Repertoire=" + self.directory)
            if self.port:
                lines.append("Port=%d" % self.port)
        return write_private(self.module.tmpdir, "\n".join(lines) + "\n")

    def bring(self):
        """All of it; returns what the module tells."""
        operation = self.decide()
        if operation == "nothing" or self.module.params["decide_only"]:
            if self.state == "absent" and operation == "nothing" and self.is_unfinished() and not self.module.check_mode:
                self.forget()  # an installation that nobody wants any more
            return {"changed": False, "operation": operation, "instance": self.now}

        orders = self.write_orders(operation)
        check = self.installer.check(orders)
        told = {"operation": operation, "check": check}
        if not check["works"]:
            raise Trouble("%s of %s would not work: %s" % (operation, self.name, " ".join(
                finding["text"] for finding in check["findings"] if finding["severity"] == "error")), **told)
        for finding in check["findings"]:
            if finding["severity"] == "warning":
                self.module.warn("%s: %s" % (self.name, finding["text"]))
        stops = self.must_be_stopped(operation)
        told["plan"] = ["%(step)s: %(result)s" % step for step in check["plan"]]
        told["diff"] = self.difference(check, told["plan"], stops)
        if self.module.check_mode:
            return dict(told, changed=check["changes"] or bool(stops), instance=self.now)
        return dict(told, **self.work(orders, operation, stops))

    def difference(self, check, plan, stops):
        before = after = ""
        form = "version: %s\ndirectory: %s\nport: %s\n"
        if self.now:
            before = form % (self.now["version"], self.now["directory"], self.now["port"])
        if check["operation"] == "install":
            after = form % (check["version"], check["directory"], check["port"])
        elif check["operation"] == "upgrade":
            after = form % (check["version"], self.now["directory"], self.now["port"])
        if stops:
            plan = ["/etc/init.d/%s stop" % self.now["service"]] + plan
        return [{"before_header": self.name, "after_header": self.name, "before": before, "after": after},
                {"prepared": "\n".join(plan) + "\n"}]

    def work(self, orders, operation, stops):
        if stops:
            script = "/etc/init.d/" + self.now["service"]
            status, said, complaint = self.module.run_command([script, "stop"])
            if status != 0:
                raise Trouble("%s stop: exit status %d" % (script, status), changed=True, stdout=said, stderr=complaint)
        before = self.last_result()
        try:
            os.makedirs(UNFINISHED, mode=0o700, exist_ok=True)
        except OSError as error:
            raise Trouble("%s cannot be made: %s" % (UNFINISHED, error.strerror), changed=bool(stops))
        trace = os.path.join(self.module.tmpdir, "trace")
        process, status = self.installer.run(orders, self.result, trace)
        told = {"operation": operation, "changed": True, "trace": self.steps(trace)}
        result = self.last_result()
        ended = "exit status %d" % status if status >= 0 else "ended by signal %d" % -status
        if result is None or result["pid"] != process or (
                before and (before["pid"], before["started"]) == (result["pid"], result["started"])):
            raise Trouble("the run told no result (%s)" % ended, **told)
        told["result"] = result
        if result["state"] == "running":
            raise Trouble("the run ended in the middle (%s); run this again" % ended, **told)
        # A null is none of a run that has ended.
        told["changed"] = result["changed"] is not False or bool(stops)
        if result["state"] != "ok":
            if result["changed"] is False and before is None:
                self.forget()
            raise Trouble("%s of %s failed: %s: %s" % (operation, self.name, result["step"], result["reason"]), **told)
        self.look()
        if (self.now is None) != (operation == "uninstall"):
            raise Trouble("%s of %s is told to be done, and it is %s" % (
                operation, self.name, "not there" if self.now is None else "still there"), **told)
        self.forget()
        if self.now and self.now["version"] != result["version"]:
            self.module.warn("%s tells version %s after the %s, and kalmoinstall %s: \"latest\" will upgrade it each time" % (
                self.name, self.now["version"], operation, result["version"]))
        return dict(told, instance=self.now, ansible_facts={"zdsql_instances": self.found["instances"]})

    def last_result(self):
        try:
            with open(self.result, "rb") as file:
                return read_answer(file.read().decode("utf-8", "replace"), self.result)
        except (FileNotFoundError, Trouble):
            return None

    def forget(self):
        """Nothing is left to be finished."""
        os.unlink(self.result)
        try:
            os.rmdir(UNFINISHED)
        except OSError:
            pass  # others are unfinished

    @staticmethod
    def steps(trace):
        """The lines of a trace without their times."""
        try:
            with open(trace, "rb") as file:
                return [line.split("  ", 1)[-1] for line in file.read().decode("utf-8", "replace").splitlines()]
        except FileNotFoundError:
            return []


def main():
    module = AnsibleModule(
        argument_spec={
            "name": {"type": "str", "required": True},
            "state": {"type": "str", "choices": ["present", "latest", "absent"], "default": "present"},
            "directory": {"type": "str"},
            "port": {"type": "int"},
            "folder": {"type": "path", "default": "/usr/lib/kalmoinstall"},
            "allow_downgrade": {"type": "bool", "default": False},
            "decide_only": {"type": "bool", "default": False},
        },
        supports_check_mode=True)
    try:
        told = Instance(module).bring()
    except Trouble as trouble:
        module.fail_json(msg=str(trouble), **trouble.told)
    module.exit_json(**told)


if __name__ == "__main__":
    main()

"""The installer of ZDSQL, as modules of Ansible use it: its answers are those of docs/schema.json."""
import json
import os
import subprocess
import tempfile

SCHEMA = 1
OPERATIONS = {"upgrade": 1, "install": 2, "uninstall": 3}


class Trouble(Exception):
    """Why a module fails, and what it returns besides the reason."""

    def __init__(self, reason, **told):
        super().__init__(reason)
        self.told = told


def write_private(folder, text):
    """A new file that only its owner can read; returns its path."""
    descriptor, path = tempfile.mkstemp(prefix="orders.", dir=folder)
    with os.fdopen(descriptor, "wb") as file:
        file.write(text.encode("utf-8"))
    return path


def read_answer(text, what):
    """The object that an answer is."""
    try:
        answer = json.loads(text)
        schema = answer["schema"]
    except (ValueError, KeyError, TypeError):
        raise Trouble("%s cannot be read as an answer of kalmoinstall" % what)
    if schema != SCHEMA:
        raise Trouble("%s has schema %s, and this role knows %d" % (what, schema, SCHEMA))
    return answer


class Installer:
    """The program in a folder of this machine."""

    def __init__(self, folder):
        self.program = os.path.join(folder, "kalmoinstall")
        # The reasons that the system gives are in the run's language; those who read what Ansible prints share one.
        self.environment = dict(os.environ, LC_ALL="C.UTF-8")

    def start(self, arguments, **streams):
        try:
            return subprocess.Popen(
                [self.program] + arguments, env=self.environment, cwd="/", stdin=subprocess.DEVNULL, **streams)
        except PermissionError:
            raise Trouble("%s cannot be started: no right to, or its file system is mounted noexec" % self.program)
        except OSError as error:
            raise Trouble("%s cannot be started: %s" % (self.program, error.strerror))

    def ask(self, *arguments):
        """An answer and the exit status of a call that changes nothing."""
        process = self.start(list(arguments) + ["--json"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        answer, complaint = process.communicate()
        what = "what %s %s printed" % (self.program, arguments[0])
        try:
            return read_answer(answer.decode("utf-8", "replace"), what), process.returncode
        except Trouble as trouble:
            raise Trouble(
                "%s (exit status %d): is the program older than this role?" % (trouble, process.returncode),
                stdout=answer.decode("utf-8", "replace")[-4096:], stderr=complaint.decode("utf-8", "replace")[-4096:])

    def list(self):
        return self.ask("--list")[0]

    def check(self, orders):
        answer, status = self.ask("--check", orders)
        if (status == 0) != answer["works"]:
            raise Trouble("%s --check says works: %s, and exits with %d" % (self.program, answer["works"], status))
        return answer

    def run(self, orders, result, trace):
        """An unattended run: its process and exit status. What it prints is that of the server's programs."""
        # Neither pipe nor file: a server that an init script starts would keep it open.
        process = self.start(
            ["/PILOT=" + orders, "/RESULT=" + result, "/DEBUG=" + trace],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return process.pid, process.wait()

"""A throwaway machine with one instance: what is on it, how it is put back, one run of the installer on it."""
import collections
import glob
import hashlib
import json
import os
import re
import shutil
import signal
import socket
import stat
import subprocess
import tempfile
import time
import typing

NAME, PORT = "first", 4900
INSTANCE, MANAGER = "ZDCS-" + NAME, "KalmoManager"
DIRECTORY = "/srv/zd/first"
CONF, MARKER = DIRECTORY + "/ZDConf.ini", DIRECTORY + "/Install.log"
WORK = "/tmp/faults"
TRACE, LOG, RESULT = WORK + "/trace", WORK + "/strace", WORK + "/result"
SYSTEMD = os.path.isdir("/run/systemd/system")
# All that an installer may change for good.
NOTES = "/var/lib/kalmoinstall"
WATCHED = [DIRECTORY, NOTES, "/etc/systemd/system", "/etc/init.d"] + sorted(glob.glob("/etc/rc?.d"))
# The server's own programs append to these at each start.
GROWING = (DIRECTORY + "/INSTALL.LOG", DIRECTORY + "/BDD/__system/kalmo.log")
CALLS = ("openat mkdir mkdirat unlink unlinkat rmdir rename renameat renameat2 link symlink write pwrite64 ftruncate "
         "fallocate fchmod fchmodat fchown fchownat utimensat fsync fdatasync syncfs flock pipe2 clone clone3 fork "
         "vfork wait4 clock_nanosleep").split()
# Retries pause for a fiftieth of a second, for a fault that does not go away.
SHORT_PAUSES = "clock_nanosleep:retval=0:delay_enter=20000"
# What an earlier instance left: every key that an installation writes, shorter and longer, and some that it does not.
OLD_CONF = ("; mine\n[INIT]\nDBRootPath = /srv/an/older/and/longer/place/of/the/databases/\nAccessPort = 1\n"
            "Comment = kept\nName = formerly\n\n[TELEMETRY]\nACTIVE = 1\n")


def sh(command):
    return subprocess.run(["bash", "-c", command], stdin=subprocess.DEVNULL, capture_output=True, text=True)


def wait_for(condition, seconds):
    end = time.monotonic() + seconds
    while not (found := condition()) and time.monotonic() < end:
        time.sleep(0.03)
    return found


def start(service):
    return f"systemctl start {service}" if SYSTEMD else f"/etc/init.d/{service} start"


def program_of(service):
    """The program of a running service; " (deleted)" stands behind one that has been replaced since."""
    try:
        pid = sh(f"systemctl show --value -p MainPID {service}" if SYSTEMD else f"cat /run/{service}.pid").stdout.strip()
        return os.readlink(f"/proc/{int(pid)}/exe")
    except (OSError, ValueError):
        return ""


def greeting():
    try:
        with socket.create_connection(("127.0.0.1", PORT), 10) as s:
            return s.recv(200).decode()
    except OSError:
        return ""


def read(path):
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return b""


def keys(text):
    """The values of a configuration as its readers see them: the first line of a key counts."""
    found, section = {}, ""
    for line in text.decode("latin-1").split("\n"):
        if line.startswith("["):
            section = line.partition("]")[0][1:]
        elif "=" in line and not line.startswith(":"):
            key, _, value = line.partition("=")
            found.setdefault((section, key.strip()), value.strip())
    return found


def content(path):
    # Nulls at the end of a configuration are what the next update of it cuts off.
    text = read(path).rstrip(b"\0") if path == CONF else read(path)
    return "grows" if path in GROWING else hashlib.sha256(text).hexdigest()


def files():
    """Type, mode, owner and content of everything that is watched."""
    found = {}
    for root in WATCHED:
        for path in {name.rstrip("/") for name in [root] + glob.glob(root + "/**", recursive=True, include_hidden=True)}:
            if os.path.lexists(path) and path != NOTES:  # which says nothing when it is empty
                st = os.lstat(path)
                what = {stat.S_IFLNK: os.readlink, stat.S_IFREG: content}.get(stat.S_IFMT(st.st_mode), lambda _: "")
                found[path] = (oct(st.st_mode), st.st_uid, st.st_gid, what(path))
    return found


def services():
    found = {"greeting": greeting()}
    for service in (INSTANCE, MANAGER):
        found[service] = program_of(service)
        if SYSTEMD:
            found[service + " unit"] = sh(f"systemctl show -p LoadState,UnitFileState,NeedDaemonReload {service}").stdout
    return found


def state():
    return {**files(), **services()}


def difference(expected, actual):
    return "\n".join(f"    {name}: {expected.get(name)!r} became {actual.get(name)!r}"
                     for name in sorted(expected.keys() | actual.keys()) if expected.get(name) != actual.get(name))


class Snapshot:
    """The machine as it is when this is made. To restore it takes some tenths of a second."""

    def __init__(self):
        self.files, self.services, self.conf = files(), services(), read(CONF)
        self.state = {**self.files, **self.services}
        self.running = [service for service in (MANAGER, INSTANCE) if self.services[service]]
        self.tar = tempfile.mktemp(dir=WORK)
        sh(f"cd / && tar -cpf {self.tar} " + " ".join(path[1:] for path in WATCHED if os.path.exists(path)))

    def restore(self):
        if SYSTEMD:
            sh(f"systemctl stop {MANAGER} {INSTANCE}")
        wait_for(lambda: sh(f"find /proc/[0-9]*/exe -lname '{DIRECTORY}/*' | tr -dc '0-9\n' | xargs -r kill -9 && false"
                            f" || find /proc/[0-9]*/exe -lname '{DIRECTORY}/*'").stdout == "", 60)
        for path in WATCHED:
            shutil.rmtree(path, ignore_errors=True)
        sh(f"rm -f /run/ZDCS-* /run/Kalmo* /run/kalmo*; tar -C / -xpf {self.tar}")
        for command in ["systemctl daemon-reload"] * SYSTEMD + [start(service) for service in self.running]:
            sh(command)
        if not wait_for(lambda: services() == self.services, 60):
            raise SystemExit("the machine cannot be put back:\n" + difference(self.state, state()))


class Order(typing.NamedTuple):
    """A run of the installer: the folder that it lies in, and what its parameter file says."""
    folder: str
    text: str

    def write(self):
        with open(WORK + "/pilot.ini", "w") as file:
            file.write(self.text)

    def run(self, inject=(), trace=False, seconds=120, options=(), asked=(), told=True):
        """Runs it under strace, which may get more options, and until all that it started has ended; or asks it only. Its
        status; -N when signal N ended it. A result that is told takes a moment: the services are asked whether they stay."""
        self.write()
        sh(f"rm -f {TRACE} {LOG} {RESULT}")
        command = ["strace", "-qq", "-y", "-e", "signal=none", "-s", "200", "-o", LOG, "-e", "trace=" + ",".join(CALLS), *options]
        for what in inject:
            command += ["-e", "inject=" + what]
        command += [self.folder + "/kalmoinstall"]
        command += asked or [f"/PILOT={WORK}/pilot.ini"] + ["/RESULT=" + RESULT] * told + ["/DEBUG=" + TRACE] * trace
        process = subprocess.Popen(command, start_new_session=True, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            status = process.wait(seconds)  # strace ends as the installer did, by the same signal
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            return "endless"
        ended = wait_for(lambda: not sh(f"pgrep -s {process.pid}").stdout, 60)
        return status if ended else "its children do not end"


def result():
    """What the last run says of itself; nothing where it could not."""
    return json.loads(read(RESULT) or b'{"state": "", "changed": null}')


def prepare(current, next_version):
    """Makes the machine ready for an installation. The three orders by name."""
    if "KALMO_MACHINE" not in os.environ:
        raise SystemExit("this installs services; run it in a throwaway machine (testkit/machine)")
    # The search for leaks does not work under strace.
    os.environ["ASAN_OPTIONS"] = "detect_leaks=0"
    os.makedirs(WORK)
    os.makedirs(DIRECTORY)
    with open(CONF, "w") as file:
        file.write(OLD_CONF)
    if SYSTEMD:
        # A service is started more often here than a real one in a year.
        with open("/etc/systemd/system.conf.d/faults.conf", "w") as file:
            file.write("[Manager]\nDefaultStartLimitIntervalSec=0\n")
        sh("systemctl daemon-reexec")
    text = f"[PILOTAGE]\nMAJ=%d\n[SERVEUR]\nServeur={NAME}\nRepertoire={DIRECTORY}\nPort={PORT}\n"
    return {name: Order(folder, text % operation) for name, folder, operation in
            (("install", current, 2), ("upgrade", next_version, 1), ("uninstall", current, 3))}


class Call(typing.NamedTuple):
    """A system call of the installer: what it is about in any run, and the nth of its name that it was in this one."""
    name: str
    path: str
    time: int  # how-manieth of its name on that path
    nth: int
    text: str

    def __str__(self):
        return f"{self.name} {self.path} {self.time}"

    def __eq__(self, other):
        return str(self) == str(other)


def path_of(name, arguments):
    """The path that a call is about, without what is another one each time: the end of a temporary name, a number."""
    file, texts = re.findall(r"^\d+<(.*?)>", arguments), re.findall(r'"((?:[^"\\]|\\.)*)"', arguments)
    parts = file + texts * (not file or name.endswith("at"))
    return re.sub(r"\.\w{6}(?=/|$)", ".######", re.sub(r"(?<=\[)\d+|(?<=/proc/)\d+", "#", "/".join(parts)))


def calls():
    """The calls of the last run that change something, and those that wait for a child."""
    counts, found = collections.Counter(), []
    for line in read(LOG).decode("latin-1").splitlines():
        name, is_call, arguments = line.partition("(")
        if is_call:
            counts[name] += 1
            if name != "clock_nanosleep" and (name != "openat" or re.search("O_CREAT|O_TRUNC|O_RDWR|O_WRONLY", line)):
                path = path_of(name, arguments)
                if path.startswith(WORK) and path != TRACE:  # the result is no work
                    continue
                counts[name, path] += 1
                found.append(Call(name, path, counts[name, path], counts[name], line))
    return found

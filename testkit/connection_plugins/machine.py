"""Reaches a throwaway machine: the address is the process of the testkit/machine that keeps it up."""

DOCUMENTATION = """
name: machine
short_description: a throwaway machine of the test kit
description: Enters it with testkit/machine.
author: the makers of ZDSQL
options: {}
"""

import os
import subprocess

from ansible.errors import AnsibleError
from ansible.plugins.connection import ConnectionBase

TOOL = os.path.realpath(__file__ + "/../../machine")


class Connection(ConnectionBase):
    transport = "machine"
    has_pipelining = True

    def _connect(self):
        self._connected = True
        return self

    def __enter(self, arguments, **streams):
        # As from a login, the caller's environment stays behind.
        return subprocess.run([TOOL, "enter", self._play_context.remote_addr, "--"] + arguments,
                              cwd="/", env={"HOME": "/root", "PATH": os.environ["PATH"], "LANG": "C.UTF-8"}, **streams)

    def exec_command(self, cmd, in_data=None, sudoable=True):
        super().exec_command(cmd, in_data=in_data, sudoable=sudoable)
        done = self.__enter(["/bin/sh", "-c", cmd], input=in_data or b"", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        return done.returncode, done.stdout, done.stderr

    def __copy(self, arguments, **streams):
        done = self.__enter(arguments, stderr=subprocess.PIPE, **streams)
        if done.returncode != 0:
            raise AnsibleError("%s: %s" % (arguments[-1], done.stderr.decode()))

    def put_file(self, in_path, out_path):
        with open(in_path, "rb") as file:
            self.__copy(["/bin/sh", "-c", 'exec cat >"$1"', "sh", out_path], stdin=file)

    def fetch_file(self, in_path, out_path):
        with open(out_path, "wb") as file:
            self.__copy(["cat", in_path], stdin=subprocess.DEVNULL, stdout=file)

    def close(self):
        self._connected = False

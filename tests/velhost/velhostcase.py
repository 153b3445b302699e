"""Runs velhost as a program in a temporary folder, and writes small servers and schemas for it."""

import fcntl
import json
import os
import pathlib
import pty
import struct
import subprocess
import tempfile
import termios
import time
import unittest

# Absolute, because programs run in temporary folders.
VELHOST = os.path.abspath(os.environ["VELHOST"])
SOURCE = pathlib.Path(os.path.abspath(os.environ["VELHOST_SOURCE"]))

BRIDGE = "KROSG_VO_PCIIOBRIDGE_StatisticData"

SCHEMA = """
Qualifier SupportedMachineTypes : string[], Scope(class), Flavor(EnableOverride, Restricted);
Qualifier MaxInstanceCount : uint16, Scope(class), Flavor(EnableOverride, Restricted);
Qualifier Offset : uint32, Scope(property);
Qualifier MaxLen : uint32, Scope(property);
Qualifier Index : uint16, Scope(property);
class KROSG_Top {
  string InstanceID; string ElementName; string MachineType; datetime StatisticTime;
};
class KROSG_PCIIOBRIDGE_StatisticData : KROSG_Top {};
class KROSG_MEMCTL_StatisticData : KROSG_Top {};
class KROSG_L3Cache_StatisticData : KROSG_Top {};
[SupportedMachineTypes{"6203", "4411"}, MaxInstanceCount(@COUNT@)]
class KROSG_VO_PCIIOBRIDGE_StatisticData : KROSG_Top {
  @REGISTERS@
};
class KROSG_DCAPFile {
  string FileName; string ErrRawData; datetime MessageTimestamp; string SourceNode;
  string CreationClassName; string LogCreationClassName; string LogName; string RecordID;
};
"""


def read_terminal(master):
    """Returns everything that is written to a terminal until its other end is closed, then closes this end."""
    shown = b""
    try:
        while chunk := os.read(master, 4096):
            shown += chunk
    except OSError:
        pass  # the other end is closed
    os.close(master)
    return shown.decode()


class Terminal:
    """The user's end of the terminal that a program runs on."""

    def __init__(self, master):
        self.master = master

    def write(self, keys):
        os.write(self.master, keys)

    def read(self):
        """Everything shown until the program has ended."""
        return read_terminal(self.master)


class VelhostCase(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.folder = pathlib.Path(self._folder.name)

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text)
        return str(path)

    def wait_until(self, holds, complaint):
        """Waits for a condition that soon becomes true; fails if it does not within a minute."""
        for _ in range(1200):
            if holds():
                return
            time.sleep(0.05)
        self.fail(complaint)

    def wait_for_exchanges(self, process, recording, count):
        """Waits until a running velhost has recorded at least `count` exchanges."""
        path = self.folder / recording
        self.wait_until(lambda: process.poll() is not None or
                        path.exists() and len(path.read_bytes().splitlines()) > count,
                        f"no {count} exchanges were recorded")
        self.assertIsNone(process.poll(), "velhost has ended already")

    def schema(self, registers, count=1):
        """Writes a schema with one R8 class; `registers` maps names to (Offset, MaxLen). Returns its path."""
        lines = [f"[Offset({offset}), MaxLen({length})] uint8 {name}[];" for name, (offset, length) in registers.items()]
        text = SCHEMA.replace("@COUNT@", str(count)).replace("@REGISTERS@", "\n  ".join(lines))
        return self.write("schema.mof", text)

    def run_velhost(self, *arguments, environment=None, **options):
        variables = dict(os.environ, TZ="UTC0", **(environment or {}))
        return subprocess.run([VELHOST, *arguments], capture_output=True, text=True, timeout=120, cwd=self.folder,
                              env=variables, **options)

    def start_on_terminal(self, command, variables, columns=80):
        """Starts a command that controls a terminal of its own; returns it and the terminal."""
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 50, columns, 0, 0))
        process = subprocess.Popen(command, cwd=self.folder, env={**os.environ, "TZ": "UTC0", **variables}, stdin=slave,
                                   stdout=slave, stderr=slave, start_new_session=True,
                                   preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        os.close(slave)
        return process, Terminal(master)

    def run_on_terminal(self, command, variables, columns=80):
        """Returns everything that a command writes to a terminal of its own, and its exit status."""
        process, terminal = self.start_on_terminal(command, variables, columns)
        return terminal.read(), process.wait(timeout=60)

    def collect(self, *arguments, status=0):
        """Runs a collection that must end with `status`, and returns its JSON document, which says so too."""
        done = self.run_velhost("collect", "--format", "json", *arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        document = json.loads(done.stdout)
        self.assertEqual(document["exit_status"], status)
        return document

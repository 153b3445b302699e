"""A simulated server behind the network, for the tests that collect from it over RMCP+."""

import errno
import os
import re
import shutil
import socket
import subprocess
import unittest

from velhostcase import BRIDGE, VELHOST, VelhostCase


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def is_free(port):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        try:
            probe.bind(("127.0.0.1", port))
        except OSError as error:
            if error.errno != errno.EADDRINUSE:
                raise
            return False
        return True


@unittest.skipUnless(shutil.which("ipmi_sim"), "ipmi_sim (package openipmi) is not installed")
class LanCase(VelhostCase):
    @staticmethod
    def stop(process):
        """Ends the process with SIGTERM, so that it cleans up; kills it if it does not end."""
        process.terminate()
        try:
            process.wait(timeout=30)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def simulate(self, text):
        """Starts the simulator and returns it with its port, once it answers."""
        return self.simulate_file(self.write("server.toml", text))

    def simulate_file(self, server):
        port = free_port()
        process = subprocess.Popen([VELHOST, "simulate", server, "--port", str(port)], cwd=self.folder, text=True,
                                   env=dict(os.environ, TMPDIR=str(self.folder)), stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.stdout.close)
        self.addCleanup(self.stop, process)
        said = ""
        while "lan:" not in said:
            line = process.stdout.readline()
            self.assertTrue(line, "the simulator ended: " + said)
            said += line
        self.user = re.search(r"lan:([^@\s]+)@", said).group(1)
        self.environment = dict(os.environ, VELHOST_IPMI_PASSWORD="test", TZ="UTC0")
        return process, port

    def lan_arguments(self, port, schema):
        return ["collect", "--format", "json", "--schema", schema, "--sp", f"lan:{self.user}@127.0.0.1:{port}",
                "--cipher-suite", "3", BRIDGE, "KROSG_DCAPFile"]

    def collect_over_lan(self, port, schema, *arguments):
        return subprocess.run([VELHOST, *self.lan_arguments(port, schema), *arguments], capture_output=True, text=True,
                              cwd=self.folder, env=self.environment, timeout=120)

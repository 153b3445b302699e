"""The example of a systemd service and timer: systemd accepts the units, and only new findings are reported."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

EXAMPLE = pathlib.Path(os.environ["VELHOST_SOURCE"]).resolve() / "packaging/systemd"
SCRIPT = EXAMPLE / "velhost-collect"
VELHOST = os.path.abspath(os.environ["VELHOST"])
SCHEMA = """
Qualifier SupportedMachineTypes : string[], Scope(class);
Qualifier MaxInstanceCount : uint16, Scope(class);
Qualifier Offset : uint32, Scope(property);
Qualifier MaxLen : uint32, Scope(property);
Qualifier Role : string, Scope(property);
Qualifier Fields : string[], Scope(property);
class KROSG_Top { string InstanceID; string ElementName; string MachineType; datetime StatisticTime; };
class KROSG_PCIIOBRIDGE_StatisticData : KROSG_Top {};
class KROSG_MEMCTL_StatisticData : KROSG_Top {};
class KROSG_L3Cache_StatisticData : KROSG_Top {};
[SupportedMachineTypes{"6203"}, MaxInstanceCount(1)]
class KROSG_VO_PCIIOBRIDGE_StatisticData : KROSG_Top {
  [Offset(0x10), MaxLen(4), Role("errors"), Fields{"0 Lost link", "1 Timeout"}] uint8 Status[]; };
"""
CLASS = "KROSG_VO_PCIIOBRIDGE_StatisticData"
PLACE = f"{CLASS}/node0/instance0"


class Example(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "state").mkdir()
        (self.folder / "schema.mof").write_text(SCHEMA)

    def collected(self, status, *more):
        """The exit status and the lines of a run that finds this status."""
        (self.folder / "server.toml").write_text(
            f'machine_type = "6203"\n[[bmc_node]]\ntimestamp = "12 34 56 78"\n[[bmc_node.register]]\nchip = 1\n'
            f'address = 0x10\nvalue = "{status:02x} 00 00 00 00 00 00 00"\n')
        done = subprocess.run(
            [SCRIPT, "--sp", f"sim:{self.folder}/server.toml", "--schema", f"{self.folder}/schema.mof", *more, CLASS],
            env=dict(os.environ, VELHOST=VELHOST, STATE_DIRECTORY=f"{self.folder}/state"), capture_output=True, text=True,
            timeout=120, check=False)
        return done.returncode, done.stdout.splitlines()

    def test_reports_what_is_new(self):
        self.assertEqual(self.collected(0), (0, []))
        timeout = f"<3>error: Timeout (1) in {PLACE}, Status bits 1 of 0x00000002"
        self.assertEqual(self.collected(2), (1, [timeout]))
        self.assertEqual(self.collected(2), (0, []))
        link = f"<3>error: Lost link (1) in {PLACE}, Status bits 0 of 0x00000003"
        self.assertEqual(self.collected(3), (1, [link]))
        self.assertEqual(self.collected(0), (0, []))
        self.assertEqual(self.collected(2), (1, [timeout]))
        self.assertEqual([path.name for path in (self.folder / "state").iterdir()], ["last.json"])

    def test_a_run_without_a_result_leaves_the_last_one_alone(self):
        self.collected(2)
        before = (self.folder / "state/last.json").read_bytes()
        self.assertEqual(self.collected(2, "--schema", "absent.mof"), (66, []))
        self.assertEqual((self.folder / "state/last.json").read_bytes(), before)

    @unittest.skipUnless(shutil.which("systemd-analyze"), "systemd-analyze is not installed")
    def test_systemd_accepts_the_units(self):
        for unit in ("velhost-collect.service", "velhost-collect.timer"):
            # A unit is only accepted if its program exists.
            text = (EXAMPLE / unit).read_text().replace("/usr/local/bin/velhost-collect", str(SCRIPT))
            (self.folder / unit).write_text(text)
        units = [self.folder / "velhost-collect.service", self.folder / "velhost-collect.timer"]
        done = subprocess.run(["systemd-analyze", "verify", "--man=no", *units], capture_output=True, text=True,
                              timeout=120, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()

"""Kills velhost at random moments while it records and writes its output, and looks at what is left behind:
the output is there whole or not at all, nothing else lies beside it, and the recording replays."""

import argparse
import json
import random
import signal
import subprocess
import time

from support import BRIDGE, Folder, Tally, VELHOST

SERVER = """
machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "00 00 00 01"
"""
OLD = "the file of an earlier run\n"


class Killing:
    def __init__(self, folder, seed):
        self.folder = folder
        self.random = random.Random(seed)
        self.tally = Tally()
        self.counts = {"output whole": 0, "no output or the old one": 0, "hidden files": 0, "no recording": 0,
                       "recording whole": 0, "recording cut": 0}
        self.command = ["collect", "--schema", folder.schema(50, 8), "--sp",
                        "sim:" + folder.write("server.toml", SERVER), "--format", "json", BRIDGE]
        self.duration = min(self.run_whole() for _ in range(3))
        self.clean = self.read("clean.json")["instances"]
        self.kept = set(path.name for path in folder.path.iterdir())

    def run_whole(self):
        start = time.monotonic()
        self.folder.run(*self.command, "-o", "clean.json", "--record", "clean.jsonl", TZ="UTC0")
        return time.monotonic() - start

    def read(self, name):
        return json.loads((self.folder.path / name).read_text())

    def kill_one(self, replaces):
        for name in ("out.json", "run.jsonl"):
            (self.folder.path / name).unlink(missing_ok=True)
        if replaces:
            self.folder.write("out.json", OLD)
        process = subprocess.Popen([VELHOST, *self.command, "-o", "out.json", "--record", "run.jsonl"],
                                   cwd=self.folder.path, env={"TZ": "UTC0"})
        time.sleep(self.random.uniform(0, 1.1 * self.duration))
        process.kill()
        status = process.wait()
        self.tally.expect(status in (0, -signal.SIGKILL), f"exit status {status}")
        self.check_output(replaces)
        self.check_recording()

    def check_output(self, replaces):
        output = self.folder.path / "out.json"
        text = output.read_text() if output.exists() else None
        if text == (OLD if replaces else None):
            self.counts["no output or the old one"] += 1
        else:
            self.counts["output whole"] += 1
            self.tally.expect(self.is_whole(text), "the output is torn")
        for name in set(path.name for path in self.folder.path.iterdir()) - self.kept - {"out.json", "run.jsonl"}:
            # Between the naming of a finished file and its renaming over an old one.
            self.counts["hidden files"] += 1
            path = self.folder.path / name
            self.tally.expect(replaces and self.is_whole(path.read_text()), f"{name} was left behind")
            path.unlink()

    def is_whole(self, text):
        try:
            return json.loads(text)["instances"] == self.clean
        except ValueError:
            return False

    def check_recording(self):
        if not (self.folder.path / "run.jsonl").exists():
            self.counts["no recording"] += 1
            return
        arguments = [a if not a.startswith("sim:") else "replay:run.jsonl" for a in self.command]
        if not (self.folder.path / "run.jsonl").read_text().endswith("\n"):
            arguments += ["--machine-type", "6203"]  # the first line may be cut, and the type with it
        done = self.folder.run(*arguments, TZ="UTC0")
        self.tally.expect(done.returncode == 0, f"a replay ends with {done.returncode}: {done.stderr.decode()}")
        if done.returncode != 0:
            return
        instances = json.loads(done.stdout)["instances"]
        whole = instances == self.clean
        self.counts["recording whole" if whole else "recording cut"] += 1
        for number, instance in enumerate(instances):
            expected = self.clean[number]["properties"]
            self.tally.expect(instance["properties"].items() <= expected.items(),
                              f"a replay made up something in instance {number}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kills", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    with Folder() as folder:
        killing = Killing(folder, arguments.seed)
        for number in range(arguments.kills):
            killing.kill_one(replaces=number % 2 == 1)
        print(f"{arguments.kills} kills within {1.1 * killing.duration:.2f} s, seed {arguments.seed}: " +
              ", ".join(f"{count} {name}" for name, count in killing.counts.items()))
        killing.tally.end()


if __name__ == "__main__":
    main()

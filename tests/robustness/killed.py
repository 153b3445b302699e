"""Kills velhost at random moments while it records and writes its output, and inspects what is left: the output and
each capture file must be complete or absent, there must be no other files, and the recording must replay all
registers that it contains. Half of the kills wait until almost everything has been recorded, so that they hit the
writing of the output."""

import argparse
import json
import random
import shutil
import signal
import statistics
import subprocess
import time

from support import BRIDGE, Folder, Tally, VELHOST

# Output is written in pieces of at most 64 KiB; jsonl is written line by line.
REGISTERS, INSTANCES, CAPTURED = 60, 30, 20_000
SERVER = f"""
machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "00 00 00 01"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "{"ab " * CAPTURED}"
[[bmc_node.storage_area]]
name = "ioh_err"
data = "01 02"
[[bmc_node.storage_area]]
name = "zyn_err"
data = "03"
"""
OLD = "the file of an earlier run\n"
OUTPUTS = ("out", "run.jsonl", "captures")
# Request and completion code of a successful register read.
READ, SUCCESS = "01 20 3a 00 62 ", "01 20 3a 00 00 "
ENOUGH_FOR_ALL_KINDS = 100  # with this many kills, each kind of outcome occurs


def instances_of(form, text):
    """The instances without the collection time of capture files and, in jsonl, the run's identity; None if the text is
    incomplete."""
    try:
        if form == "json":
            instances = json.loads(text)["instances"]
        else:
            *instances, summary = [json.loads(line) for line in text.splitlines()]
            if summary["kind"] != "summary":
                return None
    except ValueError:
        return None
    for instance in instances:
        instance["properties"].pop("MessageTimestamp", None)
        instance.pop("run_id", None)
        instance.pop("labels", None)
    return instances


class Killing:
    def __init__(self, folder, seed):
        self.folder = folder
        self.random = random.Random(seed)
        self.tally = Tally()
        self.counts = dict.fromkeys(("ended before", "output whole", "no output or the old one", "capture files",
                                     "hidden files", "no recording", "recording whole", "recording cut"), 0)
        self.command = ["collect", "--schema", folder.schema(REGISTERS, INSTANCES), "--sp",
                        "sim:" + folder.write("server.toml", SERVER), BRIDGE, "KROSG_DCAPFile"]
        self.run_whole()
        self.recorded = len(self.read("clean.jsonl"))
        durations = [self.measure() for _ in range(5)]
        self.until_recorded, self.rest = (statistics.median(each) for each in zip(*durations))
        self.clean = instances_of("json", self.read("clean.json"))
        self.captures = {path.name: path.read_bytes() for path in (folder.path / "clean").iterdir()}
        self.kept = set(path.name for path in folder.path.iterdir())

    def run_whole(self):
        self.folder.run(*self.command, "--format", "json", "-o", "clean.json", "--record", "clean.jsonl",
                        "--capture-dir", "clean", TZ="UTC0")

    def read(self, name):
        return (self.folder.path / name).read_text()

    def start(self, form):
        arguments = [*self.command, "--format", form, "-o", "out", "--record", "run.jsonl", "--capture-dir", "captures"]
        return subprocess.Popen([VELHOST, *arguments], cwd=self.folder.path, env={"TZ": "UTC0"})

    def measure(self):
        """Seconds until almost everything is recorded, and from then to the end."""
        self.clear()
        start = time.monotonic()
        with self.start("json") as process:
            self.wait_until_recorded(process)
            recorded = time.monotonic()
            process.wait()
            return recorded - start, time.monotonic() - recorded

    def clear(self):
        for name in ("out", "run.jsonl"):
            (self.folder.path / name).unlink(missing_ok=True)
        shutil.rmtree(self.folder.path / "captures", ignore_errors=True)

    def wait_until_recorded(self, process):
        recording = self.folder.path / "run.jsonl"
        while process.poll() is None:
            if recording.exists() and recording.stat().st_size > 0.98 * self.recorded:
                return
            time.sleep(0.0002)

    def wait(self, process, is_late):
        if is_late:
            self.wait_until_recorded(process)
        time.sleep(self.random.uniform(0, self.rest if is_late else self.until_recorded))

    def kill_one(self, form, replaces, is_late):
        self.clear()
        if replaces:
            self.folder.write("out", OLD)
        with self.start(form) as process:
            self.wait(process, is_late)
            process.kill()
            status = process.wait()
        self.counts["ended before"] += status == 0
        self.tally.expect(status in (0, -signal.SIGKILL), f"exit status {status}")
        self.check_output(form, replaces)
        self.check_capture()
        self.check_recording()

    def check_output(self, form, replaces):
        output = self.folder.path / "out"
        text = output.read_text() if output.exists() else None
        if text == (OLD if replaces else None):
            self.counts["no output or the old one"] += 1
        else:
            self.counts["output whole"] += 1
            self.tally.expect(text is not None and instances_of(form, text) == self.clean, "the output is torn")
        for name in set(path.name for path in self.folder.path.iterdir()) - self.kept - set(OUTPUTS):
            # Killed between naming the finished file and renaming it over the old one.
            self.counts["hidden files"] += 1
            path = self.folder.path / name
            is_whole = instances_of(form, path.read_text()) == self.clean
            self.tally.expect(replaces and is_whole, f"{name} was left behind")
            path.unlink()

    def check_capture(self):
        folder = self.folder.path / "captures"
        for path in folder.iterdir() if folder.exists() else []:
            self.counts["capture files"] += 1
            self.tally.expect(path.read_bytes() == self.captures.get(path.name), f"{path.name} is torn")

    def check_recording(self):
        if not (self.folder.path / "run.jsonl").exists():
            self.counts["no recording"] += 1
            return
        arguments = [a if not a.startswith("sim:") else "replay:run.jsonl" for a in self.command]
        *lines, rest = self.read("run.jsonl").split("\n")
        if not lines:
            arguments += ["--machine-type", "6203"]  # the first line, which has the machine type, is truncated
        done = self.folder.run(*arguments, "--format", "json", TZ="UTC0")
        self.tally.expect(done.returncode in (0, 3), f"a replay ends with {done.returncode}: {done.stderr.decode()}")
        if done.returncode not in (0, 3):
            return
        instances = instances_of("json", done.stdout)
        self.counts["recording whole" if instances == self.clean else "recording cut"] += 1
        exchanges = [json.loads(line) for line in lines[1:]]
        answered = sum(exchange.get("request", "").startswith(READ) and
                       exchange.get("response", "").startswith(SUCCESS) for exchange in exchanges)
        found = sum(name.startswith("Register") for instance in instances for name in instance["properties"])
        self.tally.expect(found == answered, f"{answered} registers are recorded, {found} replayed, before {rest!r}")
        for number, instance in enumerate(instances):
            self.tally.expect(self.is_part(instance["properties"], self.clean[number]["properties"]),
                              f"a replay made up something in instance {number}")

    @staticmethod
    def is_part(properties, expected):
        """For a capture file, its beginning is enough."""
        data = "ErrRawData"
        if data in properties and expected[data].startswith(properties[data]):
            properties = {**properties, data: expected[data]}
        return properties.items() <= expected.items()

    def count_tried(self):
        """The number of kills tried: each has one of three kinds of recording and one of two kinds of output."""
        recordings = sum(self.counts[kind] for kind in ("no recording", "recording whole", "recording cut"))
        outputs = self.counts["output whole"] + self.counts["no output or the old one"]
        self.tally.expect(recordings == outputs, f"{recordings} recordings, but {outputs} outputs")
        return outputs

    def expect_all_kinds(self):
        for kind in ("output whole", "no output or the old one", "capture files", "recording whole", "recording cut"):
            self.tally.expect(self.counts[kind] > 0, f"no run with {kind}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--kills", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    with Folder() as folder:
        killing = Killing(folder, arguments.seed)
        for number in range(arguments.kills):
            killing.kill_one(("json", "jsonl")[number % 2], replaces=number // 2 % 2 == 1, is_late=number // 4 % 2 == 1)
        tried = killing.count_tried()
        print(f"{tried} kills, {killing.until_recorded * 1000:.0f} ms of recording and "
              f"{killing.rest * 1000:.0f} ms after it, seed {arguments.seed}: " +
              ", ".join(f"{count} {name}" for name, count in killing.counts.items()))
        killing.tally.expect(tried == arguments.kills, "not every kill was tried")
        killing.tally.expect(killing.counts["ended before"] < arguments.kills, "no run was killed")
        if arguments.kills >= ENOUGH_FOR_ALL_KINDS:
            killing.expect_all_kinds()
        killing.tally.end()


if __name__ == "__main__":
    main()

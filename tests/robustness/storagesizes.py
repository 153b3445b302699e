"""Storage areas that report a wrong size: what a collection of them delivers, and its time and peak memory.

    storagesizes.py [--whole]

With --whole the largest permitted size is read completely, otherwise until a deadline.
"""

import json
import os
import re
import signal
import subprocess
import sys
import time

from support import Folder, Tally, VELHOST

PEAKMEMORY = os.path.abspath(os.environ["PEAKMEMORY"])
WHOLE = "--whole" in sys.argv
LARGEST = 33554432  # the largest permitted size
REST = 8388608  # what else may be read in the same request
DEADLINE = 2  # seconds for the largest size without --whole; the other sizes are read completely
LONGEST = 600 if WHOLE else 60  # seconds until a collection that does not end is killed
DATA = "ab " * 30
AREA = """
[[bmc_node.storage_area]]
name = "@NAME@"
data = "@DATA@"
size = @SIZE@
"""
# Resident memory that a collection may use beyond one with a true size, in KiB per KiB read: for the bytes
# and their text (three characters each), in the instance and on its way to the trace and the output.
PER_KIB_READ = 24
ALLOWANCE = 8192
MOST = 512 * 1024  # KiB that any collection may take


def server(sizes):
    areas = (AREA.replace("@NAME@", name).replace("@DATA@", DATA).replace("@SIZE@", str(size))
             for name, size in zip(("cpu_err", "ioh_err", "zyn_err"), sizes))
    return 'machine_type = "6203"\n[[bmc_node]]' + "".join(areas)


def collect(folder, sp, *arguments):
    """Exit status, document, messages, seconds and peak resident memory in KiB of one collection."""
    start = time.monotonic()
    with subprocess.Popen(
            [PEAKMEMORY, "peak", VELHOST, "collect", "--schema", folder.schema(1, 1), "--sp", sp, "--format", "json",
             "-o", "out.json", *arguments, "KROSG_DCAPFile"],
            cwd=folder.path, start_new_session=True, stderr=subprocess.PIPE, text=True) as process:
        try:
            _, messages = process.communicate(timeout=LONGEST)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            sys.exit(f"FAILED: {sp}: no end {LONGEST} s after the start")
    seconds = time.monotonic() - start
    # An area that holds less than it reports makes millions of short reads, each of which is listed.
    document = json.loads(re.sub(rb'"failed":\[[^\]]*\]', b'"failed":[]', (folder.path / "out.json").read_bytes()))
    return process.returncode, document, messages, seconds, int((folder.path / "peak").read_text())


def missing(count):
    return f"{count} of 3 capture files {'is' if count == 1 else 'are'} missing or incomplete"


class Sizes:
    def __init__(self, folder, tally):
        self.folder = folder
        self.tally = tally
        self.measure([30])
        self.usual = self.measure([30])[-1]

    def measure(self, sizes):
        self.folder.write("server.toml", server(sizes))
        hurry = [] if WHOLE or max(sizes) < LARGEST else ["--timeout", str(DEADLINE)]
        return collect(self.folder, "sim:server.toml", *hurry)

    def check(self, sizes, read, missing=""):
        """`read` has the number of bytes of each file, or None if it cannot be predicted. `missing` is what the result
        says of the files, unless it is complete."""
        exit_status, document, messages, seconds, peak = self.measure(sizes)
        name = " + ".join(map(str, sizes))
        files = [i["properties"]["ErrRawData"] for i in document["instances"]]
        counts = [len(file) // 3 for file in files]
        print(f"{name:19}  {exit_status:4}  {len(files):9}  {sum(counts):10}  {seconds:7.2f}  {peak:8}", flush=True)
        self.tally.expect(exit_status == (3 if missing else 0), f"size {name}: exit status {exit_status}")
        self.tally.expect(len(files) == len(read), f"size {name}: {len(files)} instances")
        self.tally.expect(all(r in (None, c) for r, c in zip(read, counts)), f"size {name}: {counts} bytes")
        self.tally.expect(peak <= min(self.usual + ALLOWANCE + PER_KIB_READ * sum(counts) // 1024, MOST),
                          f"size {name}: {peak} KiB")
        said = [reason["message"] for reason in document["reasons"] if reason["code"] != "stopped"]
        self.tally.expect(said == ([missing] if missing else []), f"size {name}: {said}")
        self.tally.expect(not missing or f"KROSG_DCAPFile: {missing}\n" in messages, f"size {name}: {messages}")
        return files, document, seconds

    def check_largest(self):
        sizes = [LARGEST, REST] if WHOLE else [LARGEST]
        read = sizes if WHOLE else [None]
        files, document, seconds = self.check(sizes, read, missing(len(sizes) if WHOLE else 3))
        self.tally.expect(all(f.startswith(DATA) and len(f) % 30 in (0, 6, 24) for f in files), "what was read is lost")
        if document["reasons"][0]["code"] == "stopped":
            self.tally.expect(seconds >= DEADLINE, "gave up before the deadline")

    def check_replay(self):
        """The recording contains the reported size, and a replay refuses it as well."""
        self.folder.write("server.toml", server([2147483647]))
        status, live, _, _, _ = collect(self.folder, "sim:server.toml", "--record", "run.jsonl")
        recording = (self.folder.path / "run.jsonl").read_text()
        self.tally.expect("39 30 00 ff ff ff 7f" in recording, "the size is not recorded")
        again, replayed, _, _, _ = collect(self.folder, "replay:run.jsonl")
        for document in (live, replayed):
            del document["run"], document["source"]
        self.tally.expect((status, live) == (again, replayed), "the replay is another")


def main():
    tally = Tally()
    print("size reported        exit  instances  bytes read  seconds  peak KiB")
    with Folder() as folder:
        sizes = Sizes(folder, tally)
        # No file if the buffer is impossible; sizes below ten are read as ten.
        for size, read in ((30, [30]), (0, [10]), (9, [10])):
            sizes.check([size], read)
        for size in (-2147483648, -1):
            sizes.check([size], [], missing(1))
        for size in (LARGEST + 1, 2147483647):
            sizes.check([size], [], missing(1) + f"; node 0, storage area cpu_err reports {size} bytes, over the limit of "
                        "32 MiB: not read")
        sizes.check_largest()
        if WHOLE:
            sizes.check([REST, LARGEST, 1], [REST, LARGEST],
                        missing(3) + "; node 0, storage area zyn_err reports 1 bytes, which with those before it exceeds "
                        "the limit of 40 MiB for one request: not read")
        sizes.check_replay()
    tally.end()


if __name__ == "__main__":
    main()

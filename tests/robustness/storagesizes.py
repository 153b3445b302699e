"""Storage areas that lie about their size: what a collection of them delivers, and its time and peak memory."""

import json
import os
import signal
import subprocess
import sys
import time

from support import Folder, Tally, VELHOST

PEAKMEMORY = os.path.abspath(os.environ["PEAKMEMORY"])
ENDLESS = 2147483647  # the size that is read until the deadline
DEADLINE = 2  # seconds that a collection of it gets; the others come to their end
LONGEST = 60  # seconds after which a collection that does not end is given up, however busy the machine
DATA = "ab " * 30
SERVER = """
machine_type = "6203"
[[bmc_node]]
[[bmc_node.storage_area]]
name = "cpu_err"
data = "@DATA@"
size = @SIZE@
"""
# Resident memory that a collection may take above one whose size is true, in KiB for each KiB read: the
# bytes, their text (three characters for each) in the instance and on its way to the trace and the output.
PER_KIB_READ = 24
ALLOWANCE = 8192


def collect(folder, size):
    """The document, the seconds and the peak resident memory in KiB of one collection."""
    folder.write("server.toml", SERVER.replace("@DATA@", DATA).replace("@SIZE@", str(size)))
    timeout = DEADLINE if size == ENDLESS else LONGEST
    start = time.monotonic()
    with subprocess.Popen(
            [PEAKMEMORY, "peak", VELHOST, "collect", "--schema", folder.schema(1, 1), "--sp", "sim:server.toml",
             "--format", "json", "-o", "out.json", "--timeout", str(timeout), "KROSG_DCAPFile"],
            cwd=folder.path, start_new_session=True) as process:
        try:
            status = process.wait(LONGEST)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            sys.exit(f"FAILED: size {size}: no end {LONGEST} s after the start")
    seconds = time.monotonic() - start
    document = json.loads((folder.path / "out.json").read_text())
    return status, document, seconds, int((folder.path / "peak").read_text())


def main():
    tally = Tally()
    print("size reported  exit  instances  bytes read  seconds  peak KiB")
    with Folder() as folder:
        collect(folder, 30)
        _, _, _, usual = collect(folder, 30)
        # Bytes of the capture file: none where there cannot be a buffer; less than ten are read as ten; all
        # that comes until the deadline for the largest.
        for size, status, read in ((30, 0, 30), (-2147483648, 0, None), (-1, 0, None), (0, 0, 10), (9, 0, 10),
                                   (ENDLESS, 3, ...)):
            exit_status, document, seconds, peak = collect(folder, size)
            files = [i["properties"]["ErrRawData"] for i in document["instances"]]
            count = len(files[0]) // 3 if files else 0
            print(f"{size:13}  {exit_status:4}  {len(files):9}  {count:10}  {seconds:7.2f}  {peak:8}")
            tally.expect(exit_status == status, f"size {size}: exit status {exit_status}")
            tally.expect(len(files) == (0 if read is None else 1), f"size {size}: {len(files)} instances")
            tally.expect(read is ... or count == (read or 0), f"size {size}: {count} bytes")
            tally.expect(peak <= usual + ALLOWANCE + PER_KIB_READ * count // 1024, f"size {size}: {peak} KiB")
            if read is ...:
                tally.expect(seconds >= DEADLINE, f"size {size}: gave up before the deadline")
                tally.expect(files[0].startswith(DATA) and count % 10 == 0, "what was read before the deadline is lost")
                tally.expect(document["instances"][0].get("incomplete") is True, "the file passes for complete")
    tally.end()


if __name__ == "__main__":
    main()

"""Refuses memory to the whole program, once or from some moment on. It must exit with one of its own statuses and a
message, never by a signal, and its output must be complete: only instances that a clean run has too, and all of them
except those of requests that are reported as failed."""

import argparse
import collections
import json
import os
import random

from support import Folder, SOURCE, Tally

REFUSING = os.path.abspath(os.environ["REFUSING"])
# A server without faults: faults count exchanges, so an early failure of a request would shift them.
SERVER = SOURCE / "servers" / "labelled.toml"
COLLECT = ["collect", "--sp", f"sim:{SERVER}", "--format", "json", "-o", "out.json", "--record", "run.jsonl",
           "--log", "trace"]
COMPLETE, PARTIAL, INTERNAL = 0, 3, 70


def contents(instances):
    """How often each instance occurs, ignoring its number and incompleteness, which depend on other failures."""
    return collections.Counter(
        (one["class"], json.dumps({**one["properties"], "RecordID": None}, sort_keys=True)) for one in instances)


class Refusing:
    def __init__(self, folder):
        self.folder = folder
        self.tally = Tally()
        self.statuses = collections.Counter()
        self.collect(REFUSE_COUNT=str(folder.path / "count"))
        self.allocations = int((folder.path / "count").read_text())
        self.clean = self.output()["instances"]

    def output(self):
        path = self.folder.path / "out.json"
        return json.loads(path.read_text()) if path.exists() else None

    def collect(self, **variables):
        (self.folder.path / "out.json").unlink(missing_ok=True)
        return self.folder.run(*COLLECT, LD_PRELOAD=REFUSING, TZ="UTC0", **variables)

    def refuse(self, nth, onward):
        where = f"allocation {nth}{' and all after it' if onward else ''}"
        done = self.collect(REFUSE_NTH=str(nth), REFUSE_ONWARD="1" if onward else "0")
        self.statuses[done.returncode] += 1
        self.tally.expect(done.returncode in (COMPLETE, PARTIAL, INTERNAL),
                          f"{where}: ends with {done.returncode}: {done.stderr.decode()[-300:]}")
        self.tally.expect(done.returncode in (COMPLETE, PARTIAL) or b"velhost:" in done.stderr, f"{where}: no message")
        output = self.output()
        if output is None:
            self.tally.expect(done.returncode == INTERNAL, f"{where}: no output, but {done.returncode}")
            return
        if done.returncode in (COMPLETE, PARTIAL):
            self.expect_all_but_failed(output, where)
        if done.returncode == PARTIAL:
            self.tally.expect(output["status"] == "partial" and output["reasons"],
                              f"{where}: nothing says what failed")
        known = contents(self.clean)
        for content, count in contents(output["instances"]).items():
            self.tally.expect(count <= known[content], f"{where}: an instance is not that of a clean run")

    def expect_all_but_failed(self, output, where):
        """Only requests that are reported as failed may lack instances."""
        failed = {reason.get("class") for reason in output["reasons"]}
        found = contents(output["instances"])
        for content, count in contents(one for one in self.clean if one["class"] not in failed).items():
            self.tally.expect(found[content] == count, f"{where}: an instance is missing")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--samples", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    chance = random.Random(arguments.seed)
    with Folder() as folder:
        refusing = Refusing(folder)
        for number in range(arguments.samples):
            refusing.refuse(chance.randrange(refusing.allocations), onward=number % 2 == 1)
        print(f"{refusing.allocations} allocations, {refusing.statuses.total()} runs, seed {arguments.seed}: " +
              ", ".join(f"{count} with status {status}" for status, count in sorted(refusing.statuses.items())))
        for status in (PARTIAL, INTERNAL):
            refusing.tally.expect(refusing.statuses[status] > 0, f"no run ended with {status}: was any memory refused?")
        refusing.tally.end()


if __name__ == "__main__":
    main()

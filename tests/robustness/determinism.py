"""Collects one recording or server again and again: a thousand times with one build, with builds of other compilers
and optimisation levels, in ten time zones, and under a locale that formats numbers differently. The output must be
identical to the byte, except for the run's identifier and times, and for the documented time-zone offset of R8
instances."""

import argparse
import os
import pathlib
import re
import subprocess

from support import Folder, SOURCE, Tally, VELHOST

# Each zone with its offset from UTC in minutes, without daylight saving time: StatisticTime of an R8 instance
# ends in this number in any season.
ZONES = {"UTC0": 0, "CET-1CEST,M3.5.0,M10.5.0/3": 60, "EST5EDT,M3.2.0,M11.1.0": -300, "IST-5:30": 330,
         "<+0545>-5:45": 345, "ACST-9:30ACDT,M10.1.0,M4.1.0/3": 570, "<+14>-14": 840, "SST11": -660,
         "NST3:30NDT,M3.2.0,M11.1.0": -210, "JST-9": 540}
TIME = re.compile(rb'(StatisticTime = "\d{14}\.\d{6})([+-]\d{3})')
# What differs from run to run: its identifier and times.
RUN = re.compile(rb"^// (elapsed: |Instances collected by velhost ).*$", re.MULTILINE)
# The R8 instances of the shipped server, whose BMC time starts in 1970; register blocks are always in UTC.
R8_TIME = b'StatisticTime = "1970'
R8_INSTANCES = 7
# The machine family whose registers are raw values; the shipped server has labelled ones.
RAW_VALUES = SOURCE / "servers" / "eight-byte.toml"
BLOCK_INSTANCES = 12
LOCALE = "de_DE"
SOURCES = "/usr/share/i18n/locales"


class Determinism:
    def __init__(self, folder):
        self.folder = folder
        self.tally = Tally()
        self.collect("--sp", "sim", "--record", "run.jsonl")
        self.collect("--sp", f"sim:{RAW_VALUES}", "--record", "raw.jsonl")
        self.expected = self.replay()
        self.raw = self.replay(recording="raw.jsonl")

    def collect(self, *arguments, velhost=VELHOST, **variables):
        """Instances and trace of a collection from the shipped server or a recording."""
        done = self.folder.run("collect", "--format", "mof", "--log", "trace", *arguments, velhost=velhost, **variables)
        self.tally.expect(done.returncode == 0, f"{arguments} ends with {done.returncode}: {done.stderr.decode()}")
        return RUN.sub(b"", done.stdout), (self.folder.path / "trace").read_bytes()

    def replay(self, velhost=VELHOST, recording="run.jsonl", **variables):
        return self.collect("--sp", f"replay:{recording}", velhost=velhost, **variables)

    def replays(self, count):
        for (output, _), instances in ((self.expected, 25), (self.raw, 6)):
            self.tally.expect(output.count(b"instance of") == instances, "a shipped server has other instances")
        replayed = 0
        for number in range(count):
            self.tally.expect(self.replay() == self.expected, f"replay {number} differs")
            replayed += 1
        print(f"replays of one recording: {replayed}")

    def builds(self, others):
        compared = 0
        for velhost in others:
            self.tally.expect(self.replay(velhost=velhost) == self.expected, f"{velhost} differs")
            raw = self.replay(velhost=velhost, recording="raw.jsonl")
            self.tally.expect(raw == self.raw, f"{velhost} differs in raw values")
            compared += 1
        print(f"other builds: {compared}")

    def zones(self):
        """A replay keeps the recording's zone; in a live collection, the process's zone changes only the offset."""
        expected, _ = self.collect("--sp", "sim", TZ="UTC0")
        compared = 0
        for zone, minutes in ZONES.items():
            self.tally.expect(self.replay(TZ=zone) == self.expected, f"a replay in {zone} differs")
            found, _ = self.collect("--sp", "sim", TZ=zone)
            self.tally.expect(TIME.sub(rb"\1", found) == TIME.sub(rb"\1", expected), f"{zone}: more than the offset")
            offsets = {True: [], False: []}
            for before, offset in TIME.findall(found):
                offsets[before.startswith(R8_TIME)].append(offset)
            self.tally.expect(offsets[True] == [b"%+04d" % minutes] * R8_INSTANCES, f"{zone}: R8 {offsets[True]}")
            self.tally.expect(offsets[False] == [b"+000"] * BLOCK_INSTANCES, f"{zone}: blocks {offsets[False]}")
            compared += 1
        print(f"time zones: {compared}")

    def locale(self, underlocale, needed):
        """The locale of the C and C++ libraries, in a process with the collector and the output formats."""
        if not pathlib.Path(SOURCES, LOCALE).exists():
            print("locale: left out, since the package locales is not installed")
            self.tally.expect(not needed, "the locale was not tried")
            return
        folder = self.folder.path / "locales"
        folder.mkdir()
        subprocess.run(["localedef", "-i", LOCALE, "-f", "UTF-8", folder / f"{LOCALE}.UTF-8"], check=True)
        # The C library keeps a copy of LOCPATH, which a leak checker would report.
        environment = dict(os.environ, LOCPATH=str(folder), ASAN_OPTIONS="detect_leaks=0")
        outputs = {}
        for name in ("C", f"{LOCALE}.UTF-8"):
            done = subprocess.run([underlocale, name], capture_output=True, check=False, env=environment)
            self.tally.expect(done.returncode == 0, done.stderr.decode())
            outputs[name] = done.stdout
            written = done.stderr.decode().strip()
        self.tally.expect(written.endswith("4.096 0,5"), f"the locale proves nothing: {written}")
        self.tally.expect(len(set(outputs.values())) == 1, "the locale changes the output")
        print(f"locale: {written}; {len(outputs['C'])} bytes of trace and five output formats")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--replays", type=int, default=1000)
    parser.add_argument("--other", action="append", type=pathlib.Path, default=[], help="velhost of another build")
    parser.add_argument("--underlocale", type=pathlib.Path, help="without it the locale is left out")
    parser.add_argument("--need-locale", action="store_true", help="fail where the locale cannot be made")
    arguments = parser.parse_args()
    with Folder() as folder:
        determinism = Determinism(folder)
        determinism.replays(arguments.replays)
        determinism.builds([other.resolve() for other in arguments.other])
        determinism.zones()
        if arguments.underlocale:
            determinism.locale(arguments.underlocale.resolve(), arguments.need_locale)
        determinism.tally.end()


if __name__ == "__main__":
    main()

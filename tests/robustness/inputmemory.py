"""The largest inputs that are accepted, and larger ones: memory use is bounded by the limits, not by the input."""

import os
import re
import subprocess

from support import BRIDGE, Folder, Tally, VELHOST

PEAKMEMORY = os.path.abspath(os.environ["PEAKMEMORY"])
MOST = 512 * 1024  # KiB that any input may take
FEW = 32 * 1024  # KiB for an input that is never in memory as a whole
LARGEST_FILE = 64 << 20  # limit for server files
VALUE = 'value="0102030405060708"'
TYPE = 'machine_type="6203"\n'
PATTERN = TYPE + 'unlisted_registers="pattern"\n[[bmc_node]]\n'
HEAD = ('{"format":"velhost-recording","version":1,"machine_type":"6203","started":"","utc_offset_minutes":0,"discovery":'
        '{"bmc_nodes":1,"ipmi_driver":true,"dot_command":false,"sp_comm":false,"service_processors":0}}\n')


def many_registers(count):
    return "[[bmc_node]]\nregister=[" + "".join(f"{{address={i},{VALUE}}}," for i in range(count)) + "]\n"


def registers_and_data():
    """As many values as a file may have, and a string that fills the rest of it."""
    start = TYPE + many_registers(333_000) + '[[bmc_node.storage_area]]\nname="x"\ndata="'
    return start + "ab" * ((LARGEST_FILE - len(start) - 2) // 2) + '"\n'


def many_faults():
    return TYPE + "fault=[" + "".join(f'{{on="ipmi",nth={i + 1},delay_ms=0}},' for i in range(249_000)) + "]\n"


def data_files(folder):
    """Two sparse files of 224 MiB, which occupy no disk space."""
    areas = ""
    for name in ("a", "b"):
        with open(folder.path / name, "wb") as file:
            file.truncate(224 << 20)
        areas += f'[[bmc_node.storage_area]]\nname="{name}"\ndata_file="{name}"\n'
    return TYPE + "[[bmc_node]]\n" + areas


def many_properties(schema, classes):
    """The schema plus the given number of classes, with 4,000 properties each; a property is estimated at 700 bytes."""
    properties = "".join(f"uint8 P{i};" for i in range(4000))
    return schema + "".join(f"class Filler{i} {{{properties}}};\n" for i in range(classes))


def many_reads(folder, instances):
    """A class of 512 registers with names of 900 characters."""
    path = folder.schema(512, instances)
    with open(path, encoding="utf-8") as file:
        text = file.read()
    return re.sub(r"\b(Register\d+)\b", lambda match: match.group(1).ljust(900, "x"), text)


def many_handles(count):
    """A recording in which an area is opened again and again, under another handle each time."""
    request = '{"kind":"ipmi","node":0,"request":"01 20 2e 00 90 0d 00 00 00 39 30 00 01 01 00 00 00 00 00 00 00 61","ok":true,'
    return HEAD + "".join(f'{request}"response":"01 20 2e 00 00 07 00 00 00 39 30 00 {i % 256:02x} {i // 256 % 256:02x} '
                          f'{i // 65536:02x}","length":16,"us":0}}\n' for i in range(count))


def measure(folder, tally, name, sp, status, most, schema=None, wanted="KROSG_DCAPFile"):
    path = folder.schema(1, 1) if schema is None else folder.write("large.mof", schema)
    run = subprocess.run(
        [PEAKMEMORY, "peak", VELHOST, "collect", "--schema", path, "--sp", sp, "--format", "json", "-o", "out.json", wanted],
        cwd=folder.path, capture_output=True, text=True, timeout=280, check=False)
    peak = int((folder.path / "peak").read_text())
    print(f"{name:40}  {run.returncode:4}  {peak:8}", flush=True)
    tally.expect(run.returncode == status, f"{name}: exit status {run.returncode}, {run.stderr[:300]}")
    tally.expect(peak <= most, f"{name}: {peak} KiB")


def main():
    tally = Tally()
    print("input                                     exit  peak KiB")
    with Folder() as folder:
        for name, text, status, most in (
                ("server file: values and text", registers_and_data(), 0, MOST),
                ("server file: faults", many_faults(), 3, MOST),
                ("server file: nodes, too many", TYPE + "bmc_node=[" + "{}," * 900_000 + "]\n", 65, MOST),
                ("server file: values, too many", TYPE + "bmc_node=[" + "{}," * 20_000_000 + "]\n", 65, MOST),
                ("server file: data files", data_files(folder), 0, FEW)):
            folder.write("server.toml", text)
            measure(folder, tally, name, "sim:server.toml", status, most)
        folder.write("pattern.toml", PATTERN)
        with open(folder.schema(1, 1), encoding="utf-8") as file:
            schema = file.read()
        for classes, status in ((70, 0), (73, 65)):
            measure(folder, tally, f"schema: {4000 * classes} properties", "sim:pattern.toml", status, MOST,
                    many_properties(schema, classes))
        for instances, status in ((256, 0), (257, 65)):
            measure(folder, tally, f"schema: {512 * instances} register reads", "sim:pattern.toml", status, MOST,
                    many_reads(folder, instances), BRIDGE)
        clock = '{"kind":"clock","local_time":"2026-01-31T12:34:56+01:00"}\n'
        folder.write("lines.jsonl", HEAD + clock * 120_000)
        measure(folder, tally, "recording: lines", "replay:lines.jsonl", 65, FEW)
        measure(folder, tally, "image: lines", "image:lines.jsonl", 3, FEW)
        for count, status in ((100_000, 3), (100_001, 65)):
            folder.write("handles.jsonl", many_handles(count))
            measure(folder, tally, f"image: {count} handles", "image:handles.jsonl", status, 2 * FEW)
        folder.write("line.jsonl", HEAD + '{"kind":"clock","local_time":"' + "x" * 4_194_000 + '"}\n')
        measure(folder, tally, "recording: a long line", "replay:line.jsonl", 65, 2 * FEW)
        folder.write("values.jsonl", HEAD + "[" + "{}," * 1_398_000 + "{}]\n")
        measure(folder, tally, "recording: values, too many", "replay:values.jsonl", 65, FEW)
    tally.end()


if __name__ == "__main__":
    main()

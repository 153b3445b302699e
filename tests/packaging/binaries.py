#!/usr/bin/env python3
"""Examines programs and libraries as the loader would, and reports what makes them easier to attack.

    binaries.py [--hardened] [--fortified] [--moved] FILE_OR_FOLDER...

Run paths are always checked: an empty or relative entry loads code from the current directory. --hardened also checks
the protections of linker and compiler; --fortified, that some calls into the C library are checked variants, which
takes an optimised build; --moved, that run paths are relative to the file itself, as required of installed files.
"""

import argparse
import os
import re
import struct
import subprocess
import sys

ENDBR64 = b"\xf3\x0f\x1e\xfa"  # a valid target of an indirect branch
X86_64 = 62
SEGMENT = re.compile(r"^  ([A-Z_]\w+)\s+(0x\w+) (0x\w+) 0x\w+ (0x\w+) 0x\w+ (.{3})", re.MULTILINE)
DYNAMIC = re.compile(r"^ 0x\w+ \((\w+)\)\s+(.*)$", re.MULTILINE)
SYMBOL = re.compile(r"^ +\d+: (\w+)\s+\w+ (\w+) +(\w+) +(\w+) +(\w+) (\S+)", re.MULTILINE)
FORTIFIED = re.compile(r"__(?!stack_chk)\w+_chk")


def is_elf(path):
    with open(path, "rb") as stream:
        return stream.read(4) == b"\x7fELF"


class Binary:
    """What readelf reports about one program or library."""

    def __init__(self, path):
        self.path = path
        text = subprocess.run(["readelf", "-W", "-l", "-d", "--dyn-syms", path], check=True, text=True,
                              stdout=subprocess.PIPE).stdout
        self.dynamic = DYNAMIC.findall(text)
        self.segments = {}
        for kind, *place, flags in SEGMENT.findall(text):
            self.segments.setdefault(kind, []).append(([int(number, 16) for number in place], flags))
        self.symbols = SYMBOL.findall(text)

    def tags(self, name):
        return [value for tag, value in self.dynamic if tag == name]

    def bracketed(self, *names):
        """The text in brackets of these tags: library names or run paths."""
        return [re.search(r"\[(.*)\]$", value).group(1) for name in names for value in self.tags(name)]

    def is_program(self):
        return "INTERP" in self.segments

    def undefined(self):
        return {name.split("@")[0] for _, _, _, _, section, name in self.symbols if section == "UND"}

    def exported_functions(self):
        """(name, address)"""
        return [(name, int(value, 16)) for value, kind, _, _, section, name in self.symbols
                if section != "UND" and kind == "FUNC"]

    def bytes_at(self, stream, address, size):
        for (offset, start, length), _ in self.segments["LOAD"]:
            if start <= address < start + length:
                stream.seek(offset + address - start)
                return stream.read(size)
        return b""


def run_path_findings(binary, moved):
    for path in binary.bracketed("RPATH", "RUNPATH"):
        for entry in path.split(":"):
            if not entry:
                yield "an empty entry in the run path [%s]" % path
            elif not entry.startswith(("/", "$ORIGIN/")) and entry != "$ORIGIN":
                yield "a relative entry in the run path [%s]" % path
            elif moved and entry.startswith("/"):
                yield "an absolute entry in the run path [%s]" % path


def linker_findings(binary):
    flags = " ".join(binary.tags("FLAGS") + binary.tags("FLAGS_1"))
    if "NOW" not in flags:
        yield "functions are bound at their first call"
    if "GNU_RELRO" not in binary.segments:
        yield "relocated data stays writable"
    if any("E" in flags for _, flags in binary.segments.get("GNU_STACK", [((), "RWE")])):
        yield "an executable stack"
    if binary.is_program() and "PIE" not in flags:
        yield "a program at a fixed address"


def compiler_findings(binary):
    if "__stack_chk_fail" not in binary.undefined():
        yield "no stack protector"
    with open(binary.path, "rb") as stream:
        if struct.unpack("<H", stream.read(20)[18:])[0] != X86_64:
            return
        open_to_jumps = [name for name, address in binary.exported_functions()
                         if binary.bytes_at(stream, address, 4) != ENDBR64]
    if open_to_jumps:
        yield "%d exported functions without endbr64: %s" % (len(open_to_jumps), open_to_jumps[0])


def fortify_findings(binaries):
    """A small program may have no call to check, so this looks at all of them together."""
    if not any(FORTIFIED.fullmatch(name) for binary in binaries for name in binary.undefined()):
        yield "no call into the C library is a checked one"


def findings(paths, hardened=False, fortified=False, moved=False):
    binaries = [Binary(path) for path in paths]
    found = []
    for binary in binaries:
        texts = list(run_path_findings(binary, moved))
        if hardened:
            texts += [*linker_findings(binary), *compiler_findings(binary)]
        found += ["%s: %s" % (binary.path, text) for text in texts]
    return found + (list(fortify_findings(binaries)) if fortified else [])


def binaries_in(folder):
    return sorted(path for parent, _, names in os.walk(folder) for path in (os.path.join(parent, name) for name in names)
                  if os.path.isfile(path) and not os.path.islink(path) and is_elf(path))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for option in ("--hardened", "--fortified", "--moved"):
        parser.add_argument(option, action="store_true")
    parser.add_argument("places", nargs="+")
    options = parser.parse_args()
    paths = [path for place in options.places for path in (binaries_in(place) if os.path.isdir(place) else [place])]
    if not paths:
        sys.exit("no program and no library in %s" % " ".join(options.places))
    found = findings(paths, options.hardened, options.fortified, options.moved)
    print("\n".join(found + ["%d binaries, %d findings" % (len(paths), len(found))]))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

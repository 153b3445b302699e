#!/usr/bin/env python3
"""Checks that every file includes the standard headers that it uses, and no others.

  tools/includes.py [--fix] [--jobs N] [SOURCE...]

Runs include-what-you-use over the sources of collector and host (or over those whose path contains a SOURCE), with the
compiler options of the preset asan-ubsan, and looks at headers of the standard library only: our own are left to the
layers test, and of other libraries the tool wants internal headers. --fix adds and removes the lines. Exit status 1 if
a file has one too many or one too few."""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor

TREE = pathlib.Path(__file__).resolve().parent.parent
BUILD = TREE / "build" / "asan-ubsan"
FOLDERS = ("wire", "plugin", "r8", "jfr", "ffdc", "host", "bmcsim")
STANDARD = re.compile(r"#include <([a-z_]+)>")
# Wanted for what other headers are bound to bring along: a declared return type, an overload, an implicit conversion.
BROUGHT_ALONG = {"iosfwd", "type_traits", "initializer_list", "system_error", "new", "exception", "ostream", "istream",
                 "compare", "ratio"}
# The tool takes some types to come from internal headers of the library, and would remove the header that declares them.
# A header stays as long as the file has one of its names.
NAMES = {"chrono": r"chrono", "fstream": r"fstream", "sstream": r"stringstream", "system_error": r"error_code|errc",
         "optional": r"optional|nullopt", "span": r"span", "memory": r"_ptr|make_unique", "array": r"std::array",
         "limits": r"numeric_limits", "string": r"std::(string\b|to_string|char_traits)", "cstdint": r"int\d+_t",
         "cstddef": r"size_t|ptrdiff_t", "utility": r"std::(move|pair|forward|exchange|swap)",
         "cmath": r"std::(isfinite|isnan|trunc|floor|abs|ldexp)", "vector": r"std::vector", "map": r"std::map"}
HEADING = re.compile(r"(\S+) should (add|remove) these lines:")


def sources(wanted):
    commands = json.loads((BUILD / "compile_commands.json").read_text(encoding="utf-8"))
    files = {os.path.relpath(command["file"], TREE) for command in commands}
    return sorted(file for file in files
                  if file.startswith(tuple(folder + "/" for folder in FOLDERS))
                  and (not wanted or any(part in file for part in wanted)))


def advice(file):
    """What the tool says of a source and its header: (file, "add" or "remove", header)."""
    text = subprocess.run(
        ["iwyu_tool", "-p", str(BUILD), str(TREE / file), "--", "-Xiwyu", "--no_fwd_decls", "-Xiwyu", "--no_comments"],
        capture_output=True, text=True, check=False).stdout
    current = verb = None
    for line in text.split("\n"):
        heading = HEADING.match(line)
        if heading:
            current, verb = os.path.relpath(heading[1], TREE), heading[2]
        elif line.startswith("The full include-list"):
            current = None
        elif current and current.startswith(FOLDERS):
            include = STANDARD.search(line)
            if include and is_due(current, verb, include[1]):
                yield current, verb, include[1]


def is_due(file, verb, header):
    if verb == "add":
        return header not in BROUGHT_ALONG
    names = NAMES.get(header)
    return names is None or not re.search(names, (TREE / file).read_text(encoding="utf-8"))


def fix(file, changes):
    path = TREE / file
    lines = path.read_text(encoding="utf-8").split("\n")
    for verb, header in changes:
        line = f"#include <{header}>"
        if verb == "remove":
            lines = [each for each in lines if each.split("//")[0].strip() != line]
            continue
        cpp_headers = [i for i, each in enumerate(lines) if re.match(r"#include <[a-z_]+>", each)]
        after = [i for i in cpp_headers if lines[i] > line]
        if after:
            lines.insert(after[0], line)
        elif cpp_headers:
            lines.insert(cpp_headers[-1] + 1, line)
        else:
            first = next(i for i, each in enumerate(lines) if each.startswith(("#include", "namespace", "extern")))
            own = lines[first].startswith('#include "') and pathlib.Path(file).suffix == ".cpp"
            place = first + 1 if own else first
            lines[place:place] = ["", line] if own else [line, ""]
    path.write_text("\n".join(lines), encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--fix", action="store_true")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("source", nargs="*")
    options = parser.parse_args()
    found = defaultdict(set)
    files = sources(options.source)
    if not files:
        sys.exit("no source was found: is the preset asan-ubsan configured?")
    with ThreadPoolExecutor(options.jobs) as workers:
        for part in workers.map(lambda file: list(advice(file)), files):
            for file, verb, header in part:
                found[file].add((verb, header))
    for file, changes in sorted(found.items()):
        for verb, header in sorted(changes):
            print(f"{file}: {verb} <{header}>")
        if options.fix:
            fix(file, sorted(changes))
    print(f"{len(files)} sources, {sum(map(len, found.values()))} includes to add or remove")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

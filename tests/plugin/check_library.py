#!/usr/bin/env python3
"""Checks the built plugin from outside: check_library.py PLUGIN NM READELF.

The plugin must export nothing (the host reaches it through its registration), must depend on the four host libraries,
and must not have a unique symbol, which would keep it mapped forever.
"""

import re
import subprocess
import sys

HOST_LIBRARIES = {"libvelcore.so", "libplugin.nsp.so", "libspdriver.so", "libsmbios.so"}


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def main(plugin, nm, readelf):
    problems = []
    exported = output(nm, "-D", "--defined-only", plugin).strip()
    if exported:
        problems.append("it exports:\n" + "\n".join(exported.splitlines()[:10]))
    needed = set(re.findall(r"\(NEEDED\).*\[(.*)\]", output(readelf, "-d", plugin)))
    # A name with a version suffix, such as libvelcore.so.1, is accepted as well.
    missing = {name for name in HOST_LIBRARIES if not any(entry.startswith(name) for entry in needed)}
    if missing:
        problems.append("it does not name " + ", ".join(sorted(missing)))
    symbols = output(readelf, "--syms", "--wide", plugin)
    if not re.search(r"\bLOCAL\b|\bGLOBAL\b", symbols):
        problems.append("no symbols could be read")
    unique = [line for line in symbols.splitlines() if re.search(r"\bUNIQUE\b", line)]
    if unique:
        problems.append("unique symbols:\n" + "\n".join(unique))
    for problem in problems:
        print(plugin + ": " + problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

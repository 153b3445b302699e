#!/usr/bin/env python3
"""Checks who includes whom: check_includes.py SOURCE_FOLDER.

The plugin is compiled against the contract (nkrovel20/...) and the formats (wire/...) alone, and nothing
of the plugin is compiled into the host.
"""

import pathlib
import re
import sys

PLUGIN_FOLDERS = ("plugin", "r8", "jfr", "ffdc")
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)
# What a plugin source may include in quotes.
ALLOWED_IN_PLUGIN = re.compile(r"^(nkrovel20|wire|plugin|r8|jfr|ffdc)/[^.][^/]*$")


def includes(folder):
    for path in sorted(folder.rglob("*")):
        if path.suffix in (".h", ".cpp", ".c", ".inc"):
            for name in INCLUDE.findall(path.read_text(encoding="utf-8")):
                yield path, name


def main(root):
    root = pathlib.Path(root)
    problems = []
    seen = 0
    for folder in PLUGIN_FOLDERS:
        for path, name in includes(root / folder):
            seen += 1
            quoted = "/" in name and not name.startswith(("boost/", "sys/"))
            if quoted and not ALLOWED_IN_PLUGIN.match(name):
                problems.append("%s includes %s, which is not of the contract" % (path.relative_to(root), name))
    for path, name in includes(root / "host"):
        seen += 1
        if name.replace("../", "").split("/")[0] in PLUGIN_FOLDERS:
            problems.append("%s includes %s of the plugin" % (path.relative_to(root), name))
    if seen < 100:
        problems.append("only %d includes were found: is %s the source folder?" % (seen, root))
    print("\n".join(problems), file=sys.stderr, end="\n" if problems else "")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

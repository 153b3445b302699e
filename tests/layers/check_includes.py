#!/usr/bin/env python3
"""Checks the include dependencies of the tree: check_includes.py SOURCE_FOLDER.

The folders are layers, and includes go downwards only: the table lists, for each layer, the layers that it may include.
Every layer may include itself, but no file may include itself indirectly.
"""

import pathlib
import re
import sys

BASE, SDK, WIRE, MODEL = "host/base", "host/sdk", "wire", "host/model"
MEANING, PROFILE = "host/meaning", "host/profile"
COLLECTOR = ("plugin", "r8", "jfr", "ffdc")
BMC = ("host/bmc/sim", "host/bmc/record", "host/bmc/serve", "host/bmc/inband", "host/bmc/lan")
HOST = (BASE, MODEL, MEANING, PROFILE, "host/schema", "host/plugins", "host/bmc", "host/bmc/smbios", *BMC, "host/result",
        "host/output", "host/readback", "host/change")

MAY_INCLUDE = {
    WIRE: (),
    **{folder: (WIRE, SDK, *COLLECTOR) for folder in COLLECTOR},
    SDK: (WIRE,),
    BASE: (),
    MODEL: (BASE, SDK, WIRE),
    MEANING: (BASE, SDK, MODEL),
    PROFILE: (BASE, SDK, WIRE, MODEL, MEANING),
    "host/schema": (BASE, SDK, WIRE, MODEL, MEANING, PROFILE),
    "host/plugins": (BASE, SDK, MODEL),
    "host/bmc": (BASE, SDK, WIRE, MODEL),
    "host/bmc/smbios": (BASE,),
    **{folder: (BASE, SDK, WIRE, MODEL, "host/bmc") for folder in BMC},
    "host/result": (BASE, SDK, WIRE, MODEL, MEANING, PROFILE, "host/bmc"),
    "host/output": (BASE, SDK, WIRE, MODEL, MEANING, PROFILE, "host/bmc", "host/result"),
    "host/readback": (BASE, SDK, WIRE, MODEL, MEANING, PROFILE, "host/bmc", "host/result", "host/output"),
    "host/change": (BASE, SDK, MODEL, MEANING, PROFILE, "host/bmc", "host/result", "host/output", "host/readback"),
    "host/template": (SDK,),
    "host/velhost": (SDK, WIRE, *HOST),
    "bmcsim": (BASE, SDK, WIRE, "host/bmc", "host/bmc/serve"),
}
# Server files and recordings are served.
MAY_INCLUDE["host/bmc/serve"] += ("host/bmc/sim", "host/bmc/record")
# The in-band transport asks SMBIOS about the local BMC.
MAY_INCLUDE["host/bmc/inband"] += ("host/bmc/smbios",)

# Angle brackets count too: they also find our folders.
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)
SUFFIXES = (".h", ".inc", ".cpp", ".c", ".l", ".y")
FEWEST_INCLUDES = 500  # if fewer are found, this is not the source folder


def layer_of(name):
    """The layer of a file or an included name; None if it is not in one of our folders."""
    if name.startswith("nkrovel20/"):
        return SDK
    fitting = [layer for layer in MAY_INCLUDE if name.startswith(layer + "/")]
    return max(fitting, key=len) if fitting else None


def read_includes(root):
    """Each source file of the layers, with the names that it includes."""
    found = {}
    for top in ("wire", "host", "bmcsim", *COLLECTOR):
        for path in sorted((root / top).rglob("*")):
            if path.suffix in SUFFIXES:
                found[path.relative_to(root).as_posix()] = INCLUDE.findall(path.read_text(encoding="utf-8"))
    return found


def violations(includes):
    for file, names in includes.items():
        layer = layer_of(file)
        if layer is None:
            yield f"{file} is in a folder that the table does not have"
            continue
        for name in names:
            target = layer_of(name)
            if ".." in name:
                yield f"{file} includes {name}, which is not named from the top of the tree"
            elif name.startswith(("host/", "tests/", "fuzz/", "bench/")) and target is None:
                yield f"{file} includes {name}, which no layer may include"
            elif target is not None and target != layer and target not in MAY_INCLUDE[layer]:
                yield f"{file} includes {name}: {layer} may not include {target}"


def cycles(includes):
    """The first include cycle found from each file, if there is one."""
    state = {}

    def visit(file, way):
        state[file] = "open"
        for name in includes[file]:
            if state.get(name) == "open":
                yield "a cycle: " + " -> ".join([*way[way.index(name):], name])
            elif name in includes and name not in state:
                yield from visit(name, [*way, name])
        state[file] = "done"

    for file in includes:
        if file not in state:
            yield from visit(file, [file])


def problems_of(root):
    includes = read_includes(pathlib.Path(root))
    problems = [*violations(includes), *cycles(includes)]
    if sum(len(names) for names in includes.values()) < FEWEST_INCLUDES:
        problems.append(f"too few includes were found: is {root} the source folder?")
    return problems


def main(root):
    problems = problems_of(root)
    print("\n".join(problems), file=sys.stderr, end="\n" if problems else "")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

#!/usr/bin/env python3
"""Runs the commands that the documents show.

A fenced sh block behind the comment <!-- test --> is run, all blocks of one document in order and in one scratch folder
that looks like the top of the tree: it has schema and servers. <!-- run: COMMAND --> is run without being shown. A fenced
text block behind <!-- output --> must be what the commands before it printed: its lines, in order and complete, but
for a line "..." that stands for any number of lines, and numbers of elapsed time.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

BLOCK = re.compile(r"^<!-- (?:(test|output) -->\n+```(\w+)\n(.*?)^```|run: (.*?) -->)$", re.MULTILINE | re.DOTALL)
MARKER = re.compile(r"^<!-- (?:test|output|run\b.*) -->$", re.MULTILINE)
ELAPSED = re.compile(r"\b\d+(?:\.\d+)? m?s\b")


def blocks_of(document):
    """(kind, line, text) of each marked block. A marker without its block is an error."""
    text = document.read_text(encoding="utf-8")
    found = []
    for match in BLOCK.finditer(text):
        kind, language, body, hidden = match.groups()
        if kind and language != {"test": "sh", "output": "text"}[kind]:
            sys.exit("%s: a %s block in %s" % (document, kind, language))
        found.append((kind or "test", text.count("\n", 0, match.start()) + 1, body or hidden))
    if len(found) != len(MARKER.findall(text)):
        sys.exit("%s: a marker without a block behind it" % document)
    return found


def matches(shown, printed):
    """Whether the shown lines are the printed ones; "..." stands for any number of lines, also none."""
    pattern = "".join(r"(?:.*\n)*" if line == "..." else re.escape(line) + r"\n" for line in shown)
    return re.fullmatch(pattern, "".join(line + "\n" for line in printed)) is not None


def lines_of(text):
    return [ELAPSED.sub("TIME", line.rstrip()) for line in text.strip("\n").split("\n")]


def run_document(document, tree, environment):
    printed = ""
    failures = 0
    with tempfile.TemporaryDirectory() as scratch:
        for folder in ("schema", "servers"):
            shutil.copytree(tree / folder, Path(scratch) / folder)
        for kind, line, body in blocks_of(document):
            if kind == "output":
                if not matches(lines_of(body), lines_of(printed)):
                    print("%s:%d: shows\n%s\nbut this was printed:\n%s" % (document, line, body, printed))
                    failures += 1
                continue
            done = subprocess.run(["bash", "-euo", "pipefail", "-c", body], cwd=scratch, env=environment, text=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=240, check=False)
            printed = done.stdout
            if done.returncode != 0:
                print("%s:%d: exit status %d\n%s\n%s" % (document, line, done.returncode, body, printed))
                failures += 1
    return failures


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tree", type=Path, required=True)
    parser.add_argument("--build", type=Path, required=True, help="has bin/velhost")
    parser.add_argument("documents", nargs="+", type=Path)
    arguments = parser.parse_args()
    environment = {
        **{name: value for name, value in os.environ.items() if not name.startswith("VELHOST_")},
        "PATH": "%s:%s" % (arguments.build / "bin", os.environ["PATH"]),
        "TZ": "UTC",
        "LC_ALL": "C.UTF-8",
        "COLUMNS": "100",
    }
    tests = sum(len([b for b in blocks_of(d) if b[0] == "test"]) for d in arguments.documents)
    if tests == 0:
        sys.exit("no block to run")
    failures = sum(run_document(document, arguments.tree, environment) for document in arguments.documents)
    print("%d blocks run, %d failures" % (tests, failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Runs the commands shown in the documents.

A fenced sh block after the comment <!-- test --> is run. All blocks run in the order of the documents, in one scratch
folder that looks like the top of the tree: it has schema, servers and build/dev, and my-schema, a copy of schema.
<!-- run: COMMAND --> runs a command that is not shown. In a manual page, the displayed lines under EXAMPLES are run. A
fenced text block after <!-- output --> must be what the preceding commands printed: the same lines, complete and in
order, except that a line "..." matches any number of lines, and elapsed times may differ.

If the first line of a block ends in "&", that command runs in the background, with port 9623 replaced by a free one.
Commands that require a server not available here use the demo server instead (--sp inband) or are skipped (--sp lan:).
"""

import argparse
import os
import re
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
from pathlib import Path

BLOCK = re.compile(r"^<!-- (?:(test|output) -->\n+```(\w+)\n(.*?)^```|run: (.*?) -->)$", re.MULTILINE | re.DOTALL)
MARKER = re.compile(r"^<!-- (?:test|output|run\b.*) -->$", re.MULTILINE)
MANUAL_EXAMPLE = re.compile(r"^\.Dl [$#] (.*)$", re.MULTILINE)
ELAPSED = re.compile(r"\b\d+(?:\.\d+)? m?s\b")
SIMULATE_PORT = "9623"


def line_number(text, place):
    return text.count("\n", 0, place) + 1


def examples_of_manual(text):
    """(kind, line, text) of each command under EXAMPLES that does not require another server or a terminal."""
    start = text.index("\n.Sh EXAMPLES")
    return [("test", line_number(text, match.start()), match.group(1).replace("--sp inband", "--sp sim"))
            for match in MANUAL_EXAMPLE.finditer(text, start, text.index("\n.Sh", start + 1))
            if "lan:" not in match.group(1) and " simulate " not in match.group(1)]


def blocks_of(document):
    """(kind, line, text) of each marked block. A marker without a block is an error."""
    text = document.read_text(encoding="utf-8")
    if document.suffix != ".md":
        return examples_of_manual(text)
    found = []
    for match in BLOCK.finditer(text):
        kind, language, body, hidden = match.groups()
        if kind and language != {"test": "sh", "output": "text"}[kind]:
            sys.exit("%s: a %s block in %s" % (document, kind, language))
        found.append((kind or "test", line_number(text, match.start()), body or hidden))
    if len(found) != len(MARKER.findall(text)):
        sys.exit("%s: a marker without a block after it" % document)
    return found


def matches(shown, printed):
    """Whether the shown lines match the printed ones; "..." matches any number of lines, including none."""
    pattern = "".join(r"(?:.*\n)*" if line == "..." else re.escape(line) + r"\n" for line in shown)
    return re.fullmatch(pattern, "".join(line + "\n" for line in printed)) is not None


def lines_of(text):
    return [ELAPSED.sub("TIME", line.rstrip()) for line in text.strip("\n").split("\n")]


class Shell:
    """Runs blocks in the scratch folder."""

    def __init__(self, scratch, environment):
        self.scratch, self.environment = scratch, environment

    def run(self, body):
        """Returns (exit status, output)."""
        first, _, rest = body.partition("\n")
        if first.endswith("&"):
            return self.run_beside(first.rstrip("& "), rest)
        done = subprocess.run(["bash", "-euo", "pipefail", "-c", body], cwd=self.scratch, env=self.environment,
                              text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=240, check=False)
        return done.returncode, done.stdout

    def run_beside(self, simulate, commands):
        """Runs the commands while "velhost simulate" is answering, then ends it as a user would."""
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
            probe.bind(("127.0.0.1", 0))
            port = str(probe.getsockname()[1])
        words = shlex.split(simulate.replace(SIMULATE_PORT, port))
        with subprocess.Popen(words, cwd=self.scratch, env=self.environment, text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT) as simulator:
            said = ""
            for line in simulator.stdout:
                said += line
                if line.startswith("Press Ctrl-C"):
                    break
            status, printed = self.run(commands.replace(SIMULATE_PORT, port))
            simulator.send_signal(signal.SIGINT)
            ended = simulator.wait(60)
        return status or ended, printed if status == 0 and ended == 0 else said + printed


def needs_what_is_missing(body):
    """Whether the block uses a program that only the tests require and that is not installed."""
    return any(re.search(r"^%s\b" % name, body, re.MULTILINE) and
               not (shutil.which(program) and shutil.which("ipmi_sim"))
               for name, program in (("ipmitool", "ipmitool"), ("velhost simulate", "ipmi_sim")))


def run_document(document, shell):
    printed = ""
    failures = 0
    for kind, line, body in blocks_of(document):
        if kind == "output":
            if printed is not None and not matches(lines_of(body), lines_of(printed)):
                print("%s:%d: shows\n%s\nbut this was printed:\n%s" % (document, line, body, printed))
                failures += 1
            continue
        if needs_what_is_missing(body):
            print("%s:%d: not run, a program is missing" % (document, line))
            printed = None
            continue
        status, printed = shell.run(body)
        if status != 0:
            print("%s:%d: exit status %d\n%s\n%s" % (document, line, status, body, printed))
            failures += 1
    return failures


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tree", type=Path, required=True)
    parser.add_argument("--build", type=lambda path: Path(path).resolve(), required=True, help="has bin/velhost")
    parser.add_argument("documents", nargs="+", type=Path)
    arguments = parser.parse_args()
    environment = {
        **{name: value for name, value in os.environ.items() if not name.startswith("VELHOST_")},
        "PATH": "%s:%s" % (arguments.build / "bin", os.environ["PATH"]),
        "TZ": "UTC",
        "LC_ALL": "C.UTF-8",
        "COLUMNS": "100",
    }
    tests = [len([block for block in blocks_of(document) if block[0] == "test"]) for document in arguments.documents]
    if 0 in tests:
        sys.exit("%s: no block to run" % arguments.documents[tests.index(0)])
    with tempfile.TemporaryDirectory() as scratch:
        for copy, folder in (("schema", "schema"), ("my-schema", "schema"), ("servers", "servers")):
            shutil.copytree(arguments.tree / folder, Path(scratch) / copy)
        (Path(scratch) / "build").mkdir()
        (Path(scratch) / "build/dev").symlink_to(arguments.build)
        shell = Shell(scratch, environment)
        failures = sum(run_document(document, shell) for document in arguments.documents)
    print("%d blocks run, %d failures" % (sum(tests), failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

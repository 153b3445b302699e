#!/usr/bin/env python3
"""Checks that velhost --help, the manual page and the bash completion name the same commands and options."""

import re
import subprocess
import sys
from pathlib import Path

VERBS = ("collect", "classes", "plugin", "check", "simulate")
# Added by the command-line library; not part of the comparison.
OWN_HELP = {"-h", "--help"}
OPTION = re.compile(r"(?<![\w-])(--[a-z][a-z-]*|-[a-z]+)(?![\w-])")


def help_of(velhost, *verb):
    return subprocess.run([velhost, *verb, "--help"], stdout=subprocess.PIPE, text=True, check=True).stdout


def options_in_help(text):
    """The options at the beginning of lines of the help."""
    found = set()
    for line in text.splitlines():
        if re.match(r" {2}-", line):
            found |= set(OPTION.findall(line[:line.index("  ", 2)] if "  " in line[2:] else line))
    return found - OWN_HELP


def options_in_manual(text):
    """The options in the list tags of the page."""
    found = set()
    for line in text.splitlines():
        if line.startswith(".It Fl"):
            plain = line.replace("\\-", "-")
            found |= {"-" + name for name in re.findall(r"Fl (\S+)", plain)}
    return found


def complete(completion, *words):
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _velhost 2>/dev/null; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    output = subprocess.run(["bash", "-c", script, "bash", completion, *words], stdout=subprocess.PIPE, text=True,
                            check=True).stdout
    return set(output.split())


def differ(what, found, expected):
    if found == expected:
        return 0
    print("%s: missing %s, beyond help %s" % (what, sorted(expected - found), sorted(found - expected)))
    return 1


def main():
    velhost, tree = sys.argv[1], Path(sys.argv[2])
    completion = tree / "completions/velhost.bash"
    common = options_in_help(help_of(velhost)) - {"--version"}
    every = {"--version"} | common
    problems = differ("completion of commands", complete(completion, velhost, ""), set(VERBS))
    for verb in VERBS:
        own = options_in_help(help_of(velhost, verb))
        every |= own
        problems += differ("completion of " + verb, complete(completion, velhost, verb, "-") - OWN_HELP - {"-vv", "-vvv"},
                           common | own)
    manual = (tree / "man/velhost.1").read_text(encoding="utf-8")
    problems += differ("manual page", options_in_manual(manual) - {"-vv", "-vvv"}, every - {"--version"})
    print("%d options, %d problems" % (len(every), problems))
    return 1 if problems or len(every) < 20 else 0


if __name__ == "__main__":
    sys.exit(main())

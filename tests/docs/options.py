#!/usr/bin/env python3
"""Whether the program's table of commands and options, its help, its manual page and its bash completion agree.

options.py VELHOST OPTIONLIST COMPLETION MANUAL
"""

import re
import subprocess
import sys
from pathlib import Path

# In the synopsis of the manual page, without entries of their own.
NOT_IN_MANUAL = {"-h", "--help", "--version"}


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout


def read_table(text):
    """The commands, and the options of each; those common to all are under None."""
    rows = [line.split() for line in text.splitlines()]
    options = {row[1]: set() for row in rows if row[0] == "command"}
    verbs = list(options)
    options[None] = set()
    for _, name, commands, *_ in (row for row in rows if row[0] == "option"):
        for verb in [None] if commands == "*" else commands.split(","):
            options[verb].add(name)
    return verbs, options


def takes_of(text):
    """For each name of an option, whether its entries take no value: both answers if they differ."""
    rows = [line.split() for line in text.splitlines()]
    found = {}
    for _, name, _, completion, *_ in (row for row in rows if row[0] == "option"):
        found.setdefault(name, set()).add(completion == "none")
    return found


def options_in_help(text):
    """The options that begin a line of the help."""
    lines = (re.match(r" {2}((?:-[\w-]+, )*-[\w-]+)", line) for line in text.splitlines())
    return {name for found in lines if found for name in found[1].split(", ")}


def options_in_manual(text):
    """The options in the tags of the lists, by the command of their section; None for those common to all."""
    found, section = {}, None
    for line in text.splitlines():
        if line.startswith(".Ss "):
            title = line.removeprefix(".Ss ").strip()
            common = title == "Options common to all commands"
            section = found.setdefault(None if common else title.removeprefix("Options of "), set())
        elif line.startswith(".It Fl"):
            section |= {"-" + name for name in re.findall(r"Fl (\S+)", line.replace("\\-", "-"))}
    return found


def commands_of(page):
    """The commands that the manual page lists."""
    listed = page.partition("The commands are:")[2].partition("\n.El")[0]
    return set(re.findall(r"^\.It Cm (\w+)$", listed, re.MULTILINE))


def complete(completion, *words):
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _velhost 2>/dev/null; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    return set(output_of("bash", "-c", script, "bash", completion, *words).split())


def differ(what, found, expected):
    if found == expected:
        return 0
    print("%s: missing %s, beyond the table %s" % (what, sorted(expected - found), sorted(found - expected)))
    return 1


def main():
    velhost, optionlist, completion, manual = sys.argv[1:]
    table, page = output_of(optionlist), Path(manual).read_text(encoding="utf-8")
    verbs, options = read_table(table)
    sections = options_in_manual(page)
    # The parser reads the words before it knows which command they are for.
    undecided = [name for name, takes in takes_of(table).items() if len(takes) > 1]
    problems = differ("options that take a value with one command only", set(undecided), set())
    problems += differ("completion of commands", complete(completion, velhost, ""), set(verbs))
    problems += differ("commands of the manual page", commands_of(page), set(verbs))
    problems += differ("help", options_in_help(output_of(velhost, "--help")), options[None])
    problems += differ("manual page", sections.get(None, set()), options[None] - NOT_IN_MANUAL)
    for verb in verbs:
        problems += differ("help of " + verb, options_in_help(output_of(velhost, verb, "--help")), options[verb])
        problems += differ("manual page of " + verb, sections.get(verb, set()), options[verb])
        problems += differ("completion of " + verb, complete(completion, velhost, verb, "-"),
                           options[None] | options[verb])
    count = sum(map(len, options.values()))
    print("%d names of options, %d problems" % (count, problems))
    return 1 if problems or count < 20 else 0


if __name__ == "__main__":
    sys.exit(main())

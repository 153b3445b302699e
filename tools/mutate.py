#!/usr/bin/env python3
"""Mutation test of the collector: changes its sources in one small place at a time and checks whether a test fails.

  tools/mutate.py [--list] [--count N [--seed S]] [--jobs N] [--again FILE] [--compare] [--velhost FILE --agree N]
                  [SOURCE...]

SOURCE limits the run to files whose path contains one of them. Uses the preset "mutation"; the sources in the tree
are never modified. Prints one line per mutant, then the totals. A mutant does not count if it does not compile or if
it is listed in tools/mutate-equivalent.txt; with --compare, neither does a survivor for which an optimising compiler
generates the same code. --again tries only the mutants that survived in the output of an earlier run. --agree N
compares survivors with the collector model on N random servers.
The exit status is 1 if a mutant that counts survived."""

import argparse
import collections
import json
import os
import queue
import random
import re
import resource
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor, as_completed

from mutants import find_mutants

TREE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.path.join(TREE, "build", "mutation")
EQUIVALENT = os.path.join(TREE, "tools", "mutate-equivalent.txt")
FOLDERS = ["plugin", "r8", "jfr", "ffdc"]
# Each with its folder: the mutants of that folder meet this program first.
TESTS = {"plugin_test": "plugin", "r8_test": "r8", "jfr_test": "jfr", "ffdc_test": "ffdc", "librarycalls_test": "plugin",
         "pluginload_test": "plugin"}
# The precompiled header is valid for only one optimisation level.
PRECOMPILED = re.compile(r"-Xclang -include-pch -Xclang \S+ -Xclang -include -Xclang \S+")
# The C library's own checks detect accesses past the end of a block and reads of uninitialised memory. They
# touch the whole block, which takes a while for one of two gigabytes.
STRICT_MEMORY = {"LD_PRELOAD": "libc_malloc_debug.so.0", "MALLOC_CHECK_": "3", "MALLOC_PERTURB_": "165"}
CPU_SECONDS = {False: 2, True: 20}
MEMORY = 4 << 30


def read(path):
    with open(path, encoding="utf-8") as stream:
        return stream.read()


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as stream:
        stream.write(text)


def sources(folders, endings):
    return sorted(os.path.join(folder, name) for folder in folders
                  for name in os.listdir(os.path.join(TREE, folder)) if name.endswith(endings))


def equivalents():
    """(file, code, change) -> why"""
    table = {}
    if os.path.exists(EQUIVALENT):
        for line in read(EQUIVALENT).splitlines():
            if line and not line.startswith("#"):
                file, code, change, why = [field.strip() for field in line.split(" @ ")]
                table[file, code, change] = why
    return table


# -- building -------------------------------------------------------------------------------------------------

class Build:
    """The unmodified build, and the commands with which parts of it are rebuilt elsewhere."""

    def __init__(self):
        targets = ["torgareg_parts", "torgareg", *TESTS]
        for command in (["cmake", "--preset", "mutation"], ["cmake", "--build", BUILD, "--target", *targets]):
            subprocess.run(command, cwd=TREE, check=True, stdout=subprocess.DEVNULL)
        self.compile = {os.path.relpath(entry["file"], TREE): re.sub(r" -MD -MT \S+ -MF \S+", "", entry["command"])
                        for entry in json.loads(read(os.path.join(BUILD, "compile_commands.json")))}
        self.link = {name: self.link_command(name) for name in ["torgareg_parts", "torgareg", *TESTS]}
        self.library = self.output(self.link["torgareg_parts"])
        self.plain = {}

    def link_command(self, target):
        commands = subprocess.run(["ninja", "-t", "commands", target], cwd=BUILD, check=True, capture_output=True,
                                  text=True).stdout.splitlines()
        return commands[-1].removeprefix(": && ").removesuffix(" && :")

    @staticmethod
    def output(command):
        words = shlex.split(command)
        return words[words.index("-o") + 1]

    def users_of(self, header):
        """The sources that include the header, directly or indirectly."""
        folders = FOLDERS + ["tests/" + folder for folder in [*FOLDERS, "support"]]
        reached, grown = {header}, True
        while grown:
            more = {file for file in sources(folders, (".cpp", ".h"))
                    if reached & set(re.findall(r'#include "([^"]+)"', read(os.path.join(TREE, file))))}
            grown = not more <= reached
            reached |= more
        return [file for file in sorted(reached) if file in self.compile]


class Worker:
    """Tries one mutant at a time in a separate folder. A mutated header shadows the real one."""

    def __init__(self, build, number):
        self.build = build
        self.folder = os.path.join(BUILD, "mutants", str(number))
        os.makedirs(self.folder, exist_ok=True)

    def run(self, command, **options):
        return subprocess.run(command, cwd=BUILD, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options)

    def compile(self, file, shadow, command=None):
        """Returns the new object file, or None."""
        command = command or self.build.compile[file]
        target = os.path.join(self.folder, file.replace("/", ".") + ".o")
        command = command.replace(" -o " + self.build.output(command), " -o " + target)
        if file == shadow:
            command = command.replace(" -c " + os.path.join(TREE, file), " -c " + os.path.join(self.folder, file))
        place = command.index(" ")
        command = command[:place] + " -I" + self.folder + command[place:]
        return target if self.run(shlex.split(command)).returncode == 0 else None

    def relink(self, target, objects):
        """`objects` maps source files to object files. Returns the path of the result, or None."""
        command = self.build.link[target]
        for file, made in objects.items():
            command = command.replace(" " + self.build.output(self.build.compile[file]) + " ", " " + made + " ")
        made = os.path.join(self.folder, os.path.basename(self.build.output(command)))
        command = command.replace(" -o " + self.build.output(command), " -o " + made)
        return made if self.run(shlex.split(command)).returncode == 0 else None

    def judge(self, mutant, options):
        """Returns the verdict and its cause."""
        write(os.path.join(self.folder, mutant.file), mutant.applied(read(os.path.join(TREE, mutant.file))))
        try:
            return self.judge_written(mutant, options)
        finally:
            os.remove(os.path.join(self.folder, mutant.file))

    def judge_written(self, mutant, options):
        """Recompiles everything that includes a mutated header; test programs only if none of the others fails."""
        changed = self.build.users_of(mutant.file) if mutant.file.endswith(".h") else [mutant.file]
        parts = [file for file in changed if not file.startswith("tests/")]
        objects = {file: self.compile(file, mutant.file) for file in parts}
        if None in objects.values() or self.relink("torgareg_parts", objects) is None:
            return "did not compile", ""
        if mutant.file == "plugin/loadtimeinit.cpp":
            return self.judge_module(objects)
        killer = self.first_failure(mutant, {name: name for name in TESTS if not self.sources_in(name, changed)})
        if not killer:
            programs = self.rebuilt_tests(mutant, changed)
            if programs is None:
                return "did not compile", ""
            killer = self.first_failure(mutant, programs) or (options.agree and self.disagreement(options))
        if killer:
            return "killed", killer
        same = options.compare and all(self.machine_code(file, mutant.file) == self.plain_code(file) for file in changed)
        return ("same code", "") if same else ("survived", "")

    def sources_in(self, name, files):
        return [file for file in files if " " + self.build.output(self.build.compile[file]) + " " in self.build.link[name]]

    def rebuilt_tests(self, mutant, changed):
        """The test programs affected by a mutated header, name -> path; None if one cannot be built."""
        programs = {}
        for name in TESTS:
            own = self.sources_in(name, changed)
            if own:
                objects = {file: self.compile(file, mutant.file) for file in own}
                programs[name] = None if None in objects.values() else self.relink(name, objects)
        return None if None in programs.values() else programs

    def judge_module(self, objects):
        """Puts the module where its test expects it, and restores the original afterwards."""
        module = os.path.join(BUILD, self.build.output(self.build.link["torgareg"]))
        made = self.relink("torgareg", objects)
        os.rename(module, module + ".kept")
        try:
            os.rename(made, module)
            return ("killed", "pluginload_test") if self.fails("pluginload_test", "pluginload_test") else ("survived", "")
        finally:
            os.rename(module + ".kept", module)

    def first_failure(self, mutant, programs):
        """Runs the tests of the mutant's own folder first, and those once more with strict memory checks."""
        own = os.path.dirname(mutant.file)
        order = sorted(programs, key=lambda test: TESTS[test] != own)
        rounds = [(name, False) for name in order] + [(name, True) for name in order if TESTS[name] == own]
        return next(filter(None, (self.fails(name, programs[name], strict) for name, strict in rounds)), None)

    def fails(self, name, program, strict=False):
        command = [os.path.join(BUILD, "tests", program), "--gtest_brief=1", "--gtest_fail_fast=1"]
        # A relinked test program does not find the host libraries relative to itself.
        libraries = self.folder + ":" + os.path.join(BUILD, "lib/velhost")
        environment = dict(os.environ, LD_LIBRARY_PATH=libraries, **(STRICT_MEMORY if strict else {}))
        try:
            done = subprocess.run(command, cwd=self.folder, env=environment, stdout=subprocess.PIPE, timeout=120,
                                  stderr=subprocess.DEVNULL, preexec_fn=lambda: limit(CPU_SECONDS[strict]))
        except subprocess.TimeoutExpired:
            return name + " (time)"
        if done.returncode == 0:
            return None
        failed = re.search(rb"\[  FAILED  \] (\S+)", done.stdout)
        return "%s %s" % (name, failed.group(1).decode() if failed else "(status %d)" % done.returncode)

    def disagreement(self, options):
        module = os.path.join(BUILD, self.build.output(self.build.link["torgareg"]))
        command = [sys.executable, os.path.join(TREE, "tests/reference/agree.py"), "--velhost", options.velhost,
                   "--plugin", module, "--cases", str(options.agree), "--seed", "1", "--jobs", "1"]
        return self.run(command, env=dict(os.environ, LD_LIBRARY_PATH=self.folder)).returncode and "tests/reference"

    def machine_code(self, file, shadow):
        """The code that an optimising compiler generates for it."""
        made = self.compile(file, shadow, PRECOMPILED.sub("", self.build.compile[file]) + " -O2")
        with open(made, "rb") as stream:
            return stream.read()

    def plain_code(self, file):
        if file not in self.build.plain:
            self.build.plain[file] = Worker(self.build, "unchanged").machine_code(file, None)
        return self.build.plain[file]


def limit(seconds):
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


# -- the run --------------------------------------------------------------------------------------------------

def chosen(options):
    found = [mutant for file in sources(FOLDERS, (".cpp", ".h")) for mutant in find_mutants(file, read(os.path.join(TREE, file)))
             if not options.source or any(part in file for part in options.source)]
    if options.again:
        survivors = {line.rsplit(": survived", 1)[0] for line in read(options.again).splitlines() if ": survived" in line}
        found = [mutant for mutant in found if str(mutant) in survivors]
    if options.count and options.count < len(found):
        found = random.Random(options.seed).sample(found, options.count)
    return found


def warn_of_stale():
    current = {(mutant.file, mutant.code, mutant.change) for file in sources(FOLDERS, (".cpp", ".h"))
               for mutant in find_mutants(file, read(os.path.join(TREE, file)))}
    for key in equivalents():
        if key not in current:
            print("no longer there: " + " @ ".join(key), file=sys.stderr)


def try_all(mutants, options, sums):
    build = Build()
    workers = queue.Queue()
    for number in range(options.jobs):
        workers.put(Worker(build, number))
    check_unchanged(build)
    known = equivalents()

    def one(mutant):
        why = known.get((mutant.file, mutant.code, mutant.change))
        if why:
            return mutant, "equivalent", why
        worker = workers.get()
        try:
            return (mutant, *worker.judge(mutant, options))
        finally:
            workers.put(worker)

    module = [mutant for mutant in mutants if mutant.file == "plugin/loadtimeinit.cpp"]
    with ThreadPoolExecutor(options.jobs) as pool:
        for done in as_completed([pool.submit(one, mutant) for mutant in mutants if mutant not in module]):
            report(sums, *done.result())
    for mutant in module:
        report(sums, *one(mutant))


def check_unchanged(build):
    worker = Worker(build, "unchanged")
    for name in TESTS:
        failure = worker.fails(name, name) or worker.fails(name, name, strict=True)
        if failure:
            sys.exit("fails without any change: " + failure)


def report(sums, mutant, verdict, what):
    sums[verdict] += 1
    print("%s: %s%s" % (mutant, verdict, {"killed": " by " + what, "equivalent": ": " + what}.get(verdict, "")), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("source", nargs="*")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--count", type=int)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--again")
    parser.add_argument("--compare", action="store_true")
    parser.add_argument("--velhost")
    parser.add_argument("--agree", type=int, default=0)
    options = parser.parse_args()
    mutants = chosen(options)
    warn_of_stale()
    if options.list:
        print("\n".join(map(str, mutants)))
        return 0
    sums = collections.Counter()
    try_all(mutants, options, sums)
    counted = sums["killed"] + sums["survived"]
    print("\n%d mutants: %s" % (len(mutants), ", ".join("%d %s" % (sums[word], word) for word in sorted(sums))))
    print("killed: %.1f %% of %d" % (100 * sums["killed"] / max(counted, 1), counted))
    return 1 if sums["survived"] else 0


if __name__ == "__main__":
    sys.exit(main())

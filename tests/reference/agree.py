#!/usr/bin/env python3
"""Compares the collector, run by velhost, with its reference model on random cases.

Each case is a random schema, server and request. What velhost prints and traces must match the model: every line of the
trace, the instances, the failed calls, the exchanges and the exit status.
"""

import argparse
import json
import os
import shlex
import subprocess
import sys
import tempfile
import tomllib
from concurrent.futures import ProcessPoolExecutor

import collector_model
import random_case

IDENTITY = {"name": "Engineering Information Collector", "version": "1.0", "interface_version": "1.0"}
CONTEXT = 5
TIMEOUT = 120


class Difference(Exception):
    """The first difference between the two."""


def require(what, found, expected):
    if found != expected:
        raise Difference("%s:\n  velhost: %s\n  model:   %s" % (what, short(found), short(expected)))


def short(thing, most=2000):
    text = repr(thing)
    return text if len(text) <= most else "%s... (%d characters)" % (text[:most], len(text))


# -- running --------------------------------------------------------------------------------------------------

def command_of(options, case, directory):
    command = [options.velhost, "collect", "--schema", os.path.join(directory, "case.mof"),
               "--sp", "sim:" + os.path.join(directory, "case.toml"), "--format", "json",
               "--log", os.path.join(directory, "trace.jsonl"), "--log-format", "jsonl"]
    if options.plugin:
        command += ["--plugin", options.plugin]
    return command + case.arguments()


def run_velhost(options, case, directory):
    """Returns exit status, standard output and standard error; the latter two are also saved in the directory."""
    done = subprocess.run(command_of(options, case, directory), env=dict(os.environ, TZ=case.zone),
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT)
    for name, content in (("output.json", done.stdout), ("stderr.txt", done.stderr)):
        with open(os.path.join(directory, name), "wb") as stream:
            stream.write(content)
    return done.returncode, done.stdout, done.stderr


def run_model(case, directory):
    return collector_model.run(case.schema, tomllib.loads(case.toml), case.calls(), case.timezone, directory)


# -- comparing ------------------------------------------------------------------------------------------------

def compare(case, directory, outcome, expected):
    status, output, errors = outcome
    failed = [call for call in expected.calls if call.failure]
    if status not in (0, 3):
        raise Difference("exit status %d:\n%s" % (status, errors.decode(errors="replace")))
    compare_trace(read_trace(os.path.join(directory, "trace.jsonl")), expected.trace)
    require("exit status", status, 3 if failed else 0)
    try:
        document = json.loads(output)
    except ValueError as error:
        raise Difference("standard output is not JSON: %s" % error) from error
    compare_heading(document, tomllib.loads(case.toml)["machine_type"], failed)
    compare_failures(document["failures"], case, failed)
    compare_instances(document["instances"], expected)
    compare_exchanges(document["exchanges"], case, expected)


def read_trace(path):
    with open(path, encoding="utf-8") as stream:
        lines = [json.loads(line) for line in stream]
    return [(line["severity"], line["message"]) for line in lines]


def compare_trace(found, expected):
    for number in range(max(len(found), len(expected))):
        if found[number:number + 1] == expected[number:number + 1]:
            continue
        before = "".join("    %d %s\n" % (severity, short(message, 200))
                         for severity, message in expected[max(number - CONTEXT, 0):number])
        after = "".join("    %d %s\n" % (severity, short(message, 200))
                        for severity, message in expected[number + 1:number + 1 + CONTEXT])
        raise Difference("trace line %d, after\n%s  velhost: %s\n  model:   %s\n  and the model goes on with\n%s"
                         % (number + 1, before, line_text(found, number), line_text(expected, number), after))


def line_text(trace, number):
    if number >= len(trace):
        return "(the trace has ended)"
    return "%d %s" % (trace[number][0], short(trace[number][1]))


def compare_heading(document, machine_type, failed):
    require("kind", document["kind"], "instancecollection")
    require("format_version", document["format_version"], 1)
    require("machine_type", document["machine_type"], machine_type)
    require("plugin", document["plugin"], IDENTITY)
    require("status", document["status"], "partial" if failed else "complete")


def compare_failures(found, case, failed):
    """A request for several classes does not say which of them failed, so only the number is compared."""
    require("number of failed calls", len(found), len(failed))
    if not case.single_request:
        require("failed classes", [one["class"] for one in found], [call.classes[0] for call in failed])


def compare_instances(found, expected):
    require("classes of the instances", [one["class"] for one in found], [cls for cls, _ in expected.instances])
    for number, (one, (cls, properties)) in enumerate(zip(found, expected.instances), 1):
        require("properties of instance %d (%s)" % (number, cls), list(one["properties"]),
                [name for name, _ in properties])
        for name, value in properties:
            require("%s of instance %d (%s)" % (name, number, cls), one["properties"][name], value)
    compare_incomplete(found, expected)


def compare_incomplete(found, expected):
    """Instances of a call with a failed exchange are marked, or may be if all failed exchanges were impossible."""
    number = 0
    for call in expected.calls:
        failed = [exchange for exchange in call.exchanges if exchange.failed()]
        for one in found[number:number + call.instances]:
            if not failed or any(exchange.possible for exchange in failed):
                require("mark of an incomplete instance", one.get("incomplete", False), bool(failed))
        number += call.instances


def compare_exchanges(found, case, expected):
    """Exchanges without a node or driver are either all counted or all ignored."""
    every = [(call, exchange) for call in expected.calls for exchange in call.exchanges]
    possible = [(call, exchange) for call, exchange in every if exchange.possible]
    counted = every if found["total"] == len(every) else possible
    require("total of exchanges", found["total"], len(counted))
    expected_failures = [failure_of(case, call, exchange) for call, exchange in counted if exchange.failed()]
    require("failed exchanges", [reported(case, one) for one in found["failed"]], expected_failures)


def failure_of(case, call, exchange):
    cls = None if case.single_request else call.classes[0]
    return cls, exchange.node, exchange.kind, exchange.completion_code if exchange.ok else "lost"


def reported(case, one):
    code = one.get("completion_code")
    code = "lost" if code is None else int(code, 0) if isinstance(code, str) else code
    return None if case.single_request else one["class"], one["node"], one["kind"], code


# -- cases ----------------------------------------------------------------------------------------------------

def run_case(options, seed):
    """None if the two agree, otherwise a text with the difference and how to reproduce it."""
    with tempfile.TemporaryDirectory(prefix="agree-") as scratch:
        difference = try_case(options, random_case.generate(seed), scratch)
    if difference is None:
        return None
    return explain_failure(options, seed, difference)


def try_case(options, case, directory):
    case.write(directory)
    try:
        compare(case, directory, run_velhost(options, case, directory), run_model(case, directory))
    except Difference as difference:
        return str(difference)
    except subprocess.TimeoutExpired:
        return "velhost did not end within %d seconds" % TIMEOUT
    except (KeyError, TypeError, ValueError, OSError) as error:
        return "%s: %s" % (type(error).__name__, error)
    return None


def explain_failure(options, seed, difference):
    """Runs the case once more in a folder where its files are kept."""
    case, directory = random_case.generate(seed), os.path.join(options.keep, "seed-%d" % seed)
    os.makedirs(directory, exist_ok=True)
    difference = try_case(options, case, directory) or difference + "\n(and agrees when it is run again)"
    plugin = ["--plugin", options.plugin] if options.plugin else []
    again = [sys.executable, os.path.abspath(__file__), "--velhost", options.velhost, *plugin,
             "--cases", "1", "--seed", str(seed)]
    direct = "TZ=%s %s" % (shlex.quote(case.zone), shlex.join(command_of(options, case, directory)))
    return "seed %d: %s\nfiles in %s\nagain:   %s\nvelhost: %s\n" % (seed, difference.rstrip(), directory,
                                                                     shlex.join(again), direct)


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--velhost", required=True, help="the host to run")
    parser.add_argument("--plugin", help="the collector's library, if not the host's own choice")
    parser.add_argument("--cases", type=int, default=200, help="number of cases (200)")
    parser.add_argument("--seed", type=int, default=1, help="seed of the first case; the next has the next (1)")
    parser.add_argument("--keep", help="folder for the files of failed cases (a new one in the temporary folder)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="processes at a time (one per processor)")
    parser.add_argument("--most", type=int, default=5, help="number of differences to print (5)")
    options = parser.parse_args()
    options.velhost = os.path.abspath(options.velhost)
    options.plugin = options.plugin and os.path.abspath(options.plugin)
    options.keep = os.path.abspath(options.keep or os.path.join(tempfile.gettempdir(), "agree-%d" % os.getpid()))
    return options


def main():
    options = parse_options()
    if not os.access(options.velhost, os.X_OK):
        sys.exit("agree.py: cannot run " + options.velhost)
    seeds = range(options.seed, options.seed + options.cases)
    failed = 0
    with ProcessPoolExecutor(max_workers=max(options.jobs, 1)) as pool:
        for difference in pool.map(run_case, [options] * len(seeds), seeds, chunksize=4):
            if difference is None:
                continue
            failed += 1
            if failed <= options.most:
                print(difference, flush=True)
    print("%d passed, %d failed" % (len(seeds) - failed, failed))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

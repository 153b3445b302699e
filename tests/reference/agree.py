#!/usr/bin/env python3
"""Compares the collector, run by velhost, with its reference model on random cases.

Each case is a random schema, server and request. What velhost prints and traces must match the model: every line of the
trace, the instances, and the whole result document. In some cases also the plan of a dry run, the result line by line,
the results of a recording as a replay and as an image, and that of one that was cut.
"""

import argparse
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
import tomllib
import traceback
from concurrent.futures import ProcessPoolExecutor

try:
    import jsonschema
except ImportError:
    jsonschema = None

import collector_model
import modelmeaning
import modelplan
import modelresult
import random_case

CONTEXT = 5
TIMEOUT = 120
STATUSES = (0, 1, 3)  # complete, findings that --fail-on asks for, partial
RUN_MEMBERS = {"id", "started", "elapsed_ms", "host", "velhost", "labels"}
UUID = r"[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"
TIME = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d"


class Difference(Exception):
    """The first difference between the two."""


def require(what, found, expected):
    if found != expected:
        raise Difference("%s:\n  velhost: %s\n  model:   %s" % (what, short(found), short(expected)))


def short(thing, most=2000):
    text = repr(thing)
    return text if len(text) <= most else "%s... (%d characters)" % (text[:most], len(text))


# -- running --------------------------------------------------------------------------------------------------

def command_of(options, case, directory, *more, source=None, asked=True):
    source = source or "sim:" + os.path.join(directory, "case.toml")
    command = [options.velhost, "collect", "--schema", os.path.join(directory, "case.mof"), "--sp", source, *more]
    if options.plugin:
        command += ["--plugin", options.plugin]
    return command + case.arguments(asked)


def main_command(options, case, directory):
    more = ["--record", os.path.join(directory, "recording.jsonl")] if is_recorded(case) else []
    return command_of(options, case, directory, *json_arguments(case), "--log", os.path.join(directory, "trace.jsonl"),
                      "--log-format", "jsonl", *more)


def is_recorded(case):
    return case.kept is not None or case.seed % 8 == 3


def json_arguments(case):
    return ["--format", "json", *case.status_arguments(), *case.filter_arguments()]


def run_command(command, case, directory, name):
    """Returns exit status, standard output and standard error; the latter two are also saved in the directory."""
    done = subprocess.run(command, env=dict(os.environ, TZ=case.zone), stdin=subprocess.DEVNULL, capture_output=True,
                          timeout=TIMEOUT)
    for suffix, content in (("json", done.stdout), ("stderr", done.stderr)):
        with open(os.path.join(directory, "%s.%s" % (name, suffix)), "wb") as stream:
            stream.write(content)
    return done.returncode, done.stdout, done.stderr


def run_model(case, directory, recorded=None):
    return collector_model.run(case.schema, tomllib.loads(case.toml), case.calls(), case.timezone, directory, recorded)


def plan_of(case):
    return modelplan.Plan(case.schema, tomllib.loads(case.toml), case.asked)


# -- comparing ------------------------------------------------------------------------------------------------

def compare(options, case, directory):
    status, output, errors = run_command(main_command(options, case, directory), case, directory, "output")
    expected = run_model(case, directory)
    if status not in STATUSES:
        raise Difference("exit status %d:\n%s" % (status, errors.decode(errors="replace")))
    compare_trace(read_trace(os.path.join(directory, "trace.jsonl")), expected.trace)
    found = parsed(output)
    if not case.only_findings:
        compare_instances(found["instances"], expected)
    document = document_of(case, directory, expected, "sim:" + os.path.join(directory, "case.toml"))
    compare_documents(found, shown(document, case), case)
    require("exit status", status, document["exit_status"])
    if case.seed % 8 == 1:
        validate(options, found)
    if case.seed % 4 == 0 and tomllib.loads(case.toml)["machine_type"]:
        compare_plan(options, case, directory)
    if case.seed % 4 == 2:
        compare_lines(options, case, directory, document)
    if case.seed % 8 == 3:
        compare_recording(options, case, directory, expected)
    if case.kept is not None:
        compare_cut_recording(options, case, directory)


def parsed(output):
    try:
        return json.loads(output)
    except ValueError as error:
        raise Difference("standard output is not JSON: %s" % error) from error


def document_of(case, directory, run, source, **more):
    path = os.path.join(directory, "case.mof")
    with open(path, "rb") as stream:
        digest = hashlib.sha256(stream.read()).hexdigest()
    return {**modelresult.document(plan_of(case), run, case.fail_on),
            "source": {"sp": [source], "target": source, "simulated": True, **more},
            "schema": {"paths": [path], "sha256": digest, "example": False}}


def shown(document, case):
    return modelmeaning.filtered(document) if case.only_findings else document


def compare_documents(found, expected, case):
    """Compares all but what a run is free to choose."""
    require("members of the result", set(found), set(expected) | {"run"})
    for name in expected:
        compare_values(name, found[name], expected[name])
    compare_run(found["run"], case)


def compare_run(found, case):
    require("members of run", set(found), RUN_MEMBERS)
    require("run.labels", found["labels"], case.labels)
    for name, pattern in (("id", UUID), ("started", TIME)):
        if not re.fullmatch(pattern, found[name]):
            raise Difference("run.%s is %r" % (name, found[name]))
    if type(found["elapsed_ms"]) is not int or found["elapsed_ms"] < 0:
        raise Difference("run.elapsed_ms is %r" % found["elapsed_ms"])


def compare_values(path, found, expected):
    """Raises the first difference with its place in the document."""
    if isinstance(found, dict) and isinstance(expected, dict):
        if set(found) != set(expected):
            raise Difference("%s:\n  velhost: %s\n  model:   %s\n  only velhost: %s, only the model: %s" % (
                path, short(found), short(expected), sorted(set(found) - set(expected)),
                sorted(set(expected) - set(found))))
        for name in expected:
            compare_values("%s.%s" % (path, name), found[name], expected[name])
    elif isinstance(found, list) and isinstance(expected, list):
        for number in range(max(len(found), len(expected))):
            if number >= min(len(found), len(expected)):
                require("%s has %d and %d elements, the first one more" % (path, len(found), len(expected)),
                        found[number:number + 1], expected[number:number + 1])
            compare_values("%s[%d]" % (path, number), found[number], expected[number])
    else:
        require(path, (type(found), found), (type(expected), expected))


def validate(options, document):
    """Compares with the JSON Schema, if there is one and the package that reads it."""
    if not options.json_schema or not jsonschema:
        return
    with open(options.json_schema, encoding="utf-8") as stream:
        validator = jsonschema.Draft202012Validator(json.load(stream))
    error = jsonschema.exceptions.best_match(validator.iter_errors(document))
    if error:
        raise Difference("JSON Schema: %s: %s" % (error.json_path, short(error.message)))


def compare_plan(options, case, directory):
    command = command_of(options, case, directory, "--dry-run", "--format", "json")
    status, output, errors = run_command(command, case, directory, "plan")
    if status != 0:
        raise Difference("exit status %d of the dry run:\n%s" % (status, errors.decode(errors="replace")))
    found = parsed(output)
    compare_values("plan", found, modelplan.plan_document(plan_of(case)))
    validate(options, found)


def compare_lines(options, case, directory, document):
    """The instances line by line, then everything else in a summary; each line says of which run it is."""
    command = command_of(options, case, directory, "--format", "jsonl", *case.status_arguments())
    status, output, _ = run_command(command, case, directory, "lines")
    require("exit status of jsonl", status, document["exit_status"])
    lines = [json.loads(line) for line in output.splitlines()]
    run = {"run_id": lines[-1]["run"]["id"], "labels": case.labels}
    for number, (line, instance) in enumerate(zip(lines, document["instances"]), 1):
        compare_values("line %d" % number, line, {**instance, **run})
    require("lines of jsonl", len(lines), len(document["instances"]) + 1)
    summary = {name: value for name, value in document.items() if name != "instances"}
    compare_documents(lines[-1], {**summary, **run, "kind": "summary"}, case)


def compare_recording(options, case, directory, expected):
    """Asked for its own classes, or for the same ones by name, a recording gives the same result, replayed or not."""
    path = os.path.join(directory, "recording.jsonl")
    if not os.path.exists(path):
        return
    with open(path, encoding="utf-8") as stream:
        started = json.loads(stream.readline())["started"]
    for scheme, asked in (("replay", False), ("image", case.seed % 16 == 3)):
        source = "%s:%s" % (scheme, path)
        command = command_of(options, case, directory, *json_arguments(case), source=source, asked=asked)
        status, output, errors = run_command(command, case, directory, scheme)
        if status not in STATUSES:
            raise Difference("exit status %d of the %s:\n%s" % (status, scheme, errors.decode(errors="replace")))
        document = document_of(case, directory, expected, source, recorded=started)
        compare_documents(parsed(output), shown(document, case), case)


def compare_cut_recording(options, case, directory):
    """Replays the beginning of the recording: what it lacks is not recorded, and nothing else changes."""
    path = os.path.join(directory, "recording.jsonl")
    if not os.path.exists(path):
        return
    with open(path, encoding="utf-8") as stream:
        header, *lines = stream.readlines()
    kept = int(case.kept * (len(lines) + 1))
    expected = run_model(case, directory, kept)
    if any(before + number >= kept for number, before in enumerate(expected.clock_readings)):
        return  # a file was being read; what the clock says after the end of a recording is left open
    with open(path, "w", encoding="utf-8") as stream:
        stream.writelines([header, *lines[:kept]])
    source = "replay:" + path
    command = command_of(options, case, directory, *json_arguments(case), source=source)
    status, output, errors = run_command(command, case, directory, "replay")
    if status not in STATUSES:
        raise Difference("exit status %d of the replay:\n%s" % (status, errors.decode(errors="replace")))
    document = document_of(case, directory, expected, source, recorded=json.loads(header)["started"])
    compare_documents(parsed(output), shown(document, case), case)
    require("exit status of the replay", status, document["exit_status"])


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


def compare_instances(found, expected):
    require("classes of the instances", [one["class"] for one in found], [cls for cls, _ in expected.instances])
    for number, (one, (cls, properties)) in enumerate(zip(found, expected.instances), 1):
        require("properties of instance %d (%s)" % (number, cls), list(one["properties"]),
                [name for name, _ in properties])
        for name, value in properties:
            require("%s of instance %d (%s)" % (name, number, cls), one["properties"][name], value)


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
        compare(options, case, directory)
    except Difference as difference:
        return str(difference)
    except subprocess.TimeoutExpired:
        return "velhost did not end within %d seconds" % TIMEOUT
    except (KeyError, IndexError, TypeError, ValueError, OSError) as error:
        return "".join(traceback.format_exception(error))
    return None


def explain_failure(options, seed, difference):
    """Runs the case once more in a folder where its files are kept."""
    case, directory = random_case.generate(seed), os.path.join(options.keep, "seed-%d" % seed)
    os.makedirs(directory, exist_ok=True)
    difference = try_case(options, case, directory) or difference + "\n(and agrees when it is run again)"
    plugin = ["--plugin", options.plugin] if options.plugin else []
    again = [sys.executable, os.path.abspath(__file__), "--velhost", options.velhost, *plugin,
             "--cases", "1", "--seed", str(seed)]
    direct = "TZ=%s %s" % (shlex.quote(case.zone), shlex.join(main_command(options, case, directory)))
    return "seed %d: %s\nfiles in %s\nagain:   %s\nvelhost: %s\n" % (seed, difference.rstrip(), directory,
                                                                     shlex.join(again), direct)


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--velhost", required=True, help="the host to run")
    parser.add_argument("--plugin", help="the collector's library, if not the host's own choice")
    parser.add_argument("--json-schema", help="the JSON Schema of results and plans")
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

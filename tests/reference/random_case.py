#!/usr/bin/env python3
"""Random cases for comparing the collector with its reference model: a schema, a server and a request.

generate(seed) always returns the same case for the same seed. Run as a program, this writes one case and prints the
arguments to run it with.
"""

import argparse
import os
import random
import shlex
import tomllib
from dataclasses import dataclass, field

import collector_model as model
from collector_model import Schema
from modelmeaning import SEVERITIES
from modelplan import Plan, asked_classes
from random_meaning import MeaningMaker
from random_schema import SchemaMaker, mof_text, random_types
from random_server import ServerMaker

MACHINE_TYPES = (["6101", "6102", "6203", "6204", "6205", "6106"] * 3
                 + ["4411", "4414", "4523", "4524"] * 4 + ["610", "44", "9999", "6203 X", ""])

# POSIX time zones, with the offset in seconds west of UTC that the C library derives from them.
ZONES = [("UTC0", 0), ("CET-1", -3600), ("CET-1CEST,M3.5.0,M10.5.0/3", -3600), ("<+0545>-5:45", -20700),
         ("NST3:30", 12600), ("PST8PDT,M3.2.0,M11.1.0", 28800), ("<-12>12", 43200), ("<+14>-14", -50400),
         ("AAA0:00:30", 30), ("AAA0:01:30", 90), ("AAA-0:01:30", -90)]


@dataclass
class Case:
    """One case; files maps names of files that the server file names to their bytes.

    `classes` are the arguments of the command, `asked` the calls that they lead to, as (name, whether it was named).
    """

    seed: int
    schema: Schema
    mof: str
    toml: str
    files: dict
    classes: list
    single_request: bool
    zone: str
    timezone: int
    asked: list
    labels: dict = field(default_factory=dict)
    kept: float = None  # share of the recording that is left when it is cut
    fail_on: str = None
    only_findings: bool = False

    def calls(self):
        return [[name for name, _ in call] for call in self.asked]

    def arguments(self, asked=True):
        """The labels and, if `asked`, what to collect."""
        labels = [text for key, value in self.labels.items() for text in ("--label", "%s=%s" % (key, value))]
        single = ["--single-request"] if asked and self.single_request else []
        return labels + single + (self.classes if asked else [])

    def status_arguments(self):
        return ["--fail-on", self.fail_on] if self.fail_on else []

    def filter_arguments(self):
        return ["--only-findings"] if self.only_findings else []

    def write(self, directory):
        os.makedirs(directory, exist_ok=True)
        contents = {"case.mof": self.mof.encode(), "case.toml": self.toml.encode(), **self.files}
        for name, content in contents.items():
            with open(os.path.join(directory, name), "wb") as stream:
                stream.write(content)


def generate(seed):
    rng = random.Random(seed)
    machine_type = rng.choice(MACHINE_TYPES)
    types = random_types(rng)
    schema = SchemaMaker(rng, types, machine_type).make()
    mof = mof_text(schema, types, MeaningMaker(rng, schema, types.odd_case).add())
    server = ServerMaker(rng, machine_type, schema)
    toml = server.make()
    parsed = tomllib.loads(toml)
    zone, timezone = rng.choice(ZONES)
    classes = requested_classes(rng, schema)
    if rng.random() < 0.75:
        classes = served_classes(schema, parsed, classes)
    single = rng.random() < 0.4
    arguments = random_arguments(rng, schema, parsed, classes)
    asked = asked_classes(schema, parsed, arguments)
    calls = [asked] if single else [[one] for one in asked]
    return Case(seed, schema, mof, toml, server.files, arguments, single, zone, timezone, calls, random_labels(rng),
                rng.random() if rng.random() < 0.1 else None,
                rng.choice(SEVERITIES) if rng.random() < 0.5 else None, rng.random() < 0.2)


def served_classes(schema, server, classes):
    """Those that this machine serves, or all if it serves none of them."""
    default = Plan(schema, server, []).served_by_default()
    return [name for name in classes if name in default] or classes


def random_arguments(rng, schema, server, classes):
    """The classes, as a user may name them: twice, by pattern, by base class, in another case, or not at all."""
    if rng.random() < 0.05:
        return []
    names = list(classes)
    if rng.random() < 0.1:
        names.insert(rng.randrange(len(names) + 1), rng.choice(names))
    if rng.random() < 0.08:
        bases = [base for base in model.BASE_CLASSES if schema.find(base)]
        names[rng.randrange(len(names))] = rng.choice(bases or names)
    default = Plan(schema, server, []).served_by_default()
    if default and rng.random() < 0.08:
        names.insert(rng.randrange(len(names) + 1), random_pattern(rng, rng.choice(default)))
    return [name.swapcase() if rng.random() < 0.03 else name for name in names]


def random_pattern(rng, name):
    """A pattern that matches the name."""
    start, end = sorted(rng.randrange(len(name) + 1) for _ in range(2))
    return rng.choice(["*", name[:start] + "*" + name[end:], "*" + name[start:] + "*",
                       name[:end] + "?" * (len(name) - end), (name[:start] + "*").lower()])


def random_labels(rng):
    if rng.random() < 0.85:
        return {}
    texts = ["7", "", "a b", "a=b", "\"quoted\"", "Gr\u00f6\u00dfe", "--x"]
    return {key: rng.choice(texts) for key in rng.sample(["rack", "_row", "Site2", "x" * 64], rng.choice([1, 1, 2]))}


def requested_classes(rng, schema):
    """Some of the schema's classes in any order; those that yield something are more likely."""
    likely = {model.DCAP_FILE: 0.45}
    likely.update({name: 0.6 for name in model.R8_CLASSES})
    families = set()
    for base in model.BASE_CLASSES:
        if schema.find(base):
            families.update(cls.name for cls in schema.descendants(schema.find(base)))
    chosen = [cls.name for cls in schema.classes
              if rng.random() < likely.get(cls.name, 0.55 if cls.name in families else 0.12)]
    if not chosen:
        chosen = [rng.choice(schema.classes).name]
    rng.shuffle(chosen)
    return chosen


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seed", type=int, required=True)
    parser.add_argument("--out", required=True, help="folder to write case.mof and case.toml to")
    options = parser.parse_args()
    case = generate(options.seed)
    case.write(options.out)
    print("TZ='%s' velhost collect --schema %s --sp sim:%s --format json %s"
          % (case.zone, os.path.join(options.out, "case.mof"), os.path.join(options.out, "case.toml"),
             shlex.join(case.status_arguments() + case.filter_arguments() + case.arguments())))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Random cases for comparing the collector with its reference model: a schema, a server and a request.

generate(seed) always returns the same case for the same seed. Run as a program, this writes one case and prints the
arguments to run it with.
"""

import argparse
import os
import random
from dataclasses import dataclass

import collector_model as model
from collector_model import Schema
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
    """One case; files maps names of files referenced by the server file to their bytes."""

    seed: int
    schema: Schema
    mof: str
    toml: str
    files: dict
    classes: list
    single_request: bool
    zone: str
    timezone: int

    def calls(self):
        return [self.classes] if self.single_request else [[name] for name in self.classes]

    def arguments(self):
        return (["--single-request"] if self.single_request else []) + self.classes

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
    mof = mof_text(schema, types)
    server = ServerMaker(rng, machine_type, schema)
    toml = server.make()
    zone, timezone = rng.choice(ZONES)
    classes = requested_classes(rng, schema)
    return Case(seed, schema, mof, toml, server.files, classes, rng.random() < 0.4, zone, timezone)


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
             " ".join(case.arguments())))


if __name__ == "__main__":
    main()

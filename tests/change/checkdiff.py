#!/usr/bin/env python3
"""Whether velhost diff reports exactly the changes that were made to random servers.

checkdiff.py --velhost FILE [--schema FILE] [--pairs N] [--seed N]

Each pair is a simulated server and the same one after random changes: other register values, registers and whole chips
that vanish, reads that fail, other files. The list of changes is kept here; nothing of it comes from velhost but the
layout of the registers, which is read from one collection with every register present.
"""
import argparse
import copy
import json
import pathlib
import random
import subprocess
import sys
import tempfile

AREAS = ["cpu_err", "ioh_err", "zyn_err"]
MACHINE_TYPES = ["4411", "4414"]
LINES = ["first failure", "second", "", "a line with \u00e9", "trace 0x1234", "end"]


def run(*command, statuses):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if done.returncode not in statuses:
        raise AssertionError(f"{command} ended with {done.returncode}: {done.stderr.decode()}")
    return done


class Register:
    """One register of one instance: where it is, and what it holds. None: the server does not have it."""

    def __init__(self, layout, value):
        self.layout, self.value, self.fails = layout, value, False


class Server:
    """Instances by key, each with its registers by name; files by key."""

    def __init__(self, machine_type, plan):
        self.machine_type, self.plan = machine_type, plan
        self.instances, self.files, self.nodes = {}, {}, 1

    def toml(self):
        rows = {}
        for registers in self.instances.values():
            for register in registers.values():
                if register.value is None:
                    continue
                chip, address = register.layout["chip"], register.layout["address"]
                value = register.value.to_bytes(8, "little").hex(" ")
                rows[chip, address] = f'{{ chip = {chip}, address = {address}, value = "{value}" }}'
        text = f'machine_type = "{self.machine_type}"\n[[bmc_node]]\ntimestamp = "12 34 56 78"\n'
        text += "register = [\n" + ",\n".join(rows.values()) + "\n]\n"
        areas = [f'{{ name = "{key.split("/")[2]}", data = "{data.hex(" ")}" }}' for key, data in self.files.items()]
        text += "storage_area = [\n" + ",\n".join(areas) + "\n]\n"
        number = 0
        for key, name in self.plan:
            number += 1
            if self.instances[key][name].fails:
                text += f'[[fault]]\non = "register"\nnth = {number}\ncompletion_code = 0xC3\n'
        return text

    def has(self, key):
        return any(register.value is not None for register in self.instances[key].values())


def read_layout(velhost, folder, machine_type):
    """The registers of the classes that are read one by one, in the order of their reads."""
    path = folder / "all.toml"
    path.write_text(f'machine_type = "{machine_type}"\nunlisted_registers = "pattern"\n[[bmc_node]]\n'
                    'timestamp = "12 34 56 78"\n')
    done = run(velhost, "collect", "--sp", f"sim:{path}", "--format", "json", statuses=(0,))
    instances, plan = {}, []
    for instance in json.loads(done.stdout)["instances"]:
        if instance["origin"]["path"] != "r8":
            continue
        for name, register in instance["registers"].items():
            plan.append((instance["key"], name))
            instances.setdefault(instance["key"], {})[name] = {
                "chip": instance["origin"]["chip"], "address": register["address"], "width": register["width"],
                "role": register.get("role", "state")}
    return instances, plan


def random_value(rng, layout):
    value = rng.getrandbits(layout["width"])
    return value & rng.getrandbits(layout["width"]) if rng.random() < 0.5 else value


def random_file(rng):
    """At least ten bytes: the collector fills up what is shorter."""
    if rng.random() < 0.5:
        lines = ["captured by the BMC", *(rng.choice(LINES) for _ in range(rng.randrange(6)))]
        rng.shuffle(lines)
        return "".join(line + "\n" for line in lines).encode()
    return bytes(rng.randrange(256) for _ in range(rng.randrange(10, 40)))


def random_server(rng, machine_type, layout, plan):
    server = Server(machine_type, plan)
    for key, registers in layout.items():
        isThere = rng.random() < 0.8
        server.instances[key] = {
            name: Register(one, random_value(rng, one) if isThere and rng.random() < 0.9 else None)
            for name, one in registers.items()}
    for area in AREAS:
        if rng.random() < 0.7:
            server.files[f"KROSG_DCAPFile/node0/{area}"] = random_file(rng)
    return server


def change(rng, server):
    """Another server, with some of the things changed that can change."""
    other = copy.deepcopy(server)
    for key, registers in other.instances.items():
        if rng.random() < 0.15:  # the chip vanishes, or appears
            for register in registers.values():
                isGone = server.has(key)
                register.value = None if isGone else random_value(rng, register.layout)
            continue
        for register in registers.values():
            if rng.random() < 0.1:
                register.value = random_value(rng, register.layout)
            elif rng.random() < 0.03:
                register.value = None
    for area in AREAS:
        key = f"KROSG_DCAPFile/node0/{area}"
        if rng.random() < 0.3:
            other.files[key] = random_file(rng)
        elif rng.random() < 0.1:
            other.files.pop(key, None)
    return other


def let_reads_fail(rng, server):
    for registers in server.instances.values():
        present = [register for register in registers.values() if register.value is not None]
        for register in present[1:]:  # so that the instance is still delivered
            register.fails = rng.random() < 0.03


def expected_changes(before, after):
    """What diff has to say: sets of tuples by the name of its member."""
    found = {name: set() for name in ("keys", "values", "files", "missing", "uncompared")}
    for key, registers in before.instances.items():
        if not before.has(key) or not after.has(key):
            if before.has(key) != after.has(key):
                found["keys"].add((key, "appeared" if after.has(key) else "vanished"))
            continue
        for name, register in registers.items():
            other = after.instances[key][name]
            if register.fails or other.fails:
                found["uncompared"].add((key, name, register.fails, other.fails))
            elif (register.value is None) != (other.value is None):
                found["missing"].add((key, name, "appeared" if register.value is None else "vanished"))
            elif register.value != other.value:
                found["values"].add((key, name, register.value, other.value))
    for key in {**before.files, **after.files}:
        old, new = before.files.get(key), after.files.get(key)
        if old is None or new is None:
            found["keys"].add((key, "appeared" if old is None else "vanished"))
        elif old != new:
            found["files"].add((key, len(old), len(new)))
    return found


def reported_changes(diff):
    uncompared = {(one["key"], one["property"], "before" in one, "after" in one) for one in diff["uncompared"]
                  if "bits" not in one}
    values = {(one["key"], one["register"], int(one["before"], 16), int(one["after"], 16)) for one in diff["registers"]}
    return {"keys": {(one["key"], one["change"]) for one in diff["keys"]}, "values": values,
            "files": {(one["key"], one["before_size"], one["after_size"]) for one in diff["files"]},
            "missing": {(one["key"], one["property"], one["change"]) for one in diff["missing"]},
            "uncompared": uncompared}


def number(value):
    return int(value, 16) if isinstance(value, str) else value


def ends_of(bits):
    high, _, low = bits.partition(":")
    return int(high), int(low or high)


def check_fields(diff, results):
    """Each field that is listed on a side and whose bits changed is reported, with the bits of the values."""
    fields = {}
    for result in results:
        for instance in result["instances"]:
            for name, register in instance.get("registers", {}).items():
                for field in register["fields"]:
                    fields.setdefault((instance["key"], name), {})[field["bits"]] = field["name"]
    for one in diff["registers"]:
        before, after = int(one["before"], 16), int(one["after"], 16)
        expected = {}
        for bits, name in fields.get((one["key"], one["register"]), {}).items():
            high, low = ends_of(bits)
            mask = (1 << high - low + 1) - 1
            if (before >> low & mask) != (after >> low & mask):
                expected[bits] = (name, before >> low & mask, after >> low & mask)
        found = {field["bits"]: (field["name"], number(field["before"]), number(field["after"]))
                 for kind in ("set", "cleared", "changed") for field in one[kind]}
        assert found == expected, (one, expected)
        assert all(field["before"] in (0, "0x0000000000000000") for field in one["set"]), one
        assert all(field["after"] in (0, "0x0000000000000000") for field in one["cleared"]), one


def check_counters(diff, expected, layout):
    """Counters are reported as such and not as registers."""
    counters = {(key, name): (old, new) for key, name, old, new in expected["values"]
                if layout[key][name]["role"] == "counter"}
    reported = {}
    for one in diff["counters"]:
        high, low = ends_of(one["bits"]) if "bits" in one else (63, 0)
        old, new = counters[one["key"], one["register"]]
        mask = (1 << high - low + 1) - 1
        assert (number(one["before"]), number(one["after"])) == (old >> low & mask, new >> low & mask), one
        smaller = number(one["after"]) < number(one["before"])
        assert ("reset_or_wrapped" in one) == smaller, one
        assert smaller or number(one["difference"]) == number(one["after"]) - number(one["before"]), one
        reported[one["key"], one["register"]] = True
    return counters, reported


def check_files(diff, before, after):
    for one in diff["files"]:
        old, new = before.files[one["key"]], after.files[one["key"]]
        same = next((i for i, (a, b) in enumerate(zip(old, new)) if a != b), min(len(old), len(new)))
        assert one["first_difference"] == same, one
        if "lines" not in one:
            continue
        lines, others = (data.decode().split("\n")[:-1] for data in (old, new))
        for line in sorted((line for line in one["lines"] if line["change"] == "removed"), key=lambda x: -x["line"]):
            assert lines.pop(line["line"] - 1) == line["text"], one
        for line in sorted((line for line in one["lines"] if line["change"] == "added"), key=lambda x: x["line"]):
            lines.insert(line["line"] - 1, line["text"])
        assert lines == others, one


def finding_names(result):
    return {(one["key"], one["register"], one["bits"]): (one["severity"], one["masked"], one["first"], one["value"])
            for one in result["findings"]}


def check_findings(diff, results, expected):
    old, new = (finding_names(result) for result in results)
    unread = {(key, name) for key, name, *_ in expected["uncompared"]}
    names = {name for name in {**old, **new} if name[:2] not in unread}
    reported = {(one["key"], one["register"], one["bits"]): one["change"] for one in diff["findings"]}
    unjudged = {(one["key"], one["property"], one["bits"]) for one in diff["uncompared"] if "bits" in one}
    unknown = {(one["key"], one["register"], one["bits"]) for result in results for one in result["findings"]
               if one["unknown"]}
    assert unjudged <= unknown, unjudged
    for name in names - unjudged:
        if old.get(name) == new.get(name):
            assert name not in reported, name
        elif name not in old or name not in new:
            assert reported.get(name) == ("new" if name in new else "gone"), name
        elif name not in unknown:
            assert reported.get(name) == "changed", name
    assert set(reported) <= names - unjudged, reported


def check_pair(arguments, folder, rng, validate):
    machine_type = rng.choice(MACHINE_TYPES)
    layout, plan = arguments.layouts[machine_type]
    before = random_server(rng, machine_type, layout, plan)
    after = change(rng, before)
    for server in (before, after):
        if rng.random() < 0.5:
            let_reads_fail(rng, server)
    paths, results = [], []
    for name, server in (("before", before), ("after", after)):
        (folder / f"{name}.toml").write_text(server.toml(), encoding="utf-8")
        form = rng.choice(["json", "jsonl"])
        paths.append(folder / f"{name}.{form}")
        sp = f"sim:{folder / name}.toml"
        run(arguments.velhost, "collect", "--sp", sp, "--format", form, "-o", paths[-1], statuses=(0, 3))
        shown = run(arguments.velhost, "show", paths[-1], "--format", "json", statuses=(0,)).stdout
        results.append(json.loads(shown))
    expected = expected_changes(before, after)
    done = run(arguments.velhost, "diff", *paths, "--format", "json", statuses=(0, 1, 3))
    diff = json.loads(done.stdout)
    validate(diff)
    check_fields(diff, results)
    counters, counted = check_counters(diff, expected, layout)
    expected["values"] = {value for value in expected["values"] if value[:2] not in counters}
    reported = reported_changes(diff)
    reported["values"] = {value for value in reported["values"] if value[:2] not in counters}
    for name, changes in expected.items():
        assert reported[name] == changes, (name, reported[name] ^ changes)
    assert set(counters) == set(counted) | {one[:2] for one in counters if one in
                                            {(r["key"], r["register"]) for r in diff["registers"]}}
    check_files(diff, before, after)
    check_findings(diff, results, expected)
    assert not diff["classes"], diff["classes"]
    differs = any(diff[name] for name in ("keys", "registers", "counters", "files", "missing", "findings"))
    assert done.returncode == (1 if differs else 3 if diff["uncompared"] else 0) == diff["exit_status"]
    same = run(arguments.velhost, "diff", paths[0], paths[0], statuses=(0, 3))
    assert b"Differences   none" in same.stdout


def validator(path):
    if path is None:
        return lambda document: None
    try:
        import jsonschema
    except ImportError:
        return lambda document: None
    schema = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema).validate


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--velhost", required=True)
    parser.add_argument("--schema")
    parser.add_argument("--pairs", type=int, default=10)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    validate = validator(arguments.schema)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        arguments.layouts = {one: read_layout(arguments.velhost, folder, one) for one in MACHINE_TYPES}
        for pair in range(arguments.pairs):
            try:
                check_pair(arguments, folder, random.Random(f"{arguments.seed}/{pair}"), validate)
            except AssertionError:
                print(f"the pair {pair} of the seed {arguments.seed}:", file=sys.stderr)
                raise
    print(f"{arguments.pairs} pairs")


if __name__ == "__main__":
    main()

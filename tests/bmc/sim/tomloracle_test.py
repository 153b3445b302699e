#!/usr/bin/env python3
"""Compares the host's TOML reader with Python's: both read the same values, or both refuse the text.

    tomloracle_test.py TOMLSHAPE [COUNT [SEED]]

Besides all pairs of the statements below, COUNT random texts are made from the pieces, with a seed.
"""

import datetime
import itertools
import json
import random
import subprocess
import sys
import tomllib

VALUES = [
    "1", "0", "-0", "+7", "007", "1_000", "1__0", "_1", "1_", "0x_1", "0xDEAD_beef", "0XF", "0o17", "0o8", "0b101", "0b2",
    "-0x1", "9223372036854775807", "9223372036854775808", "-9223372036854775808", "-9223372036854775809",
    "0x7fffffffffffffff", "0x8000000000000000", "1.0", "1.", ".5", "1e5", "1E+05", "1.5e-3", "1e", "1.e3", "01.5", "0.0",
    "1_0.0_1", "1._0", "inf", "-inf", "+nan", "Inf", "true", "false", "True", "tru", "truex",
    "2026-01-31", "2026-02-29", "2024-02-29", "2026-13-01", "2026-00-10", "2026-01-31T12:34:56", "2026-01-31 12:34:56",
    "2026-01-31t12:34:56z", "2026-01-31T12:34:56.5+01:00", "2026-01-31T12:34:56.1234567-16:39", "2026-01-31T12:34",
    "2026-01-31T24:00:00", "2026-01-31T12:60:00", "2026-01-31T12:34:60", "2026-01-31T12:34:56+24:00", "2026-1-31",
    "2026-01-31T12:34:56.", "2026-01-31T", "2026-01-31 ", "2026-01-31  12:34:56", "2026-01-31 # c", "2026-01-31 1",
    "12:34:56", "12:34:56.789", "12:34", "24:00:00", "2026-01-31T?2:34:56", "2000-01-0" + "_" * 116 + "1 4",
    '""', '"a"', '"a\\tb\\"c\\\\d\\u00e4\\U0001F600"', '"\\ud800"', '"\\U00110000"', '"\\e"', '"\\x41"', '"a\nb"', '"\t"',
    '"\x01"', '"\x7f"', '"\u00e4\u20ac\U0001f600"', "''", "'a\\b'", "'a'b'", "'\x01'", '"open', "'open", '"a\\"',
    '""""""', '"""a"b""c"""', '"""a"""""', '"""a""""""', '"""a\n  \\\n  b"""', '"""\\ \n x"""', '"""\\ x"""', '"""\r\na\r\nb"""',
    '"""a\rb"""', '"""\\', '"""open', "''''''", "'''a'b''c'''", "'''a'''''", "'''a''''''", "'''\n\na\\\n'''", "'''open",
    "[]", "[1]", "[1,]", "[,]", "[1,,2]", "[1 2]", "[1,\n# c\n2\n]", "[[1],[]]", "[1", "[", "]", "[{}]", "[{a=1},{a=2}]",
    "{}", "{a=1}", "{a=1,}", "{a=1 b=2}", "{a=1,a=2}", "{a.b=1,a.c=2}", "{a={b=1},a.c=2}", "{a.b=1,a={}}", "{\na=1}",
    "{a=1 # c\n}", "{a", "{a=", "{", "}", "{'a'=1,\"b\"=2}", "{a=[1,{b=2}]}", "\u00e4", "a", "", "#", "1 2", "1,", "=", "\0",
]
STATEMENTS = [
    "a = 1", "a=1", "  a\t=\t1  # c", "a = 1 b = 2", "a 1", "a", "= 1", "a.b = 1", "a . b = 1", "a.b.c = 1", "a..b = 1",
    ".a = 1", "a. = 1", "b = {}", "b.c = 1", "b = []", "b = [{}]", "a = {b=1}", "a = {b.c=1}", "\"a\" = 1", "'a' = 1",
    '"a.b" = 1', '"" = 1', '"""a""" = 1', "'''a''' = 1", "a\n= 1", "a =\n1", '"a', "3 = 1", "1.2 = 1", "-_ = 1", "\u00e4 = 1",
    "[a]", "[ a ]", "[a.b]", "[a . b]", "[a.b.c]", "[b]", "[b.c]", "['a'.\"b\"]", "[]", "[a", "[a]]", "[a] b = 1", "[a] # c",
    "[[a]]", "[[a.b]]", "[[ a ]]", "[ [a]]", "[[a] ]", "[[a]", "[[b]]", "[[a.b.c]]", "[[b.c]]", "[.a]", "[a.]", "[a b]",
    "# c", "# \x01", "# \u00e4", "", "\t", "\r", "]", "}", ",", "\x0b", "\ufeffa = 1", "a = 1\r", "# c\r",
    "c.a = 1", "c.b = 1", "[c]", "[c.a]", "[c.d]", "[[c.e]]", "c.d.e = 1", "[c.d.e]", "[a.b.d]", "a.b.d = 1", "b.d.e = 1",
]


def expected(text):
    """The text's shape by Python's reader; None if it refuses the text."""
    try:
        return shape(tomllib.loads(text))
    except (tomllib.TOMLDecodeError, ValueError, OverflowError):
        return None


def shape(value):
    if isinstance(value, dict):
        return {key.encode().hex(): shape(member) for key, member in value.items()}
    if isinstance(value, list):
        return [shape(element) for element in value]
    if isinstance(value, str):
        return value.encode().hex()
    if isinstance(value, float):
        return "a floating-point number"
    if isinstance(value, datetime.datetime):
        return "date-time " + cim_text(value)
    if isinstance(value, datetime.date):
        return "a date"
    if isinstance(value, datetime.time):
        return "a time"
    if isinstance(value, int) and not -2**63 <= value < 2**63:
        raise OverflowError
    return value


def cim_text(moment):
    if moment.tzinfo is None:
        return ""
    offset = int(moment.utcoffset().total_seconds() // 60)
    return f"{moment:%Y%m%d%H%M%S}.{moment.microsecond:06}{'-' if offset < 0 else '+'}{abs(offset):03}"


def texts(count, seed):
    yield from STATEMENTS
    yield from (f"a = {value}" for value in VALUES)
    yield from (f"a = {value}\r\nb = 2" for value in VALUES)
    yield from (f"a = [{value}, {value}]\nb = {{ c = {value} }}" for value in VALUES)
    yield from map("\n".join, itertools.product(STATEMENTS, repeat=2))
    draw = random.Random(seed)
    for _ in range(count):
        lines = [f"k{i} = {draw.choice(VALUES)}" if draw.random() < 0.3 else draw.choice(STATEMENTS)
                 for i in range(draw.randint(1, 6))]
        text = draw.choice(["\n", "\n", "\r\n"]).join(lines)
        for _ in range(draw.choice([0, 0, 0, 1, 2])):
            at = draw.randint(0, len(text))
            cut = draw.choice([0, 0, 1, 3])
            text = text[:at] + draw.choice(["", " ", "\n", ".", "\"", "'", "=", "[", "]", "{", "}", ",", "#", "0", "\\", "\r",
                                            "\u00e4", "_", "e", "-", "\0"]) + text[at + cut:]
        yield text


def main():
    count, seed = (int(word) for word in (sys.argv[2:] + ["20000", "1"][len(sys.argv) - 2:])[:2])
    documents = list(texts(count, seed))
    stream = b"".join(b"%d\n%b" % (len(text.encode()), text.encode()) for text in documents)
    run = subprocess.run([sys.argv[1]], input=stream, capture_output=True, check=True)
    lines = run.stdout.decode().splitlines()
    bad, read = int(len(lines) != len(documents)), 0
    for text, line in zip(documents, lines):
        found = json.loads(line)
        refused = isinstance(found, list)
        wanted = expected(text.removeprefix("\ufeff"))
        read += wanted is not None
        if refused != (wanted is None) or not (refused or found == wanted):
            bad += 1
            print(f"{text!r}:\n  found    {bytes.fromhex(found[0]).decode() if refused else found}\n  expected {wanted}")
    print(f"{len(documents)} texts, {read} of them TOML, {bad} read in another way")
    return 1 if bad or read < len(documents) // 20 else 0


if __name__ == "__main__":
    sys.exit(main())

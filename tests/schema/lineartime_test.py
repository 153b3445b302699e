#!/usr/bin/env python3
"""Checks that reading a schema ten times the size takes about ten times the instructions, whichever part grows.

    lineartime_test.py READSHAPE [SHAPE...]

valgrind counts them, so neither the machine nor its load matters; without valgrind the test is skipped (77).
"""

import concurrent.futures
import re
import shutil
import subprocess
import sys

SMALL = 100
# The excess over ten allows for growing hash tables and for sorting.
MOST = 12.5


def instructions(program, shape, size):
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program, shape, str(size)]
    run = subprocess.run(command, capture_output=True, text=True, check=True)
    return int(re.search(r"Collected : (\d+)", run.stderr).group(1))


def growth(program, shape, start):
    """`start` is the number of instructions for an empty schema."""
    return (instructions(program, shape, 10 * SMALL) - start) / (instructions(program, shape, SMALL) - start)


def main():
    if shutil.which("valgrind") is None:
        print("no valgrind")
        return 77
    program = sys.argv[1]
    shapes = sys.argv[2:] or subprocess.run([program], capture_output=True, text=True, check=True).stdout.split()
    start = instructions(program, "classes", 0)
    bad = 0
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for shape, factor in zip(shapes, pool.map(lambda shape: growth(program, shape, start), shapes)):
            good = factor <= MOST
            bad += not good
            print(f"{shape:32} {factor:6.2f}{'' if good else '  more than ' + str(MOST)}", flush=True)
    return 1 if bad or not shapes else 0


if __name__ == "__main__":
    sys.exit(main())

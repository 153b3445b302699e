#!/usr/bin/env python3
"""Write the binary files that the simulated servers of this folder refer to.

    python3 make-demo-blocks.py [FOLDER]

FOLDER defaults to this script's own. The files are committed; run the script only
after changing the tables below or a record number in the schema. The output
depends only on this file.

block-first-copy.bin   register block of 4096 bytes, both timestamp headers valid
block-second-copy.bin  register block whose first header is blank
block-blank.bin        register block without a valid timestamp header
capture-nodeN-AREA.bin capture files, 0 < N <= 2, AREA = cpu_err, ioh_err, zyn_err
"""

import struct
import sys
from pathlib import Path

BLOCK_SIZE = 4096
SECOND_COPY = 2040
HEADER_SIZE = 7
RECORD_STRIDE = 8
BANK_RECORDS = 256
BANKS = 2

BRIDGE, MEMORY, CACHE = 0x0A, 0x0B, 0x0C

# Record number in a bank, then the register's value in each of the four banks:
# two of the first block, two of the second. A single value is used for all four.
REGISTERS = {
    BRIDGE: {
        2: [0],
        4: [0x0000000000100000],
        6: [0x0000000000462030],
        8: [0, 0, 0, 0x0000000000002000],
        10: [0x0000000000002000],
        12: [0],
        14: [0],
        40: [0],
        42: [0],
        44: [0],
        60: [0],
        62: [0],
        64: [0],
        66: [0],
    },
    MEMORY: {
        80: [0x0000000000000001, 0, 0, 0],
        82: [0x00000000000000F0],
        84: [0x0000001A3F4C2E40, 0, 0, 0],
        86: [0x00000000000000C8, 0, 0, 0],
        88: [0x0000001100000000, 0, 0, 0],
        90: [0x0001A2C000000000, 0x0001A2C000000000, 0x0000F81400000000, 0x0000F81400000000],
        92: [0],
        112: [0],
        114: [0],
        116: [0],
        128: [0],
        130: [0],
        132: [0],
    },
    CACHE: {
        160: [0],
        162: [0x000000000000F000],
        164: [0],
        166: [0],
        168: [0],
        170: [0],
        200: [0],
        202: [0],
        220: [0],
        222: [0],
        224: [0],
        226: [0x000000000000000F],
    },
}

JANUARY_31_113005 = bytes([0, 26, 1, 31, 11, 30, 5])
JANUARY_31_113006 = bytes([0, 26, 1, 31, 11, 30, 6])
JANUARY_30_231040 = bytes([0, 26, 1, 30, 23, 10, 40])
BLANK_HEADER = bytes(HEADER_SIZE)


def register_block(first_header, second_header, first_chip):
    """One block: both headers, and every register of two banks.

    If the first header is valid, the records start after it. Otherwise they start
    at the first byte of the block, not after the second header.
    """
    block = bytearray(BLOCK_SIZE)
    block[0:HEADER_SIZE] = first_header
    block[SECOND_COPY : SECOND_COPY + HEADER_SIZE] = second_header
    base = HEADER_SIZE if any(first_header) else 0
    for section, registers in REGISTERS.items():
        for number, values in registers.items():
            for bank in range(BANKS):
                chip = first_chip + bank
                value = values[chip if len(values) > 1 else 0]
                record = bytes([section, chip, number]) + value.to_bytes(8, "big")
                at = base + (number + bank * BANK_RECORDS) * RECORD_STRIDE
                assert not any(block[at : at + len(record)]), "records overlap"
                block[at : at + len(record)] = record
    return bytes(block)


TEXT, RAW = 0x01, 0x02


def entry(kind, payload):
    """One entry of a capture file: kind, length and payload."""
    return struct.pack("<BH", kind, len(payload)) + payload


def text(line):
    return entry(TEXT, line.encode("ascii") + b"\n")


def raw(*words):
    return entry(RAW, b"".join(word.to_bytes(8, "little") for word in words))


def capture_file(node, time, *entries):
    """A capture file: mark, version, node, time, length of the entries, entries."""
    body = b"".join(entries)
    return b"DCAP" + struct.pack("<BB", 1, node) + time[1:] + struct.pack("<I", len(body)) + body


def capture_files():
    """File name -> content, for three storage areas of two nodes."""
    return {
        "capture-node1-cpu_err.bin": capture_file(
            1, JANUARY_31_113005,
            text("cpu_err: processors of node 1, captured at first failure"),
            text("cpu 0 bank 7: corrected memory read error, rank 3"),
            raw(0x0000070300000001, 0x0000001A3F4C2E40, 0x00000000000000C8, 0x11),
            text("cpu 0 bank 7: threshold of 16 passed, reporting is now off"),
            text("cpu 0 bank 4: no data error"),
            raw(0, 0, 0, 0),
            text("cpu 1: no error"),
            text("cpu 2: no error"),
            text("cpu 3: no error"),
        ),
        "capture-node1-ioh_err.bin": capture_file(
            1, JANUARY_31_113005,
            text("ioh_err: I/O bridges of node 1, captured at first failure"),
            text("VO bridge 3: error status 00050000, malformed packet first"),
            raw(0x0000001200050000, 0x4A00000104000004),
            text("VO bridge 3: slot 5 isolated, adapter reset"),
            text("T4 bridge 2: link 0: x4, 2.5 GT/s"),
        ),
        "capture-node1-zyn_err.bin": capture_file(
            1, JANUARY_31_113005,
            text("zyn_err: memory controllers of node 1, captured at first failure"),
            text("controller 0: 17 corrected errors, last in rank 3, row 1A2C0"),
            raw(0x0000000000000001, 0x00000000000000F0, 0x0000001A3F4C2E40, 0xC8, 0x11),
            text("controller 0: scrubbing goes on"),
            text("controller 1: no error"),
        ),
        "capture-node2-cpu_err.bin": capture_file(
            2, JANUARY_31_113006,
            text("cpu_err: processors of node 2, captured at first failure"),
            text("cpu 0: no error"),
            text("cpu 1: no error"),
            text("cpu 2: no error"),
            text("cpu 3: no error"),
            raw(0, 0, 0, 0),
        ),
        "capture-node2-ioh_err.bin": capture_file(
            2, JANUARY_31_113006,
            text("ioh_err: I/O bridges of node 2, captured at first failure"),
            text("bridge 0: no error"),
            text("bridge 1: correctable error status 00002000, all of it masked"),
            raw(0x0000000000002000, 0x0000000000002000, 0x0000000000000000),
            text("bridge 1: nothing was done, all links are up"),
        ),
        "capture-node2-zyn_err.bin": capture_file(
            2, JANUARY_31_113006,
            text("zyn_err: memory controllers of node 2, captured at first failure"),
            text("controller 0: no error, the scrubber is busy with row 0F814"),
            raw(0x0000000000000000, 0x00000000000000F0, 0x0000000000000000, 0, 0),
            text("controller 1: no error"),
        ),
    }


def main():
    folder = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).resolve().parent)
    files = {
        "block-first-copy.bin": register_block(JANUARY_31_113005, JANUARY_30_231040, 0),
        "block-second-copy.bin": register_block(BLANK_HEADER, JANUARY_31_113006, 2),
        "block-blank.bin": bytes(BLOCK_SIZE),
        **capture_files(),
    }
    for name, content in files.items():
        (folder / name).write_bytes(content)


if __name__ == "__main__":
    main()

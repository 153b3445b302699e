"""Writes the trace files that whole collections are compared with.

The make_trace.py next to each file spells out its trace line by line; only byte dumps are formatted here, so that
nobody has to type 257 numbers.
"""

ERROR, WARNING, STATUS, DEBUG, VERBOSE = range(5)


def dump(data, count):
    """The first `count` bytes in decimal, padded with zeros, eight per line, between two newlines."""
    values = list(data) + [0] * (count - len(data))
    lines = [values[i:i + 8] for i in range(0, count, 8)]
    return "\n" + "\n".join("".join("%d " % value for value in line) for line in lines) + "\n"


def pairs(data):
    """Each byte as two hexadecimal digits and a blank."""
    return "".join("%02x " % byte for byte in data)


def write(path, lines):
    """Writes each (severity, message): the severity, a colon and the message. Further lines of a message start with a
    blank and a colon, and every line ends with "$"."""
    with open(path, "w", encoding="utf-8", newline="\n") as out:
        for severity, message in lines:
            out.write("%d:" % severity + message.replace("\n", "$\n :") + "$\n")

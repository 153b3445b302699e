"""Writes the trace files that whole collections are held against.

The make_trace.py beside each file spells its trace out line by line; only the runs of bytes are formatted
here, so that nobody has to type 257 numbers.
"""

ERROR, WARNING, STATUS, DEBUG, VERBOSE = range(5)


def dump(data, count):
    """`count` bytes as decimals, eight a line, missing ones as zeros; a newline before and behind."""
    values = list(data) + [0] * (count - len(data))
    lines = [values[i:i + 8] for i in range(0, count, 8)]
    return "\n" + "\n".join("".join("%d " % value for value in line) for line in lines) + "\n"


def pairs(data):
    """Bytes as two hexadecimal digits with a blank behind each."""
    return "".join("%02x " % byte for byte in data)


def write(path, lines):
    """One line per (severity, message): the severity and a colon in front, further lines of the message
    with a blank and a colon, and "$" at the end of each."""
    with open(path, "w", encoding="utf-8", newline="\n") as out:
        for severity, message in lines:
            out.write("%d:" % severity + message.replace("\n", "$\n :") + "$\n")

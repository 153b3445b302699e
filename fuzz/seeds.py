#!/usr/bin/env python3
"""Seeds of the fuzz targets: fuzz/corpus/TARGET.seeds has those of a target, each under a name that describes it.

    fuzz/seeds.py unpack FILE.seeds FOLDER      writes each seed into a file of its name; empties the folder first
    fuzz/seeds.py add FILE.seeds NAME INPUT...  appends inputs, a find for example; the names of further ones are
                                                NAME2, NAME3, ...

Lines before the first seed are comments. A seed begins with the line "== NAME" and is the text up to the line end
before the next seed; so a seed ends in a newline if an empty line follows it. In a text, <XX> is the byte with the
hexadecimal value XX. After "== NAME: bytes", a seed is a list of such values and of ASCII texts in double quotes; *N
after one repeats it, and "#" begins a comment.
"""
import pathlib
import re
import shutil
import sys
import textwrap

HEADER = re.compile(r"== (\w+)(: bytes)?")
ESCAPE = re.compile(rb"<([0-9A-F]{2})>")
ITEM = re.compile(r"""\s*(?:#.*|(?:([0-9a-f]{2})|"([ !#-~]*)")(?:\*(\d+))?)(?!\S)""")
TOKEN = re.compile(rb"(.)\1{7,}|[A-Za-z0-9_./-]{4,}|.", re.DOTALL)
WIDTH = 70


def bytes_of(lines):
    data = b""
    for line in lines:
        at = 0
        while line[at:].strip():
            item = ITEM.match(line, at)
            if not item:
                raise ValueError(f"not a list of bytes: {line[at:]}")
            value, text, count = item.groups()
            data += (bytes.fromhex(value) if value else (text or "").encode()) * int(count or 1)
            at = item.end()
    return data


def text_of(lines):
    return ESCAPE.sub(lambda escape: bytes.fromhex(escape[1].decode()), "\n".join(lines).encode())


def parse(content):
    """The seeds by their names."""
    seeds, name = {}, None
    for line in content.removesuffix("\n").split("\n"):
        header = HEADER.fullmatch(line)
        if header:
            name = header[1]
            if name in seeds:
                raise ValueError(f"two seeds have the name {name}")
            seeds[name] = (bytes_of if header[2] else text_of, [])
        elif name:
            seeds[name][1].append(line)
        elif not line.startswith("#"):
            raise ValueError(f"neither a comment nor a seed: {line}")
    return {name: read(lines) for name, (read, lines) in seeds.items()}


def token_of(found):
    token = found[0]
    if found[1]:
        return f"{token[:1].hex()}*{len(token)}"
    return f'"{token.decode()}"' if len(token) > 1 else token.hex()


def formatted(name, data):
    """The lines of a seed: a text if it is one, but for a few bytes, otherwise a list of bytes."""
    text = ESCAPE.sub(lambda found: b"<3C>" + found[0][1:], data).replace(b"\n== ", b"\n<3D>= ")
    text = re.sub(rb" (?=\n|$)", b"<20>", text)
    text = re.sub(rb"[\x00-\x09\x0b-\x1f\x7f]", lambda found: b"<%02X>" % found[0][0], text)
    try:
        if len(text) <= len(data) + len(data) // 4 + 3 and not data.startswith(b"== "):
            return [f"== {name}", *text.decode().split("\n")]
    except UnicodeDecodeError:
        pass
    rows = textwrap.wrap(" ".join(map(token_of, TOKEN.finditer(data))), WIDTH)
    return [f"== {name}: bytes", *rows]


def unpack(path, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, data in parse(path.read_text("utf-8")).items():
        (folder / name).write_bytes(data)


def add(path, name, inputs):
    content = path.read_text("utf-8") if path.exists() else ""
    for number, source in enumerate(inputs, 1):
        content += "\n".join(formatted(name + (str(number) if number > 1 else ""), source.read_bytes())) + "\n"
    parse(content)
    path.write_text(content, "utf-8")


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "unpack":
        unpack(pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]))
    elif len(sys.argv) > 4 and sys.argv[1] == "add":
        add(pathlib.Path(sys.argv[2]), sys.argv[3], [pathlib.Path(name) for name in sys.argv[4:]])
    else:
        sys.exit(__doc__.split("\n\n")[1])


if __name__ == "__main__":
    main()

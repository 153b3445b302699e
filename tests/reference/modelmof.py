"""Reads MOF as far as the shipped schema goes: declarations of qualifiers, and classes with properties."""

import os
import re

from modelschema import CimClass, Property, Schema

TOKEN = re.compile(r'//[^\n]*|/\*.*?\*/|("(?:[^"\\]|\\.)*")|([][{}(),:;=])|([^][{}(),:;="\s]+)', re.S)
ESCAPES = {"t": "\t", "n": "\n", "r": "\r", "b": "\b", "f": "\f"}
CONSTANTS = {"true": True, "false": False, "null": None}


class MofReader:
    """Reads the tokens of one text after the other into classes."""

    def __init__(self):
        self.classes = []
        self.restricted = set()
        self.tokens = []

    def read(self, text):
        self.tokens = [found[0] for found in TOKEN.finditer(text) if found.lastindex][::-1]
        while self.tokens:
            if self.tokens[-1].lower() == "qualifier":
                self.read_declaration()
            else:
                self.read_class()

    def take(self, *expected):
        token = self.tokens.pop()
        if expected and token.lower() not in expected:
            raise ValueError("%s instead of one of %s" % (token, expected))
        return token

    def takes(self, token):
        """Takes the token if it is the next one."""
        if self.tokens[-1].lower() != token:
            return False
        self.tokens.pop()
        return True

    def read_declaration(self):
        self.take("qualifier")
        name, words = self.take(), []
        while not self.takes(";"):
            words.append(self.take().lower())
        if "restricted" in words:
            self.restricted.add(name)

    def read_class(self):
        qualifiers = self.read_qualifiers()
        self.take("class")
        cls = CimClass(self.take(), self.take() if self.takes(":") else None, qualifiers)
        self.take("{")
        while not self.takes("}"):
            cls.properties.append(self.read_property())
        self.take(";")
        self.classes.append(cls)

    def read_property(self):
        qualifiers = self.read_qualifiers()
        kind, name, is_array = self.take(), self.take(), self.takes("[")
        if is_array:
            self.take("]")
        self.take(";")
        return Property(name, kind, is_array, qualifiers)

    def read_qualifiers(self):
        """A qualifier without a value is a flag."""
        result = {}
        if not self.takes("["):
            return result
        while True:
            name = self.take()
            result[name] = self.read_values() if self.tokens[-1] in "({" else True
            if self.take(",", "]") == "]":
                return result

    def read_values(self):
        is_list = self.take("(", "{") == "{"
        values = []
        while not self.takes("}" if is_list else ")"):
            values.append(self.read_value())
            self.takes(",")
        return values if is_list else values[0]

    def read_value(self):
        """Strings that follow each other are one."""
        token = self.take()
        if not token.startswith('"'):
            return CONSTANTS[token.lower()] if token.lower() in CONSTANTS else int(token, 0)
        text = token[1:-1]
        while self.tokens[-1].startswith('"'):
            text += self.take()[1:-1]
        return re.sub(r"\\(.)", lambda found: ESCAPES.get(found[1], found[1]), text)


def read_folder(path):
    """The schema of the folder's MOF files, which are read in the order of their names."""
    reader = MofReader()
    for name in sorted(os.listdir(path)):
        if name.endswith(".mof"):
            with open(os.path.join(path, name), encoding="utf-8") as stream:
                reader.read(stream.read())
    return Schema(reader.classes, reader.restricted)

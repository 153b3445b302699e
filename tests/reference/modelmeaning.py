"""What registers mean: fields, roles and findings, from the qualifiers of the schema and the values that were read.

Bits are counted from the least significant here; only texts use the numbering of the register that they are about.
"""

import re
from dataclasses import dataclass, field

ROLES = ("errors", "mask", "severity", "first-error", "counter", "address", "syndrome", "log", "state", "identity")
NUMBERINGS = ("lsb0", "msb0")
SEVERITIES = ("fatal", "error", "corrected")  # the worst first
NAMED_BITS = ("errors", "mask", "severity")   # roles whose set bits are shown even if no field describes any
REFERENCES = ("MaskedBy", "EnabledBy", "FatalBy", "FirstErrorIn")

NUMBER = r"(0x[0-9A-Fa-f]+|\d+)"
FIELD = re.compile(r"(\d{1,2})(?::(\d{1,2}))?(?:/hex|=%s(?:-%s)?)? +(\S.*)" % (NUMBER, NUMBER), re.ASCII)
PART = re.compile(r"(.*?)(?: +(\d{1,2}):(\d{1,2}))?", re.ASCII)


# ---------------------------------------------------------------------------------------------------------
# Bits

@dataclass(frozen=True)
class Bits:
    """A run of bits, with its ends counted from the least significant bit of the register."""

    low: int
    high: int

    def width(self):
        return self.high - self.low + 1

    def of(self, value):
        return value >> self.low & (1 << self.width()) - 1

    def mask(self):
        return (1 << self.width()) - 1 << self.low

    def overlaps(self, other):
        return self.low <= other.high and other.low <= self.high


@dataclass(frozen=True)
class Numbering:
    """How a register counts its bits."""

    width: int
    msb0: bool

    def place(self, number):
        """Changes a bit's number to its place from the least significant, and back."""
        return self.width - 1 - number if self.msb0 else number

    def bits(self, first, last):
        """The bits from the more significant end to the other, or None if the register has none like that."""
        high, low = self.place(first), self.place(last)
        return Bits(low, high) if 0 <= low <= high < self.width else None

    def text(self, bits):
        ends = [self.place(bits.high), self.place(bits.low)]
        return "%d" % ends[0] if ends[0] == ends[1] else "%d:%d" % tuple(ends)


# ---------------------------------------------------------------------------------------------------------
# Fields

@dataclass
class Field:
    """A described field; texts are (first value, last value, text)."""

    bits: Bits
    name: str = None
    texts: list = field(default_factory=list)

    def text_of(self, value):
        return next((text for first, last, text in self.texts if first <= value <= last), None)

    def is_shown(self, value):
        return value != 0 or self.text_of(0) is not None


def number_of(text):
    return int(text, 16 if text.startswith("0x") else 10)


def read_fields(elements, numbering):
    """The fields that the elements describe; what breaks a rule is left out."""
    fields = []
    for element in elements:
        match = FIELD.fullmatch(element)
        bits = match and numbering.bits(int(match[1]), int(match[2] or match[1]))
        if not bits:
            continue
        if match[3] is None:
            add_field(fields, Field(bits, match[5]))
        else:
            add_text(fields, bits, number_of(match[3]), number_of(match[4] or match[3]), match[5])
    return fields


def add_field(fields, new):
    if not any(old.bits.overlaps(new.bits) or old.name == new.name for old in fields):
        fields.append(new)


def add_text(fields, bits, first, last, text):
    of = next((one for one in fields if one.bits == bits), None)
    if of is None or first > last or last >= 1 << bits.width():
        return
    if all(last < known[0] or known[1] < first for known in of.texts):
        of.texts.append((first, last, text))


# ---------------------------------------------------------------------------------------------------------
# Registers

@dataclass
class Meaning:
    """What the schema says of one register. References are names as the class spells them."""

    name: str
    numbering: Numbering
    role: str = "state"
    unit: str = None
    fields: list = field(default_factory=list)
    references: dict = field(default_factory=dict)  # by qualifier
    pointer: Bits = None                            # the part of the first-error register, None for all of it
    severity: str = "error"
    evidence: list = field(default_factory=list)

    def facts(self, value):
        """What the result says of the register beside its value."""
        facts = {"fields": [texts for _, texts in self.shown(value)]}
        if self.role != "state":
            facts["role"] = self.role
        if self.unit:
            facts["unit"] = self.unit
        if self.numbering.msb0:
            facts["numbering"] = "msb0"
        return facts

    def shown(self, value):
        """The fields of a value, from the least significant: bits, and members of the result."""
        shown = [one for one in self.fields if one.is_shown(one.bits.of(value))]
        if self.fields or self.role in NAMED_BITS:
            described = sum(one.bits.mask() for one in self.fields)
            shown += [Field(Bits(place, place)) for place in range(self.numbering.width)
                      if (value & ~described) >> place & 1]
        shown.sort(key=lambda one: one.bits.low)
        return [(one.bits, self.members(one, one.bits.of(value))) for one in shown]

    def members(self, of, value):
        text = of.text_of(value)
        return {"bits": self.numbering.text(of.bits), "name": of.name, "value": plain_number(value, of.bits.width()),
                **({} if text is None else {"text": text})}


def plain_number(value, width):
    return value if width <= 32 else "0x%016X" % value


class MeaningReader:
    """Reads the meaning of the registers that are read of a class."""

    def __init__(self, schema, cls, widths):
        """The declarations of the registers, each with its width in bits."""
        self.schema = schema
        self.cls = cls
        self.widths = list(widths)
        self.declared = {one.name: one for one, _ in self.widths}
        self.spelling = {name.lower(): name for name in self.declared}
        self.numberings = {}

    def meanings(self):
        """By the name of the register, in the order of the class."""
        of_class = self.word(self.schema.class_qualifier(self.cls, "BitNumbering"), "BitNumbering", NUMBERINGS)
        for one, width in self.widths:
            word = self.word_of(one, "BitNumbering", NUMBERINGS) or of_class
            self.numberings[one.name] = Numbering(width, word == "msb0")
        return {name: self.meaning(name) for name in self.declared}

    def meaning(self, name):
        declared, numbering = self.declared[name], self.numberings[name]
        one = Meaning(name, numbering, self.word_of(declared, "Role", ROLES) or "state")
        one.fields = read_fields(self.texts_of(declared, "Fields"), numbering)
        if one.role == "counter":
            one.unit = self.text_of(declared, "Units") or self.text_of(declared, "PUnit")
        if one.role == "errors":
            self.read_error_qualifiers(declared, one)
        return one

    def read_error_qualifiers(self, declared, one):
        for qualifier in ("MaskedBy", "EnabledBy", "FatalBy"):
            name = self.named(self.text_of(declared, qualifier))
            if name and self.numberings[name].width == one.numbering.width:
                one.references[qualifier] = name
        self.read_pointer(self.text_of(declared, "FirstErrorIn"), one)
        one.severity = self.word_of(declared, "Severity", SEVERITIES) or "error"
        named = [self.named(text) for text in self.texts_of(declared, "Evidence")]
        one.evidence = list(dict.fromkeys(name for name in named if name))

    def read_pointer(self, text, one):
        match = PART.fullmatch(text or "")
        name = self.named(match and match[1])
        part = name and match[2] and self.numberings[name].bits(int(match[2]), int(match[3]))
        if name and (part or not match[2]):
            one.references["FirstErrorIn"], one.pointer = name, part or None

    # -- qualifiers --------------------------------------------------------------------------------------

    def named(self, text):
        """The register that a text names, as the class spells it."""
        return self.spelling.get((text or "").lower())

    def text_of(self, declared, name):
        return self.text(declared.qualifier(name), name)

    def text(self, value, name):
        return value.data if value and value.kind == "string" and name.lower() not in self.schema.disabled else None

    def word_of(self, declared, name, words):
        return self.word(declared.qualifier(name), name, words)

    def word(self, value, name, words):
        text = (self.text(value, name) or "").lower()
        return text if text in words else None

    def texts_of(self, declared, name):
        value = declared.qualifier(name)
        if not value or not value.is_array() or name.lower() in self.schema.disabled:
            return []
        return [one.data for one in value.data]


# ---------------------------------------------------------------------------------------------------------
# Findings

class Findings:
    """The findings of one instance, from the values of its registers that were read."""

    def __init__(self, instance, meanings):
        self.instance = instance
        self.meanings = meanings
        self.texts = {name: facts["value"] for name, facts in instance["registers"].items()}
        self.values = {name: int(text, 16) for name, text in self.texts.items()}

    def findings(self):
        """In the order of the registers and of their bits."""
        return [finding for name in self.texts if self.meanings[name].role == "errors"
                for finding in self.of_register(self.meanings[name])]

    def of_register(self, of):
        unknown = list(dict.fromkeys(name for qualifier in REFERENCES for name in [of.references.get(qualifier)]
                                     if name and name not in self.values))
        common = {"key": self.instance["key"], "class": self.instance["class"], "origin": self.instance["origin"],
                  "register": of.name, "register_value": self.texts[of.name], "known": False, "unknown": unknown}
        for bits, members in of.shown(self.values[of.name]):
            if bits.of(self.values[of.name]):
                yield {**common, **members, **self.judged(of, bits)}
        upper = self.instance["registers"][of.name].get("upper")
        if upper:
            yield {**common, "bits": "63:32", "name": None, "value": int(upper, 16), "masked": False,
                   "severity": of.severity, "first": False, "evidence": self.evidence(of, False)}

    def judged(self, of, bits):
        there = self.values[of.name] & bits.mask()
        effective = there & ~self.masking(of)
        first = self.is_first(of, bits)
        return {"masked": not effective, "severity": self.severity(of, effective or there), "first": first,
                "evidence": self.evidence(of, first)}

    def masking(self, of):
        masking = self.values.get(of.references.get("MaskedBy"), 0)
        if of.references.get("EnabledBy") in self.values:
            masking |= ~self.values[of.references["EnabledBy"]]
        return masking

    def severity(self, of, bits):
        if "FatalBy" not in of.references:
            return of.severity
        return "fatal" if bits & self.values.get(of.references["FatalBy"], 0) else "error"

    def first_place(self, of):
        """The place of the bit that came first; None if the register that says so was not read or names no bit."""
        number = self.values.get(of.references.get("FirstErrorIn"))
        if number is None:
            return None
        number = of.pointer.of(number) if of.pointer else number
        return of.numbering.place(number) if number < of.numbering.width else None

    def is_first(self, of, bits):
        place = self.first_place(of)
        return place is not None and bits.low <= place <= bits.high and bool(self.values[of.name] >> place & 1)

    def evidence(self, of, first):
        if of.references.get("FirstErrorIn") in self.values and not first:
            return {}
        return {name: self.texts.get(name) for name in of.evidence}


def severity_rank(finding):
    """Unmasked before masked, and the worst first."""
    return finding["masked"], SEVERITIES.index(finding["severity"])


def findings_of(instances):
    """All findings in the order of the result, from pairs of an instance and the meanings of its registers."""
    return sorted((finding for instance, meanings in instances for finding in Findings(instance, meanings).findings()),
                  key=severity_rank)


def fails(findings, severity):
    """Whether a finding that counts is as bad as that."""
    return severity is not None and any(severity_rank(one) <= (False, SEVERITIES.index(severity)) for one in findings)


def is_unread(missing):
    """Whether it could not be read, rather than being absent. An area that is open is not absent."""
    return missing.get("completion_code") != 0xCB or "offset" in missing


def filtered(document):
    """What --only-findings leaves of a result: of the instances, those with a finding or with something unread."""
    keys = {one["key"] for one in document["findings"]}
    instances = [one for one in document["instances"]
                 if one["key"] in keys or any(map(is_unread, one.get("missing", [])))]
    return {**document, "instances": instances, "filtered": True}

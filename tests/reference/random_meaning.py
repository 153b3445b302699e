"""Random meaning for the registers of a random schema: good qualifiers, and all that can be wrong with them."""

from modelmeaning import ROLES, SEVERITIES
from modelschema import find_qualifier

# The type of each qualifier, and others that switch it off.
TYPES = {"Fields": ("string[]", ["string", "uint32"]), "BitNumbering": ("string", ["uint16", "string[]"]),
         "Role": ("string", ["string[]", "uint32"]), "MaskedBy": ("string", ["string[]", "uint8"]),
         "EnabledBy": ("string", ["string[]", "sint32"]), "FatalBy": ("string", ["string[]", "uint64"]),
         "Severity": ("string", ["uint8", "string[]"]), "FirstErrorIn": ("string", ["string[]", "uint32"]),
         "Evidence": ("string[]", ["string", "uint32[]"]), "Units": ("string", ["string[]", "uint32"]),
         "PUnit": ("string", ["uint32", "string[]"])}
STANDARD = ("Units", "PUnit")  # these are known only if the schema declares them

NO_NUMBERING = ["lsb", "msb1", "", "msb0 ", "0"]
NO_ROLE = ["error", "", "first error", "errors ", "Mask!"]
NO_SEVERITY = ["fatale", "", "warning", " error"]
NO_REGISTER = ["None", "", "StatisticTime", "Reg", "0"]
UNITS = ["errors", "counts", "Gigabits per second", "\"quoted\"", "", "\u00b5s"]
TEXTS = ["on", "2.5 GT/s", "x1", "a=b", "5:4=1 no", "trailing ", "\"quoted\"", "back\\slash",
         "\u00fcber", "\u00a0", "a\tb\rc"]

# Elements that do not match the grammar.
NO_ELEMENT = ["", "x", "16", "16Name", " 16 Name", "100 Name", "5: Name", ":4 Name", "5:4:3 Name", "5-4 Name",
              "-1 Name", "0x3 Name", "5:4/hexName", "5:4/HEX Name", "5:4/hex=1 Name", "5:4/dec Name", "3= Name", "3=1",
              "3=1-", "3=1- Name", "3=-1 Name", "3=0x Name", "3=0X1 Name", "3=1,2 Name", "3:0=0xG Name", "5 :4 Name",
              "5: 4 Name", "3 =1 Name", "7\tName", "7 \tName", "7  ", "7 Na\nme", "7 \nName", "7 Name\n", "7 \rName"]
NO_PART = [" 5", " 5:", " :0", " 5:0 ", " 100:0", " 5-0", " 5:0:0", "5:0", " 0x5:0", " x:y"]


class MeaningMaker:
    """Adds qualifiers with a meaning to the registers and classes of a schema."""

    def __init__(self, rng, schema, odd_case):
        self.rng = rng
        self.schema = schema
        self.odd_case = odd_case
        self.declarations = []  # as MOF
        self.written = {}       # the type of each qualifier

    def add(self):
        """Returns the declarations of the qualifiers."""
        self.declare()
        if self.chance(0.9):
            for cls in self.schema.classes:
                self.add_to_class(cls)
        return self.declarations

    def chance(self, of):
        return self.rng.random() < of

    # -- declarations ------------------------------------------------------------------------------------

    def declare(self):
        for name, (right, others) in TYPES.items():
            choice = self.rng.random()
            self.written[name] = self.rng.choice(others) if choice < 0.015 else right
            if choice < 0.015:
                self.schema.disabled.add(name.lower())
            if choice < 0.15 or name in STANDARD:
                self.declare_one(name)

    def declare_one(self, name):
        inherited = self.chance(0.5)
        if not inherited:
            self.schema.restricted.add(name.lower())
        scope = "property, class" if name == "BitNumbering" else "property"
        self.declarations.append("Qualifier %s : %s, Scope(%s), Flavor(EnableOverride, %s);" % (
            name.upper() if self.chance(0.1) else name, self.written[name], scope,
            "ToSubclass" if inherited else "Restricted"))

    def put(self, qualifiers, name, value):
        """Sets the qualifier; if it is declared with another type, in that type. Null is as good as nothing."""
        kind = self.written[name]
        if self.chance(0.02):
            value = None
        elif kind != TYPES[name][0]:
            text = (value + ["x"])[0] if isinstance(value, list) else value
            value = self.rng.randrange(256) if "int" in kind else text
            value = [value] if kind.endswith("[]") else value
        qualifiers[name.upper() if self.odd_case else name] = value

    # -- classes and registers ---------------------------------------------------------------------------

    def add_to_class(self, cls):
        if self.chance(0.2):
            self.put(cls.qualifiers, "BitNumbering", self.numbering())
        for prop in cls.properties:
            if self.is_register(prop):
                self.add_to_register(cls, prop)

    @staticmethod
    def is_register(prop):
        return prop.type == "uint8" and prop.is_array

    def add_to_register(self, cls, prop):
        """Registers that override another one mostly say less of themselves."""
        less = 0.5 if "Override" in prop.qualifiers else 1
        qualifiers = prop.qualifiers
        if self.chance(0.2 * less):
            self.put(qualifiers, "BitNumbering", self.numbering())
        if self.chance(0.85 * less):
            self.put(qualifiers, "Role", self.role())
        if self.chance(0.7 * less):
            self.put(qualifiers, "Fields", self.elements(prop))
        if self.chance(0.25 * less):
            self.put(qualifiers, self.rng.choice(STANDARD), self.rng.choice(UNITS))
        # Wasted on other roles, but these must not change anything.
        if self.chance((0.9 if self.word_of(qualifiers, "Role") == "errors" else 0.2) * less):
            self.add_error_qualifiers(cls, prop)

    @staticmethod
    def word_of(qualifiers, name):
        value = find_qualifier(qualifiers, name)
        return value.data.lower() if value and value.kind == "string" else None

    def numbering(self):
        if self.chance(0.1):
            return self.rng.choice(NO_NUMBERING)
        return self.cased(self.rng.choice(["lsb0", "msb0", "msb0"]))

    def role(self):
        if self.chance(0.06):
            return self.rng.choice(NO_ROLE)
        return self.cased("errors" if self.chance(0.45) else self.rng.choice(ROLES))

    def cased(self, word):
        return self.rng.choice([str.upper, str.swapcase, str.title])(word) if self.chance(0.1) else word

    def add_error_qualifiers(self, cls, prop):
        names = self.neighbours(cls, prop)
        for name, often in (("MaskedBy", 0.45), ("EnabledBy", 0.3), ("FatalBy", 0.35)):
            if self.chance(often):
                self.put(prop.qualifiers, name, self.reference(names, prop))
        if self.chance(0.35):
            self.put(prop.qualifiers, "Severity", self.rng.choice(NO_SEVERITY) if self.chance(0.1)
                     else self.cased(self.rng.choice(SEVERITIES)))
        if self.chance(0.45):
            self.put(prop.qualifiers, "FirstErrorIn", self.reference(names) + self.part())
        if self.chance(0.5):
            self.put(prop.qualifiers, "Evidence",
                     [self.reference(names) for _ in range(self.rng.choice([0, 1, 1, 2, 3]))])

    # -- references --------------------------------------------------------------------------------------

    def neighbours(self, cls, prop):
        """Registers that a class with this one may have too."""
        family = self.schema.lineage(cls) + [one for one in self.schema.classes if one.superclass == cls.name]
        found = [one for step in family for one in step.properties if self.is_register(one)]
        return [one for one in found if one is not prop] if self.chance(0.9) else found

    def reference(self, found, alike=None):
        """The name of one of them, mostly of the same width if another one is given."""
        if alike and self.chance(0.8):
            found = [one for one in found if self.is_narrow(one) == self.is_narrow(alike)] or found
        if not found or self.chance(0.06):
            return self.rng.choice(NO_REGISTER)
        name = self.rng.choice(found).name
        if self.chance(0.04):
            return self.rng.choice([" " + name, name + " ", name + "x"])
        return name.swapcase() if self.chance(0.1) else name

    @staticmethod
    def is_narrow(prop):
        value = find_qualifier(prop.qualifiers, "MaxLen")
        return value is not None and value.data == 4

    def part(self):
        """What follows the name of a first-error register."""
        choice = self.rng.random()
        if choice < 0.4:
            return ""
        if choice < 0.47:
            return self.rng.choice(NO_PART)
        ends = self.rng.choice([(5, 0), (4, 0), (13, 8), (58, 63), (27, 31), (2, 2), (63, 0), (0, 5)])
        return "%s%d:%d" % (self.rng.choice([" ", " ", " ", "  "]), *ends)

    # -- fields ------------------------------------------------------------------------------------------

    def elements(self, prop):
        """Fields over some of the register's bits with texts after their names, and mostly nothing wrong with them."""
        width = 32 if self.is_narrow(prop) else 64
        wrong = self.rng.choice([0, 0, 0, 0.1, 0.3])
        msb0 = self.word_of(prop.qualifiers, "BitNumbering") == "msb0"
        elements, place = [], self.rng.randrange(8)
        while place < width and len(elements) < 12:
            high = min(width - 1, place + self.rng.choice([0, 0, 0, 1, 2, 3, 7, 15, 31, 40]))
            ends = (width - 1 - high, width - 1 - place) if msb0 else (high, place)
            self.add_field(elements, ends, high - place + 1)
            if self.chance(wrong):
                elements.append(self.wrong_element(elements, ends, high - place + 1, width))
            place = high + 1 + self.rng.choice([0, 0, 1, 5, 20])
        if self.chance(wrong / 2):
            self.rng.shuffle(elements)
        return elements

    def add_field(self, elements, ends, width):
        bits = self.bits(ends)
        elements.append(bits + self.rng.choice(["", "", "", "/hex"]) + self.blanks() + self.name(len(elements)))
        if self.chance(0.3):
            elements += [bits + "=" + values + self.blanks() + self.rng.choice(TEXTS) for values in self.values(width)]

    def bits(self, ends):
        text = "%02d:%02d" if self.chance(0.05) else "%d:%d"
        return "%d" % ends[0] if ends[0] == ends[1] and self.chance(0.9) else text % ends

    def blanks(self):
        return " " * self.rng.choice([1, 1, 1, 2, 5])

    def name(self, number):
        form = self.rng.choice(["Field %d", "%d", "Link/hex %d", "=%d", "\u00dcberlauf %d", "e%d\t. ", "\"%d\""])
        return form % number

    def values(self, width):
        """Values and ranges of values in ascending order, often with that of zero."""
        limit = (1 << width) - 1
        numbers = sorted({min(limit, self.rng.choice([0, 1, 2, 3, 7, 8, limit // 2, limit, self.rng.randint(0, limit)]))
                          for _ in range(self.rng.choice([1, 2, 4]))})
        while numbers:
            first = numbers.pop(0)
            if numbers and self.chance(0.3):
                yield self.number(first) + "-" + self.number(numbers.pop(0))
            else:
                yield self.number(first)

    def number(self, value):
        return self.rng.choice(["%d", "%d", "0x%X", "0x%x", "0%d", "0x00%x"]) % value

    def wrong_element(self, elements, ends, width, most):
        """An element that does not match the grammar, or that breaks a rule, mostly because of those before it."""
        bits, limit = self.bits(ends), 1 << width
        return self.rng.choice([
            lambda: self.rng.choice(NO_ELEMENT),
            lambda: "%d:%d Reversed" % (ends[1], ends[0]),
            lambda: "%d Beyond" % self.rng.choice([most, most + 1, 99]),
            lambda: "%d:%d Across" % (most, most - 1),
            lambda: bits + " Again",
            lambda: "%d Inside" % self.rng.choice(ends),
            lambda: "%d:%d Around" % self.rng.choice([(most - 1, 0), (0, most - 1)]),
            lambda: "%d %s" % (self.rng.randrange(most), self.rng.choice(elements).partition(" ")[2] or "x"),
            lambda: "%d %s" % (self.rng.randrange(most), self.rng.choice(["field 0", "Field 0", "FIELD 2"])),
            lambda: bits + "=%d Too much" % self.rng.choice([limit, limit + 1, 1 << 64, 1 << 70]),
            lambda: bits + "=0-%d Too much" % limit,
            lambda: bits + "=1-0 Backwards",
            lambda: bits + "=" + self.number(self.rng.randrange(min(limit, 4))) + " Perhaps twice",
            lambda: bits + "=0-%d Everything" % (limit - 1),
            lambda: "%d=1 Of no field" % self.rng.choice([*ends, self.rng.randrange(most)]),
        ])()

"""Random schemas for comparing the collector with its reference model, and their text as MOF."""

from dataclasses import dataclass

import collector_model as model
from collector_model import CimClass, Property, Schema

DCAP_PROPERTIES = ["FileName", "ErrRawData", "MessageTimestamp", "SourceNode", "CreationClassName",
                   "LogCreationClassName", "LogName", "RecordID"]
ESCAPES = {"\\": "\\\\", "\"": "\\\"", "\t": "\\t", "\n": "\\n", "\r": "\\r"}


@dataclass
class Types:
    """How a case declares qualifiers whose type may vary."""

    offset: str
    index: str
    max_len: str
    max_instance_count: str
    class_inherited: bool
    property_inherited: bool
    all_qualifiers: bool
    root_identifies: bool
    odd_case: bool
    fragile: bool
    orderly: bool
    nameless: bool


def random_types(rng):
    """Most cases are orderly: the schema check has no error for their classes."""
    orderly = rng.random() < 0.7
    strings = 0 if orderly else 2
    return Types(offset=rng.choices(["uint32[]", "uint32", "string[]", "string"], [10, 6, strings, strings])[0],
                 index=rng.choices(["uint32", "uint16", "string"], [10, 8, strings])[0],
                 max_len=rng.choice(["uint32", "uint16"]),
                 max_instance_count=rng.choice(["uint32", "uint16"] * 2 + ([] if orderly else ["string"])),
                 class_inherited=rng.random() < 0.6, property_inherited=rng.random() < 0.5,
                 all_qualifiers=rng.random() < 0.3, root_identifies=rng.random() < 0.7,
                 odd_case=rng.random() < 0.1, fragile=not orderly and rng.random() < 0.4, orderly=orderly,
                 nameless=orderly and rng.random() < 0.07)


class SchemaMaker:
    """Generates the classes of a case; fragile cases lack things that the collector requires."""

    def __init__(self, rng, types, machine_type):
        self.rng = rng
        self.types = types
        self.machine_type = machine_type
        self.classes = []
        self.counter = 0

    def rarely(self, chance):
        """True with the given probability, and only in a fragile case."""
        return self.types.fragile and self.rng.random() < chance

    def make(self):
        self.add_root()
        self.add_bases()
        for base in model.BASE_CLASSES:
            self.add_family(base)
        for name in model.R8_CLASSES:
            self.add_r8(name)
        self.add_capture_class()
        self.classes.append(CimClass("KROSG_Other", "KROSG_Root", {}, []))
        restricted = set()
        if not self.types.class_inherited:
            restricted |= {"SupportedMachineTypes", "MaxInstanceCount"}
        if not self.types.property_inherited:
            restricted |= {"Offset", "Index", "MaxLen"}
        return Schema(self.ordered(), restricted)

    def ordered(self):
        """Any order in which each class comes after its superclass."""
        waiting, placed, names = list(self.classes), [], {None}
        while waiting:
            ready = [cls for cls in waiting if cls.superclass in names]
            cls = ready[0] if self.rng.random() < 0.5 else self.rng.choice(ready)
            waiting.remove(cls)
            placed.append(cls)
            names.add(cls.name)
        return placed

    def find(self, name):
        return next((cls for cls in self.classes if cls.name == name), None)

    # -- classes -----------------------------------------------------------------------------------------

    def add_root(self):
        self.identity = self.identification()
        kept = [prop for prop in self.identity if self.types.root_identifies or prop.name == "ElementName"]
        root = CimClass("KROSG_Root", None, {}, kept)
        if self.rng.random() < 0.3:
            root.properties.append(self.register("any"))
        if self.rng.random() < 0.1:
            root.properties.append(Property("Caption", "string", False))
        self.rng.shuffle(root.properties)
        self.classes.append(root)

    def identification(self):
        properties = [Property("InstanceID", "string", False), Property("ElementName", "string", False),
                      Property("MachineType", "string", False), Property("StatisticTime", "datetime", False)]
        if self.rng.random() < 0.3:
            properties.append(Property("DateTimeOfCollection", "datetime", False))
        if self.types.nameless or self.rarely(0.3):
            properties.pop(self.rng.choice([0, 1, 1, 1, 2, 3]))
        return properties

    def missing_identity(self, parent):
        """The identification properties that the root leaves to its direct subclasses."""
        if parent != "KROSG_Root" or self.types.root_identifies:
            return []
        return [Property(prop.name, prop.type, False) for prop in self.identity if prop.name != "ElementName"]

    def add_bases(self):
        names = list(model.BASE_CLASSES)
        self.rng.shuffle(names)
        for name in names:
            if self.rarely(0.04):
                continue
            parent, qualifiers = "KROSG_Root", {}
            others = [cls.name for cls in self.classes if cls.name in model.BASE_CLASSES]
            if others and self.rng.random() < 0.12:
                parent = self.rng.choice(others)
                qualifiers = self.class_qualifiers(0.6, parent)
            elif self.rng.random() < 0.15:
                qualifiers = self.class_qualifiers(0.5, parent)
            own = self.registers(parent, 2, "jfr") + self.missing_identity(parent)
            self.classes.append(CimClass(name, parent, qualifiers, own))

    def add_family(self, base):
        if not self.find(base):
            return
        family = [base]
        for number in range(self.rng.choice([0, 1, 2, 2, 3, 4, 5])):
            parent = base if self.rng.random() < 0.55 else self.rng.choice(family)
            name = "%s_%s%d" % (base, self.rng.choice("ABC"), number)
            cls = CimClass(name, parent, self.class_qualifiers(0.45, parent), self.registers(parent, 4, "jfr"))
            self.add_identification_trap(cls, "jfr")
            self.classes.append(cls)
            family.append(name)

    def add_identification_trap(self, cls, purpose):
        """Identification names that a collector either skips or mistakes for a register."""
        if self.rng.random() < 0.1 and not self.declares(cls.superclass, "InstanceID2"):
            cls.properties.append(self.named_register("InstanceID2", purpose))
        if self.rng.random() < 0.1 and not self.declares(cls.superclass, "DateTimeOfCollection"):
            cls.properties.append(self.named_register("DateTimeOfCollection", purpose))
        for name in ("ElementName", "InstanceID"):
            if self.declares(cls.superclass, name) and self.rng.random() < 0.1:
                cls.properties.append(Property(name, "string", False, {"Override": name}))
            elif not self.declares(cls.superclass, name) and self.rng.random() < 0.4:
                cls.properties.append(Property(name, "string", False))

    def add_r8(self, name):
        if self.rng.random() < 0.12:
            return
        if self.rarely(0.08):
            own = self.identification() + self.registers(None, 3, "r8")
            self.classes.append(CimClass(name, None, self.class_qualifiers(0.8, None), own))
            return
        parent = self.r8_parent(name)
        own = self.registers(parent, 5, "r8") + self.missing_identity(parent)
        cls = CimClass(name, parent, self.class_qualifiers(0.8, parent), own)
        if not self.missing_identity(parent):
            self.add_identification_trap(cls, "r8")
        if self.declares(parent, "StatisticTime") and self.rng.random() < 0.1:
            cls.properties.append(Property("StatisticTime", "datetime", False, {"Override": "StatisticTime"}))
        self.rng.shuffle(cls.properties)
        self.classes.append(cls)

    def r8_parent(self, name):
        choice = self.rng.random()
        if choice < 0.25:
            return "KROSG_Root"
        if choice < 0.32:
            return self.rng.choice([cls.name for cls in self.classes])
        parent = "KROSG_Root" if self.rng.random() < 0.75 else None
        for level in range(self.rng.choice([1, 1, 2])):
            own = self.missing_identity(parent) if parent else self.identification()
            middle = CimClass("%s_Level%d" % (name, level), parent, {}, own + self.registers(parent, 3, "r8"))
            if self.rng.random() < 0.3:
                middle.qualifiers = self.class_qualifiers(0.8, parent)
            self.classes.append(middle)
            parent = middle.name
        return parent

    def add_capture_class(self):
        own = [Property(name, "datetime" if name == "MessageTimestamp" else "string", False)
               for name in DCAP_PROPERTIES]
        self.rng.shuffle(own)
        if self.rarely(0.2):
            own.pop()
        inherited = [own.pop() for _ in range(self.rng.choice([0, 0, 3, 8])) if own]
        if inherited:
            self.classes.append(CimClass("KROSG_LogRecord", None, {}, inherited))
        self.classes.append(CimClass(model.DCAP_FILE, "KROSG_LogRecord" if inherited else None, {}, own))

    # -- qualifiers and properties -----------------------------------------------------------------------

    def class_qualifiers(self, match, parent):
        qualifiers = {"SupportedMachineTypes": self.machine_types(match),
                      "MaxInstanceCount": self.rng.choice([0, 1, 1, 2, 2] + ([] if self.types.orderly else [3, 4]))}
        if self.types.max_instance_count == "uint32" and not self.types.orderly and self.rng.random() < 0.07:
            qualifiers["MaxInstanceCount"] += 65536
        if self.types.max_instance_count == "string":
            number = str(qualifiers["MaxInstanceCount"])
            qualifiers["MaxInstanceCount"] = "many" if self.rng.random() < 0.2 else number
        for name in list(qualifiers):
            inherited = self.inherited(parent, name)
            if inherited and self.rng.random() < (0.25 if self.types.class_inherited else 0.08):
                del qualifiers[name]
            elif self.rarely(0.25 if name == "MaxInstanceCount" else 0.04):
                del qualifiers[name]
        return self.spelled(qualifiers)

    def inherited(self, parent, name):
        """Whether an ancestor has the qualifier, even if its flavor prevents inheritance."""
        schema = Schema(self.classes)
        return bool(parent) and schema.class_qualifier(schema.find(parent), name) is not None

    def machine_types(self, match):
        texts = [self.rng.choice(["7777", "8", "61", "none of these"]) for _ in range(self.rng.randrange(3))]
        if self.rng.random() < match:
            found = self.rng.choice(["%s", "%s", "%s9", "x%s", "1234,%s", "%s,6102"]) % self.machine_type
            texts.insert(self.rng.randrange(len(texts) + 1), found)
        return texts or ["0000"]

    def spelled(self, qualifiers):
        """The qualifiers with names in varying case, which look-ups must ignore."""
        return {name.upper(): value for name, value in qualifiers.items()} if self.types.odd_case else qualifiers

    def declares(self, name, prop):
        """The declaration of a property in a class or one of its ancestors."""
        while name:
            cls = self.find(name)
            for own in cls.properties:
                if own.name == prop:
                    return own
            name = cls.superclass
        return None

    def registers(self, parent, most, purpose):
        """New registers, and some that override inherited ones."""
        properties = [self.register(purpose) for _ in range(self.rng.randrange(most + 1))]
        inherited = [prop.name for prop in self.inherited_registers(parent)]
        if inherited and self.rng.random() < 0.2:
            properties.append(self.overriding(parent, self.rng.choice(inherited), purpose))
        self.rng.shuffle(properties)
        return properties

    def inherited_registers(self, name):
        while name:
            cls = self.find(name)
            yield from (prop for prop in cls.properties if prop.type == "uint8" and prop.is_array)
            name = cls.superclass

    def overriding(self, parent, name, purpose):
        """A register that overrides an inherited one, and repeats its qualifiers if it would inherit them anyway."""
        prop = self.named_register(name, purpose)
        if self.types.property_inherited or not self.rarely(0.3):
            for key, value in self.declares(parent, name).qualifiers.items():
                prop.qualifiers.setdefault(key, value)
        prop.qualifiers["Override"] = name
        return prop

    def register(self, purpose):
        self.counter += 1
        name = "%s%d" % (self.rng.choice(["Reg", "aReg", "ZReg", "ErrStat_"]), self.counter)
        register = self.named_register(name, purpose)
        if self.rng.random() < 0.015:
            register.type, register.is_array = self.rng.choice([("uint8", False), ("uint16", True)])
        return register

    def named_register(self, name, purpose):
        """A register with the qualifiers that its collector requires, and often those of the other collector."""
        everything = purpose == "any" or self.types.all_qualifiers or self.rng.random() < 0.3
        qualifiers = {}
        if everything or purpose == "r8":
            qualifiers["Offset"] = self.offset()
        if everything or purpose == "jfr":
            qualifiers["Index"] = self.index()
        if everything or purpose == "r8" or self.rng.random() < 0.5:
            qualifiers["MaxLen"] = self.rng.choice([4, 4, 4, 8, 8, 8, 0, 2, 5, 16])
        if self.rarely(0.1):
            qualifiers.pop(self.rng.choice(["Offset", "Index", "MaxLen"]), None)
        return Property(name, "uint8", True, self.spelled(qualifiers))

    def offset(self):
        if not self.types.offset.endswith("[]"):
            return self.address()
        # The model does not see the type of an empty array.
        none = [] if self.types.offset == "string[]" else [0]
        return [self.address() for _ in range(self.rng.choice([1] * 16 + [2] * 4 + [3] * 4 + none))]

    def address(self):
        if self.types.offset.startswith("string") and self.rng.random() < 0.2:
            return self.rng.choice(["none", "0xZZ", "12 or so", ""])
        number = self.rng.choice([self.rng.randrange(1 << 32), self.rng.randrange(1 << 24),
                                  self.rng.randrange(0x100, 0x108), 0x00ABCDEF, 0])
        return str(number) if self.types.offset.startswith("string") else number

    def index(self):
        if self.types.orderly:
            return self.rng.choice([self.rng.randrange(8), self.rng.randrange(254), self.rng.randrange(254), 253])
        number = self.rng.choice([self.rng.randrange(8), self.rng.randrange(256), self.rng.randrange(256),
                                  self.rng.randrange(240, 520), 255, 511, self.rng.randrange(65536)])
        if self.types.index == "string":
            return "x" if self.rng.random() < 0.2 else str(number)
        if self.types.index == "uint32" and self.rng.random() < 0.05:
            number += 65536
        return number


def mof_text(schema, types, declarations=()):
    """The schema as MOF, with further declarations of qualifiers."""
    class_flavor = flavor(types.class_inherited)
    property_flavor = flavor(types.property_inherited)
    lines = ["Qualifier Override : string = null, Scope(property, method, reference), "
             "Flavor(EnableOverride, Restricted);",
             "Qualifier SupportedMachineTypes : string[], Scope(class)%s;" % class_flavor,
             "Qualifier MaxInstanceCount : %s, Scope(class)%s;" % (types.max_instance_count, class_flavor)]
    for name, kind in (("Offset", types.offset), ("Index", types.index), ("MaxLen", types.max_len)):
        lines.append("Qualifier %s : %s, Scope(property)%s;" % (name, kind, property_flavor))
    return "\n".join([*lines, *declarations] + [class_text(cls) for cls in schema.classes]) + "\n"


def flavor(inherited):
    return ", Flavor(EnableOverride, ToSubclass)" if inherited else ", Flavor(EnableOverride, Restricted)"


def class_text(cls):
    heading = "class " + cls.name + (" : " + cls.superclass if cls.superclass else "")
    properties = "".join("  %s%s %s%s;\n" % (qualifier_text(prop.qualifiers, " "), prop.type, prop.name,
                                              "[]" if prop.is_array else "") for prop in cls.properties)
    return "\n" + qualifier_text(cls.qualifiers, "\n") + heading + " {\n" + properties + "};"


def qualifier_text(qualifiers, end):
    if not qualifiers:
        return ""
    parts = []
    for name, value in qualifiers.items():
        if isinstance(value, list):
            parts.append("%s {%s}" % (name, ", ".join(literal(element) for element in value)))
        else:
            parts.append("%s(%s)" % (name, literal(value)))
    return "[" + ", ".join(parts) + "]" + end


def literal(value):
    if value is None:
        return "null"
    if isinstance(value, str):
        return '"%s"' % "".join(ESCAPES.get(one, one) for one in value)
    return "0x%X" % value if value > 65536 else str(value)

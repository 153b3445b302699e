"""The plan of a collection: what the collector will read, and which instances may come of it.

It is made before anything is sent, from schema, machine type and server. Unlike the model of the collector it knows
classes of which it does not know what the collector does with them: those that lack something it requires.
"""

from dataclasses import dataclass, field
from functools import cached_property

from modelmeaning import MeaningReader
from modelvalues import (BASE_CLASSES, CAPTURE_KEYS, DCAP_FILE, JFR_SKIPPED, NULL, R8_CLASSES, R8_SKIPPED,
                         T4_PCI_BRIDGE, VO_PCI_BRIDGE)

CAPTURE_PROPERTIES = {"FileName": "string", "ErrRawData": "string", "MessageTimestamp": "datetime",
                      "SourceNode": "string", "CreationClassName": "string", "LogCreationClassName": "string",
                      "LogName": "string", "RecordID": "string"}
LARGEST_COUNT = 65535
MOST_ADDRESSES, MOST_INSTANCES, MOST_READS, MOST_PROPERTIES = 256, 65535, 131072, 2097152
BLOCK_SIZE, FIRST_RECORD, STRIDE, RECORD_SIZE, RECORDS_OF_INSTANCE = 4096, 7, 8, 11, 256
PLANNED, IDLE, UNKNOWN = "planned", "idle", "unknown"
R8, JFR, CAPTURE = "r8", "jfr", "ffdc"


@dataclass
class PlannedRegister:
    """A register of a class: R8 ones have addresses, JFR ones an index."""

    name: str
    addresses: list = field(default_factory=list)
    index: int = 0
    narrow: bool = False


@dataclass
class PlannedClass:
    """What is known of one class on this machine; `why` says why it is not served, if so."""

    cls: object
    path: str = None
    kind: str = IDLE
    why: str = ""
    has_way: bool = False
    instances: int = 0
    registers: list = field(default_factory=list)
    reader: MeaningReader = None

    @cached_property
    def meanings(self):
        """What the registers mean, by name."""
        return self.reader.meanings()

    def chip(self, instance):
        return instance + 1 & 0xFF if self.cls.name in (VO_PCI_BRIDGE, T4_PCI_BRIDGE) else 0

    def reads_of_instance(self):
        return sum(len(one.addresses) for one in self.registers)


@dataclass
class Turn:
    """One collection of a class: the time-th one of it in the run."""

    number: int
    call: int
    of: PlannedClass
    time: int
    reached: bool
    named: bool

    def key(self, place):
        owner, number = place
        where = {R8: "node%d/instance%d" % place, JFR: "sp%d/instance%d" % place}.get(self.of.path)
        where = where or "node%d/%s" % (owner, CAPTURE_KEYS[number])
        return "%s/%s%s" % (self.of.cls.name, where, "#%d" % self.time if self.time > 1 else "")

    def origin(self, place):
        owner, number = place
        if self.of.path == R8:
            return {"path": R8, "node": owner, "chip": self.of.chip(number), "instance": number}
        if self.of.path == JFR:
            return {"path": JFR, "service_processor": owner, "instance": number}
        return {"path": CAPTURE, "node": owner}


class Plan:
    """The plan for lists of (class name, whether it was named), one list for each GetData call."""

    def __init__(self, schema, server, calls):
        self.schema = schema
        self.machine_type = server["machine_type"]
        self.nodes = len(server.get("bmc_node", []))
        self.driver = server.get("ipmi", {}).get("driver_present", True)
        self.dot = "dot" in server
        self.communicates = self.dot and server["dot"].get("sp_comm", True)
        self.service_processors = len(server["dot"].get("service_processor", [])) & 0xFF if self.dot else 0
        self.blocks = self.service_processors if self.communicates else 0
        self.delegates = self.find_delegates()
        self.known = {}
        self.turns = []
        for number, names in enumerate(calls):
            self.add_call(number, names)

    # -- classes -----------------------------------------------------------------------------------------

    def serving_element(self, cls):
        """Whether an element of the class's machine types contains this one."""
        types = self.schema.class_qualifier(cls, "SupportedMachineTypes")
        return bool(types) and types.is_array() and any(self.machine_type in one.to_text() for one in types.data)

    def find_delegates(self):
        """The subclass that serves this machine, of each base class that has one."""
        delegates = {}
        for name in BASE_CLASSES:
            base = self.schema.find(name)
            serving = [cls for cls in self.schema.descendants(base) if self.serving_element(cls)] if base else []
            if serving:
                delegates[name] = serving[0].name
        return delegates

    def served_by_default(self):
        """The classes that this machine serves and has a way to, the capture files last."""
        served = [self.classify(cls) for cls in self.schema.classes]
        served = [one.cls.name for one in served if one.path and not one.why]
        return [name for name in served if name != DCAP_FILE] + [name for name in served if name == DCAP_FILE]

    def classify(self, cls):
        if cls.name not in self.known:
            self.known[cls.name] = self.classify_new(cls)
        return self.known[cls.name]

    def classify_new(self, cls):
        one = PlannedClass(cls)
        if cls.name in self.delegates.values():
            one.path, one.kind = JFR, PLANNED
            one.has_way = self.dot and self.service_processors > 0
        elif cls.name in BASE_CLASSES:
            pass
        elif cls.name in R8_CLASSES:
            one.path = R8
            types = self.schema.class_qualifier(cls, "SupportedMachineTypes")
            if types is None or not types.is_array():
                one.kind = UNKNOWN
            elif self.serving_element(cls):
                one.kind = PLANNED
            one.has_way = self.nodes > 0
        elif cls.name == DCAP_FILE:
            one.path, one.kind, one.has_way = CAPTURE, PLANNED, self.nodes > 0
        if one.kind == PLANNED and not self.is_understood(cls, one.path):
            one.kind = UNKNOWN
        if one.kind == PLANNED and one.path != CAPTURE:
            one.instances = self.schema.class_qualifier(cls, "MaxInstanceCount").data
            self.add_registers(one)
        one.why = self.why_not_served(one)
        return one

    def add_registers(self, one):
        declarations = self.registers(one.cls, one.path)
        one.registers = [self.planned(declaration, one.path) for declaration in declarations]
        widths = [32 if register.narrow else 64 for register in one.registers]
        one.reader = MeaningReader(self.schema, one.cls, zip(declarations, widths))

    def planned(self, declaration, path):
        if path == JFR:
            return PlannedRegister(declaration.name, index=declaration.qualifier("Index").data)
        offset = declaration.qualifier("Offset")
        addresses = [one.to_unsigned(32) & 0xFFFFFF for one in (offset.data if offset.is_array() else [offset])]
        return PlannedRegister(declaration.name, addresses, narrow=declaration.qualifier("MaxLen").data == 4)

    def why_not_served(self, one):
        name = one.cls.name
        if one.path == JFR and not one.has_way:
            return "no service processor was found" if self.dot else "no service processor accepts dot commands"
        if one.path == CAPTURE or one.path == R8 and self.serving_element(one.cls):
            return "" if one.has_way else "there is no BMC node"
        if one.path == JFR:
            return ""
        above = reversed(self.schema.lineage(one.cls)[:-1])
        bases = [step.name for step in above if step.name in BASE_CLASSES][:1]
        chosen = [self.delegates[base] for base in bases if base in self.delegates]
        if name in BASE_CLASSES and not bases:
            return "none of its subclasses serves this machine"
        if self.serving_element(one.cls) and chosen:
            return chosen[0] + " serves this machine"
        if one.path == R8 or bases:
            types = self.schema.class_qualifier(one.cls, "SupportedMachineTypes") or NULL
            texts = [element.to_text() for element in types.data] if types.is_array() else []
            if not texts:
                return "it lists no machine types"
            return "its machine types are " + ", ".join('"%s"' % text for text in texts)
        return "the collector does not support this class"

    def is_below(self, cls, base):
        return any(step.name == base for step in self.schema.lineage(cls)[:-1])

    # -- what the schema check calls an error ------------------------------------------------------------

    def registers(self, cls, path):
        """The properties that the collector reads: declared by the class or its superclass, and not skipped."""
        skipped = R8_SKIPPED if path == R8 else JFR_SKIPPED
        origins = (cls.name, cls.superclass and self.schema.find(cls.superclass).name)
        return [one for one in self.schema.property_declarations(cls)
                if one.origin in origins and one.name not in skipped]

    def is_understood(self, cls, path):
        """Whether the schema check has no error for the class, and all of its registers are arrays of bytes."""
        paths = [R8] if cls.name in R8_CLASSES else []
        paths += [JFR] * sum(self.is_below(cls, base) for base in BASE_CLASSES)
        if not all(self.meets_needs(cls, one) for one in paths):
            return False
        if cls.name == DCAP_FILE and not self.is_capture_class(cls):
            return False
        return path == CAPTURE or all(one.type == "uint8" and one.is_array for one in self.registers(cls, path))

    def is_capture_class(self, cls):
        types = {one.name.lower(): (one.type, one.is_array) for one in self.schema.property_declarations(cls)}
        return all(types.get(name.lower()) == (kind, False) for name, kind in CAPTURE_PROPERTIES.items())

    def meets_needs(self, cls, path):
        types = self.schema.class_qualifier(cls, "SupportedMachineTypes")
        count = self.schema.class_qualifier(cls, "MaxInstanceCount")
        if cls.superclass is None or types is None or not types.is_array() or not self.is_number(count):
            return False
        registers = self.registers(cls, path)
        instances = count.data
        if instances > LARGEST_COUNT or not self.fits(cls, path, instances, registers):
            return False
        if path == R8:
            return all(self.is_address(one.qualifier("Offset")) and self.is_number(one.qualifier("MaxLen"))
                       for one in registers)
        return all(self.is_inside(one.qualifier("Index"), instances) for one in registers)

    def fits(self, cls, path, instances, registers):
        """Whether one request for the class stays below the limits for its memory."""
        reads = sum(len(offset.data) if path == R8 and offset.is_array() else 1
                    for offset in (one.qualifier("Offset") or NULL for one in registers))
        properties = len(self.schema.property_declarations(cls))
        return (instances <= MOST_INSTANCES and reads * instances <= MOST_READS
                and properties * instances <= MOST_PROPERTIES)

    @staticmethod
    def is_number(value):
        return value is not None and value.kind == "int"

    def is_address(self, value):
        if value is None or not value.is_array():
            return self.is_number(value)
        return len(value.data) <= MOST_ADDRESSES and all(self.is_number(one) for one in value.data)

    def is_inside(self, index, instances):
        """Whether the records of all instances lie inside the block, behind the longer header."""
        if not self.is_number(index):
            return False
        if instances == 0:
            return True
        last = index.data + (instances - 1) * RECORDS_OF_INSTANCE
        return index.data <= LARGEST_COUNT and FIRST_RECORD + last * STRIDE + RECORD_SIZE <= BLOCK_SIZE

    # -- turns -------------------------------------------------------------------------------------------

    def add_call(self, number, names):
        reached = True
        for name, named in names:
            of = self.classify(self.schema.find(name))
            time = 1 + sum(turn.of is of for turn in self.turns)
            self.turns.append(Turn(len(self.turns), number, of, time, reached, named))
            reached = reached and not (of.path == CAPTURE and of.kind != IDLE)

    def places(self, turn):
        """The places of the planned instances and capture files of a turn, in the collector's order."""
        of = turn.of
        if of.kind != PLANNED:
            return []
        if of.path == R8:
            return [(0, instance) for instance in range(of.instances)] if of.registers else []
        if of.path == JFR:
            return [(owner, instance) for owner in range(self.service_processors) for instance in range(of.instances)]
        return [(node, area) for area in range(len(CAPTURE_KEYS)) for node in range(self.nodes)]

    def register_reads(self, turn):
        of = turn.of
        return of.instances * of.reads_of_instance() if of.kind == PLANNED and of.path == R8 and turn.reached else 0

    def dot_commands(self, turn):
        return self.blocks if turn.of.kind == PLANNED and turn.of.path == JFR and turn.reached else 0

    def total(self):
        return sum(self.register_reads(turn) + self.dot_commands(turn) for turn in self.turns)


# ---------------------------------------------------------------------------------------------------------
# Which classes a command line asks for

def matches(pattern, name):
    """Whether the name matches: * stands for any text and ? for a character, without regard to case."""
    if not pattern:
        return not name
    if pattern[0] == "*":
        return matches(pattern[1:], name) or bool(name) and matches(pattern, name[1:])
    return bool(name) and pattern[0].lower() in ("?", name[0].lower()) and matches(pattern[1:], name[1:])


def asked_classes(schema, server, arguments):
    """The classes as (name, whether it was named), or None for a pattern that matches nothing.

    A class that a pattern or base class yields is collected once, in the place of the first argument that yields it.
    One that a base class yields counts as named.
    """
    plan = Plan(schema, server, [])
    default = plan.served_by_default()
    if not arguments:
        return [(name, False) for name in default]
    asked, yielded = [], set()
    for argument in arguments:
        if "*" in argument or "?" in argument:
            found = [name for name in default if matches(argument, name)]
            if not found:
                return None
            add_yielded(asked, yielded, found, False)
            continue
        cls = schema.find(argument)
        if cls.name in plan.delegates:
            add_yielded(asked, yielded, [plan.delegates[cls.name]], True)
        elif cls.name in yielded:
            yielded.remove(cls.name)
            asked[:] = [(name, named or name == cls.name) for name, named in asked]
        else:
            asked.append((cls.name, True))
    return asked


def add_yielded(asked, yielded, names, named):
    known = {name for name, _ in asked}
    asked.extend((name, named) for name in names if name not in known)
    yielded.update(name for name in names if name not in known)


# ---------------------------------------------------------------------------------------------------------
# The plan as it is printed

def plan_document(plan):
    reached = [turn for turn in plan.turns if turn.reached]
    document = {"kind": "plan", "format_version": 2, "machine_type": plan.machine_type,
                "classes": [class_of_plan(plan, turn) for turn in reached], "dot_commands": [], "areas": [],
                "total": plan.total()}
    for turn in reached:
        document["dot_commands"] += [{"class": turn.of.cls.name, "service_processor": number}
                                     for number in range(plan.dot_commands(turn))]
        if turn.of.path == CAPTURE and plan.driver:
            document["areas"] += [{"class": turn.of.cls.name, "key": turn.key(place), "node": place[0],
                                   "area": CAPTURE_KEYS[place[1]]} for place in plan.places(turn)]
    return document


def class_of_plan(plan, turn):
    result = {"class": turn.of.cls.name,
              "instances": [{"key": turn.key(place), "origin": turn.origin(place), "reads": reads_of(turn.of)}
                            for place in plan.places(turn)]}
    if turn.of.path:
        result["path"] = turn.of.path
    return result


def reads_of(of):
    if of.path == JFR:
        return [{"property": one.name, "index": one.index} for one in of.registers]
    return [{"property": one.name, "address": "0x%06X" % address} for one in of.registers for address in one.addresses]

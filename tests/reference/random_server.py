"""Random server files for comparing the collector with its reference model."""

import collector_model as model

CHIP_CLASSES = (model.VO_PCI_BRIDGE, model.T4_PCI_BRIDGE)

# Lengths to which a fault may truncate an answer, from the shortest answer to beyond the longest.
TRUNCATIONS = {"register": (9, 25), "timestamp": (9, 14), "open": (9, 17), "size": (9, 17), "read": (9, 26),
               "close": (9, 13), "ipmi": (9, 26), "dot": (0, 4096)}

# The lengths at which an answer starts to lack something.
EDGES = {"register": (22, 22, 23), "timestamp": (12, 12, 13), "open": (12, 13, 15), "size": (12, 13, 15),
         "read": (9, 14, 15), "close": (9,), "ipmi": (12, 13, 22)}


class ServerMaker:
    """Generates a server file that usually answers what the schema makes the collector request."""

    def __init__(self, rng, machine_type, schema):
        self.rng = rng
        self.machine_type = machine_type
        self.schema = schema
        self.files = {}
        self.lines = []
        self.pointers = {name.partition(" ")[0].lower() for name in self.first_error_names()}

    def first_error_names(self):
        """Registers that others mention as those that tell which bit was first."""
        values = [model.find_qualifier(prop.qualifiers, "FirstErrorIn")
                  for cls in self.schema.classes for prop in cls.properties]
        return [value.data for value in values if value and value.kind == "string"]

    def make(self):
        faults = self.faults()
        self.add("machine_type = \"%s\"" % self.machine_type)
        self.add("local_time = " + self.local_time())
        if self.rng.random() < 0.5:
            self.add("unlisted_registers = \"%s\"" % self.rng.choice(["pattern", "pattern", "absent"]))
        if self.rng.random() < 0.2:
            self.add("[ipmi]", "driver_present = " + self.rng.choice(["false", "false", "true"]))
        if self.rng.random() < 0.85:
            self.add_dot()
        for node in range(self.rng.choices([0, 1, 2, 3], [6, 50, 30, 14])[0]):
            self.add_node(node, self.cuts_sizes(faults))
        for fault in faults:
            self.add("[[fault]]", *["%s = %s" % (key, toml_value(fault[key])) for key in fault])
        return "\n".join(self.lines) + "\n"

    def add(self, *lines):
        self.lines.extend(lines)

    def local_time(self):
        day = "%04d-%02d-%02dT%02d:%02d:%02d" % (self.rng.randrange(1990, 2099), self.rng.randrange(1, 13),
                                                self.rng.randrange(1, 29), self.rng.randrange(24),
                                                self.rng.randrange(60), self.rng.randrange(60))
        return day + self.rng.choice(["Z", "+00:00", "+01:00", "-05:00", "+05:45", "-03:30", "+14:00"])

    def data(self, key, content, name):
        """The bytes as hex pairs or, occasionally, in a separate file."""
        if self.rng.random() < 0.08:
            self.files[name + ".bin"] = content
            return "%s_file = \"%s.bin\"" % (key, name)
        return "%s = \"%s\"" % (key, content.hex(" "))

    # -- dot commands ------------------------------------------------------------------------------------

    def add_dot(self):
        self.add("[dot]")
        if self.rng.random() < 0.15:
            self.add("sp_comm = " + self.rng.choice(["false", "false", "true"]))
        for number in range(self.rng.choices([0, 1, 2, 3], [6, 50, 30, 14])[0]):
            self.add("[[dot.service_processor]]", self.data("block", self.block(), "block%d" % number))

    def block(self):
        length = self.rng.choice([4096] * 10 + [0, 1, 2, 3, 4, 7, 8, 2040, 2041, 2042, 2043, 2044, 2047, 4095,
                                                self.rng.randrange(4097), self.rng.randrange(4097)])
        block = bytearray(self.rng.randbytes(4096))
        if self.rng.random() < 0.3:
            block = bytearray(4096)
        validity = self.rng.choice([(1, 0), (1, 1), (1, 1), (0, 1), (0, 1), (0, 0)])
        if self.rng.random() < 0.6:
            self.put_values(block, 10 if validity[0] else 3)
        for start, valid in zip((0, 2040), validity):
            block[start:start + 7] = self.header(valid)
        return bytes(block[:length])

    def put_values(self, block, start):
        """Values for the records that the schema places in the block."""
        for record, name in self.records():
            place = start + 8 * record
            if place + 8 <= len(block):
                block[place:place + 8] = self.value(name)[::-1]

    def records(self):
        """Every record that a class may take from a block, with the name of the register."""
        for cls in self.schema.classes:
            if any(step.name in model.BASE_CLASSES for step in self.schema.lineage(cls)):
                for declaration in self.schema.property_declarations(cls):
                    index = declaration.qualifier("Index")
                    if index and index.kind == "int":
                        yield from ((index.data + 256 * number, declaration.name)
                                    for number in range(self.instance_count(cls)))

    def header(self, valid):
        month, day = self.rng.choice([(12, 31), (1, 1), (2, 30), (99, 99), (self.rng.randrange(1, 13), 15)])
        if not valid:
            month, day = self.rng.choice([(0, day), (month, 0), (0, 0)])
        return bytes((self.rng.randrange(256), self.rng.randrange(256), month, day,
                      self.rng.choice([0, 23, 99]), self.rng.randrange(60), self.rng.randrange(60)))

    # -- BMC nodes ---------------------------------------------------------------------------------------

    def add_node(self, node, sizes_cut):
        self.add("[[bmc_node]]")
        if self.rng.random() < 0.85:
            self.add("timestamp = \"%s\"" % self.rng.choice(
                [self.rng.randbytes(4), b"\x12\x34\x56\x78", bytes(4), b"\xff" * 4]).hex(" "))
        if node == 0 or self.rng.random() < 0.1:
            self.add_registers()
        self.add_areas(node, sizes_cut)

    def add_registers(self):
        density = self.rng.choice([0.0, 0.6, 0.9, 1.0])
        seen = set()
        for chip, address, name in self.addresses():
            if (chip, address & 0xFFFFFF) in seen or self.rng.random() >= density:
                continue
            seen.add((chip, address & 0xFFFFFF))
            self.add("[[bmc_node.register]]")
            if chip or self.rng.random() < 0.5:
                self.add("chip = %d" % chip)
            self.add("address = 0x%08X" % address, "value = \"%s\"" % self.value(name).hex(" "))
            if self.rng.random() < 0.3:
                self.add("header = \"%s\"" % self.rng.randbytes(6).hex(" "))

    def value(self, name):
        """Any bytes, or a number that fits 32 bits, or one that the collector's four bytes of it hide nothing of.

        Or only a few bits set, or only a few not set; and mostly the number of a bit where others expect that.
        """
        if name.lower() in self.pointers and self.rng.random() < 0.7:
            return bytes((self.rng.randrange(self.rng.choice([8, 32, 64])), self.rng.choice([0, 0, 3, 33]))) + bytes(6)
        few = sum(1 << self.rng.randrange(self.rng.choice([8, 32, 64])) for _ in range(3)) & (1 << 64) - 1
        return self.rng.choice([self.rng.randbytes(8), self.rng.randbytes(4) + bytes(4), bytes(8),
                                b"\xff" * 4 + self.rng.randbytes(4), few.to_bytes(8, "little"),
                                few.to_bytes(8, "little"), (few ^ (1 << 64) - 1).to_bytes(8, "little")])

    def instance_count(self, cls):
        """The declared number; 0 if there is none or it is not numeric."""
        count = self.schema.class_qualifier(cls, "MaxInstanceCount")
        try:
            return count.to_unsigned(16) if count else 0
        except model.TvelException:
            return 0

    def addresses(self):
        """Every chip and address that a class may request, with the name of the register."""
        for name in model.R8_CLASSES:
            cls = self.schema.find(name)
            if not cls:
                continue
            chips = [0] if name not in CHIP_CLASSES else range(1, self.instance_count(cls) + 1)
            for declaration in self.schema.property_declarations(cls):
                for address in self.offsets(declaration):
                    yield from ((chip, address, declaration.name) for chip in chips)

    @staticmethod
    def offsets(declaration):
        value = declaration.qualifier("Offset") or model.NULL
        texts = [element.to_text() for element in (value.to_array() if value.is_array() else [value])]
        return [int(text) for text in texts if text.isdigit()]

    def add_areas(self, node, sizes_cut):
        names = [name for name in model.CAPTURE_KEYS if self.rng.random() < 0.85]
        if self.rng.random() < 0.3:
            names.append(self.rng.choice(["other", "cpu_err2", "a_name_of_twenty_five_byt"]))
        self.rng.shuffle(names)
        for name in names:
            content = self.rng.randbytes(self.rng.choice([0, 1, 3, 9, 10, 11, 19, 20, 25, 30,
                                                          self.rng.randrange(200)]))
            self.add("[[bmc_node.storage_area]]", "name = \"%s\"" % name,
                     self.data("data", content, "node%d_%s" % (node, name)))
            if self.rng.random() < 0.4:
                self.add("size = %d" % self.size(len(content), sizes_cut))

    def size(self, length, sizes_cut):
        size = self.rng.choice([0, 1, 5, 9, 10, 11, 20, 21, length // 2, length + 1, length + 10,
                                length + 35, "negative", "negative"])
        if size != "negative":
            return size
        if self.rng.random() < 0.2:
            return self.rng.choice([0x02000001, 0x7F000000])  # over the limit, and not if it is truncated
        # A truncated negative size must not become a size of many megabytes.
        return self.rng.choice([-2**31, -2**31 + 5] if sizes_cut else [-1, -10, -65536, -2**31])

    # -- faults ------------------------------------------------------------------------------------------

    def faults(self):
        return [self.fault() for _ in range(self.rng.choice([0, 0, 0, 0, 1, 1, 2, 3, 4, 5]))]

    def fault(self):
        on = self.rng.choice(["register", "register", "timestamp", "open", "size", "read", "read", "read", "read",
                              "close", "dot", "dot", "ipmi"])
        fault = {"on": on}
        if self.rng.random() < 0.3:
            fault["node"] = self.rng.choice([0, 0, 1, 2])
        if self.rng.random() < 0.75:
            fault["nth"] = self.rng.choice([1, 1, 2, 2, 3, 4, 5, 8, 13, 30])
        effect = self.rng.choice(["truncate", "truncate", "lost", "completion_code", "delay_ms"])
        if on == "dot" and effect == "completion_code":
            effect = "truncate"
        fault.update(self.effect(on, effect))
        if effect == "delay_ms":
            fault.setdefault("nth", 1)
        return fault

    def effect(self, on, effect):
        if effect == "truncate":
            low, high = TRUNCATIONS[on]
            if on == "dot":
                return {effect: self.rng.choice([0, 1, 3, 4, 7, 2044, self.rng.randint(low, high)])}
            return {effect: self.rng.choice(EDGES[on]) if self.rng.random() < 0.5 else self.rng.randint(low, high)}
        return {effect: {"lost": True, "delay_ms": 1,
                         "completion_code": self.rng.choice([0x01, 0x0C, 0xC1, 0xC3, 0xCB, 0xFF])}[effect]}

    @staticmethod
    def cuts_sizes(faults):
        return any("truncate" in fault and fault["on"] in ("size", "ipmi") for fault in faults)


def toml_value(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    return '"%s"' % value if isinstance(value, str) else str(value)

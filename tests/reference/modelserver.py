"""The simulated service processor of the collector model."""

import os
from dataclasses import dataclass


@dataclass
class Subject:
    """What the collector's routine is about: class number of the run, instance or file of it, and property."""

    turn: int = None
    place: tuple = None
    prop: str = None


@dataclass
class Exchange:
    """One call of the service-processor library, the data of its answer (or the block), and what it was for."""

    kind: str
    node: int
    ok: bool
    completion_code: int
    data: bytes
    request: bytes
    subject: Subject
    recorded: bool = True


class Fault:
    """One fault of the server file, with its count of matching exchanges."""

    def __init__(self, table):
        self.table = table
        self.seen = 0

    def matches(self, kind, node):
        on = self.table["on"]
        if on != kind and not (on == "ipmi" and kind != "dot"):
            return False
        return "node" not in self.table or self.table["node"] == node

    def counts(self, kind, node):
        """Counts the exchange if it matches; returns whether the fault is due for it."""
        if not self.matches(kind, node):
            return False
        self.seen += 1
        return "nth" not in self.table or self.table["nth"] == self.seen


class ServiceProcessor:
    """The simulated server that answers the service-processor library."""

    MANUFACTURER = bytes((0x39, 0x30, 0x00))
    LARGEST_AREA = 32 << 20
    STORAGE_KINDS = {0x01: "open", 0x06: "size", 0x02: "read", 0x05: "close"}

    def __init__(self, server, directory=".", recorded=None):
        """Of a recording that was cut, `recorded` is the number of exchanges and clock readings that are left."""
        self.server = server
        self.directory = directory
        self.nodes = server.get("bmc_node", [])
        self.faults = [Fault(table) for table in server.get("fault", [])]
        self.exchanges = []
        self.subject = Subject()
        self.turns_before = 0
        self.recorded = recorded
        self.clock_readings = []  # number of the exchange that each followed

    # -- what the exchanges are for ----------------------------------------------------------------------

    def begin_call(self, turns_before):
        self.turns_before = turns_before
        self.subject = Subject()

    def begin_turn(self, position):
        self.subject = Subject(self.turns_before + position)

    def about(self, place, prop=None):
        self.subject = Subject(self.subject.turn, place, prop)

    def note(self, kind, node, request=b"", ok=False, code=0, data=b""):
        self.exchanges.append(Exchange(kind, node, ok, code, data, bytes(request), self.subject, not self.is_over()))

    def note_clock(self):
        self.clock_readings.append(len(self.exchanges))

    def is_over(self):
        """Whether the next exchange comes after the end of the recording."""
        return self.recorded is not None and len(self.exchanges) + len(self.clock_readings) >= self.recorded

    # -- what the library reports ------------------------------------------------------------------------

    def node_count(self):
        return len(self.nodes)

    def driver_present(self):
        return self.server.get("ipmi", {}).get("driver_present", True)

    def is_dot_command(self):
        return "dot" in self.server

    def check_sp_comm(self):
        return self.server["dot"].get("sp_comm", True)

    def discover_sps(self):
        return len(self.server["dot"].get("service_processor", []))

    # -- exchanges ---------------------------------------------------------------------------------------

    def send_ipmi_command(self, node, buffer, length):
        """Answers the request in the 256-byte buffer, in place; returns (ok, length)."""
        kind = self.kind_of(buffer)
        if not self.driver_present() or node >= self.node_count() or self.is_over():
            self.note(kind, node, buffer)
            return False, length
        fault = self.due_fault(kind, node)
        if fault.get("lost"):
            self.note(kind, node, buffer)
            return False, length
        code, data = self.ipmi_answer(kind, self.nodes[node], buffer, fault)
        if "truncate" in fault:
            data = data[:fault["truncate"] - 9]
        self.note(kind, node, buffer, True, code, data)
        if kind == "size" and self.over_limit(code, data):
            return False, length
        buffer[4], buffer[5] = code, len(data)
        buffer[9:256] = data + bytes(256 - 9 - len(data))
        return True, 9 + len(data)

    def send_dot_command(self, index):
        """Answers the register-block command; returns (ok, block), with None as the block if there was no answer."""
        fault = self.due_fault("dot", index)
        if fault.get("lost") or self.is_over():
            self.note("dot", index)
            return False, None
        block = self.bytes_of(self.server["dot"]["service_processor"][index], "block")
        block = block[:fault["truncate"]] if "truncate" in fault else block
        self.note("dot", index, ok=True, data=block)
        return True, block

    def over_limit(self, code, data):
        """The host hides sizes over its limit from the collector, as if there had been no answer."""
        return code == 0 and int.from_bytes(data[3:7].ljust(4, b"\0"), "little", signed=True) > self.LARGEST_AREA

    def due_fault(self, kind, node):
        """Every matching fault counts the exchange; the first one that is due is applied."""
        due = [fault for fault in self.faults if fault.counts(kind, node)]
        return due[0].table if due else {}

    def kind_of(self, buffer):
        function, command = buffer[2], buffer[4]
        if function == 0x3A:
            return {0x62: "register", 0x6F: "timestamp"}.get(command, "other")
        if function == 0x2E and command == 0x90:
            return self.STORAGE_KINDS.get(buffer[12], "other")
        return "other"

    def ipmi_answer(self, kind, node, buffer, fault):
        """Completion code and data; an answer to an OEM/Group request starts with the manufacturer id."""
        lead = self.MANUFACTURER if buffer[2] == 0x2E else b""
        if "completion_code" in fault:
            return fault["completion_code"], lead
        code, data = getattr(self, "answer_" + kind)(node, buffer)
        return code, lead + data

    def answer_other(self, node, buffer):
        return 0xC1, b""

    def answer_register(self, node, buffer):
        chip, address = buffer[9], int.from_bytes(buffer[10:13], "big")
        for register in node.get("register", []):
            if register.get("chip", 0) == chip and register["address"] & 0xFFFFFF == address:
                header = bytes.fromhex(register.get("header", "00 00 00 00 00 00"))
                return 0, header + bytes.fromhex(register["value"])
        if self.server.get("unlisted_registers", "absent") == "pattern":
            return 0, bytes(6) + self.pattern(chip, address)
        return 0xCB, b""

    @staticmethod
    def pattern(chip, address):
        return bytes((address >> (8 * (k % 3)) & 0xFF) ^ chip ^ (17 * k & 0xFF) for k in range(8))

    def answer_timestamp(self, node, buffer):
        if "timestamp" not in node:
            return 0xCB, b""
        return 0, bytes.fromhex(node["timestamp"])

    def answer_open(self, node, buffer):
        place = self.area_place(node, buffer[21:46])
        return (0, place.to_bytes(4, "little")) if place else (0xCB, b"")

    def answer_size(self, node, buffer):
        place = self.area_place(node, buffer[13:38])
        if not place:
            return 0xCB, b""
        area = node["storage_area"][place - 1]
        size = area.get("size", len(self.bytes_of(area, "data")))
        return 0, size.to_bytes(4, "little", signed=True)

    def answer_read(self, node, buffer):
        place = int.from_bytes(buffer[13:17], "little")
        areas = node.get("storage_area", [])
        if not 1 <= place <= len(areas):
            return 0xCB, b""
        offset, asked = int.from_bytes(buffer[17:21], "little"), int.from_bytes(buffer[21:23], "little")
        data = self.bytes_of(areas[place - 1], "data")[offset:offset + asked]
        return 0, len(data).to_bytes(2, "little") + data

    def answer_close(self, node, buffer):
        return 0, b""

    @staticmethod
    def area_place(node, name_field):
        """The position of the area among those of its node, from 1; 0 if there is no such name."""
        name = bytes(name_field).rstrip(b"\0").decode("latin-1")
        for place, area in enumerate(node.get("storage_area", []), 1):
            if area["name"] == name:
                return place
        return 0

    def bytes_of(self, table, key):
        """Bytes given in the file as hex pairs, or in a separate file."""
        if key in table:
            return bytes.fromhex(table[key])
        with open(os.path.join(self.directory, table[key + "_file"]), "rb") as stream:
            return stream.read()

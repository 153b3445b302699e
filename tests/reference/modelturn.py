"""The outcome of one collection of a class: facts of its instances, what was not delivered, and why."""

from collections import Counter, defaultdict

from modelplan import CAPTURE, JFR, R8
from modelvalues import CAPTURE_KEYS

ABSENT = {"completion_code": 0xCB}
ABSENT_AREA = (ABSENT, {"completion_code": 0xC1})
HEADER_SIZE, RECORD_SIZE, SECOND_HEADER = 7, 11, 2040


# ---------------------------------------------------------------------------------------------------------
# How an exchange ended

def how_it_failed(exchange, least):
    """None if the answer has the data bytes that the collector wants; otherwise what the result says of it."""
    if not exchange.ok:
        return {"lost": True} if exchange.recorded else {"not_recorded": True}
    if exchange.completion_code:
        return {"completion_code": exchange.completion_code}
    return {"short": len(exchange.data)} if len(exchange.data) < least else None


def how_register_failed(exchange):
    return how_it_failed(exchange, 14)


def how_time_failed(exchange):
    return how_it_failed(exchange, 4)


def span_of(exchange):
    """Offset and number of the bytes that a storage-area read asks for."""
    return int.from_bytes(exchange.request[17:21], "little"), exchange.request[21]


def bytes_brought(exchange):
    if not exchange.ok or exchange.completion_code:
        return 0
    counted = int.from_bytes(exchange.data[3:5], "little")
    return min(max(len(exchange.data) - 5, 0), counted, span_of(exchange)[1])


def how_read_failed(exchange, size):
    """As how_it_failed, for a read of a file of that size; without a size only an answer with a code is a failure."""
    failed = how_it_failed(exchange, 0)
    if failed or size is None:
        return failed
    offset, count = span_of(exchange)
    brought = bytes_brought(exchange)
    return {"short": brought} if brought < min(count, size - offset) else None


def came(length, start, size):
    """How many of the bytes from start on lie in the first length ones."""
    return max(0, min(size, length - start))


def hex_text(number, digits):
    return "0x%0*X" % (digits, number)


# ---------------------------------------------------------------------------------------------------------
# The turn

def address_of(exchange):
    """The address that a register read asks for."""
    return hex_text(int.from_bytes(exchange.request[10:13], "big"), 6)


def reported_size(exchange):
    """The size in the answer to a size query; what a cut answer lacks is zero."""
    return int.from_bytes(exchange.data[3:7].ljust(4, b"\0"), "little", signed=True)


class TurnBook:
    """One turn: the collection of a class, with the exchanges and instances that the collector made for it."""

    def __init__(self, plan, turn, exchanges, committed):
        self.plan = plan
        self.turn = turn
        self.exchanges = exchanges
        self.committed = committed  # properties of its instances by place
        self.facts = {}
        self.unread = {}
        self.reasons = Counter()
        self.failures = {}  # of exchanges, by their identity
        self.undecodable = []
        self.by_subject = defaultdict(list)
        for exchange in exchanges:
            self.by_subject[exchange.subject.place, exchange.subject.prop].append(exchange)

    def was_begun(self):
        """Whether the request did not fail before the class. A class without any read counts as begun."""
        return bool(self.exchanges) or not self.plan.register_reads(self.turn)

    def about(self, place, prop=None):
        return self.by_subject[place, prop]

    def fail(self, exchange, how, **subject):
        if how:
            self.failures[id(exchange)] = {**subject, **how}

    def finish(self):
        """Fills in everything; `self.facts` has an entry for each planned place."""
        for place in self.plan.places(self.turn):
            self.facts[place] = {"key": self.turn.key(place), "origin": self.turn.origin(place)}
        {R8: self.finish_r8, JFR: self.finish_jfr, CAPTURE: self.finish_capture}[self.turn.of.path]()
        if not self.turn.of.has_way:
            self.unread, self.reasons = {}, Counter()

    def deliver(self, place, missing, code):
        """Completes the facts of an instance, or notes why it is unread."""
        if place not in self.committed:
            self.unread[place] = code
        elif missing:
            self.facts[place].update(incomplete=True, missing=missing)

    def with_meaning(self, register, facts):
        return {**facts, **self.turn.of.meanings[register.name].facts(int(facts["value"], 16))}

    # -- R8 ----------------------------------------------------------------------------------------------

    def finish_r8(self):
        for place in self.plan.places(self.turn):
            self.finish_r8_instance(place)

    def finish_r8_instance(self, place):
        missing, registers = [], {}
        for register in self.turn.of.registers:
            reads = self.about(place, register.name)
            for exchange in reads:
                self.fail(exchange, how_register_failed(exchange), property=register.name,
                          address=address_of(exchange))
            good = [exchange for exchange in reads if not how_register_failed(exchange)]
            if len(good) == 1:
                registers[register.name] = self.with_meaning(register, self.r8_register(register, good[0], place))
            elif self.was_begun():
                missing.append(self.missing_register(register, reads))
        unread = [one for one in missing if not one.items() >= ABSENT.items()]
        self.reasons["register-unread"] += len(unread)
        code = "absent" if missing and not unread and not registers else "register-unread"
        self.finish_time(place, missing)
        self.deliver(place, missing, code)
        if place in self.committed:
            self.facts[place]["registers"] = registers

    def finish_time(self, place, missing):
        reads = self.about(place, "StatisticTime")
        for exchange in reads:
            failed = how_time_failed(exchange)
            self.fail(exchange, failed, property="StatisticTime")
            if failed:
                missing.append({"property": "StatisticTime", **failed})
                self.reasons["time-unread"] += failed != ABSENT
        if len(reads) == 2 and not how_time_failed(reads[1]):
            self.facts[place]["origin"]["time_raw"] = reads[1].data[:4].hex(" ")

    def missing_register(self, register, reads):
        ways = [how_register_failed(exchange) for exchange in reads]
        addresses = [hex_text(address, 6) for address in register.addresses]
        where = {"address": addresses[0]} if len(addresses) == 1 else {"addresses": addresses}
        alike = ways and ways[0] and all(way == ways[0] for way in ways)
        return {"property": register.name, **where, **(ways[0] if alike else {"answered": ways.count(None)})}

    def r8_register(self, register, exchange, place):
        value = int.from_bytes(exchange.data[6:14], "little")
        facts = {"address": address_of(exchange), "width": 32 if register.narrow else 64}
        if not register.narrow:
            return {**facts, "value": hex_text(value, 16)}
        low, upper = value & 0xFFFFFFFF, value >> 32
        facts["value"] = hex_text(low, 8)
        if upper:
            facts["upper"] = hex_text(upper, 8)
        shown = self.committed.get(place, {}).get(register.name)
        if shown and int.from_bytes(bytes(shown[3:7]), "big") != low:
            facts["folded"] = hex_text(int.from_bytes(bytes(shown[3:7]), "big"), 8)
        return facts

    # -- JFR ---------------------------------------------------------------------------------------------

    def finish_jfr(self):
        if not self.plan.blocks:
            self.reasons["block-unread"] += self.plan.service_processors
        codes = {owner: "block-unread" for owner in range(self.plan.service_processors)}
        for exchange in self.exchanges:
            codes[exchange.node] = self.finish_block(exchange, codes)
        for place in self.plan.places(self.turn):
            missing = self.facts[place].pop("missing_of_block", [])
            self.deliver(place, missing, codes[place[0]] or "block-unread")

    def finish_block(self, exchange, codes):
        """What happened to the instances of the block, or None if nothing did."""
        length = len(exchange.data)
        if not exchange.ok or not length:
            self.fail(exchange, how_it_failed(exchange, 1))
            self.reasons["block-unread"] += 1
            return "block-unread"
        if not self.turn.of.instances:
            return None
        header = self.header_of(exchange.data)
        if header is None:
            self.reasons["block-undecodable"] += 1
            self.undecodable.append(exchange.node)
            codes.update({owner: "discarded" for owner in range(exchange.node) if codes[owner] is None})
            return "block-undecodable"
        short = [self.finish_record(exchange, header, instance) for instance in range(self.turn.of.instances)]
        if any(short):
            self.fail(exchange, {"short": length})
            self.reasons["block-short"] += 1
        return None

    @staticmethod
    def header_of(block):
        filled = block + b"0" * (SECOND_HEADER + HEADER_SIZE)
        for start in (0, SECOND_HEADER):
            if filled[start + 2] and filled[start + 3]:
                return start
        return None

    def finish_record(self, exchange, header, instance):
        """Whether bytes of the instance were not received; notes its registers and what is missing."""
        place, length = (exchange.node, instance), len(exchange.data)
        missing, registers = [], {}
        for register in self.turn.of.registers:
            start = (0 if header else HEADER_SIZE) + (register.index + instance * 256) * 8
            got = came(length, start, RECORD_SIZE)
            if got < RECORD_SIZE:
                missing.append({"property": register.name, "index": register.index, "short": got})
                continue
            record = exchange.data[start:start + RECORD_SIZE]
            registers[register.name] = self.with_meaning(register, {
                "index": register.index, "width": 64, "value": "0x" + record[3:].hex().upper(),
                "identification": record[:3].hex(" ").upper()})
        got = came(length, header, HEADER_SIZE)
        if got < HEADER_SIZE:
            missing.append({"property": "StatisticTime", "short": got})
        self.facts[place].update(registers=registers, missing_of_block=missing)
        return bool(missing)

    # -- capture files -----------------------------------------------------------------------------------

    def finish_capture(self):
        if not self.plan.driver:
            self.reasons["file-unread"] += len(self.plan.places(self.turn))
        for place in self.plan.places(self.turn):
            code = self.finish_file(place, self.about(place))
            self.reasons["file-unread"] += bool(self.exchanges) and code == "file-unread"

    def finish_file(self, place, exchanges):
        """Returns what became of the file: "absent", "file-unread" or None."""
        of_kind = defaultdict(list)
        for exchange in exchanges:
            of_kind[exchange.kind].append(exchange)
            if exchange.kind != "read":
                self.fail(exchange, how_it_failed(exchange, 0))
        opened = how_it_failed(of_kind["open"][0], 0) if exchanges else None
        if not of_kind["read"]:
            code = "absent" if opened in ABSENT_AREA else "file-unread"
            self.deliver(place, [], code)
            return code
        size = reported_size(of_kind["size"][0])
        missing, received = self.finish_reads(of_kind["read"], size)
        self.facts[place]["file"] = {"area": CAPTURE_KEYS[place[1]], "reported_size": size, "received": received}
        self.deliver(place, missing, "file-unread")
        return "file-unread" if missing else None

    def finish_reads(self, reads, size):
        missing = []
        for exchange in reads:
            failed = how_read_failed(exchange, size)
            self.fail(exchange, failed, property="ErrRawData")
            offset, brought = span_of(exchange)[0], bytes_brought(exchange)
            if failed and not missing and offset + brought < size:
                missing = [{"property": "ErrRawData", "offset": offset + brought, **failed}]
        return missing, sum(bytes_brought(exchange) for exchange in reads)

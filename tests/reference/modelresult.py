"""What the host must say about a collection besides the collector's instances: the result document.

document() computes it from schema, server file and what the collector model did, whose exchanges say what they were
for. All that a run is free to choose is left out: `run` but for the labels, and the elapsed time.
"""

from collections import Counter, defaultdict

from modelmeaning import fails, findings_of
from modelplan import CAPTURE, IDLE, PLANNED, UNKNOWN
from modelturn import TurnBook, address_of, how_it_failed, how_register_failed, how_time_failed, reported_size
from modelvalues import CAPTURE_KEYS

IDENTITY = {"name": "Engineering Information Collector", "version": "1.0", "interface_version": "1.0"}
CODES = ["stopped", "session-lost", "request-failed", "register-unread", "time-unread", "file-unread", "block-unread",
         "block-short", "block-undecodable", "not-served", "not-collected", "nothing-read"]
LIMIT = 32 << 20


UNREAD_OF_KIND = {"register": "register-unread", "timestamp": "time-unread", "open": "file-unread",
                  "size": "file-unread", "read": "file-unread", "dot": "block-unread"}


def is_absent(kind, how):
    """Whether the service processor says that it does not have a register, the time, or an area that is opened."""
    codes = {"register": (0xCB,), "timestamp": (0xCB,), "open": (0xCB, 0xC1)}.get(kind, ())
    return how.get("completion_code") in codes


class Result:
    """The document of a run of the collector model."""

    def __init__(self, plan, run):
        self.plan = plan
        self.run = run
        self.by_turn = defaultdict(list)
        for exchange in run.exchanges:
            self.by_turn[exchange.subject.turn].append(exchange)
        self.reasons = defaultdict(Counter)  # by class name
        self.notes = defaultdict(list)       # texts of reasons by class name and code
        self.left = {number: self.turn_left(number) for number in range(len(run.calls))}
        self.ended = {number: self.turn_failed(number) for number in range(len(run.calls))}
        self.books = {turn.number: self.book_of(turn) for turn in plan.turns if self.is_followed(turn)}
        for turn in plan.turns:
            self.add_reasons(turn)
        for number, call in enumerate(run.calls):
            if call.failure:
                self.add_note(self.blamed_class(number), "request-failed", call.told)
            self.add_refused_sizes(number)
        self.add_unplaced_failures()

    def turns_of(self, call):
        return [turn for turn in self.plan.turns if turn.call == call]

    def exchanges_of(self, turn):
        return self.by_turn[turn.number]

    # -- where the plan ends -----------------------------------------------------------------------------

    def turn_left(self, call):
        """The first class that may do anything, if there was an exchange from it on; no place is known from there."""
        for turn in self.turns_of(call):
            if turn.reached and turn.of.kind == UNKNOWN and any(self.exchanges_of(later)
                                                                for later in self.turns_of(call)
                                                                if later.number >= turn.number):
                return turn.number
        return None

    def turn_failed(self, call):
        """The class that an exception is blamed on: the first that was not finished, else the last that is reached."""
        if not self.run.calls[call].failure:
            return None
        if self.left[call] is not None:
            return self.left[call]
        turns = [turn for turn in self.turns_of(call) if turn.reached]
        open_turns = [turn for turn in turns if not self.is_finished(turn, self.run.calls[call].at)]
        return (open_turns + turns[-1:])[0].number if turns else None

    def is_finished(self, turn, at):
        """Whether nothing that the plan has of the class was left when the class number `at` failed."""
        if turn.of.kind != PLANNED:
            return turn.of.kind == IDLE
        if at is not None and at != turn.number:
            return turn.number < at
        return not (self.plan.register_reads(turn) + self.plan.dot_commands(turn)
                    + (turn.of.path == CAPTURE and self.plan.driver and self.plan.nodes))

    def is_followed(self, turn):
        """Whether every exchange of the class is known, even if it made none."""
        left, ended = self.left[turn.call], self.ended[turn.call]
        return (turn.reached and turn.of.kind == PLANNED and (left is None or turn.number < left)
                and (ended is None or turn.number <= ended))

    def blamed_class(self, call):
        """None for a request of no class."""
        return None if self.ended[call] is None else self.plan.turns[self.ended[call]].of.cls.name

    def book_of(self, turn):
        committed = {place: dict(properties) for (number, place), (_, properties)
                     in zip(self.run.places, self.run.instances) if number == turn.number}
        book = TurnBook(self.plan, turn, self.exchanges_of(turn), committed)
        book.finish()
        return book

    # -- reasons -----------------------------------------------------------------------------------------

    def add_reasons(self, turn):
        name = turn.of.cls.name
        if turn.number in self.books:
            self.reasons[name].update(self.books[turn.number].reasons)
        if turn.named and turn.of.why:
            self.reasons[name]["not-served"] += 1
        elif not turn.reached:
            self.add_note(name, "not-collected", "the collector ends the request after KROSG_DCAPFile")
        elif self.has_failed_before(turn):
            self.add_note(name, "not-collected", "the request ended before this class")

    def is_cut_off(self, turn):
        """Whether the request was over before the class: after the capture files or a failure."""
        return not turn.reached or self.has_failed_before(turn)

    def has_failed_before(self, turn):
        ended = self.ended[turn.call]
        return self.left[turn.call] is None and ended is not None and turn.number > ended

    def add_note(self, name, code, text):
        self.reasons[name][code] += 1
        self.notes[name, code].append(text)

    def reason_list(self):
        result = [{"code": code, "count": count, "message": "; ".join(self.notes[None, code])}
                  for code, count in self.reasons[None].items()]
        if not self.plan.turns:
            result.append({"code": "nothing-read", "count": 1, "message": "there are no classes to collect"})
        elif self.plan.total() and not self.run.instances:
            result.append({"code": "nothing-read", "count": 1, "message": "no instance was delivered"})
        for name in dict.fromkeys(turn.of.cls.name for turn in self.plan.turns):
            result += [{"code": code, "class": name, "count": self.reasons[name][code],
                        "message": self.message_of(name, code, self.reasons[name][code])}
                       for code in CODES if self.reasons[name][code]]
        return result

    def message_of(self, name, code, count):
        turns = [turn for turn in self.plan.turns if turn.of.cls.name == name and not self.is_cut_off(turn)]
        of = self.plan.known[name]
        share = self.share_of(code, count, of, len(turns))
        verb = "was" if count == 1 else "were"
        if code == "register-unread":
            return share + verb + " not read"
        if code == "time-unread":
            text = "the time of 1 instance was" if count == 1 else "the times of %d instances were" % count
            return text + " not read"
        if code == "file-unread":
            texts = [share + ("is" if count == 1 else "are") + " missing or incomplete"]
            texts += dict.fromkeys([text for turn in turns if turn.number in self.books
                                    for text in self.refused_sizes(turn)] + self.notes[name, code])
            return "; ".join(texts + ([] if self.plan.driver else ["the IPMI driver is not present"]))
        if code == "block-unread":
            if not self.plan.communicates:
                return "the communication check of the service processor failed"
            return share + verb + " not received"
        if code == "block-short":
            return share + verb + " too short"
        if code == "block-undecodable":
            return self.undecodable_text(turns)
        if code == "not-served":
            return "not served: " + of.why
        return "; ".join(dict.fromkeys(self.notes[name, code]))

    def share_of(self, code, count, of, turns):
        """What the plan does not know of, it does not count."""
        total, noun = {"register-unread": (turns * of.instances * len(of.registers), "register"),
                       "file-unread": (turns * len(CAPTURE_KEYS) * self.plan.nodes, "capture file")
                       }.get(code, (turns * self.plan.blocks, "register block"))
        return "%d of %s " % (count, counted(total, noun)) if total >= count else counted(count, noun) + " "

    def add_refused_sizes(self, call):
        """Even where nothing is known, the host knows of the files that it withheld from the collector."""
        left = self.left[call]
        for turn in self.turns_of(call):
            for text in self.refused_sizes(turn) if left is not None and turn.number >= left else ():
                self.add_note(self.plan.turns[left].of.cls.name, "file-unread", text)

    def add_unplaced_failures(self):
        """What fails where the plan knows of no register or file was asked for all the same."""
        for exchange in self.run.exchanges:
            turn = self.plan.turns[exchange.subject.turn]
            how = None if turn.number in self.books else self.unplaced_failure(exchange)
            blamed = self.blamed_turn(turn)
            wayless = blamed.of.path and not blamed.of.has_way
            if how and exchange.kind in UNREAD_OF_KIND and not wayless and not is_absent(exchange.kind, how):
                self.reasons[blamed.of.cls.name][UNREAD_OF_KIND[exchange.kind]] += 1

    def blamed_turn(self, turn):
        left = self.left[turn.call]
        return self.plan.turns[left] if left is not None and turn.number >= left else turn

    def refused_sizes(self, turn):
        for exchange in self.exchanges_of(turn):
            if exchange.kind == "size" and exchange.completion_code == 0 and reported_size(exchange) > LIMIT:
                yield ("node %d, storage area %s reports %d bytes, over the limit of 32 MiB: not read"
                       % (exchange.node, CAPTURE_KEYS[exchange.subject.place[1]], reported_size(exchange)))

    def undecodable_text(self, turns):
        books = [self.books[turn.number] for turn in turns if turn.number in self.books]
        owners = list(dict.fromkeys("%d" % owner for book in books for owner in book.undecodable))
        dropped = sum(code == "discarded" for book in books for code in book.unread.values())
        one = len(owners) == 1
        text = "the register block%s of service processor%s " % (("", "") if one else ("s", "s"))
        text += listed(owners) + (" has" if one else " have") + " no valid time"
        if not dropped:
            return text
        return text + "; %s from other service processors %s discarded with %s" % (counted(dropped, "instance"),
                                                            "was" if dropped == 1 else "were", "it" if one else "them")

    # -- members -----------------------------------------------------------------------------------------

    def instances(self):
        result, unknown = [], 0
        for (name, properties), (number, place) in zip(self.run.instances, self.run.places):
            one = {"kind": "instance", "class": name, "properties": dict(properties)}
            book = self.books.get(number)
            if book:
                one.update(book.facts[place])
            else:
                unknown += 1
                one["key"] = "%s/?%d" % (name, unknown)
            result.append(one)
        return result

    def failed(self):
        result = []
        for exchange in self.run.exchanges:
            turn = self.plan.turns[exchange.subject.turn]
            book = self.books.get(turn.number)
            details = book.failures.get(id(exchange)) if book else self.unplaced_failure(exchange)
            if details is None:
                continue
            one = {"class": self.blamed_turn(turn).of.cls.name, "kind": exchange.kind, **details}
            one["service_processor" if exchange.kind == "dot" else "node"] = exchange.node
            if book and exchange.kind != "dot":
                one["key"] = turn.key(exchange.subject.place)
            result.append(one)
        return result

    @staticmethod
    def unplaced_failure(exchange):
        """Of an exchange that the plan does not have, only what the exchange itself says."""
        if exchange.kind == "register":
            how = how_register_failed(exchange)
            return how and {**how, "address": address_of(exchange)}
        if exchange.kind == "timestamp":
            return how_time_failed(exchange)
        return how_it_failed(exchange, 1 if exchange.kind == "dot" else 0)

    def unread(self):
        return [{"class": book.turn.of.cls.name, "key": book.turn.key(place), "origin": book.turn.origin(place),
                 "code": book.unread[place]}
                for book in self.books.values() for place in self.plan.places(book.turn) if place in book.unread]

    def findings(self, instances):
        return findings_of([(one, self.plan.turns[number].of.meanings)
                            for one, (number, _) in zip(instances, self.run.places) if "registers" in one])

    def document(self, fail_on=None):
        reasons = self.reason_list()
        partial = any(reason["code"] != "time-unread" for reason in reasons)
        instances = self.instances()
        findings = self.findings(instances)
        document = {"kind": "instancecollection", "format_version": 2, "machine_type": self.plan.machine_type,
                    "plugin": IDENTITY, "instances": instances, "reasons": reasons, "unread": self.unread(),
                    "exchanges": {"total": len(self.run.exchanges), "failed": self.failed()}, "findings": findings,
                    "status": "partial" if partial else "complete",
                    "exit_status": 1 if fails(findings, fail_on) else 3 if partial else 0}
        if partial:
            document["message"] = message_of(reasons)
        return document


def counted(number, noun):
    return "%d %s%s" % (number, noun, "" if number == 1 else "s")


def listed(texts):
    return texts[0] if len(texts) == 1 else ", ".join(texts[:-1]) + " and " + texts[-1]


def message_of(reasons):
    ordered = sorted(reasons, key=lambda reason: reason["code"] == "time-unread")
    texts = [(reason["class"] + ": " if "class" in reason else "") + reason["message"] for reason in ordered[:3]]
    return "; ".join(texts + (["and %d more" % (len(ordered) - 3)] if len(ordered) > 3 else []))


def document(plan, run, fail_on=None):
    return Result(plan, run).document(fail_on)

"""The host of the collector model: trace, instances, clock; and the byte dumps of the trace."""

from modelvalues import CLASS, DEBUG, STATUS, TvelException, VERBOSE, datetime_value, deref
from modelserver import ServiceProcessor


class Log:
    """The logging facade: empty lines are never sent."""

    def __init__(self):
        self.lines = []

    def write(self, severity, message):
        if message:
            self.lines.append((severity, message))

    def status(self, message):
        self.write(STATUS, message)

    def debug(self, message):
        self.write(DEBUG, message)

    def verbose(self, message):
        self.write(VERBOSE, message)


class Instance:
    """A new instance of a class; the host receives it when it is committed."""

    def __init__(self, host, cls):
        self.host = host
        self.cls = cls
        self.declared = host.schema.property_declarations(cls)
        self.values = {}

    def set(self, name, value):
        for declared in self.declared:
            if declared.name.lower() == name.lower():
                self.check_shape(declared, value)
                self.values[declared.name] = value
                return
        raise TvelException(12, "class %s declares no property \"%s\"" % (self.cls.name, name))

    def check_shape(self, declared, value):
        if value.is_null() or value.is_array() == declared.is_array:
            return
        shapes = ("an array", "a scalar") if declared.is_array else ("a scalar", "an array")
        raise TvelException(13, "property %s.%s is declared as %s and cannot take %s"
                            % (self.cls.name, declared.name, *shapes))

    def commit(self, place):
        """The place is where the collector read the instance: node or service processor, and which one of it."""
        properties = [(one.name, self.values[one.name].plain()) for one in self.declared if one.name in self.values]
        self.host.instances.append((self.cls.name, properties))
        self.host.places.append((self.host.sp.subject.turn, place))


class Host:
    """The parts of the host that the plugin uses."""

    def __init__(self, schema, server, timezone, directory, recorded=None):
        self.schema = schema
        self.machine_type = server["machine_type"]
        self.local_time = server.get("local_time")
        self.timezone = timezone
        self.sp = ServiceProcessor(server, directory, recorded)
        self.log = Log()
        self.instances = []
        self.places = []

    def class_qualifier(self, cls, name):
        return self.schema.class_qualifier(deref(cls, CLASS), name)

    def create_instance(self, cls):
        return Instance(self, deref(cls, CLASS))

    def clock(self):
        """The host's clock as a datetime value."""
        self.sp.note_clock()
        now = self.local_time
        minutes = int(now.utcoffset().total_seconds()) // 60
        return datetime_value(now.year, now.month, now.day, now.hour, now.minute, now.second, minutes)


class PlacedMap(dict):
    """The properties of an instance, and where the collector read them."""

    def __init__(self, properties, place):
        super().__init__(properties)
        self.place = place


# ---------------------------------------------------------------------------------------------------------
# Byte dumps

def dump(data, last):
    """Bytes 0 to last in decimal, eight per line; data has last + 1 bytes."""
    text = ""
    for i in range(last + 1):
        if i % 8 == 0:
            text += "\n"
        text += "%d " % data[i]
    return text + "\n"


def hex_pairs(data):
    return "".join("%02x " % byte for byte in data)


def quotient(number, divisor):
    """Division as in C: truncates toward zero."""
    return -(-number // divisor) if number < 0 else number // divisor

"""Reference model of the collector plugin, with its own simulated service processor.

run() takes a schema, a server (a server file as parsed by tomllib), a list of GetData calls and the local time zone. It
returns what a host observes from loading the library to unloading it: the trace, the committed instances, how each call
ended, and the exchanges with the service processor.

The routines follow the collector step by step, one routine for each of its operations, so that each can be compared
with the operation that it models.
"""

from dataclasses import dataclass

# Everything that users of the model require, under one name.
from modelvalues import *  # noqa: F401,F403
from modelschema import *  # noqa: F401,F403
from modelserver import *  # noqa: F401,F403
from modelhost import *  # noqa: F401,F403
from modelplugin import *  # noqa: F401,F403
from modelr8 import *  # noqa: F401,F403
from modeljfr import *  # noqa: F401,F403


@dataclass
class Call:
    """One GetData call: its classes and how it ended.

    If it failed, by "assertion" or "TVELException": what the host tells of that, and the number of the class in the run
    that was being collected, None before the first.
    """

    classes: list
    failure: str = None
    told: str = ""
    at: int = None


@dataclass
class Run:
    """What a host observes from loading the library to unloading it."""

    trace: list
    instances: list
    calls: list
    exchanges: list
    places: list
    clock_readings: list


def run(schema, server, calls, timezone=0, directory=".", recorded=None):
    """Runs the GetData calls (lists of class names); timezone is in seconds west of UTC.

    With `recorded`, only so many exchanges and clock readings take place, as with a recording that was cut.
    """
    host = Host(schema, server, timezone, directory, recorded)
    plugin = Plugin(host)
    plugin.init()
    ended, turns = [], 0
    for classes in calls:
        host.sp.begin_call(turns)
        ended.append(one_call(host, plugin, classes))
        turns += len(classes)
    plugin.de_init()
    return Run(host.log.lines, host.instances, ended, host.sp.exchanges, host.places,
               host.sp.clock_readings)


def one_call(host, plugin, classes):
    try:
        plugin.get_data([host.schema.find(name) for name in classes])
    except AssertionFailed as error:
        return Call(list(classes), "assertion", error.told, host.sp.subject.turn)
    except TvelException as error:
        return Call(list(classes), "TVELException", error.told, host.sp.subject.turn)
    return Call(list(classes))

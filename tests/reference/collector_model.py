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
    """One GetData call: its classes, how it ended (None, "assertion" or "TVELException"), what it did."""

    classes: list
    failure: str
    exchanges: list
    instances: int


@dataclass
class Run:
    """What a host observes from loading the library to unloading it."""

    trace: list
    instances: list
    calls: list
    exchanges: list


def run(schema, server, calls, timezone=0, directory="."):
    """Runs the GetData calls (lists of class names); timezone is in seconds west of UTC."""
    host = Host(schema, server, timezone, directory)
    plugin = Plugin(host)
    plugin.init()
    ended = [one_call(host, plugin, classes) for classes in calls]
    plugin.de_init()
    return Run(host.log.lines, host.instances, ended, host.sp.exchanges)


def one_call(host, plugin, classes):
    exchanges, instances, failure = len(host.sp.exchanges), len(host.instances), None
    try:
        plugin.get_data([host.schema.find(name) for name in classes])
    except AssertionFailed:
        failure = "assertion"
    except TvelException:
        failure = "TVELException"
    return Call(list(classes), failure, host.sp.exchanges[exchanges:], len(host.instances) - instances)

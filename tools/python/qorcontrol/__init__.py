"""Remote control of QOR, through `qorctl serve`.

    from qorcontrol import Qor

    with Qor("qor-settings.ini") as qor:      # a server of one's own
        qor.connect()
        print(qor.read("EngineSpeed"))
        for sample in qor.stream(["EngineSpeed", "OilPressure"]):
            print(sample.name, sample.value)

    qor = Qor.attach("http://127.0.0.1:8080/")  # one that others use too

The server is a 32-bit Windows program; Python may have 64 bits. To be read in this order: `qor` (life, streams,
events, direct control), `operations` (everything else that it can do), `records` and `events` (what comes back),
`errors` (what is raised), `feeds` (streams as iterators); then what they are made of.
"""
from .control import DirectControl
from .errors import (AgentBusy, AgentEnded, BadAnswer, BadArgument, Busy, Cancelled, Closed, ConnectReported,
                     ControlLost, EcuOffline, KwpBeforeConnect, LibraryError, MayBelongToEarlier, NoConnection,
                     NoData, NoServer, NoSuchMethod, NotReady, OutOfMemory, ProtocolError, PushedOut, QorChanged,
                     QorError, QorSilent, ReadOnly, Refused, RefusedByQor, RefusedByServer, RequestTooLarge,
                     ResultTooLarge, ServerEnded, StreamSilent, SystemFailure, Taken, UnknownName, WrongOrder)
from .events import BoxEvent, ControlEvent, EndEvent, Event, LogEvent, ProgressEvent, StateEvent
from .feeds import DtcStream, Events, Feed, Stream, TraceStream
from .operations import ConnectType
from .qor import Qor
from .records import (CanItem, ConnectSettings, Control, Dtc, Failure, KwpAnswer, MethodFigures, ParamData,
                      ParamDescription, ParamName, ParamText, Progress, Sample, ServerStatus, State)
from .version import __version__

__all__ = [
    "Qor", "__version__",
    # what goes in and comes back
    "ConnectSettings", "ConnectType", "State", "Progress", "ParamData", "ParamText", "ParamDescription", "ParamName",
    "Dtc", "KwpAnswer", "CanItem", "Sample", "ServerStatus", "MethodFigures", "Failure", "Control",
    # streams, events, direct control
    "Stream", "DtcStream", "TraceStream", "Feed", "Events", "Event", "StateEvent", "ProgressEvent", "LogEvent",
    "ControlEvent", "BoxEvent", "EndEvent", "DirectControl",
    # what is raised
    "QorError", "LibraryError", "AgentEnded", "AgentBusy", "PushedOut", "NoConnection", "QorSilent", "NoData",
    "Refused", "RefusedByQor", "UnknownName", "KwpBeforeConnect", "Cancelled", "ConnectReported", "EcuOffline",
    "ResultTooLarge", "OutOfMemory", "RequestTooLarge", "QorChanged", "BadAnswer", "SystemFailure", "NotReady",
    "WrongOrder", "BadArgument", "Busy", "ReadOnly", "Taken", "RefusedByServer", "NoSuchMethod", "ProtocolError",
    "ServerEnded", "NoServer", "Closed", "StreamSilent", "ControlLost", "MayBelongToEarlier",
]

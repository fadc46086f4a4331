"""Every operation of the server as a method with types; the names are the server's in Python's spelling.

`timeout_ms` is the time that QOR has; the call itself may take twice that, and waits its turn before.
Whatever does not work raises an exception of `errors`.
"""
from __future__ import annotations


import warnings
from typing import Any, Callable, Dict, List, Literal, Mapping, Optional, Sequence

from . import records
from .errors import MayBelongToEarlier
from .link import Pending
from .records import (CanItem, ConnectSettings, Dtc, KwpAnswer, ParamData, ParamDescription, ParamName,
                      ParamText, Progress, ServerStatus, State)



ConnectType = Literal["Default", "SecurityAccess", "Alternative"]
PROGRESS_LOOK_S = 0.02
LATE_PROGRESS_S = 0.1  # over HTTP the last figure may come after the response, which takes another way


class Operations:
    """What `Qor` can do, but for its life, its streams and its events."""

    # --- The connection ---

    def get_state(self) -> State:
        """What is known without asking QOR."""
        told = self.call("getState")
        return State(**records.fields_of(told, State._fields))

    def get_qor_executable_path(self) -> str:
        """QOR's program; empty where the settings name none, which takes 3 s to find out."""
        return str(self.call("getQorExecutablePath")["path"])

    def connect(self, settings: Optional[ConnectSettings] = None, type: ConnectType = "Default", *,
                progress: Optional[Callable[[Progress], None]] = None) -> None:
        """Connects the ECU and waits for that, without a limit: `cancel_connect` of another thread ends it.

        `progress` is called in this thread, whenever QOR tells a figure; an exception of it, or Ctrl-C,
        cancels the connect.
        """
        told = records.settings_as_told(settings or ConnectSettings())
        news = self._listen_to_progress() if progress else lambda wait_s: []
        pending = self.send("connect", settings=told, type=type)
        try:
            while not pending.wait(PROGRESS_LOOK_S if progress else None):
                for each in news(0):
                    progress(each)  # type: ignore[misc]
            for late in iter(lambda: news(LATE_PROGRESS_S), []):
                for each in late:
                    progress(each)  # type: ignore[misc]
        except BaseException:
            self.cancel_connect()
            pending.abandon()
            raise
        self.finish(pending)

    def cancel_connect(self) -> None:
        """Cancels the connect that this program waits for in another thread: that raises `Cancelled`."""
        self.call("cancelConnect")

    def ping_qor(self, timeout_ms: int = 1000) -> None:
        """Returns if QOR answers."""
        self.call("pingQor", timeoutMs=timeout_ms)

    def set_ecu_segment(self, segment: str, flag: bool = False) -> None:
        """Selects the memory page to work on: one of the two names in `get_state`."""
        self.call("setEcuSegment", segment=segment, flag=flag)

    def open_model(self, model: str, *, model_type: int = 1, model_option: int = 0xFFFFFFFF, hex: str = "",
                   hex_option: int = 0, csv: str = "", csv_option: int = 0,
                   extra: Optional[Mapping[str, str]] = None) -> None:
        """Lets QOR open a model, and waits for that; connect again afterwards.

        The paths are QOR's: they are passed on as they are.
        """
        self.call("openModel", modelType=model_type, model=model, modelOption=model_option, hex=hex,
                  hexOption=hex_option, csv=csv, csvOption=csv_option, extra=dict(extra or {}))

    def connect_can_bus(self, bus_param: int = 500000, first_flag: bool = True, second_flag: bool = True,
                        type: ConnectType = "Default") -> None:
        """Opens the CAN bus, and waits for that."""
        self.call("connectCanBus", busParam=bus_param, firstFlag=first_flag, secondFlag=second_flag, type=type)

    # --- Parameters ---

    def get_param_description(self, name: str) -> ParamDescription:
        """Describes a parameter."""
        told = self.call("getParamDescription", name=name)
        return ParamDescription(**records.fields_of(told, ParamDescription._fields))

    def get_param_data(self, name: str, timeout_ms: int = 1000) -> ParamData:
        """Reads a parameter. What is younger than half a refresh period comes from the library's cache."""
        told = self.call("getParamData", name=name, timeoutMs=timeout_ms)
        return ParamData(*(records.numbers(told[each]) for each in ParamData._fields))

    def get_param_data_as_string(self, name: str, timeout_ms: int = 1000) -> ParamText:
        """Reads a parameter whose values are character codes."""
        told = self.call("getParamDataAsString", name=name, timeoutMs=timeout_ms)
        return ParamText(told["text"], bytes.fromhex(told["bytes"]))

    def get_param_data_at_once(self, names: Sequence[str], timeout_ms: int = 1000) -> List[List[float]]:
        """Reads several parameters in one exchange, past the cache: a list per name, in their order."""
        told = self.call("getParamDataAtOnce", names=list(names), timeoutMs=timeout_ms)
        return [records.numbers(each) for each in told["values"]]

    def set_param_data(self, name: str, values: Sequence[float], second: Sequence[float] = (),
                       third: Sequence[float] = (), timeout_ms: int = 1000) -> None:
        """Writes a parameter; the further arrays are those of a curve or map."""
        self.call("setParamData", name=name, values=records.told_numbers(values),
                  second=records.told_numbers(second), third=records.told_numbers(third), timeoutMs=timeout_ms)

    def set_dynamic_data(self, name: str, value: str, timeout_ms: int = 1000) -> None:
        """Writes a value as text, in QOR's own notation."""
        self.call("setDynamicData", name=name, value=value, timeoutMs=timeout_ms)

    def get_param_names(self) -> List[ParamName]:
        """The parameters that the server has heard of: QOR has no list of all."""
        return [records.param_name_of(each) for each in self.call("getParamNames")["names"]]

    def read(self, name: str, timeout_ms: int = 1000) -> float:
        """The first value of a parameter."""
        return self.get_param_data(name, timeout_ms).values[0]

    def write(self, name: str, value: float, timeout_ms: int = 1000) -> None:
        """Writes a parameter that is one number."""
        self.set_param_data(name, [value], timeout_ms=timeout_ms)

    # --- Direct control; `Qor.direct_control` does all three ---

    def start_direct_ctrl(self, name: str, timeout_ms: int = 500, lease_ms: int = 0) -> None:
        """Takes an actuator under direct control. With a lease the server gives it back by itself, unless
        `renew_direct_ctrl` comes again within that time."""
        self.call("startDirectCtrl", name=name, timeoutMs=timeout_ms, leaseMs=lease_ms)

    def renew_direct_ctrl(self, name: str, lease_ms: int) -> None:
        """Begins a lease anew."""
        self.call("renewDirectCtrl", name=name, leaseMs=lease_ms)

    def stop_direct_ctrl(self, name: str, timeout_ms: int = 500) -> None:
        """Gives an actuator back."""
        self.call("stopDirectCtrl", name=name, timeoutMs=timeout_ms)

    # --- Diagnostics ---

    def clear_dtc(self, timeout_ms: int = 1000) -> None:
        """Clears the trouble codes."""
        self.call("clearDtc", timeoutMs=timeout_ms)

    def get_dtc_by_status(self, timeout_ms: int = 1000) -> List[Dtc]:
        """Reads the trouble codes."""
        return [records.dtc_of(each) for each in self.call("getDtcByStatus", timeoutMs=timeout_ms)["dtcs"]]

    def send_kwp_command(self, service: int, data: bytes = b"", timeout_ms: int = 1000) -> KwpAnswer:
        """Sends a KWP request; works only after a connect."""
        told = self.call("sendKwpCommand", service=service, data=bytes(data).hex(), timeoutMs=timeout_ms)
        return KwpAnswer(bytes.fromhex(told["data"]), bool(told["failed"]))

    def get_can_bus_data(self, can_ids: Sequence[int], timeout_ms: int = 1000) -> List[CanItem]:
        """Reads the values of CAN identifiers."""
        told = self.call("getCanBusData", canIds=list(can_ids), timeoutMs=timeout_ms)
        return [CanItem(int(each["canId"]), int(each["value"])) for each in told["items"]]

    def send_can_bus_msg(self, first: int, second: int, message: bytes, timeout_ms: int = 1000) -> None:
        """Sends a CAN message; the two numbers and the bytes are QOR's and travel unchanged."""
        self.call("sendCanBusMsg", first=first, second=second, message=bytes(message).hex(),
                  timeoutMs=timeout_ms)

    # --- The server ---

    def answer_box(self, number: int, choice: int) -> None:
        """Presses a button of a message box of QOR's, as Windows numbers them (1: OK, 2: Cancel, 6: Yes, 7: No)."""
        self.call("answerBox", number=number, choice=choice)

    def get_server_status(self) -> ServerStatus:
        """What goes on in the server, of all clients together."""
        return records.status_of(self.call("getServerStatus"))

    def shutdown_server(self) -> None:
        """Ends the server, for all clients. One that was joined refuses, unless it was started to allow it."""
        self.call("shutdownServer")

    def discover(self) -> Dict[str, Any]:
        """The server's description of its methods, as OpenRPC."""
        return self.call("rpc.discover")

    # --- What they are made of ---

    def call(self, method: str, **params: Any) -> Dict[str, Any]:
        """Any method of the server, in the server's own words: what it returns, or an exception."""
        pending = self.send(method, **params)
        try:
            pending.wait()
        except BaseException:
            pending.abandon()
            raise
        return self.finish(pending)

    def send(self, method: str, **params: Any) -> Pending:
        """The same without waiting: `wait` and then `result` of what this returns."""
        raise NotImplementedError

    def finish(self, pending: Pending) -> Dict[str, Any]:
        """Its result; warns where that may not be its own."""
        result = pending.result()
        if result.get("mayBelongToEarlier"):
            warnings.warn(f"{pending.method}: the answer may belong to an earlier request whose time was over.",
                          MayBelongToEarlier, stacklevel=4)
        return result

    def _listen_to_progress(self) -> Callable[[float], List[Progress]]:
        raise NotImplementedError

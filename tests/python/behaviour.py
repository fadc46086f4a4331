"""A server that does what a test wants, over either way: what it answers stands in the requests themselves.

A name that is JSON tells what getParamData answers: {"error": ...} or {"result": ...}, with "delayS" before; other
names have values of their own. Streams tell what `slots` says, see `flood`.
"""
import json
import os
import threading
import time

STATE = {"isEcuOnline": True, "isConnecting": False, "ramSegment": "RAM", "romSegment": "ROM", "version": "9.9.9",
         "somethingNew": [1, 2]}
EARLY, FLOOD, LATE, TROUBLE = 1, 2, 3, 4  # slots of a stream
FLOODED = 2000


class Behaviour:
    """`tell` sends an event to the client."""

    def __init__(self, tell):
        self.tell = tell
        self.requests = []  # (method, params)
        self.released = threading.Event()
        self.cancelled = threading.Event()

    def answer(self, request):
        """The response; None: never one."""
        method, params = request["method"], request.get("params", {})
        self.requests.append((method, params))
        handler = getattr(self, method.replace(".", "_"), None)
        if handler is None:
            return {"id": request["id"], "error": {"code": -32601, "message": f"there is no method {method}"}}
        told = handler(**params)
        if told is None:
            return None
        return {"jsonrpc": "2.0", "id": request["id"], **(told if "error" in told else {"result": told})}

    def getState(self):
        self.tell("state", {"isEcuOnline": True, "isConnecting": False})
        return STATE

    def getParamData(self, name, timeoutMs):
        if name == "silent":
            self.released.wait(60)
            return None
        if name == "dies":
            os._exit(7)
        if name.startswith("{"):
            told = json.loads(name)
            time.sleep(told.get("delayS", 0))
            return told["result"] if "result" in told else {"error": told["error"]}
        return {"values": [float(len(name)), "NaN", "Infinity", "-Infinity"], "second": [], "third": []}

    def connect(self, settings, type):
        for step in range(3):
            self.tell("connectProgress", {"figure": step * 10, "steps": step + 1, "elapsedMs": step})
        if type == "Default":
            return {"got": settings}
        self.cancelled.wait(60)
        return {"error": {"code": -32000, "message": "no", "data": {"code": 10, "name": "cancelled",
                                                                     "sentence": "The host cancelled.", "check": ""}}}

    def cancelConnect(self):
        self.cancelled.set()
        return {}

    def startParamRead(self, names, slots):
        number = 70 + slots
        if slots == EARLY:
            self.tell("values", {"stream": number, "samples": [[0, 1.5, 10, 0], [1, "NaN", 11, 2]]})
        if slots == FLOOD:
            threading.Thread(target=self.flood, args=(number,), daemon=True).start()
        if slots == LATE:
            threading.Thread(target=self.drip, args=(number,), daemon=True).start()
        if slots == TROUBLE:
            self.tell("streamTrouble", {"stream": number, "cause": {"code": 12, "name": "ecuOffline",
                                                                    "sentence": "Gone.", "check": "Look."}})
        return {"stream": number}

    def flood(self, number):
        for count in range(FLOODED):
            self.tell("values", {"stream": number, "samples": [[0, count, count, 0]]})
        self.tell("log", {"level": "info", "line": "flooded"})

    def drip(self, number):
        while ("stopParamRead", {"stream": number}) not in self.requests:
            self.tell("values", {"stream": number, "samples": [[0, 1, 1, 0]]})
            time.sleep(0.02)
        self.tell("log", {"level": "info", "line": "stopped"})

    def stopParamRead(self, stream):
        return {}

    def startDirectCtrl(self, name, timeoutMs, leaseMs):
        return {}

    def renewDirectCtrl(self, name, leaseMs):
        if name == "Lost":
            return {"error": {"code": -32005, "message": "the lease is over"}}
        return {}

    def stopDirectCtrl(self, name, timeoutMs):
        return {}

    def setParamData(self, name, values, second, third, timeoutMs):
        if name == "given back":
            self.tell("control", {"name": "Fan", "held": False, "own": True})
        return {}

    def getServerStatus(self):
        return {"settings": "x.ini", "clients": 3, "pingMs": None, "unknown": 1,
                "requestsByMethod": {"getState": {"requests": 2, "failures": 0, "lastMs": 1.5, "meanMs": 1}},
                "failuresByCause": {"refused": 4},
                "lastFailures": [{"timeMs": 5, "method": "m", "name": "refused", "sentence": "s", "check": "c"}],
                "controls": [{"name": "Fan", "own": True}]}

    def told(self):
        """What it was asked so far."""
        return {"requests": self.requests}

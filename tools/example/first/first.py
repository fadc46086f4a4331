"""Reads a value. usage: first.py SETTINGS QorControlC.dll"""
import sys
from ctypes import byref, c_double

import qorcontrol_ctypes as qc

lib, qor, speed = qc.load(sys.argv[2]), qc.QorHandle(), c_double()
lib.QorOpen(sys.argv[1].encode(), 100, b"", byref(qor))
try:
    lib.QorPingQor(qor, 10000)  # QOR may still be starting
    lib.QorConnect(qor, None, qc.QOR_CONNECT_DEFAULT, 60000)
    lib.QorGetParamData(qor, b"EngineSpeed", 1000, byref(speed), 1, None)
    print(f"EngineSpeed = {speed.value:.0f}")
finally:  # a call that fails raises QorError, with the sentence
    lib.QorClose(qor)  # the end; also of QOR, if the settings name its program

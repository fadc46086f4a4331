"""A tour of QorControlC.dll with Python's ctypes: connects an ECU, reads, writes, is refused,
streams, reads and clears trouble codes.

usage: tour.py SETTINGS [QorControlC.dll]    with a 32-bit Python

What each step saw goes to standard output; the exit code is 0 if all went as it should.
"""
import sys
from ctypes import byref, c_double, c_uint, create_string_buffer
from pathlib import Path

import qorcontrol_ctypes as qc
from qorcontrol_ctypes import QorError

LIBRARY = Path(__file__).resolve().parent.parent / "bin" / "QorControlC.dll"


def print_cause(error):
    print(f"  cause: {error.cause} {error.name}\n  sentence: {error.sentence}\n  check: {error.check}")


def step(name, call, *arguments):
    """Tells what a step came to. A failure ends the tour: a call that fails raises QorError."""
    try:
        call(*arguments)
    except QorError:
        print(f"{name}: failed")
        raise
    print(f"{name}: ok")


def connect_ecu(lib, qor):
    """A connect may take a minute. It runs in the background, so that a window could go on drawing
    and a button could call QorConnectCancel. QorConnect does all this in one call, without figures."""
    state, shown = qc.QorConnectProgress(running=1), -1
    lib.QorConnectStart(qor, None, qc.QOR_CONNECT_DEFAULT)
    while state.running:
        try:
            lib.QorConnectWait(qor, 20)
        except QorError:
            pass  # QOR_NOT_READY while it runs; how it ended is asked for below
        lib.QorConnectPoll(qor, byref(state))
        if state.progress not in (shown, -1):  # -1: none
            shown = state.progress
            print(f"progress: {shown}")
        if state.elapsedMs > 60000:
            lib.QorConnectCancel(qor)
    lib.QorConnectWait(qor, 0)


def read(lib, qor, name):
    value = c_double()
    lib.QorGetParamData(qor, name.encode(), 1000, byref(value), 1, None)
    return value.value


def read_past_the_cache(lib, qor, name):
    """Asks QOR itself; QorGetParamData may tell what was just written."""
    value = c_double()
    names = (qc.c_char_p * 1)(name.encode())
    lib.QorGetParamDataAtOnce(qor, names, 1, 1000, byref(value), 1, None, None)
    return value.value


def write(lib, qor, name, value):
    lib.QorSetParamData(qor, name.encode(), byref(c_double(value)), 1, None, 0, None, 0, 1000)


def be_refused(what, cause, call, *arguments):
    """What must not work, and what the library says about it."""
    print(f"refused: {what}")
    try:
        call(*arguments)
    except QorError as error:
        print_cause(error)
        return error.cause == cause
    return False


def stream_values(lib, qor, names):
    """Values as they come, for a second. The library collects them, this thread fetches them."""
    start, total = lib.QorNowMs(), 0
    stream, samples, count = qc.QorStream(), (qc.QorSample * 50)(), c_uint()
    step("stream", lib.QorStartParamRead, qor,
         (qc.c_char_p * len(names))(*(name.encode() for name in names)), len(names), 1000, byref(stream))
    while lib.QorNowMs() < start + 1000:
        try:  # waits for the first one
            lib.QorReadParamStream(stream, samples, len(samples), byref(count), 100)
        except QorError as error:
            if error.cause != qc.QOR_NOT_READY:
                raise
            continue
        for sample in samples[:count.value]:
            print(f"value: {names[sample.name]} = {sample.value:.2f} after {sample.timeMs - start:.0f} ms,"
                  f" missed {sample.missed}")
        total += count.value
    step("stream end", lib.QorStopParamRead, stream)
    return total > 0


def read_codes(lib, qor):
    """Each trouble code has four texts, which stay with this thread until its next result."""
    codes, count, text = (qc.QorDtc * 100)(), c_uint(), create_string_buffer(200)
    lib.QorGetDtcByStatus(qor, 1000, codes, len(codes), byref(count))
    print(f"trouble codes: {count.value}")
    for row, code in enumerate(codes[:count.value]):
        texts = []
        for column in range(4):
            lib.QorResultText(qor, row, column, text, len(text), None)
            texts.append(text.value.decode(errors="replace"))
        print(f"  0x{code.code:04X} status {code.status}, {', '.join(texts)}")
    return count.value


def go_round(lib, qor):
    step("ping", lib.QorPingQor, qor, 10000)  # QOR may still be starting
    step("connect", connect_ecu, lib, qor)
    print(f"read: EngineSpeed = {read(lib, qor, 'EngineSpeed'):.2f}")
    step("write", write, lib, qor, "IdleSpeedTarget", 900)
    value = read_past_the_cache(lib, qor, "IdleSpeedTarget")
    print(f"read back: IdleSpeedTarget = {value:.2f}")
    good = value == 900
    good &= be_refused("IdleSpeedTarget = 99999", qc.QOR_REFUSED, write, lib, qor, "IdleSpeedTarget", 99999)
    good &= be_refused("NoSuchName", qc.QOR_UNKNOWN_NAME, read, lib, qor, "NoSuchName")
    good &= stream_values(lib, qor, ["EngineSpeed", "OilPressure"])
    read_codes(lib, qor)
    step("clear", lib.QorClearDtc, qor, 1000)
    return good and read_codes(lib, qor) == 0


def main(settings, library=LIBRARY):
    lib = qc.load(library)
    qor, good = qc.QorHandle(), False
    print(f"library: {lib.QorVersionText().decode()}")
    try:
        step("open", lib.QorOpen, settings.encode(), 100, b"", byref(qor))
        try:
            good = go_round(lib, qor)
        except QorError as error:
            print_cause(error)
        finally:
            step("close", lib.QorClose, qor)  # the end; also of QOR, if the settings name its program
    except QorError as error:
        print_cause(error)
        good = False
    return 0 if good else 1


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))

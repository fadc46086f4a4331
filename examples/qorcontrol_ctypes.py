"""QorControl.h for Python's ctypes: its numbers, structures and functions, under their names.

Needs a 32-bit Python, because QorControlC.dll is a 32-bit library. QorControl.h says what each
function does. One that returns a cause raises QorError for everything but QOR_OK.
"""
import ctypes
from ctypes import (CFUNCTYPE, POINTER, Structure, c_char, c_char_p, c_double, c_int, c_ubyte, c_uint,
                    c_void_p)

# Causes
QOR_OK = 0
QOR_AGENT_ENDED = 1
QOR_AGENT_BUSY = 2
QOR_PUSHED_OUT = 3
QOR_NO_CONNECTION = 4
QOR_SILENT = 5
QOR_NO_DATA = 6
QOR_REFUSED = 7
QOR_UNKNOWN_NAME = 8
QOR_KWP_BEFORE_CONNECT = 9
QOR_CANCELLED = 10
QOR_CONNECT_REPORTED = 11
QOR_ECU_OFFLINE = 12
QOR_RESULT_TOO_LARGE = 13
QOR_BAD_ARGUMENT = 14
QOR_OUT_OF_MEMORY = 15
QOR_REQUEST_TOO_LARGE = 16
QOR_CHANGED = 17
QOR_BAD_ANSWER = 18
QOR_SYSTEM_FAILURE = 19
QOR_BAD_HANDLE = 20
QOR_NOT_READY = 21
QOR_WRONG_ORDER = 22

# Special time-outs
QOR_DO_NOT_WAIT = 0
QOR_TRANSPORT_DEFAULT = 0xFFFFFFFE
QOR_NO_LIMIT = 0xFFFFFFFF

# What to connect through
QOR_CONNECT_DEFAULT = 1
QOR_CONNECT_SECURITY_ACCESS = 2
QOR_CONNECT_ALTERNATIVE = 3

# What becomes of message boxes, and the answers to them
QOR_BOX_SHOW = 0
QOR_BOX_ANSWER = 1
QOR_BOX_ASK = 2
QOR_CHOICE_OK = 1
QOR_CHOICE_CANCEL = 2
QOR_CHOICE_ABORT = 3
QOR_CHOICE_RETRY = 4
QOR_CHOICE_IGNORE = 5
QOR_CHOICE_YES = 6
QOR_CHOICE_NO = 7

# Numbers for Python, not addresses.
QorHandle = c_void_p
QorStream = c_void_p


class Sized(Structure):
    """A structure that begins with its size."""

    def __init__(self, **fields):
        super().__init__(size=ctypes.sizeof(self), **fields)


class QorEcuConnect(Sized):
    _fields_ = [("size", c_uint), ("protocol", c_uint), ("protocolOption", c_uint), ("optionFlag", c_int),
                ("kLineBaudRate", c_uint), ("canBaudRate", c_uint), ("refreshPeriodMs", c_uint),
                ("canRequestId", c_uint), ("canResponseId", c_uint), ("addressByte1", c_uint),
                ("addressByte2", c_uint), ("addressWord", c_uint), ("extraFlag", c_int),
                ("finalFlag", c_int), ("securityDll", c_char_p)]


class QorConnectProgress(Sized):
    _fields_ = [("size", c_uint), ("running", c_int), ("cause", c_int), ("progress", c_int),
                ("steps", c_uint), ("elapsedMs", c_uint)]


class QorModelDescription(Sized):
    _fields_ = [("size", c_uint), ("modelType", c_uint), ("model", c_char_p), ("modelOption", c_uint),
                ("hex", c_char_p), ("hexOption", c_uint), ("csv", c_char_p), ("csvOption", c_uint),
                ("extraKeys", POINTER(c_char_p)), ("extraValues", POINTER(c_char_p)),
                ("extraCount", c_uint)]


class QorCanBusConnect(Sized):
    _fields_ = [("size", c_uint), ("busParam", c_uint), ("firstFlag", c_int), ("secondFlag", c_int)]


class QorDtc(Structure):
    _fields_ = [("code", c_uint), ("status", c_uint)]


class QorCanBusItem(Structure):
    _fields_ = [("canId", c_uint), ("value", c_int)]


class QorSample(Structure):
    _fields_ = [("name", c_uint), ("missed", c_uint), ("value", c_double), ("timeMs", c_double)]


class QorMessageBox(Sized):
    _fields_ = [("size", c_uint), ("id", c_uint), ("type", c_uint), ("waiting", c_int),
                ("choice", c_uint), ("timeMs", c_double)]


# Keep an object of these for as long as the library may call it. QorLogFunction() is null.
QorLogFunction = CFUNCTYPE(None, c_void_p, c_int, c_char_p)
QorProgressFunction = CFUNCTYPE(None, c_void_p, c_int)

# Texts that go in are bytes ("...".encode()), buffers come from ctypes.create_string_buffer.
TEXT, TEXTS, BUFFER, SIZE, DOUBLES = c_char_p, POINTER(c_char_p), POINTER(c_char), POINTER(c_uint), POINTER(c_double)
BYTES, INT = POINTER(c_ubyte), POINTER(c_int)

FUNCTIONS = {
    # The library and the calling thread's last call
    "QorVersion": (c_uint, []),
    "QorVersionText": (c_char_p, []),
    "QorLastCause": (c_int, []),
    "QorLastSentence": (c_int, [BUFFER, c_uint, SIZE]),
    "QorLastCheck": (c_int, [BUFFER, c_uint, SIZE]),
    "QorLastElapsedMs": (c_uint, []),
    "QorLastMayBelongToEarlier": (c_int, []),
    "QorCauseName": (c_char_p, [c_int]),
    # Life and state
    "QorOpen": (c_int, [TEXT, c_uint, TEXT, POINTER(QorHandle)]),
    "QorClose": (c_int, [QorHandle]),
    "QorSetTcpNoDelay": (c_int, [QorHandle, c_int]),
    "QorIsEcuOnline": (c_int, [QorHandle, INT]),
    "QorIsConnecting": (c_int, [QorHandle, INT]),
    "QorGetQorExecutablePath": (c_int, [QorHandle, BUFFER, c_uint, SIZE]),
    "QorGetEdcRamSegmentName": (c_char_p, []),
    "QorGetEdcRomSegmentName": (c_char_p, []),
    # The connection
    "QorEcuConnectDefaults": (c_int, [POINTER(QorEcuConnect)]),
    "QorConnect": (c_int, [QorHandle, POINTER(QorEcuConnect), c_int, c_uint]),
    "QorConnectStart": (c_int, [QorHandle, POINTER(QorEcuConnect), c_int]),
    "QorConnectPoll": (c_int, [QorHandle, POINTER(QorConnectProgress)]),
    "QorConnectWait": (c_int, [QorHandle, c_uint]),
    "QorConnectCancel": (c_int, [QorHandle]),
    "QorConnectReason": (c_int, [QorHandle, BUFFER, c_uint, SIZE]),
    "QorPingQor": (c_int, [QorHandle, c_uint]),
    "QorSetEcuSegment": (c_int, [QorHandle, TEXT, c_int]),
    "QorOpenModel": (c_int, [QorHandle, POINTER(QorModelDescription)]),
    "QorConnectCanBus": (c_int, [QorHandle, POINTER(QorCanBusConnect), c_int]),
    # Parameters
    "QorGetParamDescription": (c_int, [QorHandle, TEXT, INT]),
    "QorGetParamData": (c_int, [QorHandle, TEXT, c_uint, DOUBLES, c_uint, SIZE]),
    "QorGetParamDataAsString": (c_int, [QorHandle, TEXT, c_uint, BYTES, c_uint, SIZE]),
    "QorSetParamData": (c_int, [QorHandle, TEXT, DOUBLES, c_uint, DOUBLES, c_uint, DOUBLES, c_uint, c_uint]),
    "QorSetDynamicData": (c_int, [QorHandle, TEXT, TEXT, c_uint]),
    "QorStartDirectCtrl": (c_int, [QorHandle, TEXT, c_uint]),
    "QorStopDirectCtrl": (c_int, [QorHandle, TEXT, c_uint]),
    "QorGetParamDataAtOnce": (c_int, [QorHandle, TEXTS, c_uint, c_uint, DOUBLES, c_uint, SIZE, SIZE]),
    # Diagnostics
    "QorClearDtc": (c_int, [QorHandle, c_uint]),
    "QorGetDtcByStatus": (c_int, [QorHandle, c_uint, POINTER(QorDtc), c_uint, SIZE]),
    "QorSendKwpCommand": (c_int, [QorHandle, c_uint, BYTES, c_uint, c_uint, BYTES, c_uint, SIZE, INT]),
    "QorGetCanBusData": (c_int, [QorHandle, POINTER(QorCanBusItem), c_uint, c_uint,
                                 POINTER(QorCanBusItem), c_uint, SIZE]),
    "QorSendCanBusMsg": (c_int, [QorHandle, c_uint, c_uint, BYTES, c_uint, c_uint]),
    # The calling thread's last result
    "QorResultValues": (c_int, [QorHandle, c_uint, DOUBLES, c_uint, SIZE]),
    "QorResultBytes": (c_int, [QorHandle, BYTES, c_uint, SIZE]),
    "QorResultText": (c_int, [QorHandle, c_uint, c_uint, BUFFER, c_uint, SIZE]),
    "QorResultDtcs": (c_int, [QorHandle, POINTER(QorDtc), c_uint, SIZE]),
    "QorResultCanBusItems": (c_int, [QorHandle, POINTER(QorCanBusItem), c_uint, SIZE]),
    # Streams
    "QorNowMs": (c_double, []),
    "QorStartParamRead": (c_int, [QorHandle, TEXTS, c_uint, c_uint, POINTER(QorStream)]),
    "QorReadParamStream": (c_int, [QorStream, POINTER(QorSample), c_uint, SIZE, c_uint]),
    "QorStopParamRead": (c_int, [QorStream]),
    "QorStartDtcRead": (c_int, [QorHandle, c_uint, c_uint]),
    "QorReadDtcStream": (c_int, [QorHandle, c_uint, POINTER(QorDtc), c_uint, SIZE, DOUBLES, SIZE]),
    "QorStopDtcRead": (c_int, [QorHandle]),
    # Message boxes
    "QorSetMessageBoxPolicy": (c_int, [QorHandle, c_int, c_uint, c_uint]),
    "QorNextMessageBox": (c_int, [QorHandle, POINTER(QorMessageBox), BUFFER, c_uint, SIZE, BUFFER, c_uint, SIZE]),
    "QorAnswerMessageBox": (c_int, [QorHandle, c_uint, c_uint]),
    # Callbacks
    "QorSetLog": (c_int, [QorHandle, QorLogFunction, c_void_p]),
    "QorSetProgress": (c_int, [QorHandle, QorProgressFunction, c_void_p]),
}
# These return a number that is no cause of a failure, or tell of the last call themselves.
ANSWERS = {"QorLastCause", "QorLastSentence", "QorLastCheck", "QorLastMayBelongToEarlier"}


class QorError(Exception):
    """Why a call failed, in one sentence, and what to check."""

    def __init__(self, cause, name, sentence, check):
        super().__init__(f"{name}: {sentence}")
        self.cause, self.name, self.sentence, self.check = cause, name, sentence, check


def load(path="QorControlC.dll"):
    """The library, with its functions declared."""
    if ctypes.sizeof(c_void_p) != 4:
        raise OSError("QorControlC.dll is a 32-bit library: it needs a 32-bit Python")
    return declare(ctypes.CDLL(str(path)))


def declare(library):
    def last_text(function):
        text = ctypes.create_string_buffer(1000)
        function(text, len(text), None)
        return text.value.decode()

    def raise_failure(cause, _function, _arguments):
        if cause != QOR_OK:
            raise QorError(cause, library.QorCauseName(cause).decode(),
                           last_text(library.QorLastSentence), last_text(library.QorLastCheck))
        return cause

    for name, (result, arguments) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
        if result is c_int and name not in ANSWERS:
            function.errcheck = raise_failure
    return library

#pragma once

#include <cstdint>

/// The operations that the facade has the agent carry out: one row each, for everything that is
/// made of them. ROW(number, name, payload, wait, handler):
///
/// - number: what a request carries; fixed, never used again for anything else. All other numbers
///   are answered as failures.
/// - name: of the operation in `QorControlFacade`, and in the lines that it writes
/// - payload: what its requests carry, see CmdData.h
/// - wait: how long the facade waits for the answer, see `Wait`
/// - handler: of `QorProtocolAgent`; it is declared from here
#define QOR_OPERATIONS(ROW)                                                      \
    ROW(2, openModel, CmdDataModel, none, openModel)                             \
    ROW(3, connect, CmdDataConnect, unlimited, performConnect)                   \
    ROW(4, getParamDescription, CmdDataParamInfo, threeSeconds, readDescription) \
    ROW(5, getParamData, CmdDataParamData, twice, readParam)                     \
    ROW(6, setParamData, CmdDataParamData, twice, writeParam)                    \
    ROW(7, startDtcRead, CmdDataDtc, none, startDtcStream)                       \
    ROW(8, stopDtcRead, CmdDataDtc, none, stopDtcStream)                         \
    ROW(9, clearDtc, CmdDataDtc, once, clearDtc)                                 \
    ROW(16, setEcuSegment, CmdDataSegment, unlimited, selectSegment)             \
    ROW(17, stopParamRead, CmdRepeatRead, none, stopParamStream)                 \
    ROW(18, getDtcByStatus, CmdDataDtcData, twice, readDtc)                      \
    ROW(20, sendKwpCommand, CmdDataKwp, twice, sendKwp)                          \
    ROW(21, connectCanBus, CmdCanBusConn, none, connectCanBus)                   \
    ROW(22, getCanBusData, CmdCanBusData, twice, readCanBus)                     \
    ROW(23, getParamDataAtOnce, CmdParamDataAtOnce, twice, readTogether)         \
    ROW(24, setDynamicData, CmdDataParamData, twice, setDynamic)                 \
    ROW(25, pingQor, CmdDataPing, twice, ping)                                   \
    ROW(32, sendCanBusMsg, CmdCanBusSend, twice, sendCanBus)                     \
    ROW(33, startDirectCtrl, CmdDataParamData, twice, startControl)              \
    ROW(34, stopDirectCtrl, CmdDataParamData, twice, stopControl)

namespace channel {

/// What a request asks for, by the operation's name.
enum class Kind : std::uint32_t {
#define QOR_KIND(number, name, payload, wait, handler) name = (number),
    QOR_OPERATIONS(QOR_KIND)
#undef QOR_KIND
};

/// How long the facade waits for an answer.
enum class Wait {
    none,          ///< not at all: no answer is wanted
    unlimited,     ///< until it comes or the agent ends, dispatching window messages meanwhile
    twice,         ///< twice the caller's time-out: the agent may be busy with another request
    once,          ///< the caller's time-out as it is; stations have set theirs by it
    threeSeconds,  ///< whatever the caller says
};

/// Milliseconds for a caller's time-out. Doubling wraps around; 0xFFFFFFFF stays "no limit".
constexpr std::uint32_t waitMs(Wait wait, std::uint32_t timeoutMs) {
    switch (wait) {
        case Wait::twice:
            return timeoutMs == 0xFFFFFFFFu ? timeoutMs : timeoutMs * 2u;
        case Wait::once:
            return timeoutMs;
        case Wait::threeSeconds:
            return 3000;
        case Wait::unlimited:
            return 0xFFFFFFFFu;
        case Wait::none:
            break;
    }
    return 0;
}

/// A row as whoever walks the table sees it.
struct OperationRow {
    Kind kind;
    const char* name;
    Wait wait;
};

constexpr OperationRow operations[] = {
#define QOR_ROW(number, name, payload, wait, handler) {Kind::name, #name, Wait::wait},
    QOR_OPERATIONS(QOR_ROW)
#undef QOR_ROW
};

/// The row of one kind, and the type of its payload.
template <Kind kind>
struct Operation;

#define QOR_OPERATION(number, operation, payload, waits, handler) \
    template <>                                                   \
    struct Operation<Kind::operation> {                           \
        using Data = struct payload;                              \
        static constexpr const char* name = #operation;           \
        static constexpr Wait wait = Wait::waits;                 \
    };
QOR_OPERATIONS(QOR_OPERATION)
#undef QOR_OPERATION

}  // namespace channel

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/Clock.h"
#include "common/Doubles.h"
#include "facade/channel/HostQueues.h"
#include "facade/channel/StreamSinks.h"
#include "facade/QorControlFacade.h"

/// The operations that the facade has the agent carry out: their payloads, and behind these the
/// table. The caller's records are copied in and the answers copied out, so no other thread ever
/// touches what the host passed.
namespace channel {

using CanBusConnect = QorControlFacade::CanBusConnect;
using CanBusData = QorControlFacade::CanBusData;
using DtcDescription = QorControlFacade::DtcDescription;
using EcuConnect = QorControlFacade::EcuConnect;
using KwpCommand = QorControlFacade::KwpCommand;
using ModelDescription = QorControlFacade::ModelDescription;

/// A request's payload, or that of its answer. Its concrete type goes with the kind and is checked
/// where it is taken.
struct CmdData {
    virtual ~CmdData() = default;
};

struct CmdDataPing : CmdData {
    explicit CmdDataPing(unsigned int timeout) : timeoutMs(timeout) {}

    unsigned int timeoutMs;
};

struct CmdDataConnect : CmdData {
    CmdDataConnect(EcuConnect record, EcuConnect::ConnType connType)
        : settings(std::move(record)), type(connType) {}

    EcuConnect settings;
    EcuConnect::ConnType type;
};

struct CmdDataParamInfo : CmdData {
    CmdDataParamInfo(std::string paramName, wex::ParamDescription record)
        : name(std::move(paramName)), description(std::move(record)) {}

    std::string name;
    wex::ParamDescription description;
};

/// For all requests about one parameter's data; each uses the members that it needs. An answer
/// has a stamp of its own.
struct CmdDataParamData : CmdData {
    CmdDataParamData(std::string paramName, unsigned int timeout)
        : name(std::move(paramName)), timeoutMs(timeout) {}
    CmdDataParamData(std::string paramName, std::string newValue, unsigned int timeout)
        : name(std::move(paramName)), text(std::move(newValue)), timeoutMs(timeout) {}
    CmdDataParamData(std::string paramName, common::Doubles first, common::Doubles secondArray,
                     common::Doubles thirdArray, unsigned int timeout)
        : name(std::move(paramName)),
          values(std::move(first)),
          second(std::move(secondArray)),
          third(std::move(thirdArray)),
          timeoutMs(timeout) {}

    std::string name;
    common::Doubles values;
    common::Doubles second;
    common::Doubles third;
    common::Moment stamp = common::now();  ///< when this record was made
    std::string text;                      ///< the value of a dynamic write
    unsigned int timeoutMs;
};

struct CmdParamDataAtOnce : CmdData {
    CmdParamDataAtOnce(std::vector<std::string> paramNames, unsigned int timeout)
        : names(std::move(paramNames)), timeoutMs(timeout) {}

    std::vector<std::string> names;
    std::vector<std::vector<double>> values;  ///< filled by the agent, in the order of the names
    unsigned int timeoutMs;
};

struct CmdDataSegment : CmdData {
    CmdDataSegment(std::string name, bool option) : segment(std::move(name)), flag(option) {}

    std::string segment;
    bool flag;
};

struct CmdDataModel : CmdData {
    explicit CmdDataModel(ModelDescription description) : model(std::move(description)) {}

    ModelDescription model;
};

/// The one trouble-code stream; stopping it and clearing the codes pass nothing.
struct CmdDataDtc : CmdData {
    CmdDataDtc() = default;
    CmdDataDtc(DtcQueue* hostQueue, std::uint32_t mask, std::uint32_t period)
        : queue(hostQueue), statusMask(mask), periodMs(period) {}
    CmdDataDtc(std::shared_ptr<DtcSink> target, std::uint32_t mask, std::uint32_t period)
        : sink(std::move(target)), statusMask(mask), periodMs(period) {}

    DtcQueue* queue = nullptr;
    std::shared_ptr<DtcSink> sink;  ///< in place of a queue
    /// The host's time-out for one read. There is no selection by status: the word doubles as
    /// the option that QOR is passed, which is set for every time-out but 0.
    std::uint32_t statusMask = 0;
    std::uint32_t periodMs = 0;
};

struct CmdDataDtcData : CmdData {
    explicit CmdDataDtcData(std::uint32_t mask) : statusMask(mask) {}

    std::uint32_t statusMask;  ///< the host's time-out, as in CmdDataDtc
    std::vector<DtcDescription> dtcs;
};

struct CmdDataKwp : CmdData {
    CmdDataKwp(unsigned int timeout, const KwpCommand& kwp)
        : timeoutMs(timeout), service(kwp.service), data(kwp.data), failed(kwp.failed) {}

    std::uint32_t timeoutMs;
    std::uint32_t service;
    std::string data;  ///< the request, replaced by the answer
    std::uint32_t failed;
};

/// Three words: the bus setting, the word that holds both flags, the connection type.
struct CmdCanBusConn : CmdData {
    CmdCanBusConn(const CanBusConnect& record, EcuConnect::ConnType connType)
        : settings(record), type(connType) {}

    CanBusConnect settings;
    EcuConnect::ConnType type;
};

struct CmdCanBusSend : CmdData {
    CmdCanBusSend(std::uint32_t firstNumber, std::uint32_t secondNumber, std::string bytes,
                  std::uint32_t timeout)
        : first(firstNumber), second(secondNumber), message(std::move(bytes)), timeoutMs(timeout) {}

    std::uint32_t first;
    std::uint32_t second;
    std::string message;
    std::uint32_t timeoutMs;
};

struct CmdCanBusData : CmdData {
    CmdCanBusData(CanBusData record, std::uint32_t timeout)
        : data(std::move(record)), timeoutMs(timeout) {}

    CanBusData data;  ///< the identifiers, replaced by the answer
    std::uint32_t timeoutMs;
};

/// Ends a stream of parameter values.
struct CmdRepeatRead : CmdData {
    CmdRepeatRead(std::vector<std::string> paramNames, std::uint32_t preparedIn)
        : names(std::move(paramNames)), epoch(preparedIn) {}

    ParamQueue* queue = nullptr;  ///< not used: the registration is gone already
    std::vector<std::string> names;
    std::uint32_t epoch;  ///< in which the agent had prepared them
};

}  // namespace channel

/// One row for each operation, for everything that is made of them. ROW(number, name, payload,
/// wait, handler):
///
/// - number: what a request carries; fixed, never used again for anything else. All other numbers
///   are answered as failures.
/// - name: of the operation in `QorControlFacade`, and in the lines that it writes
/// - payload: what its requests carry, of those above
/// - wait: how long the facade waits for the answer, see `Wait` in OperationTable.h
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

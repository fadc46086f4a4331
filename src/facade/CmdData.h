#pragma once

#include <string>
#include <utility>
#include <vector>

#include "common/Clock.h"
#include "facade/FacadeImpl.h"

/// The payloads of the requests. The caller's records are copied in and the answers copied out,
/// so no other thread ever touches what the host passed.

struct QorControlFacade::Impl::CmdDataPing : CmdData {
    explicit CmdDataPing(unsigned int timeout) : timeoutMs(timeout) {}

    unsigned int timeoutMs;
};

struct QorControlFacade::Impl::CmdDataConnect : CmdData {
    CmdDataConnect(EcuConnect record, EcuConnect::ConnType connType)
        : settings(std::move(record)), type(connType) {}

    EcuConnect settings;
    EcuConnect::ConnType type;
};

struct QorControlFacade::Impl::CmdDataParamInfo : CmdData {
    CmdDataParamInfo(std::string paramName, wex::ParamDescription record)
        : name(std::move(paramName)), description(std::move(record)) {}

    std::string name;
    wex::ParamDescription description;
};

/// For all requests about one parameter's data; each uses the members that it needs. An answer
/// is a record of its own, with a stamp of its own.
struct QorControlFacade::Impl::CmdDataParamData : CmdData {
    CmdDataParamData(std::string paramName, unsigned int timeout)
        : name(std::move(paramName)), timeoutMs(timeout) {}

    std::string name;
    std::vector<double> values;
    std::vector<double> second;
    std::vector<double> third;
    std::uint32_t stamp = common::tickCount();  ///< when this record was made
    std::string text;                           ///< the value of a dynamic write
    unsigned int timeoutMs;
};

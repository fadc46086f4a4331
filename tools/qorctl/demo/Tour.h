#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Conversation.h"
#include "Descriptions.h"
#include "TextTable.h"

namespace qorctl {

/// The tour through what a host does with the library once the ECU is connected, step by step.
/// Each step shows what it did and adds what it learnt to the results.
class Tour {
public:
    explicit Tour(Conversation& conversation);

    void run();

private:
    static constexpr const char* notRead = "not read";

    // ReadSteps.cpp
    Outcome describe();
    Outcome readScalars();
    Outcome readArrays(const std::string& name);
    Outcome readTexts();
    Outcome watchLive();

    // WriteSteps.cpp
    Outcome writeAndRestore();
    Outcome writeAndReadBack(const std::string& name, double value, CallNotes& calls);
    Outcome measureCache();

    /// False also if no value came.
    bool read(const std::string& name, std::vector<double>& values, CallNotes& calls);
    void show(const TextTable& table);

    Conversation& conversation_;
    Session& session_;
    QorControlFacade& facade_;
    const unsigned int timeoutMs_;
    Descriptions descriptions_;
    nlohmann::json& results_;
};

}  // namespace qorctl

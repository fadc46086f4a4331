#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Console.h"
#include "demo/Descriptions.h"
#include "Session.h"
#include "StepReport.h"
#include "TextTable.h"

namespace qorctl {

/// The tour through what a host does with the library, step by step. Each step shows what it did;
/// a failed step does not stop the later ones, except that without QOR or ECU there is nothing to
/// show. Whatever happens, everything is shut down in order at the end.
class Tour {
public:
    Tour(Session& session, Console& console);

    /// True if every step succeeded.
    bool run();

    /// Everything that was learnt, complete when `run` has returned.
    const nlohmann::json& results() const { return results_; }

private:
    void visit();
    Outcome startQor();

    // ReadSteps.cpp
    Outcome describe();
    Outcome readScalars();
    Outcome readArrays(const std::string& name);
    Outcome readTexts();
    Outcome watchLive();

    // WriteSteps.cpp
    Outcome writeAndRestore();
    Outcome writeAndReadBack(const std::string& name, double value);
    Outcome measureCache();

    bool read(const std::string& name, std::vector<double>& values);
    void show(const TextTable& table);

    Session& session_;
    QorControlFacade& facade_;
    Console& console_;
    const unsigned int timeoutMs_;
    StepReport report_;
    Descriptions descriptions_;
    nlohmann::json results_ = nlohmann::json::object();
};

}  // namespace qorctl

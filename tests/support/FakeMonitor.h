#pragma once

#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "qorcontrol/HostInterfaces.h"

/// A host's progress window: cancelled when the test says so, keeps the failure reports.
class FakeMonitor : public IProgressMonitor {
public:
    using Report = std::pair<std::string, unsigned int>;

    void reserved1() override { ++strayCalls; }
    void reserved2() override { ++strayCalls; }
    void reserved3() override { ++strayCalls; }
    void reserved4() override { ++strayCalls; }
    void reserved5() override { ++strayCalls; }
    void reserved6() override { ++strayCalls; }
    bool isCancelled() override {
        ++polls;
        return cancelled;
    }
    void reserved8() override { ++strayCalls; }
    void reserved9() override { ++strayCalls; }
    void reportError(const std::string& message, unsigned int code) override {
        reports.emplace_back(message, code);
    }

    std::atomic<bool> cancelled{false};
    std::atomic<int> polls{0};
    std::atomic<int> strayCalls{0};  ///< of operations that the library must leave alone
    std::vector<Report> reports;     ///< look at them when the connect is over
};

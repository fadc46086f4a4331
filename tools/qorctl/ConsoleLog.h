#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Console.h"
#include "QorControlFacade.h"

namespace qorctl {

/// The library's host-facing log lines, shown as they come and kept for the results.
class ConsoleLog final : public EolLog {
public:
    explicit ConsoleLog(Console& console) : console_(console) {}

    void reserved1(const char* format, ...) const override;
    void info(const char* format, ...) const override;
    void error(const char* format, ...) const override;

    std::vector<std::string> lines() const;

private:
    void add(const std::string& line) const;

    Console& console_;
    mutable std::mutex mutex_;
    mutable std::vector<std::string> lines_;
};

}  // namespace qorctl

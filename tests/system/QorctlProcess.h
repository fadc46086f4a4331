#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

/// The command-line host as a process of its own, as a person or a script starts it.
class QorctlProcess {
public:
    struct Ended {
        int exitCode = -1;
        std::string out;  ///< standard output, line ends as "\n"
        std::string err;  ///< standard error, likewise
    };

    /// Starts it; throws std::runtime_error if that fails. `input` is its standard input.
    explicit QorctlProcess(const std::vector<std::string>& arguments,
                           const std::string& input = {});
    /// Ends it if it still runs.
    ~QorctlProcess();
    QorctlProcess(const QorctlProcess&) = delete;
    QorctlProcess& operator=(const QorctlProcess&) = delete;

    /// Waits for its end; fails the test if it does not come within `timeoutMs`.
    Ended wait(unsigned timeoutMs = 60000);

private:
    class Output;

    HANDLE process_ = nullptr;
    std::unique_ptr<Output> out_;
    std::unique_ptr<Output> err_;
};

/// Starts it and waits for its end.
QorctlProcess::Ended runQorctl(const std::vector<std::string>& arguments,
                               const std::string& input = {});

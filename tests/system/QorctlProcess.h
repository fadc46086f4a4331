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

    /// Lets the system's own routine for what happens to a console run in it (CTRL_C_EVENT,
    /// CTRL_CLOSE_EVENT ...), on a thread of its own, as the system does. (The system would end it
    /// 5 s after a close; Wine ends it at once when its console's window is closed.)
    void raise(DWORD consoleEvent) const;

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

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
    /// The same with an input that stays open: see `write`.
    struct OpenInput {};
    QorctlProcess(const std::vector<std::string>& arguments, OpenInput);
    /// Ends it if it still runs.
    ~QorctlProcess();
    QorctlProcess(const QorctlProcess&) = delete;
    QorctlProcess& operator=(const QorctlProcess&) = delete;

    /// @name While it runs
    /// @{
    /// To its standard input; waits while it does not read. False: it reads no more.
    bool write(const std::string& text) const;
    void closeInput();
    /// Of its standard output, what was not taken yet; of its standard error, everything so far.
    std::string takeOut();
    std::string errSoFar() const;
    /// Whether its standard output is read at all, as by a program that hangs.
    void readOutput(bool isRead);
    /// Its standard output is closed, as by a program that has ended.
    void closeOutput();
    /// Ends it as a crash would.
    void kill() const;
    bool isRunning() const;
    /// What it has of the machine's memory, in bytes.
    std::size_t memory() const;
    /// @}

    /// Lets the system's own routine for what happens to a console run in it (CTRL_C_EVENT,
    /// CTRL_CLOSE_EVENT ...), on a thread of its own, as the system does. (The system would end it
    /// 5 s after a close; Wine ends it at once when its console's window is closed.)
    void raise(DWORD consoleEvent) const;

    /// Waits for its end; fails the test if it does not come within `timeoutMs`.
    Ended wait(unsigned timeoutMs = 60000);

private:
    class Output;

    HANDLE process_ = nullptr;
    HANDLE input_ = nullptr;  ///< null: closed
    std::unique_ptr<Output> out_;
    std::unique_ptr<Output> err_;
};

/// Starts it and waits for its end.
QorctlProcess::Ended runQorctl(const std::vector<std::string>& arguments,
                               const std::string& input = {});

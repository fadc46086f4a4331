#pragma once

#include <string>

/// A program of this benchmark's own folder that is spoken to in lines, over its standard input and
/// output. Its standard error goes into a file.
class PipedProcess {
public:
    /// Throws std::runtime_error if it cannot be started.
    PipedProcess(const std::string& program, const std::string& arguments);
    /// Ends its input, and it if it does not end by itself.
    ~PipedProcess();
    PipedProcess(const PipedProcess&) = delete;
    PipedProcess& operator=(const PipedProcess&) = delete;

    void write(const std::string& text) const;
    /// The next line without its end; throws std::runtime_error if none comes any more.
    std::string readLine();
    std::string errors() const;

private:
    const std::string errorPath_;
    std::string rest_;
    void* process_ = nullptr;
    void* input_ = nullptr;
    void* output_ = nullptr;
};

/// The other side of a floor: gives each line back that comes over standard input.
int runPipePeer();

#pragma once

#include <fstream>
#include <string>

namespace simulator {

/// The log for people. Without a path only errors are told, on standard error.
class Log {
public:
    Log() = default;
    /// Throws ConfigError when the file cannot be made.
    explicit Log(const std::string& path);

    bool hasFile() const { return file_.is_open(); }
    void info(const std::string& text);
    void error(const std::string& text);

private:
    void write(const char* level, const std::string& text);

    std::ofstream file_;
};

}  // namespace simulator

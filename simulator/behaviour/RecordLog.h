#pragma once

#include <cstdint>
#include <fstream>
#include <string>

#include "wire/Record.h"

namespace simulator {

// One JSON line per record in and out. Each line is flushed, and others may read the file while it
// is written.
class RecordLog {
public:
    enum class Direction { In, Out };

    // An empty path logs nothing. Throws ConfigError when the file cannot be made.
    explicit RecordLog(const std::string& path);

    void record(Direction direction, const Record& record, std::uint64_t tickMs);
    // Bytes that are no record.
    void raw(const std::string& bytes, std::uint64_t tickMs);

    static std::string line(Direction direction, const Record& record, std::uint64_t tickMs);

private:
    void write(const std::string& line);

    std::ofstream file_;
};

}  // namespace simulator

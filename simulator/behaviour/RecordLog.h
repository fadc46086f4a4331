#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

#include "wire/Message.h"
#include "wire/Record.h"

namespace simulator {

/// What became of a window message: its result, or why it could not be delivered. TCP has neither.
struct MessageFate {
    std::optional<std::uint32_t> result;
    std::string failure;
};

/// One JSON line per record in and out. Each line is flushed, and others may read the file while it
/// is written.
class RecordLog {
public:
    enum class Direction { In, Out };

    /// An empty path logs nothing. Throws ConfigError when the file cannot be made.
    explicit RecordLog(const std::string& path);

    void record(Direction direction, const Record& record, std::uint64_t tickMs,
                const MessageFate& fate = {});
    /// Bytes that are no record.
    void raw(Direction direction, const std::string& bytes, std::uint64_t tickMs);
    /// A window message that is no record.
    void message(Direction direction, const std::string& bytes, const MessageForm& form,
                 std::uint64_t tickMs, const MessageFate& fate);

    static std::string line(Direction direction, const Record& record, std::uint64_t tickMs,
                            const MessageFate& fate = {});

private:
    void write(const std::string& line);

    std::ofstream file_;
};

}  // namespace simulator

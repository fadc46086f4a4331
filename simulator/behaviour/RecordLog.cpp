#include "behaviour/RecordLog.h"

#include <cerrno>
#include <cstring>

#include "config/JsonNode.h"

namespace simulator {

namespace {

std::string hex(const std::string& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes) {
        text.push_back(kDigits[static_cast<unsigned char>(byte) >> 4U]);
        text.push_back(kDigits[static_cast<unsigned char>(byte) & 0x0FU]);
    }
    return text;
}

}  // namespace

RecordLog::RecordLog(const std::string& path) {
    if (path.empty()) return;
    file_.open(path, std::ios::binary | std::ios::trunc);
    if (!file_) throw ConfigError(path + ": cannot be written (" + std::strerror(errno) + ")");
}

void RecordLog::record(Direction direction, const Record& record, std::uint64_t tickMs) {
    if (file_.is_open()) write(line(direction, record, tickMs));
}

void RecordLog::raw(const std::string& bytes, std::uint64_t tickMs) {
    if (!file_.is_open()) return;
    const nlohmann::ordered_json line = {{"tick", tickMs}, {"dir", "out"}, {"raw", hex(bytes)}};
    write(line.dump());
}

std::string RecordLog::line(Direction direction, const Record& record, std::uint64_t tickMs) {
    const nlohmann::ordered_json line = {
        {"tick", tickMs},
        {"dir", direction == Direction::In ? "in" : "out"},
        {"id", static_cast<unsigned>(record.id)},
        {"name", commandName(record.id)},
        {"reply", record.isReply},
        {"request", record.requestId},
        {"length", record.payload.size()},
        {"payload", hex(record.payload)},
    };
    return line.dump();
}

void RecordLog::write(const std::string& line) {
    file_ << line << '\n' << std::flush;
}

}  // namespace simulator

#include "behaviour/RecordLog.h"

#include <cerrno>
#include <cstring>

#include "config/JsonNode.h"

namespace simulator {

namespace {

std::string hex(const std::string& bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes) {
        text.push_back(digits[static_cast<unsigned char>(byte) >> 4U]);
        text.push_back(digits[static_cast<unsigned char>(byte) & 0x0FU]);
    }
    return text;
}

const char* nameOf(RecordLog::Direction direction) {
    return direction == RecordLog::Direction::In ? "in" : "out";
}

void add(const MessageFate& fate, nlohmann::ordered_json& line) {
    if (fate.result) line["result"] = *fate.result;
    if (!fate.failure.empty()) line["failed"] = fate.failure;
}

}  // namespace

RecordLog::RecordLog(const std::string& path) {
    if (path.empty()) return;
    file_.open(path, std::ios::binary | std::ios::trunc);
    if (!file_) throw ConfigError(path + ": cannot be written (" + std::strerror(errno) + ")");
}

void RecordLog::record(Direction direction, const Record& record, std::uint64_t tickMs,
                       const MessageFate& fate) {
    if (file_.is_open()) write(line(direction, record, tickMs, fate));
}

void RecordLog::raw(Direction direction, const std::string& bytes, std::uint64_t tickMs) {
    if (!file_.is_open()) return;
    const nlohmann::ordered_json line = {
        {"tick", tickMs}, {"dir", nameOf(direction)}, {"raw", hex(bytes)}};
    write(line.dump());
}

void RecordLog::message(Direction direction, const std::string& bytes, const MessageForm& form,
                        std::uint64_t tickMs, const MessageFate& fate) {
    if (!file_.is_open()) return;
    nlohmann::ordered_json line = {
        {"tick", tickMs}, {"dir", nameOf(direction)}, {"tag", form.tag}, {"raw", hex(bytes)}};
    if (form.nullLength) line["nullLength"] = *form.nullLength;
    add(fate, line);
    write(line.dump());
}

std::string RecordLog::line(Direction direction, const Record& record, std::uint64_t tickMs,
                            const MessageFate& fate) {
    nlohmann::ordered_json line = {
        {"tick", tickMs},
        {"dir", nameOf(direction)},
        {"id", static_cast<unsigned>(record.id)},
        {"name", commandName(record.id)},
        {"reply", record.isReply},
        {"request", record.requestId},
        {"length", record.payload.size()},
        {"payload", hex(record.payload)},
    };
    add(fate, line);
    return line.dump();
}

void RecordLog::write(const std::string& line) {
    file_ << line << '\n' << std::flush;
}

}  // namespace simulator

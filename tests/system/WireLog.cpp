#include "WireLog.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "support/TempFolder.h"
#include "WireText.h"

namespace {

constexpr unsigned idPing = 0;
constexpr unsigned idKwpConnect = 2;
constexpr unsigned idReceiveParamData = 6;
constexpr char onlineIndex[] = "\xF6\xFF\xFF\xFF";  // -10, the state of the ECU
constexpr std::size_t modeOffset = 24;

int valueOf(char digit) {
    return digit <= '9' ? digit - '0' : (digit & 0xF) + 9;
}

std::string bytesOfHex(const std::string& hex) {
    std::string bytes(hex.size() / 2, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(valueOf(hex[2 * i]) * 16 + valueOf(hex[2 * i + 1]));
    return bytes;
}

bool tellsOnlineState(const WireRecord& record) {
    return !record.toQor && record.id == idReceiveParamData &&
           record.payload.compare(0, 4, onlineIndex) == 0;
}

bool isAcknowledgement(const WireRecord& record) {
    return record.id == idPing && record.isReply;
}

std::vector<WireRecord> selected(const std::vector<WireRecord>& records, bool toQor) {
    std::vector<WireRecord> chosen;
    const auto from = withoutOnlineQueries(records);
    std::copy_if(from.begin(), from.end(), std::back_inserter(chosen),
                 [&](const WireRecord& record) {
                     return record.toQor == toQor && !isAcknowledgement(record);
                 });
    return chosen;
}

}  // namespace

bool WireRecord::isOnlineQuery() const {
    return toQor && id == idKwpConnect && payload.size() > modeOffset && payload[modeOffset] == 2;
}

std::vector<WireRecord> readWireLog(const std::string& path) {
    std::vector<WireRecord> records;
    std::istringstream text(bytesOfFile(path));
    for (std::string line; std::getline(text, line) && !text.eof();) {
        const auto json = nlohmann::json::parse(line);
        if (json.contains("raw")) continue;
        records.push_back({json.at("tick"), json.at("dir") == "in", json.at("id"), json.at("reply"),
                           json.at("request"), bytesOfHex(json.at("payload"))});
    }
    return records;
}

std::vector<WireRecord> withoutOnlineQueries(const std::vector<WireRecord>& records) {
    std::set<std::uint32_t> dropped;
    for (const WireRecord& record : records)
        if (record.isOnlineQuery() || tellsOnlineState(record)) dropped.insert(record.requestId);
    std::vector<WireRecord> kept;
    for (const WireRecord& record : records)
        if (dropped.count(record.requestId) == 0) kept.push_back(record);
    return kept;
}

std::vector<WireRecord> requestsIn(const std::vector<WireRecord>& records) {
    return selected(records, true);
}

std::vector<WireRecord> answersIn(const std::vector<WireRecord>& records) {
    return selected(records, false);
}

unsigned valuesSentIn(const std::vector<WireRecord>& records, std::uint32_t index) {
    const auto isOne = [&](const WireRecord& record) {
        std::uint32_t of = 0;
        if (record.toQor || record.id != idReceiveParamData || record.payload.size() < sizeof of)
            return false;
        std::memcpy(&of, record.payload.data(), sizeof of);
        return of == index;
    };
    return static_cast<unsigned>(std::count_if(records.begin(), records.end(), isOne));
}

std::vector<std::string> asText(const std::vector<WireRecord>& records) {
    std::vector<std::string> lines;
    for (const WireRecord& record : records) lines.push_back(describe(record));
    return lines;
}

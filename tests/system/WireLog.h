#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// One record on the wire, as QOR's stand-in saw it.
struct WireRecord {
    std::uint64_t tickMs = 0;
    bool toQor = false;  ///< from the station to QOR
    unsigned id = 0;
    bool isReply = false;
    std::uint32_t requestId = 0;
    std::string payload;

    bool isOnlineQuery() const;  ///< the station's own question, asked again and again
};

/// The records that QOR's stand-in has logged so far; none while there is no such file. A line
/// that is still being written is left out.
std::vector<WireRecord> readWireLog(const std::string& path);

/// All but the station's questions for the ECU's state and what belongs to them. They come at any
/// time and belong to no operation.
std::vector<WireRecord> withoutOnlineQueries(const std::vector<WireRecord>& records);

/// What the station asked of QOR: no acknowledgements and no questions for the ECU's state.
std::vector<WireRecord> requestsIn(const std::vector<WireRecord>& records);

/// What QOR answered or told: no acknowledgements, no answer to a question for the ECU's state.
std::vector<WireRecord> answersIn(const std::vector<WireRecord>& records);

/// How many values of the parameter with that index QOR has sent by itself.
unsigned valuesSentIn(const std::vector<WireRecord>& records, std::uint32_t index);

/// Each record as a line such as "DirectCtrl 33 op=4 [1500] ''".
std::vector<std::string> asText(const std::vector<WireRecord>& records);

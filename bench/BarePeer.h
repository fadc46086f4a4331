#pragma once

#include <string>

/// The other side of most figures: a bare QOR, which answers what it is asked with next to no work
/// and pushes values, as the host tells it by writing a parameter. A pushed value is the time at
/// which it was sent, in microseconds of the system's counter, which all processes share.
namespace barepeer {

/// The streamed parameters, "V0" and so on.
constexpr int streamed = 12;
/// Parameters that are only read, "R0" and so on: so many that none is read twice within the time
/// for which the library would answer from its cache.
constexpr int readOnly = 200;
/// The parameter of three arrays, and how many values each has.
constexpr const char* arrays = "Arrays";
constexpr int perArray = 1000;

inline std::string streamedName(int number) {
    return "V" + std::to_string(number);
}
inline std::string readOnlyName(int number) {
    return "R" + std::to_string(number);
}

/// Written: how many values may be unacknowledged (0: no matter, pushed by the clock), how many
/// are pushed at a time, and every how many microseconds (0: never).
constexpr const char* push = "Push";
/// Read: how many pushed values were acknowledged, and the time of that count in microseconds.
constexpr const char* acknowledged = "Acknowledged";

/// How many bytes a pushed value has, and its acknowledgement.
constexpr int valueBytes = 24;
constexpr int acknowledgementBytes = 16;

/// A process with one connection, until that is closed. `window` values are pushed from the
/// start, without waiting to be told. Returns the exit code of the process.
int run(unsigned int port, int window);

/// The same over window messages, until the host's window has gone.
int runWindow(const std::string& ownTitle, const std::string& hostTitle);

}  // namespace barepeer

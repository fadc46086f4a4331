#pragma once

#include <gtest/gtest.h>

#include <string>

/// How the station and QOR talk to each other. Every scenario runs over all that QOR's stand-in
/// speaks: the list below is the only place that says which.
enum class Transport { tcp, window };

inline constexpr Transport spokenTransports[] = {Transport::tcp, Transport::window};

inline auto everyTransport() {
    return testing::ValuesIn(spokenTransports);
}

inline std::string nameOf(Transport transport) {
    return transport == Transport::tcp ? "Tcp" : "Window";
}

inline std::string transportName(const testing::TestParamInfo<Transport>& info) {
    return nameOf(info.param);
}

/// The action of a rule by which QOR does not take a request. A window message is taken by its
/// delivery, so there QOR hangs, for `spanMs`: longer than anybody waits for the result.
inline std::string silence(Transport transport, unsigned spanMs) {
    if (transport == Transport::tcp) return R"({"answer":"silent"})";
    return R"({"answer":"silent","hangMs":)" + std::to_string(spanMs) + "}";
}

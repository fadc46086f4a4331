#pragma once

#include "Station.h"

namespace simtime {

/// One thread of the host: calls the operations and holds what they bring against what the
/// simulated QOR has told.
class Host {
public:
    Host(Station& station, unsigned int number) : station_(station), number_(number) {}

    /// One operation of any kind.
    void callAny();
    /// Each that reads or writes, once; each must succeed.
    void callEach();
    /// Ends what this host has begun.
    void endStreams();

private:
    void ping();
    void readNumber();
    void readMap();
    void readText();
    void readGroup();
    void readUnknown();
    void describe();
    void writeNumber();
    void writeMap();
    void writeDynamic();
    void control();
    void readCodes();
    void clearCodes();
    void sendKwp();
    void readCan();
    void sendCan();
    void setSegment();
    void openCan();
    void connect();
    void openModel();
    void stream();
    void streamCodes();
    void drainStream();
    void askState();

    using Operation = void (Host::*)();
    static const std::vector<Operation>& sound();  // a sound QOR answers them
    static const std::vector<Operation>& all();

    /// The time-out of the next call.
    unsigned int patience();
    /// Of an operation that succeeded or failed; whether it succeeded.
    bool judge(const char* name, bool succeeded);
    void checkValue(const char* name, double value, unsigned int param, Ms begin, bool mayBeCached);
    void checkMade(const char* name, Ms made, Ms begin, bool mayBeCached);
    void checkMark(const char* name, bool succeeded, std::uint64_t mark);
    void complainOfAnother(const char* name, std::uint64_t mark);

    Station& station_;
    const unsigned int number_;
    std::vector<std::string> streamed_;
    std::array<Ms, 16> lastMade_{};
};

}  // namespace simtime

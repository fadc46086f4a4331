#pragma once

#include "Station.h"

namespace simtime {

/// What a call asks for.
struct Question {
    Topics topics;
    Ms begin = 0;
    bool mayBeCached = false;
};

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
    Question ask(Topics topics, bool mayBeCached = false);
    /// Of an operation that succeeded or failed; whether it succeeded.
    bool judge(const char* name, bool succeeded, const Question& question = {});
    void checkWarning(const char* name, const Question& question);
    /// The values of one answer about one thing.
    void checkValues(const char* name, const std::vector<double>& values, const Topic& topic,
                     const Question& question);
    void checkMade(const char* name, Ms made, const Topic& topic, const Question& question);
    void checkMark(const char* name, bool succeeded, std::uint64_t mark);
    void complainOfAnother(const char* name, Topic::Kind kind, std::uint64_t mark);
    Ms cachedMs(const Question& question) const;

    Station& station_;
    const unsigned int number_;
    std::uint64_t calls_ = 0;  // that ask for data
    std::vector<std::string> streamed_;
    std::array<Ms, 16> lastMade_{};
};

}  // namespace simtime

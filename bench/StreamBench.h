#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "facade/QorControlFacade.h"
#include "Process.h"
#include "Samples.h"
#include "StreamPeer.h"
#include "Taker.h"

/// What the host's queue gave while values flowed.
struct Popped {
    int batches = 0;
    int values = 0;    ///< in all batches; a value is repeated until the next one comes
    int news = 0;      ///< of them, those that were not in an earlier batch
    Samples newAgeUs;  ///< of the new ones: from the peer's send to the pop
    Samples anyAgeUs;  ///< of all
};

/// A facade that streams twelve values over TCP from a bare peer, and the host that takes them.
class StreamBench {
public:
    /// What the peer pushes: so many values at a time, every so often; or as many as are
    /// acknowledged, a window's width ahead.
    struct Push {
        int window;
        int burst;
        double periodUs;
    };
    static constexpr Push atRest{0, 0, 0};

    StreamBench();
    ~StreamBench();
    StreamBench(const StreamBench&) = delete;
    StreamBench& operator=(const StreamBench&) = delete;

    void startStream();
    void stopStream();
    void setPush(const Push& push);

    /// The host takes what comes for so long. The microseconds for each value that arrived in the
    /// library meanwhile, that is, which it acknowledged.
    double takeFor(unsigned int ms, Popped& popped);

    void ping();
    /// A read that QOR answers.
    void read();

    /// A host thread that takes what comes, until it is let go.
    std::unique_ptr<Taker> taker();

private:
    struct Count {
        double values;
        double us;
    };
    Count acknowledged();
    void take(Popped& popped);

    const unsigned int port_;
    const std::string settingsPath_;
    Process peer_;
    ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>> queue_{10};
    std::array<double, streampeer::streamed> latest_{};
    std::unique_ptr<QorControlFacade> facade_;
    std::vector<double> values_;
    int nextRead_ = 0;
};

#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "BarePeer.h"
#include "facade/QorControlFacade.h"
#include "PeerBench.h"
#include "Samples.h"
#include "Taker.h"

/// What the host's queue gave while values flowed.
struct Popped {
    int batches = 0;
    int values = 0;    ///< in all batches; a value is repeated until the next one comes
    int news = 0;      ///< of them, those that were not in an earlier batch
    Samples newAgeUs;  ///< of the new ones: from the peer's send to the pop
    Samples anyAgeUs;  ///< of all
};

/// A facade that streams twelve values from a bare peer, and the host that takes them.
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

    explicit StreamBench(Transport transport);
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

    ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>> queue_{10};  // outlives the facade
    std::array<double, barepeer::streamed> latest_{};
    PeerBench peer_;
    int nextRead_ = 0;
};

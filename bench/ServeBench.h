#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "HttpCaller.h"
#include "PipedProcess.h"

/// "qorctl serve" with a simulated QOR of its own behind it, the ECU connected.
class ServeBench {
public:
    ServeBench();
    ~ServeBench();
    ServeBench(const ServeBench&) = delete;
    ServeBench& operator=(const ServeBench&) = delete;

    unsigned int port() const { return port_; }
    const std::string& settingsPath() const { return settingsPath_; }

    /// What a program asks, over its standard input.
    void ping() { ask(pingRequest); }
    /// A read that QOR answers; the value cache is off.
    void readParam();
    /// A read that the value cache of the library answers.
    void readCachedParam();
    /// QOR sends streamed values that often.
    void connect(unsigned int refreshPeriodMs);

    static const char* const pingRequest;
    static const char* const readRequest;

private:
    std::string ask(const std::string& request);
    void awaitPort();

    const std::string settingsPath_;
    std::unique_ptr<PipedProcess> process_;
    unsigned int port_ = 0;
    unsigned int periodMs_ = 1;
};

/// One client that is sent streamed values, on a thread of its own.
class Subscriber {
public:
    /// Returns when it is a client of the server's.
    explicit Subscriber(unsigned int port);
    ~Subscriber();
    Subscriber(const Subscriber&) = delete;
    Subscriber& operator=(const Subscriber&) = delete;

    /// Twelve values. Returns when the server has said yes.
    void subscribe();
    /// So many values it has been sent.
    long values() const { return values_; }
    /// So many values it was told that it has missed.
    long missed() const { return missed_; }

private:
    void take();

    const unsigned int port_;
    HttpCaller events_;
    std::string client_;
    std::atomic<long> values_{0};
    std::atomic<long> missed_{0};
    std::thread thread_;  // last: it uses everything above
};

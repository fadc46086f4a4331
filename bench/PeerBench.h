#pragma once

#include <memory>
#include <string>
#include <vector>

#include "facade/QorControlFacade.h"
#include "Process.h"
#include "Settings.h"

/// A facade with the bare peer behind it, over either transport: the ECU connected, nothing known
/// by name. It shares no code with the peer, which costs next to nothing.
class PeerBench {
public:
    /// Without a refresh period each read is QOR's to answer; no cache is in its way. `who` tells
    /// those of one run apart. `tcpPeer` is the option of another peer over TCP, with its port.
    PeerBench(Transport transport, unsigned int refreshMs, const std::string& who,
              const char* tcpPeer = "--bare-peer");
    ~PeerBench();
    PeerBench(const PeerBench&) = delete;
    PeerBench& operator=(const PeerBench&) = delete;

    QorControlFacade& facade() const { return *facade_; }

    void ping() const;
    /// One value.
    void read(const std::string& name);

    const std::vector<double>& lastRead() const { return values_; }

private:
    const Meeting meeting_;
    Process peer_;
    std::unique_ptr<QorControlFacade> facade_;
    std::vector<double> values_;
};

#pragma once

#include <winsock2.h>

#include <vector>

#include "PeerBench.h"

/// The raw thing: so many bytes through a blocking TCP connection, copied once on either side.
class SizeFloor {
public:
    SizeFloor();
    ~SizeFloor();
    SizeFloor(const SizeFloor&) = delete;
    SizeFloor& operator=(const SizeFloor&) = delete;

    void read();
    void write();

private:
    const unsigned int port_;
    Process peer_;
    SOCKET socket_;
    std::vector<char> moved_;
    std::vector<double> values_;
};

/// A facade over TCP with a bare peer behind it that has very large parameters.
class SizeBench {
public:
    SizeBench();

    void read(int number = 0);
    void write();
    /// The host keeps no array of its own any more.
    void letGo();

private:
    PeerBench peer_;
    std::vector<double> values_;
};

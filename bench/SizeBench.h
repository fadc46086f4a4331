#pragma once

#include <winsock2.h>

#include <memory>
#include <string>
#include <vector>

#include "facade/QorControlFacade.h"
#include "Process.h"
#include "Settings.h"

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
    ~SizeBench();
    SizeBench(const SizeBench&) = delete;
    SizeBench& operator=(const SizeBench&) = delete;

    void read(int number = 0);
    void write();
    /// The host's own copy of the values, in bytes; none is held any more.
    void letGo();

private:
    const Meeting meeting_;
    Process peer_;
    std::unique_ptr<QorControlFacade> facade_;
    std::vector<double> values_;
};

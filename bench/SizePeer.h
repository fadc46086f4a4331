#pragma once

#include <cstddef>
#include <string>

#include "BarePeer.h"

/// The other side of the large arrays: a bare QOR with parameters of very many values, and a
/// raw socket that moves the same bytes. Both copy what they move once.
namespace sizepeer {

constexpr std::size_t doubles = 1000000;
constexpr std::size_t bytes = doubles * 8;
/// There are so many of them.
constexpr int parameters = 13;
inline std::string parameter(int number) {
    return barepeer::readOnlyName(number);
}

/// What the raw side is asked for, by one byte. What it has received it acknowledges with one.
constexpr char give = 'g';
constexpr char take = 't';

/// A process with one connection, until that is closed. Returns the exit code of the process.
int run(unsigned int port);
int runRaw(unsigned int port);

}  // namespace sizepeer

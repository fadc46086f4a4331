#pragma once

#include <cstddef>

/// The other side of the large arrays: a bare QOR with one parameter of very many values, and a
/// raw socket that moves the same bytes. Both copy what they move once.
namespace sizepeer {

constexpr std::size_t doubles = 1000000;
constexpr std::size_t bytes = doubles * 8;
constexpr const char* parameter = "Large";

/// What the raw side is asked for, by one byte. What it has received it acknowledges with one.
constexpr char give = 'g';
constexpr char take = 't';

/// A process with one connection, until that is closed. Returns the exit code of the process.
int run(unsigned int port);
int runRaw(unsigned int port);

}  // namespace sizepeer

#pragma once

#include <string>
#include <vector>

/// QOR's stand-in as processes of this test program: those that the library or the test started.
namespace qor {

/// Its program, beside this one.
std::string executable();

/// The ids of those that run and were started by this process.
std::vector<unsigned long> running();

/// Starts one the way the library does; false if it cannot be started.
bool startByHand(const std::string& settingsPath);

/// Ends all that run, as a crash would, and waits until they are gone.
void killAll();

/// A port of the loopback address that nobody uses, different for each call and process.
unsigned short freePort();

}  // namespace qor

#pragma once

/// Ctrl-C, as a request that the running work looks at. The first one only asks for an orderly
/// end, so that QOR is always shut down; the second ends the program at once.
namespace qorctl::interrupt {

void install();
bool isRequested();

/// Sleeps; false as soon as an interrupt is requested.
bool sleepMs(unsigned int ms);

}  // namespace qorctl::interrupt

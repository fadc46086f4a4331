#pragma once

#include <string>
#include <vector>

#include "profile/SystemCalls.h"

namespace profile {

/// A piece of a request's way: on one thread, or from one to the next.
struct Hop {
    std::string name;  ///< the same for the same piece of other requests
    double us = 0;
    double inSystemUs = 0;           ///< of that, in calls of the system
    std::vector<std::string> calls;  ///< which ones, in their order
};

/// The way of one request from its beginning to its end, without what is done beside it: found
/// backwards, from the end of the last wait of the host to whoever has ended it, and so on.
/// `calls`: those of the process, by their end. `host`: the thread that has asked.
std::vector<Hop> pathOf(const std::vector<Call>& calls, unsigned int host, double startUs,
                        double endUs);

}  // namespace profile

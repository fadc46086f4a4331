#pragma once

#include <stdexcept>
#include <string>

#include "common/Deadline.h"

/// Without what a figure needs there is none: throws std::runtime_error.
inline void require(bool succeeded, const char* what) {
    if (!succeeded) throw std::runtime_error(std::string(what) + " failed");
}

/// Tries again and again, for the time that a QOR may take to start.
template <class Condition>
void await(Condition holds, const char* what) {
    constexpr unsigned int readyMs = 15000;
    const auto deadline = common::Deadline::after(common::now(), readyMs);
    while (!holds()) require(!deadline.hasPassed(), what);
}

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "QorEnd.h"

/// How the library reaches QOR in a test.
enum class Way {
    tcp,
    windows,             ///< who sends a message handles none meanwhile
    interruptedWindows,  ///< who sends a message handles those of others meanwhile
};

void PrintTo(Way way, std::ostream* out);

/// Where QOR listens, for TCP.
constexpr unsigned int qorPort = 4711;

/// The path of the settings that say so, for QOR of this name.
std::string settingsFor(Way way, const std::string& name);

/// QOR's end of that.
std::unique_ptr<QorEnd> makeEnd(Way way, const std::string& name);

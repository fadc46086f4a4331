#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "StationSettings.h"
#include "support/TempFolder.h"
#include "Transports.h"
#include "WireLog.h"

/// What all test stations have, whatever their host is written in: a settings file of its own, and
/// QOR's stand-in as a process of its own, which the library starts. Everything that is unique on
/// the machine (port, window titles, files) is this station's alone.
class StationBase {
public:
    StationBase(const StationBase&) = delete;
    StationBase& operator=(const StationBase&) = delete;

    TempFolder folder;

    /// @name What to build; set before the start
    /// @{
    StationSettings settings;
    std::string script;        ///< behaviours of QOR as JSON; empty: none
    std::string settingsPath;  ///< where the settings go and are looked for
    std::string hostPath;      ///< the host's executable; the trace lies beside it; empty: none
    /// @}

    void writeSettings();

    std::vector<WireRecord> wire() const;
    /// The requests of the station and the answers of QOR as text, from the `from`th record on.
    std::vector<std::string> requests(std::size_t from = 0) const;
    std::vector<std::string> answers(std::size_t from = 0) const;

protected:
    explicit StationBase(Transport transport);
    ~StationBase() = default;

    /// When the host has ended: expects QOR to end with it, unless somebody else has started it.
    void awaitEndOfQor() const;
};

/// What stands behind the first `from`.
template <class Item>
std::vector<Item> tail(const std::vector<Item>& items, std::size_t from) {
    return {items.begin() + static_cast<std::ptrdiff_t>(std::min(from, items.size())), items.end()};
}

#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>

namespace soak {

/// For how long programs of this machine have had to wait for a processor, in all, as the system
/// below Wine counts it. Not every system does.
class Pressure {
public:
    Pressure();
    ~Pressure();
    Pressure(const Pressure&) = delete;
    Pressure& operator=(const Pressure&) = delete;

    /// In microseconds, of which a second has a million at most.
    std::optional<std::uint64_t> totalUs() const;

private:
    HANDLE file_;
};

}  // namespace soak

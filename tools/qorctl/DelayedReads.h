#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace qorctl {

/// Sees by the times of reads over TCP whether each has waited for the other side's system to
/// confirm what the library had sent before, as they do where QOR acknowledges a request before it
/// sends the data; see qorcontrol::setTcpNoDelay.
class DelayedReads {
public:
    /// A read that worked took so long.
    void note(double ms);

    /// How long a read takes, once there are enough of them, nearly all of which took a
    /// confirmation's time or, with the look-up of the name, two.
    std::optional<double> usualMs() const;

private:
    std::vector<double> times_;  // of the last ones
    std::size_t next_ = 0;
};

}  // namespace qorctl

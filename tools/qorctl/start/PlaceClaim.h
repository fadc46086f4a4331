#pragma once

#include <memory>
#include <string>

namespace qorctl::start {

/// That this program talks to the QOR at a place, told to others of its kind: the system does not
/// always say whose a connection is, and of two that begin at once only one gets it. It ends with
/// the process at the latest, however that ends.
class PlaceClaim {
public:
    /// `place`: as PeerFacts has it.
    explicit PlaceClaim(const std::string& place);

    bool isOurs() const { return isOurs_; }
    /// Of a claim that is another's: its process, 0 where that cannot be read.
    unsigned long process() const { return process_; }

private:
    struct CloseIt {
        void operator()(void* handle) const;
    };

    std::unique_ptr<void, CloseIt> mapping_;
    bool isOurs_ = false;
    unsigned long process_ = 0;
};

}  // namespace qorctl::start

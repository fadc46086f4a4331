#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "serve/Outlet.h"
#include "serve/WaitingLines.h"

namespace qorctl::serve {

/// One program, or one page, that uses the server.
class Client {
public:
    /// What it is to the server.
    enum class Kind {
        passing,  ///< has just this one request, and can hold nothing
        lasting,  ///< is told what goes on until it leaves
        owner     ///< the same for the one that has started the server, and may end it
    };

    /// @param outlet     null: of a passing one.
    /// @param isAborted  whether the server brings nothing to its end; outlives the client.
    Client(ClientNumber number, Kind kind, std::shared_ptr<Outlet> outlet,
           const std::atomic<bool>& isAborted)
        : number_(number), kind_(kind), outlet_(std::move(outlet)), isAborted_(isAborted) {}

    ClientNumber number() const { return number_; }
    bool isLasting() const { return kind_ != Kind::passing; }
    bool isOwner() const { return kind_ == Kind::owner; }
    /// Of one that is not passing.
    Outlet& outlet() { return *outlet_; }

    /// It has gone: nothing more is done for it, and what it has begun is brought to its end.
    void leave() { hasLeft_ = true; }
    bool hasLeft() const { return hasLeft_; }

    /// Cancels the connects that it has asked for by now.
    void cancelConnect() { ++cancels_; }
    unsigned int cancels() const { return cancels_; }
    /// @param cancels  what there were when it was asked for.
    bool isConnectCancelled(unsigned int cancels) const {
        return cancels_ != cancels || hasLeft_ || isAborted_;
    }

private:
    const ClientNumber number_;
    const Kind kind_;
    const std::shared_ptr<Outlet> outlet_;
    const std::atomic<bool>& isAborted_;
    std::atomic<bool> hasLeft_{false};
    std::atomic<unsigned int> cancels_{0};
};

}  // namespace qorctl::serve

#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "HeldActuators.h"
#include "serve/Audience.h"
#include "serve/Method.h"

namespace qorctl::serve {

/// Direct control of actuators, which belongs to the client that took it: another one is refused,
/// and what a client leaves behind is given back. So is what was taken on lease and not renewed in
/// time, for a client can hang, too. Giving back is open to everybody: it is the safe direction.
class Control {
public:
    /// Who has what.
    struct Owned {
        std::string name;
        ClientNumber client;
    };

    Control(HeldActuators& held, const Audience& audience) : held_(held), audience_(audience) {}
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    /// They refer to this object.
    Methods methods();

    /// The client has gone. What it has taken is given back, the last one first. On the thread of
    /// the library.
    void giveBackOf(ClientNumber client);
    /// The same for all.
    void giveAllBack();
    /// The same for one, if its lease is over. On the thread of the library.
    void giveBackOverdue(const std::string& name);

    /// Those whose lease has run out, and those that QOR has to be asked about again. Any thread
    /// may ask.
    std::vector<std::string> takeOverdue();
    std::vector<Owned> all() const;

private:
    using Clock = std::chrono::steady_clock;
    using Guard = std::lock_guard<std::mutex>;

    struct Owner {
        std::string name;
        ClientNumber client;
        std::optional<Clock::time_point> end;  // of its lease; none: it has no end
        bool isOverdue = false;                // it may not be renewed any more
        bool isToBeAsked = false;              // about that, as soon as it is its turn
    };

    void take(const nlohmann::json& given, ClientNumber client);
    void renew(const nlohmann::json& given, ClientNumber client);
    void giveBack(const std::string& name, unsigned int timeoutMs);
    void release(const std::string& name);
    /// Of one that nobody has any more: while QOR does not answer, it will be asked again.
    void giveBackOrphan(const std::string& name);
    /// True if it was nobody's before.
    bool own(const std::string& name, ClientNumber client, unsigned int leaseMs);
    void forget(const std::string& name);
    void tell(const std::string& name, ClientNumber owner, bool isHeld) const;

    HeldActuators& held_;
    const Audience& audience_;
    mutable std::mutex mutex_;
    std::vector<Owner> owners_;  // guarded by mutex_; in the order of taking
};

}  // namespace qorctl::serve

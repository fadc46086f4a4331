#pragma once

#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "CallNotes.h"
#include "QorControlFacade.h"

namespace qorctl {

/// The actuators that a conversation has under direct control, or may have: QOR can take one when
/// nobody waits for that any more. Whoever takes and gives back through this leaves nothing behind
/// that `latest` does not name.
///
/// One thread takes and gives back; `notGivenBack` may be called by any.
class HeldActuators {
public:
    explicit HeldActuators(const QorControlFacade& facade) : facade_(facade) {}
    HeldActuators(const HeldActuators&) = delete;
    HeldActuators& operator=(const HeldActuators&) = delete;

    /// True once it is under direct control. False: unless QOR has refused it, it was asked at
    /// once to give it back, and counts as held until that has worked.
    bool take(const std::string& name, unsigned int timeoutMs, CallNotes& calls);

    /// True once QOR has said so; false: it counts as held, if it did before.
    bool giveBack(const std::string& name, unsigned int timeoutMs, CallNotes& calls);

    /// It is known that it is not under direct control.
    void drop(const std::string& name);

    /// For the end: the same with more patience, again and again for 5 s while QOR does not answer.
    /// Whatever comes of it, it does not count as held any more; false: it is `notGivenBack` for
    /// good.
    bool giveBackForGood(const std::string& name, CallNotes& calls);

    /// The same for all, the one that was taken last first. Returns the names of those that are
    /// free now.
    std::vector<std::string> giveAllBackForGood();

    /// The one that was taken last.
    std::optional<std::string> latest() const;
    /// What could not be given back, and what is still held, in the order in which it was taken.
    std::vector<std::string> notGivenBack() const;

private:
    /// Whether it was not held before.
    bool add(const std::string& name);
    void remove(const std::string& name);
    void lose(const std::string& name);
    /// It was lost, but was taken and given back since.
    void find(const std::string& name);

    const QorControlFacade& facade_;
    mutable std::mutex mutex_;
    std::vector<std::string> held_;  // guarded by mutex_
    std::vector<std::string> lost_;  // guarded by mutex_
    std::set<std::string> isAsked_;  // those that QOR may give back late
};

}  // namespace qorctl

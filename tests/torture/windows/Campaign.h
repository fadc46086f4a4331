#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Faults.h"
#include "Watchdog.h"

namespace torture {

/// Of each operation, in place of the first one that comes to a place.
bool isExhaustive();

/// One host in whose operation a call of the system fails.
class Trial {
public:
    virtual ~Trial() = default;
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;

    /// The operation; whether it has worked.
    virtual bool run() = 0;
    /// Behind it, when nothing fails any more: the host works, or says why it does not.
    virtual void expectNextWorks(const Site& failed) = 0;

protected:
    Trial() = default;
};

/// What is tried, and what it may leave.
struct Deed {
    std::string name;
    bool keepsHandles;                              ///< a started QOR keeps two, each time
    std::function<std::unique_ptr<Trial>()> begin;  ///< null: the host does not come up
};

/// Every call that a module makes of the system, as far as it can fail, fails once in each deed.
class Campaign {
public:
    explicit Campaign(const char* moduleName) : replaced_(moduleName) {}

    /// How often a call site is played: not at all, in the first deed that comes to it (in all of
    /// them if exhaustive), or in each.
    enum class Share { none, first, each };
    std::function<Share(const Site&)> share = [](const Site&) { return Share::first; };
    /// So many calls from one place are told apart.
    unsigned int callsPerPlace = isExhaustive() ? 3 : 1;

    void play(const Deed& deed, const Site& site);
    void playAll(const std::vector<Deed>& deeds);
    int notMet() const { return notMet_; }

    /// The call sites that a deed comes to.
    std::vector<Site> sitesOf(const Deed& deed);

private:
    struct Case {
        const Deed* deed;
        Site site;
    };

    void collect(const std::vector<Deed>& deeds);
    std::string playOnce(const Deed& deed, const Site& site);

    Watchdog watchdog_;
    Replaced replaced_;
    std::vector<Case> cases_;
    int notMet_ = 0;
};

}  // namespace torture

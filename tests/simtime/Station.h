#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "facade/QorControlFacade.h"
#include "Machine.h"
#include "Network.h"
#include "Qor.h"
#include "qorcontrol/Arrivals.h"

namespace simtime {

using ParamQueue = ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>>;
using DtcQueue = ThreadSafeQueue<std::vector<QorControlFacade::DtcDescription>>;

constexpr unsigned int hostCount = 4;

/// What a run is told.
struct Wish {
    std::uint64_t seed = 1;
    Ms spanMs = 0;
};

/// What a run has seen.
struct Report {
    Ms simulatedMs = 0;
    std::uint64_t calls = 0;
    std::uint64_t failedCalls = 0;
    std::uint64_t faults = 0;
    std::uint64_t takenForNext = 0;  ///< second copies of an answer that names nobody
    std::uint64_t certain = 0;       ///< answers that must not be marked, and are not
    std::uint64_t doubtful = 0;      ///< that may be marked, and are not
    std::uint64_t marked = 0;        ///< that may be marked, and are
    std::uint64_t episodes = 0;
    std::uint64_t restarts = 0;
    bool isMemoryJudged = false;  ///< a shorter run is not
    unsigned int wraps = 0;
    unsigned int wrapsUnderCalls = 0;
    std::uint64_t hash = 0;
    std::uint64_t findingCount = 0;
    std::vector<std::string> findings;
};

/// What is done to QOR while hosts call.
enum class Trouble {
    none,
    moods,
    drops,
    restarts,
    hangs,
    lostEcu,
    boxes,
    all,
    idleRestart,  ///< while nobody calls
    newHost       ///< the host ends and begins anew
};
constexpr unsigned int troubleCount = 10;

/// A test station for some simulated time: a host of several threads on the library, with a QOR
/// that fails in every way. It works in episodes: some seconds of calls, mostly with trouble, then
/// a sound QOR again, before which everything must work, then nothing for hours. An episode lies
/// across each wrap of the tick count.
class Station {
public:
    explicit Station(const Wish& wish);
    ~Station();
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;

    static Station& present();

    /// The whole run.
    Report run();

    Machine& machine() { return machine_; }
    Qor& qor() { return qor_; }
    QorControlFacade& facade() { return *facade_; }
    Random& random() { return machine_.random(); }

    /// @name For the hosts
    /// @{
    /// One call: its time is held against its budget.
    template <class Body>
    bool call(const char* name, Ms budgetMs, Body body) {
        const Machine::Busy busy;
        qor_.wake();
        const Ms begin = machine_.now();
        const bool succeeded = body();
        endCall(name, begin, budgetMs, succeeded);
        return succeeded;
    }
    /// A call that failed or a value that is wrong.
    void complain(const char* name, const std::string& what);
    void noteTakenForNext() { ++report_.takenForNext; }
    /// An answer with data: whether it may be marked as perhaps another request's, and is.
    void noteAnswer(bool mayBeMarked, bool isMarked) {
        ++(isMarked ? report_.marked : mayBeMarked ? report_.doubtful : report_.certain);
    }
    /// Fails have to be explained.
    bool mustSucceed() const { return mustSucceed_; }
    bool hasCache() const { return periodMs_ > 1; }
    /// How old a value out of the cache may be.
    Ms oldestCachedMs() const;
    std::uint64_t nextMark() { return ++lastMark_; }
    /// So long the agent may be at a request after its caller has given up.
    void noteLongest(Ms ms) { longestMs_ = ms > longestMs_ ? ms : longestMs_; }
    unsigned int periodMs() const { return periodMs_; }
    QorControlFacade::EcuConnect ecu() const;
    bool connects(Ms patienceMs);
    ParamQueue& queue(unsigned int host);
    DtcQueue& dtcQueue();
    /// @}

private:
    void direct();
    void beginHost();
    void endHost();
    void episode(Trouble trouble);
    void beQuiet();
    void sleep(Ms ms);
    Trouble drawTrouble();
    void trouble(Trouble what);
    void troubleOnce(Trouble what);
    void startHosts(unsigned int calls);
    void host(unsigned int number);
    void heal();
    void recover();
    void awaitAnswer(Ms boundMs);
    void awaitOnline(bool isOnline, Ms boundMs);
    void checkEachOperation();
    void checkStreams();
    void checkLostEcu();
    bool hasFreshArrival(Ms since);
    bool hasFreshBatch(Ms since);
    void restartHost();
    void measureMemory();
    void judgeMemory();
    void endCall(const char* name, Ms begin, Ms budgetMs, bool succeeded);
    unsigned int wrapsUntil(Ms moment) const;
    Mood drawMood();
    std::string describeTrouble() const;

    const Wish wish_;
    Random plan_;
    Machine machine_;
    Network network_;
    Qor qor_;
    unsigned int periodMs_;
    std::unique_ptr<QorControlFacade> facade_;
    std::optional<qorcontrol::Arrivals> arrivals_;

    unsigned int callsToDo_ = 0;
    std::uint64_t rounds_ = 0;  // in which the hosts are sent to work
    unsigned int hostsAtWork_ = 0;
    bool isOver_ = false;
    bool mustSucceed_ = false;
    bool hasBoxes_ = false;
    bool isLate_ = false;
    bool isBeforeWrap_ = false;
    Trouble trouble_ = Trouble::none;
    Mood mood_;
    Ms longestMs_ = 0;
    std::uint64_t lastMark_ = 0;
    std::vector<std::size_t> memory_;
    Report report_;
};

}  // namespace simtime

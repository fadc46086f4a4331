#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "facade/channel/OperationTable.h"
#include "facade/QorControlFacade.h"
#include "qorcontrol/Arrivals.h"
#include "qorcontrol/ThreadSafeQueue.h"
#include "support/FakeMonitor.h"

/// What a host can ask of the library, once each, for tests in which something fails meanwhile.
namespace torture {

/// As long as an operation may take, where it takes a time-out.
constexpr unsigned int timeoutMs = 1000;

/// Cancels a connect that takes long: a result that is lost with its connection never comes.
class PatientMonitor final : public FakeMonitor {
public:
    bool isCancelled() override {
        const Clock::time_point now = Clock::now();
        if (now - asked_ > pause) begin_ = now;  // another connect
        asked_ = now;
        return FakeMonitor::isCancelled() || now - begin_ > patience;
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds pause{500};
    static constexpr std::chrono::milliseconds patience{5000};

    Clock::time_point begin_{}, asked_{};
};

/// A host. Its queues outlive its facade.
struct Host {
    explicit Host(std::string settings, std::string mapName = "Map", std::string own = "")
        : settingsPath(std::move(settings)), map(std::move(mapName)), hostPath(std::move(own)) {}

    void construct();
    /// Constructs it and waits until QOR answers; false if it does not.
    bool start();
    /// Until QOR answers or nothing can become of it any more.
    bool awaitAnswer() const;

    const std::string settingsPath;
    const std::string map;  ///< a parameter of three arrays
    const std::string hostPath;
    PatientMonitor monitor;
    ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>> values{4};
    ThreadSafeQueue<std::vector<QorControlFacade::DtcDescription>> codes{4};
    std::unique_ptr<QorControlFacade> facade;
    /// Its end is an operation, too, and would have the last word about one that fails.
    std::optional<qorcontrol::Arrivals> arrivals;
};

struct Operation {
    const char* name;
    std::vector<channel::Kind> kinds;  ///< the rows of the table that it makes requests of
    bool needsFacade;                  ///< one that QOR answers
    std::function<bool(Host&)> run;    ///< whether it has worked
};

const std::vector<Operation>& operations();

/// How one has ended.
enum class Result { failed, worked, threw };

/// What `lastOutcome` of the calling thread, whose last operation it is, should tell then and does
/// not; empty if it does.
std::string complaintAbout(const Operation& operation, Result result);

}  // namespace torture

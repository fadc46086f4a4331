#include "cinterface/Session.h"

#include <atomic>
#include <iterator>
#include <utility>

#include "cinterface/Process.h"
#include "cinterface/Refusal.h"
#include "facade/FacadeImpl.h"

namespace cinterface {
namespace {

/// So long a connect may take to notice that its agent has ended.
constexpr unsigned int connectEndMs = 2000;

std::atomic<std::uint64_t> sessionCount{0};

}  // namespace

Session::Session(const std::string& settingsPath, unsigned int readPeriodMs,
                 const std::string& hostPath)
    : serial_(++sessionCount),
      facade_(settingsPath, &log_, readPeriodMs, hostPath),
      channel_(FacadeAccess::stateOf(facade_).channel) {}

void Session::close() {
    const auto connect = lastConnect();
    if (connect != nullptr) connect->cancel();
    facade_.shutdown();
    if (connect != nullptr) connect->awaitEnd(connectEndMs);
    log_.replace(nullptr, nullptr);
    progress_.replace(nullptr, nullptr);
    results_.close();
}

std::shared_ptr<const Result> Session::lastResult() const {
    const auto& places = process().threads.get().results;
    const auto own = places.find(serial_);
    return own == places.end() ? nullptr : own->second->get();
}

std::shared_ptr<const Result> Session::keep(Result result) {
    auto kept = std::make_shared<const Result>(std::move(result));
    auto& places = process().threads.get().results;
    auto own = places.find(serial_);
    if (own == places.end()) {
        // One of a handle that has been closed is of no use any more.
        for (auto place = places.begin(); place != places.end();)
            place = place->second->isClosed() ? places.erase(place) : std::next(place);
        own = places.emplace(serial_, std::make_shared<ResultPlace>()).first;
        results_.add(own->second);
    }
    own->second->put(kept);
    return kept;
}

std::shared_ptr<ConnectRun> Session::startConnect(QorControlFacade::EcuConnect settings,
                                                  QorControlFacade::EcuConnect::ConnType type) {
    const auto run = std::make_shared<ConnectRun>(std::move(settings), type);
    if (!placeConnect(run))
        refuse(Cause::wrongOrder, "A connect of this handle runs already.",
               "Await it with QorConnectWait, or end it with QorConnectCancel.");
    run->start(shared_from_this());
    return run;
}

bool Session::placeConnect(std::shared_ptr<ConnectRun> run) {
    const auto present = connect_.lock();
    if (*present != nullptr && (*present)->isRunning()) return false;
    present->swap(run);
    return true;
}

}  // namespace cinterface

#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "qorcontrol/MessageBoxes.h"
#include "QorControlFacade.h"
#include "serve/Audience.h"
#include "serve/events/EcuLosses.h"

namespace qorctl::serve {

/// Looks at what nobody is told of by the library, and tells the clients: whether the ECU is
/// online, how far a connect has come, message boxes of QOR.
class Observer {
public:
    /// @param answersBoxes  those that no client has answered in time get their default button.
    Observer(const QorControlFacade& facade, const Audience& audience, bool answersBoxes)
        : facade_(facade), audience_(audience), answersBoxes_(answersBoxes) {}
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    /// So long clients may take to answer a box, in milliseconds.
    static constexpr unsigned int boxPatienceMs = 60000;

    /// Of one thread. True if the ECU came online again after it was lost.
    bool look();

    /// The time of a connect: its end tells the last figure, so that it comes before the answer.
    class Connect {
    public:
        explicit Connect(Observer& observer) : observer_(observer) { observer_.beginConnect(); }
        ~Connect() { observer_.endConnect(); }
        Connect(const Connect&) = delete;
        Connect& operator=(const Connect&) = delete;

    private:
        Observer& observer_;
    };
    /// There is one at a time.
    std::unique_ptr<Connect> connectIf(bool isOne) {
        return isOne ? std::make_unique<Connect>(*this) : nullptr;
    }

    /// What is known without asking QOR. Any thread may call this and the next one.
    nlohmann::json state() const;
    /// QOR does not tell which memory page is worked on: it is known from what was asked for.
    /// @param segment  its name in UTF-8; empty: not known.
    void noteSegment(const std::string& segment);
    /// The time in which QOR is asked for something for which it lets the ECU go.
    class LettingGo {
    public:
        explicit LettingGo(Observer& observer) : losses_(observer.losses_) {
            losses_.beginLettingGo(observer.facade_.isEcuOnline());
        }
        ~LettingGo() { losses_.endLettingGo(); }
        LettingGo(const LettingGo&) = delete;
        LettingGo& operator=(const LettingGo&) = delete;

    private:
        EcuLosses& losses_;
    };

private:
    using Clock = std::chrono::steady_clock;

    bool lookAtState();
    void beginConnect();
    void endConnect() noexcept;
    void tellProgress();
    void lookAtBoxes();
    void tellBox(const qorcontrol::QorBox& box) const;

    const QorControlFacade& facade_;
    const Audience& audience_;
    const bool answersBoxes_;
    nlohmann::json state_;  // told
    EcuLosses losses_;
    mutable std::mutex mutex_;
    std::string segment_;  // guarded by mutex_
    // Guarded by mutex_; of the connect that runs.
    std::optional<Clock::time_point> connectBegin_;
    nlohmann::json before_;    // what there was of the one before it; null once that is gone
    nlohmann::json progress_;  // told
    unsigned int lastBox_ = 0;
    std::deque<unsigned int> openBoxes_;
};

}  // namespace qorctl::serve

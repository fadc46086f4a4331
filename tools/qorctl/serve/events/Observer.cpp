#include "serve/events/Observer.h"

#include <exception>

#include "BoxAnswers.h"
#include "JsonText.h"
#include "qorcontrol/ConnectProgress.h"
#include "qorcontrol/MessageBoxes.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;
using qorcontrol::QorBox;

json jsonOf(const QorBox& box) {
    return {{"number", box.number}, {"caption", utf8Of(box.caption)}, {"text", utf8Of(box.text)},
            {"type", box.type},     {"isOpen", box.isOpen},           {"choice", box.choice}};
}

json jsonOf(const qorcontrol::ConnectProgress& seen) {
    return {{"figure", seen.figure}, {"steps", seen.steps}};
}

}  // namespace

json Observer::state() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return {{"isEcuOnline", facade_.isEcuOnline()},
            {"isConnecting", facade_.isConnecting()},
            {"segment", segment_}};
}

void Observer::noteSegment(const std::string& segment) {
    const std::lock_guard<std::mutex> guard(mutex_);
    segment_ = segment;
}

bool Observer::look() {
    const bool isBack = lookAtState();
    tellProgress();
    lookAtBoxes();
    return isBack;
}

bool Observer::lookAtState() {
    json state;
    const bool isBack = losses_.look([&] {
        state = this->state();
        return state["isEcuOnline"].get<bool>();
    });
    if (state == state_) return isBack;
    state_ = std::move(state);
    audience_.tell("state", state_);
    return isBack;
}

void Observer::beginConnect() {
    const std::lock_guard<std::mutex> guard(mutex_);
    connectBegin_ = Clock::now();
    before_ = jsonOf(qorcontrol::connectProgress(facade_));
    progress_ = nullptr;
}

void Observer::endConnect() noexcept {
    try {
        tellProgress();
    } catch (const std::exception&) {
        // Without memory for it the last figure is not told.
    }
    const std::lock_guard<std::mutex> guard(mutex_);
    connectBegin_.reset();
}

void Observer::tellProgress() {
    json progress = jsonOf(qorcontrol::connectProgress(facade_));
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        if (!connectBegin_) return;
        // The figures stand until QOR begins.
        if (progress == before_ && progress["steps"] != 0) return;
        before_ = nullptr;
        if (progress == progress_) return;
        progress_ = progress;
        const auto elapsed = Clock::now() - *connectBegin_;
        progress["elapsedMs"] =
            std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
    }
    audience_.tell("connectProgress", progress);
}

void Observer::tellBox(const QorBox& box) const {
    json told = jsonOf(box);
    told["isForClients"] = answersBoxes_;
    audience_.tell("box", told);
}

void Observer::lookAtBoxes() {
    QorBox box;
    for (; qorcontrol::nextBox(facade_, lastBox_, box); lastBox_ = box.number) {
        tellBox(box);
        if (box.isOpen) openBoxes_.push_back(box.number);
    }
    std::deque<unsigned int> still;
    for (const unsigned int number : openBoxes_) {
        if (!qorcontrol::nextBox(facade_, number - 1, box) || box.number != number) continue;
        if (box.isOpen && answersBoxes_ && box.openMs >= boxPatienceMs)
            qorcontrol::answerBox(facade_, number, BoxAnswers().choiceFor(box.type));
        if (box.isOpen)
            still.push_back(number);
        else
            tellBox(box);
    }
    openBoxes_ = std::move(still);
}

}  // namespace qorctl::serve

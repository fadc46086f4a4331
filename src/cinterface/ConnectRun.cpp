#include "cinterface/ConnectRun.h"

#include <new>
#include <utility>

#include "cinterface/Process.h"
#include "cinterface/Refusal.h"
#include "cinterface/Session.h"
#include "cinterface/Shell.h"
#include "common/Clock.h"

namespace cinterface {

struct ConnectRun::Luggage {
    std::shared_ptr<ConnectRun> run;
    std::shared_ptr<Session> session;
};

ConnectRun::ConnectRun(QorControlFacade::EcuConnect settings,
                       QorControlFacade::EcuConnect::ConnType type, channel::Channel& channel,
                       std::shared_ptr<ProgressFunction> progress)
    : settings_(std::move(settings)),
      type_(type),
      channel_(channel),
      progress_(std::move(progress)),
      start_(common::now()) {}

void ConnectRun::start(std::shared_ptr<Session> session) {
    auto luggage = std::make_unique<Luggage>(Luggage{shared_from_this(), std::move(session)});
    if (ended_.exists() && thread_.start(&ConnectRun::run, luggage.get())) {
        static_cast<void>(luggage.release());
        return;
    }
    end(systemFailure("there is no thread for the connect"));
    throw Refusal{outcome()};
}

unsigned __stdcall ConnectRun::run(void* luggage) {
    const std::unique_ptr<Luggage> own(static_cast<Luggage*>(luggage));
    own->run->end(own->run->perform(*own->session));
    return 0;
}

Outcome ConnectRun::perform(Session& session) {
    try {
        const bool succeeded = session.facade().connect(settings_, type_, this);
        if (isBegun_) passOnFigure();  // the last one
        if (!succeeded && !session.channel().agent.isOperating())
            process().monitors.add(session.channelShare(), shared_from_this());
        return outcomeOf(succeeded);
    } catch (const std::bad_alloc&) {
        return outOfMemory();
    }
}

void ConnectRun::end(Outcome outcome) {
    {
        const auto course = course_.lock();
        course->outcome = std::move(outcome);
        course->end = common::now();
    }
    running_ = false;
    ended_.open();
}

Outcome ConnectRun::outcome() {
    if (isRunning()) return failure(Cause::notReady, "the connect still runs");
    return course_.lock()->outcome;
}

std::string ConnectRun::reason() {
    return course_.lock()->reason;
}

unsigned int ConnectRun::elapsedMs() {
    const common::Moment end = isRunning() ? common::now() : course_.lock()->end;
    return static_cast<unsigned int>(end - start_);
}

bool ConnectRun::isCancelled() {
    isBegun_ = true;
    passOnFigure();
    return cancelled_;
}

void ConnectRun::passOnFigure() {
    const auto seen = channel_.progress.seen();
    {
        const auto course = course_.lock();
        if (course->seen.steps == seen.steps) return;
        course->seen = seen;
    }
    if (!progress_->isSet()) return;
    try {
        (*progress_)(seen.figure);
    } catch (const std::bad_alloc&) {
        // The agent is told nothing of it: the host finds the figure when it asks.
    }
}

void ConnectRun::reportError(const std::string& message, unsigned int) {
    try {
        course_.lock()->reason = message;
    } catch (const std::bad_alloc&) {
        // The agent is told nothing of it: the outcome has the cause.
    }
}

}  // namespace cinterface

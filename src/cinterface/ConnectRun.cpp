#include "cinterface/ConnectRun.h"

#include <new>
#include <utility>

#include "cinterface/Refusal.h"
#include "cinterface/Session.h"
#include "cinterface/Shell.h"
#include "common/Clock.h"
#include "facade/Quietly.h"

namespace cinterface {
namespace {

/// For where there is no memory for words.
Outcome withoutWords(Cause cause) {
    return Outcome{cause, false, 0, {}, {}};
}

}  // namespace

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
    Outcome failed = withoutWords(Cause::outOfMemory);
    try {
        auto luggage = std::make_unique<Luggage>(Luggage{shared_from_this(), std::move(session)});
        if (ended_.exists() && thread_.start(&ConnectRun::run, luggage.get())) {
            static_cast<void>(luggage.release());
            return;
        }
        failed = systemFailure("there is no thread for the connect");
    } catch (const std::bad_alloc&) {
        // It ends here all the same: a connect that runs keeps others away.
    }
    end(std::move(failed));
    throw Refusal{outcome()};
}

unsigned __stdcall ConnectRun::run(void* luggage) {
    const std::unique_ptr<Luggage> own(static_cast<Luggage*>(luggage));
    own->run->threadId_ = common::currentThreadId();
    own->run->end(own->run->perform(*own->session));
    return 0;
}

bool ConnectRun::isOwnThread() const {
    return threadId_ == common::currentThreadId();
}

Outcome ConnectRun::perform(Session& session) noexcept {
    try {
        const auto isWanted = [this] {
            tellFigures();
            return !cancelled_;
        };
        const bool succeeded =
            quietly::connect(session.state(), settings_, type_, shared_from_this(), isWanted);
        if (isBegun_) noteFigure();  // the last one
        tellFigures();
        return outcomeOf(succeeded);
    } catch (const std::bad_alloc&) {
        return withoutWords(Cause::outOfMemory);
    } catch (...) {
        return withoutWords(Cause::systemFailure);
    }
}

void ConnectRun::end(Outcome outcome) noexcept {
    {
        const auto course = course_.lock();
        course->outcome = std::move(outcome);
        course->end = common::now();
    }
    threadId_ = 0;  // the system gives the number out again
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
    noteFigure();
    return cancelled_;
}

void ConnectRun::noteFigure() {
    const auto seen = channel_.progress.seen();
    const auto course = course_.lock();
    if (course->seen.steps == seen.steps) return;
    course->seen = seen;
    course->figures[course->noted++ % course->figures.size()] = seen.figure;
}

/// The oldest one that the host's function has not been told.
std::optional<std::int32_t> ConnectRun::nextFigure() {
    const auto course = course_.lock();
    if (course->told == course->noted) return std::nullopt;
    const auto kept = static_cast<unsigned int>(course->figures.size());
    if (course->noted - course->told > kept) course->told = course->noted - kept;
    return course->figures[course->told++ % kept];
}

void ConnectRun::tellFigures() {
    while (const auto figure = nextFigure()) {
        try {
            (*progress_)(*figure);
        } catch (const std::bad_alloc&) {
            // The connect goes on: the host finds the figure when it asks.
        }
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

#include "Load.h"

#include "qorcontrol/Outcome.h"
#include "Turn.h"
#include "Warming.h"
#include "Writes.h"

namespace soak {

namespace {

constexpr unsigned timeoutsMs[] = {20, 20, 40, 40, 80, 150, 400};
constexpr unsigned crowdTimeoutsMs[] = {20, 40, 80};
constexpr unsigned patientMs = 3000;
constexpr unsigned lookMs = 3;
constexpr unsigned mostTries = 6;
constexpr unsigned moreReads = 40;

unsigned timeoutOf(Dice& dice, bool isCrowd) {
    if (isCrowd)
        return crowdTimeoutsMs[dice.below(static_cast<unsigned>(std::size(crowdTimeoutsMs)))];
    return timeoutsMs[dice.below(static_cast<unsigned>(std::size(timeoutsMs)))];
}

}  // namespace

Load::Load(Report& report, Judge& judge, std::uint64_t seed, unsigned threads)
    : report_(report), judge_(judge), seed_(seed), places_(threads) {
    verifier_.number = threads;
    for (unsigned i = 0; i < threads; ++i) places_[i].worker.number = i;
    for (Place& place : places_) threads_.emplace_back([this, &place] { work(place); });
}

Load::~Load() {
    ends_ = true;
    SetEvent(mayGo_.get());
    for (std::thread& thread : threads_) thread.join();
}

void Load::begin(const QorControlFacade& qor, Mode mode) {
    qor_ = &qor;
    mode_ = mode;
    SetEvent(mayGo_.get());
}

bool Load::rest(unsigned patience) {
    const std::uint64_t endUs = nowUs() + std::uint64_t{patience} * 1000;
    ResetEvent(mayGo_.get());
    mode_ = Mode::rest;
    while (active_ != 0 && nowUs() < endUs) Sleep(lookMs);
    return active_ == 0;
}

void Load::warmUp(const QorControlFacade& qor) {
    for (Place& place : places_) place.isCold = true;
    warming_ = static_cast<unsigned>(places_.size());
    begin(qor, Mode::warm);
    while (warming_ != 0) Sleep(lookMs);
    rest(patientMs);
}

/// Counted first and looked at then: who wants all to rest does it the other way round.
bool Load::enter(Place& place) {
    ++active_;
    const Mode mode = mode_;
    if (mode == Mode::crowd) return true;
    const bool wants = mode == Mode::few || (mode == Mode::warm && place.isCold);
    if (wants && WaitForSingleObject(few_.get(), 0) == WAIT_OBJECT_0) {
        place.isOfFew = true;
        return true;
    }
    --active_;
    return false;
}

void Load::leave(Place& place) {
    if (place.isOfFew) ReleaseSemaphore(few_.get(), 1, nullptr);
    place.isOfFew = false;
    note(place, "");
    --active_;
}

void Load::work(Place& place) {
    Dice pauses(seed_, place.worker.number, 0);
    while (!ends_) {
        WaitForSingleObject(mayGo_.get(), INFINITE);
        if (enter(place))
            takeTurn(place);
        else
            Sleep(1 + pauses.below(40));
    }
}

void Load::takeTurn(Place& place) {
    const Mode mode = mode_;
    if (mode == Mode::warm && place.isCold) {
        warm(place, *qor_);
        place.isCold = false;
        --warming_;
    } else if (mode == Mode::few || mode == Mode::crowd) {
        step(place, *qor_, mode);
    }
    leave(place);
}

void Load::step(Place& place, const QorControlFacade& qor, Mode mode) {
    const bool isCrowd = mode == Mode::crowd;
    Dice dice(seed_, place.worker.number, ++place.worker.steps);
    const Operation& operation = operationOf(dice, isCrowd);
    const unsigned timeoutMs = timeoutOf(dice, isCrowd);
    const std::string where = whereOf(place.worker, operation.name);
    note(place, where);
    Turn turn{qor, judge_, place.worker, dice, timeoutMs, where};
    operation.run(turn);
    // A crowd that asks without a pause gets in its own way, and no machine is quick enough for it.
    if (isCrowd || dice.below(4) == 0) Sleep(dice.below(isCrowd ? 200 : 8));
}

void Load::warm(Place& place, const QorControlFacade& qor) {
    const std::string where = whereOf(place.worker, "warming");
    note(place, where);
    Turn turn{qor, judge_, place.worker, Dice(seed_, place.worker.number, 0), patientMs, where};
    callEachOnce(turn);
}

// On a new connection, and nobody else asks; but a stream of trouble codes does, and gives up soon.
void Load::verify(const QorControlFacade& qor, const std::string& where) {
    hasGivenUp_ = false;
    for (unsigned i = 0; i < operationCount; ++i) verifyOne(qor, where, operations[i]);
    for (unsigned i = 0; i < moreReads; ++i) verifyOne(qor, where, operations[readOperation]);
    judge_.owesNothing = false;
}

// QOR has half a second for a write and the like, whatever the caller says, which on a machine that
// has too much to do is not always enough.
void Load::verifyOne(const QorControlFacade& qor, const std::string& where,
                     const Operation& operation) {
    const std::string here = where + ", verifying " + operation.name;
    const std::uint64_t startUs = nowUs();
    for (unsigned tries = 1;; ++tries) {
        judge_.owesNothing = !hasGivenUp_ && operation.run != readCodes;
        Turn turn{qor,       judge_, verifier_, Dice(seed_, verifier_.number, ++verifier_.steps),
                  patientMs, here};
        if (operation.run(turn)) return;
        hasGivenUp_ = true;  // QOR may answer yet
        if (tries < mostTries && judge_.isBusySince(startUs)) continue;
        const qorcontrol::Outcome outcome = qorcontrol::lastOutcome();
        return report_.breach(
            here, "it failed with a QOR that does nothing wrong: " + outcome.sentence + " (cause " +
                      std::to_string(static_cast<int>(outcome.cause)) + ", " +
                      std::to_string(outcome.elapsedMs) + " ms)");
    }
}

void Load::note(Place& place, const std::string& doing) {
    const Inside inside(lock_);
    place.doing = doing;
}

std::string Load::busy() {
    const Inside inside(lock_);
    std::string all;
    for (const Place& place : places_)
        if (!place.doing.empty()) all += (all.empty() ? "" : "; ") + place.doing;
    return all;
}

std::string Load::whereOf(const Worker& worker, const char* operation) const {
    return "thread " + std::to_string(worker.number) + " step " + std::to_string(worker.steps) +
           " " + operation;
}

}  // namespace soak

#include "facade/channel/MessageBoxDesk.h"

#include <algorithm>
#include <utility>

#include "common/Clock.h"
#include "common/Pump.h"
#include "common/SlicedWait.h"

namespace channel {

namespace {

/// More than one box may wait for the one event, and what QOR sends meanwhile comes as messages to
/// the thread that waits: each looks after so long at the latest.
constexpr std::uint32_t lookMs = 5;

std::size_t bytesOf(const MessageBoxDesk::Box& box) {
    return box.text.size() + box.caption.size();
}

}  // namespace

void MessageBoxDesk::setPolicy(Policy policy, std::uint32_t choice, std::uint32_t askMs) {
    const auto state = state_.lock();
    state->policy = policy;
    state->choice = choice;
    state->askMs = askMs;
    state->isReporting = true;
}

std::uint32_t MessageBoxDesk::present(const std::string& text, const std::string& caption,
                                      std::uint32_t type, const Show& show) {
    const Way way = enter({0, text, caption, type, common::now(), true, 0, {}});
    std::uint32_t choice = way.choice;
    if (way.policy == Policy::show) choice = show();
    if (way.policy == Policy::ask) choice = awaitHost(way);
    settle(way.id, choice);
    return choice;
}

MessageBoxDesk::Way MessageBoxDesk::enter(Box box) {
    const auto state = state_.lock();
    box.id = state->lastId + 1;
    state->boxes.push_back({std::move(box), false, state->policy == Policy::ask});
    ++state->lastId;
    makeRoom(*state);
    return {state->lastId, state->policy, state->choice, state->askMs};
}

std::uint32_t MessageBoxDesk::awaitHost(const Way& way) {
    common::SlicedWait wait(way.askMs);
    do {
        common::pumpCopyData();
        if (const auto choice = hostsChoice(way.id)) return *choice;
        if (state_.lock()->isClosed) return way.choice;
        if (changed_.exists())
            changed_.wait(std::min(lookMs, wait.sliceMs()));
        else
            common::sleepMs(1);
    } while (wait.goesOn());
    return hostsChoice(way.id).value_or(way.choice);
}

std::optional<std::uint32_t> MessageBoxDesk::hostsChoice(std::uint32_t id) {
    const auto state = state_.lock();
    const Kept* const kept = find(*state, id);
    if (kept == nullptr || kept->box.isWaiting) return std::nullopt;
    return kept->box.choice;
}

void MessageBoxDesk::settle(std::uint32_t id, std::uint32_t choice) {
    const auto state = state_.lock();
    Kept* const kept = find(*state, id);
    if (kept == nullptr) return;
    if (kept->box.isWaiting) close(kept->box, choice);
    if (!state->isReporting) state->boxes.clear();
}

void MessageBoxDesk::close(Box& box, std::uint32_t choice) {
    box.isWaiting = false;
    box.choice = choice;
    box.end = common::now();
}

void MessageBoxDesk::makeRoom(State& state) {
    std::size_t bytes = 0;
    for (const Kept& kept : state.boxes) bytes += bytesOf(kept.box);
    while (state.boxes.size() > 1 && (state.boxes.size() > maxBoxes || bytes > maxBytes)) {
        bytes -= bytesOf(state.boxes.front().box);
        state.boxes.pop_front();
    }
}

MessageBoxDesk::Kept* MessageBoxDesk::find(State& state, std::uint32_t id) {
    for (Kept& kept : state.boxes)
        if (kept.box.id == id) return &kept;
    return nullptr;
}

std::optional<MessageBoxDesk::Box> MessageBoxDesk::nextAfter(std::uint32_t id) {
    const auto state = state_.lock();
    for (const Kept& kept : state->boxes)
        if (kept.box.id > id) return kept.box;
    return std::nullopt;
}

std::optional<MessageBoxDesk::Box> MessageBoxDesk::next() {
    const auto state = state_.lock();
    for (const Kept& kept : state->boxes)
        if (!kept.isTold) return kept.box;
    return std::nullopt;
}

bool MessageBoxDesk::markTold(std::uint32_t id) {
    const auto state = state_.lock();
    Kept* const kept = find(*state, id);
    if (kept == nullptr || kept->isTold) return false;
    kept->isTold = true;
    return true;
}

bool MessageBoxDesk::answer(std::uint32_t id, std::uint32_t choice) {
    {
        const auto state = state_.lock();
        Kept* const kept = find(*state, id);
        if (kept == nullptr || !kept->isForHost || !kept->box.isWaiting) return false;
        close(kept->box, choice);
    }
    changed_.signal();
    return true;
}

void MessageBoxDesk::close() {
    state_.lock()->isClosed = true;
    changed_.signal();
}

}  // namespace channel

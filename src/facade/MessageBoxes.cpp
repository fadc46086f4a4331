#include "qorcontrol/MessageBoxes.h"

#include <utility>

#include "common/Clock.h"
#include "facade/FacadeImpl.h"

using channel::MessageBoxDesk;

namespace {

/// The system's numbers of buttons go from 1 to that of "Continue".
constexpr unsigned int lastChoice = 11;

bool isChoice(unsigned int number) {
    return number >= 1 && number <= lastChoice;
}

MessageBoxDesk& deskOf(const QorControlFacade& facade) {
    return FacadeAccess::stateOf(facade).channel->messageBoxes;
}

MessageBoxDesk::Policy policyOf(qorcontrol::BoxPolicy policy) {
    switch (policy) {
        case qorcontrol::BoxPolicy::answer:
            return MessageBoxDesk::Policy::answer;
        case qorcontrol::BoxPolicy::ask:
            return MessageBoxDesk::Policy::ask;
        default:
            return MessageBoxDesk::Policy::show;
    }
}

}  // namespace

bool qorcontrol::setBoxPolicy(const QorControlFacade& facade, BoxPolicy policy, unsigned int choice,
                              unsigned int askMs) {
    if (policy != BoxPolicy::show && !isChoice(choice)) return false;
    deskOf(facade).setPolicy(policyOf(policy), choice, askMs);
    return true;
}

bool qorcontrol::nextBox(const QorControlFacade& facade, unsigned int after, QorBox& box) {
    auto found = deskOf(facade).nextAfter(after);
    if (!found) return false;
    const common::Moment end = found->isWaiting ? common::now() : found->end;
    box.number = found->id;
    box.type = found->type;
    box.choice = found->choice;
    box.openMs = static_cast<unsigned int>(end - found->arrival);
    box.isOpen = found->isWaiting;
    box.caption = std::move(found->caption);
    box.text = std::move(found->text);
    return true;
}

bool qorcontrol::answerBox(const QorControlFacade& facade, unsigned int number,
                           unsigned int choice) {
    return isChoice(choice) && deskOf(facade).answer(number, choice);
}

// QOR's message boxes.

#include "cinterface/Arguments.h"
#include "cinterface/OutBuffer.h"
#include "cinterface/Shell.h"
#include "cinterface/Text.h"

using channel::MessageBoxDesk;
using cinterface::call;
using cinterface::callOn;
using cinterface::Cause;
using cinterface::Outcome;
using cinterface::OutText;
using cinterface::refuse;
using cinterface::refuseArgument;
using cinterface::Session;

namespace {

/// The system's numbers of buttons go from 1 to that of "Continue".
constexpr unsigned int lastChoice = 11;

void checkChoice(unsigned int choice) {
    if (choice == 0 || choice > lastChoice) refuseArgument("choice is the number of no button");
}

cinterface::BoxPolicy policyOf(int policy, unsigned int choice, unsigned int askMs) {
    switch (policy) {
        case QOR_BOX_SHOW:
            return {MessageBoxDesk::Policy::show, choice, askMs};
        case QOR_BOX_ANSWER:
            checkChoice(choice);
            return {MessageBoxDesk::Policy::answer, choice, askMs};
        case QOR_BOX_ASK:
            checkChoice(choice);
            return {MessageBoxDesk::Policy::ask, choice, askMs};
        default:
            refuseArgument("policy is none of QOR_BOX_...");
    }
}

void hand(const MessageBoxDesk::Box& box, QorMessageBox& to) {
    to.id = box.id;
    to.type = box.type;
    to.waiting = box.isWaiting ? 1 : 0;
    to.choice = box.choice;
    to.timeMs = static_cast<double>(box.arrival.ms());
}

}  // namespace

int QOR_CALL QorSetMessageBoxPolicy(QorHandle handle, int policy, unsigned int choice,
                                    unsigned int askMs) {
    return call([&]() -> Outcome {
        const auto session = handle == nullptr ? nullptr : cinterface::sessionOf(handle);
        const cinterface::BoxPolicy wanted = policyOf(policy, choice, askMs);
        if (session == nullptr)
            *cinterface::process().boxPolicy.lock() = wanted;
        else
            session->setBoxPolicy(wanted);
        return {};
    });
}

int QOR_CALL QorNextMessageBox(QorHandle handle, QorMessageBox* box, char* text,
                               unsigned int textCapacity, unsigned int* textNeeded, char* caption,
                               unsigned int captionCapacity, unsigned int* captionNeeded) {
    return callOn(handle, [&](Session& session) -> Outcome {
        QorMessageBox& to = cinterface::checked(box, "box");
        const OutText outText(text, textCapacity, textNeeded, "text");
        const OutText outCaption(caption, captionCapacity, captionNeeded, "caption");
        MessageBoxDesk& desk = session.channel().messageBoxes;
        while (const auto next = desk.next()) {
            const std::string words = cinterface::text::shownUtf8Of(next->text);
            const std::string title = cinterface::text::shownUtf8Of(next->caption);
            // Neither is copied before both fit.
            const bool textFits = outText.announce(words.size() + 1);
            const bool captionFits = outCaption.announce(title.size() + 1);
            if (!textFits) return outText.tooLarge(words.size() + 1);
            if (!captionFits) return outCaption.tooLarge(title.size() + 1);
            const bool isQuestion = outText.isForSizeAlone() || outCaption.isForSizeAlone();
            if (!isQuestion && !desk.markTold(next->id)) continue;  // another thread has got it
            outText.put(words);
            outCaption.put(title);
            hand(*next, to);
            return {};
        }
        return cinterface::failure(Cause::notReady, "QOR has wanted no other message box");
    });
}

int QOR_CALL QorAnswerMessageBox(QorHandle handle, unsigned int id, unsigned int choice) {
    return callOn(handle, [&](Session& session) -> Outcome {
        checkChoice(choice);
        if (!session.channel().messageBoxes.answer(id, choice))
            refuse(Cause::wrongOrder, "no box of that number waits for the host");
        return {};
    });
}

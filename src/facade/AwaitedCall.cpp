#include "facade/AwaitedCall.h"

namespace {

/// So often it is seen whether there still is an agent.
constexpr unsigned int pollMs = 50;

}  // namespace

bool AwaitedCall::await(channel::AnswerQueue& answers, const std::function<bool()>& isWanted) {
    channel::CmdResponse response;
    while (!answers.pop(response, pollMs)) {
        if (isWanted && !isWanted() && giveUpUnlessBegun(answers)) return false;
        if (!wasPushedOut(answers) && isOperating()) continue;
        if (answers.pop(response, 0)) break;  // it came at the last moment
        return failWithoutAnswer(answers);
    }
    return noteAnswer(response);
}

bool AwaitedCall::giveUpUnlessBegun(channel::AnswerQueue& answers) {
    if (answers.present() != qorcontrol::Cause::none) return false;
    answers.giveUp();
    note({qorcontrol::Cause::cancelled, "", false});
    return true;
}

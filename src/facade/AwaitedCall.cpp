#include "facade/AwaitedCall.h"

namespace {

/// So often it is seen whether there still is an agent.
constexpr unsigned int pollMs = 50;

}  // namespace

bool AwaitedCall::await(channel::AnswerQueue& answers) {
    channel::CmdResponse response;
    while (!answers.pop(response, pollMs))
        if (wasPushedOut(answers) || !isOperating()) return failWithoutAnswer(answers);
    return noteAnswer(response);
}

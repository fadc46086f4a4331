#include "facade/AwaitedCall.h"

namespace {

/// So often it is seen whether there still is an agent.
constexpr unsigned int pollMs = 50;

}  // namespace

bool AwaitedCall::await(channel::AnswerQueue& answers) {
    channel::CmdResponse response;
    while (!answers.pop(response, pollMs))
        if (!isOperating()) return false;
    return noteAnswer(response);
}

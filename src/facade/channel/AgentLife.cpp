#include "facade/channel/AgentLife.h"

#include "qorcontrol/Sleep.h"

namespace channel {

bool AgentLife::isOperating() const {
    return mayBeOperating() && thread_.state() == common::ThreadState::running;
}

AgentLife::Turn::Turn(AgentLife& agent) : agent_(agent) {
    while (agent_.isBeingEnded_.exchange(true)) common::sleepMs(1);
}

}  // namespace channel

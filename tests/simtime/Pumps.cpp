// No window messages come to the threads of the simulated machine. Who looks for them without end
// waits for something else, so time must go on meanwhile.
#include "common/Pump.h"

#include "Machine.h"

namespace common {

void pumpCopyData() {
    auto& machine = simtime::Machine::present();
    machine.spin(machine.current().pumps, 1);
}

void awaitSentMessage(unsigned int) {
    pumpCopyData();
}

void pumpOneMessage() {
    simtime::Machine::present().mayPreempt();
}

}  // namespace common

#include "common/Pump.h"

// There are no window messages.
void common::pumpCopyData() {}

void common::pumpOneMessage() {}

void common::awaitSentMessage(unsigned int) {}

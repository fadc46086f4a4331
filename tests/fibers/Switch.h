#pragma once

/// Keeps the stack pointer and all registers that a callee must keep, and goes on where the other
/// stack was left.
extern "C" void fibersSwitchStacks(void** saved, void* other);

namespace fibers {

/// The registers that the switch takes from the stack it goes to, below the return address.
#if defined(__x86_64__)
constexpr int keptRegisters = 6;
#else
constexpr int keptRegisters = 4;
#endif

}  // namespace fibers

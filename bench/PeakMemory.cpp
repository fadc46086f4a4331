#include "PeakMemory.h"

#include <windows.h>

#include <psapi.h>  // behind what it needs

std::size_t privateBytes() {
    PROCESS_MEMORY_COUNTERS_EX counters = {};
    K32GetProcessMemoryInfo(GetCurrentProcess(),
                            reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters);
    return counters.PagefileUsage;
}

PeakMemory::PeakMemory()
    : before_(privateBytes()), most_(before_), thread_([this] {
          while (!stop_) {
              const std::size_t now = privateBytes();
              if (now > most_) most_ = now;
              Sleep(0);
          }
      }) {}

PeakMemory::~PeakMemory() {
    stop_ = true;
    thread_.join();
}

std::size_t PeakMemory::growth() const {
    return most_ - before_;
}

#include "PeakMemory.h"

#include "support/TcpProcessFigures.h"

PeakMemory::PeakMemory()
    : before_(tcp::memoryBytes()), most_(before_), thread_([this] {
          while (!stop_) {
              const std::size_t now = tcp::memoryBytes();
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

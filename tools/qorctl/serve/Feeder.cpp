#include "serve/Feeder.h"

#include <windows.h>

#include <exception>
#include <utility>

namespace qorctl::serve {

Feeder::Feeder(unsigned int periodMs, std::function<void(unsigned int)> look)
    : thread_([this, periodMs, look = std::move(look)] {
          for (unsigned int count = 0; !isOver_; ++count) {
              try {
                  look(count);
              } catch (const std::exception&) {
                  // The next time there is more memory, or none of us has any.
              }
              Sleep(periodMs);
          }
      }) {}

Feeder::~Feeder() {
    isOver_ = true;
    thread_.join();
}

}  // namespace qorctl::serve

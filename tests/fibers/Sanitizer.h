#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define FIBERS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FIBERS_SANITIZED
#endif
#endif

#ifdef FIBERS_SANITIZED
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#endif

/// What the address sanitizer has to be told of stacks that are none of the system's; in builds
/// without it nothing.
namespace fibers::sanitizer {

#ifdef FIBERS_SANITIZED
/// Before a switch to the stack with these bounds. Null in place of `kept`: nobody comes back.
inline void beginSwitch(void** kept, const void* bottom, std::size_t bytes) {
    __sanitizer_start_switch_fiber(kept, bottom, bytes);
}
/// Behind it, with what was kept when this stack was left, null for a new one. Tells the bounds of
/// the stack that was left.
inline void endSwitch(void* kept, const void** bottom, std::size_t* bytes) {
    __sanitizer_finish_switch_fiber(kept, bottom, bytes);
}
/// What has run on it has left its marks.
inline void forgetStack(const void* bottom, std::size_t bytes) {
    __asan_unpoison_memory_region(bottom, bytes);
}
#else
inline void beginSwitch(void**, const void*, std::size_t) {}
inline void endSwitch(void*, const void**, std::size_t*) {}
inline void forgetStack(const void*, std::size_t) {}
#endif

}  // namespace fibers::sanitizer

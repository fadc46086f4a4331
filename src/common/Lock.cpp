#include "qorcontrol/Lock.h"

#include <windows.h>

namespace common {
namespace {

CRITICAL_SECTION* sectionOf(unsigned char* bytes) {
    return reinterpret_cast<CRITICAL_SECTION*>(bytes);
}

}  // namespace

Lock::Lock() noexcept {
    static_assert(sizeof(section_) >= sizeof(CRITICAL_SECTION), "the section does not fit");
    static_assert(alignof(Lock) >= alignof(CRITICAL_SECTION), "the section is misaligned");
    initialise();
}

Lock::~Lock() {
    release();
}

void Lock::initialise() noexcept {
    InitializeCriticalSection(sectionOf(section_));
    initialised_ = true;
}

void Lock::enter() noexcept {
    if (!initialised_) initialise();
    EnterCriticalSection(sectionOf(section_));
}

void Lock::leave() noexcept {
    LeaveCriticalSection(sectionOf(section_));
}

void Lock::release() noexcept {
    if (!initialised_) return;
    initialised_ = false;
    DeleteCriticalSection(sectionOf(section_));
}

}  // namespace common

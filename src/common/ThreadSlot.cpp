#include "common/ThreadSlot.h"

#include <windows.h>

namespace common {

ThreadSlot::ThreadSlot(Release release) noexcept : index_(FlsAlloc(release)) {}

ThreadSlot::~ThreadSlot() {
    if (index_ != FLS_OUT_OF_INDEXES) FlsFree(index_);
}

void* ThreadSlot::get() const noexcept {
    return index_ != FLS_OUT_OF_INDEXES ? FlsGetValue(index_) : nullptr;
}

bool ThreadSlot::set(void* content) noexcept {
    return index_ != FLS_OUT_OF_INDEXES && FlsSetValue(index_, content) != FALSE;
}

}  // namespace common

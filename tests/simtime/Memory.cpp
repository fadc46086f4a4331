#include "Memory.h"

#if defined(__SANITIZE_ADDRESS__)
/// Of the sanitizer's run-time library; its header comes with another compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

std::size_t simtime::allocatedBytes() {
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

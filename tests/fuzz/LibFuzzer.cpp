// The coverage-guided fuzzer's entry to the one target of its program.
#include "Target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::targets().front().tryOne({reinterpret_cast<const char*>(data), size});
    return 0;
}

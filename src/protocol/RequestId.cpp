#include "protocol/RequestId.h"

#include <mbedtls/havege.h>

namespace protocol {
namespace {

/// The generator and its 36 kB of state, for one number.
class Generator {
public:
    Generator() { mbedtls_havege_init(&state_); }
    ~Generator() { mbedtls_havege_free(&state_); }
    Generator(const Generator&) = delete;
    Generator& operator=(const Generator&) = delete;

    std::uint32_t number() {
        std::uint32_t word = 0;
        // Always succeeds: the generator has no error to report.
        mbedtls_havege_random(&state_, reinterpret_cast<unsigned char*>(&word), sizeof word);
        return word;
    }

private:
    mbedtls_havege_state state_;
};

}  // namespace

std::uint32_t drawRequestId() {
    return Generator().number();
}

}  // namespace protocol

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A mouth of the system, through which bytes of others come in. The same targets are driven by the
/// coverage-guided fuzzer, one in each program, and by the replay of what it has found, all in one.
namespace fuzz {

struct Target {
    const char* name;
    /// Aborts the process if a promise is broken; leaves nothing behind for the next input.
    void (*tryOne)(std::string_view input);
};

/// All that are linked into this program.
const std::vector<Target>& targets();

/// Each target has one, in its own file.
struct Registered {
    explicit Registered(Target target);
};

/// What is being tried, where somebody says so: told with what it has broken.
extern std::string_view present;

/// Ends the process with the condition's words and place.
[[noreturn]] void breakOff(const char* condition, const char* file, int line);

/// Takes an input apart; behind its end there are zeros.
class Input {
public:
    explicit Input(std::string_view bytes) : bytes_(bytes) {}

    bool isEmpty() const { return bytes_.empty(); }
    std::uint8_t byte() {
        if (bytes_.empty()) return 0;
        const auto first = static_cast<std::uint8_t>(bytes_.front());
        bytes_.remove_prefix(1);
        return first;
    }
    std::uint32_t below(std::uint32_t bound) { return byte() % bound; }
    std::uint32_t word() {
        std::uint32_t value = 0;
        for (unsigned int shift = 0; shift < 32; shift += 8)
            value |= static_cast<std::uint32_t>(byte()) << shift;
        return value;
    }
    std::string_view take(std::size_t count) {
        const std::string_view first = bytes_.substr(0, count);
        bytes_.remove_prefix(first.size());
        return first;
    }
    std::string_view rest() { return take(bytes_.size()); }
    /// Up to the next zero.
    std::string text() {
        const std::string_view first = take(std::min(bytes_.find('\0'), bytes_.size()));
        byte();
        return std::string(first);
    }

private:
    std::string_view bytes_;
};

}  // namespace fuzz

#define FUZZ_REQUIRE(condition) \
    ((condition) ? static_cast<void>(0) : fuzz::breakOff(#condition, __FILE__, __LINE__))

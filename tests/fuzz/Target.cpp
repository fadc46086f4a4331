#include "Target.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz {
namespace {

std::vector<Target>& all() {
    static std::vector<Target> known;
    return known;
}

}  // namespace

std::string_view present;

const std::vector<Target>& targets() {
    return all();
}

Registered::Registered(Target target) {
    all().push_back(target);
}

void breakOff(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: broken: %s\n", file, line, condition);
    if (!present.empty()) std::fprintf(stderr, "by the input");
    for (const char byte : present)
        std::fprintf(stderr, " %02X", static_cast<unsigned int>(static_cast<unsigned char>(byte)));
    std::fprintf(stderr, "\n");
    std::abort();
}

}  // namespace fuzz

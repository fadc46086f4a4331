#include "cinterface/Arguments.h"

#include <cstring>

#include "cinterface/QorControl.h"
#include "cinterface/Refusal.h"
#include "cinterface/Text.h"

namespace cinterface {
namespace {

std::string ansiOf(const std::string& utf8, const char* what) {
    auto ansi = text::ansiOf(utf8);
    if (!ansi)
        refuseArgument(std::string(what) +
                       " is no UTF-8, or the ANSI code page lacks one of its characters");
    return std::move(*ansi);
}

}  // namespace

std::string textOf(const char* utf8, const char* what, std::size_t maxBytes) {
    mustNotBeNull(utf8, what);
    const std::size_t length = ::strnlen(utf8, maxBytes + 1);
    if (length > maxBytes) refuseLength(what);
    return ansiOf(std::string(utf8, length), what);
}

std::string optionalTextOf(const char* utf8, const char* what) {
    return utf8 == nullptr ? std::string() : textOf(utf8, what);
}

std::vector<std::string> namesOf(const char* const* names, unsigned int count) {
    if (count > maxNames) refuseCount("names");
    if (count != 0) mustNotBeNull(names, "names");
    std::vector<std::string> all;
    all.reserve(count);
    for (unsigned int i = 0; i < count; ++i) all.push_back(textOf(names[i], "one of names"));
    return all;
}

unsigned int timeOutOf(unsigned int timeoutMs) {
    const bool wraps = timeoutMs >= 0x80000000u && timeoutMs < QOR_TRANSPORT_DEFAULT;
    if (wraps) refuseArgument("timeoutMs is above 0x7FFFFFFF and none of the special ones");
    return timeoutMs;
}

std::string bytesOf(const unsigned char* bytes, unsigned int count, const char* what) {
    if (count == 0) return {};
    mustNotBeNull(bytes, what);
    if (count > maxRecordBytes) refuseLength(what);
    return std::string(reinterpret_cast<const char*>(bytes), count);
}

void refuseNull(const char* what) {
    refuseArgument(std::string(what) + " is null");
}

void refuseLength(const char* what) {
    refuse(Cause::requestTooLarge, std::string(what) + " is too long");
}

void refuseCount(const char* what) {
    Outcome outcome = failure(Cause::requestTooLarge, "");
    outcome.sentence = std::string(what) + " has more than 65,535 elements.";
    outcome.check = "Pass fewer at once.";
    throw Refusal{std::move(outcome)};
}

void refuseStructure(const char* what, unsigned int size) {
    refuseArgument(std::string(what) + ".size is not " + std::to_string(size));
}

}  // namespace cinterface

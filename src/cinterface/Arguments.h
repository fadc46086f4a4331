#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What a host passes, checked before anything is made of it: each of these throws a Refusal. The
/// words name the argument as the header does.
namespace cinterface {

/// Longer names and paths are no names and paths.
constexpr std::size_t maxNameBytes = 65535;
/// No record holds more, nor any of what it is made of.
constexpr std::size_t maxRecordBytes = 128u * 1024 * 1024;
/// So many names at most in one request or stream.
constexpr std::size_t maxNames = 65535;

/// Text in the code page, of a UTF-8 text of at most `maxBytes`.
std::string textOf(const char* utf8, const char* what, std::size_t maxBytes = maxNameBytes);
/// The same; a null pointer is the empty text.
std::string optionalTextOf(const char* utf8, const char* what);
std::vector<std::string> namesOf(const char* const* names, unsigned int count);

[[noreturn]] void refuseNull(const char* what);
[[noreturn]] void refuseLength(const char* what);
/// For more than `maxNames`.
[[noreturn]] void refuseCount(const char* what);
[[noreturn]] void refuseStructure(const char* what, unsigned int size);

template <class T>
void mustNotBeNull(const T* pointer, const char* what) {
    if (pointer == nullptr) refuseNull(what);
}

/// The elements of an array; may be null if there are none.
template <class T>
std::vector<T> arrayOf(const T* elements, unsigned int count, const char* what) {
    if (count == 0) return {};
    mustNotBeNull(elements, what);
    if (count > maxRecordBytes / sizeof(T)) refuseLength(what);
    return std::vector<T>(elements, elements + count);
}

/// The time-out of a function that asks QOR. Those that double to more than 32 bits hold would end
/// the call long before QOR's time.
unsigned int timeOutOf(unsigned int timeoutMs);

std::string bytesOf(const unsigned char* bytes, unsigned int count, const char* what);

/// A structure of the host's that begins with its size.
template <class Structure>
Structure& checked(Structure* structure, const char* what) {
    mustNotBeNull(structure, what);
    if (structure->size != sizeof(Structure)) refuseStructure(what, sizeof(Structure));
    return *structure;
}

}  // namespace cinterface

#pragma once

#include <cstdint>

/// The system's count of milliseconds as the library reads it, moved to where the test wants it
/// from the construction on; it runs from there at its usual pace. Put into the import table of
/// the library's DLL: this program's own clock stays as it is.
class LibraryTicks {
public:
    /// `msBeforeWrap` before the count begins again at 0.
    explicit LibraryTicks(std::uint32_t msBeforeWrap);
    ~LibraryTicks();
    LibraryTicks(const LibraryTicks&) = delete;
    LibraryTicks& operator=(const LibraryTicks&) = delete;

    static std::uint32_t now();
    /// Lets time pass that nobody has to wait for.
    static void advance(std::uint32_t ms);
    /// The same, up to so many milliseconds before the wrap.
    static void advanceToBeforeWrap(std::uint32_t ms);
};

#include "watch/plot/BuiltIn.h"

#include <windows.h>

#include <stdexcept>

namespace qorctl {

std::string builtInFile(const char* name) {
    // The numbers of MAKEINTRESOURCE are no pointers; this one is RT_RCDATA.
    HRSRC const found = FindResourceA(nullptr, name, reinterpret_cast<const char*>(RT_RCDATA));
    HGLOBAL const loaded = found != nullptr ? LoadResource(nullptr, found) : nullptr;
    const void* const bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    if (bytes == nullptr)
        throw std::runtime_error(std::string("this program has no built-in ") + name);
    return {static_cast<const char*>(bytes), SizeofResource(nullptr, found)};
}

}  // namespace qorctl

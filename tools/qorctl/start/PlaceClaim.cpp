#include "start/PlaceClaim.h"

#include <windows.h>

#include <fmt/format.h>

#include <cctype>
#include <cstdint>

namespace qorctl::start {
namespace {

/// A name for the system's objects must have no backslash and be short.
std::string nameFor(const std::string& place) {
    std::uint64_t hash = 14695981039346656037u;
    for (const char letter : place) {
        hash ^= static_cast<std::uint64_t>(std::tolower(static_cast<unsigned char>(letter)));
        hash *= 1099511628211u;
    }
    return fmt::format("qorctl-talks-{:016x}", hash);
}

/// The shared number.
class View {
public:
    explicit View(HANDLE mapping)
        : number_(static_cast<DWORD*>(
              MapViewOfFile(mapping, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(DWORD)))) {}
    ~View() {
        if (number_ != nullptr) UnmapViewOfFile(number_);
    }
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    void set(DWORD number) {
        if (number_ != nullptr) *number_ = number;
    }
    DWORD get() const { return number_ != nullptr ? *number_ : 0; }

private:
    DWORD* const number_;
};

}  // namespace

void PlaceClaim::CloseIt::operator()(void* handle) const {
    CloseHandle(handle);
}

PlaceClaim::PlaceClaim(const std::string& place)
    : mapping_(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(DWORD),
                                  nameFor(place).c_str())) {
    const bool isAnothers = GetLastError() == ERROR_ALREADY_EXISTS;
    // One of another account cannot be opened: it is another's all the same.
    isOurs_ = mapping_ != nullptr && !isAnothers;
    if (mapping_ == nullptr) return;
    View view(mapping_.get());
    if (isOurs_) view.set(GetCurrentProcessId());
    process_ = view.get();
    if (!isOurs_) mapping_.reset();  // or it would outlive its owner
}

}  // namespace qorctl::start

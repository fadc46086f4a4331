#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

/// Calls of the platform that can fail are made to fail here, one at a time. A call site is a kind
/// of call and the stack that leads to it: all calls of an operation are recorded first, then each
/// of them fails once, in a process of its own. Only threads of the library, and a host's inside of
/// an operation, are watched; nothing in here allocates.
namespace torture {

enum class Call {
    allocation,
    createEvent,
    setEvent,
    resetEvent,
    wait,
    beginThread,
    exitCode,
    closeHandle,
    moduleReference,
    openThread,
};

struct Site {
    static constexpr std::size_t maxFrames = 20;
    static constexpr std::ptrdiff_t innermostFrames = 3;

    Call call = Call::allocation;
    std::size_t frames = 0;
    std::array<void*, maxFrames> stack{};  ///< return addresses, the innermost first

    bool operator==(const Site& other) const {
        return call == other.call && frames == other.frames && stack == other.stack;
    }
    /// Whether the innermost functions are the same ones.
    bool resembles(const Site& other) const {
        return call == other.call &&
               std::equal(stack.begin(), stack.begin() + innermostFrames, other.stack.begin());
    }
};

const char* nameOf(Call call);
/// The kind, and the innermost functions of the library on the way to it.
std::string nameOf(const Site& site);

/// @name What the replaced calls ask
/// @{

/// Whether this call has to fail. False on threads that nobody watches.
bool mustFail(Call call) noexcept;

bool isWatched() noexcept;

/// What has called the caller does not belong to the stacks of this thread's call sites.
void beginHere() noexcept;

/// The calling thread is watched to the end of the block, or is not.
class Watched {
public:
    explicit Watched(bool isWatched = true) noexcept;
    ~Watched();
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;

private:
    const bool before_;
};
/// @}

/// @name What a test does
/// @{

/// From now on calls are recorded.
void record() noexcept;
/// From now on the first call at this site fails.
void fail(const Site& site) noexcept;
/// Nothing is recorded and nothing fails any more.
void rest() noexcept;

/// Whether the call has failed. Known to the parent of the process, too, as what was recorded is.
bool hasFailed() noexcept;
/// All sites so far, in the order in which they were met.
std::vector<Site> recorded();

/// Forgets both.
void forget() noexcept;
/// @}

/// From now on blocks of this size that are not freed are no leaks, until they are let go of.
void keepBlocksOf(std::size_t bytes) noexcept;
void letGoOfBlocks() noexcept;

}  // namespace torture

#pragma once

#include <functional>
#include <optional>
#include <thread>

#include "CallNotes.h"

namespace qorctl {

/// Calls of the library that nothing cancels, made so that Ctrl-C need not wait for them.
class Background {
public:
    Background() = default;
    /// Waits for what is left: the library must have ended by then, or it takes its time.
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    /// Lets `calls` run on a thread of its own, noting what it calls there, and waits for its end.
    /// Nothing if Ctrl-C came first: it goes on then, so it must own all that it uses, and this is
    /// the last.
    std::optional<CallNotes> run(const std::function<void(CallNotes& notes)>& calls);

private:
    std::thread thread_;
};

}  // namespace qorctl

#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>

namespace qorctl::serve {

using ClientNumber = std::uint64_t;

/// The requests of all clients on their way to the library, which carries out one at a time: a line
/// per client, and the clients take turns, so that one with many requests does not keep another
/// waiting. Its operations may be called from every thread; nothing is called while its lock is
/// held.
class WaitingLines {
public:
    using Work = std::function<void()>;

    /// @param longest  so many requests of one client may wait.
    explicit WaitingLines(std::size_t longest) : longest_(longest) {}
    WaitingLines(const WaitingLines&) = delete;
    WaitingLines& operator=(const WaitingLines&) = delete;

    /// False: the client's line is full, or nothing is taken any more.
    bool add(ClientNumber client, Work work);
    /// The same for what must be done whatever waits already.
    bool addInAnyCase(ClientNumber client, Work work);

    /// The same for what comes before everything that waits.
    bool addFirst(Work work);

    /// What the client still waits for will not be done; how many that was.
    std::size_t forget(ClientNumber client);

    void forgetAll();
    /// So many wait.
    std::size_t count() const;

    /// The next one in turn, waited for. Nothing once `end` was called and all is done.
    std::optional<Work> next();

    /// Takes nothing more.
    void end();

private:
    using Lock = std::unique_lock<std::mutex>;

    void append(ClientNumber client, Work work);

    const std::size_t longest_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    // All guarded by mutex_.
    std::map<ClientNumber, std::deque<Work>> lines_;  // none is empty
    std::deque<Work> first_;
    std::deque<ClientNumber> turns_;  // each client of lines_ once
    bool isOver_ = false;
};

}  // namespace qorctl::serve

#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>

#include "serve/Server.h"

namespace qorctl::serve {

/// The lines that go to standard output, from a thread of its own: whoever tells something never
/// waits for the reader.
class StdoutOutlet final : public Outlet {
public:
    StdoutOutlet();
    StdoutOutlet(const StdoutOutlet&) = delete;
    StdoutOutlet& operator=(const StdoutOutlet&) = delete;

    void tell(const char* event, const std::string& params) override;
    bool isBehind() override;

    /// Always taken: of answers there are no more than requests wait.
    void answer(const nlohmann::json& message);
    /// Blocks while so much waits that nothing more should be asked for.
    void awaitRoom();
    /// Nobody reads any more.
    bool isBroken();
    /// Waits until all is written, for as long as somebody reads it. Nothing wakes the thread that
    /// writes: one whose reader stands still is left to the end of the process.
    void finish();

private:
    /// What the thread shares with the rest, which it may outlive.
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        // All guarded by mutex.
        std::deque<std::string> lines;
        std::size_t waitingBytes = 0;
        bool isOver = false;
        bool isBroken = false;
    };

    bool isFull();
    void add(std::string line);
    static void run(const std::shared_ptr<State>& state);

    const std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// Lets the owner of the server use it over standard input and output, a message per line. The
/// server ends when the input does, once what was asked for is answered, and when nobody reads the
/// output any more.
class StdioLink {
public:
    explicit StdioLink(Server& server);
    /// The server has ended. Nothing wakes the thread that reads, which goes on by itself.
    ~StdioLink();
    StdioLink(const StdioLink&) = delete;
    StdioLink& operator=(const StdioLink&) = delete;

    /// Nobody reads what is said.
    bool isBroken() { return outlet_->isBroken(); }
    /// While the server ends, for what it was asked takes its time: whether anybody reads shows
    /// only when something is written.
    void tellThatItEnds() { outlet_->tell("serverEnds", "{}"); }

private:
    struct Reading;

    static void read(const std::shared_ptr<Reading>& reading);

    const std::shared_ptr<StdoutOutlet> outlet_;
    const std::shared_ptr<Reading> reading_;
};

}  // namespace qorctl::serve

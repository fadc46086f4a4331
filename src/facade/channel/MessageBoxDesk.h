#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "common/Guarded.h"
#include "common/Moment.h"
#include "qorcontrol/Event.h"

namespace channel {

/// Where QOR's message boxes are dealt with: shown, answered, or put before the host, as the host
/// wants it; and told in any case to who asks. The threads on which QOR's commands arrive present
/// boxes; any thread may ask and answer.
class MessageBoxDesk {
public:
    enum class Policy : int {
        show,    ///< on the screen, which is how it begins
        answer,  ///< with a given choice, without showing it
        ask      ///< the host; with the given choice if it does not answer in time
    };
    struct Box {
        std::uint32_t id = 0;  ///< counts up from 1
        std::string text;
        std::string caption;
        std::uint32_t type = 0;  ///< the system's style value
        common::Moment arrival;
        bool isWaiting = true;
        std::uint32_t choice = 0;  ///< once it waits no more
        common::Moment end;        ///< likewise
    };
    using Show = std::function<unsigned int()>;

    /// So many are kept for who asks, with texts of so many bytes; the oldest go.
    static constexpr std::size_t maxBoxes = 100;
    static constexpr std::size_t maxBytes = 1u << 20;

    /// For the boxes that come from now on. Until this is called nobody asks for boxes, and none
    /// is kept.
    void setPolicy(Policy policy, std::uint32_t choice, std::uint32_t askMs);

    /// Deals with one; returns the choice. `show` puts it on the screen and waits for the user.
    std::uint32_t present(const std::string& text, const std::string& caption, std::uint32_t type,
                          const Show& show);

    /// The oldest box that is kept of those with greater numbers, told or not.
    std::optional<Box> nextAfter(std::uint32_t id);

    /// The oldest box that is not marked as told.
    std::optional<Box> next();
    /// False if somebody else has done so before: one box is told once.
    bool markTold(std::uint32_t id);
    /// The host's answer; false if that box does not wait for one.
    bool answer(std::uint32_t id, std::uint32_t choice);

    /// The host goes: what waits for its answer, now or later, gets the given choice at once.
    void close();

private:
    struct Kept {
        Box box;
        bool isTold = false;
        bool isForHost = false;
    };
    struct State {
        Policy policy = Policy::show;
        std::uint32_t choice = 0;
        std::uint32_t askMs = 0;
        std::uint32_t lastId = 0;
        bool isReporting = false;
        bool isClosed = false;
        std::deque<Kept> boxes;
    };
    /// One box's way, as the policy was when it came.
    struct Way {
        std::uint32_t id = 0;
        Policy policy = Policy::show;
        std::uint32_t choice = 0;
        std::uint32_t askMs = 0;
    };

    Way enter(Box box);
    std::uint32_t awaitHost(const Way& way);
    std::optional<std::uint32_t> hostsChoice(std::uint32_t id);
    void settle(std::uint32_t id, std::uint32_t choice);
    static void close(Box& box, std::uint32_t choice);
    static void makeRoom(State& state);
    static Kept* find(State& state, std::uint32_t id);

    common::Guarded<State> state_;
    common::Event changed_;
};

}  // namespace channel

#include "profile/RequestPath.h"

#include <gmock/gmock.h>

#include <algorithm>

using profile::Call;
using profile::Hop;
using profile::pathOf;
using profile::Role;
using profile::Wake;
using testing::DoubleEq;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

namespace {

constexpr unsigned int host = 1;
constexpr unsigned int agent = 2;

/// Addresses of events.
int requests = 0;
int answers = 0;

Call call(const char* function, Role role, unsigned int thread, double startUs, double endUs,
          void* object = nullptr, Wake wake = Wake::none) {
    Call made;
    made.function = function;
    made.role = role;
    made.thread = thread;
    made.startUs = startUs;
    made.endUs = endUs;
    made.object = object;
    made.wake = wake;
    return made;
}

auto hop(const char* name, double us) {
    return testing::AllOf(Field(&Hop::name, name), Field(&Hop::us, DoubleEq(us)));
}

/// As a recorder gives them: by their end.
std::vector<Call> inOrder(std::vector<Call> calls) {
    std::sort(calls.begin(), calls.end(),
              [](const Call& one, const Call& other) { return one.endUs < other.endUs; });
    return calls;
}

/// The host asks at 10, the agent is awake at 30, sends at 50 and has its result at 80, the host
/// hears of it at 100; all else goes on beside that.
std::vector<Call> exchange() {
    return inOrder({
        call("SetEvent", Role::signal, host, 10, 20, &requests),
        call("WaitForSingleObject", Role::wait, agent, 0, 30, &requests, Wake::event),
        call("SendMessageTimeoutA", Role::exchange, agent, 50, 80),
        call("SetEvent", Role::signal, agent, 90, 120, &answers),
        call("WaitForSingleObject", Role::wait, host, 25, 100, &answers, Wake::event),
        call("WaitForSingleObject", Role::wait, 7, 60, 70, &requests, Wake::timer),
    });
}

}  // namespace

TEST(RequestPath, LeadsFromTheHostToWhoHasWokenItAndBack) {
    EXPECT_THAT(pathOf(exchange(), host, 5, 105),
                ElementsAre(hop("host", 5), hop("wake: host to agent", 20), hop("agent", 60),
                            hop("wake: agent to host", 10), hop("host", 5)));
}

TEST(RequestPath, TellsWhatIsCalledOnItsWayAndHowLongThatTakes) {
    const std::vector<Hop> hops = pathOf(exchange(), host, 5, 105);
    EXPECT_THAT(hops.at(2).calls, ElementsAre("SendMessageTimeoutA"));
    EXPECT_DOUBLE_EQ(hops.at(2).inSystemUs, 30);
    EXPECT_THAT(hops.at(0).calls, IsEmpty()) << "the signal belongs to the wake";
}

TEST(RequestPath, GoesThroughQorWhereAMessageHasEndedTheWait) {
    const std::vector<Call> calls = inOrder({
        call("send", Role::sendOut, host, 10, 20),
        call("MsgWaitForMultipleObjectsEx", Role::wait, host, 22, 70, nullptr, Wake::message),
        call("recv", Role::plain, host, 72, 75),
    });
    EXPECT_THAT(pathOf(calls, host, 0, 80),
                ElementsAre(hop("host", 20), hop("QOR and the system", 50), hop("host", 10)));
}

TEST(RequestPath, LeavesOutWaitsThatEndedByTheTimeAndCallsInsideOfOthers) {
    std::vector<Call> calls = {
        call("WaitForSingleObject", Role::wait, host, 10, 20, &answers, Wake::timer),
        call("ReplyMessage", Role::plain, host, 30, 40),
    };
    calls.back().isInside = true;
    const std::vector<Hop> hops = pathOf(calls, host, 0, 50);
    ASSERT_THAT(hops, ElementsAre(hop("host", 50)));
    EXPECT_THAT(hops[0].calls, ElementsAre("WaitForSingleObject"));
}

TEST(RequestPath, EndsWhereNobodyIsKnownToHaveSetTheEvent) {
    const std::vector<Call> calls = {
        call("WaitForSingleObject", Role::wait, host, 10, 20, &answers, Wake::event)};
    EXPECT_THAT(pathOf(calls, host, 0, 50), ElementsAre(hop("host", 30)));
}

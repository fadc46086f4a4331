#include "cinterface/Shell.h"

// The sockets' header, which this has, comes before the system's.
#include "support/HandleCensus.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>

#include "support/TcpProcessFigures.h"

using cinterface::call;
using cinterface::Cause;
using cinterface::Outcome;

namespace {

TEST(Shell, KeepsHowACallEndedForItsThread) {
    EXPECT_EQ(QOR_NOT_READY, call([] { return cinterface::failure(Cause::notReady, "wait"); }));
    EXPECT_EQ(QOR_NOT_READY, QorLastCause());
    std::thread([] { EXPECT_EQ(QOR_OK, QorLastCause()); }).join();
    char sentence[128] = "";
    EXPECT_EQ(QOR_OK, QorLastSentence(sentence, sizeof sentence, nullptr));
    EXPECT_THAT(sentence, testing::HasSubstr("wait"));
    EXPECT_EQ(QOR_OK, call([] { return Outcome(); }));
    EXPECT_EQ(QOR_OK, QorLastSentence(sentence, sizeof sentence, nullptr));
    EXPECT_STREQ("", sentence);
}

TEST(Shell, NothingThatIsThrownLeavesIt) {
    EXPECT_EQ(QOR_OUT_OF_MEMORY, call([]() -> Outcome { throw std::bad_alloc(); }));
    EXPECT_EQ(QOR_SYSTEM_FAILURE, call([]() -> Outcome { throw std::runtime_error("odd"); }));
    EXPECT_EQ(QOR_SYSTEM_FAILURE, call([]() -> Outcome { throw 7; }));
    EXPECT_EQ(QOR_BAD_ARGUMENT, call([]() -> Outcome { cinterface::refuseArgument("x"); }));
}

TEST(Shell, AFailureWhoseCauseNobodyHasToldIsOneAllTheSame) {
    std::thread([] {
        EXPECT_EQ(Cause::systemFailure, cinterface::outcomeOf(false).cause);
        EXPECT_EQ(Cause::none, cinterface::outcomeOf(true).cause);
    }).join();
}

TEST(Shell, AskingForTheLastCallIsNone) {
    call([] { return cinterface::failure(Cause::refused, ""); });
    unsigned needed = 0;
    EXPECT_EQ(QOR_OK, QorLastSentence(nullptr, 0, &needed));
    char little[1] = "";
    EXPECT_EQ(QOR_RESULT_TOO_LARGE, QorLastSentence(little, 1, &needed));
    EXPECT_EQ(QOR_BAD_ARGUMENT, QorLastCheck(nullptr, 5, &needed));
    EXPECT_EQ(QOR_REFUSED, QorLastCause());
}

TEST(Shell, ThreadsThatEndLeaveNothingBehind) {
    const auto once = [] {
        std::thread([] { call([]() -> Outcome { cinterface::refuseArgument("y"); }); }).join();
    };
    for (int i = 0; i < 50; ++i) once();
    const HandleCensus handles = countHandles();
    const std::size_t bytes = tcp::heapBytes();
    for (int i = 0; i < 200; ++i) once();
    EXPECT_LE(tcp::heapBytes(), bytes + 4096);  // 200 threads
    // The run-time makes an event for as many threads as were ever there at once, and one that ends
    // may still be there when the next begins.
    HandleCensus more = difference(countHandles(), handles);
    EXPECT_LE(more["Event"], 4);
    more.erase("Event");
    EXPECT_THAT(more, testing::IsEmpty());
}

}  // namespace

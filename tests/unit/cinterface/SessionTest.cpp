// Sessions whose agent has ended for want of settings: what is the interface's own works all the
// same.

#include "cinterface/Session.h"

#include <gmock/gmock.h>

#include <numeric>
#include <thread>
#include <vector>

#include "cinterface/Process.h"
#include "cinterface/Shell.h"

using cinterface::Result;
using cinterface::Session;
using ::testing::ElementsAreArray;
using ::testing::SizeIs;

namespace {

std::shared_ptr<Session> session() {
    auto made = std::make_shared<Session>("c:\\no such settings.ini", 0u, "");
    while (made->isOperating()) std::this_thread::yield();
    return made;
}

TEST(Session, GivesAThreadTheResultThatItHasGot) {
    const auto one = session();
    const auto other = session();
    Result result;
    result.bytes = "abc";
    const auto kept = one->keep(result);
    EXPECT_EQ(one->lastResult(), kept);
    EXPECT_EQ(*kept->bytes, "abc");
    EXPECT_EQ(other->lastResult(), nullptr);
    std::thread([&] { EXPECT_EQ(one->lastResult(), nullptr); }).join();
    one->close();
    other->close();
}

TEST(Session, AResultOfAClosedHandleGoesWithTheThreadsNextOne) {
    for (int i = 0; i < 5; ++i) {
        const auto closed = session();
        closed->keep(Result());
        closed->close();
    }
    const auto open = session();
    open->keep(Result());
    EXPECT_THAT(cinterface::process().threads.get().results, SizeIs(1));
    open->close();
}

void QOR_CALL noteFigure(void* figures, int figure) {
    static_cast<std::vector<int>*>(figures)->push_back(figure);
}

TEST(Session, OfFiguresThatComeTooFastForTheHostsFunctionTheLatestAreToldInOrder) {
    const auto busy = session();
    std::vector<int> told;
    const auto progress = std::make_shared<cinterface::ProgressFunction>();
    progress->replace(noteFigure, &told);
    const auto run = std::make_shared<cinterface::ConnectRun>(QorControlFacade::EcuConnect(),
                                                              QorControlFacade::EcuConnect::Default,
                                                              busy->channel(), progress);
    for (int figure = 1; figure <= 100; ++figure) {
        busy->channel().progress.note(figure, static_cast<std::uint32_t>(figure));
        run->isCancelled();  // as the agent asks
    }
    run->start(busy);
    EXPECT_TRUE(run->awaitEnd(10000));
    std::vector<int> latest(64);
    std::iota(latest.begin(), latest.end(), 37);
    EXPECT_THAT(told, ElementsAreArray(latest));
    EXPECT_EQ(run->seen().figure, 100);
    busy->close();
}

}  // namespace

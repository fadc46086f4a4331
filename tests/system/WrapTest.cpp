// A host that runs where the system's tick count begins again at 0, 49.7 days after the machine's
// start.

#include <gmock/gmock.h>

#include "LibraryTicks.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

namespace {

constexpr unsigned amply = 5000;
constexpr std::uint32_t dayMs = 24 * 60 * 60 * 1000;

class Wrap : public testing::TestWithParam<Transport> {
protected:
    // Far enough before it that nothing of the start is about it.
    LibraryTicks ticks{10 * 60 * 1000};
    Station station{GetParam()};
    std::vector<double> values;

    bool read() { return station->getParamData("MaxEngineSpeed", values, amply); }
    /// How many reads of a value QOR has seen.
    std::size_t readsSeen() {
        std::size_t count = 0;
        for (const std::string& request : station.requests())
            if (request.find(" op=1 ") != std::string::npos) ++count;
        return count;
    }
    static bool isBehindIt() { return LibraryTicks::now() < dayMs; }
};

INSTANTIATE_TEST_SUITE_P(Over, Wrap, everyTransport(), transportName);

TEST_P(Wrap, EveryRequestBeforeAndBehindItIsCarriedOut) {
    ASSERT_TRUE(station.start());
    LibraryTicks::advanceToBeforeWrap(1000);
    std::size_t calls = 0;
    for (; !isBehindIt() || LibraryTicks::now() < 500; Sleep(20)) {
        ASSERT_TRUE(read()) << LibraryTicks::now();
        ASSERT_TRUE(station->pingQor(amply)) << LibraryTicks::now();
        ++calls;
    }
    EXPECT_EQ(readsSeen(), calls);
}

TEST_P(Wrap, AValueFromBeforeItIsAskedForAgainADayLater) {
    station.readPeriodMs = 200;
    ASSERT_TRUE(station.start());
    LibraryTicks::advanceToBeforeWrap(60 * 1000);
    ASSERT_TRUE(read());
    LibraryTicks::advance(dayMs);
    ASSERT_TRUE(isBehindIt());
    ASSERT_TRUE(read());
    EXPECT_EQ(readsSeen(), 2u);
}

TEST_P(Wrap, AYoungValueFromBeforeItIsNotAskedForAgain) {
    station.readPeriodMs = 120 * 1000;
    ASSERT_TRUE(station.start());
    LibraryTicks::advanceToBeforeWrap(10 * 1000);
    ASSERT_TRUE(read());
    ASSERT_TRUE(read());
    LibraryTicks::advance(20 * 1000);
    ASSERT_TRUE(read());
    EXPECT_EQ(readsSeen(), 1u);
}

TEST_P(Wrap, AQorThatDiedBeforeItIsOfflineBehindIt) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    LibraryTicks::advanceToBeforeWrap(30 * 1000);
    ASSERT_TRUE(eventually(amply, [&] { return station->isEcuOnline(); }));
    qor::killAll();
    LibraryTicks::advance(dayMs);
    ASSERT_TRUE(isBehindIt());
    EXPECT_TRUE(eventually(amply, [&] { return !station->isEcuOnline(); }));
}

TEST_P(Wrap, AnEcuIsOnlineInTheLastTwoSecondsBeforeIt) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    bool wasOnline = false;
    // On a busy machine the first report behind the jump may be late.
    for (int attempt = 0; attempt < 5 && !wasOnline; ++attempt) {
        LibraryTicks::advanceToBeforeWrap(1900);
        for (; !wasOnline && !isBehindIt(); Sleep(5)) {
            const bool isOnline = station->isEcuOnline();
            wasOnline = isOnline && !isBehindIt();
        }
    }
    EXPECT_TRUE(wasOnline);
}

TEST_P(Wrap, TroubleCodesKeepTheirPaceAcrossIt) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    ThreadSafeQueue<std::vector<QorControlFacade::DtcDescription>> queue(100);
    LibraryTicks::advanceToBeforeWrap(4000);
    ASSERT_TRUE(eventually(amply, [&] { return station->isEcuOnline(); }));
    ASSERT_TRUE(station->startDtcRead(&queue, amply, 2000));
    const unsigned long long start = GetTickCount64();
    std::vector<QorControlFacade::DtcDescription> codes;
    unsigned lists = 0;
    while (GetTickCount64() - start < 6500)
        if (queue.pop(codes, 10)) ++lists;
    EXPECT_GE(lists, 1u);
    EXPECT_LE(lists, 5u);
    station->stopDtcRead();
    ASSERT_TRUE(station->pingQor(amply));
}

}  // namespace

// That these tests see what they are for: each fault is made in a process of its own, which the
// sanitizer ends with its own exit code.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>

#include "common/Guarded.h"
#include "Crowd.h"
#include "Desktop.h"
#include "framework/AsyncSocket.h"
#include "QorPeer.h"
#include "QuietAccepter.h"
#include "QuietReceiver.h"
#include "transport/ClientConnInstance.h"
#include "transport/ExternalCommandFactory.h"
#include "Way.h"

namespace {

const char* const qorName = "qor of the detector";

class Detector : public ::testing::Test {
protected:
    Detector() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};
using DetectorDeathTest = Detector;

::testing::ExitedWithCode foundSomething() {
    return ::testing::ExitedWithCode(66);
}

[[noreturn]] void takeTwoLocksInBothOrders() {
    common::Guarded<int> first, second;
    for (const bool inOrder : {true, false}) {
        const auto outer = (inOrder ? first : second).lock();
        const auto inner = (inOrder ? second : first).lock();
        ++*inner;
    }
    std::exit(0);
}

TEST_F(DetectorDeathTest, TwoLocksOfTheLibraryThatAreTakenInBothOrdersAreReported) {
    EXPECT_EXIT(takeTwoLocksInBothOrders(), foundSomething(), "lock-order-inversion");
}

/// The transport belongs to the thread that made it, which alone may ask it for its peer.
[[noreturn]] void askAWindowTransportOnAForeignThread() {
    {
        const QorPeer qor(makeEnd(Way::windows, qorName));
        QuietReceiver receiver;
        ExternalCommandFactory transport(desktop::clientTitleOf(qorName),
                                         settingsFor(Way::windows, qorName), receiver);
        Crowd foreign;
        foreign.add(1, [&](int) {
            for (int i = 0; i < 100; ++i) static_cast<void>(transport.isPeerGone());
        });
        for (int i = 0; i < 20; ++i) transport.send(std::make_unique<CommandPing>(), 100);
    }
    std::exit(0);
}

TEST_F(DetectorDeathTest, AMemberOfTheWindowTransportThatTwoThreadsUseIsReported) {
    EXPECT_EXIT(askAWindowTransportOnAForeignThread(), foundSomething(),
                "data race.*ExternalCommandFactory::(findServer|isPeerGone)");
}

/// A connection tells its last error to its own thread alone.
[[noreturn]] void askAConnectionOnAForeignThread() {
    {
        const QorPeer qor(makeEnd(Way::tcp, qorName));
        QuietAccepter accepter;
        AfxSocketInit();
        ClientConnInstance connection(qorName, qorPort, accepter);
        std::atomic<int> errors{0};
        Crowd foreign;
        foreign.add(1, [&](int) {
            for (int i = 0; i < 100; ++i) errors += connection.lastError() != 0 ? 1 : 0;
        });
        for (int i = 0; i < 5; ++i) {
            connection.ensureConnected(1000);
            connection.abandon();
        }
    }
    std::exit(0);
}

TEST_F(DetectorDeathTest, AMemberOfAConnectionThatTwoThreadsUseIsReported) {
    EXPECT_EXIT(askAConnectionOnAForeignThread(), foundSomething(),
                "data race.*ConnInstance::(startConnecting|lastError)");
}

}  // namespace

// The window transport alone, on threads of its own.
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "common/Clock.h"
#include "common/Pump.h"
#include "Crowd.h"
#include "Desktop.h"
#include "QorPeer.h"
#include "QuietReceiver.h"
#include "transport/ExternalCommandFactory.h"
#include "Way.h"

namespace {

const char* const qorName = "qor of the windows";
constexpr unsigned int timeoutMs = 2000;

TEST(WindowRace, TransportsOfManyThreadsComeAndGoBesideOneAnother) {
    const QorPeer qor(makeEnd(Way::windows, qorName));
    while (FindWindowA(nullptr, qorName) == nullptr) common::sleepMs(1);
    std::atomic<int> taken{0};
    Crowd crowd;
    crowd.add(4, [&](int thread) {
        for (int round = 0; round < 10; ++round) {
            QuietReceiver receiver;
            ExternalCommandFactory transport("client " + std::to_string(thread), qorName, receiver);
            taken += transport.send(std::make_unique<CommandPing>(), timeoutMs) ? 1 : 0;
            common::pumpCopyData();
        }
    });
    crowd.join();
    EXPECT_EQ(taken, 40);
}

TEST(WindowRace, EachSendToAWindowThatComesAndGoesEndsAndALaterOneIsTaken) {
    QorPeer qor(makeEnd(Way::windows, qorName));
    QuietReceiver receiver;
    ExternalCommandFactory transport(desktop::clientTitleOf(qorName), qorName, receiver);
    std::atomic<bool> enough{false};
    Crowd operators;
    operators.add(1, [&](int) {
        while (!enough) {
            qor.hangUp();
            common::sleepMs(3);
        }
    });
    int taken = 0;
    for (int i = 0; i < 10000 && (receiver.newQors() < 20 || taken < 20); ++i) {
        if (transport.send(std::make_unique<CommandPing>(), timeoutMs))
            ++taken;
        else
            common::sleepMs(1);
        static_cast<void>(transport.isPeerGone());
        common::pumpCopyData();
    }
    enough = true;
    EXPECT_GE(receiver.newQors(), 20);
    EXPECT_GE(taken, 20);
}

}  // namespace

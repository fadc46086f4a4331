// The connection of the TCP worker and the worker itself, with all that a QOR does to them.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "common/Clock.h"
#include "Crowd.h"
#include "Desktop.h"
#include "framework/AsyncSocket.h"
#include "Link.h"
#include "protocol/RecordStream.h"
#include "QuietAccepter.h"
#include "QuietReceiver.h"
#include "transport/ClientConnInstance.h"
#include "transport/ClientSocketCommandFactory.h"
#include "transport/SocketPump.h"
#include "Way.h"

namespace {

const char* const host = "qor of the sockets";

/// A QOR that does only what its test says.
class Listener {
public:
    Listener() { links::listen(name_); }
    ~Listener() { links::stopListening(name_); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Null if nobody calls within 10 s.
    std::shared_ptr<Link> accept() const {
        std::shared_ptr<Link> link;
        for (int i = 0; i < 10000 && link == nullptr; ++i, common::sleepMs(1))
            link = links::accept(name_);
        return link;
    }

private:
    const std::string name_ = settingsFor(Way::tcp, host);
};

class SocketRace : public ::testing::Test {
protected:
    ~SocketRace() override {
        EXPECT_EQ(desktop::openSockets(), 0);
        EXPECT_EQ(desktop::socketUsers(), 0);
    }

    /// Four threads that send until the transport ends, and count how that went.
    void addSenders(unsigned int timeoutMs) {
        senders.add(4, [this, timeoutMs](int) {
            while (!enough) {
                const Delivery end =
                    transport.sendIf(nullptr, std::make_unique<CommandPing>(), timeoutMs);
                if (end == Delivery::taken) ++taken;
                if (end == Delivery::broken) ++broken;
            }
        });
    }

    const Listener listener;
    QuietReceiver receiver;
    ClientSocketCommandFactory transport{host, qorPort, receiver};
    std::atomic<bool> enough{false};
    std::atomic<int> taken{0};
    std::atomic<int> broken{0};
    Crowd senders;
};

TEST_F(SocketRace, AWorkerIsStoppedWhileItsAttemptToConnectIsUnderWay) {
    transport.start();
    addSenders(5);
    common::sleepMs(20);
    EXPECT_TRUE(transport.stop());
    while (broken < 4) common::sleepMs(1);
    enough = true;
    senders.join();
    EXPECT_EQ(taken, 0);
}

TEST_F(SocketRace, AWorkerIsStoppedWhileSendsWaitForAnAnswer) {
    transport.start();
    const auto qor = listener.accept();
    ASSERT_NE(qor, nullptr);
    addSenders(60000);
    while (qor->toQor.state().bytes == 0) common::sleepMs(1);
    EXPECT_TRUE(transport.stop());
    while (broken < 4) common::sleepMs(1);
    enough = true;
    senders.join();
    EXPECT_EQ(taken, 0);
    EXPECT_TRUE(qor->toQor.isClosed());
}

/// How many whole records there are; any other bytes end the count.
int recordsIn(const std::string& bytes) {
    int count = 0;
    for (std::size_t position = 0; position < bytes.size(); ++count) {
        const auto framed = protocol::recordAt(bytes, position);
        if (framed.state != protocol::StreamState::complete) return count;
        position += framed.length;
    }
    return count;
}

/// Several of them fill the socket.
std::unique_ptr<IExternalCommand> longCommand() {
    protocol::ExecKwp kwp;
    kwp.data.assign(1000, 'x');
    return std::make_unique<CommandExecKwp>(kwp);
}

TEST_F(SocketRace, WhatAQorDoesNotReadForAWhileAllComesLater) {
    std::atomic<int> left{0};
    std::atomic<bool> hasLastLeft{false};
    transport.start();
    const auto qor = listener.accept();
    ASSERT_NE(qor, nullptr);
    senders.add(2, [&](int) {
        const auto leave = [&] { return ++left > 0; };
        for (int i = 0; i < 10000 && left < 40; ++i, common::sleepMs(1))
            transport.sendIf(leave, longCommand(), IExternalCommandFactory::doNotWait);
    });
    senders.join();
    const auto leaveLast = [&] { return hasLastLeft = true; };
    transport.sendIf(leaveLast, longCommand(), IExternalCommandFactory::doNotWait);
    while (!hasLastLeft) common::sleepMs(1);
    std::string bytes;
    for (int i = 0; i < 10000 && recordsIn(bytes) <= left; ++i, common::sleepMs(1))
        bytes += qor->toQor.takeAll();
    EXPECT_GE(left, 40);
    EXPECT_EQ(recordsIn(bytes), left + 1);
    EXPECT_TRUE(transport.stop());
}

TEST_F(SocketRace, BytesThatManyThreadsHandOverAllLeaveWhole) {
    constexpr int records = 300;
    std::string record;
    longCommand()->write(record);
    QuietAccepter accepter;
    AfxSocketInit();
    {
        ClientConnInstance connection(host, qorPort, accepter);
        std::shared_ptr<Link> qor;
        senders.add(1, [&](int) { qor = listener.accept(); });
        ASSERT_TRUE(connection.ensureConnected(10000));
        senders.join();
        senders.add(3, [&](int) {
            for (int i = 0; i < records / 3; ++i) {
                connection.send(record);
                if (i % 10 == 0) common::sleepMs(1);  // the socket is full meanwhile
            }
        });
        std::string bytes;
        for (int i = 0; i < 10000 && recordsIn(bytes) < records; ++i) {
            pumpSocketNotifications(nullptr);
            connection.send("");  // what other threads handed over leaves with it
            bytes += qor->toQor.takeAll();
        }
        EXPECT_EQ(recordsIn(bytes), records);
        senders.join();
    }
    AfxSocketTerm();
}

TEST_F(SocketRace, AQorThatHangsUpWhileConnectsAreUnderWayIsFoundAgain) {
    transport.start();
    addSenders(20);
    for (int round = 0; round < 30; ++round) {
        const auto qor = listener.accept();
        ASSERT_NE(qor, nullptr) << round;
        if (round % 3 != 0) common::sleepMs(1);
        if (round % 2 == 0)
            qor->toLibrary.breakOff();
        else
            qor->toLibrary.close();
    }
    EXPECT_GE(receiver.newQors(), 10);
    enough = true;
    senders.join();
    EXPECT_TRUE(transport.stop());
}

}  // namespace

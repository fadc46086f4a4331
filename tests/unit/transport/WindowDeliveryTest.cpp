// How a send by window message has ended.

#include <gtest/gtest.h>

#include "WindowFakePlatform.h"
#include "WindowTestTransport.h"

namespace {

class WindowDelivery : public testing::Test {
protected:
    Delivery deliver() {
        return transport.sendIf([this] { return permits; },
                                std::make_unique<CommandEcuToolRoutine>(), 500);
    }

    WindowFakePlatform* platform = new WindowFakePlatform;  // the transport's
    WindowTestTransport transport{uniqueTitle("own"), "QOR",
                                  std::unique_ptr<IWindowPlatform>(platform)};
    bool permits = true;
};

TEST_F(WindowDelivery, AResultOtherThanNullSaysTaken) {
    platform->receiverResult = 77;
    EXPECT_EQ(Delivery::taken, deliver());
}

TEST_F(WindowDelivery, AResultOfNullSaysRefused) {
    platform->receiverResult = 0;
    EXPECT_EQ(Delivery::refused, deliver());
}

TEST_F(WindowDelivery, NoResultInTimeIsSilence) {
    platform->end = MessageEnd::late;
    EXPECT_EQ(Delivery::silent, deliver());
    EXPECT_FALSE(transport.isPeerGone());
}

TEST_F(WindowDelivery, AWindowThatTakesNoMessagesHangs) {
    platform->end = MessageEnd::hung;
    EXPECT_EQ(Delivery::hung, deliver());
}

TEST_F(WindowDelivery, AWindowThatTheSystemDoesNotLetUsSpeakToIsForbidden) {
    platform->end = MessageEnd::forbidden;
    EXPECT_EQ(Delivery::forbidden, deliver());
}

TEST_F(WindowDelivery, AWindowThatTheSystemDoesNotKnowAnyMoreIsLost) {
    platform->end = MessageEnd::gone;
    EXPECT_EQ(Delivery::lost, deliver());
}

TEST_F(WindowDelivery, AWindowThatGoesMeanwhileIsLost) {
    for (const MessageEnd end : {MessageEnd::late, MessageEnd::hung, MessageEnd::forbidden}) {
        platform->end = end;
        platform->whileSending = [this] { platform->server = nullptr; };
        EXPECT_EQ(Delivery::lost, deliver());
        EXPECT_TRUE(transport.isPeerGone());
        platform->server = reinterpret_cast<HWND>(0x1234);
    }
}

TEST_F(WindowDelivery, WithoutAWindowThereIsNoConnectionAndThePermitIsNotAsked) {
    platform->server = nullptr;
    permits = false;
    EXPECT_EQ(Delivery::noConnection, deliver());
}

TEST_F(WindowDelivery, WithoutAPermitItIsWithdrawn) {
    permits = false;
    EXPECT_EQ(Delivery::withdrawn, deliver());
    EXPECT_TRUE(platform->sent.empty());
}

TEST_F(WindowDelivery, WhatNoRecordCanHoldIsTooLong) {
    auto command = std::make_unique<CommandDirectCtrl>();
    command->values = std::vector<double>((128u << 20) / sizeof(double));
    EXPECT_EQ(Delivery::tooLong, transport.sendIf(nullptr, std::move(command), 500));
}

TEST_F(WindowDelivery, APeerThatWasNeverSeenIsNotGone) {
    EXPECT_FALSE(transport.isPeerGone());
    EXPECT_TRUE(transport.isConnected());
}

}  // namespace

#include "transport/ReceivedCommand.h"

#include <gtest/gtest.h>

#include <new>

#include "SocketTransportSupport.h"

namespace {

using tcp::record;
using tcp::word;

/// Notes its number when it is asked, and takes records of id 8 if it is told to.
class CountingPrototype final : public CommandEcuToolRoutine, public IClientCommand {
public:
    CountingPrototype(std::string& asked, char name, bool takes)
        : asked_(asked), name_(name), takes_(takes) {}

    IExternalCommand* createFromPayload(std::string_view) const override {
        asked_ += name_;
        return takes_ ? new CountingPrototype(asked_, name_, takes_) : nullptr;
    }
    bool onReply(IExternalCommand::ICommandReplyer*, ClientExternalOperating*) override {
        return true;
    }

private:
    std::string& asked_;
    char name_;
    bool takes_;
};

class Recognising : public testing::Test {
protected:
    std::string asked;
    ICommandReceiver::Prototypes prototypes;
    const CommandPing ping;

    void add(char name, bool takes) {
        prototypes.push_back(std::make_unique<CountingPrototype>(asked, name, takes));
    }
};

/// Takes nothing for lack of memory.
struct StarvedPrototype final : CommandEcuToolRoutine, IClientCommand {
    IExternalCommand* createFromPayload(std::string_view) const override { throw std::bad_alloc(); }
    bool onReply(IExternalCommand::ICommandReplyer*, ClientExternalOperating*) override {
        return true;
    }
};

struct UnreadReceiver final : ICommandReceiver {
    const Prototypes& prototypes() const override { return none; }
    bool handleCommand(IExternalCommand&, IExternalCommand::ICommandReplyer&) override {
        return false;
    }
    void onNewQor() override {}
    void onUnreadable(const UnreadRecord& record) override { told.push_back(record); }

    Prototypes none;
    std::vector<UnreadRecord> told;
};

TEST_F(Recognising, TheFirstPrototypeThatTakesTheRecordWins) {
    add('a', false);
    add('b', true);
    add('c', true);

    const ReceivedCommand received = recognise(record(8, 5, word(3)), prototypes, ping);

    ASSERT_NE(nullptr, received.command);
    EXPECT_FALSE(received.isPing);
    EXPECT_EQ("ab", asked);
    EXPECT_EQ(5u, static_cast<ExternalCommand&>(*received.command).requestId());
}

TEST_F(Recognising, OnlyWhatNobodyTakesIsOfferedToThePing) {
    add('a', true);

    const ReceivedCommand received = recognise(tcp::pingAnswer(5, 2), prototypes, ping);

    EXPECT_TRUE(received.isPing);
    EXPECT_EQ(2u, static_cast<CommandPing&>(*received.command).status);
    EXPECT_EQ("", asked);
}

TEST_F(Recognising, APingWithoutAStatusHasStatusZero) {
    const ReceivedCommand received = recognise(record(0, 5, ""), prototypes, ping);

    EXPECT_TRUE(received.isPing);
    EXPECT_EQ(0u, static_cast<CommandPing&>(*received.command).status);
}

TEST_F(Recognising, ARecordThatNobodyTakesGivesNothing) {
    add('a', false);

    EXPECT_EQ(nullptr, recognise(record(8, 5, ""), prototypes, ping).command);
    EXPECT_EQ(nullptr, recognise(record(4, 5, ""), prototypes, ping).command);
    EXPECT_FALSE(recognise(record(4, 5, ""), prototypes, ping).isPing);
    EXPECT_FALSE(recognise(record(8, 5, ""), prototypes, ping).lacksMemory);
}

TEST_F(Recognising, WithoutMemoryForACommandThereIsNoneForThatReason) {
    prototypes.push_back(std::make_unique<StarvedPrototype>());
    add('a', true);

    const ReceivedCommand received = recognise(record(8, 5, word(3)), prototypes, ping);

    EXPECT_EQ(nullptr, received.command);
    EXPECT_TRUE(received.lacksMemory);
    EXPECT_EQ("", asked);
}

TEST_F(Recognising, WhatNobodyTakesIsToldByItsHead) {
    UnreadReceiver receiver;
    tellUnreadable({nullptr, false, true}, record(tcp::replyFlag | 8, 5, ""), receiver);
    tellUnreadable({nullptr, false, false}, record(9, 6, ""), receiver);
    tellUnreadable({nullptr, false, false}, "no head", receiver);

    ASSERT_EQ(2u, receiver.told.size());
    EXPECT_EQ(8u, receiver.told[0].commandId);
    EXPECT_EQ(5u, receiver.told[0].requestId);
    EXPECT_TRUE(receiver.told[0].isReply);
    EXPECT_TRUE(receiver.told[0].lacksMemory);
    EXPECT_EQ(9u, receiver.told[1].commandId);
    EXPECT_FALSE(receiver.told[1].isReply);
    EXPECT_FALSE(receiver.told[1].lacksMemory);
}

}  // namespace

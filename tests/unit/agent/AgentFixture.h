#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "agent/QorProtocolAgent.h"
#include "facade/channel/ProtocolCmd.h"
#include "support/FakeClock.h"
#include "support/FakeMessageBox.h"
#include "support/FakeProcesses.h"
#include "support/FakeQor.h"

/// An agent whose rounds the test runs itself, with a client of its own before a faked QOR.
class AgentTest : public ::testing::Test {
protected:
    using Channel = channel::Channel;

    AgentTest() {
        agent.step();  // asks for the online state, which is due again in 400 ms
        qor.forgetSent();
        clock.msPerRead = 1;
    }

    void post(channel::Kind kind, std::shared_ptr<channel::CmdData> data,
              std::shared_ptr<channel::AnswerQueue> replyQueue,
              IProgressMonitor* monitor = nullptr) {
        channel::ProtocolCmd command;
        command.kind = kind;
        command.data = std::move(data);
        command.replyQueue = std::move(replyQueue);
        command.monitor = monitor;
        channel->commandQueue.push(command);
    }

    /// Posts a request, runs one round and gives its one and only answer.
    channel::CmdResponse carryOut(channel::Kind kind, std::shared_ptr<channel::CmdData> data,
                                  IProgressMonitor* monitor = nullptr) {
        post(kind, std::move(data), answers, monitor);
        agent.step();
        channel::CmdResponse answer;
        channel::CmdResponse another;
        EXPECT_TRUE(answers->pop(answer, 0))
            << "no answer to kind " << static_cast<std::uint32_t>(kind);
        EXPECT_FALSE(answers->pop(another, 0))
            << "two answers to kind " << static_cast<std::uint32_t>(kind);
        return answer;
    }
    bool succeeds(channel::Kind kind, std::shared_ptr<channel::CmdData> data,
                  IProgressMonitor* monitor = nullptr) {
        return carryOut(kind, std::move(data), monitor).result == 1;
    }

    /// What the requests made the client send: without the queries for the online state.
    std::vector<int> sentIds() const {
        std::vector<int> ids;
        for (const auto& each : qor.sent()) {
            const auto* connect = dynamic_cast<const CommandKwpConnect*>(each.command.get());
            if (connect == nullptr || connect->mode != 2) ids.push_back(each.command->getId());
        }
        return ids;
    }

    FakeClock clock;
    FakeQor qor;
    FakeProcesses processes;
    FakeMessageBox::Choice pressButton = [](auto&&...) { return 1u; };
    std::shared_ptr<Channel> channel = std::make_shared<Channel>("not read.ini", 200u);
    QorProtocolAgent agent{channel, std::make_unique<ClientExternalOperating>(
                                        ClientSettings(), qor.transport(), processes.starter(),
                                        std::make_unique<FakeMessageBox>(pressButton))};
    std::shared_ptr<channel::AnswerQueue> answers = std::make_shared<channel::AnswerQueue>(4);
};

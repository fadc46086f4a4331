#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "agent/QorProtocolAgent.h"
#include "facade/CmdData.h"
#include "support/FakeClock.h"
#include "support/FakeMessageBox.h"
#include "support/FakeProcesses.h"
#include "support/FakeQor.h"

/// An agent whose rounds the test runs itself, with a client of its own before a faked QOR.
class AgentTest : public ::testing::Test {
protected:
    using Impl = QorControlFacade::Impl;

    AgentTest() {
        agent.step();  // asks for the online state, which is due again in 400 ms
        qor.forgetSent();
        clock.msPerRead = 1;
    }

    void post(std::uint32_t kind, std::shared_ptr<Impl::CmdData> data,
              std::shared_ptr<Impl::AnswerQueue> replyQueue, IProgressMonitor* monitor = nullptr) {
        Impl::ProtocolCmd command;
        command.kind = kind;
        command.data = std::move(data);
        command.replyQueue = std::move(replyQueue);
        command.monitor = monitor;
        impl->commandQueue.push(command);
    }

    /// Posts a request, runs one round and gives its one and only answer.
    Impl::CmdResponse carryOut(std::uint32_t kind, std::shared_ptr<Impl::CmdData> data,
                               IProgressMonitor* monitor = nullptr) {
        post(kind, std::move(data), answers, monitor);
        agent.step();
        Impl::CmdResponse answer;
        Impl::CmdResponse another;
        EXPECT_TRUE(answers->pop(answer, 0)) << "no answer to kind " << kind;
        EXPECT_FALSE(answers->pop(another, 0)) << "two answers to kind " << kind;
        return answer;
    }
    bool succeeds(std::uint32_t kind, std::shared_ptr<Impl::CmdData> data,
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
    std::shared_ptr<Impl> impl = std::make_shared<Impl>("not read.ini", nullptr, 200u);
    QorProtocolAgent agent{impl, std::make_unique<ClientExternalOperating>(
                                     ClientSettings(), qor.transport(), processes.starter(),
                                     std::make_unique<FakeMessageBox>(pressButton))};
    std::shared_ptr<Impl::AnswerQueue> answers = std::make_shared<Impl::AnswerQueue>(4);
};

#pragma once

#include <gmock/gmock.h>
#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ScriptedAgent.h"
#include "support/FakeClock.h"
#include "support/RecordingEolLog.h"
#include "support/TempFolder.h"
#include "trace/Trace.h"

/// A facade whose agent the test plays, on the system's clock.
class RealTimeFacadeTest : public ::testing::Test {
protected:
    using Channel = channel::Channel;
    using Cmd = channel::ProtocolCmd;

    ~RealTimeFacadeTest() override {
        facade.reset();
        closeTrace();
    }

    QorControlFacade& start(unsigned int periodMs = 0) {
        facade = std::make_unique<QorControlFacade>("settings.ini", &log, periodMs, hostPath);
        agent.channel();  // it runs
        return *facade;
    }
    void succeedAlways() {
        agent.script().onRequest = [](Channel&, const Cmd& c) { ScriptedAgent::succeed(c); };
    }
    /// Each request gets an answer of its own, like `data`.
    template <class Data>
    void succeedAlways(const std::shared_ptr<Data>& data) {
        agent.script().onRequest = [told = *data](Channel&, const Cmd& c) {
            ScriptedAgent::succeed(c, std::make_shared<Data>(told));
        };
    }
    /// Each request gets what `make` makes, which may be nothing.
    void succeedWith(std::function<std::shared_ptr<channel::CmdData>()> make) {
        agent.script().onRequest = [make = std::move(make)](Channel&, const Cmd& c) {
            ScriptedAgent::succeed(c, make());
        };
    }
    void failAlways() {
        agent.script().onRequest = [](Channel&, const Cmd& c) { ScriptedAgent::fail(c); };
    }
    static std::shared_ptr<channel::CmdDataParamData> valuesOf(const std::vector<double>& values) {
        auto data = std::make_shared<channel::CmdDataParamData>("of the answer", 0u);
        data->values = values;
        return data;
    }

    /// The trace behind the lines of the facade's construction.
    std::vector<std::string> trace() const {
        auto lines = linesOfFile(folder.pathOf("host.log"));
        lines.erase(lines.begin(), lines.begin() + (lines.size() < 2 ? 0 : 2));
        return lines;
    }
    /// So that the temporary folder can be deleted.
    static void closeTrace() { tracelog::openTraceFile("c:\\no such folder\\x.log", "w"); }

    TempFolder folder;
    std::string hostPath = folder.pathOf("host.exe");
    RecordingEolLog log;
    ScriptedAgent agent;
    std::unique_ptr<QorControlFacade> facade;
};

/// The same on a clock of the test's: log lines tell exact times. Only answers end a wait here.
class FacadeTest : public RealTimeFacadeTest {
protected:
    FacadeTest() {
        // The agent thread needs real time to end.
        clock.onSleep = [this](unsigned int ms) {
            ++sleeps;
            Sleep(ms < 5 ? 1 : ms / 5);
        };
    }
    ~FacadeTest() override { facade.reset(); }

    /// The agent answers after this much time.
    void after(std::uint32_t ms, const std::function<void(const Cmd&)>& reaction) {
        agent.script().onRequest = [=](Channel&, const Cmd& command) {
            clock.advance(ms);
            reaction(command);
        };
    }

    /// What had been done when the host's log got its first line.
    struct AtFirstLine {
        std::size_t traced = 0;
        std::size_t posted = 99;
    };
    /// To be asked when the call is over.
    std::shared_ptr<AtFirstLine> watchFirstLine() {
        const auto seen = std::make_shared<AtFirstLine>();
        log.onLine = [this, seen] {
            if (seen->traced != 0) return;
            seen->traced = trace().size();
            Sleep(20);  // time enough for the agent to take what was posted
            seen->posted = agent.requests().size();
        };
        return seen;
    }

    FakeClock clock;
    std::atomic<int> sleeps{0};
};

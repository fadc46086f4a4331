// Every cause of a failure, provoked for real.

#include <gmock/gmock.h>
#include <windows.h>

#include <future>
#include <memory>
#include <new>
#include <vector>

#include "qorcontrol/Outcome.h"
#include "qorcontrol/Waiting.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using qorcontrol::Cause;
using qorcontrol::lastOutcome;
using qorcontrol::Outcome;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using ConnType = QorControlFacade::EcuConnect::ConnType;

namespace {

constexpr unsigned amply = 5000;
constexpr unsigned shortly = 200;

std::string ruleFor(const std::string& match, const std::string& action) {
    return R"({"match":)" + match + R"(,"action":)" + action + "}";
}

/// All of the process's address space but for small pieces, for the life of this object.
class NoRoom {
public:
    NoRoom() {
        for (std::size_t size = 1u << 30; size >= pieceBytes; size /= 2)
            while (void* const piece = VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS))
                if (count_ < sizeof pieces_ / sizeof pieces_[0]) pieces_[count_++] = piece;
    }
    ~NoRoom() {
        while (count_ != 0) VirtualFree(pieces_[--count_], 0, MEM_RELEASE);
    }
    NoRoom(const NoRoom&) = delete;
    NoRoom& operator=(const NoRoom&) = delete;

    static constexpr std::size_t pieceBytes = 1u << 20;

private:
    void* pieces_[4096] = {};
    std::size_t count_ = 0;
};

class Causes : public testing::TestWithParam<Transport> {
protected:
    bool startWith(const std::string& rules) {
        station.script = R"({"rules":[)" + rules + "]}";
        return station.start();
    }

    /// Of an operation that fails.
    template <class Operation>
    Outcome outcomeOf(Operation operation) {
        EXPECT_FALSE(operation());
        const Outcome outcome = lastOutcome();
        EXPECT_THAT(outcome.sentence, EndsWith("."));
        EXPECT_THAT(outcome.check, Not(IsEmpty()));
        EXPECT_FALSE(outcome.mayBelongToEarlier);
        return outcome;
    }
    template <class Operation>
    Cause causeOf(Operation operation) {
        return outcomeOf(operation).cause;
    }

    bool ping(unsigned timeoutMs) { return station->pingQor(timeoutMs); }
    bool kwp(unsigned service, unsigned timeoutMs) {
        QorControlFacade::KwpCommand command = {service, "", 0};
        return station->sendKwpCommand(command, timeoutMs);
    }
    bool dtcs(unsigned timeoutMs) {
        std::vector<QorControlFacade::DtcDescription> codes;
        return station->getDtcByStatus(codes, timeoutMs);
    }
    bool can(unsigned timeoutMs) {
        QorControlFacade::CanBusData data = {{{0x100, 0}}};
        return station->getCanBusData(data, timeoutMs);
    }
    bool read(const std::string& name, unsigned timeoutMs) {
        std::vector<double> values;
        return station->getParamData(name, values, timeoutMs);
    }
    bool readAll(const std::vector<std::string>& names, unsigned timeoutMs) {
        std::vector<std::vector<double>> values;
        return station->getParamDataAtOnce(names, values, timeoutMs);
    }
    bool write(const std::string& name, double value) {
        return station->setParamData(name, {value}, {}, {}, amply);
    }
    bool describe(const std::string& name) {
        wex::ParamDescription description = {};
        return station->getParamDescription(name, description);
    }
    Cause causeOfConnect(const std::string& bootstrap) {
        station.script = "{\"bootstrap\":" + bootstrap + "}";
        EXPECT_TRUE(station.start());
        return causeOf([&] { return station.connectEcu(); });
    }

    Station station{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Over, Causes, everyTransport(), transportName);

TEST_P(Causes, NoneOfWhatWorks) {
    ASSERT_TRUE(startWith(""));
    EXPECT_TRUE(read("MaxEngineSpeed", amply));
    EXPECT_EQ(lastOutcome().cause, Cause::none);
    EXPECT_THAT(lastOutcome().sentence, IsEmpty());
    EXPECT_TRUE(qorcontrol::connectCanBusAndWait(station.facade(), {500000, true, true},
                                                 QorControlFacade::EcuConnect::Default));
    EXPECT_TRUE(can(amply));
    EXPECT_EQ(lastOutcome().cause, Cause::none);
    EXPECT_FALSE(lastOutcome().mayBelongToEarlier);
}

TEST_P(Causes, TheAgentHasEnded) {
    ASSERT_TRUE(startWith(""));
    station->shutdown();
    const Outcome outcome = outcomeOf([&] { return read("EngineSpeed", amply); });
    EXPECT_EQ(outcome.cause, Cause::agentEnded);
    EXPECT_THAT(outcome.sentence, EndsWith("the host has shut it down."));
    EXPECT_EQ(causeOf([&] { return station.connectEcu(); }), Cause::agentEnded);
    EXPECT_EQ(causeOf([&] { return qorcontrol::openModelAndWait(station.facade(), {}); }),
              Cause::agentEnded);
}

TEST_P(Causes, TheAgentHasEndedForLackOfQor) {
    station.settings.executable = station.folder.pathOf("no such qor.exe");
    station.open();
    ASSERT_TRUE(eventually(amply, [&] { return !station->stopDtcRead(); }));
    const Outcome outcome = outcomeOf([&] { return dtcs(amply); });
    station.settings.executable.clear();
    EXPECT_EQ(outcome.cause, Cause::agentEnded);
    EXPECT_THAT(outcome.sentence, HasSubstr("Fail to launch QOR"));
}

TEST_P(Causes, TheAgentIsBusy) {
    ASSERT_TRUE(startWith(ruleFor(R"({"id":9})", R"({"answer":"ackOnly"})")));
    auto busy = std::async(std::launch::async, [&] { return dtcs(1500); });
    Sleep(300);
    EXPECT_EQ(causeOf([&] { return ping(shortly); }), Cause::agentBusy);
    EXPECT_EQ(causeOf([&] { return read("EngineSpeed", shortly); }), Cause::agentBusy);
    EXPECT_FALSE(busy.get());
}

TEST_P(Causes, TheRequestIsPushedOut) {
    ASSERT_TRUE(startWith(ruleFor(R"({"id":9})", R"({"answer":"ackOnly"})")));
    auto busy = std::async(std::launch::async, [&] { return dtcs(1500); });
    Sleep(300);
    std::vector<std::future<Cause>> others;
    for (int i = 0; i < 11; ++i) {
        others.push_back(std::async(std::launch::async, [&] {
            ping(1500);
            return lastOutcome().cause;
        }));
        Sleep(30);
    }
    EXPECT_FALSE(busy.get());
    for (int i = 0; i < 10; ++i) EXPECT_EQ(others[i].get(), Cause::pushedOut) << "request " << i;
    EXPECT_EQ(others[10].get(), Cause::none);
}

TEST_P(Causes, ThereIsNoConnection) {
    ASSERT_TRUE(startWith(""));
    ASSERT_TRUE(read("MaxEngineSpeed", amply));
    qor::killAll();
    Sleep(500);
    EXPECT_EQ(causeOf([&] { return ping(500); }), Cause::noConnection);
    EXPECT_EQ(causeOf([&] { return dtcs(500); }), Cause::noConnection);
    EXPECT_EQ(causeOf([&] { return describe("EngineSpeed"); }), Cause::noConnection);
    EXPECT_EQ(causeOf([&] {
                  return qorcontrol::connectCanBusAndWait(station.facade(), {},
                                                          QorControlFacade::EcuConnect::Default);
              }),
              Cause::noConnection);
}

TEST_P(Causes, TheConnectionIsLostBehindTheRequest) {
    // Over window messages QOR ends inside the message.
    ASSERT_TRUE(startWith(
        ruleFor(R"({"id":9})", R"({"answer":"silent","then":[{"afterMs":0,"exit":3}]})")));
    const Outcome outcome = outcomeOf([&] { return dtcs(5000); });
    EXPECT_EQ(outcome.cause, Cause::noConnection);
    EXPECT_THAT(outcome.sentence, EndsWith("it was lost while the request was under way."));
}

TEST_P(Causes, TheConnectionIsLostWhileDataIsAwaited) {
    ASSERT_TRUE(startWith(
        ruleFor(R"({"id":9})", R"({"answer":"ackOnly","then":[{"afterMs":200,"exit":3}]})")));
    const Outcome outcome = outcomeOf([&] { return dtcs(1500); });
    EXPECT_EQ(outcome.cause, Cause::noConnection);
    EXPECT_THAT(outcome.sentence, EndsWith("it was lost while the request was under way."));
}

TEST_P(Causes, QorIsSilent) {
    const std::string silent = silence(GetParam(), 1500);
    ASSERT_TRUE(startWith(ruleFor(R"({"id":8})", silent) + "," +
                          ruleFor(R"({"id":7,"operation":1})", silent)));
    EXPECT_EQ(causeOf([&] { return station->clearDtc(2000); }), Cause::qorSilent);
    ASSERT_TRUE(eventually(amply, [&] { return ping(1000); }));
    EXPECT_EQ(causeOf([&] { return read("MaxEngineSpeed", 300); }), Cause::qorSilent);
}

TEST_P(Causes, ACallerThatGivesUpFirstLearnsHowFarItsRequestIs) {
    ASSERT_TRUE(startWith(ruleFor(R"({"id":8})", silence(GetParam(), 1500)) + "," +
                          ruleFor(R"({"id":3})", R"({"answer":"ackOnly"})")));
    EXPECT_EQ(causeOf([&] { return station->clearDtc(shortly); }), Cause::qorSilent);
    ASSERT_TRUE(eventually(amply, [&] { return ping(1000); }));
    EXPECT_EQ(causeOf([&] { return station->setParamData("EngineSpeed", {1}, {}, {}, 100); }),
              Cause::noData);
}

TEST_P(Causes, QorSendsNoData) {
    std::string rules;
    for (const int id : {3, 7, 9, 12, 15, 17, 18})
        rules +=
            (rules.empty() ? "" : ",") +
            ruleFor("{\"id\":" + std::to_string(id) + (id == 3 ? R"(,"name":"EngineLoad"})" : "}"),
                    R"({"answer":"ackOnly"})");
    ASSERT_TRUE(startWith(rules));
    ASSERT_TRUE(station.connectEcu());
    EXPECT_EQ(causeOf([&] { return describe("EngineLoad"); }), Cause::noData);
    EXPECT_EQ(causeOf([&] { return read("EngineSpeed", shortly); }), Cause::noData);
    EXPECT_EQ(causeOf([&] { return read("IgnitionMap", shortly); }), Cause::noData);
    EXPECT_EQ(causeOf([&] { return readAll({"EngineSpeed"}, shortly); }), Cause::noData);
    EXPECT_EQ(causeOf([&] { return dtcs(shortly); }), Cause::noData);
    EXPECT_EQ(causeOf([&] { return kwp(0x3E, shortly + 500); }), Cause::noData);
    ASSERT_TRUE(qorcontrol::connectCanBusAndWait(station.facade(), {500000, true, true},
                                                 QorControlFacade::EcuConnect::Default));
    EXPECT_EQ(causeOf([&] { return can(shortly); }), Cause::noData);
}

TEST_P(Causes, QorRefuses) {
    ASSERT_TRUE(startWith(""));
    EXPECT_EQ(causeOf([&] { return write("MaxEngineSpeed", 1e9); }), Cause::refused);
    EXPECT_EQ(causeOf([&] { return write("CylinderTrim", 1); }), Cause::refused);
    EXPECT_EQ(causeOf([&] { return station->setEcuSegment("NoSuchPage", true, nullptr); }),
              Cause::refused);
    EXPECT_EQ(causeOf([&] { return station->sendCanBusMsg(0x200, 0, "x", amply); }),
              Cause::refused);
    EXPECT_EQ(causeOf([&] { return can(amply); }), Cause::refused);
    EXPECT_EQ(causeOf([&] { return station->startDirectCtrl("MaxEngineSpeed", amply); }),
              Cause::refused);
    EXPECT_EQ(causeOf([&] { return qorcontrol::openModelAndWait(station.facade(), {}); }),
              Cause::refused);
}

TEST_P(Causes, TheNameIsUnknown) {
    ASSERT_TRUE(startWith(""));
    EXPECT_EQ(causeOf([&] { return describe("NoSuch"); }), Cause::unknownName);
    EXPECT_EQ(causeOf([&] { return read("NoSuch", amply); }), Cause::unknownName);
    EXPECT_EQ(causeOf([&] { return write("NoSuch", 1); }), Cause::unknownName);
    EXPECT_EQ(causeOf([&] { return station->setDynamicData("NoSuch", "1", amply); }),
              Cause::unknownName);
    EXPECT_EQ(causeOf([&] { return station->stopDirectCtrl("NoSuch", amply); }),
              Cause::unknownName);
    EXPECT_EQ(causeOf([&] {
                  return readAll({"EngineSpeed", "NoSuch"}, amply);
              }),
              Cause::unknownName);
}

TEST_P(Causes, KwpComesBeforeTheConnect) {
    ASSERT_TRUE(startWith(""));
    EXPECT_EQ(causeOf([&] { return kwp(0x3E, amply); }), Cause::kwpBeforeConnect);
}

TEST_P(Causes, TheConnectIsCancelled) {
    station.monitor.cancelled = true;
    EXPECT_EQ(causeOfConnect(R"({"result":null})"), Cause::cancelled);
}

TEST_P(Causes, QorReportsThatTheConnectFailed) {
    EXPECT_EQ(causeOfConnect(R"({"result":-2,"durationMs":50})"), Cause::connectReported);
}

TEST_P(Causes, TheEcuStaysOffline) {
    EXPECT_EQ(causeOfConnect(R"({"result":-1,"durationMs":50,"online":false})"), Cause::ecuOffline);
}

TEST_P(Causes, TheAnswerIsBad) {
    EXPECT_EQ(causeOfConnect(R"({"result":-7,"durationMs":50})"), Cause::badAnswer);
}

TEST_P(Causes, TheAnswerLacksValues) {
    ASSERT_TRUE(startWith(ruleFor(R"({"id":18})", R"({"answer":"fewerVectors"})")));
    EXPECT_EQ(causeOf([&] {
                  return readAll({"EngineSpeed", "EngineLoad"}, shortly);
              }),
              Cause::badAnswer);
}

TEST_P(Causes, TheRequestIsTooLarge) {
    ASSERT_TRUE(startWith(""));
    ASSERT_TRUE(read("MaxEngineSpeed", amply));
    EXPECT_EQ(causeOf([&] {
                  return station->sendCanBusMsg(1, 2, std::string((128u << 20) + 1, 'x'), amply);
              }),
              Cause::requestTooLarge);
}

TEST_P(Causes, QorIsAnotherOneMeanwhile) {
    const std::string rule = ruleFor(R"({"id":9})", R"({"answer":"ackOnly"})");
    ASSERT_TRUE(startWith(rule));
    auto waiting =
        std::async(std::launch::async, [&] { return causeOf([&] { return dtcs(6000); }); });
    Sleep(300);
    // The new one must speak to be known as such over window messages.
    station.script =
        R"({"rules":[)" + rule +
        R"(],"at":[{"since":"client","afterMs":300,"push":{"name":"EngineSpeed","value":1}}]})";
    station.restartQor();
    EXPECT_EQ(waiting.get(), Cause::qorChanged);
}

TEST_P(Causes, MemoryIsShortInTheHost) {
    ASSERT_TRUE(startWith(""));
    const std::string text(4 * NoRoom::pieceBytes, 'x');
    const auto room = std::make_unique<NoRoom>();
    bool hasThrown = false;
    try {
        station->setDynamicData("EngineSpeed", text, amply);
    } catch (const std::bad_alloc&) {
        hasThrown = true;
    }
    const Outcome outcome = lastOutcome();
    EXPECT_TRUE(hasThrown);
    EXPECT_EQ(outcome.cause, Cause::outOfMemory);
}

TEST_P(Causes, TheSystemGivesNoThread) {
    {
        const auto room = std::make_unique<NoRoom>();
        station.construct();
    }
    const Outcome outcome = outcomeOf([&] { return ping(shortly); });
    EXPECT_EQ(outcome.cause, Cause::systemFailure);
    EXPECT_THAT(outcome.sentence, HasSubstr("the agent's thread could not be started"));
    station.close();
}

TEST_P(Causes, AnswersOfAQorSlowerThanTheTimeOutMayAllBelongToEarlierRequests) {
    // QOR takes each at once and answers after 700 ms: channel 1, service 0x95, no data.
    ASSERT_TRUE(
        startWith(ruleFor(R"({"id":15,"operation":85})",
                          R"({"answer":"ackOnly","then":[{"afterMs":700,"record":{"id":15,)"
                          R"("payloadHex":"0100000095000000000000000000000000000000"}}]})")));
    ASSERT_TRUE(station.connectEcu());
    ASSERT_TRUE(kwp(0x3E, 1000));
    EXPECT_FALSE(lastOutcome().mayBelongToEarlier);
    int answered = 0;
    for (int call = 0; call < 30; ++call) {
        // QOR has 500 ms to take it. The times differ, so that answers and waits are in no step.
        const bool done = kwp(0x55, 100 + 17 * static_cast<unsigned>(call % 7));
        EXPECT_EQ(done, lastOutcome().mayBelongToEarlier) << "call " << call;
        answered += done ? 1 : 0;
    }
    EXPECT_GE(answered, 1);  // how many depends on the load of the machine
    Sleep(2000);             // QOR catches up
    for (int call = 0; call < 10; ++call) {
        EXPECT_TRUE(kwp(0x3E, 1000));
        EXPECT_FALSE(lastOutcome().mayBelongToEarlier);
    }
}

}  // namespace

// Why an operation of the client has failed.

#include "ClientFixture.h"
#include "support/FakeMonitor.h"

using qorcontrol::Cause;

namespace {

class Causes : public ClientTest {
protected:
    Causes() {
        clock.msPerRead = 1;
        qor.knows("S1", 5);
        qor.knows("Map", 6, true);
        client().beginRequest(interest);
    }

    Cause cause() { return client().verdict().cause; }
    std::string detail() { return client().verdict().detail; }

    /// What each way to fail looks like from outside.
    Cause causeOfSend(Delivery failure) {
        qor.failure = failure;
        qor.acknowledges = false;
        EXPECT_FALSE(client().clearDtc());
        return cause();
    }

    struct NoCallback final : ClientExternalOperating::ConnectCallback {
        void onProgress() override {}
        void onFigure(std::int32_t, std::uint32_t) override {}
    } callback;
    FakeMonitor monitor;
    std::shared_ptr<common::Interest> interest = std::make_shared<common::Interest>();
    common::Doubles values;
    SampledValue sample;
    protocol::ParamInfo description;
};

TEST_F(Causes, OfASendAreThoseOfTheTransport) {
    EXPECT_EQ(causeOfSend(Delivery::refused), Cause::refused);
    EXPECT_EQ(causeOfSend(Delivery::silent), Cause::qorSilent);
    EXPECT_EQ(detail(), "");
    EXPECT_EQ(causeOfSend(Delivery::hung), Cause::qorSilent);
    EXPECT_EQ(detail(), "its window takes no messages at all");
    EXPECT_EQ(causeOfSend(Delivery::noConnection), Cause::noConnection);
    EXPECT_EQ(detail(), "");
    EXPECT_EQ(causeOfSend(Delivery::lost), Cause::noConnection);
    EXPECT_EQ(detail(), "it was lost while the request was under way");
    EXPECT_EQ(causeOfSend(Delivery::notBegun), Cause::agentBusy);
    EXPECT_EQ(causeOfSend(Delivery::tooLong), Cause::requestTooLarge);
    EXPECT_EQ(causeOfSend(Delivery::broken), Cause::systemFailure);
    EXPECT_STREQ(client().verdict().check, "");
    EXPECT_EQ(causeOfSend(Delivery::forbidden), Cause::systemFailure);
    EXPECT_THAT(client().verdict().check, testing::StartsWith("Start the host and QOR with the"));
}

TEST_F(Causes, AreForgottenWithTheNextRequest) {
    causeOfSend(Delivery::refused);
    client().endRequest();
    EXPECT_EQ(cause(), Cause::refused);
    client().beginRequest(interest);
    EXPECT_EQ(cause(), Cause::none);
}

TEST_F(Causes, OfWhatIsTakenAndNotAnsweredIsThatThereIsNoData) {
    std::vector<protocol::DtcRecord> dtcs;
    EXPECT_FALSE(client().getDtc(1, dtcs, 100));
    EXPECT_EQ(cause(), Cause::noData);
    std::vector<protocol::CanBusItem> frames;
    EXPECT_FALSE(client().getCanBusData({{1, 0}}, frames, 100));
    EXPECT_EQ(cause(), Cause::noData);
    EXPECT_FALSE(client().getParamData("S1", values, 100, true));
    EXPECT_EQ(cause(), Cause::noData);
    EXPECT_FALSE(client().getStaticParam("Map", sample, 100));
    EXPECT_EQ(cause(), Cause::noData);
    std::vector<std::vector<double>> all;
    EXPECT_FALSE(client().readTogether({"S1"}, all, 100));
    EXPECT_EQ(cause(), Cause::noData);
    EXPECT_FALSE(client().getParamInfo("S2", description, 100, false));
    EXPECT_EQ(cause(), Cause::noData);
}

TEST_F(Causes, OfANameThatQorDoesNotKnowIsThatAlsoFromTheTable) {
    qor.knows("Nobody", protocol::ParamInfo::unknownIndex);
    for (int time = 0; time < 2; ++time) {
        EXPECT_FALSE(client().getParamInfo("Nobody", description, 100, false));
        EXPECT_EQ(cause(), Cause::unknownName);
        EXPECT_FALSE(client().setParamData("Nobody", {1.0}));
        EXPECT_EQ(cause(), Cause::unknownName);
        std::vector<std::vector<double>> all;
        EXPECT_FALSE(client().readTogether({"S1", "Nobody"}, all, 100));
        EXPECT_EQ(cause(), Cause::unknownName);
    }
}

TEST_F(Causes, OfKwpBeforeAConnectIsThat) {
    protocol::ExecKwp answer;
    EXPECT_FALSE(client().execKwp({}, answer));
    EXPECT_EQ(cause(), Cause::kwpBeforeConnect);
}

TEST_F(Causes, OfDataThatDoesNotComeFromAQorThatBecameAnotherIsThatItChanged) {
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) {
        qor.newQor();
        return true;
    });
    std::vector<protocol::DtcRecord> dtcs;
    EXPECT_FALSE(client().getDtc(1, dtcs, 100));
    EXPECT_EQ(cause(), Cause::qorChanged);
}

TEST_F(Causes, OfDataThatDoesNotComeFromAQorThatTheSendItselfHasMetIsThatThereIsNone) {
    qor.beforeLeaving = [this](const IExternalCommand&) { qor.newQor(); };
    std::vector<protocol::DtcRecord> dtcs;
    EXPECT_FALSE(client().getDtc(1, dtcs, 100));
    EXPECT_EQ(cause(), Cause::noData);
}

TEST_F(Causes, OfAnIndexThatDoesNotHoldAnyMoreIsThatQorChanged) {
    qor.beforeLeaving = [this](const IExternalCommand& command) {
        if (command.getId() == CommandDirectCtrl::id) qor.newQor();
    };
    EXPECT_FALSE(client().setParamData("S1", {1.0}));
    EXPECT_EQ(cause(), Cause::qorChanged);
    EXPECT_FALSE(client().setParamData("S1", {1.0}));  // in the request of before
    EXPECT_EQ(cause(), Cause::qorChanged);
}

TEST_F(Causes, OfDataThatCannotComeAnyMoreIsThatTheConnectionIsLost) {
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) {
        qor.isConnected = false;
        return true;
    });
    std::vector<protocol::DtcRecord> dtcs;
    EXPECT_FALSE(client().getDtc(1, dtcs, 100));
    EXPECT_EQ(cause(), Cause::noConnection);
    EXPECT_EQ(detail(), "it was lost while the request was under way");
}

TEST_F(Causes, OfAnAnswerThatLacksValuesIsThatItIsBad) {
    qor.on<CommandReadTogether>([this](const CommandReadTogether&) {
        CommandReadTogether answer;
        answer.paramIndices = {5};
        qor.send(answer);
        return true;
    });
    std::vector<std::vector<double>> all;
    EXPECT_FALSE(client().readTogether({"S1"}, all, 100));
    EXPECT_EQ(cause(), Cause::badAnswer);
    EXPECT_EQ(detail(), "QOR's answer lacks values");
    EXPECT_FALSE(client().getParamData("S1", values, 100, true));
    EXPECT_EQ(cause(), Cause::noData);
}

TEST_F(Causes, OfAnAnswerThatCannotBeReadIsThatItIsBad) {
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) {
        // A list of 4,294,967,295 codes in four bytes.
        return !qor.sendRecord(std::string("\x09\0\0\0\x01\0\0\0\x04\0\0\0\xFF\xFF\xFF\xFF", 16));
    });
    std::vector<protocol::DtcRecord> dtcs;
    EXPECT_FALSE(client().getDtc(1, dtcs, 100));
    EXPECT_EQ(cause(), Cause::badAnswer);
    EXPECT_EQ(detail(), "QOR's record cannot be read");
    // Another one's record is no matter of this request.
    qor.on<CommandCanBusData>([this](const CommandCanBusData&) {
        return !qor.sendRecord(std::string("\x09\0\0\0\x01\0\0\0\x04\0\0\0\xFF\xFF\xFF\xFF", 16));
    });
    std::vector<protocol::CanBusItem> frames;
    EXPECT_FALSE(client().getCanBusData({{1, 0}}, frames, 100));
    EXPECT_EQ(cause(), Cause::noData);
}

TEST_F(Causes, OfAnAnswerThatThereWasNoMemoryForIsThat) {
    for (const bool isNamed : {false, true}) {
        qor.on<CommandGetDTC>([&](const CommandGetDTC& request) {
            client().onUnreadable({CommandGetDTC::id, request.requestId(), isNamed, true});
            return true;
        });
        std::vector<protocol::DtcRecord> dtcs;
        EXPECT_FALSE(client().getDtc(1, dtcs, 100));
        EXPECT_EQ(cause(), Cause::outOfMemory) << isNamed;
        EXPECT_EQ(detail(), "while QOR's answer was taken");
    }
}

TEST_F(Causes, OfAnAnswerOfAnotherKindThatNamesTheRequestIsThatItIsBad) {
    qor.on<CommandGetDTC>(
        [this](const CommandGetDTC& request) { return qor.answer(request, CommandGetHex()); });
    std::vector<protocol::DtcRecord> dtcs;
    EXPECT_FALSE(client().getDtc(1, dtcs, 100));
    EXPECT_EQ(cause(), Cause::badAnswer);
    EXPECT_EQ(detail(), "QOR answered with a record of another kind");
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) { return qor.send(CommandGetHex()); });
    EXPECT_FALSE(client().getDtc(1, dtcs, 100));
    EXPECT_EQ(cause(), Cause::noData);
}

TEST_F(Causes, OfAConnectAreThoseOfItsBootstrap) {
    const auto connectWith = [&](double value) {
        qor.on<CommandKwpConnect>([=](const CommandKwpConnect& request) {
            if (request.mode != protocol::KwpConnect::modeOnlineQuery)
                clock.after(20, [=] { qor.sendValue(-12, value); });
            return true;
        });
        EXPECT_FALSE(client().connectEcu({}, &monitor, callback));
        return cause();
    };
    EXPECT_EQ(connectWith(-2), Cause::connectReported);
    EXPECT_EQ(detail(), "Bootstrap failed - QOR reported");
    EXPECT_EQ(connectWith(-7), Cause::badAnswer);
    EXPECT_EQ(connectWith(-1), Cause::ecuOffline);
    monitor.cancelled = true;
    EXPECT_EQ(connectWith(0), Cause::cancelled);
}

TEST_F(Causes, OfAConnectWhoseQorGoesTellThatWithTheWordsOfBefore) {
    const auto connectAnd = [&](const std::function<void()>& happens, double value) {
        qor.on<CommandKwpConnect>([=](const CommandKwpConnect& request) {
            if (request.mode == protocol::KwpConnect::modeOnlineQuery) return true;
            clock.after(20, [=] { qor.sendValue(-12, value); });
            clock.after(40, happens);
            return true;
        });
        EXPECT_FALSE(client().connectEcu({}, &monitor, callback));
        return cause();
    };
    EXPECT_EQ(connectAnd([this] { qor.newQor(); }, -1), Cause::qorChanged);
    EXPECT_EQ(connectAnd([this] { qor.isConnected = false; }, -1), Cause::noConnection);
    qor.isConnected = true;
    EXPECT_EQ(detail(), "Bootstrap failed - timeout");
    ASSERT_EQ(monitor.reports.size(), 2u);
    EXPECT_EQ(monitor.reports.back().first, "Bootstrap failed - timeout");
    // One that has not come yet when the connect leaves.
    qor.beforeLeaving = [this](const IExternalCommand&) { qor.newQor(); };
    EXPECT_EQ(connectAnd([this] { qor.beforeLeaving = [](const auto&) {}; }, -1),
              Cause::ecuOffline);
}

TEST_F(Causes, OfAConnectThatIsCancelledBecauseQorHasGoneTellThat) {
    const auto cancelAfter = [&](const std::function<void()>& happens) {
        monitor.cancelled = false;
        qor.on<CommandKwpConnect>([=](const CommandKwpConnect& request) {
            if (request.mode == protocol::KwpConnect::modeOnlineQuery) return true;
            clock.after(20, [=] {
                happens();
                monitor.cancelled = true;
            });
            return true;
        });
        EXPECT_FALSE(client().connectEcu({}, &monitor, callback));
        EXPECT_EQ(detail(), "Bootstrap failed - cancelled");
        return cause();
    };
    EXPECT_EQ(cancelAfter([this] { qor.newQor(); }), Cause::qorChanged);
    EXPECT_EQ(cancelAfter([] {}), Cause::cancelled);
    EXPECT_EQ(cancelAfter([this] { qor.isConnected = false; }), Cause::noConnection);
}

TEST_F(Causes, AreKnownToACallerThatGivesUpAtAnyMoment) {
    EXPECT_EQ(interest->present(), Cause::agentBusy);
    std::vector<Cause> seen;
    qor.isConnected = false;
    qor.beforeLeaving = [&](const auto&) {
        seen.push_back(interest->present());
        qor.isConnected = true;
    };
    qor.on<CommandGetDTC>([&](const CommandGetDTC&) {
        seen.push_back(interest->present());
        clock.after(50, [&] { seen.push_back(interest->present()); });
        return true;
    });
    std::vector<protocol::DtcRecord> dtcs;
    client().getDtc(1, dtcs, 100);
    client().getDtc(1, dtcs, 100);
    EXPECT_THAT(seen, testing::ElementsAre(Cause::noConnection, Cause::qorSilent, Cause::noData,
                                           Cause::agentBusy, Cause::qorSilent, Cause::noData));
}

}  // namespace

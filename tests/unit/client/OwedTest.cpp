// Answers that may belong to earlier requests: what QOR still owes.

#include "client/Owed.h"

#include "ClientFixture.h"

using qorcontrol::Cause;

namespace {

TEST(Owed, IsWhatWasAskedForLessWhatHasCome) {
    Owed<int> owed;
    EXPECT_FALSE(owed.isOwed(1));
    owed.add(1);
    owed.add(1);
    EXPECT_FALSE(owed.isOwed(2));
    owed.pay(1);
    EXPECT_TRUE(owed.isOwed(1));
    owed.pay(1);
    EXPECT_FALSE(owed.isOwed(1));
    owed.pay(1);  // what nobody has asked for
    owed.add(1);
    EXPECT_TRUE(owed.isOwed(1));
    owed.clear();
    EXPECT_FALSE(owed.isOwed(1));
}

TEST(Owed, BeyondItsBoundTellsKeysApartNoMoreAndForgetsNone) {
    constexpr int keys = static_cast<int>(Owed<int>::maxKeys);
    Owed<int> owed;
    for (int key = 0; key < keys; ++key) owed.add(key);
    EXPECT_FALSE(owed.isOwed(keys));
    owed.add(keys);
    owed.add(keys + 1);
    EXPECT_TRUE(owed.isOwed(keys + 2));
    owed.pay(keys);
    owed.pay(keys + 1);
    EXPECT_FALSE(owed.isOwed(keys + 2));
    EXPECT_TRUE(owed.isOwed(0));
    owed.add(0);  // has its place
    owed.pay(0);
    EXPECT_TRUE(owed.isOwed(0));
}

TEST(Owed, OfARefusedRequestIsPaidUnlessItsDataHasCome) {
    Owed<int> owed;
    const auto first = owed.add(1);
    const auto second = owed.add(1);
    owed.pay(1);
    owed.cancel(1, first);  // data came for it
    EXPECT_TRUE(owed.isOwed(1));
    owed.cancel(1, second);
    EXPECT_FALSE(owed.isOwed(1));
    owed.add(1);
    owed.cancel(1, second);
    EXPECT_TRUE(owed.isOwed(1));
    owed.clear();
    owed.add(1);
    owed.cancel(1, second);  // of one that is forgotten
    EXPECT_TRUE(owed.isOwed(1));
}

TEST(Owed, OfManyRequestsForOneKeyIsPaidByAsManyRefusals) {
    Owed<int> owed;
    std::vector<Owed<int>::Ticket> tickets;
    for (int i = 0; i < 50; ++i) tickets.push_back(owed.add(1));
    for (auto ticket = tickets.rbegin(); ticket != tickets.rend(); ++ticket) {
        EXPECT_TRUE(owed.isOwed(1));
        owed.cancel(1, *ticket);
    }
    EXPECT_FALSE(owed.isOwed(1));
}

TEST(Owed, KeepsNoLongTexts) {
    Owed<std::string> owed;
    owed.add(std::string(Owed<std::string>::maxKeyChars + 1, 'x'));
    EXPECT_TRUE(owed.isOwed("another"));
    owed.pay(std::string(Owed<std::string>::maxKeyChars + 1, 'x'));
    EXPECT_FALSE(owed.isOwed("another"));
}

/// A QOR that takes everything and answers when the test says so.
class OwedAnswers : public ClientTest {
protected:
    OwedAnswers() {
        clock.msPerRead = 1;
        qor.knows("S1", 5);
        qor.knows("S2", 6);
        qor.knows("Map", 7, true);
        client().connectEcu({}, nullptr, callback);
    }

    /// Whether the operation is successful and its answer is marked.
    template <class Operation>
    std::string outcome(Operation operation) {
        client().beginRequest(interest);
        const bool succeeded = operation();
        client().endRequest();
        const common::Verdict& verdict = client().verdict();
        EXPECT_FALSE(!succeeded && verdict.mayBelongToEarlier);
        return std::string(succeeded ? "true" : "false") +
               (verdict.mayBelongToEarlier ? ", of an earlier one?" : "");
    }

    std::string kwp() {
        return outcome([&] {
            protocol::ExecKwp answer;
            return client().execKwp({0, 1, "", 100, false}, answer);
        });
    }
    std::string dtcs() {
        return outcome([&] {
            std::vector<protocol::DtcRecord> codes;
            return client().getDtc(1, codes, 100);
        });
    }
    std::string can() {
        return outcome([&] {
            std::vector<protocol::CanBusItem> frames;
            return client().getCanBusData({{1, 0}}, frames, 100);
        });
    }
    std::string read(const std::string& name) {
        return outcome([&] {
            common::Doubles values;
            return client().getParamData(name, values, 100, true);
        });
    }
    std::string readMap() {
        return outcome([&] {
            SampledValue sample;
            return client().getStaticParam("Map", sample, 100);
        });
    }
    std::string describe(const std::string& name) {
        return outcome([&] {
            protocol::ParamInfo description;
            return client().getParamInfo(name, description, 100, true);
        });
    }
    std::string readAll(const std::vector<std::string>& names) {
        return outcome([&] {
            std::vector<std::vector<double>> values;
            return client().readTogether(names, values, 100);
        });
    }

    /// QOR answers, from now on, so long after it has taken a `Request`.
    template <class Request>
    void answersAfter(std::uint32_t ms, std::function<void()> answer) {
        qor.on<Request>([=](const Request&) {
            if (answer != nullptr) clock.after(ms, answer);
            return true;
        });
    }
    /// The same answer to a read of one parameter.
    void tellValue(std::uint32_t index, std::uint32_t operation = 1) {
        CommandDirectCtrl answer;
        answer.paramIndex = index;
        answer.operation = operation;
        answer.values = {1.0};
        qor.send(answer);
    }
    void tellMap(std::uint32_t operation) {
        CommandStaticParam answer;
        answer.paramIndex = 7;
        answer.operation = operation;
        answer.first = {1.0};
        qor.send(answer);
    }

    struct NoCallback final : ClientExternalOperating::ConnectCallback {
        void onProgress() override {}
        void onFigure(std::int32_t, std::uint32_t) override {}
    } callback;
    std::shared_ptr<common::Interest> interest = std::make_shared<common::Interest>();
    const std::string marked = "true, of an earlier one?";
};

TEST_F(OwedAnswers, OfAQorThatIsSlowerThanTheTimeOutAreAllMarkedUntilItHasCaughtUp) {
    int sent = 0;
    qor.on<CommandExecKwp>([&](const CommandExecKwp&) {
        ++sent;
        clock.after(800, [&] { qor.send(CommandExecKwp()); });  // each call has 500
        return true;
    });
    int successes = 0;
    for (int call = 0; call < 30; ++call) {
        const std::string each = kwp();
        if (each == "false") continue;
        EXPECT_EQ(each, marked) << "call " << call;
        ++successes;
    }
    EXPECT_GT(successes, 10);
    EXPECT_EQ(sent, 30);
    clock.advance(2000);
    for (int read = 0; read < 10; ++read) common::now();
    answersAfter<CommandExecKwp>(50, [&] { qor.send(CommandExecKwp()); });
    for (int call = 0; call < 30; ++call) EXPECT_EQ(kwp(), "true");
}

TEST_F(OwedAnswers, OfEachThingAreMarkedBehindOneThatDidNotComeAndNoMoreOnceItHasCome) {
    EXPECT_EQ(dtcs(), "false");
    EXPECT_EQ(can(), "false");
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(readMap(), "false");
    const auto answerAll = [&] {
        answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
        answersAfter<CommandCanBusData>(10, [&] { qor.send(CommandCanBusData()); });
        answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
        answersAfter<CommandStaticParam>(10, [&] { tellMap(1); });
    };
    answerAll();
    EXPECT_EQ(kwp(), "false");  // another thing
    EXPECT_EQ(dtcs(), marked);
    EXPECT_EQ(can(), marked);
    EXPECT_EQ(read("S1"), marked);
    EXPECT_EQ(readMap(), marked);
    qor.send(CommandGetDTC());
    qor.send(CommandCanBusData());
    tellValue(5);
    tellMap(1);
    EXPECT_EQ(dtcs(), "true");
    EXPECT_EQ(can(), "true");
    EXPECT_EQ(read("S1"), "true");
    EXPECT_EQ(readMap(), "true");
}

TEST_F(OwedAnswers, OfOneParameterDoNotMarkThoseOfAnother) {
    EXPECT_EQ(read("S1"), "false");
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(6); });
    EXPECT_EQ(read("S2"), "true");
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
    EXPECT_EQ(read("S1"), marked);
}

TEST_F(OwedAnswers, ThatNameTheirRequestAreNotMarkedThoughOthersAreOwed) {
    EXPECT_EQ(dtcs(), "false");
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(readMap(), "false");
    EXPECT_EQ(describe("Late"), "false");
    qor.on<CommandGetDTC>(
        [this](const CommandGetDTC& request) { return qor.answer(request, CommandGetDTC()); });
    qor.on<CommandDirectCtrl>([this](const CommandDirectCtrl& request) {
        CommandDirectCtrl answer(protocol::DirectCtrl{request.paramIndex, 1, {1.0}, ""});
        return qor.answer(request, std::move(answer));
    });
    qor.on<CommandStaticParam>([this](const CommandStaticParam& request) {
        CommandStaticParam answer;
        answer.paramIndex = request.paramIndex;
        answer.operation = 1;
        return qor.answer(request, std::move(answer));
    });
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo& request) {
        CommandGetParamInfo answer;
        answer.name = request.name;
        answer.paramIndex = 8;
        return qor.answer(request, std::move(answer));
    });
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(dtcs(), "true");
        EXPECT_EQ(read("S1"), "true");
        EXPECT_EQ(readMap(), "true");
        EXPECT_EQ(describe("Late"), "true");
    }
    // What was owed before still is.
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
    EXPECT_EQ(dtcs(), marked);
    EXPECT_EQ(read("S1"), marked);
}

TEST_F(OwedAnswers, ThatNameAnEarlierRequestAreMarkedAndPayForThatOne) {
    EXPECT_EQ(dtcs(), "false");
    EXPECT_EQ(dtcs(), "false");
    const auto requests = qor.all<CommandGetDTC>();
    const std::uint32_t second = requests[1]->requestId();
    answersAfter<CommandGetDTC>(10, [&] {
        CommandGetDTC late;
        late.stampAsReplyTo(second);
        for (int time = 0; time < 3; ++time) qor.send(late);  // once is enough
    });
    EXPECT_EQ(dtcs(), marked);
    qor.send(CommandGetDTC());
    EXPECT_EQ(dtcs(), marked);  // one is still to come
    qor.send(CommandGetDTC());
    qor.send(CommandGetDTC());
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    EXPECT_EQ(dtcs(), "true");
}

TEST_F(OwedAnswers, ThatNameTheirRequestAreMarkedWhenAnotherOneHasComeUponThem) {
    EXPECT_EQ(dtcs(), "false");
    qor.on<CommandGetDTC>([this](const CommandGetDTC& request) {
        qor.answer(request, CommandGetDTC());
        return qor.send(CommandGetDTC());
    });
    EXPECT_EQ(dtcs(), marked);
}

TEST_F(OwedAnswers, ThatComeOnceMoreAreMarkedIfTheyNameAnEarlierRequest) {
    answersAfter<CommandGetDTC>(
        10, [&] { qor.answer(*qor.all<CommandGetDTC>().front(), CommandGetDTC()); });
    EXPECT_EQ(dtcs(), "true");
    EXPECT_EQ(dtcs(), marked);  // nothing is owed, yet it is the first one's
    qor.on<CommandGetDTC>([this](const CommandGetDTC& request) {
        qor.answer(*qor.all<CommandGetDTC>().front(), CommandGetDTC());
        return qor.answer(request, CommandGetDTC());
    });
    EXPECT_EQ(dtcs(), "true");
}

TEST_F(OwedAnswers, ThatComeBeforeTheirRequestHasLeftAreMarked) {
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(readMap(), "false");
    qor.beforeLeaving = [this](const IExternalCommand&) {
        tellValue(5);  // to the read before: now nothing is owed
        tellMap(1);
    };
    EXPECT_EQ(read("S1"), marked);
    EXPECT_EQ(readMap(), marked);
    qor.beforeLeaving = [](const auto&) {};
    tellValue(5);
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
    EXPECT_EQ(read("S1"), "true");
}

TEST_F(OwedAnswers, OfAReadOfSeveralMustAllNameItNotToBeMarked) {
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(read("S2"), "false");
    const auto tellBoth = [this](const CommandReadTogether& request) {
        CommandReadTogether answer;
        answer.paramIndices = request.paramIndices;
        answer.values = {{1.0}, {2.0}};
        return qor.answer(request, std::move(answer));
    };
    qor.on<CommandReadTogether>(tellBoth);
    EXPECT_EQ(readAll({"S1", "S2"}), "true");
    qor.on<CommandReadTogether>([=](const CommandReadTogether& request) {
        tellBoth(request);
        tellValue(6);
        return true;
    });
    EXPECT_EQ(readAll({"S1", "S2"}), marked);
}

TEST_F(OwedAnswers, ThatCannotBeReadAreNotOwedAnyMore) {
    const std::string lying("\x09\0\0\0\x01\0\0\0\x04\0\0\0\xFF\xFF\xFF\xFF", 16);
    answersAfter<CommandGetDTC>(10, [&] { qor.sendRecord(lying); });
    EXPECT_EQ(dtcs(), "false");
    qor.on<CommandGetDTC>([&](const CommandGetDTC& request) {
        std::string record;
        CommandGetDTC answer;
        answer.stampAsReplyTo(request.requestId());
        answer.write(record);
        qor.sendRecord(record.substr(0, 8) + lying.substr(8));
        return true;
    });
    EXPECT_EQ(dtcs(), "false");
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    EXPECT_EQ(dtcs(), "true");
}

TEST_F(OwedAnswers, AreStillOwedWhenWhatCannotBeReadNamesARequestOfAnotherKind) {
    EXPECT_EQ(dtcs(), "false");
    qor.on<CommandExecKwp>([&](const CommandExecKwp& request) {
        std::string record;
        CommandGetDTC answer;
        answer.stampAsReplyTo(request.requestId());
        answer.write(record);
        qor.sendRecord(record.substr(0, 8) + std::string("\x04\0\0\0\xFF\xFF\xFF\xFF", 8));
        return true;
    });
    EXPECT_EQ(kwp(), "false");
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    answersAfter<CommandExecKwp>(10, [&] { qor.send(CommandExecKwp()); });
    EXPECT_EQ(dtcs(), marked);
    EXPECT_EQ(kwp(), marked);
}

TEST_F(OwedAnswers, OfAReadOfSeveralThatLackValuesAreNotOwedAnyMore) {
    const auto answersShort = [&](bool isNamed) {
        qor.on<CommandReadTogether>([=](const CommandReadTogether& request) {
            CommandReadTogether answer;
            answer.paramIndices = {5, 6, 6};
            answer.values = {{1.0}};
            return isNamed ? qor.answer(request, std::move(answer)) : qor.send(answer);
        });
    };
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(6); });
    for (const bool isNamed : {false, true}) {
        answersShort(isNamed);
        EXPECT_EQ(readAll({"S1", "S2"}), "false");
        EXPECT_EQ(read("S2"), "true") << isNamed;
    }
    // One debt and no more is paid by it.
    qor.on<CommandDirectCtrl>([](const CommandDirectCtrl&) { return true; });
    EXPECT_EQ(read("S2"), "false");
    for (const bool isNamed : {false, true}) {
        answersShort(isNamed);
        EXPECT_EQ(readAll({"S1", "S2"}), "false");
        answersAfter<CommandDirectCtrl>(10, [&] { tellValue(6); });
        EXPECT_EQ(read("S2"), marked) << isNamed;
    }
}

TEST_F(OwedAnswers, OfAReadOfSeveralThatAreLeftOutAreNotOwedAnyMore) {
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(6); });
    const auto answersOnly = [&](std::vector<std::uint32_t> indices) {
        qor.on<CommandReadTogether>([this, indices](const CommandReadTogether& request) {
            CommandReadTogether answer;
            answer.paramIndices = indices;
            answer.values.assign(indices.size(), {1.0});
            return qor.answer(request, std::move(answer));
        });
    };
    for (const std::vector<std::uint32_t>& told : {std::vector<std::uint32_t>{5}, {}, {5, 7}}) {
        answersOnly(told);
        EXPECT_EQ(readAll({"S1", "S2"}), "false");
        EXPECT_EQ(client().verdict().cause, qorcontrol::Cause::badAnswer);
        EXPECT_EQ(read("S2"), "true");
    }
    answersOnly({6, 5});
    EXPECT_EQ(readAll({"S1", "S2"}), "true");
}

TEST_F(OwedAnswers, OfAReadOfSeveralMarkThoseOfEachAlone) {
    EXPECT_EQ(readAll({"S1", "S2"}), "false");
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(6); });
    EXPECT_EQ(read("S2"), marked);
    tellValue(6);
    EXPECT_EQ(read("S2"), "true");
    answersAfter<CommandReadTogether>(10, [&] { tellValue(6); });
    EXPECT_EQ(readAll({"S2"}), "true");
    answersAfter<CommandReadTogether>(10, [&] {
        tellValue(5);
        tellValue(6);
    });
    EXPECT_EQ(readAll({"S1", "S2"}), marked);
}

TEST_F(OwedAnswers, OfAReadThatNamesOneTwiceCountOnce) {
    EXPECT_EQ(readAll({"S1", "S1"}), "false");
    tellValue(5);
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
    EXPECT_EQ(read("S1"), "true");
    answersAfter<CommandDirectCtrl>(10, nullptr);
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(read("S1"), "false");
    answersAfter<CommandReadTogether>(10, [&] {
        CommandReadTogether answer;
        answer.paramIndices = {5, 5};
        answer.values = {{1.0}, {1.0}};
        qor.send(answer);
    });
    EXPECT_EQ(readAll({"S1", "S1"}), marked);  // two are still to come
    EXPECT_EQ(readAll({"S1", "S1"}), marked);
}

TEST_F(OwedAnswers, OfADescriptionDoNotMarkAWrite) {
    EXPECT_EQ(describe("Late"), "false");
    qor.knows("Late", 8);
    EXPECT_EQ(outcome([&] { return client().setParamData("Late", {1.0}); }), "true");
}

TEST_F(OwedAnswers, OfADescriptionAreMarkedAlsoWhereTheNameIsUnknown) {
    EXPECT_EQ(describe("Late"), "false");
    qor.knows("Late", 8);
    EXPECT_EQ(describe("Late"), marked);
    protocol::ParamInfo late;
    late.name = "Late";
    qor.send(CommandGetParamInfo(late));
    EXPECT_EQ(describe("Late"), "true");
    EXPECT_EQ(describe("Later"), "false");
    qor.knows("Later", protocol::ParamInfo::unknownIndex);
    client().beginRequest(interest);
    protocol::ParamInfo description;
    EXPECT_FALSE(client().getParamInfo("Later", description, 100, true));
    EXPECT_EQ(client().verdict().cause, Cause::unknownName);
    EXPECT_TRUE(client().verdict().mayBelongToEarlier);
}

TEST_F(OwedAnswers, AreNotPaidByWhatTellsOfAWriteNorByAStream) {
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(readMap(), "false");
    tellValue(5, protocol::DirectCtrl::writeValues);
    tellMap(protocol::StaticParam::writeArrays);
    qor.sendValue(5, 1.0);
    qor.sendValue(7, 1.0);
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
    answersAfter<CommandStaticParam>(10, [&] { tellMap(1); });
    EXPECT_EQ(read("S1"), marked);
    EXPECT_EQ(readMap(), marked);
}

TEST_F(OwedAnswers, AreNoneOfWhatHasNotLeftOrWasRefused) {
    for (const Delivery failure :
         {Delivery::refused, Delivery::forbidden, Delivery::noConnection, Delivery::notBegun}) {
        qor.failure = failure;
        answersAfter<CommandGetDTC>(0, nullptr);
        qor.on<CommandGetDTC>([](const CommandGetDTC&) { return false; });
        EXPECT_EQ(dtcs(), "false");
        qor.failure.reset();
        answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
        EXPECT_EQ(dtcs(), "true");
    }
}

TEST_F(OwedAnswers, AreThereOfWhatHasLeftEvenIfQorDidNotAcknowledgeIt) {
    qor.failure = Delivery::silent;
    qor.on<CommandGetDTC>([](const CommandGetDTC&) { return false; });
    EXPECT_EQ(dtcs(), "false");
    qor.failure.reset();
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    EXPECT_EQ(dtcs(), marked);
}

TEST_F(OwedAnswers, AreNoneOfWhatIsRefusedWhenItsTimeOutHasPassed) {
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    qor.failure = Delivery::silent;
    qor.on<CommandDirectCtrl>([](const CommandDirectCtrl&) { return false; });
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(read("S2"), "false");
    qor.failure.reset();
    qor.refuseLate(*qor.all<CommandDirectCtrl>().front());
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
    EXPECT_EQ(read("S1"), "true");
    qor.refuseLate(*qor.all<CommandDirectCtrl>().front());  // once is enough
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(6); });
    EXPECT_EQ(read("S2"), marked);
}

TEST_F(OwedAnswers, ThatHaveComeAreNotPaidAgainByALateRefusal) {
    qor.failure = Delivery::silent;
    qor.on<CommandGetDTC>([](const CommandGetDTC&) { return false; });
    EXPECT_EQ(dtcs(), "false");
    qor.send(CommandGetDTC());
    EXPECT_EQ(dtcs(), "false");
    qor.failure.reset();
    qor.refuseLate(*qor.all<CommandGetDTC>().front());
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    EXPECT_EQ(dtcs(), marked);
}

TEST_F(OwedAnswers, OfManyTimedOutRequestsAreKnownAsFarAsThereIsRoom) {
    qor.failure = Delivery::silent;
    qor.on<CommandGetDTC>([](const CommandGetDTC&) { return false; });
    for (std::size_t i = 0; i < Loans::maxLoans + 1; ++i) EXPECT_EQ(dtcs(), "false");
    qor.failure.reset();
    for (const CommandGetDTC* const each : qor.all<CommandGetDTC>()) qor.refuseLate(*each);
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    EXPECT_EQ(dtcs(), marked);
    qor.send(CommandGetDTC());
    EXPECT_EQ(dtcs(), "true");
}

TEST_F(OwedAnswers, OfATextTooLongToBeKeptAreNotKnownByTheirRequest) {
    const std::string longest(Owed<std::string>::maxKeyChars, 'x');
    qor.failure = Delivery::silent;
    qor.on<CommandGetParamInfo>([](const CommandGetParamInfo&) { return false; });
    EXPECT_EQ(describe(longest), "false");
    EXPECT_EQ(describe(longest + "x"), "false");
    qor.failure.reset();
    for (const auto* const each : qor.all<CommandGetParamInfo>()) qor.refuseLate(*each);
    answersAfter<CommandGetParamInfo>(10, [&] {
        CommandGetParamInfo answer;
        answer.name = qor.last<CommandGetParamInfo>().name;
        answer.paramIndex = 8;
        qor.send(answer);
    });
    EXPECT_EQ(describe("Late"), marked);  // the longer one is still owed
    CommandGetParamInfo late;
    late.name = longest + "x";
    qor.send(late);
    EXPECT_EQ(describe("Late"), "true");
    EXPECT_EQ(describe(longest), "true");
}

TEST_F(OwedAnswers, AreForgottenWithTheQorThatOwesThem) {
    EXPECT_EQ(dtcs(), "false");
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(readMap(), "false");
    EXPECT_EQ(describe("Late"), "false");
    qor.newQor();
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
    answersAfter<CommandStaticParam>(10, [&] { tellMap(1); });
    qor.knows("Late", 8);
    EXPECT_EQ(dtcs(), "true");
    EXPECT_EQ(read("S1"), "true");
    EXPECT_EQ(readMap(), "true");
    EXPECT_EQ(describe("Late"), "true");
}

TEST_F(OwedAnswers, ThatAreNotOfParametersOutliveTheOpeningOfAModel) {
    EXPECT_EQ(kwp(), "false");
    EXPECT_EQ(dtcs(), "false");
    EXPECT_EQ(can(), "false");
    EXPECT_EQ(read("S1"), "false");
    EXPECT_EQ(readMap(), "false");
    EXPECT_TRUE(client().startEdit(protocol::StartEdit()));
    answersAfter<CommandExecKwp>(10, [&] { qor.send(CommandExecKwp()); });
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    answersAfter<CommandCanBusData>(10, [&] { qor.send(CommandCanBusData()); });
    answersAfter<CommandDirectCtrl>(10, [&] { tellValue(5); });
    answersAfter<CommandStaticParam>(10, [&] { tellMap(1); });
    EXPECT_EQ(kwp(), marked);
    EXPECT_EQ(dtcs(), marked);
    EXPECT_EQ(can(), marked);
    EXPECT_EQ(read("S1"), "true");
    EXPECT_EQ(readMap(), "true");
}

TEST_F(OwedAnswers, OfAQorThatComesWhileTheCommandWaitsAreItsOwn) {
    qor.beforeLeaving = [this](const IExternalCommand&) { qor.newQor(); };
    EXPECT_EQ(dtcs(), "false");
    qor.beforeLeaving = [](const auto&) {};
    answersAfter<CommandGetDTC>(10, [&] { qor.send(CommandGetDTC()); });
    EXPECT_EQ(dtcs(), marked);
}

}  // namespace

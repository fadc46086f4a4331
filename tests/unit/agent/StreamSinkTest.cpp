// Streams into sinks, which are given each value once.
#include "client/Arrivals.h"
#include "StreamDtcFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Notes what it is given as text: "Speed=3 (missed 2)".
class NotingSink final : public channel::ValueSink {
public:
    explicit NotingSink(std::vector<std::string> streamed) : names(std::move(streamed)) {}
    void take(const channel::Sample& sample) override {
        std::string text = names.at(sample.name) + "=" + ::testing::PrintToString(sample.value);
        if (sample.missed != 0) text += " (missed " + std::to_string(sample.missed) + ")";
        taken.push_back(text);
        arrivals.push_back(sample.arrival);
    }
    void notePreparation(const common::Verdict& verdict) override {
        preparations.push_back(verdict.cause);
    }
    std::vector<std::string> takeAll() { return std::exchange(taken, {}); }

    const std::vector<std::string> names;
    std::vector<std::string> taken;
    std::vector<common::Moment> arrivals;
    std::vector<qorcontrol::Cause> preparations;
};

class StreamSink : public StreamTest {
protected:
    std::shared_ptr<NotingSink> stream(const Names& names) {
        auto sink = std::make_shared<NotingSink>(names);
        channel->streams.add(sink, names);
        idleRound();
        return sink;
    }
};

TEST_F(StreamSink, GetsEachValueOnceAndNotAgainWhileItIsFresh) {
    const auto sink = stream({"Speed", "Load"});
    qor.sendValue(speed, 1);
    qor.sendValue(load, 2);
    idleRounds(3);
    EXPECT_THAT(sink->takeAll(), ElementsAre("Speed=1", "Load=2"));
    qor.sendValue(speed, 1);  // the same number, but another value
    idleRounds(3);
    EXPECT_THAT(sink->takeAll(), ElementsAre("Speed=1"));
}

TEST_F(StreamSink, GetsWhatCameWhileTheAgentWasAtARequest) {
    const auto sink = stream({"Speed"});
    for (const double value : {1, 2, 3}) qor.sendValue(speed, value);
    idleRound();
    EXPECT_THAT(sink->takeAll(), ElementsAre("Speed=1", "Speed=2", "Speed=3"));
}

TEST_F(StreamSink, LearnsHowManyValuesCouldNotBeKept) {
    const auto sink = stream({"Speed"});
    const int sent = static_cast<int>(Arrivals::keptCount) + 7;
    for (int i = 1; i <= sent; ++i) qor.sendValue(speed, i);
    idleRound();
    const auto taken = sink->takeAll();
    ASSERT_EQ(taken.size(), Arrivals::keptCount);
    EXPECT_EQ(taken.front(), "Speed=8 (missed 7)");
    EXPECT_EQ(taken.back(), "Speed=" + std::to_string(sent));
}

TEST_F(StreamSink, LearnsWhenAValueArrivedNotWhenItWasTaken) {
    const auto sink = stream({"Speed"});
    const common::Moment arrival = common::now();
    qor.sendValue(speed, 1);
    clock.advance(500);
    idleRound();
    EXPECT_THAT(sink->arrivals, ElementsAre(arrival));
}

TEST_F(StreamSink, GetsNothingThatCameBeforeItAndHasMissedNothingThen) {
    const auto first = stream({"Speed"});
    for (const double value : {1, 2, 3}) qor.sendValue(speed, value);
    const auto second = stream({"Speed"});
    EXPECT_THAT(second->takeAll(), IsEmpty());
    qor.sendValue(speed, 4);
    idleRound();
    EXPECT_THAT(second->takeAll(), ElementsAre("Speed=4"));
    EXPECT_THAT(first->takeAll(), ElementsAre("Speed=1", "Speed=2", "Speed=3", "Speed=4"));
}

TEST_F(StreamSink, GoesOnWithAnotherQorWithoutCountingItsValuesAsMissed) {
    const auto sink = stream({"Speed"});
    for (const double value : {1, 2, 3}) qor.sendValue(speed, value);
    idleRound();
    sink->takeAll();
    qor.newQor();
    qor.sendValue(-10, 1);  // its ECU is online
    clock.advance(400);
    qor.on<CommandKwpConnect>([this](const CommandKwpConnect&) { return qor.sendValue(-10, 1); });
    idleRounds(3);
    qor.sendValue(speed, 9);
    idleRound();
    EXPECT_THAT(sink->takeAll(), ElementsAre("Speed=9"));
}

TEST_F(StreamSink, GetsTheValuesOfAllNamesInTheOrderOfTheirArrival) {
    const auto sink = stream({"Speed", "Load"});
    for (const double value : {1, 2}) {
        qor.sendValue(load, value);
        qor.sendValue(speed, value);
    }
    idleRound();
    EXPECT_THAT(sink->takeAll(), ElementsAre("Load=1", "Speed=1", "Load=2", "Speed=2"));
}

TEST_F(StreamSink, GetsWhatCameRightBeforeQorBecameAnother) {
    const auto sink = stream({"Speed"});
    for (const double value : {1, 2}) qor.sendValue(speed, value);
    qor.newQor();
    idleRound();
    EXPECT_THAT(sink->takeAll(), ElementsAre("Speed=1", "Speed=2"));
}

TEST_F(StreamSink, HearsWhyQorIsNotSetUpForIt) {
    const auto sink = stream({"Speed"});
    qor.knows("NoSuch", protocol::ParamInfo::unknownIndex);
    const auto wrong = stream({"Speed", "NoSuch"});
    EXPECT_THAT(sink->preparations, ElementsAre(qorcontrol::Cause::none));
    EXPECT_THAT(wrong->preparations, ElementsAre(qorcontrol::Cause::unknownName));
}

TEST_F(StreamSink, ThatGoesWhileQorIsSetUpForItLeavesNothingBehind) {
    auto sink = std::make_shared<NotingSink>(Names{"Speed"});
    channel->streams.add(sink, {"Speed"});
    whileQorTakesAList([&] { channel->streams.remove(sink.get()); });
    idleRound();
    EXPECT_THAT(lists(), ElementsAre(ElementsAre(7u), IsEmpty()));
}

TEST_F(StreamSink, FillsTheValueCacheAsAQueueDoes) {
    const auto sink = stream({"Speed"});
    qor.sendValue(speed, 4);
    idleRound();
    EXPECT_THAT(cached("Speed").values, ElementsAre(4.0));
}

TEST_F(StreamSink, StopsWithItsRegistration) {
    const auto sink = stream({"Speed"});
    EXPECT_TRUE(channel->streams.remove(sink.get()));
    qor.sendValue(speed, 1);
    idleRounds(2);
    EXPECT_THAT(sink->takeAll(), IsEmpty());
}

class NotingDtcSink final : public channel::DtcSink {
public:
    void take(std::vector<QorControlFacade::DtcDescription> dtcs,
              bool mayBelongToEarlier) override {
        told += std::to_string(dtcs.size()) + (mayBelongToEarlier ? " codes? " : " codes ");
    }
    void noteSilence(const common::Verdict& verdict) override {
        told += "silence(" + std::to_string(static_cast<int>(verdict.cause)) + ") ";
        detail = verdict.detail;
    }

    std::string told;
    std::string detail;
};

/// The agent's one stream of trouble codes, into a sink.
class DtcStreamSink : public StreamDtcs {
protected:
    void streams(std::shared_ptr<channel::DtcSink> target) {
        post(channel::Kind::startDtcRead,
             std::make_shared<channel::CmdDataDtc>(std::move(target), 700u, 100u), nullptr);
        agent.step();
    }
    std::shared_ptr<NotingDtcSink> sink = std::make_shared<NotingDtcSink>();
};

TEST_F(DtcStreamSink, GetsTheListsAndIsToldOfSilence) {
    streams(sink);
    roundsEvery(100, 2);
    EXPECT_EQ(sink->told, "1 codes 1 codes ");
    qorRefuses();
    sink->told.clear();
    roundsEvery(100, 4);
    EXPECT_EQ(sink->told, "silence(5) ");
}

TEST_F(DtcStreamSink, IsToldHowAReadHasEndedThatTookLongerThanQorWasHeardOfBefore) {
    clock.msPerRead = 10;
    qor.on<CommandGetDTC>([](const CommandGetDTC&) { return true; });
    post(channel::Kind::startDtcRead, std::make_shared<channel::CmdDataDtc>(sink, 1500u, 100u),
         nullptr);
    agent.step();
    roundsEvery(100, 4);
    EXPECT_EQ(sink->told, "silence(6) ");
    EXPECT_EQ(sink->detail, "");
}

TEST_F(DtcStreamSink, IsToldThatQorIsNotAskedWhileItReportsNoEcu) {
    streams(sink);
    qor.forgetSent();
    qorAnsweredAgo(1000);
    for (int period = 0; period < 4; ++period) {
        idleRound();
        clock.advance(100);
    }
    EXPECT_THAT(reads(), IsEmpty());
    EXPECT_EQ(sink->told, "silence(12) ");
    EXPECT_THAT(sink->detail, ::testing::HasSubstr("is not asked"));
}

TEST_F(DtcStreamSink, IsToldOfAListThatMayBelongToAnEarlierReadAndNotOfTheNext) {
    qor.on<CommandGetDTC>([](const CommandGetDTC&) { return true; });
    clock.msPerRead = 10;  // else the read waits for ever
    streams(sink);
    roundsEvery(100, 1);
    clock.msPerRead = 0;
    qorHasCodes({{1, 2, "", "", "", ""}});
    roundsEvery(100, 1);
    EXPECT_EQ(sink->told, "1 codes? ");
    qor.send(CommandGetDTC());
    roundsEvery(100, 1);
    EXPECT_EQ(sink->told, "1 codes? 1 codes ");
}

TEST_F(DtcStreamSink, MakesRoomForAQueueAndEndsWithTheStream) {
    streams(sink);
    streamsEvery(100);
    EXPECT_EQ(roundsEvery(100, 1), "1 codes ");
    EXPECT_EQ(sink->told, "");
    streams(sink);
    post(channel::Kind::stopDtcRead, std::make_shared<channel::CmdDataDtc>(), nullptr);
    agent.step();
    sink->told.clear();
    EXPECT_EQ(roundsEvery(100, 3), "- - - ");
    EXPECT_EQ(sink->told, "");
}

}  // namespace

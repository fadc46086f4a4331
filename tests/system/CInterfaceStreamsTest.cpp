// Streams of the C interface: each value once, with its time and with what was missed before it.

#include <atomic>
#include <map>
#include <thread>

#include "CStation.h"

namespace {

constexpr unsigned amplyMs = 10000;
constexpr unsigned periodMs = 50;

class CStreams : public testing::TestWithParam<Transport> {
protected:
    CStation station{GetParam()};
    QorStream stream = nullptr;

    QorHandle qor() const { return station.handle; }
    bool startConnected() { return station.start() && station.connectEcu(periodMs); }

    int startBoth(unsigned slots) {
        const char* const names[] = {"EngineSpeed", "OilPressure"};
        return QorStartParamRead(qor(), names, 2, slots, &stream);
    }

    /// Takes what there is, again and again for a while; per name how many, and what was missed up
    /// to the last.
    struct Seen {
        std::map<unsigned, unsigned> got;
        std::map<unsigned, unsigned> missed;
        double lastMs = 0;
        bool isInOrder = true;
    };
    void drain(Seen& seen) {
        QorSample samples[16];
        unsigned count = 0;
        while (QorReadParamStream(stream, samples, 16, &count, 0) == QOR_OK) {
            for (unsigned i = 0; i < count; ++i) {
                ++seen.got[samples[i].name];
                seen.isInOrder =
                    seen.isInOrder && samples[i].missed >= seen.missed[samples[i].name];
                seen.missed[samples[i].name] = samples[i].missed;
                seen.lastMs = samples[i].timeMs;
            }
        }
    }
    unsigned sent(std::uint32_t index) const { return valuesSentIn(station.wire(), index); }
    /// From some time after the connect on QOR sends nothing any more.
    void stallAfter(unsigned ms) {
        station.script =
            R"({"at":[{"since":"connect","afterMs":)" + std::to_string(ms) + R"(,"stall":"*"}]})";
    }
    int startCodes(unsigned everyMs) { return QorStartDtcRead(qor(), 1000, everyMs); }
};

constexpr std::uint32_t engineSpeed = 4;  // indices in the model
constexpr std::uint32_t oilPressure = 13;

INSTANTIATE_TEST_SUITE_P(Over, CStreams, everyTransport(), transportName);

TEST_P(CStreams, WhatTheReaderGotAndWhatItMissedIsWhatQorSent) {
    stallAfter(2500);
    ASSERT_TRUE(startConnected());
    ASSERT_THAT(startBoth(8), IsCause(QOR_OK));
    Seen seen;
    Sleep(1200);  // far longer than eight slots last
    for (int i = 0; i < 60; ++i) {
        drain(seen);
        Sleep(20);
    }
    ASSERT_TRUE(eventually(amplyMs, [&] {
        const unsigned before = sent(engineSpeed);
        Sleep(300);
        drain(seen);
        return before != 0 && before == sent(engineSpeed);
    }));
    EXPECT_GT(seen.missed[0], 0u);
    EXPECT_EQ(sent(engineSpeed), seen.got[0] + seen.missed[0]);
    EXPECT_EQ(sent(oilPressure), seen.got[1] + seen.missed[1]);
    EXPECT_TRUE(seen.isInOrder);
    const double ageMs = QorNowMs() - seen.lastMs;
    EXPECT_GE(ageMs, 0);
    EXPECT_LT(ageMs, 20000);
}

TEST_P(CStreams, AReadWaitsForTheFirstValueAndNoLonger) {
    stallAfter(1500);
    ASSERT_TRUE(startConnected());
    ASSERT_THAT(startBoth(100), IsCause(QOR_OK));
    QorSample sample = {};
    unsigned count = 0;
    EXPECT_THAT(QorReadParamStream(stream, &sample, 1, &count, amplyMs), IsCause(QOR_OK));
    EXPECT_EQ(1u, count);
    ASSERT_TRUE(eventually(amplyMs, [&] {
        return QorReadParamStream(stream, &sample, 1, &count, 1000) == QOR_NOT_READY;
    }));
    count = 7;
    const unsigned took = elapsedMsOf([&] {
        EXPECT_THAT(QorReadParamStream(stream, &sample, 1, &count, 300), IsCause(QOR_NOT_READY));
    });
    EXPECT_GE(took, 280u);
    EXPECT_LT(took, 2000u);
    EXPECT_EQ(7u, count);
}

TEST_P(CStreams, ANameThatQorDoesNotKnowIsToldToTheReader) {
    ASSERT_TRUE(startConnected());
    const char* const names[] = {"EngineSpeed", "NoSuchParameter"};
    ASSERT_EQ(QorStartParamRead(qor(), names, 2, 10, &stream), QOR_OK);
    QorSample sample;
    unsigned count = 0;
    EXPECT_TRUE(eventually(amplyMs, [&] {
        return QorReadParamStream(stream, &sample, 1, &count, 100) == QOR_UNKNOWN_NAME;
    }));
}

TEST_P(CStreams, NamesThatQorRefusesAreToldWithTheSilence) {
    station.script = R"({"rules":[{"match":{"id":5},"action":{"answer":"refuse"}}]})";
    ASSERT_TRUE(startConnected());
    const char* const names[] = {"EngineSpeed"};
    ASSERT_EQ(QorStartParamRead(qor(), names, 1, 10, &stream), QOR_OK);
    QorSample sample;
    unsigned count = 0;
    EXPECT_TRUE(eventually(amplyMs, [&] {
        return QorReadParamStream(stream, &sample, 1, &count, 100) == QOR_NOT_READY &&
               lastCall().find("could not be registered: QOR refused") != std::string::npos;
    })) << lastCall();
}

TEST_P(CStreams, StoppingOneSendsItsReaderAwayAndLeavesTheOther) {
    ASSERT_TRUE(startConnected());
    ASSERT_THAT(startBoth(100), IsCause(QOR_OK));
    QorStream stopped = stream;
    const char* const silent[] = {"NoSuchParameter"};
    ASSERT_THAT(QorStartParamRead(qor(), silent, 1, 10, &stream), IsCause(QOR_OK));
    std::atomic<int> cause{QOR_OK};
    std::thread reader([&, waiting = stream] {
        QorSample sample = {};
        unsigned count = 0;
        cause = QorReadParamStream(waiting, &sample, 1, &count, 60000);
    });
    Sleep(200);
    EXPECT_THAT(QorStopParamRead(stream), IsCause(QOR_OK));
    reader.join();
    EXPECT_EQ(QOR_BAD_HANDLE, cause);
    EXPECT_THAT(QorStopParamRead(stream), IsCause(QOR_BAD_HANDLE));
    QorSample sample = {};
    unsigned count = 0;
    EXPECT_THAT(QorReadParamStream(stopped, &sample, 1, &count, amplyMs), IsCause(QOR_OK));
}

TEST_P(CStreams, ClosingTheHandleEndsItsStreamsAndSendsReadersAway) {
    ASSERT_TRUE(station.start());
    ASSERT_THAT(startBoth(10), IsCause(QOR_OK));
    ASSERT_THAT(startCodes(100), IsCause(QOR_OK));
    std::atomic<int> causes[2] = {{QOR_OK}, {QOR_OK}};
    std::thread values([&, waiting = stream] {
        QorSample sample = {};
        unsigned count = 0;
        causes[0] = QorReadParamStream(waiting, &sample, 1, &count, 60000);
    });
    std::thread codes([&, handle = qor()] {
        do causes[1] = QorReadDtcStream(handle, 60000, nullptr, 0, nullptr, nullptr, nullptr);
        while (causes[1] == QOR_OK || causes[1] == QOR_NO_DATA);
    });
    Sleep(200);
    EXPECT_EQ(QOR_OK, station.close());
    values.join();
    codes.join();
    EXPECT_EQ(QOR_BAD_HANDLE, causes[0]);
    EXPECT_THAT(causes[1].load(), testing::AnyOf(IsCause(QOR_WRONG_ORDER), IsCause(QOR_BAD_HANDLE),
                                                 IsCause(QOR_AGENT_ENDED)));
    EXPECT_THAT(QorStopParamRead(stream), IsCause(QOR_BAD_HANDLE));
}

TEST_P(CStreams, TroubleCodesComeAsTheNewestListWithTheNumberOfThoseMissed) {
    ASSERT_TRUE(startConnected());
    EXPECT_THAT(QorReadDtcStream(qor(), 0, nullptr, 0, nullptr, nullptr, nullptr),
                IsCause(QOR_WRONG_ORDER));
    ASSERT_THAT(startCodes(50), IsCause(QOR_OK));
    QorDtc codes[8] = {};
    unsigned count = 0;
    unsigned missed = 99;
    double timeMs = 0;
    EXPECT_THAT(QorReadDtcStream(qor(), amplyMs, codes, 2, &count, &timeMs, &missed),
                IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_EQ(5u, count);
    EXPECT_EQ(0u, missed);
    EXPECT_THAT(QorResultDtcs(qor(), codes, 8, &count), IsCause(QOR_OK));
    EXPECT_EQ(0x113u, codes[0].code);
    EXPECT_LT(QorNowMs() - timeMs, 5000);
    Sleep(1000);
    EXPECT_THAT(QorReadDtcStream(qor(), amplyMs, codes, 8, &count, &timeMs, &missed),
                IsCause(QOR_OK));
    EXPECT_GE(missed, 2u);
    EXPECT_THAT(QorStopDtcRead(qor()), IsCause(QOR_OK));
    EXPECT_THAT(QorReadDtcStream(qor(), 0, codes, 8, &count, &timeMs, &missed),
                IsCause(QOR_WRONG_ORDER));
}

TEST_P(CStreams, FourFailedReadsOfTroubleCodesAreTold) {
    station.script = R"({"rules":[{"match":{"id":9},"action":{"answer":"refuse"}}]})";
    ASSERT_TRUE(startConnected());
    ASSERT_THAT(startCodes(50), IsCause(QOR_OK));
    EXPECT_THAT(QorReadDtcStream(qor(), amplyMs, nullptr, 0, nullptr, nullptr, nullptr),
                IsCause(QOR_NO_DATA));
    EXPECT_THAT(lastSentence(), testing::EndsWith("because: QOR refused the request."));
}

// A list that came in place of one that never did is marked, the next ones only as long as that.
TEST_P(CStreams, AListOfTroubleCodesThatMayBelongToAnEarlierReadIsMarked) {
    station.settings.answerStyle = "separate";
    station.script = R"({"rules":[{"match":{"id":9,"nth":1},"action":{"answer":"ackOnly"}}]})";
    ASSERT_TRUE(startConnected());
    ASSERT_THAT(QorStartDtcRead(qor(), 300, 50), IsCause(QOR_OK));
    EXPECT_THAT(QorReadDtcStream(qor(), amplyMs, nullptr, 0, nullptr, nullptr, nullptr),
                IsCause(QOR_OK));
    EXPECT_EQ(1, QorLastMayBelongToEarlier());
}

}  // namespace

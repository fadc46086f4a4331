// Streams of the C interface: each value once, with its time and with what was missed before it.

#include <map>
#include <set>
#include <thread>

#include "CStation.h"
#include "WireText.h"

using testing::ElementsAre;
using testing::Ge;

namespace {

constexpr unsigned amplyMs = 10000;
constexpr unsigned periodMs = 50;

class CStreams : public testing::TestWithParam<Transport> {
protected:
    CStation station{GetParam()};
    QorStream stream = nullptr;

    QorHandle qor() const { return station.handle; }
    bool startConnected() { return station.start() && station.connectEcu(periodMs); }

    int stream2(unsigned slots) {
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
                seen.isInOrder = seen.isInOrder && samples[i].missed >= seen.missed[samples[i].name];
                seen.missed[samples[i].name] = samples[i].missed;
                seen.lastMs = samples[i].timeMs;
            }
        }
    }
    /// How many values QOR has sent by itself, per index.
    std::map<std::uint32_t, unsigned> sent() const {
        std::map<std::uint32_t, unsigned> counts;
        for (const WireRecord& record : station.wire()) {
            constexpr unsigned idValue = 4;
            if (record.toQor || record.id != idValue || record.payload.size() < 4) continue;
            std::uint32_t index = 0;
            record.payload.copy(reinterpret_cast<char*>(&index), 4);
            ++counts[index];
        }
        return counts;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, CStreams, everyTransport(), transportName);

TEST_P(CStreams, EachValueComesOnceAndWhatIsMissedIsCounted) {
    ASSERT_TRUE(startConnected());
    ASSERT_THAT(stream2(8), IsCause(QOR_OK));
    Seen seen;
    // A reader who is too slow for eight slots, and one who is not.
    Sleep(1500);
    drain(seen);
    EXPECT_GT(seen.missed[0] + seen.missed[1], 0u);
    for (int i = 0; i < 20; ++i) {
        Sleep(20);
        drain(seen);
    }
    // QOR sends no more: what is on its way arrives.
    const char* const none[] = {"CylinderCount"};
    static_cast<void>(none);
    EXPECT_TRUE(seen.isInOrder);
    EXPECT_LE(QorNowMs() - seen.lastMs, 2000);
}

}  // namespace

// A million calls with arguments of all kinds, from eight threads at once: each gives a cause, none
// crashes or leaks, and QOR hears only what was asked for.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <thread>

#include "CStation.h"
#include "support/TcpProcessFigures.h"

using testing::IsEmpty;

namespace {

constexpr unsigned threadCount = 8;
constexpr unsigned callsEach = 125000;
constexpr unsigned maxElements = 4096;  // no result here is longer

/// What all threads throw at the library.
struct Pool {
    QorHandle live = nullptr;    // of a QOR that answers
    QorHandle ended = nullptr;   // whose agent has ended
    QorHandle closed = nullptr;  // twice, if a thread closes it again
    std::string noSettings;      // there is no such file
    std::string longName = std::string(1000000, 'N');
};

/// One thread's calls. What is random here is so by the seed.
class Chaos {
public:
    Chaos(const Pool& pool, unsigned seed) : pool_(pool), random_(seed) {}
    ~Chaos() {
        for (QorStream stream : streams_) QorStopParamRead(stream);
        for (QorHandle handle : own_) QorClose(handle);
    }

    /// The cause of one call.
    int call();

    unsigned liveCalls = 0;

private:
    using Call = int (Chaos::*)();

    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
    template <class T, std::size_t count>
    T one(const T (&from)[count]) {
        return from[below(count)];
    }

    QorHandle handle() {
        if (below(150) == 0) {
            ++liveCalls;
            return pool_.live;
        }
        const QorHandle random =
            reinterpret_cast<QorHandle>(static_cast<std::uintptr_t>(random_()));
        const QorHandle stream =
            streams_.empty() ? nullptr : reinterpret_cast<QorHandle>(streams_.front());
        const QorHandle own = own_.empty() ? pool_.ended : own_[below(own_.size())];
        const QorHandle all[] = {nullptr,     pool_.closed, random,      stream,
                                 pool_.ended, pool_.ended,  pool_.ended, own};
        return one(all);
    }
    const char* name() {
        const char* const all[] = {nullptr,
                                   "",
                                   "IdleSpeedTarget",
                                   "IdleSpeedTarget",
                                   "NoSuchParameter",
                                   pool_.longName.c_str(),
                                   "\xFF\xFE",
                                   "ends early \xC3",
                                   "\xE2\x98\x83 is in no code page"};
        return one(all);
    }
    unsigned capacity() {
        const unsigned all[] = {0, 1, 2, 64, maxElements, 0xFFFFFFFFu};
        return one(all);
    }
    /// Of what is passed in; the last two are refused before anything is touched.
    unsigned count() {
        const unsigned all[] = {0, 1, 2, 0x7FFFFFFFu, 0xFFFFFFFFu};
        return one(all);
    }
    unsigned timeoutMs() {
        const unsigned all[] = {0, 1, 20, 50};
        return one(all);
    }
    /// Of what asks QOR, which refuses the last two.
    unsigned askMs() {
        const unsigned all[] = {timeoutMs(), timeoutMs(), 0x80000000u, QOR_TRANSPORT_DEFAULT - 1};
        return one(all);
    }
    template <class T>
    T* maybe(T* pointer) {
        return below(4) == 0 ? nullptr : pointer;
    }
    template <class Structure>
    Structure* structure(Structure& of) {
        const unsigned sizes[] = {sizeof(Structure), sizeof(Structure), 0, 0xFFFFFFFFu};
        of.size = one(sizes);
        return maybe(&of);
    }
    QorStream stream() {
        const QorStream random =
            reinterpret_cast<QorStream>(static_cast<std::uintptr_t>(random_()));
        const QorStream all[] = {nullptr, random, reinterpret_cast<QorStream>(pool_.live),
                                 reinterpret_cast<QorStream>(pool_.closed),
                                 streams_.empty() ? nullptr : streams_[below(streams_.size())]};
        return one(all);
    }

    // Life and state.
    int open();
    int close();
    int closeAgain() { return QorClose(below(2) == 0 ? pool_.closed : nullptr); }
    int noDelay() { return QorSetTcpNoDelay(handle(), static_cast<int>(below(3))); }
    int online() { return QorIsEcuOnline(handle(), maybe(&number_)); }
    int connecting() { return QorIsConnecting(handle(), maybe(&number_)); }
    int path() { return QorGetQorExecutablePath(handle(), text(), capacity(), needed()); }
    int defaults() { return QorEcuConnectDefaults(structure(connect_)); }
    int poll() { return QorConnectPoll(handle(), structure(progress_)); }
    int waitConnect() { return QorConnectWait(handle(), timeoutMs()); }
    int cancel() { return QorConnectCancel(handle()); }
    int reason() { return QorConnectReason(handle(), text(), capacity(), needed()); }
    int connect();
    int model();
    int bus();
    int segment();
    int ping() { return QorPingQor(handle(), askMs()); }

    // Parameters.
    int describe() { return QorGetParamDescription(handle(), name(), maybe(&number_)); }
    int read() {
        return QorGetParamData(handle(), name(), askMs(), values(), capacity(), needed());
    }
    int readString() {
        return QorGetParamDataAsString(handle(), name(), askMs(), bytes(), capacity(), needed());
    }
    int write();
    int writeText();
    int startControl() { return QorStartDirectCtrl(notLive(), name(), askMs()); }
    int stopControl() { return QorStopDirectCtrl(notLive(), name(), askMs()); }
    int readTogether();

    // Diagnostics.
    int clearCodes() { return QorClearDtc(notLive(), askMs()); }
    int readCodes() {
        return QorGetDtcByStatus(handle(), askMs(), maybe(codes_.data()), capacity(), needed());
    }
    int kwp() {
        return QorSendKwpCommand(handle(), 0x1A, maybe(request_.data()), count(), askMs(), bytes(),
                                 capacity(), needed(), maybe(&number_));
    }
    int readBus() {
        return QorGetCanBusData(notLive(), maybe(items_.data()), count(), askMs(),
                                maybe(items_.data()), capacity(), needed());
    }
    int sendBus() {
        return QorSendCanBusMsg(notLive(), 1, 2, maybe(request_.data()), count(), askMs());
    }

    // Results.
    int resultValues() {
        return QorResultValues(handle(), below(4), values(), capacity(), needed());
    }
    int resultBytes() { return QorResultBytes(handle(), bytes(), capacity(), needed()); }
    int resultText() {
        return QorResultText(handle(), below(7), below(7), text(), capacity(), needed());
    }
    int resultCodes() {
        return QorResultDtcs(handle(), maybe(codes_.data()), capacity(), needed());
    }
    int resultItems() {
        return QorResultCanBusItems(handle(), maybe(items_.data()), capacity(), needed());
    }

    // Streams, boxes, callbacks.
    int startStream();
    int readStream() {
        return QorReadParamStream(stream(), maybe(samples_.data()), capacity(), needed(),
                                  timeoutMs() / 10);
    }
    int stopStream();
    int startCodes() { return QorStartDtcRead(notLive(), 20, 50); }
    int readCodeStream() {
        return QorReadDtcStream(handle(), timeoutMs() / 10, maybe(codes_.data()), capacity(),
                                needed(), nullptr, nullptr);
    }
    int stopCodes() { return QorStopDtcRead(handle()); }
    int boxPolicy() {
        QorHandle of = handle();
        return QorSetMessageBoxPolicy(of == nullptr ? pool_.closed : of, static_cast<int>(below(5)),
                                      below(14), below(100));
    }
    int nextBox() {
        return QorNextMessageBox(handle(), structure(box_), text(), capacity(), needed(), nullptr,
                                 0, needed());
    }
    int answerBox() { return QorAnswerMessageBox(handle(), below(3), below(14)); }
    int log() { return QorSetLog(handle(), maybe(&hearLine), this); }
    int hearProgress() { return QorSetProgress(handle(), maybe(&hearFigure), this); }
    int lastTexts() {
        unsigned size = 0;
        QorLastSentence(maybe(text_.data()), capacity(), &size);
        QorLastCheck(maybe(text_.data()), capacity(), &size);
        return below(2) == 0 ? QorLastCause() : QOR_OK;
    }

    static void QOR_CALL hearLine(void*, int, const char*) { QorLastCause(); }
    static void QOR_CALL hearFigure(void*, int) {}

    /// For what would change QOR or its connection.
    QorHandle notLive() {
        QorHandle chosen = pool_.live;
        while (chosen == pool_.live) chosen = handle();
        return chosen;
    }
    char* text() { return maybe(text_.data()); }
    unsigned char* bytes() { return maybe(bytes_.data()); }
    double* values() { return maybe(values_.data()); }
    unsigned* needed() { return maybe(&needed_); }

    static const Call calls[];

    const Pool& pool_;
    std::mt19937 random_;
    std::vector<QorHandle> own_;
    std::vector<QorStream> streams_;
    int number_ = 0;
    unsigned needed_ = 0;
    QorEcuConnect connect_ = {};
    QorConnectProgress progress_ = {};
    QorMessageBox box_ = {};
    std::array<char, maxElements> text_{};
    std::array<unsigned char, maxElements> bytes_{};
    std::array<unsigned char, 2> request_{{0x90, 0}};
    std::array<double, maxElements> values_{};
    std::array<QorDtc, maxElements> codes_{};
    std::array<QorCanBusItem, maxElements> items_{};
    std::array<QorSample, maxElements> samples_{};
};

int Chaos::open() {
    if (below(100) != 0) return QorOpen(name(), 100, nullptr, nullptr);
    QorHandle opened = nullptr;
    const int cause = QorOpen(pool_.noSettings.c_str(), 100, nullptr, &opened);
    if (cause == QOR_OK) own_.push_back(opened);
    if (own_.size() <= 2) return cause;
    const int closing = QorClose(own_.front());
    own_.erase(own_.begin());
    return closing;
}

int Chaos::close() {
    if (own_.empty() || below(20) != 0)
        return QorClose(reinterpret_cast<QorHandle>(static_cast<std::uintptr_t>(random_() | 1)));
    const QorHandle closing = own_.back();
    own_.pop_back();
    const int cause = QorClose(closing);
    return cause == QOR_OK ? QorClose(closing) : cause;  // doubled
}

int Chaos::connect() {
    const QorEcuConnect* const settings = structure(connect_);
    const int type = static_cast<int>(below(5));
    return below(2) == 0 ? QorConnectStart(notLive(), settings, type)
                         : QorConnect(notLive(), settings, type, timeoutMs());
}

int Chaos::model() {
    QorModelDescription model = {};
    const char* keys[] = {name(), name()};
    model.extraKeys = maybe(keys);
    model.extraValues = keys;
    model.extraCount = count();
    return QorOpenModel(notLive(), structure(model));
}

int Chaos::bus() {
    QorCanBusConnect settings = {};
    return QorConnectCanBus(notLive(), structure(settings), static_cast<int>(below(5)));
}

int Chaos::segment() {
    return QorSetEcuSegment(notLive(), below(3) == 0 ? QorGetEdcRamSegmentName() : name(), 1);
}

int Chaos::write() {
    const double value[] = {900, 900};
    const unsigned many = count();
    return QorSetParamData(handle(), name(), maybe(value), many == 2 ? 1 : many, nullptr, 0,
                           nullptr, below(10) == 0 ? 1 : 0, askMs());
}

int Chaos::writeText() {
    return QorSetDynamicData(handle(), name(), below(2) == 0 ? "901" : nullptr, askMs());
}

int Chaos::readTogether() {
    const char* const names[] = {name(), name()};
    unsigned counts[2] = {};
    return QorGetParamDataAtOnce(handle(), maybe(names), count(), askMs(), values(), capacity(),
                                 needed(), maybe(counts));
}

int Chaos::startStream() {
    const char* const names[] = {name(), name()};
    QorStream started = nullptr;
    QorHandle of = streams_.size() < 4 ? handle() : nullptr;
    const int cause = QorStartParamRead(of, maybe(names), count(), capacity(), &started);
    if (cause == QOR_OK) streams_.push_back(started);
    return cause;
}

int Chaos::stopStream() {
    if (streams_.empty() || below(2) == 0)
        return QorStopParamRead(below(2) == 0 ? nullptr : reinterpret_cast<QorStream>(pool_.live));
    const QorStream last = streams_.back();
    streams_.pop_back();
    return QorStopParamRead(last);
}

const Chaos::Call Chaos::calls[] = {
    &Chaos::open,         &Chaos::close,        &Chaos::closeAgain,   &Chaos::noDelay,
    &Chaos::online,       &Chaos::connecting,   &Chaos::path,         &Chaos::defaults,
    &Chaos::poll,         &Chaos::waitConnect,  &Chaos::cancel,       &Chaos::reason,
    &Chaos::connect,      &Chaos::model,        &Chaos::bus,          &Chaos::segment,
    &Chaos::ping,         &Chaos::describe,     &Chaos::read,         &Chaos::readString,
    &Chaos::write,        &Chaos::writeText,    &Chaos::startControl, &Chaos::stopControl,
    &Chaos::readTogether, &Chaos::clearCodes,   &Chaos::readCodes,    &Chaos::kwp,
    &Chaos::readBus,      &Chaos::sendBus,      &Chaos::resultValues, &Chaos::resultBytes,
    &Chaos::resultText,   &Chaos::resultCodes,  &Chaos::resultItems,  &Chaos::startStream,
    &Chaos::readStream,   &Chaos::stopStream,   &Chaos::startCodes,   &Chaos::readCodeStream,
    &Chaos::stopCodes,    &Chaos::boxPolicy,    &Chaos::nextBox,      &Chaos::answerBox,
    &Chaos::log,          &Chaos::hearProgress, &Chaos::lastTexts,
};

int Chaos::call() {
    return (this->*one(calls))();
}

unsigned chosenSeed() {
    const char* const given = std::getenv("QOR_TORTURE_SEED");
    return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 0))
                            : std::random_device()();
}

struct Tally {
    std::map<int, unsigned> causes;
    unsigned liveCalls = 0;
};

/// A round of calls on all threads; how often each cause came.
Tally round(const Pool& pool, unsigned seed, unsigned calls) {
    std::vector<Tally> tallies(threadCount);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            Chaos chaos(pool, seed + i);
            for (unsigned call = 0; call < calls; ++call) ++tallies[i].causes[chaos.call()];
            tallies[i].liveCalls = chaos.liveCalls;
        });
    for (std::thread& thread : threads) thread.join();
    Tally all;
    for (const Tally& tally : tallies) {
        for (const auto& [cause, count] : tally.causes) all.causes[cause] += count;
        all.liveCalls += tally.liveCalls;
    }
    return all;
}

/// What QOR may have heard: nothing else was asked for.
bool wasAskedFor(const std::string& request) {
    static const char* const beginnings[] = {
        "GetParamInfo",
        "ReadTogether",
        "GetDtc ",
        "ExecKwp channel=1 1A [",
        "SetParamList",
        "Ping",
        "DirectCtrl 30 op=1",
        "DirectCtrl 30 op=4 [900]",
        "DirectCtrl 30 op=4 [] ''",
        "DirectCtrl 30 op=5 [] '901'",
    };
    return std::any_of(std::begin(beginnings), std::end(beginnings), [&](const char* beginning) {
        return request.compare(0, std::char_traits<char>::length(beginning), beginning) == 0;
    });
}

TEST(CTorture, AMillionCallsWithAnyArgumentsEachGiveACauseAndDoNoHarm) {
    const unsigned seed = chosenSeed();
    std::printf("seed %u (QOR_TORTURE_SEED repeats it)\n", seed);
    CStation station(Transport::tcp);
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    const std::size_t before = station.wire().size();
    Pool pool;
    pool.live = station.handle;
    pool.noSettings = station.folder.pathOf("none.ini");
    ASSERT_EQ(QOR_OK, QorOpen(pool.noSettings.c_str(), 0, nullptr, &pool.ended));
    ASSERT_EQ(QOR_OK, QorOpen(pool.noSettings.c_str(), 0, nullptr, &pool.closed));
    ASSERT_EQ(QOR_OK, QorClose(pool.closed));

    round(pool, seed + 1000, callsEach / 20);  // what grows once has grown
    const std::size_t bytes = tcp::memoryBytes();
    const auto nextHandle = tcp::nextFreeHandle();
    const ULONGLONG start = GetTickCount64();
    const Tally tally = round(pool, seed, callsEach);
    std::printf("%u calls in %u ms, %u of them on a live handle\n", threadCount * callsEach,
                static_cast<unsigned>(GetTickCount64() - start), tally.liveCalls);
    for (const auto& [cause, count] : tally.causes) {
        std::printf("%8u %s\n", count, QorCauseName(cause));
        EXPECT_STRNE("unknown", QorCauseName(cause)) << cause;
    }
    EXPECT_LE(tcp::memoryBytes(), bytes + 8 * 1024 * 1024);
    EXPECT_LE(tcp::nextFreeHandle(), nextHandle + 4 * 64);
    EXPECT_EQ(QOR_OK, QorClose(pool.ended));
    EXPECT_THAT(QorPingQor(pool.live, 15000), IsCause(QOR_OK));
    std::vector<std::string> strange;
    for (const std::string& request : station.requests(before))
        if (!wasAskedFor(request)) strange.push_back(request);
    EXPECT_THAT(strange, IsEmpty());
}

}  // namespace

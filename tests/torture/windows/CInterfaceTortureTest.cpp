// The DLL of the C interface: the calls of the system in its import table fail once in each of its
// functions, memory on the host's own thread too. None of that leaves the library: a cause comes
// back. (An agent without memory ends at once and leaves what it has, as it does natively.)

// These stand before windows.h.
#include <winsock2.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <utility>

#include "Campaign.h"
#include "QorControl.h"
#include "QorProcesses.h"
#include "StationSettings.h"
#include "support/TempFolder.h"

namespace torture {
namespace {

constexpr const char* library = "QorControlC.dll";
constexpr unsigned timeoutMs = 1000;
constexpr unsigned pings = 20;

/// A host, with what its calls give it.
struct CHost {
    explicit CHost(std::string settings) : settingsPath(std::move(settings)) {}
    CHost(const CHost&) = delete;
    CHost& operator=(const CHost&) = delete;
    ~CHost() {
        if (handle != nullptr) {
            EXPECT_EQ(QOR_OK, QorClose(handle));
        }
    }

    int open() { return QorOpen(settingsPath.c_str(), 20, nullptr, &handle); }
    /// QOR_OK, or why QOR cannot be asked any more.
    int awaitAnswer() const {
        int cause = QOR_NOT_READY;
        for (unsigned ping = 1; ping <= pings && cause != QOR_OK && cause != QOR_AGENT_ENDED;
             ++ping)
            cause = QorPingQor(handle, ping * timeoutMs);
        return cause;
    }
    int connect() { return QorConnect(handle, nullptr, QOR_CONNECT_DEFAULT, 30000); }

    const std::string settingsPath;
    QorHandle handle = nullptr;
    QorStream stream = nullptr;
    std::array<double, 64> values{};
    std::array<unsigned char, 64> bytes{};
    unsigned needed = 0;
};

struct Function {
    const char* name;
    bool (*work)(CHost& host);  ///< whether it has worked
};

constexpr const char* names[] = {"EngineSpeed", "EngineLoad", "MaxVehicleSpeed"};

bool readText(CHost& host) {
    int threeArrays = 0;
    char text[64];
    return QorGetParamDescription(host.handle, "EngineSpeed", &threeArrays) == QOR_OK &&
           QorResultText(host.handle, 0, 2, text, sizeof text, &host.needed) == QOR_OK;
}

bool readMap(CHost& host) {
    const int cause =
        QorGetParamData(host.handle, "LambdaMap", timeoutMs, host.values.data(), 1, &host.needed);
    return (cause == QOR_OK || cause == QOR_RESULT_TOO_LARGE) &&
           QorResultValues(host.handle, 1, host.values.data(), 64, &host.needed) == QOR_OK;
}

bool readAtOnce(CHost& host) {
    unsigned counts[3];
    return QorGetParamDataAtOnce(host.handle, names, 3, timeoutMs, host.values.data(), 64,
                                 &host.needed, counts) == QOR_OK;
}

bool write(CHost& host) {
    const double value = 120;
    return QorSetParamData(host.handle, names[2], &value, 1, nullptr, 0, nullptr, 0, timeoutMs) ==
               QOR_OK &&
           QorSetDynamicData(host.handle, names[2], "130", timeoutMs) == QOR_OK;
}

bool control(CHost& host) {
    return QorStartDirectCtrl(host.handle, "ThrottleActuator", timeoutMs) == QOR_OK &&
           QorStopDirectCtrl(host.handle, "ThrottleActuator", timeoutMs) == QOR_OK;
}

bool readCodes(CHost& host) {
    QorDtc codes[64];
    return QorGetDtcByStatus(host.handle, timeoutMs, codes, 64, &host.needed) == QOR_OK &&
           QorClearDtc(host.handle, timeoutMs) == QOR_OK;
}

bool sendKwp(CHost& host) {
    const unsigned char data[] = {2, 0, 10};
    int failed = 0;
    return host.connect() == QOR_OK &&
           QorSendKwpCommand(host.handle, 0x27, data, 3, timeoutMs, host.bytes.data(), 64,
                             &host.needed, &failed) == QOR_OK;
}

bool useBus(CHost& host) {
    const QorCanBusConnect bus = {sizeof bus, 500000, 1, 0};
    const QorCanBusItem wanted = {0x201, 5};
    QorCanBusItem items[4];
    return QorConnectCanBus(host.handle, &bus, QOR_CONNECT_DEFAULT) == QOR_OK &&
           QorGetCanBusData(host.handle, &wanted, 1, timeoutMs, items, 4, &host.needed) == QOR_OK &&
           QorSendCanBusMsg(host.handle, 0x200, 7, host.bytes.data(), 3, timeoutMs) == QOR_OK;
}

bool openModel(CHost& host) {
    const char* const more = "more";
    const QorModelDescription model = {sizeof model, 1, "engine.sdm", 0,     "data.hex", 0,
                                       nullptr,      0, &more,        &more, 1};
    return QorOpenModel(host.handle, &model) == QOR_OK &&
           QorSetEcuSegment(host.handle, QorGetEdcRamSegmentName(), 1) == QOR_OK;
}

bool connectInBackground(CHost& host) {
    QorConnectProgress progress = {};
    progress.size = sizeof progress;
    char reason[200];
    return QorConnectStart(host.handle, nullptr, QOR_CONNECT_DEFAULT) == QOR_OK &&
           QorConnectPoll(host.handle, &progress) == QOR_OK &&
           QorConnectWait(host.handle, 30000) == QOR_OK &&
           QorConnectReason(host.handle, reason, sizeof reason, &host.needed) == QOR_OK;
}

bool streamValues(CHost& host) {
    QorSample samples[16];
    unsigned count = 0;
    return host.connect() == QOR_OK &&
           QorStartParamRead(host.handle, names, 2, 100, &host.stream) == QOR_OK &&
           QorReadParamStream(host.stream, samples, 16, &count, 5000) == QOR_OK &&
           QorStopParamRead(host.stream) == QOR_OK;
}

bool streamCodes(CHost& host) {
    QorDtc codes[64];
    double timeMs = 0;
    unsigned missed = 0;
    return host.connect() == QOR_OK && QorStartDtcRead(host.handle, timeoutMs, 5) == QOR_OK &&
           QorReadDtcStream(host.handle, 5000, codes, 64, &host.needed, &timeMs, &missed) ==
               QOR_OK &&
           QorStopDtcRead(host.handle) == QOR_OK;
}

bool hearAndDecide(CHost& host) {
    QorMessageBox box = {};
    box.size = sizeof box;
    char text[200], caption[200];
    unsigned captionNeeded = 0;
    return QorSetLog(
               host.handle, [](void*, int, const char*) {}, nullptr) == QOR_OK &&
           QorSetProgress(
               host.handle, [](void*, int) {}, nullptr) == QOR_OK &&
           QorSetMessageBoxPolicy(host.handle, QOR_BOX_ANSWER, QOR_CHOICE_OK, 1000) == QOR_OK &&
           QorNextMessageBox(host.handle, &box, text, sizeof text, &host.needed, caption,
                             sizeof caption, &captionNeeded) == QOR_NOT_READY &&
           host.connect() == QOR_OK;
}

bool askOfItself(CHost& host) {
    int is = 0;
    return QorIsEcuOnline(host.handle, &is) == QOR_OK &&
           QorIsConnecting(host.handle, &is) == QOR_OK &&
           QorSetTcpNoDelay(host.handle, 1) == QOR_OK;
}

bool close(CHost& host) {
    return QorClose(std::exchange(host.handle, nullptr)) == QOR_OK;
}

constexpr Function functions[] = {
    {"ping", [](CHost& host) { return QorPingQor(host.handle, timeoutMs) == QOR_OK; }},
    {"describe", &readText},
    {"read three arrays", &readMap},
    {"read as string",
     [](CHost& host) {
         return QorGetParamDataAsString(host.handle, names[0], timeoutMs, host.bytes.data(), 64,
                                        &host.needed) == QOR_OK;
     }},
    {"read at once", &readAtOnce},
    {"write", &write},
    {"direct control", &control},
    {"trouble codes", &readCodes},
    {"KWP", &sendKwp},
    {"CAN", &useBus},
    {"model and segment", &openModel},
    {"connect in the background", &connectInBackground},
    {"value stream", &streamValues},
    {"trouble code stream", &streamCodes},
    {"log, progress and boxes", &hearAndDecide},
    {"state", &askOfItself},
    {"close", &close},
};

class CTrial final : public Trial {
public:
    /// `function`: null for the start of a host.
    CTrial(const Function* function, const std::string& settings)
        : function_(function), host_(settings) {}

    bool begin() {
        return function_ == nullptr || (host_.open() == QOR_OK && host_.awaitAnswer() == QOR_OK);
    }
    bool run() override {
        if (function_ != nullptr) return function_->work(host_);
        return host_.open() == QOR_OK && host_.awaitAnswer() == QOR_OK;
    }
    void expectNextWorks(const Site& failed) override {
        if (host_.handle == nullptr) return;
        const int cause = host_.awaitAnswer();
        const bool wasSetting = std::string(functionOf(failed)).find("GetPrivateProfile") == 0;
        if (cause == QOR_OK || (wasSetting && cause == QOR_NO_CONNECTION)) return;
        EXPECT_THAT(cause, testing::AnyOf(QOR_AGENT_ENDED, QOR_SYSTEM_FAILURE));
        char sentence[500] = "";
        unsigned needed = 0;
        EXPECT_EQ(QOR_OK, QorLastSentence(sentence, sizeof sentence, &needed));
        EXPECT_STRNE("", sentence);
    }

private:
    const Function* const function_;
    CHost host_;
};

class CInterfaceTorture : public testing::TestWithParam<Transport> {
protected:
    CInterfaceTorture() {
        settings.executable.clear();  // QOR is there and stays
        folder.write("settings.ini", settings.text());
        EXPECT_TRUE(settings.startQor(settingsPath));
    }
    ~CInterfaceTorture() override { qor::killAll(); }

    Deed deedOf(const char* name, const Function* function) const {
        const auto begin = [this, function]() -> std::unique_ptr<Trial> {
            auto trial = std::make_unique<CTrial>(function, settingsPath);
            return trial->begin() ? std::move(trial) : nullptr;
        };
        return {name, false, begin};
    }
    std::vector<Deed> deeds() const {
        std::vector<Deed> all{deedOf("start", nullptr)};
        for (const Function& function : functions) all.push_back(deedOf(function.name, &function));
        return all;
    }
    /// The run-time library inside of the module allocates for all objects from one place; what it
    /// needs to throw it takes from others, and has a reserve.
    std::size_t placeOfNew(const Deed& deed);

    TempFolder folder;
    StationSettings settings{GetParam(), folder.path()};
    const std::string settingsPath = folder.pathOf("settings.ini");
    Campaign campaign{library};
};

INSTANTIATE_TEST_SUITE_P(Over, CInterfaceTorture, everyTransport(), transportName);

std::size_t CInterfaceTorture::placeOfNew(const Deed& deed) {
    std::map<std::size_t, unsigned> calls;
    for (const Site& site : campaign.sitesOf(deed))
        if (functionOf(site) == std::string("malloc")) ++calls[site.place];
    const auto most = std::max_element(calls.begin(), calls.end(), [](auto& one, auto& other) {
        return one.second < other.second;
    });
    return most == calls.end() ? 0 : most->first;
}

/// Of the allocations of a function each one, or the first, second, fourth, eighth ...
bool isPlayed(unsigned earlier) {
    const unsigned number = earlier + 1;
    return isExhaustive() || (number & (number - 1)) == 0;
}

TEST_P(CInterfaceTorture, NothingIsThrownCrashesHangsOrLeavesHandlesWhereACallOfTheSystemFails) {
    using Share = Campaign::Share;
    const std::vector<Deed> all = deeds();
    const unsigned callsPerPlace = campaign.callsPerPlace;
    campaign.callsPerPlace = 500;
    const std::size_t placeOfNew = this->placeOfNew(all.front());
    ASSERT_NE(placeOfNew, 0u);
    campaign.share = [=](const Site& site) {
        if (functionOf(site) != std::string("malloc"))
            return site.earlier < callsPerPlace ? Share::first : Share::none;
        return site.place == placeOfNew && isPlayed(site.earlier) ? Share::each : Share::none;
    };
    campaign.playAll(all);
    CHost host(settingsPath);
    EXPECT_EQ(host.open(), QOR_OK);
    EXPECT_EQ(host.awaitAnswer(), QOR_OK) << "another handle does not work";
}

TEST(CInterfaceTortureImports, AreAllSaidToBeFallibleOrNot) {
    EXPECT_THAT(unknownImports(library), testing::IsEmpty());
    std::printf("%zu imports are made to fail\n", tortured(library));
}

}  // namespace
}  // namespace torture

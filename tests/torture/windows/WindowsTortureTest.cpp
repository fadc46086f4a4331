// The real DLL, of whose import table each call that can fail fails once, in each operation, before
// the simulated QOR.

// These stand before windows.h.
#include <winsock2.h>

#include <gmock/gmock.h>

#include <cstdio>

#include "Campaign.h"
#include "Operations.h"
#include "qorcontrol/Outcome.h"
#include "QorProcesses.h"
#include "StationSettings.h"
#include "support/TempFolder.h"
#include "Waiting.h"

namespace torture {
namespace {

using qorcontrol::Cause;

constexpr const char* library = "QorControlFacade.dll";

/// What a host is told when a start fails for this reason.
struct Text {
    const char* function;
    unsigned int earlier;
    const char* words;
    bool overWindowsOnly;
};

constexpr Text texts[] = {
    {"CreateProcessA", 0, "cannot be started, code: 2", false},
    {"CreateWindowExA", 0, "Unable to create External Operating CWnd", true},
    {"GetFileAttributesA", 0, "settings file for QOR 'external operation mode' is not valid",
     false},
    {"RegisterClassA", 0, "Unable to create External Operating CWnd", true},
    {"_access", 0, "settings file for QOR 'external operation mode' is not valid", false},
    {"_beginthreadex", 0, "the agent's thread could not be started, code: 8", false},
    {"_beginthreadex", 1, "Unable to start External Operating socket thread, code: 8", false},
};

/// Null if the library goes on without it.
const char* textOf(const Site& site, Transport transport) {
    for (const Text& text : texts)
        if (std::string(functionOf(site)) == text.function && site.earlier == text.earlier &&
            (transport == Transport::window || !text.overWindowsOnly))
            return text.words;
    return nullptr;
}

/// A facade that works does the next operation, one whose agent has ended says why it does not.
class FacadeTrial final : public Trial {
public:
    FacadeTrial(const Operation& operation, const std::string& settings, Transport transport)
        : operation_(operation), host_(settings, "LambdaMap"), transport_(transport) {}

    bool begin() { return !operation_.needsFacade || host_.start(); }
    bool run() override {
        const bool worked = operation_.run(host_);
        EXPECT_EQ("", complaintAbout(operation_, worked ? Result::worked : Result::failed));
        return worked;
    }
    void expectNextWorks(const Site& failed) override {
        const bool answers = host_.facade == nullptr || host_.awaitAnswer();
        const qorcontrol::Outcome outcome = qorcontrol::lastOutcome();
        const char* const words = hasFailed() ? textOf(failed, transport_) : nullptr;
        if (words != nullptr) {
            EXPECT_THAT(outcome.sentence, testing::HasSubstr(words));
        }
        if (answers) return;
        // A key that cannot be read has its default: another port or title, where nobody is.
        const bool wasSetting = std::string(functionOf(failed)).find("GetPrivateProfile") == 0;
        if (wasSetting && outcome.cause == Cause::noConnection) return;
        EXPECT_THAT(outcome.cause, testing::AnyOf(Cause::agentEnded, Cause::systemFailure));
        EXPECT_FALSE(outcome.sentence.empty());
        EXPECT_FALSE(outcome.check.empty());
    }

private:
    const Operation& operation_;
    Host host_;
    const Transport transport_;
};

class WindowsTorture : public testing::TestWithParam<Transport> {
protected:
    WindowsTorture() {
        settings.executable.clear();  // QOR is there and stays
        folder.write("settings.ini", settings.text());
        folder.write("launch.ini", StationSettings(GetParam(), folder.path()).text());
        folder.write("host.cfg", "enabled=1\n");
        EXPECT_TRUE(settings.startQor(settingsPath));
        addOperations();
        // Those of memory are played natively. An agent that runs out of it is left as it is, with
        // all that it holds, so here each would look like a leak.
        campaign.share = [](const Site& site) {
            const bool isAllocation = functionOf(site) == std::string("_Znwj");
            return isAllocation ? Campaign::Share::none : Campaign::Share::first;
        };
    }
    ~WindowsTorture() override { qor::killAll(); }

    void addOperations();
    std::vector<Deed> deeds() const;

    TempFolder folder;
    StationSettings settings{GetParam(), folder.path()};
    const std::string settingsPath = folder.pathOf("settings.ini");
    Campaign campaign{library};
    std::vector<Operation> operations_ = operations();
};

INSTANTIATE_TEST_SUITE_P(Over, WindowsTorture, everyTransport(), transportName);

constexpr const char* launch = "start of QOR";

/// Starts of other hosts than those of all operations: with a trace, with settings that are looked
/// for beside the program, with a QOR of its own.
void WindowsTorture::addOperations() {
    const auto startOf = [this](const char* settingsName, const char* hostName) {
        return [path = folder.pathOf(settingsName), own = folder.pathOf(hostName)](Host& host) {
            host.facade = std::make_unique<QorControlFacade>(path, nullptr, 20, own);
            return host.awaitAnswer();
        };
    };
    const auto relative = [](Host& host) {
        host.facade = std::make_unique<QorControlFacade>("no\\such\\file.ini", nullptr, 20, "");
        return !host.awaitAnswer();
    };
    operations_.push_back({"start with a trace", {}, false, startOf("settings.ini", "host.exe")});
    operations_.push_back({"start with a relative path", {}, false, relative});
    operations_.push_back({launch, {}, false, startOf("launch.ini", "host.exe")});
}

std::vector<Deed> WindowsTorture::deeds() const {
    std::vector<Deed> all;
    for (const Operation& operation : operations_) {
        const auto begin = [this, &operation]() -> std::unique_ptr<Trial> {
            auto trial = std::make_unique<FacadeTrial>(operation, settingsPath, GetParam());
            return trial->begin() ? std::move(trial) : nullptr;
        };
        all.push_back({operation.name, operation.name == launch, begin});
    }
    return all;
}

TEST_P(WindowsTorture, NothingCrashesHangsOrLeavesHandlesWhereACallOfTheSystemFails) {
    const std::vector<Deed> all = deeds();
    // A class is registered once in the life of a process: it is the first that must fail.
    campaign.play(all.front(), anywhere("RegisterClassA"));
    EXPECT_EQ(campaign.notMet(), 0) << "nothing has registered a class";
    campaign.playAll(all);
    Host host(settingsPath);
    EXPECT_TRUE(host.start()) << "another facade does not work";
}

TEST(WindowsTortureImports, AreAllSaidToBeFallibleOrNot) {
    EXPECT_THAT(unknownImports(library), testing::IsEmpty());
    std::printf("%zu imports are made to fail\n", tortured(library));
}

}  // namespace
}  // namespace torture

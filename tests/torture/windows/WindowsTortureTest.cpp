// The real DLL, of whose import table each call that can fail fails once, in each operation, before
// the simulated QOR.

// These stand before windows.h.
#include <winsock2.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "Faults.h"
#include "Operations.h"
#include "qorcontrol/Outcome.h"
#include "QorProcesses.h"
#include "StationSettings.h"
#include "support/HandleCensus.h"
#include "support/ImportTable.h"
#include "support/TempFolder.h"
#include "Waiting.h"
#include "Watchdog.h"

namespace torture {
namespace {

using qorcontrol::Cause;

constexpr const char* library = "QorControlFacade.dll";
constexpr unsigned int longestOperationMs = 60000;

/// Of each operation, in place of the first one that comes to a place.
bool isExhaustive() {
    return std::getenv("QOR_TORTURE") != nullptr;
}

int total(const HandleCensus& census) {
    int sum = 0;
    for (const auto& [type, count] : census) sum += count;
    return sum;
}

struct Case {
    const Operation* operation;
    Site site;
};

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

constexpr const char* launch = "start of QOR";

class WindowsTorture : public testing::TestWithParam<Transport> {
protected:
    WindowsTorture() {
        settings.executable.clear();  // QOR is there and stays
        folder.write("settings.ini", settings.text());
        folder.write("launch.ini", StationSettings(GetParam(), folder.path()).text());
        folder.write("host.cfg", "enabled=1\n");
        EXPECT_TRUE(settings.startQor(settingsPath));
        addOperations();
    }
    ~WindowsTorture() override { qor::killAll(); }

    void addOperations();
    std::vector<Site> sitesOf(const Operation& operation);
    void collect();
    void play(const Case& each);
    void playAll();

private:
    bool playOnce(const Case& each);
    void expectNextWorks(const Host& host, const Site& failed) const;

    TempFolder folder;
    StationSettings settings{GetParam(), folder.path()};
    const std::string settingsPath = folder.pathOf("settings.ini");
    Watchdog watchdog;
    Replaced replaced{library};
    std::vector<Operation> operations_ = operations();
    std::vector<Case> cases_;
    std::map<std::string, int> perFunction_;
    int notMet_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Over, WindowsTorture, everyTransport(), transportName);

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

std::vector<Site> WindowsTorture::sitesOf(const Operation& operation) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        Host host(settingsPath, "LambdaMap");
        if (operation.needsFacade && !host.start()) continue;
        record(isExhaustive() ? 3 : 1);
        const bool worked = operation.run(host);
        rest();
        if (worked) return recorded();
    }
    ADD_FAILURE() << operation.name
                  << " does not work even if nothing fails: " << qorcontrol::lastOutcome().sentence;
    return {};
}

void WindowsTorture::collect() {
    std::vector<Site> distinct;
    for (const Operation& operation : operations_) {
        watchdog.expect(operation.name);
        for (const Site& site : sitesOf(operation)) {
            const bool isAllocation = functionOf(site) == std::string("_Znwj");
            if (isAllocation && (!isExhaustive() || GetParam() == Transport::tcp)) continue;
            const bool isNew = std::find(distinct.begin(), distinct.end(), site) == distinct.end();
            if (isNew) distinct.push_back(site);
            if (isNew) ++perFunction_[functionOf(site)];
            if (isNew || isExhaustive()) cases_.push_back({&operation, site});
        }
    }
    for (const auto& [function, count] : perFunction_)
        std::printf("%5d %s\n", count, function.c_str());
    std::printf("%zu call sites, %zu cases\n", distinct.size(), cases_.size());
}

/// Behind an operation: a facade that works does the next one, one whose agent has ended says why
/// it does not.
void WindowsTorture::expectNextWorks(const Host& host, const Site& failed) const {
    const bool answers = host.facade == nullptr || host.awaitAnswer();
    const qorcontrol::Outcome outcome = qorcontrol::lastOutcome();
    const char* const words = hasFailed() ? textOf(failed, GetParam()) : nullptr;
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

/// Whether there are more handles behind it.
bool WindowsTorture::playOnce(const Case& each) {
    const int before = total(countHandles());
    {
        Host host(settingsPath, "LambdaMap");
        EXPECT_TRUE(!each.operation->needsFacade || host.start());
        fail(each.site);
        try {
            each.operation->run(host);
        } catch (const std::bad_alloc&) {
            EXPECT_STREQ(functionOf(each.site), "_Znwj");
        }
        rest();
        expectNextWorks(host, each.site);
    }
    return total(countHandles()) > before;
}

void WindowsTorture::play(const Case& each) {
    const std::string name = each.operation->name + (", " + nameOf(each.site));
    watchdog.expect(name);
    const testing::ScopedTrace trace(__FILE__, __LINE__, name);
    // What threads keep for good is there after the first time. Of each QOR that is started two
    // handles are kept.
    bool leavesHandles = playOnce(each);
    notMet_ += hasFailed() ? 0 : 1;
    for (int again = 0; again < 3 && leavesHandles && each.operation->name != launch; ++again)
        leavesHandles = playOnce(each);
    EXPECT_FALSE(leavesHandles && each.operation->name != launch) << "handles are left each time";
}

void WindowsTorture::playAll() {
    // A class is registered once in the life of a process: it is the first that must fail.
    play({&operations_.front(), anywhere("RegisterClassA")});
    EXPECT_EQ(notMet_, 0) << "nothing has registered a class";
    collect();
    for (const Case& each : cases_) play(each);
    std::printf("%d not met\n", notMet_);
    EXPECT_FALSE(cases_.empty());
    EXPECT_LT(notMet_, static_cast<int>(cases_.size()) / 3 + 1);
    Host host(settingsPath);
    EXPECT_TRUE(host.start()) << "another facade does not work";
}

TEST_P(WindowsTorture, NothingCrashesHangsOrLeavesHandlesWhereACallOfTheSystemFails) {
    playAll();
}

TEST(WindowsTortureImports, AreAllSaidToBeFallibleOrNot) {
    EXPECT_THAT(unknownImports(library), testing::IsEmpty());
    std::printf("%zu imports are made to fail\n", tortured(library));
}

}  // namespace
}  // namespace torture

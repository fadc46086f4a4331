#include "doctor/QorAnswers.h"

#include <windows.h>

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "doctor/SettingsKeys.h"
#include "Interrupt.h"
#include "qorcontrol/Outcome.h"
#include "Session.h"

namespace qorctl::doctor {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned pingCount = 5;
constexpr int requestCount = 5;
constexpr int mostRequests = 30;
constexpr unsigned refreshMs = 200;
constexpr unsigned betweenPingsMs = 20;
// The library connects anew for up to 1 s at a time.
constexpr std::chrono::seconds contactLimit(3);

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// A copy of the settings that names no executable: with it the library starts no QOR, and at its
/// end leaves the one that runs, and that one's ECU, as they are.
class SettingsWithoutStart {
public:
    explicit SettingsWithoutStart(const std::string& path) {
        char folder[MAX_PATH + 1] = "";
        GetTempPathA(sizeof folder, folder);
        path_ = fmt::format("{}qorctl-doctor-{}.ini", folder, GetCurrentProcessId());
        if (!CopyFileA(path.c_str(), path_.c_str(), FALSE))
            throw std::runtime_error("cannot write a copy of the settings: " + path_);
        SetFileAttributesA(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (WritePrivateProfileStringA(settingsSection, "QORexecutable", "", path_.c_str())) return;
        DeleteFileA(path_.c_str());
        throw std::runtime_error("cannot change a copy of the settings: " + path_);
    }
    ~SettingsWithoutStart() { DeleteFileA(path_.c_str()); }
    SettingsWithoutStart(const SettingsWithoutStart&) = delete;
    SettingsWithoutStart& operator=(const SettingsWithoutStart&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

void askSeveralTimes(const QorControlFacade& qor, unsigned timeoutMs, QorAnswers& answers) {
    while (answers.pings < pingCount && interrupt::sleepMs(betweenPingsMs)) {
        ++answers.pings;
        const Clock::time_point start = Clock::now();
        if (qor.pingQor(timeoutMs)) answers.times.push_back(msSince(start));
    }
}

int count(const std::vector<double>& times) {
    return static_cast<int>(times.size());
}

double lowestOfLast(const std::vector<double>& times) {
    return *std::min_element(times.end() - requestCount, times.end());
}

/// The usual time of a request that QOR answers, in ms: descriptions of parameters that it does not
/// know, which changes nothing. 0 if it does not answer them.
double usualRequestMs(const QorControlFacade& qor, const std::string& series) {
    std::vector<double> times;
    wex::ParamDescription nothing = {};
    // The first pieces of a connection are confirmed at once.
    while (count(times) < mostRequests && !interrupt::isRequested()) {
        const Clock::time_point start = Clock::now();
        qor.getParamDescription(fmt::format("qorctl.doctor.{}.{}", series, times.size()), nothing);
        if (qorcontrol::lastOutcome().cause != qorcontrol::Cause::unknownName) return 0;
        times.push_back(msSince(start));
        if (count(times) >= requestCount && lowestOfLast(times) >= QorAnswers::confirmedMs) break;
    }
    if (count(times) < requestCount) return 0;
    const auto first = times.end() - requestCount;
    std::sort(first, times.end());
    return first[requestCount / 2];
}

void askForData(const QorControlFacade& qor, QorAnswers& answers) {
    qorcontrol::setTcpNoDelay(qor, false);
    answers.requestMs = usualRequestMs(qor, "usual");
    if (answers.requestMs == 0) return;
    qorcontrol::setTcpNoDelay(qor, true);
    answers.noDelayMs = usualRequestMs(qor, "at-once");
}

bool makesContact(const QorControlFacade& qor, unsigned timeoutMs) {
    const Clock::time_point start = Clock::now();
    do {
        if (qor.pingQor(timeoutMs)) return true;
    } while (Clock::now() - start < contactLimit && interrupt::sleepMs(betweenPingsMs));
    return false;
}

}  // namespace

QorAnswers QorAnswers::ofRunning(const std::string& settingsPath, unsigned timeoutMs, bool isTcp) {
    const SettingsWithoutStart settings(settingsPath);
    QorAnswers answers;
    answers.isAsked = true;
    const Clock::time_point start = Clock::now();
    const QorControlFacade qor(settings.path(), nullptr, refreshMs, "");
    if (makesContact(qor, timeoutMs)) {
        answers.firstMs = msSince(start);
        askSeveralTimes(qor, timeoutMs, answers);
        if (isTcp) askForData(qor, answers);
    } else {
        answers.pings = 1;
    }
    return answers;
}

QorAnswers QorAnswers::ofStarted(const SessionOptions& options, bool isTcp, Console& console) {
    QorAnswers answers;
    answers.isStartTried = true;
    Session session(options, console);
    const Clock::time_point start = Clock::now();
    const Outcome started = session.start();
    answers.firstMs = msSince(start);
    if (started.ok) {
        answers.isAsked = true;
        askSeveralTimes(session.facade(), options.timeoutMs, answers);
        if (isTcp) askForData(session.facade(), answers);
    } else {
        const std::string& why = started.told.sentence;
        answers.startFailure = why.empty() ? started.text : why;
    }
    if (started.ok) session.shutDown();
    return answers;
}

}  // namespace qorctl::doctor

#include "CStation.h"

#include <utility>

namespace {

constexpr unsigned launchMs = 15000;
constexpr unsigned connectMs = 30000;

std::string textOf(int (*ask)(char*, unsigned, unsigned*)) {
    unsigned needed = 0;
    ask(nullptr, 0, &needed);
    std::string text(needed, '\0');
    ask(text.data(), needed, &needed);
    if (!text.empty()) text.pop_back();
    return text;
}

/// As Station's.
void letGoOfTrace(const TempFolder& folder) {
    QorHandle handle = nullptr;
    QorOpen(folder.pathOf("none.ini").c_str(), 0, folder.pathOf("none\\none.exe").c_str(), &handle);
    QorClose(handle);
}

}  // namespace

CStation::CStation(Transport transport) : StationBase(transport) {}

CStation::~CStation() {
    close();
    awaitEndOfQor();
    letGoOfTrace(folder);
}

int CStation::open() {
    return QorOpen(settingsPath.c_str(), 0, hostPath.c_str(), &handle);
}

bool CStation::start() {
    writeSettings();
    if (open() != QOR_OK) return false;
    const bool answers = QorPingQor(handle, launchMs) == QOR_OK;
    EXPECT_TRUE(answers) << "QOR does not answer; its log:\n" << bytesOfFile(settings.log);
    return answers;
}

bool CStation::connectEcu(unsigned refreshPeriodMs) {
    const QorEcuConnect connect = usualCConnect(refreshPeriodMs);
    return QorConnect(handle, &connect, QOR_CONNECT_DEFAULT, connectMs) == QOR_OK;
}

int CStation::close() {
    QorHandle open = nullptr;
    std::swap(open, handle);
    return open == nullptr ? QOR_OK : QorClose(open);
}

std::string CStation::trace() const {
    return bytesOfFile(folder.pathOf("host.log"));
}

QorEcuConnect usualCConnect(unsigned refreshPeriodMs) {
    QorEcuConnect connect = {};
    connect.size = sizeof connect;
    EXPECT_EQ(QOR_OK, QorEcuConnectDefaults(&connect));
    connect.refreshPeriodMs = refreshPeriodMs;
    return connect;
}

std::string lastCall() {
    return QorCauseName(QorLastCause()) + (": " + lastSentence());
}

std::string lastSentence() {
    return textOf(&QorLastSentence);
}

std::string lastCheck() {
    return textOf(&QorLastCheck);
}

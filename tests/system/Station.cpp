#include "Station.h"

#include <algorithm>
#include <regex>
#include <stdexcept>

#include "QorProcesses.h"
#include "Waiting.h"

namespace {

constexpr unsigned launchMs = 15000;

std::vector<std::string> withoutTimes(std::vector<std::string> lines) {
    static const std::regex elapsed("t: \\d+ ms");
    for (std::string& line : lines) line = std::regex_replace(line, elapsed, "t: # ms");
    return lines;
}

/// The library keeps its trace file open until it is given another one. A facade whose trace
/// cannot be opened and whose agent ends at once makes it let go of the file.
void letGoOfTrace(const TempFolder& folder) {
    QorControlFacade(folder.pathOf("none.ini"), nullptr, 0, folder.pathOf("none\\none.exe"));
}

}  // namespace

Station::Station(Transport transport) : StationBase(transport) {}

Station::~Station() {
    close();
    awaitEndOfQor();
    letGoOfTrace(folder);
}

void Station::construct() {
    facade_ = std::make_unique<QorControlFacade>(settingsPath, withLog ? &log : nullptr,
                                                 readPeriodMs, hostPath);
}

void Station::open() {
    writeSettings();
    construct();
}

bool Station::start() {
    open();
    const bool answers = facade_->pingQor(launchMs);
    EXPECT_TRUE(answers) << "QOR does not answer; its log:\n" << bytesOfFile(settings.log);
    return answers;
}

bool Station::connectEcu(unsigned refreshPeriodMs) {
    return facade_->connect(usualConnect(refreshPeriodMs), QorControlFacade::EcuConnect::Default,
                            &monitor);
}

void Station::close() {
    facade_.reset();
}

void Station::restartQor() {
    qor::killAll();
    writeSettings();
    startQorByHand();
}

void Station::startQorByHand() const {
    if (!settings.startQor(settingsPath))
        throw std::runtime_error("QOR cannot be started by hand: " + bytesOfFile(settings.log));
}

bool Station::awaitContact() const {
    return eventually(launchMs, [this] {
        const auto records = wire();
        return std::any_of(records.begin(), records.end(),
                           [](const WireRecord& record) { return record.isOnlineQuery(); });
    });
}

std::vector<std::string> Station::trace(std::size_t from) const {
    return withoutTimes(tail(linesOfFile(tracePath()), from));
}

std::vector<std::string> Station::logLines(std::size_t from) const {
    return withoutTimes(tail(log.lines(), from));
}

bool Station::traceHolds(const std::string& words) const {
    return bytesOfFile(tracePath()).find(words) != std::string::npos;
}

std::string Station::tracePath() const {
    return std::filesystem::path(hostPath).replace_extension(".log").string();
}

QorControlFacade::EcuConnect usualConnect(unsigned refreshPeriodMs) {
    return {1,    1,   true, 10400, 125000, refreshPeriodMs, 0xFFFFFFFF, 0xFFFFFFFF, 0xFF,
            0xFF, 255, true, "",    true};
}

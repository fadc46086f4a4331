// What a host learns and settles about QOR and the ECU before it reads and writes.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "Interrupt.h"
#include "JsonText.h"
#include "operations/Operation.h"

namespace qorctl {
namespace {

struct Segment {
    std::string name;
    bool flag = false;
};

// The library learns whether an ECU is online by asking QOR every 400 ms.
constexpr unsigned int onlineSliceMs = 50;
constexpr unsigned int onlineSlices = 20;

bool awaitOnline(const QorControlFacade& facade) {
    for (unsigned int i = 0; i < onlineSlices; ++i)
        if (facade.isEcuOnline() || !interrupt::sleepMs(onlineSliceMs)) break;
    return facade.isEcuOnline();
}

Reply connect(Session& session, const ConnectOptions& connection) {
    return Reply::of(session.connectEcu(connection));
}

Reply ping(Session& session) {
    return Reply::ofCall(session.facade().pingQor(session.options().timeoutMs), "QOR answers",
                         "QOR did not answer");
}

Reply status(Session& session) {
    const bool online = awaitOnline(session.facade());
    const std::string& ram = QorControlFacade::getEdcRamSegmentName();
    const std::string& rom = QorControlFacade::getEdcRomSegmentName();
    Reply reply = Reply::success();
    reply.lines = {fmt::format("ECU online: {}", online ? "yes" : "no"),
                   fmt::format("connecting: {}", session.facade().isConnecting() ? "yes" : "no"),
                   fmt::format("pages: {} (ram), {} (rom)", ram, rom)};
    reply.result = {{"ecuOnline", online},
                    {"connecting", session.facade().isConnecting()},
                    {"ramSegment", ram},
                    {"romSegment", rom}};
    return reply;
}

Reply path(Session& session) {
    const std::string found = session.facade().getQorExecutablePath();
    if (found.empty()) return Reply::failure("the settings name no program");
    Reply reply = Reply::success();
    reply.lines = {found};
    reply.result = utf8Of(found);
    return reply;
}

std::string pageName(const std::string& name) {
    if (name == "ram") return QorControlFacade::getEdcRamSegmentName();
    if (name == "rom") return QorControlFacade::getEdcRomSegmentName();
    return name;
}

Reply select(Session& session, const Segment& segment) {
    const std::string name = pageName(segment.name);
    return Reply::ofCall(session.facade().setEcuSegment(name, segment.flag, nullptr), name,
                         name + " was not selected by QOR");
}

}  // namespace

OperationWork declareConnect(CLI::App& command) {
    const auto connection = std::make_shared<ConnectOptions>();
    connection->declare(command, true);
    return [connection](Session& session) { return connect(session, *connection); };
}

OperationWork declarePing(CLI::App&) {
    return ping;
}

OperationWork declareStatus(CLI::App&) {
    return status;
}

OperationWork declarePath(CLI::App&) {
    return path;
}

OperationWork declareSegment(CLI::App& command) {
    const auto segment = std::make_shared<Segment>();
    command.add_option("PAGE", segment->name, "ram, rom, or a name of QOR's own")->required();
    command.add_flag("--flag", segment->flag, "Set QOR's flag");
    return [segment](Session& session) { return select(session, *segment); };
}

}  // namespace qorctl

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <utility>

#include "HexText.h"
#include "Numbers.h"
#include "operations/Operation.h"
#include "qorcontrol/Waiting.h"

namespace qorctl {
namespace {

struct Bus {
    unsigned int busParam = 250000;
    bool withoutFirstFlag = false;
    bool withSecondFlag = false;
    bool isAlternative = false;
};

struct BusRead {
    Bus bus;
    std::vector<unsigned int> ids;
};

struct BusMessage {
    Bus bus;
    unsigned int first = 0;
    unsigned int second = 0;
    std::vector<std::string> words;
};

void declareBus(CLI::App& command, Bus& bus) {
    const char* const group = "CAN bus";
    whole(command.add_option("--bus-param", bus.busParam, "Bus setting, a bit rate"))
        ->group(group)
        ->type_name("NUMBER")
        ->capture_default_str();
    command.add_flag("--no-first-flag", bus.withoutFirstFlag, "Clear QOR's first flag")
        ->group(group);
    command.add_flag("--second-flag", bus.withSecondFlag, "Set QOR's second flag")->group(group);
    command.add_flag("--alternative", bus.isAlternative, "Open the alternative bus")->group(group);
}

/// Opens the bus, for which QOR has 10 s. Nothing if Ctrl-C came first.
std::optional<CallNotes> open(Session& session, const Bus& bus) {
    using Connect = QorControlFacade::EcuConnect;
    return session.background().run(
        [&facade = std::as_const(session.facade()), bus](CallNotes& notes) {
            const QorControlFacade::CanBusConnect settings = {bus.busParam, !bus.withoutFirstFlag,
                                                              bus.withSecondFlag};
            notes.note(qorcontrol::connectCanBusAndWait(
                facade, settings, bus.isAlternative ? Connect::Alternative : Connect::Default));
        });
}

Reply notOpened(const std::optional<CallNotes>& calls) {
    return calls ? Reply::of(calls->failure("QOR has not opened the bus"))
                 : Reply::failure("cancelled with Ctrl-C");
}

Reply connectCan(Session& session, const Bus& bus) {
    const auto calls = open(session, bus);
    return calls && calls->allWorked() ? Reply::success("the bus is open") : notOpened(calls);
}

Reply readCan(Session& session, const BusRead& wanted) {
    const auto opening = open(session, wanted.bus);
    if (!opening || !opening->allWorked()) return notOpened(opening);
    CallNotes calls;
    QorControlFacade::CanBusData data;
    for (const unsigned int id : wanted.ids) data.items.push_back({id, 0});
    if (!calls.note(session.facade().getCanBusData(data, session.options().timeoutMs)))
        return Reply::of(calls.failure("the bus was not read"));
    Reply reply = Reply::of(calls.success(fmt::format("{} values", data.items.size())));
    reply.result = nlohmann::json::array();
    for (const auto& item : data.items) {
        reply.lines.push_back(fmt::format("0x{:03X}: {}", item.canId, item.value));
        reply.result.push_back({{"id", item.canId}, {"value", item.value}});
    }
    return reply;
}

Reply sendCan(Session& session, const BusMessage& message) {
    const auto opening = open(session, message.bus);
    if (!opening || !opening->allWorked()) return notOpened(opening);
    const std::string bytes = bytesOf(message.words);
    if (bytes.empty())
        session.console().line("note    a message without a byte is sent: they come behind SECOND");
    const bool taken = session.facade().sendCanBusMsg(message.first, message.second, bytes,
                                                      session.options().timeoutMs);
    return Reply::ofCall(
        taken, fmt::format("0x{:03X} {} [{}]", message.first, message.second, hexOf(bytes)),
        "the message was not taken by QOR");
}

}  // namespace

OperationWork declareConnectCan(CLI::App& command) {
    const auto bus = std::make_shared<Bus>();
    declareBus(command, *bus);
    return [bus](Session& session) { return connectCan(session, *bus); };
}

OperationWork declareReadCan(CLI::App& command) {
    const auto wanted = std::make_shared<BusRead>();
    whole(command.add_option("ID", wanted->ids, "CAN identifiers, 0x201 for instance"))->required();
    declareBus(command, wanted->bus);
    return [wanted](Session& session) { return readCan(session, *wanted); };
}

OperationWork declareSendCan(CLI::App& command) {
    const auto message = std::make_shared<BusMessage>();
    whole(command.add_option("FIRST", message->first, "QOR's first number, the CAN identifier"))
        ->required();
    whole(command.add_option("SECOND", message->second,
                             "QOR's second number; the bytes come behind it"))
        ->required();
    command.add_option("BYTES", message->words, "The message, in hexadecimal digits")
        ->check(whyNoBytes);
    declareBus(command, message->bus);
    return [message](Session& session) { return sendCan(session, *message); };
}

}  // namespace qorctl

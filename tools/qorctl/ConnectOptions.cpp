#include "ConnectOptions.h"

#include <CLI/CLI.hpp>

#include "HostPaths.h"
#include "Numbers.h"

namespace qorctl {
namespace {

const auto oneByte = CLI::Range(0u, 0xFFu);

}  // namespace

void ConnectOptions::declare(CLI::App& command, bool listed) {
    const auto grouped = [listed](CLI::Option* option) {
        return option->group(listed ? "Connection" : "");
    };
    const auto number = [&](const char* name, unsigned int& value, const char* help) {
        return grouped(whole(command.add_option(name, value, help)))
            ->type_name("NUMBER")
            ->capture_default_str();
    };
    const auto flag = [&](const char* name, bool& value, const char* help) {
        grouped(command.add_flag(name, value, help));
    };
    grouped(command.add_option("--type", type, "Kind of connection"))
        ->check(CLI::IsMember({"default", "security", "alternative"}))
        ->capture_default_str();
    grouped(command.add_option("--security-dll", securityDll,
                               "Security-access library of the ECU, for --type security"))
        ->type_name("FILE")
        ->check(paths::whyNotAbsolute);
    number("--protocol", protocol, "Protocol, 1 to 4")->check(CLI::Range(1u, 4u));
    number("--protocol-option", protocolOption, "QOR's word behind the protocol");
    number("--k-line-baud", kLineBaudRate, "Baud rate of the K line");
    number("--can-baud", canBaudRate, "Baud rate of the CAN bus");
    number("--request-id", canRequestId, "CAN identifier of requests");
    number("--response-id", canResponseId, "CAN identifier of responses");
    number("--address-byte1", addressByte1, "QOR's first address byte")->check(oneByte);
    number("--address-byte2", addressByte2, "QOR's second address byte")->check(oneByte);
    number("--address-word", addressWord, "QOR's address word");
    flag("--no-option-flag", withoutOptionFlag, "Clear QOR's option flag");
    flag("--no-extra-flag", withoutExtraFlag, "Clear QOR's extra flag");
    flag("--no-final-flag", withoutFinalFlag, "Clear QOR's final flag");
}

QorControlFacade::EcuConnect::ConnType ConnectOptions::connType() const {
    using Connect = QorControlFacade::EcuConnect;
    if (type == "security") return Connect::SecurityAccess;
    return type == "alternative" ? Connect::Alternative : Connect::Default;
}

QorControlFacade::EcuConnect ConnectOptions::record(unsigned int refreshMs) const {
    QorControlFacade::EcuConnect settings = {};
    settings.protocol = protocol;
    settings.protocolOption = protocolOption;
    settings.optionFlag = !withoutOptionFlag;
    settings.kLineBaudRate = kLineBaudRate;
    settings.canBaudRate = canBaudRate;
    settings.refreshPeriodMs = refreshMs;
    settings.canRequestId = canRequestId;
    settings.canResponseId = canResponseId;
    settings.addressByte1 = static_cast<unsigned char>(addressByte1);
    settings.addressByte2 = static_cast<unsigned char>(addressByte2);
    settings.addressWord = addressWord;
    settings.extraFlag = !withoutExtraFlag;
    // The library would take it from beside this program.
    if (!securityDll.empty()) settings.securityDll = paths::absolute(securityDll);
    settings.finalFlag = !withoutFinalFlag;
    return settings;
}

}  // namespace qorctl

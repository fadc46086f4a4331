#include "client/ClientCommands.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <set>
#include <utility>

#include "client/ClientExternalOperating.h"
#include "client/ExportFiles.h"
#include "trace/OneLine.h"
#include "trace/Trace.h"

using Replyer = IExternalCommand::ICommandReplyer;

namespace {

constexpr unsigned int redirectedChoiceMs = 2000;

/// Before it is shown: it may stand there for long.
void traceBox(const protocol::RedirectUI& box) {
    static std::atomic<unsigned int> asked{0};
    tracelog::trace(tracelog::libraryModule, tracelog::information, 0,
                    "Message box %u that QOR has asked for: '%s', '%s'\n", ++asked,
                    tracelog::oneLine(box.caption).c_str(), tracelog::oneLine(box.text).c_str());
}

}  // namespace

bool ClientCommandStartEdit::onReply(Replyer*, ClientExternalOperating*) {
    exportfiles::handle(*this);
    return true;
}

bool ClientCommandGetParamInfo::onReply(Replyer*, ClientExternalOperating* client) {
    client->onParamInfo(*this, answered());
    return true;
}

bool ClientCommandReceiveParamData::onReply(Replyer*, ClientExternalOperating* client) {
    client->onParamValue(paramIndex, value);
    return true;
}

bool ClientCommandDirectCtrl::onReply(Replyer*, ClientExternalOperating* client) {
    client->onDirectCtrl(std::move(payload()), answered());
    return true;
}

bool ClientCommandGetDTC::onReply(Replyer*, ClientExternalOperating* client) {
    client->onDtcs(std::move(payload()), answered());
    return true;
}

bool ClientCommandRedirectUI::onReply(Replyer* replyer, ClientExternalOperating* client) {
    replyer->reply(nullptr, 0);
    traceBox(*this);
    protocol::RedirectUI choice;
    choice.result = client->messageBox().show(text, caption, type);
    return client->transport().send(std::make_unique<CommandRedirectUI>(choice),
                                    redirectedChoiceMs);
}

bool ClientCommandGetHex::onReply(Replyer*, ClientExternalOperating* client) {
    client->onModelDescription(*this);
    return true;
}

bool ClientCommandStaticParam::onReply(Replyer*, ClientExternalOperating* client) {
    client->onStaticParam(std::move(payload()), answered());
    return true;
}

bool ClientCommandEcuSegment::onReply(Replyer*, ClientExternalOperating*) {
    return true;  // that it came is all there is to know
}

bool ClientCommandExecKwp::onReply(Replyer*, ClientExternalOperating* client) {
    client->onKwpAnswer(std::move(payload()), answered());
    return true;
}

bool ClientCommandCanBusData::onReply(Replyer*, ClientExternalOperating* client) {
    client->onCanBusData(std::move(payload()), answered());
    return true;
}

bool ClientCommandReadTogether::onReply(Replyer*, ClientExternalOperating* client) {
    // A parameter that stands there more than once is told once, as it was told last.
    std::map<std::uint32_t, std::size_t> last;
    const std::size_t present = std::min(paramIndices.size(), values.size());
    for (std::size_t i = 0; i < present; ++i) last[paramIndices[i]] = i;
    for (std::size_t i = 0; i < present; ++i) {
        if (last[paramIndices[i]] != i) continue;
        protocol::DirectCtrl record;
        record.paramIndex = paramIndices[i];
        record.operation = protocol::DirectCtrl::readValues;
        record.values = std::move(values[i]);
        client->onDirectCtrl(std::move(record), answered());
    }
    std::set<std::int32_t> lacking;
    for (const std::uint32_t index : paramIndices)
        if (last.count(index) == 0) lacking.insert(static_cast<std::int32_t>(index));
    client->onReadTogether(lacking, answered());
    return present == paramIndices.size();
}

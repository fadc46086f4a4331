// What the server tells of itself.

#include "JsonText.h"
#include "qorcontrol/LibraryVersion.h"
#include "serve/methods/Common.h"
#include "serve/OpenRpc.h"
#include "serve/Server.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;
using Effect = Method::Effect;
using Way = Method::Way;

}  // namespace

Methods Server::ownMethods() {
    return {stateMethod(), statusMethod(), endingMethod(),
            Method{"rpc.discover",
                   "Describes all methods",
                   {},
                   {},
                   Way::atOnce,
                   Effect::looks,
                   [this](const json&, const auto&) { return openRpcOf(methods_); }}};
}

Method Server::stateMethod() {
    return {"getState",
            "Tells what is known without asking QOR",
            {},
            {flag("isEcuOnline", "Whether QOR reported an ECU within the last 2 s"),
             flag("isConnecting", "Whether a connect waits"),
             text("segment", "The memory page that was chosen last; empty: not known"),
             text("ramSegment", "Name of the working page"),
             text("romSegment", "Name of the reference page"),
             text("version", "Version of the library")},
            Way::atOnce,
            Effect::looks,
            [this](const json&, const auto&) {
                json told = observer_.state();
                told["ramSegment"] = utf8Of(QorControlFacade::getEdcRamSegmentName());
                told["romSegment"] = utf8Of(QorControlFacade::getEdcRomSegmentName());
                told["version"] = qorcontrol::versionText();
                return told;
            }};
}

Method Server::statusMethod() {
    return {
        "getServerStatus",
        "Tells what the server has done, and for whom",
        {},
        {text("settings", "Path of QOR's settings file"), text("transport", "The way to QOR"),
         text("trace", "Path of the library's trace"), text("version", "Of the library"),
         whole("uptimeMs", "So long it runs"), flag("readOnly", "Whether it may only look"),
         whole("clients", "So many are told what goes on"), whole("streams", "Of all clients"),
         whole("waiting", "Requests that wait for their turn"),
         whole("requests", "So many were answered"), whole("failures", "So many of them failed")},
        Way::atOnce,
        Effect::looks,
        [this](const json&, const std::shared_ptr<Client>& client) { return status(*client); }};
}

json Server::status(const Client& client) const {
    const Gauges now = gauges();
    json told = metrics_->snapshot();
    told["settings"] = utf8Of(backing_.settings);
    told["transport"] = utf8Of(backing_.transport);
    told["trace"] = utf8Of(backing_.trace);
    told["version"] = qorcontrol::versionText();
    told["uptimeMs"] = static_cast<std::uint64_t>(now.uptimeS * 1000);
    told["readOnly"] = options_.isReadOnly;
    told["clients"] = now.clients;
    told["streams"] = now.streams;
    told["waiting"] = now.waiting;
    told["controls"] = json::array();
    for (const auto& each : control_.all())
        told["controls"].push_back(
            {{"name", utf8Of(each.name)}, {"own", each.client == client.number()}});
    return told;
}

Gauges Server::gauges() const {
    Gauges now;
    now.clients = audience_.count();
    now.streams = values_.count() + codes_.count() + trace_.count();
    now.waiting = lines_.count();
    now.heldActuators = control_.all().size();
    now.isEcuOnline = backing_.facade.isEcuOnline();
    now.isConnecting = backing_.facade.isConnecting();
    now.uptimeS = std::chrono::duration<double>(Clock::now() - begin_).count();
    return now;
}

Method Server::endingMethod() {
    return {"shutdownServer",
            "Ends the server",
            {},
            {},
            Way::atOnce,
            Effect::looks,
            [this](const json&, const std::shared_ptr<Client>& client) {
                if (!client->isOwner() && !options_.mayBeEnded)
                    throw Failure{RpcCode::refused, "this client may not end the server"};
                end();
                return json::object();
            }};
}

}  // namespace qorctl::serve

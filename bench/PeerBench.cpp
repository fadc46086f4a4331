#include "PeerBench.h"

#include <windows.h>

#include "Require.h"

namespace {

constexpr unsigned int timeoutMs = 2000;

std::string argumentsOf(const Meeting& meeting, const std::string& tcpPeer) {
    if (meeting.transport == Transport::tcp) return tcpPeer + " " + std::to_string(meeting.port);
    return "--window-peer \"" + meeting.serverTitle + "\" \"" + meeting.clientTitle + "\"";
}

}  // namespace

PeerBench::PeerBench(Transport transport, unsigned int refreshMs, const std::string& who,
                     const char* tcpPeer)
    : meeting_(meetPeer(transport, who)),
      peer_("qor-bench.exe", argumentsOf(meeting_, tcpPeer)),
      facade_(std::make_unique<QorControlFacade>(meeting_.settingsPath, nullptr, refreshMs,
                                                 programFolder() + "qor-bench.exe")) {
    await([&] { return facade_->pingQor(timeoutMs); }, "the first ping");
    QorControlFacade::EcuConnect settings = {};
    settings.protocol = 1;
    settings.refreshPeriodMs = refreshMs;
    require(facade_->connect(settings, QorControlFacade::EcuConnect::Default, nullptr), "connect");
    await([&] { return facade_->isEcuOnline(); }, "the connect");
}

PeerBench::~PeerBench() {
    facade_.reset();
    DeleteFileA(meeting_.settingsPath.c_str());
}

void PeerBench::ping() const {
    require(facade_->pingQor(timeoutMs), "pingQor");
}

void PeerBench::read(const std::string& name) {
    require(facade_->getParamData(name, values_, timeoutMs), "getParamData");
}

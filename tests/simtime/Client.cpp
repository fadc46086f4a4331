// The parts of the client that are the system's, on the simulated machine.
#include "client/ClientExternalOperating.h"
#include "client/ExportFiles.h"
#include "client/SystemMessageBox.h"
#include "common/Clock.h"
#include "protocol/RequestId.h"
#include "Qor.h"
#include "Station.h"
#include "transport/ClientSocketCommandFactory.h"

namespace {

/// QOR comes up a while after it was started.
class Starter final : public IProcessStarter {
public:
    bool start(const std::string&, const std::string&) override {
        auto& machine = simtime::Machine::present();
        simtime::Qor& qor = simtime::Station::present().qor();
        ++qor.launches;
        machine.after(50 + machine.random().below(1500), [&qor] { qor.start(); });
        return true;
    }
    void awaitIdle(unsigned int) override {}
};

}  // namespace

std::unique_ptr<ClientExternalOperating> ClientExternalOperating::create(
    const std::string& settingsPath, std::unique_ptr<IMessageBox> messageBox) {
    ClientSettings settings;
    settings.executable = "/simulated/qor";
    return std::make_unique<ClientExternalOperating>(
        settings,
        [&](ICommandReceiver& client) {
            return std::make_unique<ClientSocketCommandFactory>(settingsPath, 0, client);
        },
        std::make_unique<Starter>(), std::move(messageBox));
}

/// The operator takes his time.
unsigned int SystemMessageBox::show(const std::string&, const std::string&, unsigned int) {
    auto& machine = simtime::Machine::present();
    common::sleepMs(20 + machine.random().below(simtime::longestBoxMs));
    return 6;
}

/// The simulated QOR exports nothing.
void exportfiles::handle(const protocol::StartEdit&) {
    simtime::Machine::present().find("QOR is said to have exported something");
}

std::uint32_t protocol::drawRequestId() {
    return static_cast<std::uint32_t>(simtime::Machine::present().random().next());
}

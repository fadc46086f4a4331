// The parts of the client that are the system's: here a TCP transport whose other end is the faked
// QOR that listens under the name of the settings file, and which is always there already.
#include <utility>

#include "client/ClientExternalOperating.h"
#include "client/SystemMessageBox.h"
#include "transport/ClientSocketCommandFactory.h"

namespace {

/// The faked QOR is there already, and a little late at worst.
class NoProcessStarter final : public IProcessStarter {
public:
    bool start(const std::string&, const std::string&) override { return true; }
    void awaitIdle(unsigned int) override {}
};

}  // namespace

std::unique_ptr<ClientExternalOperating> ClientExternalOperating::create(
    const std::string& settingsPath, std::unique_ptr<IMessageBox> messageBox) {
    ClientSettings settings;
    settings.executable = "/faked/qor";  // so that a shutdown ends it; never started
    return std::make_unique<ClientExternalOperating>(
        settings,
        [&](ICommandReceiver& client) {
            return std::make_unique<ClientSocketCommandFactory>(settingsPath, 0, client);
        },
        std::make_unique<NoProcessStarter>(), std::move(messageBox));
}

/// The first button is pressed at once.
unsigned int SystemMessageBox::show(const std::string&, const std::string&, unsigned int) {
    return 1;
}

// How the settings file chooses the parts of a client that are the system's own. The rest of the
// client is portable.
#include <io.h>
#include <windows.h>

#include <stdexcept>
#include <utility>

#include "client/ClientExternalOperating.h"
#include "client/ClientSettings.h"
#include "client/MyExternalCommandFactory.h"
#include "client/MySocketCommandFactory.h"
#include "client/ProcessStarter.h"
#include "framework/Application.h"
#include "qorcontrol/Lock.h"

namespace {

constexpr int readPermission = 4;

/// A folder passes the run-time library's question, but nothing can be read from it: every
/// setting would silently be its default.
bool isReadableFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 &&
           _access(path.c_str(), readPermission) == 0;
}

/// The state is the module's, and agents of several facades may come here at once.
void prepareFramework(bool asOwnApplication) {
    static common::Lock lock;
    const common::LockGuard guard(lock);
    const HINSTANCE process = GetModuleHandleA(nullptr);
    if (asOwnApplication) {
        if (!AfxWinInit(process, nullptr, GetCommandLineA(), 0))
            throw std::runtime_error("MFC initialization failed");
        return;
    }
    AFX_MODULE_STATE* const state = AfxGetModuleState();
    state->m_hCurrentInstanceHandle = process;
    state->m_hCurrentResourceHandle = process;
    state->CreateActivationContext();
}

std::unique_ptr<IExternalCommandFactory> makeTransport(const ClientSettings& settings,
                                                       ICommandReceiver& receiver) {
    if (settings.useTcp) return std::make_unique<MySocketCommandFactory>(settings, receiver);
    return std::make_unique<MyExternalCommandFactory>(settings, receiver);
}

}  // namespace

std::unique_ptr<ClientExternalOperating> ClientExternalOperating::create(
    const std::string& settingsPath, std::unique_ptr<IMessageBox> messageBox) {
    if (!isReadableFile(settingsPath))
        throw std::runtime_error(
            "Specified settings file for QOR 'external operation mode' is not valid.\nFile: " +
            settingsPath);
    const ClientSettings settings = ClientSettings::read(settingsPath);
    prepareFramework(settings.initMfc);
    return std::make_unique<ClientExternalOperating>(settings, std::move(messageBox));
}

ClientExternalOperating::ClientExternalOperating(const ClientSettings& settings,
                                                 std::unique_ptr<IMessageBox> messageBox)
    : ClientExternalOperating(
          settings, [&](ICommandReceiver& receiver) { return makeTransport(settings, receiver); },
          std::make_unique<ProcessStarter>(), std::move(messageBox)) {}

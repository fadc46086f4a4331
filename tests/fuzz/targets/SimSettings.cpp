// QOR's settings file, as the simulated QOR reads it: what is wrong in it is a ConfigError with
// words.
#include "app/Settings.h"

#include <windows.h>

#include "config/JsonNode.h"
#include "Profile.h"
#include "Target.h"

namespace {

std::string valueOf(const std::string& section, const std::string& key) {
    char value[32768];
    const DWORD length = GetPrivateProfileStringA(section.c_str(), key.c_str(), "", value,
                                                  sizeof value, "settings.ini");
    return std::string(value, length);
}

void tryOne(std::string_view bytes) {
    setProfile(bytes);
    try {
        const simulator::Settings settings =
            simulator::settingsFrom(valueOf, {"c:\\settings\\", "c:\\program\\", "c:\\temp\\"});
        const bool isTcp = settings.transport == simulator::Transport::Tcp;
        FUZZ_REQUIRE(!isTcp || settings.tcpPort != 0);
        FUZZ_REQUIRE(isTcp || (!settings.serverTitle.empty() && !settings.clientTitle.empty()));
        FUZZ_REQUIRE(!settings.modelPath.empty() && !settings.exportPrefix.empty());
    } catch (const simulator::ConfigError& error) {
        FUZZ_REQUIRE(*error.what() != '\0');
    }
}

const fuzz::Registered registered({"simsettings", tryOne});

}  // namespace

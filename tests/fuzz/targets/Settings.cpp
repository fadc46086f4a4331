// QOR's settings file, as the library reads it.
#include "client/ClientSettings.h"
#include "Profile.h"
#include "Target.h"

namespace {

void tryOne(std::string_view bytes) {
    setProfile(bytes);
    const ClientSettings settings = ClientSettings::read("settings.ini");
    FUZZ_REQUIRE(settings.path == "settings.ini");
    FUZZ_REQUIRE(settings.executable.size() <= ClientSettings::maxLaunchChars);
    for (const std::string* text :
         {&settings.clientPipeName, &settings.serverPipeName, &settings.serverIp}) {
        FUZZ_REQUIRE(text->size() <= ClientSettings::maxValueChars);
        FUZZ_REQUIRE(text->find_first_of(std::string_view("\n\0", 2)) == std::string::npos);
    }
    const ClientSettings again = ClientSettings::read("settings.ini");
    FUZZ_REQUIRE(again.useTcp == settings.useTcp && again.tcpPort == settings.tcpPort);
}

const fuzz::Registered registered({"settings", tryOne});

}  // namespace

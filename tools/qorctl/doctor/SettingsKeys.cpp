#include "doctor/SettingsKeys.h"

namespace qorctl::doctor {

const std::vector<SettingsKey>& settingsKeys() {
    static const std::vector<SettingsKey> keys = {
        {"QORexecutable", false, 0, UsedBy::both},    {"UseTcp", false, 0, UsedBy::both},
        {"ServerIp", false, 0, UsedBy::tcp},          {"TcpPort", true, 0, UsedBy::tcp},
        {"ServerPipeName", false, 0, UsedBy::window}, {"ClientPipeName", false, 0, UsedBy::window},
        {"InitMFC", true, 1, UsedBy::both},
    };
    return keys;
}

}  // namespace qorctl::doctor

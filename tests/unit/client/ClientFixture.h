#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "client/ClientExternalOperating.h"
#include "support/FakeClock.h"
#include "support/FakeMessageBox.h"
#include "support/FakeProcesses.h"
#include "support/FakeQor.h"
#include "support/TempFolder.h"

/// A client with everything around it faked: QOR, time, processes and the user.
class ClientTest : public ::testing::Test {
protected:
    /// Writes the settings file that the client will read.
    void settings(const std::string& lines) {
        settingsPath = folder.write("qor.ini", "[CommonSettings]\r\n" + lines);
    }

    /// Made at the first call.
    ClientExternalOperating& client() {
        if (!client_)
            client_ = std::make_unique<ClientExternalOperating>(
                settingsPath, qor.transport(), processes.starter(),
                std::make_unique<FakeMessageBox>(pressButton));
        return *client_;
    }
    void destroyClient() { client_.reset(); }

    FakeClock clock;
    TempFolder folder;
    std::string settingsPath = folder.pathOf("qor.ini");
    FakeQor qor;
    FakeProcesses processes;
    FakeMessageBox::Choice pressButton = [](auto&&...) { return 1u; };

private:
    std::unique_ptr<ClientExternalOperating> client_;
};

#pragma once

#include <gmock/gmock.h>
#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "client/ClientExternalOperating.h"
#include "support/FakeClock.h"
#include "support/FakeMessageBox.h"
#include "support/FakeProcesses.h"
#include "support/FakeQor.h"
#include "support/TempFolder.h"

/// A client with everything around it faked: QOR, time, processes and the user.
class ClientTest : public ::testing::Test {
protected:
    ~ClientTest() override { joinReceiver(); }

    /// Writes the settings file that the client will read.
    void settings(const std::string& lines) {
        settingsPath = folder.write("qor.ini", "[CommonSettings]\r\n" + lines);
    }

    /// Made at the first call.
    ClientExternalOperating& client() {
        if (!client_)
            client_ = std::make_unique<ClientExternalOperating>(
                ClientSettings::read(settingsPath), qor.transport(), processes.starter(),
                std::make_unique<FakeMessageBox>(pressButton));
        return *client_;
    }
    void destroyClient() { client_.reset(); }

    /// QOR speaks a moment later, from a receiving thread of its own. A wait without a limit never
    /// looks at the clock, so nothing that is due on the faked one can end it.
    void soon(std::function<void()> words) {
        joinReceiver();
        receiver_ = std::thread([words = std::move(words)] {
            Sleep(50);
            words();
        });
    }

    FakeClock clock;
    TempFolder folder;
    std::string settingsPath = folder.pathOf("qor.ini");
    FakeQor qor;
    FakeProcesses processes;
    FakeMessageBox::Choice pressButton = [](auto&&...) { return 1u; };

private:
    void joinReceiver() {
        if (receiver_.joinable()) receiver_.join();
    }

    std::unique_ptr<ClientExternalOperating> client_;
    std::thread receiver_;
};

#pragma once

#include <atomic>

#include "transport/ICommandReceiver.h"

/// Knows no command but the ping, which each transport answers by itself; counts QORs.
class QuietReceiver final : public ICommandReceiver {
public:
    const Prototypes& prototypes() const override { return prototypes_; }
    bool handleCommand(IExternalCommand&, IExternalCommand::ICommandReplyer&) override {
        return true;
    }
    void onNewQor() override { ++newQors_; }
    int newQors() const { return newQors_; }

private:
    const Prototypes prototypes_;
    std::atomic<int> newQors_{0};
};

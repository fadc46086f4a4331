#pragma once

#include "transport/ConnectionDataAccepter.h"

/// Takes whatever there is to hear of a connection.
class QuietAccepter final : public ConnectionDataAccepter {
public:
    void onConnected(ConnInstance&) override {}
    void onData(ConnInstance&, const std::string&) override {}
    void onClosed(ConnInstance&) override {}
    bool isStopping() const override { return false; }
};

#pragma once

#include <string>

class ConnInstance;

/// Hears of one connection's events, on the thread that owns the connection.
class ConnectionDataAccepter {
public:
    virtual void onConnected(ConnInstance& connection) = 0;
    virtual void onData(ConnInstance& connection, const std::string& bytes) = 0;
    virtual void onClosed(ConnInstance& connection) = 0;
    /// True ends every attempt to connect.
    virtual bool isStopping() const = 0;

protected:
    ~ConnectionDataAccepter() = default;
};

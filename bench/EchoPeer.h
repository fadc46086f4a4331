#pragma once

/// The other side of the floors: a process that sends back what it receives, on one blocking
/// connection, until that is closed. Returns the exit code of the process.
int runEchoPeer(unsigned int port);

/// The size of the message that the floors send to and fro.
constexpr int echoBytes = 32;

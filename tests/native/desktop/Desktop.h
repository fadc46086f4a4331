#pragma once

#include <string>

/// What a test may choose of the system.
namespace desktop {

/// Whether a thread that sends with SMTO_BLOCK handles what others send to it all the same, as some
/// systems let it; at first it does not.
void letSendsBeInterrupted(bool interrupted);

/// The window title of the library whose settings file has this name. A name with a colon stands
/// for TCP, as "host:port"; any other for window messages, and is the title of QOR's window. One
/// that begins with "guest" lives in the host's window framework.
std::string clientTitleOf(const std::string& name);

/// How many sockets are open, and how many more successes of WSAStartup than of WSACleanup there
/// were.
int openSockets();
int socketUsers();

}  // namespace desktop

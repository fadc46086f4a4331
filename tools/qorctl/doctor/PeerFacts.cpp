#include "doctor/PeerFacts.h"

#include <winsock2.h>

#include <windows.h>

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "doctor/PortHolders.h"
#include "doctor/TcpAddress.h"
#include "doctor/TcpConnections.h"

namespace qorctl::doctor {
namespace {

constexpr unsigned maxPort = 65535;
// As long as a value of the settings may be.
constexpr int maxTitleChars = static_cast<int>(maxValueChars) + 1;

struct SocketLibrary {
    WSADATA data = {};
    SocketLibrary() { WSAStartup(MAKEWORD(2, 2), &data); }
    ~SocketLibrary() { WSACleanup(); }
    SocketLibrary(const SocketLibrary&) = delete;
    SocketLibrary& operator=(const SocketLibrary&) = delete;
};

PeerFacts gatherPort(const std::string& host, unsigned port, PeerFacts::Remote remote) {
    PeerFacts facts;
    facts.isTcp = true;
    const std::string machine = host.empty() ? "this machine" : host;
    facts.isUsable = port >= 1 && port <= maxPort;
    facts.place = facts.isUsable ? fmt::format("port {} of {}", port, machine) : machine;
    const SocketLibrary sockets;
    const auto address = TcpAddress::lookUp(host, port, facts.reason);
    facts.isFound = address.has_value();
    facts.isRemote = facts.isFound && !address->isOfThisMachine();
    facts.isTold = facts.isFound && !facts.isRemote;
    if (!facts.isFound || !facts.isUsable) return facts;
    facts.key = fmt::format("tcp {:08x}:{}", address->host(), port);
    const auto rows = facts.isRemote ? std::nullopt : tcpConnections();
    facts.isTold = rows.has_value();
    if (rows) {
        PortHolders holders = PortHolders::in(*rows, address->host(), port);
        facts.servers = std::move(holders.servers);
        facts.clients = std::move(holders.clients);
    } else if (remote == PeerFacts::Remote::ask) {
        facts.accepts = address->takesConnection();
    }
    return facts;
}

struct TitleSearch {
    std::string title;
    Holders found;
};

/// As the system keeps it: to ask a window of this very process for its title waits until its
/// thread takes messages.
std::string titleOf(HWND window) {
    wchar_t wide[maxTitleChars] = L"";
    const int length = InternalGetWindowText(window, wide, maxTitleChars);
    char text[maxTitleChars] = "";
    const int size =
        WideCharToMultiByte(CP_ACP, 0, wide, length, text, maxTitleChars, nullptr, nullptr);
    return std::string(text, static_cast<std::size_t>(size));
}

BOOL CALLBACK addIfTitled(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<TitleSearch*>(parameter);
    DWORD process = 0;
    // The system compares titles in this way when it looks for a window, too.
    if (lstrcmpiA(titleOf(window).c_str(), search.title.c_str()) == 0 &&
        GetWindowThreadProcessId(window, &process) != 0)
        search.found.push_back(Holder::of(process));
    return TRUE;
}

Holders windowsTitled(const std::string& title) {
    TitleSearch search{title, {}};
    if (!title.empty()) EnumWindows(addIfTitled, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

PeerFacts gatherWindows(const std::string& server, const std::string& client) {
    PeerFacts facts;
    facts.place = fmt::format("window \"{}\"", server);
    facts.key = facts.place;
    facts.clientPlace = fmt::format("window \"{}\"", client);
    facts.isUsable =
        !server.empty() && !client.empty() && lstrcmpiA(server.c_str(), client.c_str());
    if (!facts.isUsable) return facts;
    facts.servers = windowsTitled(server);
    facts.clients = windowsTitled(client);
    return facts;
}

}  // namespace

PeerFacts PeerFacts::gather(const SettingsFacts& settings, Remote remote) {
    if (settings.usesTcp())
        return gatherPort(settings["ServerIp"].text, settings["TcpPort"].number, remote);
    return gatherWindows(settings["ServerPipeName"].text, settings["ClientPipeName"].text);
}

}  // namespace qorctl::doctor

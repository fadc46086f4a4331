#include "doctor/TcpConnections.h"

#include <winsock2.h>

// Needs winsock2.h before it.
#include <iphlpapi.h>
#include <ws2tcpip.h>

#include <algorithm>

namespace qorctl::doctor {
namespace {

// Between two calls the table may have grown.
constexpr int tries = 4;
constexpr DWORD spareBytes = 4096;

/// None if the system does not give it.
std::optional<std::vector<char>> tableOf(ULONG family, TCP_TABLE_CLASS part) {
    DWORD size = 0;
    std::vector<char> table;
    for (int i = 0; i < tries; ++i) {
        const DWORD error = GetExtendedTcpTable(table.empty() ? nullptr : table.data(), &size,
                                                FALSE, family, part, 0);
        if (error == NO_ERROR && !table.empty()) return table;
        if (error != ERROR_INSUFFICIENT_BUFFER && error != NO_ERROR) return std::nullopt;
        size += spareBytes;
        table.resize(size);
    }
    return std::nullopt;
}

/// The rows, which begin behind their number.
template <class Table>
const Table* rowsOf(const std::optional<std::vector<char>>& bytes) {
    return !bytes || bytes->size() < sizeof(Table) ? nullptr
                                                   : reinterpret_cast<const Table*>(bytes->data());
}

unsigned portOf(DWORD inNetworkOrder) {
    return ntohs(static_cast<u_short>(inNetworkOrder));
}

TcpConnection::State stateOf(DWORD state) {
    if (state == MIB_TCP_STATE_LISTEN) return TcpConnection::State::listening;
    return state == MIB_TCP_STATE_ESTAB ? TcpConnection::State::established
                                        : TcpConnection::State::other;
}

}  // namespace

std::optional<TcpConnections> tcpConnections() {
    TcpConnections all;
    // Not the whole table, in which there may be thousands of connections that have ended: Wine
    // takes milliseconds for each.
    for (const TCP_TABLE_CLASS part :
         {TCP_TABLE_OWNER_PID_LISTENER, TCP_TABLE_OWNER_PID_CONNECTIONS}) {
        const auto bytes = tableOf(AF_INET, part);
        if (!bytes) return std::nullopt;
        if (const auto* const table = rowsOf<MIB_TCPTABLE_OWNER_PID>(bytes))
            std::for_each(table->table, table->table + table->dwNumEntries, [&](const auto& row) {
                all.push_back({ntohl(row.dwLocalAddr), portOf(row.dwLocalPort),
                               ntohl(row.dwRemoteAddr), portOf(row.dwRemotePort),
                               stateOf(row.dwState), row.dwOwningPid});
            });
    }
    // A listener on all addresses of both kinds stands in the other table only. (A system may have
    // no such addresses at all.)
    const auto bytes6 = tableOf(AF_INET6, TCP_TABLE_OWNER_PID_LISTENER);
    if (const auto* const table = rowsOf<MIB_TCP6TABLE_OWNER_PID>(bytes6))
        std::for_each(table->table, table->table + table->dwNumEntries, [&](const auto& row) {
            const bool isForAll =
                std::all_of(std::begin(row.ucLocalAddr), std::end(row.ucLocalAddr),
                            [](UCHAR part) { return part == 0; });
            if (isForAll && row.dwState == MIB_TCP_STATE_LISTEN)
                all.push_back({0, portOf(row.dwLocalPort), 0, 0, TcpConnection::State::listening,
                               row.dwOwningPid});
        });
    return all;
}

}  // namespace qorctl::doctor

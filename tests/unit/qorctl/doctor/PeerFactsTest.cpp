// Real sockets and windows of this process.
#include "doctor/PeerFacts.h"

#include <winsock2.h>

#include <windows.h>

#include <gmock/gmock.h>

#include "doctor/TcpAddress.h"
#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

std::string ownName() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return path;
}

class Sockets : public testing::Test {
protected:
    Sockets() { WSAStartup(MAKEWORD(2, 2), &data_); }
    ~Sockets() override {
        for (const SOCKET one : open_) closesocket(one);
        WSACleanup();
    }
    SOCKET make() {
        open_.push_back(socket(AF_INET, SOCK_STREAM, 0));
        return open_.back();
    }
    /// Listens on a port of the system's choice.
    unsigned listenAt(unsigned long address = INADDR_LOOPBACK) {
        address_ = {};
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(address);
        const SOCKET server = make();
        bind(server, reinterpret_cast<const sockaddr*>(&address_), sizeof address_);
        int size = sizeof address_;
        getsockname(server, reinterpret_cast<sockaddr*>(&address_), &size);
        listen(server, 1);
        return ntohs(address_.sin_port);
    }
    void connectToIt() {
        connect(make(), reinterpret_cast<const sockaddr*>(&address_), sizeof address_);
    }
    void closeAll() {
        for (const SOCKET one : open_) closesocket(one);
        open_.clear();
    }
    PeerFacts gather(unsigned port, const std::string& address = "127.0.0.1") {
        return PeerFacts::gather(SettingsFacts::read(
            folder.writeText("qor.ini", "[CommonSettings]\nUseTcp=true\nServerIp=" + address +
                                            "\nTcpPort=" + std::to_string(port) + "\n")));
    }
    TempFolder folder;

private:
    WSADATA data_ = {};
    sockaddr_in address_ = {};
    std::vector<SOCKET> open_;
};

/// The system may not say who, but never names a wrong one.
void expectUsOrNobody(const Holder& holder) {
    if (holder.process == 0) return;
    EXPECT_EQ(GetCurrentProcessId(), holder.process);
    EXPECT_TRUE(holder.maybeIs(ownName())) << holder.program;
}

TEST_F(Sockets, AListenerIsSeenAndWhoTalksToIt) {
    const unsigned port = listenAt();
    const PeerFacts alone = gather(port);
    ASSERT_THAT(alone.servers, SizeIs(1));
    expectUsOrNobody(alone.servers[0]);
    EXPECT_THAT(alone.clients, IsEmpty());
    EXPECT_FALSE(alone.isRemote);

    connectToIt();
    const PeerFacts busy = gather(port);
    EXPECT_THAT(busy.servers, SizeIs(1));
    ASSERT_THAT(busy.clients, SizeIs(1));
    expectUsOrNobody(busy.clients[0]);
}

TEST_F(Sockets, AListenerOnAllAddressesIsSeenOneOnAnotherIsNot) {
    EXPECT_TRUE(gather(listenAt(INADDR_ANY)).isSomebodyThere());
    closeAll();
    constexpr unsigned long otherLoopback = INADDR_LOOPBACK + 1;
    EXPECT_FALSE(gather(listenAt(otherLoopback)).isSomebodyThere());
}

TEST_F(Sockets, AConnectionTellsWhetherSomebodyListens) {
    std::string reason;
    const auto address = TcpAddress::lookUp("127.0.0.1", listenAt(), reason);
    ASSERT_TRUE(address.has_value()) << reason;
    EXPECT_TRUE(address->isOfThisMachine());
    EXPECT_TRUE(address->takesConnection());
    closeAll();
    EXPECT_FALSE(address->takesConnection());
}

TEST_F(Sockets, OnePlaceHasOneKeyHoweverItIsWritten) {
    const unsigned port = listenAt();
    EXPECT_EQ(gather(port).key, gather(port, "localhost").key);
    EXPECT_EQ(gather(port).key, gather(port, "127.1").key);
    EXPECT_NE(gather(port).key, gather(port, "127.0.0.2").key);
    EXPECT_NE(gather(port).key, gather(port == 5000 ? 5001 : 5000).key);
}

// That address belongs to nobody: it is reserved for examples.
TEST_F(Sockets, OfAnotherMachineNothingIsInTheTable) {
    const PeerFacts facts = gather(5000, "198.51.100.7");
    EXPECT_TRUE(facts.isFound);
    EXPECT_FALSE(facts.isTold);
    EXPECT_FALSE(facts.isNobodyThere());
    EXPECT_TRUE(facts.isRemote);  // some networks take a connection to it all the same
    EXPECT_THAT(facts.servers, IsEmpty());
    EXPECT_THAT(facts.clients, IsEmpty());
}

TEST_F(Sockets, WhereNobodyListensNobodyIsSeen) {
    const unsigned port = listenAt();
    closeAll();
    EXPECT_FALSE(gather(port).isSomebodyThere());
    EXPECT_TRUE(gather(port).isNobodyThere());
}

TEST_F(Sockets, AnAddressThatIsNoneIsNotFound) {
    const PeerFacts facts = gather(5000, "127.0.0.1 ; here");
    EXPECT_FALSE(facts.isFound);
    EXPECT_NE("", facts.reason);
}

TEST_F(Sockets, APortThatIsNoneDoesNotHideAnAddressThatIsNone) {
    for (const unsigned port : {0u, 70000u}) {
        EXPECT_FALSE(gather(port).isUsable);
        EXPECT_TRUE(gather(port).isFound);
        const PeerFacts facts = gather(port, "127.0.0.1 ; here");
        EXPECT_FALSE(facts.isUsable);
        EXPECT_FALSE(facts.isFound);
        EXPECT_EQ("127.0.0.1 ; here", facts.place);
    }
}

class Windows : public testing::Test {
protected:
    TempFolder folder;

    PeerFacts gather(const std::string& server, const std::string& client) {
        return PeerFacts::gather(SettingsFacts::read(folder.writeText(
            "qor.ini",
            "[CommonSettings]\nServerPipeName=" + server + "\nClientPipeName=" + client + "\n")));
    }
};

struct TitledWindow {
    HWND const window;

    explicit TitledWindow(const std::string& title)
        : window(CreateWindowExA(0, "STATIC", title.c_str(), 0, 0, 0, 0, 0, nullptr, nullptr,
                                 nullptr, nullptr)) {}
    ~TitledWindow() { DestroyWindow(window); }
    TitledWindow(const TitledWindow&) = delete;
    TitledWindow& operator=(const TitledWindow&) = delete;
};

TEST_F(Windows, AreFoundByTheirWholeTitleInAnyCase) {
    const std::string title = "PeerFactsTest-" + std::to_string(GetCurrentProcessId());
    EXPECT_FALSE(gather(title, "other").isSomebodyThere());
    const TitledWindow window(title);
    const PeerFacts facts = gather("peerfactsTEST" + title.substr(13), title + "x");
    ASSERT_THAT(facts.servers, SizeIs(1));
    EXPECT_EQ(GetCurrentProcessId(), facts.servers[0].process);
    EXPECT_TRUE(facts.servers[0].maybeIs(ownName())) << facts.servers[0].program;
    EXPECT_THAT(facts.clients, IsEmpty());
    EXPECT_THAT(gather("other", title).clients, SizeIs(1));
    const TitledWindow longer(title + "y");
    EXPECT_THAT(gather(title, "other").servers, SizeIs(1));
}

TEST_F(Windows, TitlesThatCannotWorkAreNotLookedFor) {
    EXPECT_FALSE(gather("", "x").isUsable);
    EXPECT_FALSE(gather("x", "").isUsable);
    EXPECT_FALSE(gather("x", "X").isUsable);
}

TEST(HolderOf, AProcessIsKnownByItsPathOrAtLeastItsName) {
    EXPECT_TRUE(Holder::of(GetCurrentProcessId()).maybeIs(ownName()));
    EXPECT_FALSE(Holder::of(GetCurrentProcessId()).maybeIs("c:\\other.exe"));
    EXPECT_EQ("a process that the system does not name", Holder::of(0).description());
    const Holder named{5, "qor.exe"};
    EXPECT_TRUE(named.maybeIs("c:\\x\\QOR.exe"));
    EXPECT_FALSE((Holder{5, "c:\\y\\qor.exe"}.maybeIs("c:\\x\\qor.exe")));
}

}  // namespace

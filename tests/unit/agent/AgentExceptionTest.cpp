// An agent that ends in the middle of its work. A program of its own: the worker of its transport
// is left as it is and ends with the process, and until then it would let a faked clock run.

#include <gmock/gmock.h>

#include <future>
#include <stdexcept>

#include "facade/QorControlFacade.h"
#include "support/RecordingEolLog.h"
#include "support/TcpPeerThread.h"
#include "support/TempFolder.h"

namespace {

/// A host's window that is not up to its work.
class ThrowingMonitor final : public IProgressMonitor {
public:
    void reserved1() override {}
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    bool isCancelled() override { throw std::runtime_error("no window"); }
    void reserved8() override {}
    void reserved9() override {}
    void reportError(const std::string&, unsigned int) override {}
};

/// Of the record of a connect: where its mode stands, and that of a query for the online state.
constexpr std::size_t modeAt = 24;
constexpr std::uint32_t queryMode = 2;

/// Acknowledges all that comes, up to a connect.
void serveUpToAConnect(tcp::TcpPeer& qor) {
    qor.accept();
    for (bool isConnect = false; !isConnect;) {
        const tcp::Record record = qor.expectRecord();
        isConnect = record.commandId() == 2 && tcp::wordAt(record.payload, modeAt) != queryMode;
        qor.send(tcp::pingAnswer(record.requestId, 1));
    }
}

// Whatever state QOR is in then is the operator's affair.
TEST(AgentException, InTheMiddleOfItsWorkSendsNothingToQorAndLeavesItsConnection) {
    const TempFolder folder;
    tcp::TcpPeer qor;
    const std::string settings = folder.write(
        "qor.ini", "[CommonSettings]\r\nUseTcp=true\r\nServerIp=127.0.0.1\r\nTcpPort=" +
                       std::to_string(qor.port()) + "\r\n");
    RecordingEolLog log;
    const QorControlFacade facade(settings, &log, 0u, "");
    std::promise<void> hasFailed;
    tcp::TcpPeerThread script(qor, [&](tcp::TcpPeer& self) {
        serveUpToAConnect(self);
        hasFailed.get_future().wait();
        EXPECT_TRUE(self.hearsNothingFor(700));
    });
    ThrowingMonitor monitor;
    EXPECT_FALSE(facade.connect({}, QorControlFacade::EcuConnect::Default, &monitor));
    EXPECT_FALSE(facade.pingQor(100));
    hasFailed.set_value();
    script.join();
}

}  // namespace

// docs/protocol.md against the client: how long QOR is given for each request, and which commands
// are acted on when they come.

#include <algorithm>
#include <string>
#include <vector>

#include "ClientFixture.h"
#include "support/MarkdownTable.h"

namespace {

using testing_support::linesOfDocument;
using testing_support::tableOf;
using Row = std::vector<std::string>;

constexpr unsigned int hostMs = 7700;  // the "T" of the page; like all its times in steps of 50

std::string timeText(unsigned int ms) {
    if (ms < hostMs || ms >= hostMs + 1000) return std::to_string(ms);
    return ms == hostMs ? "T" : "T + " + std::to_string(ms - hostMs);
}

/// QOR acknowledges everything and describes two parameters, but never tells any data.
class DocumentedExchanges : public ClientTest {
protected:
    struct NoCallback final : ClientExternalOperating::ConnectCallback {
        void onProgress() override {}
        void onFigure(std::int32_t, std::uint32_t) override {}
    };

    /// How long QOR is given.
    struct Given {
        std::string acknowledgement;
        std::string data;
    };

    DocumentedExchanges() {
        clock.msPerRead = 1;
        qor.knows("Single", 1, false);
        qor.knows("Three", 2, true);
        client().connectEcu({}, nullptr, callback);  // or there is no KWP
    }

    /// By the last command that `operation` sends, and by the time that it waits behind it, which
    /// the looks at the clock make a little longer.
    template <class Operation>
    Given given(Operation operation) {
        qor.forgetSent();
        operation(client());
        const FakeQor::Sent& sent = qor.sent().back();
        const unsigned int waitedMs = (clock.now() - sent.tick) / 50 * 50;
        return {timeText(sent.timeoutMs), waitedMs == 0 ? "-" : timeText(waitedMs)};
    }

    using Client = ClientExternalOperating;

    Row connectRow() {
        const Given start = given([&](Client& c) { c.connectEcu({}, nullptr, callback); });
        const Given end = given([](Client& c) { c.disconnectEcu(); });
        clock.advance(1000);
        const Given query = given([](Client& c) { c.isEcuOnline(); });
        client().connectEcu({}, nullptr, callback);
        return {"`KwpConnect` to connect / disconnect / ask",
                start.acknowledgement + " / " + end.acknowledgement + " / " + query.acknowledgement,
                "connect: see states"};
    }

    Row descriptionRow() {
        const Given alone = given([](Client& c) { c.startDirectCtrl("Unknown"); });
        const Given read = given([&](Client& c) { c.getParamData("New", values, hostMs, true); });
        EXPECT_EQ(alone.data, alone.acknowledgement);
        EXPECT_EQ(read.data, read.acknowledgement);
        return {"`GetParamInfo`", alone.acknowledgement + "; before a read " + read.acknowledgement,
                "as long again"};
    }

    Row controlRow() {
        const Given write = given([](Client& c) { c.setParamData("Single", {1.0}); });
        const Given text = given([](Client& c) { c.setDynamicData("Single", {}, "1"); });
        const Given start = given([](Client& c) { c.startDirectCtrl("Single"); });
        const Given stop = given([](Client& c) { c.stopDirectCtrl("Single"); });
        for (const Given& other : {text, start, stop}) {
            EXPECT_EQ(other.acknowledgement, write.acknowledgement);
            EXPECT_EQ(other.data, write.data);
        }
        return {"`DirectCtrl` write, start, stop", write.acknowledgement, write.data};
    }

    Row arraysRow() {
        const Given read = given([&](Client& c) { c.getStaticParam("Three", sample, hostMs); });
        const Given write = given([](Client& c) { c.setStaticParam("Three", {}); });
        return {"`StaticParam` read / write", read.acknowledgement + " / " + write.acknowledgement,
                read.data + " / " + write.data};
    }

    Row busRow() {
        const Given bus = given([](Client& c) { c.connectCanBus({}); });
        const Given page = given([](Client& c) { c.setEcuSegment("WorkingPage", true); });
        EXPECT_EQ(page.acknowledgement, bus.acknowledgement);
        EXPECT_EQ(page.data, bus.data);
        return {"`CanBusConnect`, `EcuSegment`", bus.acknowledgement, bus.data};
    }

    template <class Operation>
    Row row(const std::string& request, Operation operation, const std::string& note = "") {
        const Given seen = given(operation);
        return {request, seen.acknowledgement, note.empty() ? seen.data : note};
    }

    Row pingRow() {
        const Given launch = given([](Client& c) { c.launch(10000); });
        Row ping = row("`Ping`", [](Client& c) { c.ping(hostMs); });
        ping[1] += "; during a launch " + launch.acknowledgement;
        return ping;
    }

    std::vector<Row> parameterRows() {
        const auto read = [&](Client& c) { c.getParamData("Single", values, hostMs, true); };
        const auto group = [&](Client& c) { c.readTogether({"Single"}, arrays, hostMs); };
        const auto list = [](Client& c) { c.subscribe(c.epoch(), {"Single"}); };
        return {descriptionRow(),
                row("`DirectCtrl` read", read),
                controlRow(),
                arraysRow(),
                row("`ReadTogether`", group),
                row("`SetParamList`", list, "values come as `ReceiveParamData`")};
    }

    std::vector<Row> otherRows() {
        protocol::ExecKwp kwp;
        kwp.timeoutMs = hostMs;
        std::vector<protocol::DtcRecord> dtcs;
        std::vector<protocol::CanBusItem> frames;
        return {
            row("`GetDTC`", [&](Client& c) { c.getDtc(hostMs, dtcs, hostMs); }),
            row("`EcuToolRoutine`", [](Client& c) { c.clearDtc(); }),
            row("`ExecKwp`", [&](Client& c) { c.execKwp(kwp, kwp); }),
            busRow(),
            row("`CanBusData`", [&](Client& c) { c.getCanBusData({}, frames, hostMs); }),
            row("`CanBusSend`", [](Client& c) { c.sendCanBusMsg({}, hostMs); }),
            row(
                "`StartEdit`", [](Client& c) { c.startEdit({}); }, "exports come as `StartEdit`"),
            row("`Shutdown`", [](Client& c) { c.shutdown(true, true); }),
            row("`RedirectUI`, the choice", [&](Client&) { qor.send(CommandRedirectUI()); })};
    }

    NoCallback callback;
    common::Doubles values;
    std::vector<std::vector<double>> arrays;
    SampledValue sample;
};

TEST_F(DocumentedExchanges, GiveQorTheTimesOfThePage) {
    std::vector<Row> seen = {pingRow(), connectRow()};
    for (const auto& more : {parameterRows(), otherRows()})
        seen.insert(seen.end(), more.begin(), more.end());
    EXPECT_THAT(tableOf(linesOfDocument(PROTOCOL_DOCUMENT),
                        "| request | acknowledgement | then the data |"),
                ::testing::ElementsAreArray(seen));
}

TEST_F(DocumentedExchanges, ActOnTheCommandsThatThePageMarks) {
    std::vector<std::string> marked, prototypes;
    for (const Row& command :
         tableOf(linesOfDocument(PROTOCOL_DOCUMENT), "| id | command | sender | fields |"))
        if (command.at(1).find("(A)") != std::string::npos) marked.push_back(command.at(0));
    for (const auto& prototype : client().prototypes())
        prototypes.push_back(
            std::to_string(dynamic_cast<const IExternalCommand&>(*prototype).getId()));
    EXPECT_THAT(prototypes, ::testing::UnorderedElementsAreArray(marked));
}

}  // namespace

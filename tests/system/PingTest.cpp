// Whether QOR answers, told of a QOR that does, refuses, says nothing or is gone. Beside the table
// of the other operations, because starting a station needs a QOR that answers.

#include <gmock/gmock.h>

#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

struct Row {
    const char* name;
    std::string (*action)(Transport);  ///< of QOR at every ping; null: QOR is gone
    bool succeeds;
    std::vector<std::string> requests;
    unsigned leastMs;  ///< the agent's wait
    unsigned mostMs;   ///< the caller's wait, and some
};

constexpr unsigned timeoutMs = 400;
constexpr unsigned slackMs = 300;

const Row rows[] = {
    {"anAnswer",
     [](Transport) { return std::string(R"({"answer":"normal"})"); },
     true,
     {"Ping 0"},
     0,
     2 * timeoutMs},
    {"aRefusal",
     [](Transport) { return std::string(R"({"answer":"refuse"})"); },
     false,
     {"Ping 0"},
     0,
     2 * timeoutMs + slackMs},
    {"silence",
     [](Transport transport) { return silence(transport, 900); },
     false,
     {"Ping 0"},
     timeoutMs - 30,
     2 * timeoutMs + slackMs},
    {"aQorThatIsGone", nullptr, false, {}, 0, 2 * timeoutMs + slackMs},
};

class Ping : public testing::TestWithParam<std::tuple<Transport, Row>> {
protected:
    Station station{std::get<0>(GetParam())};
    const Row& row = std::get<1>(GetParam());

    /// QOR behaves as the row says from now on, and the library has found it.
    void change() {
        const std::size_t records = station.wire().size();
        station.script = R"({"rules":[{"match":{"id":0},"action":)" +
                         row.action(std::get<0>(GetParam())) + "}]}";
        station.restartQor();
        ASSERT_TRUE(eventually(10000, [&] { return station.wire().size() > records; }));
    }
};

std::string pingName(const testing::TestParamInfo<std::tuple<Transport, Row>>& info) {
    return nameOf(std::get<0>(info.param)) + "_meets_" + std::get<1>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(Over, Ping, testing::Combine(everyTransport(), testing::ValuesIn(rows)),
                         pingName);

TEST_P(Ping, SpeaksAndReportsAsTheTableSays) {
    ASSERT_TRUE(station.start());
    if (row.action != nullptr)
        change();
    else
        qor::killAll();
    const std::size_t records = station.wire().size();
    const std::size_t traced = station.trace().size();

    bool done = !row.succeeds;
    const unsigned elapsedMs = elapsedMsOf([&] { done = station->pingQor(timeoutMs); });

    EXPECT_EQ(row.succeeds, done);
    EXPECT_GE(elapsedMs, row.leastMs);
    EXPECT_LE(elapsedMs, row.mostMs);
    EXPECT_THAT(station.requests(records), ElementsAreArray(row.requests));
    EXPECT_THAT(station.answers(records), IsEmpty());
    const std::vector<std::string> failure = {"2\tQorControlFacade::pingQor(), t: # ms"};
    EXPECT_THAT(station.trace(traced),
                ElementsAreArray(row.succeeds ? std::vector<std::string>() : failure));
    EXPECT_THAT(station.logLines(), IsEmpty());
}

}  // namespace

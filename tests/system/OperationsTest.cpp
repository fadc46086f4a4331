// Every operation but two against a QOR that does as asked (in both ways of answering), refuses, or
// stays silent: the records on the wire, the results, the trace, the host's log.

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <tuple>

#include "facade/channel/OperationTable.h"
#include "Models.h"
#include "OperationTable.h"
#include "Station.h"
#include "Waiting.h"

using testing::ElementsAreArray;

namespace {

/// Longer than any row waits.
constexpr unsigned hangMs = 900;

enum class Answering { asAsked, separately, refusing, silent };

struct Case {
    Transport transport;
    Answering answering;
    const OperationRow* row;
};

std::vector<Case> casesOver(Transport transport) {
    std::vector<Case> cases;
    for (const Answering answering :
         {Answering::asAsked, Answering::separately, Answering::refusing, Answering::silent})
        for (const OperationRow& row : operationTable())
            if (answering != Answering::silent || row.heedsTimeout)
                cases.push_back({transport, answering, &row});
    return cases;
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (const Transport transport : spokenTransports) {
        const auto more = casesOver(transport);
        cases.insert(cases.end(), more.begin(), more.end());
    }
    return cases;
}

std::string caseName(const testing::TestParamInfo<Case>& info) {
    const char* const kinds[] = {"_succeeds", "_isAnsweredSeparately", "_isRefused",
                                 "_meetsSilence"};
    return nameOf(info.param.transport) + "_" + info.param.row->name +
           kinds[static_cast<int>(info.param.answering)];
}

std::string scriptFor(Transport transport, Answering answering) {
    if (answering == Answering::asAsked || answering == Answering::separately) return {};
    const std::string action =
        answering == Answering::refusing ? R"({"answer":"refuse"})" : silence(transport, hangMs);
    std::vector<Rule> rules;
    for (const OperationRow& row : operationTable())
        if (answering == Answering::refusing || row.heedsTimeout)
            rules.push_back({row.decisiveRequest, action});
    return scriptOf(rules);
}

/// A QOR that answers separately has nothing to say where an acknowledgement is all.
std::vector<std::string> onlyData(std::vector<std::string> answers) {
    const auto isNone = [](const std::string& answer) {
        const bool isWrite =
            answer.find(" op=") != std::string::npos && answer.find(" op=1 ") == std::string::npos;
        return isWrite || answer.rfind("EcuSegment", 0) == 0;
    };
    answers.erase(std::remove_if(answers.begin(), answers.end(), isNone), answers.end());
    return answers;
}

std::vector<std::string> withTimeout(std::vector<std::string> lines, unsigned timeoutMs) {
    const std::string mark = "{timeout}";
    for (std::string& line : lines)
        if (const auto at = line.find(mark); at != std::string::npos)
            line.replace(at, mark.size(), std::to_string(timeoutMs));
    return lines;
}

/// Whether the ECU is online hangs on how busy the machine is: an agent that waits for a silent QOR
/// does not ask.
std::vector<std::string> withoutOnlineState(std::vector<std::string> lines) {
    const std::string words = "isEcuOnline=";
    for (std::string& line : lines)
        if (const auto at = line.find(words); at != std::string::npos)
            line.erase(at + words.size());
    return lines;
}

/// One station serves all rows of one kind of answering: starting QOR takes longer than a row.
class Operations : public testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        const Kind wanted(GetParam().transport, GetParam().answering);
        if (station_ && kind_ == wanted) return;
        station_.reset();
        station_ = std::make_unique<Station>(wanted.first);
        kind_ = wanted;
        station_->settings.model = station_->folder.write("model.json", modelExporting(-1, -1));
        station_->script = scriptFor(wanted.first, wanted.second);
        if (wanted.second == Answering::separately) station_->settings.answerStyle = "separate";
        ASSERT_TRUE(station_->start());
        ASSERT_TRUE(station_->connectEcu());
    }
    static void TearDownTestSuite() { station_.reset(); }

    static Station& station() { return *station_; }

    static std::vector<std::string> expectedAnswers() {
        const OperationRow& row = *GetParam().row;
        return GetParam().answering <= Answering::separately ? row.answers : row.answersBefore;
    }
    /// What acknowledges only is left out where it is not sent, or may come when the operation has
    /// returned: a message is acknowledged by having been taken.
    static std::vector<std::string> compared(const std::vector<std::string>& answers) {
        const bool inOrder =
            GetParam().transport == Transport::tcp && GetParam().answering == Answering::asAsked;
        return inOrder ? answers : onlyData(answers);
    }

    /// What QOR tells by itself comes later. And it writes down a message when that has been
    /// delivered: the operation may have returned by then.
    static void awaitAnswers(std::size_t from, std::size_t count) {
        eventually(3000, [=] { return compared(station().answers(from)).size() >= count; });
    }

private:
    using Kind = std::pair<Transport, Answering>;
    static std::unique_ptr<Station> station_;
    static Kind kind_;
};

std::unique_ptr<Station> Operations::station_;
Operations::Kind Operations::kind_;

INSTANTIATE_TEST_SUITE_P(Over, Operations, testing::ValuesIn(allCases()), caseName);

TEST_P(Operations, SpeaksAndReportsAsTheTableSays) {
    const OperationRow& row = *GetParam().row;
    const bool succeeds = GetParam().answering <= Answering::separately;
    const unsigned timeoutMs = GetParam().answering == Answering::silent ? 400 : 3000;
    if (row.prepare) row.prepare(station().facade());
    // QOR may still hang from the row before.
    ASSERT_TRUE(station()->pingQor(10000));
    const std::size_t records = station().wire().size();
    const std::size_t traced = station().trace().size();
    const std::size_t logged = station().logLines().size();

    std::string results;
    EXPECT_EQ(succeeds || row.returnsAtOnce, row.call(station().facade(), timeoutMs, results));

    EXPECT_EQ(succeeds ? row.results : std::string(), results);
    auto requests = withTimeout(row.requests, timeoutMs);
    if (row.returnsAtOnce) {
        ASSERT_TRUE(station()->pingQor(10000));  // the agent has carried it out
        requests.push_back("Ping 0");
    }
    EXPECT_THAT(station().requests(records), ElementsAreArray(requests));
    const auto answers = compared(withTimeout(expectedAnswers(), timeoutMs));
    awaitAnswers(records, answers.size());
    EXPECT_THAT(compared(station().answers(records)), ElementsAreArray(answers));
    EXPECT_THAT(withoutOnlineState(station().trace(traced)),
                ElementsAreArray(succeeds ? row.trace : row.failureTrace));
    EXPECT_THAT(station().logLines(logged), ElementsAreArray(succeeds ? row.log : row.failureLog));
}

/// Some operations have several, told apart behind an underscore.
bool hasRow(const std::string& operation) {
    const auto& rows = operationTable();
    return std::any_of(rows.begin(), rows.end(), [&](const OperationRow& row) {
        const std::string name = row.name;
        return name.substr(0, name.find('_')) == operation;
    });
}

TEST(OperationTable, HasARowForEveryOperationButThoseThatHaveTestsOfTheirOwn) {
    using channel::Kind;
    const std::set<Kind> apart{Kind::connect, Kind::pingQor, Kind::startDtcRead, Kind::stopDtcRead,
                               Kind::stopParamRead};
    for (const auto& row : channel::operations)
        EXPECT_EQ(hasRow(row.name), apart.count(row.kind) == 0) << row.name;
}

}  // namespace

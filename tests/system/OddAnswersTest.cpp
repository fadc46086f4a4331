// Answers that are of another kind, missing, late, double or about something else, for every
// operation whose results QOR sends. One station per way: each operation meets one fault after the
// other and must be well again behind each.

#include <gmock/gmock.h>

#include "OperationTable.h"
#include "Station.h"
#include "Waiting.h"

using testing::IsEmpty;

namespace {

constexpr unsigned amply = 3000;
constexpr unsigned shortly = 150;
constexpr unsigned lateMs = 450;

struct Fault {
    const char* action;
    bool fails;  ///< the call that meets it
};

constexpr Fault faults[] = {{R"({"answer":"wrongType"})", true},
                            {R"({"answer":"ackOnly"})", true},
                            {R"({"delayMs":450})", true},
                            {R"({"duplicates":3})", false},
                            {R"({"answer":"separate"})", false}};

bool bringsResults(const OperationRow& row) {
    return !row.results.empty();
}

/// The nth request of a row, for n from 1.
std::string nthOf(const OperationRow& row, std::size_t n) {
    std::string match = row.decisiveRequest;
    match.insert(match.size() - 1, ",\"nth\":" + std::to_string(n));
    return match;
}

/// Each row meets the faults in turn, every second of its requests.
std::string scriptOfFaults() {
    std::vector<Rule> rules;
    for (const OperationRow& row : operationTable()) {
        if (!bringsResults(row)) continue;
        std::size_t n = 1;
        for (const Fault& fault : faults) {
            rules.push_back({nthOf(row, n), fault.action});
            n += 2;
        }
    }
    return scriptOf(rules);
}

class OddAnswers : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    void expectOne(const OperationRow& row, const Fault& fault) {
        std::string results;
        EXPECT_EQ(!fault.fails, row.call(station.facade(), fault.fails ? shortly : amply, results));
        EXPECT_EQ(fault.fails ? "" : row.results, results);
        results.clear();
        if (isLate(fault)) Sleep(lateMs);  // none is taken for that of another operation
        EXPECT_TRUE(row.call(station.facade(), amply, results));
        EXPECT_EQ(row.results, results);
    }
    static bool isLate(const Fault& fault) {
        return std::string(fault.action).find("delayMs") != std::string::npos;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, OddAnswers, everyTransport(), transportName);

TEST_P(OddAnswers, FailTheirOwnCallAtMostAndNoOther) {
    station.script = scriptOfFaults();
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    std::size_t tried = 0;
    for (const OperationRow& row : operationTable()) {
        if (!bringsResults(row)) continue;
        SCOPED_TRACE(row.name);
        if (row.prepare) row.prepare(station.facade());
        // The description is then known, which would spare its request; and it has its own test.
        if (std::string(row.name) == "getParamDescription") continue;
        for (const Fault& fault : faults) {
            SCOPED_TRACE(fault.action);
            expectOne(row, fault);
        }
        ++tried;
    }
    EXPECT_EQ(7u, tried);
}

TEST_P(OddAnswers, AGroupWithIndicesOfOthersFails) {
    station.script = R"({"rules":[{"match":{"id":18,"nth":1},"action":{"answer":"wrongName"}}]})";
    ASSERT_TRUE(station.start());
    std::vector<std::vector<double>> group;
    EXPECT_FALSE(station->getParamDataAtOnce({"MaxEngineSpeed"}, group, shortly));
    EXPECT_THAT(group, IsEmpty());
    EXPECT_TRUE(station->getParamDataAtOnce({"MaxEngineSpeed"}, group, amply));
}

}  // namespace

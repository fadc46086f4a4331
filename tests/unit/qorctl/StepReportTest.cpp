#include "StepReport.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>

#include "CauseJson.h"
#include "support/TempFolder.h"

using nlohmann::json;
using qorcontrol::Cause;
using qorctl::Outcome;
using testing::HasSubstr;
using testing::Not;

namespace {

class StepReport : public testing::Test {
protected:
    ~StepReport() override { std::fclose(stream_); }

    /// What is printed of a step that ends so, without its time.
    std::string printed(const Outcome& outcome) {
        report.runAlways("step", [&] { return outcome; });
        std::fflush(stream_);
        return std::regex_replace(bytesOfFile(path_), std::regex(" +\\d+ ms"), "");
    }

    TempFolder folder;

private:
    const std::string path_ = folder.pathOf("console.txt");
    std::FILE* const stream_ = std::fopen(path_.c_str(), "wb");
    qorctl::Console console_{stream_};

protected:
    qorctl::StepReport report{console_, "c:\\host.log"};
};

Outcome failureOf(Cause cause) {
    Outcome outcome = Outcome::failure("no value");
    outcome.told.cause = cause;
    outcome.told.sentence = "QOR is away.";
    outcome.told.check = "Call it.";
    return outcome;
}

TEST_F(StepReport, OfASuccessIsOneLine) {
    EXPECT_EQ("ok      step  all there\n", printed(Outcome::success("all there")));
    EXPECT_TRUE(report.asJson().at(0).at("cause").is_null());
    EXPECT_EQ(false, report.asJson().at(0).at("mayBelongToEarlier"));
}

TEST_F(StepReport, OfAFailedCallTellsCauseAndWhatToCheck) {
    EXPECT_EQ(
        "FAILED  step  no value\n"
        "        cause: noData: QOR is away.\n"
        "        check: Call it.\n"
        "        trace: c:\\host.log\n",
        printed(failureOf(Cause::noData)));
    EXPECT_EQ(
        (json{
            {"code", 6}, {"name", "noData"}, {"sentence", "QOR is away."}, {"check", "Call it."}}),
        report.asJson().at(0).at("cause"));
}

TEST_F(StepReport, ATitleOfAnyBytesIsUtf8ForPrograms) {
    report.runAlways("set N 1 \xB0", [] { return Outcome::success(); });
    EXPECT_NO_THROW(report.asJson().dump());
}

TEST_F(StepReport, OfAFailureWithoutACallTellsNoCause) {
    EXPECT_EQ("FAILED  step  no value\n        trace: c:\\host.log\n",
              printed(Outcome::failure("no value")));
    EXPECT_TRUE(report.asJson().at(0).at("cause").is_null());
}

TEST_F(StepReport, OfWhatTheLibraryHadNoPartInHasItsDetailsAndNoTrace) {
    Outcome outcome = Outcome::failure("nobody is there");
    outcome.details = {"check: start QOR"};
    outcome.isTraced = false;
    EXPECT_EQ("FAILED  step  nobody is there\n        check: start QOR\n", printed(outcome));
    EXPECT_EQ(json{"check: start QOR"}, report.asJson().at(0).at("details"));
}

TEST_F(StepReport, WarnsOfAnAnswerThatMayBelongToAnEarlierRequest) {
    Outcome outcome = Outcome::success("80");
    outcome.told.mayBelongToEarlier = true;
    EXPECT_EQ(
        "ok      step  80\n"
        "        warning: an answer may belong to an earlier request, whose time was over\n",
        printed(outcome));
    EXPECT_EQ(true, report.asJson().at(0).at("mayBelongToEarlier"));
}

TEST(CauseNames, AreThoseOfTheLibrarysHeader) {
    std::ifstream header(CAUSE_HEADER);
    const std::string text{std::istreambuf_iterator<char>(header), {}};
    const std::regex row("    (\\w+) = (\\d+)");
    int rows = 0;
    for (std::sregex_iterator found(text.begin(), text.end(), row), end; found != end; ++found) {
        EXPECT_EQ((*found)[1], qorctl::nameOf(static_cast<Cause>(std::stoi((*found)[2]))));
        ++rows;
    }
    EXPECT_EQ(static_cast<int>(Cause::wrongOrder) + 1, rows);
}

}  // namespace

#include "serve/metrics/Metrics.h"

#include <gmock/gmock.h>

#include <chrono>
#include <limits>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using nlohmann::json;
using qorctl::serve::Gauges;
using qorctl::serve::Metrics;
using qorctl::serve::RpcCode;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

class ServerMetrics : public testing::Test {
protected:
    Metrics::Clock::time_point time;
    Metrics metrics{{"pingQor", "getState"}, [this] { return time; }};

    void passMs(int ms) { time += std::chrono::milliseconds(ms); }
    std::string text() const { return metrics.prometheusText(Gauges()); }
    /// One failure more of a kind that can be told apart by its number.
    void fail(int number) { metrics.finished("getState", "noData", 0.001, std::to_string(number)); }
};

/// A line, and not the end of one or the beginning.
auto hasLine(const std::string& line) {
    return HasSubstr("\n" + line + "\n");
}

TEST_F(ServerMetrics, OfAServerThatHasDoneNothingAreZeroesAndNotMissing) {
    EXPECT_THAT(text(), AllOf(hasLine("qor_requests_total{method=\"pingQor\"} 0"),
                              hasLine("qor_requests_total{method=\"other\"} 0"),
                              hasLine("qor_request_failures_total{method=\"getState\"} 0"),
                              hasLine("qor_failures_total{cause=\"agentEnded\"} 0"),
                              hasLine("qor_failures_total{cause=\"wrongOrder\"} 0"),
                              hasLine("qor_failures_total{cause=\"taken\"} 0"),
                              hasLine("qor_request_refusals_total{reason=\"forbidden\"} 0"),
                              hasLine("qor_stream_values_total 0"),
                              hasLine("qor_stream_values_missed_total 0"),
                              hasLine("qor_reconnects_total 0"), Not(HasSubstr("_bucket")),
                              Not(HasSubstr("qor_last_ping_seconds"))));
    EXPECT_EQ(json::parse(R"({"requests":0,"failures":0,"requestsByMethod":{},
                              "failuresByCause":{},"lastFailures":[],"pingMs":null})"),
              metrics.snapshot());
}

TEST_F(ServerMetrics, CountRequestsByMethodFailuresByCauseAndRefusalsByReason) {
    metrics.finished("getState", "", 0.25);
    metrics.finished("getState", "qorSilent", 0.75);
    metrics.refused("getState", RpcCode::busy);
    metrics.refused("pingQor", RpcCode::invalidParams);
    EXPECT_THAT(text(), AllOf(hasLine("qor_requests_total{method=\"getState\"} 3"),
                              hasLine("qor_requests_total{method=\"pingQor\"} 1"),
                              hasLine("qor_request_failures_total{method=\"getState\"} 1"),
                              hasLine("qor_failures_total{cause=\"qorSilent\"} 1"),
                              hasLine("qor_request_refusals_total{reason=\"busy\"} 1"),
                              hasLine("qor_request_refusals_total{reason=\"invalidParams\"} 1"),
                              hasLine("qor_request_duration_seconds_count{method=\"getState\"} 2"),
                              hasLine("qor_request_duration_seconds_sum{method=\"getState\"} 1")));
    const json status = metrics.snapshot();
    EXPECT_EQ(4, status["requests"]);
    EXPECT_EQ(3, status["failures"]);
    EXPECT_EQ(json::parse(R"({"qorSilent":1,"busy":1,"invalidParams":1})"),
              status["failuresByCause"]);
    EXPECT_EQ(json::parse(R"({"requests":3,"failures":2,"lastMs":750.0,"meanMs":500.0})"),
              status["requestsByMethod"]["getState"]);
    EXPECT_EQ(json::parse(R"({"requests":1,"failures":1,"lastMs":null,"meanMs":null})"),
              status["requestsByMethod"]["pingQor"]);
}

TEST_F(ServerMetrics, CountADurationInEachBucketFromItsOwnOn) {
    for (const double seconds : {0.0004, 0.0005, 0.03, 31.0})
        metrics.finished("getState", "", seconds);
    const auto bucket = [](const char* bound, int count) {
        return hasLine("qor_request_duration_seconds_bucket{method=\"getState\",le=\"" +
                       std::string(bound) + "\"} " + std::to_string(count));
    };
    EXPECT_THAT(text(), AllOf(bucket("0.0005", 2), bucket("0.02", 2), bucket("0.05", 3),
                              bucket("30", 3), bucket("+Inf", 4)));
}

TEST_F(ServerMetrics, CallOtherWhatClientsInvent) {
    for (int i = 0; i < 1000; ++i) metrics.refused(std::to_string(i), RpcCode::methodNotFound);
    metrics.refused("a\"\n", RpcCode::methodNotFound);
    EXPECT_THAT(text(), AllOf(hasLine("qor_requests_total{method=\"other\"} 1001"),
                              Not(HasSubstr("999")), Not(HasSubstr("method=\"a"))));
}

TEST_F(ServerMetrics, KeepTheLastTwentyFailuresWithTheirAge) {
    for (int i = 0; i < 25; ++i) {
        fail(i);
        passMs(10);
    }
    metrics.refused("getState", RpcCode::busy);
    const json failures = metrics.snapshot()["lastFailures"];
    ASSERT_EQ(20u, failures.size());
    EXPECT_EQ(json::parse(R"({"timeMs":10,"method":"getState","name":"noData","sentence":"24",
                              "check":""})"),
              failures.front());
    EXPECT_EQ("5", failures.back()["sentence"]);
    EXPECT_EQ(200, failures.back()["timeMs"]);
}

TEST_F(ServerMetrics, KeepOnlyTheBeginningOfALongTextAndWholeCharacters) {
    std::string umlauts = "a";
    while (umlauts.size() < 100000) umlauts += "\xC3\xA4";
    metrics.finished("getState", "noData", 0.001, umlauts, "check");
    const json failure = metrics.snapshot()["lastFailures"][0];
    EXPECT_GT(600u, failure.dump().size());  // which throws where the text is no UTF-8
    EXPECT_EQ("check", failure["check"]);
}

TEST_F(ServerMetrics, TellTheLastPingUntilOneFails) {
    metrics.finished("pingQor", "", 0.002);
    metrics.finished("getState", "noData", 0.5);
    EXPECT_EQ(2.0, metrics.snapshot()["pingMs"]);
    EXPECT_THAT(text(), hasLine("qor_last_ping_seconds 0.002"));
    metrics.finished("pingQor", "qorSilent", 6);
    EXPECT_TRUE(metrics.snapshot()["pingMs"].is_null());
    EXPECT_THAT(text(), Not(HasSubstr("qor_last_ping_seconds")));
}

TEST_F(ServerMetrics, CountStreamsReconnectsAndHttp) {
    metrics.streamValues(12);
    metrics.streamValues(4294967295u);
    metrics.streamMissed(3);
    metrics.reconnected();
    metrics.httpAnswered(200);
    metrics.httpAnswered(200);
    metrics.httpAnswered(404);
    for (const int odd : {-1, 1000, std::numeric_limits<int>::max()}) metrics.httpAnswered(odd);
    EXPECT_THAT(text(), AllOf(hasLine("qor_stream_values_total 4294967307"),
                              hasLine("qor_stream_values_missed_total 3"),
                              hasLine("qor_reconnects_total 1"),
                              hasLine("qor_http_responses_total{code=\"200\"} 2"),
                              hasLine("qor_http_responses_total{code=\"404\"} 1"),
                              hasLine("qor_http_responses_total{code=\"0\"} 3")));
}

TEST_F(ServerMetrics, ShowWhatIsAsItIsAtTheMoment) {
    Gauges gauges;
    gauges.clients = 3;
    gauges.streams = 4;
    gauges.waiting = 5;
    gauges.heldActuators = 6;
    gauges.isEcuOnline = true;
    gauges.uptimeS = 7.5;
    EXPECT_THAT(
        metrics.prometheusText(gauges),
        AllOf(hasLine("qor_clients 3"), hasLine("qor_streams 4"), hasLine("qor_waiting_requests 5"),
              hasLine("qor_held_actuators 6"), hasLine("qor_ecu_online 1"),
              hasLine("qor_connecting 0"), hasLine("qor_uptime_seconds 7.5")));
}

TEST_F(ServerMetrics, SayBeforeEachFamilyWhatItIs) {
    metrics.finished("getState", "noData", 0.001);
    std::istringstream lines(text());
    std::string family;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("# HELP ", 0) == 0) {
            family = line.substr(7, line.find(' ', 7) - 7);
            ASSERT_TRUE(std::getline(lines, line));
            EXPECT_EQ(0u, line.find("# TYPE " + family + " ")) << line;
        } else {
            EXPECT_EQ(0u, line.find(family)) << line;
        }
    }
}

TEST_F(ServerMetrics, LoseNothingOfManyThreads) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([this] {
            for (int j = 0; j < 2000; ++j) {
                fail(j);
                metrics.streamValues(1);
                if (j % 100 == 0) text();
            }
        });
    for (std::thread& each : threads) each.join();
    EXPECT_EQ(8000, metrics.snapshot()["failures"]);
    EXPECT_THAT(text(), hasLine("qor_stream_values_total 8000"));
}

}  // namespace

#include "serve/metrics/PrometheusText.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "CauseJson.h"
#include "qorcontrol/Version.h"
#include "serve/metrics/Metrics.h"

namespace qorctl::serve {
namespace {

using qorcontrol::Cause;
using qorctl::nameOf;

/// A text that grows by families of lines. Labels need no escaping: all are words of this program.
class Page {
public:
    void family(const char* name, const char* type, const char* help) {
        add("# HELP {} {}\n# TYPE {} {}\n", name, help, name, type);
    }
    template <class Value>
    void line(const char* name, const std::string& labels, const Value& value) {
        if (labels.empty())
            add("{} {}\n", name, value);
        else
            add("{}{{{}}} {}\n", name, labels, value);
    }
    template <class Value>
    void single(const char* name, const char* type, const char* help, const Value& value) {
        family(name, type, help);
        line(name, {}, value);
    }
    std::string text() { return std::move(text_); }

private:
    template <class... Values>
    void add(fmt::format_string<Values...> format, Values&&... values) {
        fmt::format_to(std::back_inserter(text_), format, std::forward<Values>(values)...);
    }

    std::string text_;
};

std::string labelOf(const char* name, const std::string& value) {
    return fmt::format("{}=\"{}\"", name, value);
}

/// Those that can be, at 0: a series that begins with its first failure would hide it, because
/// rates are made of differences.
Counts causes() {
    Counts counts = {{nameOf(RpcCode::internalError), 0}, {nameOf(RpcCode::taken), 0}};
    for (int i = static_cast<int>(Cause::none) + 1; i <= static_cast<int>(Cause::wrongOrder); ++i)
        counts[nameOf(static_cast<Cause>(i))] = 0;
    return counts;
}

Counts reasons() {
    Counts counts;
    for (const RpcCode code : {RpcCode::parseError, RpcCode::invalidRequest,
                               RpcCode::methodNotFound, RpcCode::invalidParams, RpcCode::busy,
                               RpcCode::readOnly, RpcCode::ending, RpcCode::refused})
        counts[nameOf(code)] = 0;
    return counts;
}

void addEach(Page& page, const char* name, const char* help, const char* label,
             const Counts& counts) {
    page.family(name, "counter", help);
    for (const auto& [value, count] : counts) page.line(name, labelOf(label, value), count);
}

void addRequests(Page& page, const Figures& figures) {
    Counts requests;
    Counts failures;
    Counts byCause = causes();
    Counts byReason = reasons();
    for (const auto& [name, method] : figures.methods) {
        requests[name] = method.durations.count() + sumOf(method.refusals);
        failures[name] = sumOf(method.failures);
        for (const auto& [cause, count] : method.failures) byCause[cause] += count;
        for (const auto& [reason, count] : method.refusals) byReason[reason] += count;
    }
    addEach(page, "qor_requests_total", "Requests that were answered, with success or not.",
            "method", requests);
    addEach(page, "qor_request_failures_total", "Requests that were carried out and have failed.",
            "method", failures);
    addEach(page, "qor_failures_total", "The same failures by cause.", "cause", byCause);
    addEach(page, "qor_request_refusals_total", "Requests that were not carried out, by reason.",
            "reason", byReason);
}

void addBuckets(Page& page, const Histogram& durations, const std::string& label) {
    constexpr const char* buckets = "qor_request_duration_seconds_bucket";
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < durations.buckets().size(); ++i) {
        sum += durations.buckets()[i];
        const std::string bound =
            i < Histogram::bounds.size() ? fmt::format("{}", Histogram::bounds[i]) : "+Inf";
        page.line(buckets, label + "," + labelOf("le", bound), sum);
    }
}

/// Of methods that were carried out; 17 lines for each of the others would say nothing.
void addDurations(Page& page, const Figures& figures) {
    page.family("qor_request_duration_seconds", "histogram",
                "Time from the beginning of a request's execution to its end, without its wait.");
    for (const auto& [name, method] : figures.methods) {
        if (method.durations.count() == 0) continue;
        const std::string label = labelOf("method", name);
        addBuckets(page, method.durations, label);
        page.line("qor_request_duration_seconds_sum", label, method.durations.sum());
        page.line("qor_request_duration_seconds_count", label, method.durations.count());
    }
}

void addStreams(Page& page, const Figures& figures, const Gauges& gauges) {
    page.single("qor_streams", "gauge", "Streams that are open.", gauges.streams);
    page.single("qor_stream_values_total", "counter", "Streamed values given to clients.",
                figures.streamValues);
    page.single("qor_stream_values_missed_total", "counter",
                "Streamed values lost because their client was behind with reading.",
                figures.streamMissed);
}

void addState(Page& page, const Figures& figures, const Gauges& gauges) {
    page.family("qor_build_info", "gauge", "Version of the server; always 1.");
    page.line("qor_build_info", labelOf("version", QOR_VERSION_TEXT), 1);
    page.single("qor_uptime_seconds", "gauge", "Age of the server.", gauges.uptimeS);
    page.single("qor_clients", "gauge", "Clients that are there.", gauges.clients);
    page.single("qor_waiting_requests", "gauge", "Requests that wait for their turn.",
                gauges.waiting);
    page.single("qor_held_actuators", "gauge", "Actuators under direct control.",
                gauges.heldActuators);
    page.single("qor_ecu_online", "gauge", "1 while the ECU is online.",
                static_cast<int>(gauges.isEcuOnline));
    page.single("qor_connecting", "gauge", "1 while an ECU is being connected.",
                static_cast<int>(gauges.isConnecting));
    page.single("qor_reconnects_total", "counter",
                "Times that the ECU was online again after it had been lost.", figures.reconnects);
    if (figures.pingS)
        page.single("qor_last_ping_seconds", "gauge", "Round trip of the last ping, if it worked.",
                    *figures.pingS);
}

void addHttp(Page& page, const Figures& figures) {
    constexpr const char* responses = "qor_http_responses_total";
    page.family(responses, "counter", "HTTP responses, by status.");
    for (const auto& [status, count] : figures.httpResponses)
        page.line(responses, labelOf("code", std::to_string(status)), count);
}

}  // namespace

std::string prometheusTextOf(const Figures& figures, const Gauges& gauges) {
    Page page;
    addState(page, figures, gauges);
    addRequests(page, figures);
    addDurations(page, figures);
    addStreams(page, figures, gauges);
    addHttp(page, figures);
    return page.text();
}

}  // namespace qorctl::serve

#include "doctor/FindingReport.h"

#include <fmt/format.h>

#include <algorithm>

#include "JsonText.h"

namespace qorctl::doctor {
namespace {

constexpr std::size_t statusWidth = 9;

const char* nameOf(Status status) {
    switch (status) {
        case Status::ok:
            return "ok";
        case Status::warning:
            return "warning";
        default:
            return "problem";
    }
}

long countOf(const Findings& findings, Status status) {
    return std::count_if(findings.begin(), findings.end(),
                         [status](const Finding& finding) { return finding.status == status; });
}

std::string counted(long count, const char* one) {
    return fmt::format("{} {}{}", count, one, count == 1 ? "" : "s");
}

std::string summaryOf(const Findings& findings) {
    const std::string warnings = counted(countOf(findings, Status::warning), "warning");
    if (wouldWork(findings)) return "A host would work with these settings (" + warnings + ").";
    return fmt::format("A host would not work with these settings: {}, {}.",
                       counted(countOf(findings, Status::problem), "problem"), warnings);
}

/// Texts of the system have line ends of their own.
std::string onOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

}  // namespace

bool wouldWork(const Findings& findings) {
    return countOf(findings, Status::problem) == 0;
}

std::vector<std::string> linesOf(const Findings& findings) {
    std::size_t idWidth = 0;
    for (const Finding& finding : findings) idWidth = std::max(idWidth, finding.id.size());
    Findings sorted = findings;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Finding& left, const Finding& right) {
        return left.status < right.status;
    });
    std::vector<std::string> lines;
    for (const Finding& finding : sorted) {
        lines.push_back(fmt::format("{:<{}}{:<{}}  {}", nameOf(finding.status), statusWidth,
                                    finding.id, idWidth, onOneLine(finding.what)));
        if (!finding.remedy.empty())
            lines.push_back(fmt::format("{:{}}-> {}", "", statusWidth + idWidth + 2,
                                        onOneLine(finding.remedy)));
    }
    lines.push_back(summaryOf(findings));
    return lines;
}

nlohmann::json jsonOf(const Findings& findings) {
    nlohmann::json all = nlohmann::json::array();
    for (const Finding& finding : findings)
        all.push_back({{"id", utf8Of(finding.id)},
                       {"status", nameOf(finding.status)},
                       {"what", utf8Of(finding.what)},
                       {"remedy", utf8Of(finding.remedy)}});
    return all;
}

}  // namespace qorctl::doctor

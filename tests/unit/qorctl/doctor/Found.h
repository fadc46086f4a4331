#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "doctor/Finding.h"

/// The finding of that id; one of no id, and a failure, if there is none.
inline qorctl::doctor::Finding found(const qorctl::doctor::Findings& findings,
                                     const std::string& id) {
    const auto place = std::find_if(findings.begin(), findings.end(),
                                    [&](const auto& finding) { return finding.id == id; });
    if (place != findings.end()) return *place;
    ADD_FAILURE() << "no finding " << id;
    return {};
}

inline bool isFound(const qorctl::doctor::Findings& findings, const std::string& id) {
    return std::any_of(findings.begin(), findings.end(),
                       [&](const auto& finding) { return finding.id == id; });
}

inline std::vector<std::string> idsOf(const qorctl::doctor::Findings& findings) {
    std::vector<std::string> ids;
    for (const auto& finding : findings) ids.push_back(finding.id);
    return ids;
}

namespace qorctl::doctor {

inline void PrintTo(Status status, std::ostream* out) {
    *out << (status == Status::ok ? "ok" : status == Status::warning ? "warning" : "problem");
}

}  // namespace qorctl::doctor

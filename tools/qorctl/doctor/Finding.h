#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qorctl::doctor {

enum class Status {
    ok,
    warning,  ///< a host works, though not quite as somebody may expect
    problem   ///< a host would not work
};

/// What one check has found, and what to do about it.
struct Finding {
    std::string id;  ///< what was looked at, for programs, e.g. "settings.TcpPort"
    Status status = Status::ok;
    std::string what;
    std::string remedy;  ///< empty where all is well

    static Finding ok(std::string id, std::string what) {
        return {std::move(id), Status::ok, std::move(what), {}};
    }
    static Finding warning(std::string id, std::string what, std::string remedy) {
        return {std::move(id), Status::warning, std::move(what), std::move(remedy)};
    }
    static Finding problem(std::string id, std::string what, std::string remedy) {
        return {std::move(id), Status::problem, std::move(what), std::move(remedy)};
    }
};

using Findings = std::vector<Finding>;

inline void append(Findings& all, Findings more) {
    for (Finding& finding : more) all.push_back(std::move(finding));
}

}  // namespace qorctl::doctor

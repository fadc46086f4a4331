#pragma once

#include <string>
#include <vector>

#include "watch/Sampler.h"

namespace qorctl {

/// Times are told in milliseconds.
std::string textOfTime(double timeS);

/// The rows of a table of samples as comma-separated values, without line ends. A name with a
/// comma, a quote, a line break or a blank at an end stands between quotes.
std::string csvHeader(const std::vector<std::string>& names);
std::string csvRow(const Sample& sample);

/// {"t":1.25,"values":{"EngineSpeed":812}}: a parameter that brought nothing then is left out.
std::string jsonLine(const std::vector<std::string>& names, const Sample& sample);

/// "time_s NAME value" for each value that differs from the one before, and "-" in place of a
/// value that has ceased to come.
class ChangeLines {
public:
    explicit ChangeLines(std::vector<std::string> names);

    std::vector<std::string> linesOf(const Sample& sample);

private:
    const std::vector<std::string> names_;
    std::vector<std::string> shown_;  // per name; empty before the first value
};

}  // namespace qorctl

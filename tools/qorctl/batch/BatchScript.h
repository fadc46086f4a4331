#pragma once

#include <istream>
#include <string>
#include <vector>

#include "operations/Operation.h"

namespace qorctl {

/// One line of a batch, understood.
struct BatchStep {
    std::string text;     ///< the line, for people
    std::string command;  ///< its first word
    bool needsEcu = false;
    OperationWork work;
};

/// A batch: operations line by line as on the command line, but without "qorctl" and the settings,
/// and "sleep MS". Empty lines and what follows "#" do not count.
class BatchScript {
public:
    /// Understands everything before anything is done. Throws std::invalid_argument with the
    /// number of the line that it cannot understand, or if there is none at all.
    explicit BatchScript(std::istream& lines);

    const std::vector<BatchStep>& steps() const { return steps_; }

    /// Whether an operation needs the ECU before a line connects it.
    bool wantsConnection() const;

private:
    std::vector<BatchStep> steps_;
};

}  // namespace qorctl

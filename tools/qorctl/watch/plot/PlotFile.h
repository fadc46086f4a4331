#pragma once

#include <string>

#include "Session.h"
#include "StepReport.h"
#include "watch/plot/PlotSeries.h"

namespace qorctl {

/// Where the page with the curves goes. It is there whole or, as before, not at all.
class PlotFile {
public:
    /// Throws std::runtime_error, telling why, if it could not be written. The path is absolute.
    explicit PlotFile(std::string path);

    Outcome write(const PlotSeries& series, const Session& session) const;

    const std::string& path() const { return path_; }

private:
    std::string scratchPath() const;
    std::string pageOf(const PlotSeries& series, const Session& session) const;

    const std::string path_;
    const std::string begun_;  ///< date and time, for people
};

}  // namespace qorctl

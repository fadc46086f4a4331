#pragma once

#include <string>

#include "serve/metrics/Figures.h"

namespace qorctl::serve {

/// The figures in Prometheus' text format 0.0.4.
std::string prometheusTextOf(const Figures& figures, const Gauges& gauges);

}  // namespace qorctl::serve

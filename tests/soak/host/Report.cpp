#include "Report.h"

#include <cstdio>

namespace soak {

void Report::line(const std::string& text) {
    const Inside inside(lock_);
    std::fprintf(stdout, "%s\n", text.c_str());
    std::fflush(stdout);
}

void Report::breach(const std::string& where, const std::string& what) {
    ++breaches_;
    line("breach " + where + ": " + what);
}

}  // namespace soak

#pragma once

#include <string>
#include <vector>

namespace qorctl {
class Console;
struct SessionOptions;
}  // namespace qorctl

namespace qorctl::doctor {

/// How QOR has answered.
struct QorAnswers {
    bool isAsked = false;
    bool isStartTried = false;  ///< by the library, because it did not run
    std::string startFailure;   ///< empty: it was started
    double firstMs = 0;         ///< until the first answer (of a start: the whole start)
    unsigned pings = 0;         ///< asked behind that
    std::vector<double> times;  ///< of the answered ones, in ms

    /// Asks a QOR that runs, through the library, and leaves it running.
    static QorAnswers ofRunning(const std::string& settingsPath, unsigned timeoutMs);

    /// Lets the library start QOR as the settings say, asks it and shuts it down. Steps go to the
    /// console.
    static QorAnswers ofStarted(const SessionOptions& options, Console& console);
};

}  // namespace qorctl::doctor

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
    /// Systems confirm a piece of a TCP stream after 40 to 200 ms if they have nothing to send.
    static constexpr double confirmedMs = 30;
    /// Of a request that QOR answers with data of its own, one behind the other, in ms: as hosts
    /// have it, and if all that the library sends leaves at once. Over TCP; 0: not asked, or QOR
    /// did not say.
    double requestMs = 0;
    double noDelayMs = 0;

    /// Asks a QOR that runs, through the library, and leaves it running.
    static QorAnswers ofRunning(const std::string& settingsPath, unsigned timeoutMs, bool isTcp);

    /// Lets the library start QOR as the settings say, asks it and shuts it down. Steps go to the
    /// console.
    static QorAnswers ofStarted(const SessionOptions& options, bool isTcp, Console& console);
};

}  // namespace qorctl::doctor

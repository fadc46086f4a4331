#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Console.h"
#include "Session.h"
#include "StepReport.h"

namespace qorctl {

/// A command's whole conversation with QOR as a row of steps: QOR is started, the ECU connected if
/// the command wants it, the command's own steps follow, and whatever happened, everything is shut
/// down in order. A failed step does not stop the later ones, except that nothing of the command's
/// own is done without QOR or ECU.
class Conversation {
public:
    /// What of it a person sees, and where.
    struct Output {
        /// Where the steps are told: stdout, or stderr where standard output is the results'.
        std::FILE* steps = stderr;
        /// Whether standard output gets one JSON object at the end.
        bool json = false;
        /// Whether that is one line, the last of many.
        bool onOneLine = false;
    };
    using Work = std::function<void()>;

    Conversation(const char* command, const SessionOptions& options, const Output& output);

    /// The command's exit code: 0 if every step succeeded.
    int run(const ConnectOptions* connection, const Work& work);

    bool step(const std::string& title, const StepReport::Step& step) {
        return report_.run(title, step);
    }

    /// For what has to be brought to its end after Ctrl-C, too.
    bool closingStep(const std::string& title, const StepReport::Step& step) {
        return report_.runAlways(title, step);
    }

    Console& console() { return console_; }
    Session& session() { return session_; }
    /// The command's part of the JSON object.
    nlohmann::json& results() { return results_; }

private:
    Outcome startQor();
    /// What it throws is one more failure.
    void carryOut(const Work& work);
    /// Ctrl-C does not stop it, nor does what went wrong before.
    void giveActuatorsBack();
    /// What was lost on the way and no step has told is one more failure, unless it is none.
    void tellLoss();
    /// The last line on standard error, whatever else was told.
    static void tellLost(const std::vector<std::string>& names);
    void tellBeginning();
    void finishResults();

    const char* const command_;
    const Output output_;
    Console console_;
    Session session_;
    StepReport report_;
    nlohmann::json results_ = nlohmann::json::object();
};

}  // namespace qorctl

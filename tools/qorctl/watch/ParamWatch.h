#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CallNotes.h"
#include "Conversation.h"
#include "qorcontrol/Arrivals.h"
#include "watch/plot/PlotSeries.h"
#include "watch/Sampler.h"
#include "watch/SampleView.h"
#include "watch/TextReader.h"
#include "watch/WatchClock.h"

namespace qorctl {

/// Watches parameters in a running conversation with a connected ECU, as steps of it.
class ParamWatch {
public:
    struct Options {
        std::vector<std::string> names;      ///< each once
        std::vector<std::string> asNumbers;  ///< no texts, whatever they look like
        double forS = 0;                     ///< 0: until Ctrl-C
        SampleFormat format = SampleFormat::readable;
    };

    /// `series` gets every sample; null if nobody wants them.
    ParamWatch(Conversation& conversation, const Options& options, PlotSeries* series);

    void run();

private:
    Outcome describe();
    bool isText(std::size_t place, const wex::ParamDescription& description);
    Outcome stream();
    /// What is no text. Null if there is nothing else.
    std::unique_ptr<qorcontrol::Arrivals> begunArrivals() const;
    void takeWhatArrived(qorcontrol::Arrivals* arrivals, const WatchClock& clock);
    void show(SampleView& view);
    void tellWhatIsMissing(double nowS);
    Outcome judge(bool stopIsSeen, const CallNotes& calls);
    void addResults();

    Conversation& conversation_;
    Session& session_;
    const Options options_;
    PlotSeries* const series_;
    Sampler sampler_;
    TextReader texts_;
    std::vector<std::size_t> numbers_;  // the places of the names that are no texts
    std::vector<std::string> units_;    // in the order of the names
    bool hasToldMissing_ = false;
    double elapsedS_ = 0;
};

}  // namespace qorctl

#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qorctl {

/// One moment of a watch: the values that arrived in it, in the order of the parameters' names; or
/// that some have ceased to come.
struct Sample {
    double timeS = 0;
    std::vector<std::optional<double>> values = {};
    std::vector<std::size_t> stalled = {};  ///< which ones; then there are no values
    std::map<std::size_t, std::string> texts =
        {};  ///< of those that are texts, which have no value

    bool hasValues() const { return stalled.empty(); }
};

/// What a watch has learnt of one parameter.
struct ParamHistory {
    std::string name;
    double last = 0;        ///< the latest value; meaningless before the first one
    double seenS = 0;       ///< when that arrived
    double lowest = 0;      ///< of all finite values
    double highest = 0;     ///< of all finite values
    std::string text = {};  ///< the latest one, of a parameter that is a text
    bool isText = false;
    bool isSeen = false;
    bool isStalled = false;
    bool hasRange = false;           ///< whether there was a finite value
    unsigned int samples = 0;        ///< the values that arrived
    unsigned int missed = 0;         ///< those that did and could not be read
    unsigned int interruptions = 0;  ///< how often it stalled after it had had one
};

/// Makes samples of values as they arrive: what arrived at one time is one sample, and every value
/// is in one. A parameter that brings nothing for longer than it may has stalled, which is told as
/// a sample of its own. All times are seconds on the clock of the arrivals.
class Sampler {
public:
    /// So long the library may take to hand on what has arrived.
    static constexpr double handOnS = 0.05;
    /// So often texts are read.
    static constexpr double textPeriodS = 1;

    Sampler(const std::vector<std::string>& names, double staleAfterS);

    /// In the order of their arrival. `missed`: see qorcontrol::Arrival.
    void take(std::size_t name, double value, unsigned int missed, double timeS);
    /// A parameter that is a text, as it was read: a sample of its own if it has changed. One that
    /// is not read any more does not stall.
    void takeText(std::size_t name, const std::string& text, double timeS);
    /// All that had been handed on at `nowS` has been taken.
    void settle(double nowS);
    /// Nothing more will be taken.
    void finish();

    /// The oldest sample that is complete and was not given out; their times never go back, unless
    /// the library was held up for longer than `handOnS`.
    std::optional<Sample> next();

    bool isFresh(const ParamHistory& history, double nowS) const;
    const std::vector<ParamHistory>& histories() const { return histories_; }
    /// Those with values.
    unsigned int samples() const { return samples_; }

    /// The parameters that have not had a value yet.
    std::vector<std::string> unseen() const;
    /// Those that had values and have had none since `sinceS`.
    std::vector<std::string> silentSince(double sinceS) const;

private:
    static void note(ParamHistory& history, double value, double timeS);
    void completeOpen();
    void completeTexts(double beforeS);
    void tellStalls(double nowS);

    const double staleAfterS_;
    std::vector<ParamHistory> histories_;
    std::optional<Sample> open_;  // whose time may still bring more
    std::deque<Sample> texts_;    // before which values may still come
    std::deque<Sample> complete_;
    unsigned int samples_ = 0;
};

}  // namespace qorctl

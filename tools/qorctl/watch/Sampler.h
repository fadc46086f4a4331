#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QorControlFacade.h"

namespace qorctl {

using ValueBatch = std::vector<QorControlFacade::ParamValue>;

/// One moment of a watch: the value of each parameter, in the order of their names, where it is
/// fresh.
struct Sample {
    double timeS = 0;
    std::vector<std::optional<double>> values;
};

/// What a watch has learnt of one parameter.
struct ParamHistory {
    std::string name;
    double last = 0;     ///< the latest value; meaningless before the first one
    double seenS = 0;    ///< when a batch last had it
    double lowest = 0;   ///< of all finite values
    double highest = 0;  ///< of all finite values
    bool isSeen = false;
    bool hasRange = false;           ///< whether there was a finite value
    unsigned int samples = 0;        ///< in which it had a value
    unsigned int interruptions = 0;  ///< how often it stalled after it had had one
};

/// Makes samples at regular times out of the batches, which come far more often and repeat what
/// QOR has sent until it is three refresh periods old. A value is fresh in a sample if a batch of
/// the last period had it: the library leaves a parameter out once it has stalled.
class Sampler {
public:
    Sampler(const std::vector<std::string>& names, double periodS);

    /// Times are seconds of one clock and never go back.
    void take(const ValueBatch& batch, double nowS);

    /// The sample that is due by now; the first one a period after the first batch. Periods that
    /// were slept through get none.
    std::optional<Sample> sampleAt(double nowS);

    bool isFresh(const ParamHistory& history, double nowS) const;
    const std::vector<ParamHistory>& histories() const { return histories_; }
    unsigned int samples() const { return samples_; }

    /// The parameters that have not had a value yet.
    std::vector<std::string> unseen() const;

private:
    void note(ParamHistory& history, double value, double nowS) const;

    const double periodS_;
    std::vector<ParamHistory> histories_;
    std::vector<bool> wasFresh_;  // in the last sample
    std::optional<double> nextS_;
    unsigned int samples_ = 0;
};

}  // namespace qorctl

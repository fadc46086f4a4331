#pragma once

#include <functional>
#include <vector>

/// Durations of one repeated action, in microseconds.
class Samples {
public:
    void add(double us) { us_.push_back(us); }
    void add(const Samples& others) { us_.insert(us_.end(), others.us_.begin(), others.us_.end()); }
    bool isEmpty() const { return us_.empty(); }
    std::size_t count() const { return us_.size(); }

    /// The value below which the share `p` (0 to 1) of the samples lies; 0 without samples.
    double percentile(double p) const;
    double min() const { return percentile(0.0); }
    double p50() const { return percentile(0.5); }
    double p95() const { return percentile(0.95); }
    double p99() const { return percentile(0.99); }

    /// The medians of so many parts of the samples, or of each sample where there are fewer, in
    /// the order of measuring. The parts are equally long: where every round adds as many samples
    /// and there are as many parts as rounds, each is a round.
    std::vector<double> medians(std::size_t parts) const;

private:
    std::vector<double> us_;
};

/// Microseconds of the system's high-resolution counter.
double nowUs();

/// Times each of `count` calls.
void measure(Samples& samples, int count, const std::function<void()>& action);

/// Times runs of `batch` calls each and adds the time of one call per run, for actions that are
/// too short to be timed alone.
void measureBatches(Samples& samples, int runs, int batch, const std::function<void()>& action);

#pragma once

#include <vector>

/// The calls of one host thread that began within a span of time.
struct ThreadCount {
    int done = 0;       ///< within the span
    int doneLate = 0;   ///< when it was over
    int pushedOut = 0;  ///< refused, because too many others waited already
    int failed = 0;     ///< for any other reason
};

/// Threads that called at once.
struct Span {
    double seconds = 0;
    std::vector<ThreadCount> threads;
};

/// Several spans of as many threads each. Rates are medians of the spans.
struct Together {
    double perS = 0;         ///< all threads
    double meanPerS = 0;     ///< of one thread
    double slowestPerS = 0;  ///< of the one that got least in its span
    double pushedOutPercent = 0;
    double failedPercent = 0;
};

Together togetherOf(const std::vector<Span>& spans);

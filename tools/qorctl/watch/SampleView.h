#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Console.h"
#include "watch/Sampler.h"

namespace qorctl {

/// How a watch shows its samples while it runs.
enum class SampleFormat { readable, csv, json };

/// Shows samples as they come. All but the table go to standard output, flushed line by line.
class SampleView {
public:
    virtual ~SampleView() = default;

    virtual void begin() {}
    virtual void show(const Sample& sample) = 0;
    /// Between the samples, several times a second.
    virtual void refresh(const Sampler&, double) {}
    /// What is transient becomes lasting or goes.
    virtual void end(const Sampler&, double) {}
};

/// `console` takes the table if it is a terminal and the format is the readable one; else it gets
/// one transient line, so that a person sees that something goes on.
std::unique_ptr<SampleView> makeSampleView(SampleFormat format, Console& console,
                                           const std::vector<std::string>& names,
                                           const std::vector<std::string>& units);

/// False once standard output takes nothing any more: its reader has gone.
bool printLine(const std::string& line);
bool canPrint();

}  // namespace qorctl

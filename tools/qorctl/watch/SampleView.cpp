#include "watch/SampleView.h"

#include <fmt/format.h>

#include <cstdio>
#include <utility>

#include "watch/LiveTable.h"
#include "watch/SampleText.h"

namespace qorctl {
namespace {

/// Redraws the table in place.
class TableView final : public SampleView {
public:
    TableView(Console& console, std::vector<std::string> units)
        : console_(console), units_(std::move(units)) {}

    void show(const Sample&) override {}
    void refresh(const Sampler& sampler, double nowS) override {
        console_.block(liveTable(sampler, units_, nowS));
    }
    void end(const Sampler& sampler, double nowS) override {
        for (const std::string& line : liveTable(sampler, units_, nowS)) console_.line(line);
    }

private:
    Console& console_;
    const std::vector<std::string> units_;
};

/// Prints lines; the line on the console only tells that it goes on.
class LineView : public SampleView {
public:
    explicit LineView(Console& console) : console_(console) {}

    void refresh(const Sampler& sampler, double nowS) override {
        console_.transient(fmt::format("{:.1f} s, {} samples", nowS, sampler.samples()));
    }
    void end(const Sampler&, double) override { console_.eraseTransient(); }

protected:
    /// The line on the console must not stand in front of it, where both are one terminal.
    void print(const std::string& line) {
        console_.eraseTransient();
        printLine(line);
    }

private:
    Console& console_;
};

class CsvView final : public LineView {
public:
    CsvView(Console& console, std::vector<std::string> names)
        : LineView(console), names_(std::move(names)) {}

    void begin() override { print(csvHeader(names_)); }
    void show(const Sample& sample) override {
        if (sample.hasValues()) print(csvRow(sample));
    }

private:
    const std::vector<std::string> names_;
};

class JsonView final : public LineView {
public:
    JsonView(Console& console, std::vector<std::string> names)
        : LineView(console), names_(std::move(names)) {}

    void show(const Sample& sample) override {
        if (sample.hasValues()) print(jsonLine(names_, sample));
    }

private:
    const std::vector<std::string> names_;
};

class PlainView final : public LineView {
public:
    PlainView(Console& console, std::vector<std::string> names)
        : LineView(console), lines_(std::move(names)) {}

    void show(const Sample& sample) override {
        for (const std::string& line : lines_.linesOf(sample)) print(line);
    }

private:
    ChangeLines lines_;
};

}  // namespace

std::unique_ptr<SampleView> makeSampleView(SampleFormat format, Console& console,
                                           const std::vector<std::string>& names,
                                           const std::vector<std::string>& units) {
    if (format == SampleFormat::csv) return std::make_unique<CsvView>(console, names);
    if (format == SampleFormat::json) return std::make_unique<JsonView>(console, names);
    if (Console(stdout).isTerminal()) return std::make_unique<TableView>(console, units);
    return std::make_unique<PlainView>(console, names);
}

bool printLine(const std::string& line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
    return canPrint();
}

bool canPrint() {
    return std::ferror(stdout) == 0;
}

}  // namespace qorctl

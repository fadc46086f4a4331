#include "watch/SampleText.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

#include "JsonText.h"
#include "operations/Values.h"

namespace qorctl {
namespace {

const char* const noValue = "-";

std::string csvField(const std::string& text) {
    const bool isPlain = text.find_first_of(",\"\r\n") == std::string::npos && !text.empty() &&
                         text.front() != ' ' && text.back() != ' ';
    if (isPlain) return text;
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"') quoted += '"';
        quoted += character;
    }
    return quoted + "\"";
}

std::string textOf(double value) {
    return fmt::format("{}", value);
}

/// Its text or its value; nothing if the sample has neither.
std::optional<std::string> textOf(const Sample& sample, std::size_t name) {
    const auto text = sample.texts.find(name);
    if (text != sample.texts.end()) return text->second;
    if (!sample.values[name]) return std::nullopt;
    return textOf(*sample.values[name]);
}

}  // namespace

std::string textOfTime(double timeS) {
    return fmt::format("{:.3f}", timeS);
}

std::string csvHeader(const std::vector<std::string>& names) {
    std::string line = "time_s";
    for (const std::string& name : names) line += "," + csvField(name);
    return line;
}

std::string csvRow(const Sample& sample) {
    std::string line = textOfTime(sample.timeS);
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        const auto text = textOf(sample, i);
        line += "," + (text ? csvField(*text) : std::string());
    }
    return line;
}

std::string jsonLine(const std::vector<std::string>& names, const Sample& sample) {
    nlohmann::json values = nlohmann::json::object();
    for (std::size_t i = 0; i < names.size(); ++i)
        if (sample.values[i]) values[utf8Of(names[i])] = jsonNumber(*sample.values[i]);
    for (const auto& [name, text] : sample.texts) values[utf8Of(names[name])] = utf8Of(text);
    return printedOnOneLine(
        {{"t", std::round(sample.timeS * 1000) / 1000}, {"values", std::move(values)}});
}

ChangeLines::ChangeLines(std::vector<std::string> names)
    : names_(std::move(names)), shown_(names_.size()) {}

std::vector<std::string> ChangeLines::linesOf(const Sample& sample) {
    std::vector<std::string> lines;
    const auto show = [&](std::size_t i, std::string now) {
        if (now == shown_[i]) return;
        lines.push_back(fmt::format("{} {} {}", textOfTime(sample.timeS), names_[i], now));
        shown_[i] = std::move(now);
    };
    for (std::size_t i = 0; i < names_.size(); ++i)
        if (const auto text = textOf(sample, i)) show(i, *text);
    for (const std::size_t i : sample.stalled) show(i, noValue);
    return lines;
}

}  // namespace qorctl

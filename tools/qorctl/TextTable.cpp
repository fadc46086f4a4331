#include "TextTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace qorctl {
namespace {

constexpr std::size_t shownValues = 8;

}  // namespace

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {
    std::vector<std::string> titles;
    for (const Column& column : columns_) titles.push_back(column.title);
    rows_.push_back(std::move(titles));
}

void TextTable::add(std::vector<std::string> cells) {
    cells.resize(columns_.size());
    rows_.push_back(std::move(cells));
}

std::vector<std::string> TextTable::lines() const {
    const std::vector<std::size_t> all = widths();
    std::vector<std::string> lines;
    for (const auto& row : rows_) lines.push_back(lineOf(row, all));
    std::vector<std::string> rule;
    rule.reserve(all.size());
    for (const std::size_t width : all) rule.emplace_back(width, '-');
    lines.insert(lines.begin() + 1, lineOf(rule, all));
    return lines;
}

std::vector<std::size_t> TextTable::widths() const {
    std::vector<std::size_t> widths(columns_.size(), 0);
    for (const auto& row : rows_)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    return widths;
}

std::string TextTable::lineOf(const std::vector<std::string>& cells,
                              const std::vector<std::size_t>& widths) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const char* const gap = i == 0 ? "" : "  ";
        line += columns_[i].align == Align::right
                    ? fmt::format("{}{:>{}}", gap, cells[i], widths[i])
                    : fmt::format("{}{:<{}}", gap, cells[i], widths[i]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::string shown(double value) {
    return fmt::format("{:g}", value);
}

std::string shown(const std::vector<double>& values) {
    std::string text;
    for (std::size_t i = 0; i < std::min(values.size(), shownValues); ++i)
        text += (i == 0 ? "" : " ") + shown(values[i]);
    if (values.size() > shownValues) text += fmt::format(" ... ({} values)", values.size());
    return text;
}

}  // namespace qorctl

#pragma once

#include <string>
#include <vector>

namespace qorctl {

/// Rows of cells, laid out in columns as wide as their widest cell.
class TextTable {
public:
    enum class Align { left, right };
    struct Column {
        std::string title;
        Align align = Align::left;
    };

    explicit TextTable(std::vector<Column> columns);

    /// As many cells as there are columns.
    void add(std::vector<std::string> cells);

    /// The titles, a rule below them and the rows, without line ends.
    std::vector<std::string> lines() const;

private:
    std::vector<std::size_t> widths() const;
    std::string lineOf(const std::vector<std::string>& cells,
                       const std::vector<std::size_t>& widths) const;

    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;  // the titles first
};

/// A number as tables show it: up to six significant digits.
std::string shown(double value);

/// Several numbers in one cell; of a long list only the beginning.
std::string shown(const std::vector<double>& values);

}  // namespace qorctl

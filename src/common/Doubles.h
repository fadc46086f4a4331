#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace common {

/// Numbers that do not change any more. Copies share them, across threads, too: many of them are
/// handed on and kept in several places for the price of one.
class Doubles {
public:
    using value_type = double;
    using const_iterator = std::vector<double>::const_iterator;
    using iterator = const_iterator;

    Doubles() = default;
    Doubles(std::vector<double> values) {  // NOLINT(google-explicit-constructor)
        if (!values.empty())
            values_ = std::make_shared<const std::vector<double>>(std::move(values));
    }
    Doubles(std::initializer_list<double> values) : Doubles(std::vector<double>(values)) {}

    const std::vector<double>& all() const {
        static const std::vector<double> none;
        return values_ != nullptr ? *values_ : none;
    }
    const_iterator begin() const { return all().begin(); }
    const_iterator end() const { return all().end(); }
    std::size_t size() const { return all().size(); }
    bool empty() const { return values_ == nullptr; }
    /// Of at least one.
    double front() const { return values_->front(); }

    friend bool operator==(const Doubles& one, const Doubles& other) {
        return one.all() == other.all();
    }

private:
    std::shared_ptr<const std::vector<double>> values_;  // null: none
};

}  // namespace common

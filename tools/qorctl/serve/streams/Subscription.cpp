#include "serve/streams/Subscription.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace qorctl::serve {
namespace {

void appendNumber(std::string& text, double value) {
    if (std::isfinite(value))
        fmt::format_to(std::back_inserter(text), "{}", value);
    else
        text += std::isnan(value) ? "\"NaN\"" : value < 0 ? "\"-Infinity\"" : "\"Infinity\"";
}

}  // namespace

Subscription::Subscription(const std::vector<std::string>& names, std::size_t slots)
    : slots_(std::max<std::size_t>(slots, 1)), missed_(names.size(), 0), dropped_(names.size(), 0) {
    for (unsigned int i = 0; i < names.size(); ++i) numbers_[names[i]].push_back(i);
}

std::size_t Subscription::add(const std::string& name, double value, std::uint64_t timeMs,
                              unsigned int missed) {
    const auto wanted = numbers_.find(name);
    if (wanted == numbers_.end()) return 0;
    std::size_t gone = 0;
    for (const unsigned int number : wanted->second) {
        missed_[number] += missed;
        if (waiting_.size() >= slots_) {
            ++dropped_[waiting_.front().name];
            waiting_.pop_front();
            ++gone;
        }
        waiting_.push_back({number, value, timeMs, missed_[number]});
    }
    return gone;
}

std::string Subscription::takeOut(std::uint64_t number) {
    std::string text = fmt::format("{{\"stream\":{},\"samples\":[", number);
    for (const Sample& each : waiting_) {
        fmt::format_to(std::back_inserter(text), "{}[{},", &each == &waiting_.front() ? "" : ",",
                       each.name);
        appendNumber(text, each.value);
        fmt::format_to(std::back_inserter(text), ",{},{}]", each.timeMs,
                       each.missed + dropped_[each.name]);  // all of these went before it
    }
    text += "]}";
    waiting_.clear();
    return text;
}

}  // namespace qorctl::serve

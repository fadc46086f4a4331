#include "model/Followers.h"

#include <algorithm>

namespace simulator {

namespace {

std::vector<std::size_t> followedBy(std::size_t place,
                                    const std::vector<ParameterModel>& parameters) {
    std::vector<std::size_t> followed;
    for (const LiveTerm& term : parameters[place].live) {
        const auto* follow = std::get_if<FollowTerm>(&term);
        if (follow == nullptr) continue;
        const auto found = std::find_if(
            parameters.begin(), parameters.end(),
            [&](const ParameterModel& parameter) { return parameter.name == follow->source; });
        followed.push_back(static_cast<std::size_t>(found - parameters.begin()));
    }
    return followed;
}

/// Goes from each parameter to what it follows.
class Walk {
public:
    explicit Walk(const std::vector<ParameterModel>& parameters)
        : parameters_(parameters), isDone_(parameters.size(), false) {
        for (std::size_t place = 0; place < parameters.size(); ++place) visit(place);
    }

    const std::vector<std::size_t>& order() const { return order_; }
    const std::vector<std::size_t>& circle() const { return circle_; }

private:
    void visit(std::size_t place) {
        if (isDone_[place] || !circle_.empty()) return;
        const auto seen = std::find(path_.begin(), path_.end(), place);
        if (seen != path_.end()) {
            circle_.assign(seen, path_.end());
            circle_.push_back(place);
            return;
        }
        path_.push_back(place);
        const std::vector<std::size_t> followed = followedBy(place, parameters_);
        for (const std::size_t next : followed) visit(next);
        path_.pop_back();
        isDone_[place] = true;
        if (!followed.empty()) order_.push_back(place);
    }

    const std::vector<ParameterModel>& parameters_;
    std::vector<bool> isDone_;
    std::vector<std::size_t> path_;
    std::vector<std::size_t> order_;
    std::vector<std::size_t> circle_;
};

}  // namespace

std::vector<std::size_t> followersOf(const std::vector<ParameterModel>& parameters) {
    return Walk(parameters).order();
}

Names circleIn(const std::vector<ParameterModel>& parameters) {
    const Walk walk(parameters);
    Names names;
    for (const std::size_t place : walk.circle()) names.push_back(parameters[place].name);
    return names;
}

}  // namespace simulator

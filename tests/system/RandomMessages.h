#pragma once

#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

/// Requests of "qorctl serve" that are nearly right: valid ones with something changed. The same
/// for the same seed.
class RandomMessages {
public:
    explicit RandomMessages(unsigned seed) : random_(seed) {}

    /// A request of which any part may be something else.
    nlohmann::json request();
    /// The text of one, with any byte changed, gone or added, and no line end.
    std::string text();

private:
    unsigned below(std::size_t count);
    nlohmann::json anything(int depth);
    void change(nlohmann::json& value);

    std::mt19937 random_;
};

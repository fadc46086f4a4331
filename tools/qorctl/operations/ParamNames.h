#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qorctl {

/// A parameter that somebody has named, and what is known of it without QOR.
struct NamedParam {
    std::string name;
    std::optional<double> lowest;
    std::optional<double> highest;
};

/// Those of a model file of the simulated QOR, in its order. Throws std::runtime_error, telling the
/// file, if it is none.
std::vector<NamedParam> namesInModel(const std::string& path);

/// Those of a text file with a name per line. Empty lines do not count, nor what begins with "#".
/// Throws std::runtime_error if it cannot be read.
std::vector<NamedParam> namesInList(const std::string& path);

}  // namespace qorctl

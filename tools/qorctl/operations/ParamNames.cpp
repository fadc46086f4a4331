#include "operations/ParamNames.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace qorctl {
namespace {

std::ifstream opened(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error(path + " cannot be read");
    return file;
}

NamedParam paramOf(const nlohmann::json& entry) {
    NamedParam param;
    param.name = entry.at("name").get<std::string>();
    if (!entry.contains("limits")) return param;
    param.lowest = entry.at("limits").at(0).get<double>();
    param.highest = entry.at("limits").at(1).get<double>();
    return param;
}

std::string trimmed(const std::string& line) {
    const char* const blanks = " \t\r";
    const std::size_t begin = line.find_first_not_of(blanks);
    if (begin == std::string::npos) return {};
    return line.substr(begin, line.find_last_not_of(blanks) - begin + 1);
}

}  // namespace

std::vector<NamedParam> namesInModel(const std::string& path) {
    std::ifstream file = opened(path);
    try {
        const auto model = nlohmann::json::parse(file);
        std::vector<NamedParam> params;
        for (const auto& entry : model.at("parameters")) params.push_back(paramOf(entry));
        return params;
    } catch (const nlohmann::json::exception& error) {
        throw std::runtime_error(path + " is no model of the simulated QOR: " + error.what());
    }
}

std::vector<NamedParam> namesInList(const std::string& path) {
    std::ifstream file = opened(path);
    std::vector<NamedParam> params;
    for (std::string line; std::getline(file, line);) {
        const std::string name = trimmed(line);
        if (!name.empty() && name.front() != '#') params.push_back({name, {}, {}});
    }
    return params;
}

}  // namespace qorctl

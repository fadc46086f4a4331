#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "config/Names.h"
#include "model/LiveValue.h"
#include "wire/Payloads.h"

namespace simulator {

// What the model file says. Plain data: nothing here changes while the simulator runs.

enum class ParameterKind { Scalar, Array, Curve, Map, Text, Live, Actuator };

struct Arrays {
    std::vector<double> first;   ///< the values; a map's row by row, one row per y
    std::vector<double> second;  ///< x axis
    std::vector<double> third;   ///< y axis
};

struct ParameterModel {
    std::string name;
    std::string description;
    std::string unit;
    std::string group;
    ParameterKind kind = ParameterKind::Scalar;
    double lowest = 0.0;
    double highest = 0.0;
    Arrays arrays;  ///< what the reference page holds; a text is one double per character
    std::size_t maxLength = 0;  ///< texts only
    std::vector<LiveTerm> live;
    std::optional<std::uint32_t> stamp;  ///< every reading is a stamp of this number, see stampOf

    bool threeArrays() const { return kind == ParameterKind::Curve || kind == ParameterKind::Map; }
};

Names namesOf(const std::vector<ParameterModel>& parameters);

struct KwpServiceModel {
    std::uint32_t service = 0;
    std::string dataPrefix;  ///< the request's data must begin with these bytes
    std::string response;
    bool failed = false;
    std::uint32_t delayMs = 0;
};

struct CanModel {
    std::uint32_t canId = 0;
    std::int32_t value = 0;
    std::string source;  ///< parameter whose first value is sent instead; empty = none
    double scale = 1.0;
};

/// What opening a model brings back. No size = QOR sends no such file.
struct EditModel {
    std::map<std::string, std::string> info;
    std::optional<std::uint32_t> exportBytes;
    std::optional<std::uint32_t> addExportBytes;
    std::uint32_t delayMs = 0;
};

struct EcuModel {
    std::vector<ParameterModel> parameters;  ///< the index on the wire is the place in this list
    std::vector<TroubleCode> troubleCodes;
    std::vector<KwpServiceModel> kwpServices;
    std::vector<CanModel> canFrames;
    EditModel edit;
};

}  // namespace simulator

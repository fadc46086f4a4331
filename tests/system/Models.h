#pragma once

#include <nlohmann/json.hpp>

#include <string>

/// The model that QOR's stand-in ships with, to be changed for a test.
nlohmann::json shippedModel();

/// The same with its parameters in the opposite order: each has another index.
std::string modelInOppositeOrder();

/// The same whose export files have these sizes; less than 0: there is no such file.
std::string modelExporting(int bytes, int addBytes);

#pragma once

#include <string>
#include <vector>

#include "Samples.h"

/// Writing a record of each command and reading its payload back, without drawing an id.
struct CodecResult {
    std::string command;
    std::size_t recordBytes = 0;
    Samples samples;
};

std::vector<CodecResult> measureCodec(int runs);

/// An array of numbers beside a plain copy of the bytes that it takes.
struct ArrayResult {
    Samples copy, write, read;
};

ArrayResult measureArrays(int runs);
/// So many doubles.
constexpr int arrayLength = 100000;

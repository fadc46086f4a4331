#pragma once

#include <string>

namespace wex {

/// What QOR tells about one calibration or measurement parameter.
struct ParamDescription {
    /// The name that was asked for.
    std::string name;
    /// The name as QOR's answer carries it.
    std::string text1;
    /// QOR's first text.
    std::string text2;
    /// QOR's third text. It stands before the second one; hosts rely on that.
    std::string text3;
    /// QOR's second text.
    std::string text4;
    /// Always 0.
    unsigned int value;
    /// True: the parameter is read as three arrays (its values and two further ones, the axes of
    /// a curve or map); false: as a single array.
    bool threeArrays;
};

}  // namespace wex

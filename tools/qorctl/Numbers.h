#pragma once

#include <string>

namespace CLI {
class Option;
}

namespace qorctl {

/// How all commands take numbers: decimal, or hexadecimal behind "0x", never octal. What could be
/// read in two ways (010) is refused with both.
/// @{

/// For unsigned numbers of 32 bits. Returns what it was given.
CLI::Option* whole(CLI::Option* option);

/// For numbers that may have a sign, a fraction and an exponent, such as times.
CLI::Option* finite(CLI::Option* option);

/// For values of parameters, which may also be "nan" or "inf".
CLI::Option* real(CLI::Option* option);

/// @}

/// What is wrong with a word that shall be such a number; empty if nothing is, and then the word
/// is one that every conversion reads alike.
/// @{
std::string whyNotWhole(std::string& word);
std::string whyNotFinite(std::string& word);
std::string whyNotReal(std::string& word);
/// @}

/// The rule in the words of a help text.
extern const char* const numbersHelp;

}  // namespace qorctl

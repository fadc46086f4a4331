#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The calls of the system that the library makes through its import table are replaced by ones
/// that fail when they must. A call site is a function, the place in the library that it is called
/// from, and how often it has been called from there before.
namespace torture {

struct Site {
    std::size_t row = 0;       ///< of the table of functions
    std::size_t place = 0;     ///< the return address, from the beginning of the module on; 0: any
    unsigned int earlier = 0;  ///< calls from there, since the beginning of the operation

    bool operator==(const Site& other) const {
        return row == other.row && place == other.place && earlier == other.earlier;
    }
};

std::string nameOf(const Site& site);
/// The first call of this function, from whatever place.
Site anywhere(const char* function);
/// Of the function.
const char* functionOf(const Site& site);

/// What the library imports without having a row, and it is not said either why it needs none.
std::vector<std::string> unknownImports(const char* moduleName);
/// How many of its imports are made to fail.
std::size_t tortured(const char* moduleName);

/// Replaces the calls of a module as long as it lives. The module's clock, pauses and waits run
/// faster than real time then.
class Replaced {
public:
    explicit Replaced(const char* moduleName);
    ~Replaced();
    Replaced(const Replaced&) = delete;
    Replaced& operator=(const Replaced&) = delete;

private:
    std::vector<std::pair<void**, void*>> before_;
};

/// From now on calls are recorded, of each place so many.
void record(unsigned int perPlace);
/// From now on the call at this site fails, once.
void fail(const Site& site);
/// Nothing is recorded and nothing fails any more.
void rest();

bool hasFailed();
std::vector<Site> recorded();

}  // namespace torture

#pragma once

#include <functional>

/// Ctrl-C, as a request that the running work looks at. The first one only asks for an orderly
/// end, so that QOR is always shut down; the second ends the program at once. A console that is
/// closed (or a session that ends) asks for the same, and the system then gives the program about
/// 5 s.
namespace qorctl::interrupt {

void install();
bool isRequested();

/// Sleeps; false as soon as an interrupt is requested.
bool sleepMs(unsigned int ms);

/// What is to be said when the second Ctrl-C ends the program; there is one at a time. The function
/// is called on a thread of the system's and returns the exit code.
class LastWords {
public:
    explicit LastWords(std::function<int()> words);
    ~LastWords();
    LastWords(const LastWords&) = delete;
    LastWords& operator=(const LastWords&) = delete;
};

}  // namespace qorctl::interrupt

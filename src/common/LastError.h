#pragma once

#include <string>

namespace common {

/// The calling thread's last-error code as "code: %d  text: %s", on one line: line breaks become
/// blanks, a code without a system text gives "(NULL)", and the whole is cut at 4095 characters.
/// Call it before anything that may change the code.
std::string lastErrorText();

/// Leaves the calling thread's last-error code as it was, for what runs in the middle of a call of
/// the system whose own code matters.
class KeptLastError {
public:
    KeptLastError();
    ~KeptLastError();
    KeptLastError(const KeptLastError&) = delete;
    KeptLastError& operator=(const KeptLastError&) = delete;

private:
    const unsigned long code_;
};

}  // namespace common

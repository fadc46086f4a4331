#pragma once

#include <string>

/// QOR's end of a transport. All of it is used on one thread.
class QorEnd {
public:
    virtual ~QorEnd() = default;

    /// True if a library has come; to be asked again and again while there is none.
    virtual bool accept() = 0;
    /// Whether that one is still there, and can be reached.
    virtual bool isOpen() = 0;
    /// The records that have come.
    virtual std::string receive() = 0;
    /// What cannot be delivered is lost.
    virtual void send(const std::string& record) = 0;
    /// From here on it is not open, and who still asks for it finds nothing until the next
    /// `accept`.
    virtual void hangUp() = 0;
};

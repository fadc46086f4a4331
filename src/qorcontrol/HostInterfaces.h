#pragma once

#include <string>

/// The two interfaces that the host implements and the library calls. The places of their
/// operations are binding: a host that has a declaration of its own must keep the named
/// operations where they stand here (counted from 1, in declaration order). None of these objects
/// is ever owned or deleted by the library.

/// The host's log. Lines carry no line end. Both operations take a printf-style format and its
/// values, may be called from every thread that calls the facade, and must not throw.
class EolLog {
public:
    /// Not used by the library.
    virtual void reserved1(const char* format, ...) const = 0;
    /// Second operation: requests and answers.
    virtual void info(const char* format, ...) const = 0;
    /// Third operation: failures; such a line begins with "FAILED".
    virtual void error(const char* format, ...) const = 0;

protected:
    ~EolLog() = default;
};

/// The host's progress window of a connect. Both used operations are called on the library's own
/// thread while the connect runs; the monitor must live until `connect` has returned, and for good
/// if a shutdown meanwhile had to let that thread go.
class IProgressMonitor {
public:
    virtual void reserved1() = 0;
    virtual void reserved2() = 0;
    virtual void reserved3() = 0;
    virtual void reserved4() = 0;
    virtual void reserved5() = 0;
    virtual void reserved6() = 0;
    /// Seventh operation: true once the user has cancelled.
    virtual bool isCancelled() = 0;
    virtual void reserved8() = 0;
    virtual void reserved9() = 0;
    /// Tenth operation: why a connect failed; `code` is always 0.
    virtual void reportError(const std::string& message, unsigned int code) = 0;

protected:
    ~IProgressMonitor() = default;
};

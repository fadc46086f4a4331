#pragma once

#include <windows.h>

#include <string>

/// How a message to another window has ended.
enum class MessageEnd {
    handled,    ///< its handler has given a result
    late,       ///< there was none in time
    hung,       ///< the same, and the window's thread has not looked for messages for seconds
    gone,       ///< there is no such window
    forbidden,  ///< the system does not pass it on to a program of more rights
};

/// The window calls of the message transport; tests put their own.
class IWindowPlatform {
public:
    virtual ~IWindowPlatform() = default;

    /// The top-level window of any class with this title, null if there is none. Of several with
    /// one title it is the system's choice.
    virtual HWND findWindow(const std::string& title) = 0;

    /// The id of the process that `window` belongs to; 0 once the window is gone.
    virtual unsigned long processOf(HWND window) = 0;

    /// Sends `bytes` as one copy-data message with this tag and waits at most `timeoutMs` for the
    /// receiver's result.
    virtual MessageEnd sendCopyData(HWND window, unsigned long tag, const std::string& bytes,
                                    unsigned int flags, unsigned int timeoutMs,
                                    unsigned long& result) = 0;

    /// Whether the calling thread handles a message that another one sent and still waits for.
    virtual bool holdsSender() = 0;

    /// Lets that sender go on, with this result; what the handler returns no longer counts.
    virtual void releaseSender(long result) = 0;
};

/// The system's windows.
class WindowPlatform final : public IWindowPlatform {
public:
    HWND findWindow(const std::string& title) override;
    unsigned long processOf(HWND window) override;
    MessageEnd sendCopyData(HWND window, unsigned long tag, const std::string& bytes,
                            unsigned int flags, unsigned int timeoutMs,
                            unsigned long& result) override;
    bool holdsSender() override;
    void releaseSender(long result) override;
};

#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "wire/Message.h"

namespace simulator {

/// What a WindowLink tells. Called from inside the window's handler, whenever its thread looks at
/// its messages or waits for the result of one that it sends.
class WindowLinkEvents {
public:
    virtual ~WindowLinkEvents() = default;
    /// A data message has come; the answer is the message's result. Must not throw.
    virtual bool onMessage(const std::string& bytes, const MessageForm& form) = 0;
};

/// A hidden top-level window that others find by its title, and the sending of data messages to
/// another one. Belongs to the thread that makes it.
class WindowLink {
public:
    /// What became of a message that was sent.
    struct Sent {
        bool delivered = false;
        std::uint32_t result = 0;  ///< when delivered
        bool timedOut = false;
        std::string failure;  ///< when not delivered
    };

    /// Throws std::runtime_error, also when a window with that title is there already.
    WindowLink(const std::string& title, WindowLinkEvents& events);
    ~WindowLink();
    WindowLink(const WindowLink&) = delete;
    WindowLink& operator=(const WindowLink&) = delete;

    static HWND find(const std::string& title);

    /// Waits no longer than timeoutMs for the result; messages that come meanwhile are handled.
    static Sent send(HWND receiver, const std::string& bytes, const MessageForm& form,
                     std::uint32_t timeoutMs);

    /// Whether the thread is inside a message whose sender still waits.
    static bool holdsSender();
    /// Gives the sender that waits its result now; what the handler returns later counts no more.
    static void releaseSender(bool result);

private:
    static LRESULT CALLBACK handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    bool received(const COPYDATASTRUCT* data);

    WindowLinkEvents& events_;
    HWND window_ = nullptr;
};

}  // namespace simulator

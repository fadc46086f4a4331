#pragma once

#include <windows.h>

#include <string>

#include "QorEnd.h"

/// QOR as the window transport sees it: a window, to which the library's messages are sent. To hang
/// up is to destroy it.
class WindowEnd final : public QorEnd {
public:
    /// `name` is the title of its window and the name of the library's settings file.
    explicit WindowEnd(std::string name);
    /// The window goes with the thread that used this object.
    ~WindowEnd() override = default;
    WindowEnd(const WindowEnd&) = delete;
    WindowEnd& operator=(const WindowEnd&) = delete;

    bool accept() override;
    bool isOpen() override;
    std::string receive() override;
    void send(const std::string& record) override;
    void hangUp() override;

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    const std::string name_;
    const std::string clientTitle_;
    HWND window_ = nullptr;
    HWND client_ = nullptr;
    std::string received_;
};

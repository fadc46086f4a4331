#pragma once

#include <functional>
#include <string>
#include <vector>

#include "transport/WindowPlatform.h"

/// Stands in for the system's windows and writes down, in their order, the calls it gets.
class WindowFakePlatform final : public IWindowPlatform {
public:
    struct Sent {
        HWND window;
        unsigned long tag;
        std::string bytes;
        unsigned int flags;
        unsigned int timeoutMs;
    };

    HWND findWindow(const std::string& title) override {
        calls.push_back("find " + title);
        return server;
    }
    unsigned long processOf(HWND window) override { return window == server ? process : 0; }
    MessageEnd sendCopyData(HWND window, unsigned long tag, const std::string& bytes,
                            unsigned int flags, unsigned int timeoutMs,
                            unsigned long& result) override {
        calls.push_back("send");
        sent.push_back({window, tag, bytes, flags, timeoutMs});
        whileSending();
        result = receiverResult;
        return end;
    }
    bool holdsSender() override { return isHolding; }
    void releaseSender(long result) override {
        calls.push_back("release " + std::to_string(result));
        isHolding = false;
    }

    HWND server = reinterpret_cast<HWND>(0x1234);
    unsigned long process = 77;
    MessageEnd end = MessageEnd::handled;
    unsigned long receiverResult = 1;
    bool isHolding = false;
    std::function<void()> whileSending = [] {};
    std::vector<std::string> calls;
    std::vector<Sent> sent;
};

#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace testing_support {

/// Catches what this thread's process sends to the debugger, one entry for each call, while it
/// lives. One at a time.
class DebuggerOutput {
public:
    DebuggerOutput() {
        caught().clear();
        handler_ = AddVectoredExceptionHandler(1, takeText);
    }
    ~DebuggerOutput() { RemoveVectoredExceptionHandler(handler_); }
    DebuggerOutput(const DebuggerOutput&) = delete;
    DebuggerOutput& operator=(const DebuggerOutput&) = delete;

    const std::vector<std::string>& pieces() const { return caught(); }

    std::string text() const {
        std::string all;
        for (const std::string& piece : pieces()) all += piece;
        return all;
    }

private:
    static std::vector<std::string>& caught() {
        static std::vector<std::string> pieces;
        return pieces;
    }

    // A text for the debugger travels as an exception: its length with the final zero, its address.
    static LONG CALLBACK takeText(EXCEPTION_POINTERS* info) {
        constexpr DWORD printException = 0x40010006;
        const EXCEPTION_RECORD& record = *info->ExceptionRecord;
        if (record.ExceptionCode != printException) return EXCEPTION_CONTINUE_SEARCH;
        caught().emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
        return EXCEPTION_CONTINUE_EXECUTION;
    }

    void* handler_ = nullptr;
};

}  // namespace testing_support

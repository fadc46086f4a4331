#pragma once

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace testing_support {

/// Catches what this thread's process sends to the debugger, one entry for each call, while it
/// lives. One at a time. Catching needs no memory: a test may have taken it all.
class DebuggerOutput {
public:
    DebuggerOutput() {
        caught() = Caught();
        handler_ = AddVectoredExceptionHandler(1, takeText);
    }
    ~DebuggerOutput() { RemoveVectoredExceptionHandler(handler_); }
    DebuggerOutput(const DebuggerOutput&) = delete;
    DebuggerOutput& operator=(const DebuggerOutput&) = delete;

    std::vector<std::string> pieces() const {
        std::vector<std::string> all;
        for (std::size_t begin = 0; begin < caught().used;) {
            all.emplace_back(caught().texts + begin);
            begin += all.back().size() + 1;
        }
        return all;
    }

    std::string text() const {
        std::string all;
        for (const std::string& piece : pieces()) all += piece;
        return all;
    }

private:
    /// The texts one behind the other, each with its final zero; what finds no room is lost.
    struct Caught {
        char texts[16384] = "";
        std::size_t used = 0;
    };

    static Caught& caught() {
        static Caught texts;
        return texts;
    }

    // A text for the debugger travels as an exception: its length with the final zero, its address.
    static LONG CALLBACK takeText(EXCEPTION_POINTERS* info) {
        constexpr DWORD printException = 0x40010006;
        const EXCEPTION_RECORD& record = *info->ExceptionRecord;
        if (record.ExceptionCode != printException) return EXCEPTION_CONTINUE_SEARCH;
        const auto* const text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
        const std::size_t bytes = std::strlen(text) + 1;
        Caught& all = caught();
        if (bytes <= sizeof all.texts - all.used) {
            std::copy_n(text, bytes, all.texts + all.used);
            all.used += bytes;
        }
        return EXCEPTION_CONTINUE_EXECUTION;
    }

    void* handler_ = nullptr;
};

}  // namespace testing_support

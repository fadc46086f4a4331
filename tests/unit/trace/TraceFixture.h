#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <stdexcept>
#include <string>

#include "support/TempFolder.h"
#include "trace/Trace.h"
#include "trace/TraceContext.h"

namespace testing_support {

/// A folder whose path holds none of the words that a line of trace settings would take for a
/// switch.
class PlainFolder : public TempFolder {
public:
    PlainFolder() {
        for (const char* word :
             {"notrace", "tid", "tc", "hpc", "dt", "nid", "tl", "ts", "tfr", "include", "exclude"})
            if (path().find(word) != std::string::npos)
                throw std::runtime_error("set TMP to a folder without '" + std::string(word) +
                                         "' in its path, not " + path());
    }
};

/// A trace of its own that writes to "out.log" in a folder of its own.
class TraceFixture : public testing::Test {
protected:
    TraceFixture() { context.openTraceFile(folder.pathOf("out.log"), "w"); }

    void loadSettings(const std::string& lines) {
        context.loadSettings(folder.writeText("trace.cfg", lines));
    }

    void write(const char* module, unsigned int category, int verbosity, const char* format, ...)
        __attribute__((format(gnu_printf, 5, 6))) {
        std::va_list values;
        va_start(values, format);
        context.write(module, category, verbosity, format, values);
        va_end(values);
    }

    /// One line as the library itself writes it.
    void say(const char* text) {
        write(tracelog::libraryModule, tracelog::information, 0, "%s\n", text);
    }

    std::string output() const { return folder.readText("out.log"); }

    PlainFolder folder;
    tracelog::TraceContext context;
};

/// A scope of a given trace.
class ContextScope {
public:
    ContextScope(tracelog::TraceContext& context, const char* title) : context_(context) {
        if (context_.enterScope("", title, savedEnabled_)) title_ = title;
    }
    ~ContextScope() { context_.leaveScope("", title_, savedEnabled_); }
    ContextScope(const ContextScope&) = delete;
    ContextScope& operator=(const ContextScope&) = delete;

private:
    tracelog::TraceContext& context_;
    const char* title_ = nullptr;
    bool savedEnabled_ = true;
};

}  // namespace testing_support

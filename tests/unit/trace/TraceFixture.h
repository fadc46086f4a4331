#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

#include "TempFolder.h"
#include "trace/Trace.h"
#include "trace/TraceContext.h"

namespace testing_support {

/// A trace of its own that writes to "out.log" in a folder of its own.
class TraceFixture : public testing::Test {
protected:
    TraceFixture() { context.openTraceFile(folder.file("out.log"), "w"); }

    void loadSettings(const std::string& lines) {
        context.loadSettings(folder.write("trace.cfg", lines));
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

    std::string output() const { return folder.read("out.log"); }

    TempFolder folder;
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

#include "trace/Trace.h"

#include <cstdarg>

#include "trace/TraceContext.h"

namespace tracelog {
namespace {

TraceContext context;

// The outermost scope: it lives as long as the library is loaded, so that all other scopes write
// their lines and the files stay open between facades. It must follow `context`.
const Scope libraryScope(libraryModule, "*\n");

}  // namespace

TraceContext& processContext() {
    return context;
}

void trace(const char* moduleName, unsigned int category, int verbosity, const char* format,
           ...) noexcept {
    std::va_list values;
    va_start(values, format);
    context.write(moduleName, category, verbosity, format, values);
    va_end(values);
}

void loadSettings(const char* path) noexcept {
    context.loadSettings(path);
}

void openTraceFile(const char* path, const char* mode) noexcept {
    context.openTraceFile(path, mode);
}

Scope::Scope(const char* moduleName, const char* title) noexcept : moduleName_(moduleName) {
    if (context.enterScope(moduleName, title, savedEnabled_)) title_ = title;
}

Scope::~Scope() {
    context.leaveScope(moduleName_, title_, savedEnabled_);
}

}  // namespace tracelog

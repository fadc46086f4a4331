// The settings of the trace, which an operator writes and which are read again while lines are
// written: whatever stands there, a line is written or left out, and nothing else happens.
#include <cstdarg>
#include <cstring>

#include "OpenFiles.h"
#include "Target.h"
#include "trace/TraceContext.h"

namespace {

using tracelog::TraceContext;
using tracelog::TraceSettings;

std::int64_t seconds = 0;

void write(TraceContext& context, const char* module, unsigned int category, int verbosity,
           const char* format, ...) __attribute__((format(gnu_printf, 5, 6)));

void write(TraceContext& context, const char* module, unsigned int category, int verbosity,
           const char* format, ...) {
    std::va_list values;
    va_start(values, format);
    context.write(module, category, verbosity, format, values);
    va_end(values);
}

void useContext(OpenFiles& files, fuzz::Input& input, std::string_view second) {
    TraceContext context;
    context.secondsNow = [] { return ++seconds; };
    context.loadSettings("/settings.cfg");
    const std::string module = input.text();
    const std::string text = input.text();
    bool outermost = true;
    bool inner = true;
    context.enterScope("", "outer\n", outermost);
    write(context, module.c_str(), tracelog::error, 0, "%s\n", text.c_str());
    files.replace(second);
    context.loadSettings("/settings.cfg");
    context.enterScope(module.c_str(), "inner\n", inner);
    for (const unsigned int category : {tracelog::warning, tracelog::information, 8u})
        write(context, "", category, 255, "%s %s\n", module.c_str(), text.c_str());
    context.leaveScope(module.c_str(), "inner\n", inner);
    context.leaveScope("", nullptr, outermost);
}

/// The same line by line, for what can be said of the switches.
void useSettings(std::string_view lines) {
    TraceSettings settings;
    TraceSettings::FileRequest file;
    while (!lines.empty()) {
        std::size_t end = std::min(lines.find('\n'), lines.size());
        end = std::min(end + 1, TraceSettings::maxLineChars);
        const bool namesFile = settings.applyLine(lines.substr(0, end), file);
        FUZZ_REQUIRE(!namesFile || (!file.path.empty() && !file.mode.empty()));
        FUZZ_REQUIRE(settings.refreshSeconds >= 0);
        lines.remove_prefix(std::min(end, lines.size()));
    }
    FUZZ_REQUIRE(settings.header().c_str()[std::strlen(settings.header().c_str()) - 1] == '\n');
    FUZZ_REQUIRE(settings.includeList.empty() || !settings.passesModule(""));
    FUZZ_REQUIRE(!settings.includeList.empty() || settings.passesModule(""));
}

/// A module's name, a text, then the settings; what stands behind a zero is what they are later.
void tryOne(std::string_view bytes) {
    fuzz::Input words(bytes);
    fuzz::Input input(bytes);
    input.text();
    input.text();
    const std::string first = input.text();
    const std::string second(input.rest());
    useSettings(first);
    OpenFiles files(first);
    useContext(files, words, second);
}

const fuzz::Registered registered({"trace", tryOne});

}  // namespace

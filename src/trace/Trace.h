#pragma once

#include <cstddef>

/// The process-wide trace: printf-like lines with a category and a verbosity, nestable scopes,
/// written to the trace file while one is open and to the debugger output otherwise. Nothing here
/// reports an error: a file that cannot be opened is left out, and the program goes on. Nothing
/// throws either, and no line needs memory: a process that has none left can still tell of it.
///
/// Every call may come from any thread. Host text is never a format: pass it as the value of a
/// "%s".
namespace tracelog {

/// Categories; a "ts" mask in the settings chooses among them.
constexpr unsigned int error = 1;
constexpr unsigned int warning = 2;
constexpr unsigned int information = 4;

/// The name under which the whole library traces. Because it is empty, no entry of an "include"
/// or "exclude" line can match it: any "include" silences the library, "exclude" does nothing.
constexpr const char* libraryModule = "";

/// A longer message is cut.
constexpr std::size_t maxMessageChars = 2047;

/// Writes one line; the format carries its own line end. A message of more than `maxMessageChars`
/// is cut and followed by "\n\n".
void trace(const char* moduleName, unsigned int category, int verbosity, const char* format,
           ...) noexcept __attribute__((format(gnu_printf, 4, 5)));

/// Reads the switches from a settings file, which stays open for refreshes. A bare file name is
/// looked for in the directory of the process's executable.
void loadSettings(const char* path) noexcept;

/// Switches the output to another file, opened with `mode`; the file that is already open is kept
/// if the path is the same. Bare names as for `loadSettings`.
void openTraceFile(const char* path, const char* mode) noexcept;

/// A block of the trace: "{ title" when it opens, "} title" when it closes, everything between
/// indented by three. `title` carries its own line end and must outlive the scope.
///
/// The outermost scope of the process writes nothing; when it closes, so do the files. The
/// library holds one for its whole life.
class Scope {
public:
    Scope(const char* moduleName, const char* title) noexcept;
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

private:
    const char* moduleName_;
    const char* title_ = nullptr;
    bool savedEnabled_ = true;
};

}  // namespace tracelog

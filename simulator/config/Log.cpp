#include "config/Log.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "config/JsonNode.h"

namespace simulator {

Log::Log(const std::string& path) {
    if (path.empty()) return;
    file_.open(path, std::ios::binary | std::ios::app);
    if (!file_) throw ConfigError(path + ": cannot be written (" + std::strerror(errno) + ")");
}

void Log::info(const std::string& text) {
    write("info ", text);
}

void Log::error(const std::string& text) {
    std::fprintf(stderr, "qor-simulator: %s\n", text.c_str());
    std::fflush(stderr);
    write("error", text);
}

void Log::write(const char* level, const std::string& text) {
    if (!file_.is_open()) return;
    const std::time_t now = std::time(nullptr);
    char stamp[32] = "";
    if (const std::tm* local = std::localtime(&now)) {
        std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", local);
    }
    file_ << stamp << ' ' << level << ' ' << text << '\n' << std::flush;
}

}  // namespace simulator

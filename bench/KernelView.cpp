#include "KernelView.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

const char* const root = "Z:\\proc\\";
constexpr double ticksPerS = 100;

std::string textOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

KernelView KernelView::of(const std::string& one, const std::string& other) {
    for (const auto& entry : std::filesystem::directory_iterator(root)) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        const std::string line = textOf(root + name + "\\cmdline");
        if (line.find(one) != std::string::npos && line.find(other) != std::string::npos)
            return KernelView(root + name + "\\");
    }
    throw std::runtime_error("the kernel knows no process of " + one);
}

// Files are opened by the Wine server, so what is "self" to the kernel is that.
KernelView KernelView::ofWineServer() {
    return KernelView(std::string(root) + "self\\");
}

double KernelView::workS() const {
    const std::string text = textOf(folder_ + "stat");
    std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
    std::string skipped;
    for (int i = 0; i < 11; ++i) fields >> skipped;  // up to the minor faults' and their like
    double user = 0;
    double kernel = 0;
    fields >> user >> kernel;
    return (user + kernel) / ticksPerS;
}

double KernelView::memoryKb() const {
    return statusOf("RssAnon:");
}

int KernelView::threads() const {
    return static_cast<int>(statusOf("Threads:"));
}

double KernelView::statusOf(const std::string& key) const {
    std::istringstream lines(textOf(folder_ + "status"));
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(key, 0) == 0) return std::stod(line.substr(key.size()));
    return 0;
}

double ownWorkS() {
    FILETIME begun = {};
    FILETIME ended = {};
    FILETIME kernel = {};
    FILETIME user = {};
    GetProcessTimes(GetCurrentProcess(), &begun, &ended, &kernel, &user);
    const auto secondsOf = [](const FILETIME& time) {
        return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) / 1e7;
    };
    return secondsOf(kernel) + secondsOf(user);
}

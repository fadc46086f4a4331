#include "watch/plot/PlotFile.h"

#include <windows.h>

#include <fmt/format.h>

#include <fstream>
#include <stdexcept>
#include <utility>

#include "JsonText.h"
#include "watch/plot/BuiltIn.h"
#include "watch/plot/PlotPage.h"

namespace qorctl {
namespace {

std::string localTime() {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", now.wYear, now.wMonth, now.wDay,
                       now.wHour, now.wMinute, now.wSecond);
}

bool writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes << std::flush;
    return file.good();
}

std::string valuesText(const PlotSeries& series, unsigned int refreshMs) {
    std::string text = fmt::format("{}, refresh period {} ms", series.values(), refreshMs);
    if (series.stride() > 1) text += fmt::format(" (one in {} is drawn)", series.stride());
    return text;
}

}  // namespace

PlotFile::PlotFile(std::string path) : path_(std::move(path)), begun_(localTime()) {
    const DWORD attributes = GetFileAttributesA(path_.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        throw std::runtime_error("it is a folder");
    if (exists && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
        throw std::runtime_error("it is read-only");
    if (!writeFile(scratchPath(), "")) throw std::runtime_error("its folder cannot be written to");
    DeleteFileA(scratchPath().c_str());
}

Outcome PlotFile::write(const PlotSeries& series, const Session& session) const {
    const std::string scratch = scratchPath();
    if (writeFile(scratch, pageOf(series, session)) &&
        MoveFileExA(scratch.c_str(), path_.c_str(), MOVEFILE_REPLACE_EXISTING))
        return Outcome::success(path_);
    DeleteFileA(scratch.c_str());
    return Outcome::failure("cannot write " + path_);
}

std::string PlotFile::scratchPath() const {
    return fmt::format("{}.{}.part", path_, GetCurrentProcessId());
}

std::string PlotFile::pageOf(const PlotSeries& series, const Session& session) const {
    nlohmann::json data = series.asJson();
    data["about"] = nlohmann::json::array();
    const auto tell = [&](const char* key, const std::string& text) {
        data["about"].push_back(nlohmann::json::array({key, text}));
    };
    tell("Settings", utf8Of(session.options().settingsPath));
    tell("Transport", utf8Of(session.settings().transport()));
    tell("Begun", begun_);
    tell("Values", valuesText(series, session.options().refreshMs));
    std::string names;
    for (const auto& curve : data["curves"])
        names += (names.empty() ? "" : ", ") + curve["name"].get<std::string>();
    data["title"] = names;
    return filledIn(builtInFile("PAGE_HTML"), {{"title", htmlOf(names)},
                                               {"page.css", builtInFile("PAGE_CSS")},
                                               {"page.js", builtInFile("PAGE_JS")},
                                               {"plot.css", builtInFile("PLOT_CSS")},
                                               {"plot.js", builtInFile("PLOT_JS")},
                                               {"plot licence", builtInFile("PLOT_LICENCE")},
                                               {"data", scriptJson(data)}});
}

}  // namespace qorctl

#include "operations/ParamSources.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>

#include "HostPaths.h"

namespace qorctl {
namespace {

std::string folderOf(const std::string& path) {
    return path.substr(0, path.find_last_of("\\/") + 1);
}

bool isFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

/// The model that the simulated QOR takes with these settings; empty where there is none, as with
/// QOR itself.
std::string modelPathOf(Session& session) {
    const std::string named = session.settings().value("Simulator", "Model");
    const bool isRelative = named.find(':') != 1 && named.find_first_of("\\/") != 0;
    const std::string path = named.empty()
                                 ? folderOf(session.facade().getQorExecutablePath()) + "engine.json"
                             : isRelative ? folderOf(session.options().settingsPath) + named
                                          : named;
    return isFile(path) ? path : std::string();
}

}  // namespace

std::vector<NamedParam> namesFor(Session& session, const std::string& listPath) {
    const std::string modelPath = modelPathOf(session);
    if (listPath.empty() && modelPath.empty())
        throw std::runtime_error(
            "QOR tells no names, and the settings name no model of a simulated one: "
            "give --names FILE");
    std::vector<NamedParam> ofModel;
    if (!modelPath.empty()) ofModel = namesInModel(modelPath);
    if (listPath.empty()) return ofModel;
    std::vector<NamedParam> listed = namesInList(paths::absolute(listPath));
    for (NamedParam& param : listed) {
        const auto known = std::find_if(ofModel.begin(), ofModel.end(),
                                        [&](const auto& one) { return one.name == param.name; });
        if (known != ofModel.end()) param = *known;
    }
    return listed;
}

}  // namespace qorctl

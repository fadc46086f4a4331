#pragma once

#include <string>

#include "app/Settings.h"

namespace simulator {

/// Empty when the file asks for no log, or is not there.
std::string logPathIn(const std::string& settingsPath);

/// Throws ConfigError, which names the file.
Settings readSettingsFile(const std::string& settingsPath);

/// The folder part of an absolute path, with its separator.
std::string folderOf(const std::string& path);

std::string absolutePath(const std::string& path);

}  // namespace simulator

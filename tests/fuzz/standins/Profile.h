#pragma once

#include <string_view>

/// The one settings file that there is, for GetPrivateProfileString and its like.
void setProfile(std::string_view content);

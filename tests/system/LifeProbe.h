#pragma once

/// Constructs a facade, does four things with it that should succeed, destroys it; how many did.
extern "C" __declspec(dllexport) int useFacade(const char* settingsPath, const char* hostPath);

constexpr int allOfFacade = 4;

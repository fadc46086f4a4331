#pragma once

/// Constructs a facade, does four things with it that should succeed, destroys it; how many did.
extern "C" __declspec(dllexport) int useFacade(const char* settingsPath, const char* hostPath);

constexpr int allOfFacade = 4;

/// Constructs a facade and destroys it; how many milliseconds the destruction took. With the title
/// of a window it connects meanwhile and waits until the window is there: QOR's question.
extern "C" __declspec(dllexport) unsigned long destroyFacade(const char* settingsPath,
                                                             const char* hostPath,
                                                             const char* title);

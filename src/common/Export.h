#pragma once

/// QOR_API marks what the DLL exports. A host that includes the installed headers gets the
/// import side; the library itself is compiled with QOR_BUILDING_LIBRARY. Programs that link the
/// library's objects directly (the unit tests) define QOR_STATIC.
#if defined(_WIN32) && defined(QOR_BUILDING_LIBRARY)
#define QOR_API __declspec(dllexport)
#elif defined(_WIN32) && !defined(QOR_STATIC)
#define QOR_API __declspec(dllimport)
#else
#define QOR_API
#endif

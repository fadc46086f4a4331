#pragma once

/// QOR_API marks what hosts use of the DLL. Programs that link the library's objects directly (the
/// library itself, the unit tests) define QOR_STATIC.
#if defined(_WIN32) && !defined(QOR_STATIC)
#define QOR_API __declspec(dllimport)
#else
#define QOR_API
#endif

#pragma once

#include <windows.h>

/// Sockets need no support here: connections are `Link`s.
inline BOOL AfxSocketInit() {
    return TRUE;
}
inline void AfxSocketTerm() {}

#pragma once

/// 0: the file may be used so.
int _access(const char* path, int mode);

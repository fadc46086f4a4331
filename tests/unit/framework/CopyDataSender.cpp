#include <windows.h>

#include <cstring>

/// usage: framework_copydata_sender TITLE TEXT
/// Sends TEXT as copy-data with tag 77 to the window of that title. The exit code is the result of
/// the message, 50 if there is no such window and 51 if it does not answer.
int main(int argc, char** argv) {
    HWND const window = argc == 3 ? FindWindowA(nullptr, argv[1]) : nullptr;
    if (window == nullptr) return 50;
    COPYDATASTRUCT data = {77, static_cast<DWORD>(std::strlen(argv[2])), argv[2]};
    DWORD_PTR result = 0;
    const LRESULT sent = SendMessageTimeoutA(
        window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_BLOCK, 5000, &result);
    return sent != 0 ? static_cast<int>(result) : 51;
}

#include "WindowEnd.h"

#include <utility>

#include "Desktop.h"

namespace {

const char* const className = "FakedQor";
constexpr std::uintptr_t messageTag = 3084;
constexpr unsigned int sendTimeoutMs = 100;  // a library that ends looks no more

}  // namespace

WindowEnd::WindowEnd(std::string name)
    : name_(std::move(name)), clientTitle_(desktop::clientTitleOf(name_)) {
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.lpszClassName = className;
    RegisterClassA(&windowClass);  // unless another one has
}

bool WindowEnd::accept() {
    if (window_ == nullptr)
        window_ = CreateWindowExA(0, className, name_.c_str(), 0, 0, 0, 0, 0, nullptr, nullptr,
                                  nullptr, this);
    client_ = FindWindowA(nullptr, clientTitle_.c_str());
    if (isOpen()) return true;
    receive();  // of others, who need no answer
    return false;
}

bool WindowEnd::isOpen() {
    return window_ != nullptr && GetWindowThreadProcessId(client_, nullptr) != 0;
}

std::string WindowEnd::receive() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    return std::exchange(received_, std::string());
}

// While it waits it takes what the library sends: the library may wait for that.
void WindowEnd::send(const std::string& record) {
    COPYDATASTRUCT data{messageTag, static_cast<DWORD>(record.size()),
                        const_cast<char*>(record.data())};
    DWORD_PTR result = 0;
    SendMessageTimeoutA(client_, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), 0, sendTimeoutMs,
                        &result);
}

void WindowEnd::hangUp() {
    DestroyWindow(std::exchange(window_, nullptr));
    received_.clear();
}

LRESULT CALLBACK WindowEnd::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE)
        SetWindowLongPtrA(
            window, GWLP_USERDATA,
            reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams));
    if (message != WM_COPYDATA) return DefWindowProcA(window, message, wParam, lParam);
    auto& self = *reinterpret_cast<WindowEnd*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    const auto& data = *reinterpret_cast<const COPYDATASTRUCT*>(lParam);
    if (data.dwData != messageTag) return FALSE;
    self.received_.append(static_cast<const char*>(data.lpData), data.cbData);
    return TRUE;
}

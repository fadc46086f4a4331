#include "link/WindowLink.h"

#include <stdexcept>

namespace simulator {

namespace {

constexpr const char* className = "QorSimulatorWindow";

void registerClass(WNDPROC handler) {
    WNDCLASSEXA description{};
    description.cbSize = sizeof description;
    description.lpfnWndProc = handler;
    description.hInstance = GetModuleHandleA(nullptr);
    description.lpszClassName = className;
    if (RegisterClassExA(&description) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
        throw std::runtime_error("window class: error " + std::to_string(GetLastError()));
    }
}

WindowLink::Sent failed(DWORD error) {
    WindowLink::Sent sent;
    // Some systems give no error code when the time is over.
    sent.timedOut = error == ERROR_TIMEOUT || error == ERROR_SUCCESS;
    sent.failure = sent.timedOut ? "time-out" : "error " + std::to_string(error);
    return sent;
}

}  // namespace

WindowLink::WindowLink(const std::string& title, WindowLinkEvents& events) : events_(events) {
    if (find(title) != nullptr) {
        throw std::runtime_error("there is a window titled \"" + title + "\" already");
    }
    registerClass(handle);
    // Message-only windows cannot be found by their titles, so it is an ordinary one that is never
    // shown.
    window_ = CreateWindowExA(0, className, title.c_str(), WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                              GetModuleHandleA(nullptr), nullptr);
    if (window_ == nullptr) {
        throw std::runtime_error("window \"" + title + "\": error " +
                                 std::to_string(GetLastError()));
    }
    SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

WindowLink::~WindowLink() {
    DestroyWindow(window_);
}

HWND WindowLink::find(const std::string& title) {
    return FindWindowA(nullptr, title.c_str());
}

WindowLink::Sent WindowLink::send(HWND receiver, const std::string& bytes, const MessageForm& form,
                                  std::uint32_t timeoutMs) {
    COPYDATASTRUCT data{};
    data.dwData = form.tag;
    data.cbData = form.nullLength.value_or(static_cast<DWORD>(bytes.size()));
    // The system only reads from it.
    data.lpData = form.nullLength ? nullptr : const_cast<char*>(bytes.data());
    DWORD_PTR result = 0;
    SetLastError(ERROR_SUCCESS);
    if (SendMessageTimeoutA(receiver, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_NORMAL,
                            timeoutMs, &result) == 0) {
        return failed(GetLastError());
    }
    Sent sent;
    sent.delivered = true;
    sent.result = static_cast<std::uint32_t>(result);
    return sent;
}

bool WindowLink::holdsSender() {
    return (InSendMessageEx(nullptr) & (ISMEX_REPLIED | ISMEX_SEND)) == ISMEX_SEND;
}

void WindowLink::releaseSender(bool result) {
    if (holdsSender()) ReplyMessage(result ? 1 : 0);
}

LRESULT CALLBACK WindowLink::handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_COPYDATA) return DefWindowProcA(window, message, wParam, lParam);
    auto* link = reinterpret_cast<WindowLink*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (link == nullptr) return 0;
    return link->received(reinterpret_cast<const COPYDATASTRUCT*>(lParam)) ? 1 : 0;
}

bool WindowLink::received(const COPYDATASTRUCT* data) {
    if (data == nullptr) return false;
    MessageForm form;
    form.tag = static_cast<std::uint32_t>(data->dwData);
    std::string bytes;
    if (data->lpData == nullptr) {
        form.nullLength = data->cbData;
    } else {
        bytes.assign(static_cast<const char*>(data->lpData), data->cbData);
    }
    return events_.onMessage(bytes, form);
}

}  // namespace simulator

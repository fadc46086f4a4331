#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// Plain window calls of the far side, sharing no code with the library.
namespace peer {

constexpr DWORD tag = 3084;
constexpr int notTaken = -1;

/// The result of the message, or notTaken.
inline int sendData(HWND to, COPYDATASTRUCT data, UINT flags = SMTO_NORMAL, UINT timeoutMs = 5000) {
    DWORD_PTR result = 0;
    const LRESULT sent = SendMessageTimeoutA(to, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data),
                                             flags, timeoutMs, &result);
    return sent == 0 ? notTaken : static_cast<int>(result);
}

inline int send(HWND to, const std::string& bytes, UINT flags = SMTO_NORMAL,
                UINT timeoutMs = 5000) {
    return sendData(to, {tag, static_cast<DWORD>(bytes.size()), const_cast<char*>(bytes.data())},
                    flags, timeoutMs);
}

struct Message {
    WPARAM wParam = 0;
    DWORD tag = 0;
    std::string bytes;
};

/// A titled hidden window whose copy-data messages go to `handler`, on the thread that makes it.
class Window {
public:
    using Handler = std::function<LRESULT(const Message&)>;

    Window(const std::string& title, Handler handler) : handler_(std::move(handler)) {
        WNDCLASSA description = {};
        description.lpfnWndProc = procedure;
        description.lpszClassName = "WindowOfATestPeer";
        description.hInstance = GetModuleHandleA(nullptr);
        RegisterClassA(&description);  // fails when it is there already
        handle_ = CreateWindowExA(0, description.lpszClassName, title.c_str(), WS_POPUP, 0, 0, 0, 0,
                                  nullptr, nullptr, description.hInstance, nullptr);
        SetWindowLongPtrA(handle_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~Window() { DestroyWindow(handle_); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    HWND handle() const { return handle_; }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* const self = reinterpret_cast<Window*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (message != WM_COPYDATA || self == nullptr)
            return DefWindowProcA(window, message, wParam, lParam);
        const auto& data = *reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        const auto* const bytes = static_cast<const char*>(data.lpData);
        return self->handler_(
            {wParam, data.dwData, bytes == nullptr ? "" : std::string(bytes, data.cbData)});
    }

    const Handler handler_;
    HWND handle_ = nullptr;
};

/// A window on a thread of its own. The handler runs there; so does `later`, once the handler has
/// returned.
class WindowThread {
public:
    explicit WindowThread(const std::string& title) {
        std::promise<HWND> made;
        std::future<HWND> handle = made.get_future();
        thread_ = std::thread([this, title, &made] { run(title, made); });
        handle_ = handle.get();
    }
    ~WindowThread() {
        isStopping_ = true;
        PostMessageA(handle_, WM_NULL, 0, 0);
        thread_.join();
    }
    WindowThread(const WindowThread&) = delete;
    WindowThread& operator=(const WindowThread&) = delete;

    HWND handle() const { return handle_; }
    void onMessage(Window::Handler handler) {
        const std::lock_guard<std::mutex> guard(mutex_);
        handler_ = std::move(handler);
    }
    std::vector<Message> received() const {
        const std::lock_guard<std::mutex> guard(mutex_);
        return received_;
    }
    void later(std::function<void()> work) {
        {
            const std::lock_guard<std::mutex> guard(mutex_);
            work_.push_back(std::move(work));
        }
        PostMessageA(handle_, WM_NULL, 0, 0);
    }

private:
    void run(const std::string& title, std::promise<HWND>& made) {
        const Window window(title, [this](const Message& message) { return note(message); });
        made.set_value(window.handle());
        MSG message;
        while (!isStopping_) {
            MsgWaitForMultipleObjectsEx(0, nullptr, 50, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
            while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
            for (const auto& work : takeWork()) work();
        }
    }
    std::vector<std::function<void()>> takeWork() {
        const std::lock_guard<std::mutex> guard(mutex_);
        return std::exchange(work_, {});
    }
    LRESULT note(const Message& message) {
        Window::Handler handler;
        {
            const std::lock_guard<std::mutex> guard(mutex_);
            received_.push_back(message);
            handler = handler_;
        }
        return handler ? handler(message) : TRUE;
    }

    mutable std::mutex mutex_;
    Window::Handler handler_;  // guarded by mutex_, like the two below
    std::vector<Message> received_;
    std::vector<std::function<void()>> work_;
    std::atomic<bool> isStopping_{false};
    HWND handle_ = nullptr;
    std::thread thread_;
};

}  // namespace peer

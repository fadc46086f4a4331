#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace simulator::test {

// A client of a simulated QOR: a titled window on a thread of its own, written without the
// simulator's link so that both are judged. The thread does what it is told between its messages.
class WindowClient {
public:
    struct Message {
        std::uint32_t tag = 0;
        std::string bytes;
        bool isNull = false;
        DWORD length = 0;
    };

    explicit WindowClient(const std::string& title) {
        std::promise<HWND> made;
        std::future<HWND> window = made.get_future();
        thread_ = std::thread([this, title, &made] { run(title, made); });
        window_ = window.get();
    }
    ~WindowClient() {
        stop_ = true;
        PostMessageA(window_, WM_NULL, 0, 0);
        thread_.join();
    }
    WindowClient(const WindowClient&) = delete;
    WindowClient& operator=(const WindowClient&) = delete;

    HWND window() const { return window_; }

    // What each message is answered with, on the client's thread.
    void onMessage(std::function<LRESULT()> handler) {
        const std::lock_guard lock(mutex_);
        handler_ = std::move(handler);
    }
    std::vector<Message> received() const {
        const std::lock_guard lock(mutex_);
        return received_;
    }

    // Has the client's thread do something; the result is there once it has been done.
    template <class Work>
    auto doing(Work work) {
        auto task = std::make_shared<std::packaged_task<decltype(work())()>>(std::move(work));
        auto result = task->get_future();
        {
            const std::lock_guard lock(mutex_);
            work_.emplace_back([task] { (*task)(); });
        }
        PostMessageA(window_, WM_NULL, 0, 0);
        return result;
    }

    // Sends from the calling thread; -1 when it fails.
    static int send(HWND receiver, DWORD tag, const std::string& bytes, UINT flags = SMTO_NORMAL,
                    UINT timeoutMs = 5000) {
        COPYDATASTRUCT data{tag, static_cast<DWORD>(bytes.size()), const_cast<char*>(bytes.data())};
        return sendData(receiver, data, flags, timeoutMs);
    }
    static int sendData(HWND receiver, COPYDATASTRUCT data, UINT flags, UINT timeoutMs) {
        DWORD_PTR result = 0;
        const LRESULT sent = SendMessageTimeoutA(
            receiver, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), flags, timeoutMs, &result);
        return sent == 0 ? -1 : static_cast<int>(result);
    }

private:
    static constexpr const char* className = "WindowClientOfATest";

    void run(const std::string& title, std::promise<HWND>& made) {
        WNDCLASSA description{};
        description.lpfnWndProc = handle;
        description.lpszClassName = className;
        description.hInstance = GetModuleHandleA(nullptr);
        RegisterClassA(&description);  // fails when it is there already
        const HWND window = CreateWindowExA(0, className, title.c_str(), WS_POPUP, 0, 0, 0, 0,
                                            nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
        SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        made.set_value(window);
        MSG message;
        while (!stop_) {
            MsgWaitForMultipleObjectsEx(0, nullptr, 50, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
            while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
                DispatchMessageA(&message);
            }
            work();
        }
        DestroyWindow(window);
    }

    void work() {
        std::vector<std::function<void()>> work;
        {
            const std::lock_guard lock(mutex_);
            work.swap(work_);
        }
        for (const auto& one : work) one();
    }

    static LRESULT CALLBACK handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* client = reinterpret_cast<WindowClient*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (message != WM_COPYDATA || client == nullptr) {
            return DefWindowProcA(window, message, wParam, lParam);
        }
        return client->note(*reinterpret_cast<const COPYDATASTRUCT*>(lParam));
    }

    LRESULT note(const COPYDATASTRUCT& data) {
        Message message;
        message.tag = data.dwData;
        message.isNull = data.lpData == nullptr;
        message.length = data.cbData;
        if (!message.isNull) {
            message.bytes.assign(static_cast<const char*>(data.lpData), data.cbData);
        }
        std::function<LRESULT()> handler;
        {
            const std::lock_guard lock(mutex_);
            received_.push_back(std::move(message));
            handler = handler_;
        }
        return handler ? handler() : 1;
    }

    mutable std::mutex mutex_;
    std::vector<Message> received_;
    std::vector<std::function<void()>> work_;
    std::function<LRESULT()> handler_;
    std::atomic<bool> stop_{false};
    HWND window_ = nullptr;
    std::thread thread_;
};

// Window titles are shared by everything that runs on the machine.
inline std::string uniqueTitle(const std::string& what) {
    static std::atomic<int> count{0};
    return "QorSimulatorTest-" + what + "-" + std::to_string(GetCurrentProcessId()) + "-" +
           std::to_string(++count);
}

}  // namespace simulator::test

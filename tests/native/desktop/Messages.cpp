// Messages to windows of the same and of other threads.
#include <windows.h>

#include <algorithm>
#include <utility>

#include "Desktop.h"
#include "WindowTable.h"

using desktop::Sent;
using desktop::ThreadQueue;
using desktop::windows;
using std::chrono::steady_clock;

namespace {

constexpr std::chrono::microseconds eventLooks{200};

std::atomic<bool> sendsAreInterrupted{false};

/// The message that the calling thread handles and another one has sent; null: none. And whether
/// its sender has been let go.
thread_local Sent* handled = nullptr;
thread_local bool hasReplied = false;

LRESULT callProcedure(const Sent& message, LPARAM lParam) {
    const auto window = windows().find(message.window);
    return window->procedure(message.window, message.message, message.wParam, lParam);
}

LRESULT handle(Sent& message) {
    if (!message.hasRecord) return callProcedure(message, message.lParam);
    COPYDATASTRUCT record{message.tag, static_cast<DWORD>(message.bytes.size()),
                          message.bytes.data()};
    return callProcedure(message, reinterpret_cast<LPARAM>(&record));
}

/// Handles what others have sent to the calling thread.
void handleSent(ThreadQueue& own) {
    own.noteLook();
    while (const auto message = own.takeSent()) {
        const bool isThere = windows().find(message->window) != nullptr;
        Sent* const outer = std::exchange(handled, message.get());
        const bool outerHasReplied = std::exchange(hasReplied, false);
        const LRESULT result = isThere ? handle(*message) : 0;
        handled = outer;
        hasReplied = outerHasReplied;
        message->sender->finish(*message, isThere ? Sent::handled : Sent::lost, result);
    }
}

std::shared_ptr<Sent> makeSent(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto sent = std::make_shared<Sent>();
    sent->window = window;
    sent->message = message;
    sent->wParam = wParam;
    sent->lParam = lParam;
    sent->sender = ThreadQueue::own();
    if (message != WM_COPYDATA) return sent;
    const auto& record = *reinterpret_cast<const COPYDATASTRUCT*>(lParam);
    sent->hasRecord = true;
    sent->tag = record.dwData;
    sent->bytes.assign(static_cast<const char*>(record.lpData), record.cbData);
    return sent;
}

/// Until there is an outcome; what others send meanwhile is handled in here, if `takesSent`.
void await(Sent& message, bool takesSent, UINT timeoutMs) {
    ThreadQueue& own = *message.sender;
    const auto until = steady_clock::now() + ThreadQueue::Ms(timeoutMs);
    while (!own.awaitOutcome(message, takesSent, until) && steady_clock::now() < until)
        if (takesSent) handleSent(own);
    own.finish(message, Sent::late);  // from now on any other outcome is too late
}

/// 0 for a failure, as the system does it: of a time-out the last-error code may stay as it is.
LRESULT outcomeOf(const Sent& message, DWORD_PTR& result) {
    if (message.state == Sent::lost) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    if (message.state != Sent::handled) return 0;
    result = static_cast<DWORD_PTR>(message.result);
    return 1;
}

}  // namespace

void desktop::letSendsBeInterrupted(bool interrupted) {
    sendsAreInterrupted = interrupted;
}

LRESULT SendMessageTimeoutA(HWND handle, UINT message, WPARAM wParam, LPARAM lParam, UINT flags,
                            UINT timeoutMs, DWORD_PTR* result) {
    const auto window = windows().find(handle);
    if (window == nullptr) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return 0;
    }
    if (window->thread == GetCurrentThreadId()) {
        *result = static_cast<DWORD_PTR>(window->procedure(handle, message, wParam, lParam));
        return 1;
    }
    if ((flags & SMTO_ABORTIFHUNG) != 0 && window->queue->hangs()) return 0;
    const auto sent = makeSent(handle, message, wParam, lParam);
    if (!window->queue->send(sent)) sent->sender->finish(*sent, Sent::lost);
    await(*sent, (flags & SMTO_BLOCK) == 0 || sendsAreInterrupted, timeoutMs);
    return outcomeOf(*sent, *result);
}

DWORD InSendMessageEx(void*) {
    if (handled == nullptr) return 0;
    return hasReplied ? ISMEX_SEND | ISMEX_REPLIED : ISMEX_SEND;
}

BOOL ReplyMessage(LRESULT result) {
    if (handled == nullptr) return FALSE;
    hasReplied = true;
    handled->sender->finish(*handled, Sent::handled, result);
    return TRUE;
}

BOOL PeekMessageA(MSG* message, HWND window, UINT lowest, UINT highest, UINT) {
    ThreadQueue& own = *ThreadQueue::own();
    handleSent(own);
    return own.takePosted(*message, window, lowest, highest) ? TRUE : FALSE;
}

LRESULT DispatchMessageA(const MSG* message) {
    const auto window = windows().find(message->hwnd);
    if (window == nullptr) return 0;
    return window->procedure(message->hwnd, message->message, message->wParam, message->lParam);
}

BOOL TranslateMessage(const MSG*) {
    return FALSE;  // there is no keyboard
}

BOOL PostMessageA(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto window = windows().find(handle);
    return window != nullptr && window->queue->post({handle, message, wParam, lParam}) ? TRUE
                                                                                       : FALSE;
}

void PostQuitMessage(int exitCode) {
    ThreadQueue::own()->quit(exitCode);
}

// An event tells nobody but its own waiter, so it is looked at again and again: the only wait of
// the library's for both lasts a millisecond. What is only posted may end a wait for messages of
// other threads, too.
DWORD MsgWaitForMultipleObjectsEx(DWORD count, const HANDLE* handles, DWORD timeoutMs, DWORD,
                                  DWORD) {
    ThreadQueue& own = *ThreadQueue::own();
    own.noteLook();
    const auto until = steady_clock::now() + ThreadQueue::Ms(timeoutMs);
    for (;;) {
        if (count != 0 && WaitForSingleObject(*handles, 0) == WAIT_OBJECT_0) return WAIT_OBJECT_0;
        if (!own.isEmpty()) return WAIT_OBJECT_0 + count;
        if (steady_clock::now() >= until) return WAIT_TIMEOUT;
        own.wait(std::min(until, steady_clock::now() + eventLooks));
    }
}

#include "CopyDataFloor.h"

#include <stdexcept>

#include "common/Deadline.h"
#include "common/Pump.h"

namespace {

constexpr ULONG_PTR tagResult = 1;   // the message's result is the answer
constexpr ULONG_PTR tagMessage = 2;  // the answer is a message of its own
constexpr ULONG_PTR tagQuit = 3;
constexpr unsigned int sendMs = 2000;
constexpr unsigned int giveUpMs = 5000;

bool sendTo(HWND window, ULONG_PTR tag) {
    char bytes[32] = {};
    COPYDATASTRUCT record = {tag, sizeof bytes, bytes};
    DWORD_PTR result = 0;
    return SendMessageTimeoutA(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record),
                               SMTO_BLOCK, sendMs, &result) != 0 &&
           result != 0;
}

/// A hidden top-level window that hears of copy-data messages.
class CopyDataWindow : public CWnd {
    DECLARE_MESSAGE_MAP()

    explicit CopyDataWindow(const std::string& title) {
        if (!CreateEx(0, AfxRegisterWndClass(0), title.c_str(), 0, 0, 0, 0, 0, nullptr, nullptr))
            throw std::runtime_error("no window for the copy-data floor");
    }

    BOOL OnCopyData(CWnd*, COPYDATASTRUCT* record) { return onTag(record->dwData); }

protected:
    virtual bool onTag(ULONG_PTR tag) = 0;
};

BEGIN_MESSAGE_MAP(CopyDataWindow, CWnd)
ON_WM_COPYDATA()
END_MESSAGE_MAP()

/// The other side's window.
class PeerWindow final : public CopyDataWindow {
public:
    explicit PeerWindow(const std::string& title)
        : CopyDataWindow(title + " peer"), asker_(FindWindowA(nullptr, title.c_str())) {}

protected:
    bool onTag(ULONG_PTR tag) override {
        if (tag == tagQuit) PostQuitMessage(0);
        if (tag == tagMessage) {
            ReplyMessage(TRUE);
            sendTo(asker_, tagMessage);
        }
        return true;
    }

private:
    HWND asker_;
};

}  // namespace

class CopyDataFloor::Receiver final : public CopyDataWindow {
public:
    explicit Receiver(const std::string& title) : CopyDataWindow(title) {}

    bool takeArrival() {
        const bool has = arrived_;
        arrived_ = false;
        return has;
    }

protected:
    bool onTag(ULONG_PTR) override {
        arrived_ = true;
        return true;
    }

private:
    bool arrived_ = false;
};

CopyDataFloor::CopyDataFloor()
    : title_("qor-bench " + std::to_string(GetCurrentProcessId())),
      receiver_(std::make_unique<Receiver>(title_)),
      peer_(std::make_unique<Process>("qor-bench.exe", "--copy-data-peer \"" + title_ + "\"")) {
    const auto deadline = common::Deadline::after(common::now(), giveUpMs);
    while (peerWindow_ == nullptr) {
        peerWindow_ = FindWindowA(nullptr, (title_ + " peer").c_str());
        if (deadline.hasPassed()) throw std::runtime_error("the copy-data peer shows no window");
        common::sleepMs(10);
    }
}

CopyDataFloor::~CopyDataFloor() {
    sendTo(peerWindow_, tagQuit);
}

void CopyDataFloor::send(ULONG_PTR tag) {
    if (!sendTo(peerWindow_, tag)) throw std::runtime_error("the copy-data peer has gone");
}

void CopyDataFloor::sendAndResult() {
    send(tagResult);
}

void CopyDataFloor::thereAndBack() {
    send(tagMessage);
    const auto deadline = common::Deadline::after(common::now(), giveUpMs);
    while (!receiver_->takeArrival()) {
        common::pumpCopyData();
        if (deadline.hasPassed()) throw std::runtime_error("the copy-data peer does not answer");
    }
}

int runCopyDataPeer(const std::string& title) {
    const PeerWindow window(title);
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
    return 0;
}

#include "serve/StdioLink.h"

#include <windows.h>

#include <chrono>
#include <exception>
#include <thread>
#include <utility>

#include "JsonText.h"
#include "serve/rpc/Message.h"

namespace qorctl::serve {
namespace {

constexpr std::size_t behindBytes = 1024 * 1024;
constexpr std::size_t mostWaitingBytes = 16 * behindBytes;
/// So long the end waits for a reader that stands still.
constexpr std::chrono::seconds patience(3);
constexpr std::size_t longestLineBytes = 32 * behindBytes;

/// Lines of standard input; longer ones than any request has are left out.
class Lines {
public:
    /// False at the end of the input. `isWhole`: it was not too long.
    bool next(std::string& line, bool& isWhole) {
        line.clear();
        isWhole = true;
        while (fill()) {
            const std::size_t end = buffer_.find('\n', position_);
            const bool isEnd = end != std::string::npos;
            const std::size_t count = (isEnd ? end : buffer_.size()) - position_;
            if (line.size() + count > longestLineBytes) isWhole = false;
            if (isWhole) line.append(buffer_, position_, count);
            position_ += count + (isEnd ? 1 : 0);
            if (isEnd) return true;
        }
        return !line.empty();
    }

private:
    bool fill() {
        if (position_ < buffer_.size()) return true;
        buffer_.resize(64 * 1024);
        DWORD count = 0;
        const BOOL isRead = ReadFile(GetStdHandle(STD_INPUT_HANDLE), buffer_.data(),
                                     static_cast<DWORD>(buffer_.size()), &count, nullptr);
        buffer_.resize(isRead != FALSE ? count : 0);
        position_ = 0;
        return !buffer_.empty();
    }

    std::string buffer_;
    std::size_t position_ = 0;
};

bool isBlank(const std::string& line) {
    return line.find_first_not_of(" \t\r") == std::string::npos;
}

}  // namespace

StdoutOutlet::StdoutOutlet() {
    std::thread([state = state_] { run(state); }).detach();
}

void StdoutOutlet::finish() {
    std::unique_lock<std::mutex> lock(state_->mutex);
    state_->isOver = true;
    state_->changed.notify_all();
    std::size_t before = 0;
    while (state_->waitingBytes != 0 && state_->waitingBytes != before) {
        before = state_->waitingBytes;
        state_->changed.wait_for(lock, patience, [&] { return state_->waitingBytes != before; });
    }
}

void StdoutOutlet::tell(const char* event, const std::string& params) {
    if (!isFull())
        add(R"({"jsonrpc":"2.0","method":")" + std::string(event) + R"(","params":)" + params +
            "}\n");
}

void StdoutOutlet::answer(const nlohmann::json& message) {
    if (!message.is_null()) add(printedOnOneLine(message) + "\n");
}

void StdoutOutlet::add(std::string line) {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    if (state_->isBroken) return;
    state_->waitingBytes += line.size();
    state_->lines.push_back(std::move(line));
    state_->changed.notify_all();
}

bool StdoutOutlet::isBehind() {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    return state_->waitingBytes > behindBytes;
}

bool StdoutOutlet::isFull() {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    return state_->waitingBytes > mostWaitingBytes;
}

void StdoutOutlet::awaitRoom() {
    std::unique_lock<std::mutex> lock(state_->mutex);
    state_->changed.wait(
        lock, [this] { return state_->waitingBytes < mostWaitingBytes || state_->isBroken; });
}

bool StdoutOutlet::isBroken() {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    return state_->isBroken;
}

void StdoutOutlet::run(const std::shared_ptr<State>& state) {
    std::unique_lock<std::mutex> lock(state->mutex);
    while (true) {
        state->changed.wait(lock, [&] { return state->isOver || !state->lines.empty(); });
        if (state->lines.empty()) return;
        const std::string line = std::move(state->lines.front());
        state->lines.pop_front();
        lock.unlock();
        DWORD written = 0;
        const bool isWritten =
            WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), line.data(), static_cast<DWORD>(line.size()),
                      &written, nullptr) != FALSE;
        lock.lock();
        state->waitingBytes -= line.size();
        if (!isWritten) {
            state->isBroken = true;
            state->lines.clear();
            state->waitingBytes = 0;
        }
        state->changed.notify_all();
    }
}

/// What the thread that reads shares with the server's, which may end before it.
struct StdioLink::Reading {
    std::mutex mutex;
    Server* server = nullptr;  ///< guarded by mutex; null: it is over
    std::shared_ptr<Client> client;
    std::shared_ptr<StdoutOutlet> outlet;
};

StdioLink::StdioLink(Server& server)
    : outlet_(std::make_shared<StdoutOutlet>()), reading_(std::make_shared<Reading>()) {
    reading_->server = &server;
    reading_->client = server.join(Client::Kind::owner, outlet_);
    reading_->outlet = outlet_;
    std::thread([reading = reading_] { read(reading); }).detach();
}

StdioLink::~StdioLink() {
    {
        const std::lock_guard<std::mutex> guard(reading_->mutex);
        reading_->server = nullptr;
    }
    outlet_->finish();
}

void StdioLink::read(const std::shared_ptr<Reading>& reading) {
    const auto answer = [outlet = reading->outlet](const nlohmann::json& message) {
        outlet->answer(message);
    };
    Lines lines;
    std::string line;
    bool isWhole = true;
    while (lines.next(line, isWhole)) {
        reading->outlet->awaitRoom();
        const std::lock_guard<std::mutex> guard(reading->mutex);
        if (reading->server == nullptr) return;
        if (!isWhole)
            answer(
                responseOf(nullptr, Failure{RpcCode::parseError, "a line is longer than 32 MiB"}));
        else if (!isBlank(line))
            try {
                reading->server->receive(reading->client, line, answer);
            } catch (const std::exception&) {
                answer(responseOf(nullptr,
                                  Failure{RpcCode::internalError, "there is too little memory"}));
            }
    }
    const std::lock_guard<std::mutex> guard(reading->mutex);
    if (reading->server == nullptr) return;
    reading->server->sendOff(reading->client);
    reading->server->endWhenDone();
}

}  // namespace qorctl::serve

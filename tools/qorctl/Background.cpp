#include "Background.h"

#include <future>
#include <memory>

#include "Interrupt.h"

namespace qorctl {
namespace {

constexpr unsigned int sliceMs = 20;

}  // namespace

Background::~Background() {
    if (thread_.joinable()) thread_.join();
}

std::optional<CallNotes> Background::run(const std::function<void(CallNotes&)>& calls) {
    if (thread_.joinable()) return std::nullopt;  // Ctrl-C has left one behind
    auto task = std::make_shared<std::packaged_task<CallNotes()>>([calls] {
        CallNotes notes;
        calls(notes);
        return notes;
    });
    std::future<CallNotes> result = task->get_future();
    thread_ = std::thread([task] { (*task)(); });
    while (result.wait_for(std::chrono::milliseconds(sliceMs)) != std::future_status::ready)
        if (interrupt::isRequested()) return std::nullopt;
    thread_.join();
    return result.get();
}

}  // namespace qorctl

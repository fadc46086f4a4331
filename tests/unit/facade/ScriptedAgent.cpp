#include "ScriptedAgent.h"

#include <windows.h>

struct ScriptedAgent::State {
    Script script;
    mutable std::mutex mutex;
    std::vector<Cmd> requests;
    std::weak_ptr<Impl> impl;
    bool started = false;
    std::atomic<bool> ended{false};
};

namespace {

ScriptedAgent* current = nullptr;

}  // namespace

unsigned int __stdcall QorControlFacade::agentThread(void* share) {
    const std::unique_ptr<std::shared_ptr<Impl>> own(static_cast<std::shared_ptr<Impl>*>(share));
    ScriptedAgent::beforeRun();
    return ScriptedAgent::run(*own);
}

ScriptedAgent::ScriptedAgent() : state_(std::make_shared<State>()) {
    current = this;
}

ScriptedAgent::~ScriptedAgent() {
    current = nullptr;
}

ScriptedAgent::Script& ScriptedAgent::script() {
    return state_->script;
}

std::vector<ScriptedAgent::Cmd> ScriptedAgent::requests() const {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    return state_->requests;
}

void ScriptedAgent::forgetRequests() {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    state_->requests.clear();
}

std::shared_ptr<ScriptedAgent::Impl> ScriptedAgent::impl() const {
    for (;;) {
        {
            const std::lock_guard<std::mutex> guard(state_->mutex);
            if (state_->started) return state_->impl.lock();
        }
        Sleep(1);
    }
}

bool ScriptedAgent::hasEnded() const {
    return state_->ended;
}

void ScriptedAgent::beforeRun() {
    const std::shared_ptr<State> state = current->state_;
    state->script.beforeStart();
}

unsigned int ScriptedAgent::run(const std::shared_ptr<Impl>& impl) {
    const std::shared_ptr<State> state = current->state_;
    state->script.atStart(*impl);
    {
        const std::lock_guard<std::mutex> guard(state->mutex);
        state->impl = impl;
        state->started = true;
    }
    while (impl->agentRunning) {
        Cmd command;
        if (!impl->commandQueue.pop(command, 1)) continue;
        {
            const std::lock_guard<std::mutex> guard(state->mutex);
            state->requests.push_back(command);
        }
        state->script.onRequest(*impl, command);
    }
    state->script.atEnd(*impl);
    state->ended = true;
    return 0;
}

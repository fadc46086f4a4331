#include "ScriptedAgent.h"

#include <windows.h>

struct ScriptedAgent::State {
    Script script;
    mutable std::mutex mutex;
    std::vector<Cmd> requests;
    std::weak_ptr<Channel> channel;
    bool started = false;
    std::atomic<bool> ended{false};
};

namespace {

ScriptedAgent* current = nullptr;

}  // namespace

unsigned int __stdcall QorControlFacade::agentThread(void* share) {
    using Share = std::shared_ptr<channel::Channel>;
    const std::unique_ptr<Share> own(static_cast<Share*>(share));
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

std::shared_ptr<ScriptedAgent::Channel> ScriptedAgent::channel() const {
    for (;;) {
        {
            const std::lock_guard<std::mutex> guard(state_->mutex);
            if (state_->started) return state_->channel.lock();
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

unsigned int ScriptedAgent::run(const std::shared_ptr<Channel>& channel) {
    const std::shared_ptr<State> state = current->state_;
    state->script.atStart(*channel);
    {
        const std::lock_guard<std::mutex> guard(state->mutex);
        state->channel = channel;
        state->started = true;
    }
    while (channel->agent.mayGoOn() && !state->script.endsByItself) {
        Cmd command;
        if (!channel->commandQueue.pop(command, 1)) {
            channel->backlog.noteEmpty();
            continue;
        }
        {
            const std::lock_guard<std::mutex> guard(state->mutex);
            state->requests.push_back(command);
        }
        if (command.replyQueue != nullptr)
            command.replyQueue->notePresent(qorcontrol::Cause::agentBusy);
        state->script.onRequest(*channel, command);
    }
    state->script.atEnd(*channel);
    state->ended = true;
    return 0;
}

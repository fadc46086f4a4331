#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "client/IProcessStarter.h"

/// What the client wanted to start; `start` does what `onStart` says and starts nothing.
class FakeProcesses {
public:
    struct Start {
        std::string executable;
        std::string commandLine;
        unsigned int idleMs;
    };

    /// For the client's constructor.
    std::unique_ptr<IProcessStarter> starter() { return std::make_unique<Starter>(*this); }

    std::vector<Start> starts;
    std::function<bool()> onStart = [] { return true; };
    std::function<void()> onIdle = [] {};

private:
    class Starter final : public IProcessStarter {
    public:
        explicit Starter(FakeProcesses& processes) : processes_(processes) {}
        bool start(const std::string& executable, const std::string& commandLine) override {
            processes_.starts.push_back({executable, commandLine, 0});
            return processes_.onStart();
        }
        void awaitIdle(unsigned int idleMs) override {
            processes_.starts.back().idleMs = idleMs;
            processes_.onIdle();
        }

    private:
        FakeProcesses& processes_;
    };
};

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "wire/Record.h"

namespace barepeer {

/// How records get to the host.
class Way {
public:
    virtual ~Way() = default;
    /// True: the host has acknowledged it already.
    virtual bool send(const simulator::Record& record) = 0;
    /// Tells the host that its request was taken.
    virtual void acknowledge(const simulator::Record& request) = 0;
};

/// What a bare QOR says, over whatever way. What is long was written before anybody asks for it.
class Conversation {
public:
    /// `window` values are pushed without waiting to be told.
    Conversation(Way& way, int window);

    void handle(const simulator::Record& record);

    void pushDue();
    /// How long there is nothing to push unless something is received; a second at most.
    double idleUs() const;

private:
    /// When to push how many values.
    struct Plan {
        int window = 0;
        int burst = 0;
        double periodUs = 0;
        double nextUs = 0;

        bool isPaced() const { return window == 0 && periodUs > 0; }
        int take(int unacknowledged);
    };

    void countReply();
    void describe(const simulator::Record& record);
    void control(const simulator::Record& record);
    void readTogether(const simulator::Record& record);
    void startPlan(const std::vector<double>& values);
    void answer(const simulator::Record& record, const std::string& payload);

    Way& way_;
    Plan plan_;
    const std::string threeArrays_;
    std::string togetherAsked_;
    std::string togetherAnswer_;
    int next_ = 0;
    int unacknowledged_ = 0;
    int acknowledgedValues_ = 0;
};

}  // namespace barepeer

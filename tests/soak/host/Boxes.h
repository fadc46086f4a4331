#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "QorControlFacade.h"
#include "Report.h"

namespace soak {

/// QOR's message boxes: on the screen, where a thread presses a button, answered by the library, or
/// put before the host.
class Boxes {
public:
    /// `caption`: of all boxes that this station's QOR shows.
    Boxes(Report& report, std::string caption);
    ~Boxes();
    Boxes(const Boxes&) = delete;
    Boxes& operator=(const Boxes&) = delete;

    /// Before a facade works: which of the three ways.
    void begin(const QorControlFacade& qor, unsigned way);
    /// Before the facade goes.
    void end();

    unsigned pressed() const { return pressed_; }
    unsigned told() const { return told_; }

private:
    void watch();
    void pressOnScreen();
    void lookAtTold();

    Report& report_;
    const std::string caption_;
    Lock lock_;
    const QorControlFacade* qor_ = nullptr;  // guarded by lock_
    bool asks_ = false;
    unsigned last_ = 0;
    std::atomic<unsigned> pressed_{0}, told_{0};
    std::atomic<bool> ends_{false};
    std::thread thread_;
};

}  // namespace soak

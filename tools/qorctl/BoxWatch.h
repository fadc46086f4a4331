#pragma once

#include <atomic>
#include <deque>
#include <string>
#include <thread>

#include "BoxAnswers.h"
#include "ConsoleLog.h"
#include "qorcontrol/MessageBoxes.h"

namespace qorctl {

/// Tells of QOR's message boxes in the log, each when it opens and when it is closed, and answers
/// them where that is wanted; from a thread of its own, for while a box is open the calls of the
/// others stand still.
class BoxWatch {
public:
    /// Begins; facade and log must outlive it.
    BoxWatch(const QorControlFacade& facade, const ConsoleLog& log, BoxAnswers answers);
    /// Ends it, with a last look.
    ~BoxWatch();
    BoxWatch(const BoxWatch&) = delete;
    BoxWatch& operator=(const BoxWatch&) = delete;

    /// Tells what is still to be told, and looks no more.
    void end();

private:
    void run();
    void look();
    void take(const qorcontrol::QorBox& box);
    void lookAtOpenOnes();

    const QorControlFacade& facade_;
    const ConsoleLog& log_;
    const BoxAnswers answers_;
    // Of the one thread that looks.
    unsigned int lastNumber_ = 0;
    std::deque<unsigned int> open_;  // the numbers of those whose end is still to be told
    std::atomic<bool> ended_{false};
    std::thread thread_;  // last: it uses everything above
};

/// Whether a box waits for somebody.
bool isBoxOpen(const QorControlFacade& facade);

/// One line: no line breaks, and of a long text the beginning.
std::string shownOnOneLine(const std::string& text);

}  // namespace qorctl

#include "BoxWatch.h"

#include <windows.h>

#include <fmt/format.h>

#include <utility>

namespace qorctl {
namespace {

using qorcontrol::BoxPolicy;
using qorcontrol::QorBox;

constexpr unsigned int lookMs = 20;
// A box is answered within `lookMs`; this is for a machine that is held up.
constexpr unsigned int askMs = 60000;
constexpr std::size_t maxShownChars = 500;

std::string titleOf(const QorBox& box) {
    return fmt::format("BOX {} \"{}\": \"{}\" [{}]", box.number, shownOnOneLine(box.caption),
                       shownOnOneLine(box.text), buttonNames(box.type));
}

}  // namespace

std::string shownOnOneLine(const std::string& text) {
    std::string line;
    for (const char character : text) {
        if (line.size() >= maxShownChars) return line + "...";
        const bool isBreak = character == '\r' || character == '\n' || character == '\t';
        if (!isBreak)
            line += character;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    }
    return line;
}

bool isBoxOpen(const QorControlFacade& facade) {
    QorBox box;
    for (unsigned int last = 0; qorcontrol::nextBox(facade, last, box); last = box.number)
        if (box.isOpen) return true;
    return false;
}

BoxWatch::BoxWatch(const QorControlFacade& facade, const ConsoleLog& log, BoxAnswers answers)
    : facade_(facade), log_(log), answers_(std::move(answers)) {
    if (answers_.areGiven())
        qorcontrol::setBoxPolicy(facade_, BoxPolicy::ask, answers_.choiceFor(MB_OK), askMs);
    else
        qorcontrol::setBoxPolicy(facade_, BoxPolicy::show);
    thread_ = std::thread([this] { run(); });
}

BoxWatch::~BoxWatch() {
    end();
}

void BoxWatch::end() {
    ended_ = true;
    if (!thread_.joinable()) return;
    thread_.join();
    look();
}

void BoxWatch::run() {
    while (!ended_) {
        look();
        Sleep(lookMs);
    }
}

void BoxWatch::look() {
    lookAtOpenOnes();
    QorBox box;
    while (qorcontrol::nextBox(facade_, lastNumber_, box)) {
        lastNumber_ = box.number;
        take(box);
    }
}

void BoxWatch::take(const QorBox& box) {
    if (answers_.areGiven())
        qorcontrol::answerBox(facade_, box.number, answers_.choiceFor(box.type));
    else if (box.isOpen)
        log_.info("%s", (titleOf(box) + " is open, QOR waits for somebody to close it").c_str());
    open_.push_back(box.number);
    lookAtOpenOnes();
}

void BoxWatch::lookAtOpenOnes() {
    QorBox box;
    std::deque<unsigned int> still;
    for (const unsigned int number : open_) {
        if (!qorcontrol::nextBox(facade_, number - 1, box) || box.number != number) continue;
        if (box.isOpen)
            still.push_back(number);
        else
            log_.info("%s", fmt::format("{} was closed with {} after {:.1f} s", titleOf(box),
                                        buttonName(box.choice), box.openMs / 1000.0)
                                .c_str());
    }
    open_ = std::move(still);
}

}  // namespace qorctl

#include "Boxes.h"

#include "qorcontrol/MessageBoxes.h"

namespace soak {

namespace {

constexpr unsigned lookMs = 20;
constexpr unsigned askMs = 150;

}  // namespace

Boxes::Boxes(Report& report, std::string caption)
    : report_(report), caption_(std::move(caption)), thread_([this] { watch(); }) {}

Boxes::~Boxes() {
    ends_ = true;
    thread_.join();
}

void Boxes::begin(const QorControlFacade& qor, unsigned way) {
    using qorcontrol::BoxPolicy;
    constexpr BoxPolicy policies[] = {BoxPolicy::show, BoxPolicy::answer, BoxPolicy::ask};
    const BoxPolicy policy = policies[way % 3];
    const bool isShown = policy == BoxPolicy::show;
    qorcontrol::setBoxPolicy(qor, policy, isShown ? 0 : IDOK, isShown ? 0 : askMs);
    const Inside inside(lock_);
    qor_ = &qor;
    asks_ = policy == BoxPolicy::ask;
    last_ = 0;
}

void Boxes::end() {
    const Inside inside(lock_);
    qor_ = nullptr;
}

void Boxes::watch() {
    while (!ends_) {
        pressOnScreen();
        {
            const Inside inside(lock_);
            if (qor_ != nullptr) lookAtTold();
        }
        Sleep(lookMs);
    }
}

void Boxes::pressOnScreen() {
    HWND const box = FindWindowA("#32770", caption_.c_str());
    if (box != nullptr && PostMessageA(box, WM_COMMAND, IDOK, 0)) {
        ++pressed_;
        Sleep(lookMs);
    }
}

void Boxes::lookAtTold() {
    qorcontrol::QorBox box;
    while (qorcontrol::nextBox(*qor_, last_, box)) {
        if (box.isOpen) {
            // Every other one is left to the choice that counts when nobody answers.
            if (asks_ && box.number % 2 == 0) qorcontrol::answerBox(*qor_, box.number, IDCANCEL);
            return;
        }
        last_ = box.number;
        ++told_;
        if (box.caption != caption_ || box.text != "Is it all right?" || box.choice == 0)
            report_.breach("boxes", "a wrong box: " + box.caption + ": " + box.text);
    }
}

}  // namespace soak

#include "guide/MessageBoxes.h"

#include <windows.h>

#include "qorcontrol/MessageBoxes.h"

namespace guide {

// [MessageBoxes]
// For a station without an operator: says "no" to what asks yes or no, and "ok" to all else. Call
// it every 100 ms or so, from another thread than those that wait for QOR, with what it returned
// the last time (at first 0). Behind the facade's constructor stood: qorcontrol::setBoxPolicy(qor,
// qorcontrol::BoxPolicy::ask, IDCANCEL, 10000);
unsigned int answerBoxes(const QorControlFacade& qor, const EolLog& log, unsigned int last) {
    qorcontrol::QorBox box;
    while (qorcontrol::nextBox(qor, last, box)) {
        last = box.number;
        const unsigned int kind = box.type & MB_TYPEMASK;
        const bool hasNo = kind == MB_YESNO || kind == MB_YESNOCANCEL;
        const unsigned int choice = hasNo ? IDNO : IDOK;
        if (qorcontrol::answerBox(qor, box.number, choice))
            log.info("BOX '%s': '%s' answered with %u", box.caption.c_str(), box.text.c_str(),
                     choice);
    }
    return last;
}
// [/MessageBoxes]

}  // namespace guide

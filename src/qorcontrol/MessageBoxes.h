#pragma once

#include <string>

// By its bare name, which is how hosts have it on their path.
#include <QorControlFacade.h>

#include "qorcontrol/Export.h"

/// What QOR wants asked of the operator. A host that never calls these functions has each box on
/// the screen, where QOR's work, and so nearly every operation, stands still until somebody presses
/// a button. Any thread may call them, at any time; they ask nobody, and change nothing of
/// `lastOutcome`. None but std::bad_alloc leaves them.
namespace qorcontrol {

enum class BoxPolicy : int {
    show = 0,    ///< on the screen, which is how it begins
    answer = 1,  ///< answered with a given choice without being shown
    ask = 2      ///< put before the host, see `answerBox`
};

/// One of QOR's message boxes. (Not "MessageBox", which is a macro of the system's.)
struct QorBox {
    unsigned int number = 0;  ///< counts up from 1
    unsigned int type = 0;    ///< the system's style: MB_YESNO, MB_DEFBUTTON2 ...
    unsigned int choice = 0;  ///< the system's number of the button, IDOK ...; 0 while it is open
    unsigned int openMs = 0;  ///< so long it stood open, or has stood open by now
    bool isOpen = false;      ///< whether it still waits for somebody
    std::string caption;
    std::string text;
};

/// For the boxes that come from now on, which are also kept from now on for `nextBox`: call it
/// right behind the facade's constructor, with `show` if boxes shall only be told of.
/// @param choice  of `answer`; of `ask` what counts when the host does not answer within `askMs`,
/// or
///                goes. One of the system's numbers, IDOK (1) to IDCONTINUE (11). `show` needs
///                none.
/// @return false for a choice that is no button's, and then nothing has changed.
QOR_API bool setBoxPolicy(const QorControlFacade& facade, BoxPolicy policy, unsigned int choice = 0,
                          unsigned int askMs = 0);

/// The oldest box that is kept of those whose number is above `after`; 0 begins with the oldest of
/// all. To look at one again pass its number less one. The latest hundred are kept, with texts of
/// at most 1 MiB in all.
/// @return false if there is none, and then `box` is what it was.
QOR_API bool nextBox(const QorControlFacade& facade, unsigned int after, QorBox& box);

/// The host's answer to a box of the policy `ask`. False if that box does not wait for one any
/// more, or if the choice is no button's.
QOR_API bool answerBox(const QorControlFacade& facade, unsigned int number, unsigned int choice);

static_assert(sizeof(void*) != 4 || sizeof(QorBox) == 68,
              "the library was built with another compiler, standard library or packing");

}  // namespace qorcontrol

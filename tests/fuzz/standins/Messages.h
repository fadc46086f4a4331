#pragma once

#include <windows.h>

#include <functional>

/// The one window of the library's, and what arrives for it.
namespace messages {

/// As the system dispatches one: through the window's map. The result goes back to the sender.
LRESULT deliver(COPYDATASTRUCT* record);

/// What happens whenever the library dispatches its messages; null: nothing comes.
extern std::function<void()> onPump;

}  // namespace messages

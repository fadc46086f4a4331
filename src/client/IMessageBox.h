#pragma once

#include <string>

/// Shows a message box on QOR's behalf and returns the button that was chosen.
class IMessageBox {
public:
    virtual ~IMessageBox() = default;

    /// `type` is the system's style value. Blocks the calling thread until the box is closed.
    virtual unsigned int show(const std::string& text, const std::string& caption,
                              unsigned int type) = 0;
};

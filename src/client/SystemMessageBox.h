#pragma once

#include "client/IMessageBox.h"

/// The system's message box, owned by the main window of the calling thread's framework
/// application if it has one, otherwise by whatever window is in the foreground.
class SystemMessageBox final : public IMessageBox {
public:
    unsigned int show(const std::string& text, const std::string& caption,
                      unsigned int type) override;
};

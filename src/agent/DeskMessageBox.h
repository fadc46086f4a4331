#pragma once

#include <memory>
#include <utility>

#include "client/IMessageBox.h"
#include "facade/channel/Channel.h"

/// Puts QOR's message boxes before the host as it wants them; see channel::MessageBoxDesk.
class DeskMessageBox final : public IMessageBox {
public:
    /// `screen` shows a box for the user.
    DeskMessageBox(std::shared_ptr<channel::Channel> shared, std::unique_ptr<IMessageBox> screen)
        : channel_(std::move(shared)), screen_(std::move(screen)) {}

    unsigned int show(const std::string& text, const std::string& caption,
                      unsigned int type) override {
        return channel_->messageBoxes.present(text, caption, type,
                                              [&] { return screen_->show(text, caption, type); });
    }

private:
    const std::shared_ptr<channel::Channel> channel_;
    const std::unique_ptr<IMessageBox> screen_;
};

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "client/IMessageBox.h"

/// A message box on which the test presses the button: `choice` is called while it is open.
class FakeMessageBox final : public IMessageBox {
public:
    using Choice = std::function<unsigned int(const std::string& text, const std::string& caption,
                                              unsigned int type)>;

    explicit FakeMessageBox(const Choice& choice) : choice_(choice) {}

    unsigned int show(const std::string& text, const std::string& caption,
                      unsigned int type) override {
        return choice_(text, caption, type);
    }

private:
    const Choice& choice_;  // the test's own, which may change it
};

#pragma once

#include "framework/Window.h"

class ExternalCommandFactory;

/// The hidden top-level window to which QOR sends its commands, found by its title.
class ExternalOperatingWnd : public CWnd {
    DECLARE_MESSAGE_MAP()

    /// `factory` must outlive the window.
    explicit ExternalOperatingWnd(ExternalCommandFactory& factory) : factory_(factory) {}
    ~ExternalOperatingWnd() override = default;

    /// Creates the window, never visible, on the calling thread; false if the system refuses.
    bool create(const char* title);

    BOOL OnCopyData(CWnd* sender, COPYDATASTRUCT* record);

    // For a framework that shows modal windows: here a box of QOR's is the system's own, which
    // disables its owner by itself.
    void BeginModalState() override;
    void EndModalState() override;

private:
    ExternalCommandFactory& factory_;
};

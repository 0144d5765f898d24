// How a toolkit control finds whom to tell about itself and where to give
// the keyboard back. Every toolkit control carries one owner link; its kind
// says what sort of place the control sits in:
//
//   kind  notifies by default             gives the focus back to
//   0     the application's main window   nobody
//   1     the application's main window   the active view of the owning frame
//   2     the application's main window   the active view, found through the palette
//   3     its parent window               nobody
//   4     the application's main window   the active view, found through the palette
//   5     its parent window               the active view, found through the palette
//
// Kinds 2 and 5 also mean the control sits on a palette page and shows its
// tool tips through the page's tool tip control.
#pragma once

#include <windows.h>

#include "framework/win32/Window.h"

namespace gallery {

// The control on whose behalf a notification is running, or null. It is a
// window rather than a CTPCtrlWnd because controls that only carry an owner
// link notify through it too.
framework::win32::Window* GetNotifyingControl();

// What a palette page offers the controls on it: its tool tip control.
class ToolTipSite {
public:
    virtual ~ToolTipSite() = default;
    // The tool tip control's window, or null when it has none.
    virtual HWND ToolTipWindow() const = 0;
    // Registers a tool `id` for `rect`, in the page's client coordinates.
    virtual void RegisterTool(UINT id, const RECT& rect) = 0;
};

// What a frame offers: the view that has the keyboard.
class ActiveViewSite {
public:
    virtual ~ActiveViewSite() = default;
    virtual framework::win32::Window* GetActiveView() const = 0;
};

// What a palette's tab strip tells a control on one of its pages.
class TabStripSite {
public:
    virtual ~TabStripSite() = default;
    virtual bool IsFloatingMode() const = 0;
};

// What an in-place docked palette tells: the frame it belongs to.
class DockedPaletteSite {
public:
    virtual ~DockedPaletteSite() = default;
    virtual HWND NamedFrame() const = 0;
};

class OwnerLink {
public:
    explicit OwnerLink(int ownerKind) : ownerKind_(ownerKind) {}

    int OwnerKind() const { return ownerKind_; }
    // The control itself; set by the most derived constructor.
    void SetWindow(framework::win32::Window* window) { window_ = window; }
    framework::win32::Window* GetWindow() const { return window_; }

    // Sends command `id` with `code` to `target` (or the kind's default
    // target) at once, through its command route, with the control marked as
    // the notifying one for the duration. Nothing happens when there is no
    // target to send to.
    void NotifyOwner(framework::win32::CommandTarget* target, UINT id, int code) const;
    // Posts WM_COMMAND (id, code) with the control's handle to `target` (or
    // the kind's default target).
    void PostNotifyOwner(framework::win32::Window* target, UINT id, int code) const;
    void ReturnFocus() const;
    framework::win32::Window* FindActiveView() const;

    bool NotifiesParent() const { return ownerKind_ == 3 || ownerKind_ == 5; }
    bool SitsOnPalettePage() const { return ownerKind_ == 2 || ownerKind_ == 5; }

private:
    framework::win32::Window* DefaultTarget() const;

    int ownerKind_;
    framework::win32::Window* window_ = nullptr;
};

}  // namespace gallery

#include "gallery/OwnerLink.h"

#include "framework/win32/Application.h"

namespace gallery {

using framework::win32::Window;

namespace {

// The control whose notification is running on this thread. A notification
// runs on the thread of the windows that send it, so each user-interface
// thread has its own.
thread_local Window* g_notifyingControl = nullptr;

// Sets the notifying control for one notification and puts the previous one
// back afterwards, so that nested notifications unwind properly.
class NotifyingBracket {
public:
    explicit NotifyingBracket(Window* control) : saved_(g_notifyingControl) { g_notifyingControl = control; }
    ~NotifyingBracket() { g_notifyingControl = saved_; }
    NotifyingBracket(const NotifyingBracket&) = delete;
    NotifyingBracket& operator=(const NotifyingBracket&) = delete;

private:
    Window* saved_;
};

HWND ParentOf(HWND hwnd) {
    return hwnd != nullptr ? ::GetParent(hwnd) : nullptr;
}

// The frame's active view, when the frame window is one of ours and has one.
Window* ActiveViewOf(HWND frame) {
    auto* site = dynamic_cast<ActiveViewSite*>(Window::FromHandle(frame));
    return site != nullptr ? site->GetActiveView() : nullptr;
}

// The owner window of `hwnd` when it has one, else its parent.
HWND OwnerOrParent(HWND hwnd) {
    if (hwnd == nullptr) return nullptr;
    HWND owner = ::GetWindow(hwnd, GW_OWNER);
    return owner != nullptr ? owner : ::GetParent(hwnd);
}

// The nearest ancestor that is a frame with an active view.
HWND ParentFrame(HWND hwnd) {
    for (HWND up = ParentOf(hwnd); up != nullptr; up = ::GetParent(up))
        if (dynamic_cast<ActiveViewSite*>(Window::FromHandle(up)) != nullptr) return up;
    return nullptr;
}

}  // namespace

Window* GetNotifyingControl() {
    return g_notifyingControl;
}

Window* OwnerLink::DefaultTarget() const {
    if (NotifiesParent()) {
        HWND self = window_ != nullptr ? window_->Handle() : nullptr;
        return Window::FromHandle(ParentOf(self));
    }
    return framework::win32::MainWindow();
}

void OwnerLink::NotifyOwner(framework::win32::CommandTarget* target, UINT id, int code) const {
    if (target == nullptr) target = DefaultTarget();
    // With no main window, or a parent that is not one of our windows, there
    // is nobody to tell.
    if (target == nullptr) return;
    NotifyingBracket bracket(window_);
    target->OnCmdMsg(id, code, nullptr, nullptr);
}

void OwnerLink::PostNotifyOwner(Window* target, UINT id, int code) const {
    if (target == nullptr) target = DefaultTarget();
    if (target == nullptr || target->Handle() == nullptr) return;
    NotifyingBracket bracket(window_);
    ::PostMessageA(target->Handle(), WM_COMMAND, MAKEWPARAM(id, static_cast<WORD>(code)),
                   reinterpret_cast<LPARAM>(window_ != nullptr ? window_->Handle() : nullptr));
}

void OwnerLink::ReturnFocus() const {
    if (ownerKind_ != 1 && ownerKind_ != 2 && ownerKind_ != 4 && ownerKind_ != 5) return;
    Window* view = FindActiveView();
    if (view != nullptr && ::IsWindow(view->Handle())) ::SetFocus(view->Handle());
}

Window* OwnerLink::FindActiveView() const {
    if (ownerKind_ == 0 || window_ == nullptr) return nullptr;
    const HWND self = window_->Handle();
    const HWND parent = ParentOf(self);
    switch (ownerKind_) {
        case 2:
        case 4:
        case 5: {
            // The control sits on a page, the page on a tab strip.
            const HWND strip = ParentOf(parent);
            auto* stripSite = dynamic_cast<TabStripSite*>(Window::FromHandle(strip));
            if (stripSite == nullptr || !stripSite->IsFloatingMode()) {
                const HWND holder = ParentOf(strip);
                if (auto* docked = dynamic_cast<DockedPaletteSite*>(Window::FromHandle(holder)))
                    return ActiveViewOf(docked->NamedFrame());
                return ActiveViewOf(ParentFrame(holder));
            }
            // Floating: three levels up is the palette window, owned by the frame.
            return ActiveViewOf(OwnerOrParent(ParentOf(ParentOf(ParentOf(self)))));
        }
        case 1: return ActiveViewOf(OwnerOrParent(parent));
        default: return ActiveViewOf(OwnerOrParent(ParentOf(parent)));
    }
}

}  // namespace gallery

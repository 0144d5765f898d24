// A per-thread filter that offers the keyboard and mouse messages of a
// control's own windows to the control before they are dispatched, whatever
// message loop the host runs. Hosts that call
// IOleInPlaceActiveObject::TranslateAccelerator offer keys a second time;
// WasOfferedByMessageFilter lets the control recognise those.
//
// A WH_GETMESSAGE hook sees each message as GetMessage or PeekMessage with
// PM_REMOVE takes it from the queue; a message that the control handles is
// turned into WM_NULL, so the host's dispatch does nothing with it. A
// WH_CALLWNDPROC hook watches the focus: when WM_SETFOCUS or WM_KILLFOCUS
// shows it crossing the edge of a registered window's tree, that window
// hears of it. The hooks exist only while a registered window does.
#pragma once

#include <windows.h>

namespace framework::ole {

class FilteredWindow {
public:
    // The window whose messages, and whose descendants' messages, are offered.
    virtual HWND FilterRoot() const = 0;
    // True when the message has been handled and must not be dispatched.
    virtual bool FilterMessage(MSG* msg) = 0;
    // The focus is moving into or out of the root's tree. Called from inside
    // the focus change, so it should only take note (post itself a message).
    virtual void OnFilteredFocusChange() {}

protected:
    ~FilteredWindow() = default;
};

// Registers `window` on the calling thread; the hook is made for the first.
void AddToMessageFilter(FilteredWindow* window);
// Unregisters it; the hook goes with the last one.
void RemoveFromMessageFilter(FilteredWindow* window);
// Whether the filter is active on the calling thread.
bool IsMessageFilterInstalled();
// Whether `msg` is the message that the filter offered last on this thread.
bool WasOfferedByMessageFilter(const MSG& msg);

}  // namespace framework::ole

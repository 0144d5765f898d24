// Input for the script mode as a user makes it: mouse and key messages
// posted to the window under the pointer or with the focus, and then given
// out by a message loop, so that the per-thread hooks of the hosted control
// see them exactly as they see the user's.
#pragma once

#include <windows.h>

namespace host {

// Gives every waiting message to the hooks and the window procedures, as a
// host's loop would. Keys are not translated: the control's filter sees
// them before dispatch, and no WM_SYSCHAR may open the container's menus.
void Pump();
// Pumps for `milliseconds`, sleeping while nothing waits.
void PumpFor(DWORD milliseconds);

// A left click at `point` (client coordinates of `window`): the pointer is
// moved there first, since a posted message carries the pointer's screen
// position, then button down and up are posted and pumped.
void Click(HWND window, POINT point);
// Down, up, double click, up at `point`, as the system reports a double click.
void DoubleClick(HWND window, POINT point);
// Key down and up of virtual key `code` posted to `target`; with `alt`, as
// WM_SYSKEYDOWN and WM_SYSKEYUP with the context bit set.
void PressKey(HWND target, UINT code, bool alt);

}  // namespace host

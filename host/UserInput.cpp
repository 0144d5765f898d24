#include "host/UserInput.h"

namespace host {

namespace {

void PostMouse(HWND window, POINT point, UINT message, WPARAM keys) {
    ::PostMessageA(window, message, keys, MAKELPARAM(point.x, point.y));
}

void MovePointer(HWND window, POINT point) {
    ::ClientToScreen(window, &point);
    ::SetCursorPos(point.x, point.y);
}

}  // namespace

void Pump() {
    MSG msg;
    while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(msg.wParam));
            return;
        }
        ::DispatchMessageA(&msg);
    }
}

void PumpFor(DWORD milliseconds) {
    const ULONGLONG end = ::GetTickCount64() + milliseconds;
    for (;;) {
        Pump();
        const ULONGLONG now = ::GetTickCount64();
        if (now >= end) break;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
    }
}

void Click(HWND window, POINT point) {
    MovePointer(window, point);
    PostMouse(window, point, WM_LBUTTONDOWN, MK_LBUTTON);
    PostMouse(window, point, WM_LBUTTONUP, 0);
    Pump();
}

void DoubleClick(HWND window, POINT point) {
    MovePointer(window, point);
    PostMouse(window, point, WM_LBUTTONDOWN, MK_LBUTTON);
    PostMouse(window, point, WM_LBUTTONUP, 0);
    PostMouse(window, point, WM_LBUTTONDBLCLK, MK_LBUTTON);
    PostMouse(window, point, WM_LBUTTONUP, 0);
    Pump();
}

void PressKey(HWND target, UINT code, bool alt) {
    const UINT scan = ::MapVirtualKeyA(code, MAPVK_VK_TO_VSC);
    LPARAM down = 1 | static_cast<LPARAM>(scan << 16);
    if (alt) down |= static_cast<LPARAM>(1) << 29;
    const LPARAM up = down | (static_cast<LPARAM>(3) << 30);
    ::PostMessageA(target, alt ? WM_SYSKEYDOWN : WM_KEYDOWN, code, down);
    ::PostMessageA(target, alt ? WM_SYSKEYUP : WM_KEYUP, code, up);
    Pump();
}

}  // namespace host

#include "framework/win32/Application.h"

#include <cstdio>

#include "framework/win32/Window.h"

namespace framework::win32 {

namespace {
// Each user-interface thread has its own main window, as it has its own
// windows and message loop.
thread_local Window* g_mainWindow = nullptr;

WindowExceptionReporter& Reporter() {
    static WindowExceptionReporter reporter;
    return reporter;
}
}  // namespace

Window* MainWindow() {
    return g_mainWindow;
}

void SetMainWindow(Window* window) {
    g_mainWindow = window;
}

bool PreTranslateThroughParents(MSG* msg) {
    for (HWND hwnd = msg->hwnd; hwnd != nullptr; hwnd = ::GetParent(hwnd)) {
        Window* window = Window::FromHandle(hwnd);
        if (window != nullptr && window->PreTranslateMessage(msg)) return true;
    }
    return false;
}

bool PumpMessage() {
    MSG msg;
    if (::GetMessageA(&msg, nullptr, 0, 0) <= 0) return false;
    if (!PreTranslateThroughParents(&msg)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageA(&msg);
    }
    return true;
}

int RunMessageLoop() {
    MSG msg = {};
    while (::GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (!PreTranslateThroughParents(&msg)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageA(&msg);
        }
    }
    return static_cast<int>(msg.wParam);
}

void PumpWaitingMessages() {
    MSG msg;
    while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(msg.wParam));
            return;
        }
        if (!PreTranslateThroughParents(&msg)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageA(&msg);
        }
    }
}

void SetWindowExceptionReporter(WindowExceptionReporter reporter) {
    Reporter() = std::move(reporter);
}

void ReportWindowException(HWND hwnd, UINT message) {
    try {
        if (Reporter()) {
            Reporter()(hwnd, message);
            return;
        }
        char text[96];
        std::snprintf(text, sizeof text, "exception in window %p, message 0x%04X\n", static_cast<void*>(hwnd),
                      message);
        ::OutputDebugStringA(text);
    } catch (...) {
        // A reporter must not let anything escape the window procedure either.
    }
}

}  // namespace framework::win32

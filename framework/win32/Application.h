// Process-wide pieces of the window framework: the application's main
// window, the message loop with its PreTranslateMessage walk, and where
// exceptions caught at window procedures are reported.
#pragma once

#include <windows.h>

#include <functional>

namespace framework::win32 {

class Window;

// The application's main window, the default target of controls whose owner
// is "the main window of the application"; null when there is none. Kept per
// thread: a program with several user-interface threads sets one on each.
Window* MainWindow();
void SetMainWindow(Window* window);

// Offers `msg` to the PreTranslateMessage of each framework window from the
// message's own window up through its parents; true when one took it.
bool PreTranslateThroughParents(MSG* msg);

// Gets, pre-translates and dispatches one message; false on WM_QUIT.
bool PumpMessage();
// Runs until WM_QUIT; returns its exit code.
int RunMessageLoop();
// Dispatches every message already waiting, without blocking.
void PumpWaitingMessages();

// Receives each exception caught at a window procedure. The default reporter
// writes a line to the debugger output.
using WindowExceptionReporter = std::function<void(HWND hwnd, UINT message)>;
void SetWindowExceptionReporter(WindowExceptionReporter reporter);
void ReportWindowException(HWND hwnd, UINT message);

}  // namespace framework::win32

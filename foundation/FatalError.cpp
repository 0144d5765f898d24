#include "foundation/FatalError.h"

#include <windows.h>

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace foundation {

namespace {

// How deep this thread is in fatal errors: a fatal error while reporting one
// is told apart, on each thread by itself.
thread_local int g_depth = 0;

void SystemOutputDebugString(const char* text) {
    ::OutputDebugStringA(text);
}

void SystemReleaseCapture() {
    ::ReleaseCapture();
}

int SystemMessageBox(const char* text, unsigned type) {
    return ::MessageBoxA(nullptr, text, nullptr, type);
}

void SystemDebugBreak() {
    ::DebugBreak();
}

void SystemAbort() {
    std::abort();
}

void SystemFatalAppExit(const char* text) {
    ::FatalAppExitA(0, text);
}

FatalErrorActions g_actions = DefaultFatalErrorActions();

FatalErrorActions WithDefaults(const FatalErrorActions& actions) {
    const FatalErrorActions system = DefaultFatalErrorActions();
    FatalErrorActions result = actions;
    if (result.outputDebugString == nullptr) result.outputDebugString = system.outputDebugString;
    if (result.releaseCapture == nullptr) result.releaseCapture = system.releaseCapture;
    if (result.messageBox == nullptr) result.messageBox = system.messageBox;
    if (result.debugBreak == nullptr) result.debugBreak = system.debugBreak;
    if (result.abort == nullptr) result.abort = system.abort;
    if (result.fatalAppExit == nullptr) result.fatalAppExit = system.fatalAppExit;
    return result;
}

}  // namespace

FatalErrorActions DefaultFatalErrorActions() {
    return FatalErrorActions{&SystemOutputDebugString, &SystemReleaseCapture, &SystemMessageBox,
                             &SystemDebugBreak,        &SystemAbort,          &SystemFatalAppExit};
}

FatalErrorActions SetFatalErrorActions(const FatalErrorActions& actions) {
    const FatalErrorActions previous = g_actions;
    g_actions = WithDefaults(actions);
    return previous;
}

int FatalErrorDepth() {
    return g_depth;
}

void FatalError(const char* format, ...) {
    // Room for wvsprintfA's longest output, the line feed and the terminator.
    char message[kFatalErrorMessageMax + 2] = {};
    if (format != nullptr) {
        va_list arguments;
        va_start(arguments, format);
        ::wvsprintfA(message, format, arguments);
        va_end(arguments);
    }
    // The text as written, not the count returned: a cut text may be counted
    // as the full 1024 characters it did not get.
    message[kFatalErrorMessageMax] = '\0';
    const std::size_t length = std::strlen(message);
    message[length] = '\n';
    message[length + 1] = '\0';

    const int entry = g_depth;
    g_depth = entry < INT_MAX ? entry + 1 : entry;
    if (entry == 0) {
        g_actions.outputDebugString(message);
        g_actions.releaseCapture();
        const int answer = g_actions.messageBox(message, kFatalErrorBoxType);
        if (answer == IDRETRY)
            g_actions.debugBreak();
        else if (answer != IDIGNORE)
            g_actions.abort();
        --g_depth;
        return;
    }

    // Each case falls through to the next stage down.
    switch (entry) {
        case 1: g_actions.releaseCapture(); [[fallthrough]];
        case 2:
            g_depth = 3;
            g_actions.outputDebugString(kFatalWithinFatalText);
            [[fallthrough]];
        case 3:
            g_depth = 4;
            g_actions.debugBreak();
            [[fallthrough]];
        case 4:
            g_depth = 5;
            g_actions.abort();
            [[fallthrough]];
        default:
            g_depth = entry > 5 ? (entry < INT_MAX ? entry + 1 : entry) : 6;
            g_actions.fatalAppExit(kFatalWithinFatalText);
    }
    // Only a replaced action comes back; the caller's own stage then goes on
    // as if this call had not been made.
    g_depth = entry;
}

}  // namespace foundation

// The last resort of the control: a fault that nothing else can handle is
// shown in a stop box with Abort, Retry and Ignore. A fault inside that
// handling must not loop, so each nested entry goes one stage further down
// to termination:
//
//   depth 0   debugger output, ReleaseCapture, the box; Retry breaks into the
//             debugger, Ignore goes on, anything else aborts; then returns
//   depth 1   ReleaseCapture, then as depth 2
//   depth 2   "Fatal within Fatal\n" to the debugger, then as depth 3
//   depth 3   DebugBreak, then as depth 4
//   depth 4   abort, then as depth 5
//   depth 5+  FatalAppExitA with "Fatal within Fatal\n"
//
// Each stage first stores the depth it hands on to, so that a fault during
// it enters the next stage. The depth counts the nesting on the calling
// thread: a first fatal error on a second user-interface thread shows its
// box as the first one did.
#pragma once

#include "foundation/ReportError.h"

namespace foundation {

inline constexpr char kFatalWithinFatalText[] = "Fatal within Fatal\n";
// MB_ABORTRETRYIGNORE | MB_ICONHAND | MB_TASKMODAL | MB_SETFOREGROUND.
inline constexpr unsigned kFatalErrorBoxType = 0x12012;
// The longest message wvsprintfA writes.
inline constexpr int kFatalErrorMessageMax = 1024;

// What FatalError does to the process. Tests replace these so that they can
// answer the box and watch the stages without stopping or breaking.
struct FatalErrorActions {
    void (*outputDebugString)(const char* text);
    void (*releaseCapture)();
    // Shows `text` (no owner, no title) and returns the button: IDABORT,
    // IDRETRY or IDIGNORE, 0 on failure.
    int (*messageBox)(const char* text, unsigned type);
    void (*debugBreak)();
    // Ends the process as the framework's AfxAbort does.
    void (*abort)();
    void (*fatalAppExit)(const char* text);
};

// The system's actions: OutputDebugStringA, ReleaseCapture, MessageBoxA,
// DebugBreak, abort, FatalAppExitA.
FatalErrorActions DefaultFatalErrorActions();
// Installs `actions`, a null member standing for the system's action, and
// returns the ones it replaces.
FatalErrorActions SetFatalErrorActions(const FatalErrorActions& actions);

// Formats with wvsprintfA (at most kFatalErrorMessageMax characters),
// appends a line feed and acts by the depth of nesting. Returns only when
// the user chose Retry or Ignore, or when a replaced action returns; the
// depth is then what it was on entry.
LUMBREL_PRINTF_FORMAT(1, 2) void FatalError(const char* format, ...);

// How many calls of FatalError are under way (the depth counter).
int FatalErrorDepth();

}  // namespace foundation

// The one question the browser puts to the user: a drive that takes
// removable media has none in it. The answering function is replaceable, so
// that tests can answer in the user's place (and count the questions).
#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace browser {

// MB_RETRYCANCEL | MB_ICONEXCLAMATION.
constexpr UINT kDriveNotReadyStyle = 0x35;

// "<path>\ is not accessible", a blank line, "The device is not ready".
std::string DriveNotReadyText(const std::string& path);

// Answers `text` asked with message box style `style`; returns the button
// chosen (IDRETRY, IDCANCEL).
using DrivePromptHandler = std::function<int(const std::string& text, UINT style)>;

// Asks through the current handler. The default is a message box owned by
// the active window.
int AskDriveNotReady(const std::string& text, UINT style);

// Installs `handler` (an empty one restores the default) and returns the one
// it replaces.
DrivePromptHandler SetDrivePromptHandler(DrivePromptHandler handler);

class ScopedDrivePromptHandler {
public:
    explicit ScopedDrivePromptHandler(DrivePromptHandler handler)
        : previous_(SetDrivePromptHandler(std::move(handler))) {}
    ~ScopedDrivePromptHandler() { SetDrivePromptHandler(std::move(previous_)); }
    ScopedDrivePromptHandler(const ScopedDrivePromptHandler&) = delete;
    ScopedDrivePromptHandler& operator=(const ScopedDrivePromptHandler&) = delete;

private:
    DrivePromptHandler previous_;
};

}  // namespace browser

#include "browser/DrivePrompt.h"

#include <utility>

namespace browser {

namespace {

DrivePromptHandler& CurrentHandler() {
    static DrivePromptHandler handler;
    return handler;
}

}  // namespace

std::string DriveNotReadyText(const std::string& path) {
    return path + "\\ is not accessible\n\nThe device is not ready";
}

int AskDriveNotReady(const std::string& text, UINT style) {
    const DrivePromptHandler& handler = CurrentHandler();
    if (handler) return handler(text, style);
    return ::MessageBoxA(::GetActiveWindow(), text.c_str(), "Lumbrel", style);
}

DrivePromptHandler SetDrivePromptHandler(DrivePromptHandler handler) {
    return std::exchange(CurrentHandler(), std::move(handler));
}

}  // namespace browser

// The one road by which the system's readers speak to the user: a plain
// message with an OK button. The handler is replaceable so that tests on any
// platform can observe (and answer) what would be shown.
#pragma once

#include <functional>
#include <string>

namespace foundation {

using UserMessageHandler = std::function<void(const std::string& text)>;

// Shows `text` through the current handler. On Windows the default handler is
// the platform's message box; elsewhere it writes the text to standard error.
void ShowUserMessage(const std::string& text);

// Installs `handler` (an empty one restores the default) and returns the one
// it replaces.
UserMessageHandler SetUserMessageHandler(UserMessageHandler handler);

// Installs a handler for the lifetime of the object, then puts back the old one.
class ScopedUserMessageHandler {
public:
    explicit ScopedUserMessageHandler(UserMessageHandler handler)
        : previous_(SetUserMessageHandler(std::move(handler))) {}
    ~ScopedUserMessageHandler() { SetUserMessageHandler(std::move(previous_)); }
    ScopedUserMessageHandler(const ScopedUserMessageHandler&) = delete;
    ScopedUserMessageHandler& operator=(const ScopedUserMessageHandler&) = delete;

private:
    UserMessageHandler previous_;
};

// The platform's default presentation; defined per platform.
void ShowPlatformUserMessage(const std::string& text);

}  // namespace foundation

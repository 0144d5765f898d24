#include "foundation/UserMessage.h"

#include <utility>

namespace foundation {

namespace {
UserMessageHandler& CurrentHandler() {
    static UserMessageHandler handler;
    return handler;
}
}  // namespace

void ShowUserMessage(const std::string& text) {
    const UserMessageHandler& handler = CurrentHandler();
    if (handler)
        handler(text);
    else
        ShowPlatformUserMessage(text);
}

UserMessageHandler SetUserMessageHandler(UserMessageHandler handler) {
    return std::exchange(CurrentHandler(), std::move(handler));
}

}  // namespace foundation

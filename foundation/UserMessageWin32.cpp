#include <windows.h>

#include "foundation/UserMessage.h"

namespace foundation {

void ShowPlatformUserMessage(const std::string& text) {
    MessageBoxA(GetActiveWindow(), text.c_str(), "Lumbrel", MB_OK);
}

}  // namespace foundation

#include <cstdio>

#include "foundation/UserMessage.h"

namespace foundation {

void ShowPlatformUserMessage(const std::string& text) {
    std::fprintf(stderr, "%s\n", text.c_str());
}

}  // namespace foundation

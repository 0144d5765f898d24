// The hourglass over long work, which runs without a message pump: shown
// when the object is made, the previous cursor back when it goes.
#pragma once

#include <windows.h>

namespace browser {

class WaitCursor {
public:
    WaitCursor() : previous_(::SetCursor(::LoadCursor(nullptr, IDC_WAIT))) {}
    ~WaitCursor() { ::SetCursor(previous_ != nullptr ? previous_ : ::LoadCursor(nullptr, IDC_ARROW)); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    HCURSOR previous_;
};

// The hourglass with no end: the next cursor update of the window under the
// pointer puts the arrow back.
inline void BeginWaitCursor() {
    ::SetCursor(::LoadCursor(nullptr, IDC_WAIT));
}

}  // namespace browser

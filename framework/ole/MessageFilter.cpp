#include "framework/ole/MessageFilter.h"

#include <algorithm>
#include <new>
#include <vector>

namespace framework::ole {

namespace {

struct FilterState {
    std::vector<FilteredWindow*> windows;
    HHOOK hook = nullptr;
    HHOOK focusHook = nullptr;
    MSG lastOffered = {};
    bool hasLastOffered = false;
};

// Made with a thread's first registered window and deleted with its last.
// A thread_local object with a destructor would pin the module in the
// process: the runtime holds a reference to it until the thread ends, to
// run the destructor, so a host that frees the module could never unload it.
thread_local FilterState* t_filter = nullptr;

bool IsFilteredMessage(UINT message) {
    return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
           (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
}

bool SameMessage(const MSG& a, const MSG& b) {
    return a.hwnd == b.hwnd && a.message == b.message && a.wParam == b.wParam && a.lParam == b.lParam &&
           a.time == b.time && a.pt.x == b.pt.x && a.pt.y == b.pt.y;
}

bool IsRegistered(FilteredWindow* window) {
    if (t_filter == nullptr) return false;
    const auto& windows = t_filter->windows;
    return std::find(windows.begin(), windows.end(), window) != windows.end();
}

// A copy: a control may register or unregister windows (and so end the
// state) while it handles a message.
std::vector<FilteredWindow*> RegisteredWindows() {
    return t_filter != nullptr ? t_filter->windows : std::vector<FilteredWindow*>();
}

void Offer(MSG* msg) {
    for (FilteredWindow* window : RegisteredWindows()) {
        if (!IsRegistered(window)) continue;
        const HWND root = window->FilterRoot();
        if (root == nullptr || (msg->hwnd != root && !::IsChild(root, msg->hwnd))) continue;
        t_filter->lastOffered = *msg;
        t_filter->hasLastOffered = true;
        if (window->FilterMessage(msg)) {
            msg->message = WM_NULL;
            msg->wParam = 0;
            msg->lParam = 0;
        }
        return;
    }
}

LRESULT CALLBACK GetMessageHook(int code, WPARAM removal, LPARAM lParam) {
    const HHOOK hook = t_filter != nullptr ? t_filter->hook : nullptr;
    if (code == HC_ACTION && removal == PM_REMOVE && lParam != 0) {
        MSG* msg = reinterpret_cast<MSG*>(lParam);
        if (IsFilteredMessage(msg->message) && msg->hwnd != nullptr) {
            try {
                Offer(msg);
            } catch (...) {
                // Nothing may leave a hook procedure; the message goes on unfiltered.
            }
        }
    }
    return ::CallNextHookEx(hook, code, removal, lParam);
}

bool InTree(HWND root, HWND window) {
    return window != nullptr && (window == root || ::IsChild(root, window));
}

void NoteFocusChange(const CWPSTRUCT& call) {
    // WM_SETFOCUS names the window that lost the focus, WM_KILLFOCUS the one
    // that gains it: either way one end inside the tree and one outside is a
    // crossing.
    const HWND other = reinterpret_cast<HWND>(call.wParam);
    for (FilteredWindow* window : RegisteredWindows()) {
        if (!IsRegistered(window)) continue;
        const HWND root = window->FilterRoot();
        if (root == nullptr) continue;
        if (InTree(root, call.hwnd) != InTree(root, other)) window->OnFilteredFocusChange();
    }
}

LRESULT CALLBACK CallWindowHook(int code, WPARAM sent, LPARAM lParam) {
    const HHOOK hook = t_filter != nullptr ? t_filter->focusHook : nullptr;
    if (code == HC_ACTION && lParam != 0) {
        const auto* call = reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (call->message == WM_SETFOCUS || call->message == WM_KILLFOCUS) {
            try {
                NoteFocusChange(*call);
            } catch (...) {
                // Nothing may leave a hook procedure; the focus moves all the same.
            }
        }
    }
    return ::CallNextHookEx(hook, code, sent, lParam);
}

void EndState() {
    FilterState* state = t_filter;
    t_filter = nullptr;
    if (state == nullptr) return;
    if (state->hook != nullptr) ::UnhookWindowsHookEx(state->hook);
    if (state->focusHook != nullptr) ::UnhookWindowsHookEx(state->focusHook);
    delete state;
}

}  // namespace

void AddToMessageFilter(FilteredWindow* window) {
    if (window == nullptr || IsRegistered(window)) return;
    if (t_filter == nullptr) {
        t_filter = new (std::nothrow) FilterState;
        if (t_filter == nullptr) return;
    }
    if (t_filter->hook == nullptr) {
        t_filter->hook = ::SetWindowsHookExA(WH_GETMESSAGE, &GetMessageHook, nullptr, ::GetCurrentThreadId());
        if (t_filter->hook == nullptr) {
            if (t_filter->windows.empty()) EndState();
            return;
        }
    }
    if (t_filter->focusHook == nullptr)
        t_filter->focusHook =
            ::SetWindowsHookExA(WH_CALLWNDPROC, &CallWindowHook, nullptr, ::GetCurrentThreadId());
    try {
        t_filter->windows.push_back(window);
    } catch (const std::bad_alloc&) {
        // The window goes unfiltered, as without a hook.
        if (t_filter->windows.empty()) EndState();
    }
}

void RemoveFromMessageFilter(FilteredWindow* window) {
    if (t_filter == nullptr) return;
    auto& windows = t_filter->windows;
    windows.erase(std::remove(windows.begin(), windows.end(), window), windows.end());
    if (windows.empty()) EndState();
}

bool IsMessageFilterInstalled() {
    return t_filter != nullptr && t_filter->hook != nullptr;
}

bool WasOfferedByMessageFilter(const MSG& msg) {
    return t_filter != nullptr && t_filter->hasLastOffered && SameMessage(t_filter->lastOffered, msg);
}

}  // namespace framework::ole

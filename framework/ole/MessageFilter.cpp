#include "framework/ole/MessageFilter.h"

#include <algorithm>
#include <vector>

namespace framework::ole {

namespace {

struct FilterState {
    std::vector<FilteredWindow*> windows;
    HHOOK hook = nullptr;
    MSG lastOffered = {};
    bool hasLastOffered = false;
};

thread_local FilterState t_filter;

bool IsFilteredMessage(UINT message) {
    return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
           (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
}

bool SameMessage(const MSG& a, const MSG& b) {
    return a.hwnd == b.hwnd && a.message == b.message && a.wParam == b.wParam && a.lParam == b.lParam &&
           a.time == b.time && a.pt.x == b.pt.x && a.pt.y == b.pt.y;
}

bool IsRegistered(FilteredWindow* window) {
    const auto& windows = t_filter.windows;
    return std::find(windows.begin(), windows.end(), window) != windows.end();
}

void Offer(MSG* msg) {
    // A copy: a control may register or unregister windows while it handles
    // the message.
    const std::vector<FilteredWindow*> windows = t_filter.windows;
    for (FilteredWindow* window : windows) {
        if (!IsRegistered(window)) continue;
        const HWND root = window->FilterRoot();
        if (root == nullptr || (msg->hwnd != root && !::IsChild(root, msg->hwnd))) continue;
        t_filter.lastOffered = *msg;
        t_filter.hasLastOffered = true;
        if (window->FilterMessage(msg)) {
            msg->message = WM_NULL;
            msg->wParam = 0;
            msg->lParam = 0;
        }
        return;
    }
}

LRESULT CALLBACK GetMessageHook(int code, WPARAM removal, LPARAM lParam) {
    const HHOOK hook = t_filter.hook;
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

}  // namespace

void AddToMessageFilter(FilteredWindow* window) {
    if (window == nullptr || IsRegistered(window)) return;
    if (t_filter.hook == nullptr) {
        t_filter.hook = ::SetWindowsHookExA(WH_GETMESSAGE, &GetMessageHook, nullptr, ::GetCurrentThreadId());
        if (t_filter.hook == nullptr) return;
    }
    t_filter.windows.push_back(window);
}

void RemoveFromMessageFilter(FilteredWindow* window) {
    auto& windows = t_filter.windows;
    windows.erase(std::remove(windows.begin(), windows.end(), window), windows.end());
    if (windows.empty() && t_filter.hook != nullptr) {
        ::UnhookWindowsHookEx(t_filter.hook);
        t_filter.hook = nullptr;
        t_filter.hasLastOffered = false;
    }
}

bool IsMessageFilterInstalled() {
    return t_filter.hook != nullptr;
}

bool WasOfferedByMessageFilter(const MSG& msg) {
    return t_filter.hasLastOffered && SameMessage(t_filter.lastOffered, msg);
}

}  // namespace framework::ole

#include "framework/win32/Window.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "framework/win32/Application.h"

namespace framework::win32 {

namespace {

// The coordinates packed in a mouse message's lParam, signed.
POINT PointFromLParam(LPARAM lParam) {
    return POINT{static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
}

struct CurrentMessage {
    HWND hwnd = nullptr;
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
};

// The message being dispatched on this thread, for Default(); nested
// dispatches save and restore it.
thread_local CurrentMessage t_current;
// The object whose window CreateEx is making on this thread: the first
// message of a new window arrives before CreateWindowEx returns.
thread_local Window* t_creating = nullptr;

HINSTANCE g_resourceModule = nullptr;

HINSTANCE CodeModule() {
    HMODULE module = nullptr;
    ::GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCSTR>(&WindowProcThunk), &module);
    return module;
}

bool IsOwnClass(HWND hwnd) {
    return reinterpret_cast<WNDPROC>(::GetClassLongPtrA(hwnd, GCLP_WNDPROC)) == &WindowProcThunk;
}

// The property that binds a subclassed window to its object. Its name holds
// this module's address: a program and a control built from these sources
// each have their own copy of the framework, and one copy must never take
// the other's objects for its own (their virtual calls cross modules).
const char* ObjectProperty() {
    static const std::string name = [] {
        char text[48];
        std::snprintf(text, sizeof text, "Lumbrel.Window.%p", static_cast<void*>(CodeModule()));
        return std::string(text);
    }();
    return name.c_str();
}

Window* Lookup(HWND hwnd) {
    if (hwnd == nullptr) return nullptr;
    if (IsOwnClass(hwnd)) return reinterpret_cast<Window*>(::GetWindowLongPtrA(hwnd, 0));
    return static_cast<Window*>(::GetPropA(hwnd, ObjectProperty()));
}

}  // namespace

HINSTANCE ResourceModule() {
    return g_resourceModule != nullptr ? g_resourceModule : CodeModule();
}

void SetResourceModule(HINSTANCE module) {
    g_resourceModule = module;
}

LUMBREL_IMPLEMENT_RUNTIME_CLASS(CommandTarget, framework::Object)
LUMBREL_IMPLEMENT_DYNAMIC_CREATION(Window, CommandTarget)

bool CommandTarget::OnCmdMsg(UINT, int, void*, void*) {
    return false;
}

Window::~Window() {
    if (hwnd_ != nullptr) {
        HWND hwnd = hwnd_;
        if (::IsWindow(hwnd)) ::DestroyWindow(hwnd);
        // A window that outlived DestroyWindow (another thread's, say) must not
        // call back into a dead object.
        if (hwnd_ != nullptr) Unbind();
    }
}

Window* Window::FromHandle(HWND hwnd) {
    return Lookup(hwnd);
}

namespace {

// The names RegisterWindowClass has given out in this module. A class of
// the module is process-wide, whichever thread registers it.
struct RegisteredClasses {
    std::mutex lock;
    std::vector<std::string> names;
};

RegisteredClasses& ClassesOfModule() {
    // Never destroyed: the module's last act may be to unregister them.
    static RegisteredClasses* const classes = new RegisteredClasses;
    return *classes;
}

void Remember(const char* name) {
    RegisteredClasses& classes = ClassesOfModule();
    const std::lock_guard<std::mutex> guard(classes.lock);
    if (std::find(classes.names.begin(), classes.names.end(), name) == classes.names.end())
        classes.names.emplace_back(name);
}

}  // namespace

void Window::UnregisterWindowClasses() {
    RegisteredClasses& classes = ClassesOfModule();
    std::vector<std::string> names;
    {
        const std::lock_guard<std::mutex> guard(classes.lock);
        names.swap(classes.names);
    }
    const HINSTANCE module = CodeModule();
    for (const std::string& name : names) ::UnregisterClassA(name.c_str(), module);
}

std::string Window::RegisterWindowClass(UINT classStyle, HCURSOR cursor, HBRUSH background, HICON icon) {
    char name[96];
    std::snprintf(name, sizeof name, "Lumbrel:%x:%p:%p:%p", classStyle, static_cast<void*>(cursor),
                  static_cast<void*>(background), static_cast<void*>(icon));
    const HINSTANCE module = CodeModule();
    WNDCLASSA existing = {};
    if (::GetClassInfoA(module, name, &existing)) {
        Remember(name);
        return name;
    }
    WNDCLASSA windowClass = {};
    windowClass.style = classStyle;
    windowClass.lpfnWndProc = &WindowProcThunk;
    windowClass.cbWndExtra = sizeof(LONG_PTR);
    windowClass.hInstance = module;
    windowClass.hCursor = cursor;
    windowClass.hbrBackground = background;
    windowClass.hIcon = icon;
    windowClass.lpszClassName = name;
    // Another user-interface thread's control may register the same class
    // between the question and the registration: the class is then there,
    // which is all the caller wants.
    if (::RegisterClassA(&windowClass) == 0 && ::GetLastError() != ERROR_CLASS_ALREADY_EXISTS)
        return std::string();
    Remember(name);
    return name;
}

bool Window::CreateEx(DWORD exStyle, const std::string& className, const char* text, DWORD style,
                      const RECT& rect, HWND parent, UINT id) {
    if (hwnd_ != nullptr || className.empty()) return false;
    Window* const previous = t_creating;
    t_creating = this;
    const bool child = (style & WS_CHILD) != 0;
    HWND hwnd = ::CreateWindowExA(exStyle, className.c_str(), text != nullptr ? text : "", style, rect.left,
                                  rect.top, rect.right - rect.left, rect.bottom - rect.top, parent,
                                  child ? reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)) : nullptr,
                                  CodeModule(), nullptr);
    t_creating = previous;
    if (hwnd == nullptr) {
        if (hwnd_ != nullptr) Unbind();
        return false;
    }
    if (hwnd_ == nullptr) {
        // A class of another making: bind by subclassing.
        SubclassWindow(hwnd);
    }
    return true;
}

void Window::Bind(HWND hwnd, WNDPROC superProc, bool viaProperty) {
    hwnd_ = hwnd;
    superProc_ = superProc;
    boundViaProperty_ = viaProperty;
    if (viaProperty)
        ::SetPropA(hwnd, ObjectProperty(), this);
    else
        ::SetWindowLongPtrA(hwnd, 0, reinterpret_cast<LONG_PTR>(this));
}

void Window::Unbind() {
    if (hwnd_ == nullptr) return;
    if (boundViaProperty_) {
        ::RemovePropA(hwnd_, ObjectProperty());
        if (reinterpret_cast<WNDPROC>(::GetWindowLongPtrA(hwnd_, GWLP_WNDPROC)) == &WindowProcThunk)
            ::SetWindowLongPtrA(hwnd_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(superProc_));
    } else if (::IsWindow(hwnd_)) {
        ::SetWindowLongPtrA(hwnd_, 0, 0);
    }
    hwnd_ = nullptr;
    superProc_ = nullptr;
    boundViaProperty_ = false;
}

bool Window::SubclassWindow(HWND hwnd) {
    if (hwnd_ != nullptr || hwnd == nullptr || !::IsWindow(hwnd) || Lookup(hwnd) != nullptr) return false;
    ::SetPropA(hwnd, ObjectProperty(), this);
    auto original = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrA(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WindowProcThunk)));
    if (original == nullptr) {
        ::RemovePropA(hwnd, ObjectProperty());
        return false;
    }
    hwnd_ = hwnd;
    superProc_ = original;
    boundViaProperty_ = true;
    return true;
}

HWND Window::UnsubclassWindow() {
    if (!boundViaProperty_) return nullptr;
    HWND hwnd = hwnd_;
    Unbind();
    return hwnd;
}

void Window::DestroyWindow() {
    if (hwnd_ != nullptr) ::DestroyWindow(hwnd_);
}

BOOL Window::PreTranslateMessage(MSG*) {
    return FALSE;
}

LRESULT Window::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
    return ::SendMessageA(hwnd_, message, wParam, lParam);
}

BOOL Window::Post(UINT message, WPARAM wParam, LPARAM lParam) const {
    return ::PostMessageA(hwnd_, message, wParam, lParam);
}

UINT Window::GetDlgCtrlID() const {
    return static_cast<UINT>(::GetDlgCtrlID(hwnd_));
}

HWND Window::GetParent() const {
    return ::GetParent(hwnd_);
}

RECT Window::GetClientRect() const {
    RECT rect = {};
    ::GetClientRect(hwnd_, &rect);
    return rect;
}

RECT Window::GetWindowRect() const {
    RECT rect = {};
    ::GetWindowRect(hwnd_, &rect);
    return rect;
}

void Window::Invalidate(bool erase) const {
    ::InvalidateRect(hwnd_, nullptr, erase ? TRUE : FALSE);
}

void Window::InvalidateRect(const RECT& rect, bool erase) const {
    ::InvalidateRect(hwnd_, &rect, erase ? TRUE : FALSE);
}

void Window::UpdateWindow() const {
    ::UpdateWindow(hwnd_);
}

int Window::GetScrollPos(int bar) const {
    return ::GetScrollPos(hwnd_, bar);
}

int Window::SetScrollPos(int bar, int pos, bool redraw) const {
    return ::SetScrollPos(hwnd_, bar, pos, redraw ? TRUE : FALSE);
}

bool Window::GetScrollInfo(int bar, SCROLLINFO* info, UINT mask) const {
    info->cbSize = sizeof(SCROLLINFO);
    info->fMask = mask;
    return ::GetScrollInfo(hwnd_, bar, info) != FALSE;
}

bool Window::SetScrollInfo(int bar, SCROLLINFO* info, bool redraw) const {
    info->cbSize = sizeof(SCROLLINFO);
    ::SetScrollInfo(hwnd_, bar, info, redraw ? TRUE : FALSE);
    return true;
}

UINT_PTR Window::SetTimer(UINT_PTR id, UINT elapse) const {
    return ::SetTimer(hwnd_, id, elapse, nullptr);
}

bool Window::KillTimer(UINT_PTR id) const {
    return ::KillTimer(hwnd_, id) != FALSE;
}

LRESULT Window::Default() {
    const CurrentMessage& current = t_current;
    if (current.hwnd == nullptr) return 0;
    if (superProc_ != nullptr)
        return ::CallWindowProcA(superProc_, current.hwnd, current.message, current.wParam, current.lParam);
    return ::DefWindowProcA(current.hwnd, current.message, current.wParam, current.lParam);
}

LRESULT Window::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
    const CurrentMessage saved = t_current;
    t_current = CurrentMessage{hwnd_, message, wParam, lParam};
    const HWND hwnd = hwnd_;
    LRESULT result = 0;
    try {
        result = WindowProc(message, wParam, lParam);
    } catch (...) {
        ReportWindowException(hwnd, message);
        result = message == WM_CREATE ? -1 : 0;
    }
    t_current = saved;
    if (message == WM_NCDESTROY && hwnd_ == hwnd) {
        Unbind();
        PostNcDestroy();
    }
    return result;
}

LRESULT CALLBACK WindowProcThunk(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = Lookup(hwnd);
    if (window == nullptr && t_creating != nullptr) {
        window = t_creating;
        t_creating = nullptr;
        window->Bind(hwnd, &::DefWindowProcA, false);
    }
    if (window == nullptr) return ::DefWindowProcA(hwnd, message, wParam, lParam);
    return window->Dispatch(message, wParam, lParam);
}

LRESULT Window::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const POINT point = PointFromLParam(lParam);
    const UINT flags = static_cast<UINT>(wParam);
    switch (message) {
        case WM_CREATE: return OnCreate(reinterpret_cast<CREATESTRUCTA*>(lParam));
        case WM_DESTROY: OnDestroy(); return 0;
        case WM_SIZE: OnSize(flags, LOWORD(lParam), HIWORD(lParam)); return 0;
        case WM_PAINT: OnPaint(); return 0;
        case WM_ERASEBKGND: return OnEraseBkgnd(reinterpret_cast<HDC>(wParam));
        case WM_LBUTTONDOWN: OnLButtonDown(flags, point); return 0;
        case WM_LBUTTONUP: OnLButtonUp(flags, point); return 0;
        case WM_LBUTTONDBLCLK: OnLButtonDblClk(flags, point); return 0;
        case WM_RBUTTONDOWN: OnRButtonDown(flags, point); return 0;
        case WM_RBUTTONUP: OnRButtonUp(flags, point); return 0;
        case WM_MOUSEMOVE: OnMouseMove(flags, point); return 0;
        case WM_MOUSEWHEEL: return OnMouseWheel(LOWORD(wParam), static_cast<short>(HIWORD(wParam)), point);
        case WM_VSCROLL: OnVScroll(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam)); return 0;
        case WM_HSCROLL: OnHScroll(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam)); return 0;
        case WM_TIMER: OnTimer(wParam); return 0;
        case WM_SETCURSOR: return OnSetCursor(reinterpret_cast<HWND>(wParam), LOWORD(lParam), HIWORD(lParam));
        case WM_ENABLE: OnEnable(static_cast<BOOL>(wParam)); return 0;
        case WM_SETFOCUS: OnSetFocus(reinterpret_cast<HWND>(wParam)); return 0;
        case WM_KILLFOCUS: OnKillFocus(reinterpret_cast<HWND>(wParam)); return 0;
        case WM_KEYDOWN: OnKeyDown(flags, LOWORD(lParam), HIWORD(lParam)); return 0;
        case WM_CHAR: OnChar(flags, LOWORD(lParam), HIWORD(lParam)); return 0;
        case WM_CAPTURECHANGED: OnCaptureChanged(reinterpret_cast<HWND>(lParam)); return 0;
        case WM_GETMINMAXINFO: OnGetMinMaxInfo(reinterpret_cast<MINMAXINFO*>(lParam)); return 0;
        case WM_CLOSE: OnClose(); return 0;
        case WM_COMMAND:
            if (OnCommand(wParam, lParam)) return 0;
            return Default();
        case WM_NOTIFY: {
            LRESULT result = 0;
            if (OnNotify(wParam, lParam, &result)) return result;
            return Default();
        }
        default: {
            LRESULT result = 0;
            if (OnMessage(message, wParam, lParam, &result)) return result;
            return Default();
        }
    }
}

bool Window::OnChildNotify(UINT, WPARAM, LPARAM, LRESULT*) {
    return false;
}
bool Window::OnMessage(UINT, WPARAM, LPARAM, LRESULT*) {
    return false;
}
int Window::OnCreate(CREATESTRUCTA*) {
    return static_cast<int>(Default());
}
void Window::OnDestroy() {
    Default();
}
void Window::OnSize(UINT, int, int) {
    Default();
}
void Window::OnPaint() {
    Default();
}
BOOL Window::OnEraseBkgnd(HDC) {
    return static_cast<BOOL>(Default());
}
void Window::OnLButtonDown(UINT, POINT) {
    Default();
}
void Window::OnLButtonUp(UINT, POINT) {
    Default();
}
void Window::OnLButtonDblClk(UINT, POINT) {
    Default();
}
void Window::OnRButtonDown(UINT, POINT) {
    Default();
}
void Window::OnRButtonUp(UINT, POINT) {
    Default();
}
void Window::OnMouseMove(UINT, POINT) {
    Default();
}
BOOL Window::OnMouseWheel(UINT, short, POINT) {
    return static_cast<BOOL>(Default());
}
void Window::OnVScroll(UINT, UINT, HWND) {
    Default();
}
void Window::OnHScroll(UINT, UINT, HWND) {
    Default();
}
void Window::OnTimer(UINT_PTR) {
    Default();
}
BOOL Window::OnSetCursor(HWND, UINT, UINT) {
    return static_cast<BOOL>(Default());
}
void Window::OnEnable(BOOL) {
    Default();
}
void Window::OnSetFocus(HWND) {
    Default();
}
void Window::OnKillFocus(HWND) {
    Default();
}
void Window::OnKeyDown(UINT, UINT, UINT) {
    Default();
}
void Window::OnChar(UINT, UINT, UINT) {
    Default();
}
void Window::OnCaptureChanged(HWND) {
    Default();
}
void Window::OnGetMinMaxInfo(MINMAXINFO*) {
    Default();
}
void Window::OnClose() {
    Default();
}

BOOL Window::OnCommand(WPARAM wParam, LPARAM lParam) {
    const auto control = reinterpret_cast<HWND>(lParam);
    if (control != nullptr) {
        Window* child = Lookup(control);
        LRESULT ignored = 0;
        if (child != nullptr && child != this && child->OnChildNotify(WM_COMMAND, wParam, lParam, &ignored))
            return TRUE;
    }
    return OnCmdMsg(LOWORD(wParam), static_cast<int>(static_cast<short>(HIWORD(wParam))), nullptr, nullptr)
               ? TRUE
               : FALSE;
}

BOOL Window::OnNotify(WPARAM, LPARAM lParam, LRESULT* result) {
    auto* header = reinterpret_cast<NMHDR*>(lParam);
    if (header == nullptr) return FALSE;
    Window* child = Lookup(header->hwndFrom);
    if (child != nullptr && child != this && child->OnChildNotify(WM_NOTIFY, 0, lParam, result)) return TRUE;
    *result = 0;
    return OnCmdMsg(static_cast<UINT>(header->idFrom), static_cast<int>(header->code), header, result)
               ? TRUE
               : FALSE;
}

}  // namespace framework::win32

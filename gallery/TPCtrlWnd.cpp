#include "gallery/TPCtrlWnd.h"

#include <commctrl.h>

#include <atomic>
#include <cstring>
#include <mutex>

namespace gallery {

using framework::win32::Window;

LUMBREL_IMPLEMENT_DYNAMIC_CREATION(CTPCtrlWnd, framework::win32::Window)

namespace {

// Serial numbers count down from -3: the counter starts at -2 and is
// decremented before use. Controls are made on every user-interface thread,
// and each gets a number of its own.
std::atomic<int> g_uniqueIdCounter{-2};

// The shared fonts are the process's, made once whichever thread asks first.
std::mutex g_fontLock;
HFONT g_controlFont = nullptr;
HFONT g_defaultGuiFont = nullptr;

}  // namespace

int PeekNextUniqueId() {
    return g_uniqueIdCounter.load() - 1;
}

CTPCtrlWnd::CTPCtrlWnd(int ownerKind) : ownerLink(ownerKind), uniqueId(--g_uniqueIdCounter) {
    ownerLink.SetWindow(this);
}

CTPCtrlWnd::~CTPCtrlWnd() {
    while (!blocks.empty()) {
        ::operator delete(blocks.back());
        blocks.pop_back();
    }
}

void CTPCtrlWnd::OnUpdateCmdUI(Window*, BOOL) {}

std::string CTPCtrlWnd::LoadIdText() const {
    if (hwnd_ == nullptr) return std::string();
    char text[1024] = {};
    const int length = ::LoadStringA(framework::win32::ResourceModule(), GetDlgCtrlID(), text, sizeof text);
    return length > 0 ? std::string(text, static_cast<size_t>(length)) : std::string();
}

std::string CTPCtrlWnd::GetPromptText() const {
    const std::string text = LoadIdText();
    const size_t newline = text.find('\n');
    return newline == std::string::npos ? text : text.substr(0, newline);
}

std::string CTPCtrlWnd::GetToolTipText(int, int) const {
    if (!created) return std::string();
    const std::string text = LoadIdText();
    const size_t newline = text.find('\n');
    return newline == std::string::npos ? text : text.substr(newline + 1);
}

void CTPCtrlWnd::GetToolRect(int, RECT* rect) const {
    if (rect != nullptr) ::GetWindowRect(hwnd_, rect);
}

int CTPCtrlWnd::GetToolRectCount() const {
    return 1;
}

ToolTipSite* CTPCtrlWnd::ParentToolTipSite() const {
    return dynamic_cast<ToolTipSite*>(Window::FromHandle(GetParent()));
}

int CTPCtrlWnd::OnCreate(CREATESTRUCTA* create) {
    if (Window::OnCreate(create) == -1) return -1;
    if (ownerLink.SitsOnPalettePage()) {
        if (ToolTipSite* site = ParentToolTipSite()) {
            const HWND parent = GetParent();
            for (int index = 0; index < GetToolRectCount(); ++index) {
                RECT rect = {};
                GetToolRect(index, &rect);
                ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
                site->RegisterTool(GetDlgCtrlID(), rect);
            }
        }
    }
    created = TRUE;
    return 0;
}

BOOL CTPCtrlWnd::PreTranslateMessage(MSG* msg) {
    if (ownerLink.SitsOnPalettePage() && msg->message >= WM_MOUSEMOVE && msg->message <= WM_MBUTTONDBLCLK) {
        ToolTipSite* site = ParentToolTipSite();
        const HWND toolTip = site != nullptr ? site->ToolTipWindow() : nullptr;
        if (toolTip != nullptr && ::IsWindow(toolTip)) {
            POINT point = msg->pt;
            ::ScreenToClient(GetParent(), &point);
            const LPARAM saved = msg->lParam;
            msg->lParam = MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y));
            ::SendMessageA(toolTip, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(msg));
            msg->lParam = saved;
        }
    }
    return Window::PreTranslateMessage(msg);
}

HFONT GetControlFont() {
    const std::lock_guard<std::mutex> hold(g_fontLock);
    if (g_controlFont == nullptr) {
        if (::GetSystemMetrics(SM_DBCSENABLED) == 0) {
            LOGFONTA font = {};
            font.lfHeight = -12;
            font.lfWeight = 400;
            font.lfPitchAndFamily = 0x22;
            std::strcpy(font.lfFaceName, "MS Sans Serif");
            g_controlFont = ::CreateFontIndirectA(&font);
        }
        if (g_controlFont == nullptr) g_controlFont = static_cast<HFONT>(::GetStockObject(SYSTEM_FONT));
    }
    return g_controlFont;
}

HFONT GetDefaultGuiFont() {
    const std::lock_guard<std::mutex> hold(g_fontLock);
    return g_defaultGuiFont;
}

void AttachDefaultGuiFont() {
    const std::lock_guard<std::mutex> hold(g_fontLock);
    if (g_defaultGuiFont == nullptr)
        g_defaultGuiFont = static_cast<HFONT>(::GetStockObject(DEFAULT_GUI_FONT));
}

}  // namespace gallery

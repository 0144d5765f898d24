#include "control/WindowSides.h"

#include "framework/ole/Barrier.h"
#include "framework/ole/MessageFilter.h"

namespace control {

// ---- The control's window -------------------------------------------------------------

BOOL ControlWindowSide::PreTranslateMessage(MSG* msg) {
    if (msg != nullptr && framework::ole::WasOfferedByMessageFilter(*msg)) return FALSE;
    return PreTranslateControlMessage(msg);
}

bool ControlWindowSide::FilterMessage(MSG* msg) {
    // The control may be released by what the map sets off.
    framework::win32::ComPtr<IOleObject> keepAlive =
        framework::ole::ShareComPtr(static_cast<IOleObject*>(this));
    return PreTranslateControlMessage(msg) != FALSE;
}

int ControlWindowSide::OnControlCreate(CREATESTRUCTA* create) {
    return OleControl::OnCreate(create);
}

void ControlWindowSide::OnControlSize(UINT type, int cx, int cy) {
    OleControl::OnSize(type, cx, cy);
}

BOOL ControlWindowSide::PreTranslateControlMessage(MSG* msg) {
    return OleControl::PreTranslateMessage(msg);
}

int ControlWindowSide::OnCreate(CREATESTRUCTA* create) {
    return OnControlCreate(create);
}

void ControlWindowSide::OnSize(UINT type, int cx, int cy) {
    OnControlSize(type, cx, cy);
}

bool ControlWindowSide::OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) {
    return OleControl::OnCmdMsg(id, code, extra, handlerInfo);
}

LRESULT ControlWindowSide::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    return OleControl::WindowProc(message, wParam, lParam);
}

#define LUMBREL_HAND_ON(Result, Name, Parameters, Arguments) \
    Result ControlWindowSide::Name Parameters {              \
        return OleControl::Name Arguments;                   \
    }
LUMBREL_WINDOW_HANDLERS_HANDED_ON(LUMBREL_HAND_ON)
#undef LUMBREL_HAND_ON

// ---- The dialog's window --------------------------------------------------------------

BOOL DialogWindowSide::PreTranslateMessage(MSG* msg) {
    return CGraphicDlg::PreTranslateMessage(msg);
}

int DialogWindowSide::OnCreate(CREATESTRUCTA* create) {
    return CGraphicDlg::OnCreate(create);
}

void DialogWindowSide::OnSize(UINT type, int cx, int cy) {
    CGraphicDlg::OnSize(type, cx, cy);
}

bool DialogWindowSide::OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) {
    return CGraphicDlg::OnCmdMsg(id, code, extra, handlerInfo);
}

LRESULT DialogWindowSide::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    return CGraphicDlg::WindowProc(message, wParam, lParam);
}

#define LUMBREL_HAND_ON(Result, Name, Parameters, Arguments) \
    Result DialogWindowSide::Name Parameters {               \
        return CGraphicDlg::Name Arguments;                  \
    }
LUMBREL_WINDOW_HANDLERS_HANDED_ON(LUMBREL_HAND_ON)
#undef LUMBREL_HAND_ON

}  // namespace control

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

void ControlWindowSide::PostNcDestroy() {
    OleControl::PostNcDestroy();
}

bool ControlWindowSide::OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    return OleControl::OnChildNotify(message, wParam, lParam, result);
}

bool ControlWindowSide::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    return OleControl::OnMessage(message, wParam, lParam, result);
}

int ControlWindowSide::OnCreate(CREATESTRUCTA* create) {
    return OnControlCreate(create);
}

void ControlWindowSide::OnDestroy() {
    OleControl::OnDestroy();
}

void ControlWindowSide::OnSize(UINT type, int cx, int cy) {
    OnControlSize(type, cx, cy);
}

void ControlWindowSide::OnPaint() {
    OleControl::OnPaint();
}

BOOL ControlWindowSide::OnEraseBkgnd(HDC dc) {
    return OleControl::OnEraseBkgnd(dc);
}

void ControlWindowSide::OnLButtonDown(UINT flags, POINT point) {
    OleControl::OnLButtonDown(flags, point);
}

void ControlWindowSide::OnLButtonUp(UINT flags, POINT point) {
    OleControl::OnLButtonUp(flags, point);
}

void ControlWindowSide::OnLButtonDblClk(UINT flags, POINT point) {
    OleControl::OnLButtonDblClk(flags, point);
}

void ControlWindowSide::OnRButtonDown(UINT flags, POINT point) {
    OleControl::OnRButtonDown(flags, point);
}

void ControlWindowSide::OnRButtonUp(UINT flags, POINT point) {
    OleControl::OnRButtonUp(flags, point);
}

void ControlWindowSide::OnMouseMove(UINT flags, POINT point) {
    OleControl::OnMouseMove(flags, point);
}

BOOL ControlWindowSide::OnMouseWheel(UINT flags, short delta, POINT screenPoint) {
    return OleControl::OnMouseWheel(flags, delta, screenPoint);
}

void ControlWindowSide::OnVScroll(UINT code, UINT pos, HWND scrollBar) {
    OleControl::OnVScroll(code, pos, scrollBar);
}

void ControlWindowSide::OnHScroll(UINT code, UINT pos, HWND scrollBar) {
    OleControl::OnHScroll(code, pos, scrollBar);
}

void ControlWindowSide::OnTimer(UINT_PTR id) {
    OleControl::OnTimer(id);
}

BOOL ControlWindowSide::OnSetCursor(HWND window, UINT hitTest, UINT message) {
    return OleControl::OnSetCursor(window, hitTest, message);
}

void ControlWindowSide::OnEnable(BOOL enable) {
    OleControl::OnEnable(enable);
}

void ControlWindowSide::OnSetFocus(HWND previous) {
    OleControl::OnSetFocus(previous);
}

void ControlWindowSide::OnKillFocus(HWND next) {
    OleControl::OnKillFocus(next);
}

void ControlWindowSide::OnKeyDown(UINT key, UINT repeat, UINT flags) {
    OleControl::OnKeyDown(key, repeat, flags);
}

void ControlWindowSide::OnChar(UINT key, UINT repeat, UINT flags) {
    OleControl::OnChar(key, repeat, flags);
}

void ControlWindowSide::OnCaptureChanged(HWND window) {
    OleControl::OnCaptureChanged(window);
}

void ControlWindowSide::OnGetMinMaxInfo(MINMAXINFO* info) {
    OleControl::OnGetMinMaxInfo(info);
}

void ControlWindowSide::OnClose() {
    OleControl::OnClose();
}

BOOL ControlWindowSide::OnCommand(WPARAM wParam, LPARAM lParam) {
    return OleControl::OnCommand(wParam, lParam);
}

BOOL ControlWindowSide::OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* result) {
    return OleControl::OnNotify(wParam, lParam, result);
}

bool ControlWindowSide::OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) {
    return OleControl::OnCmdMsg(id, code, extra, handlerInfo);
}

LRESULT ControlWindowSide::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    return OleControl::WindowProc(message, wParam, lParam);
}

// ---- The dialog's window --------------------------------------------------------------

BOOL DialogWindowSide::PreTranslateMessage(MSG* msg) {
    return CGraphicDlg::PreTranslateMessage(msg);
}

void DialogWindowSide::PostNcDestroy() {
    CGraphicDlg::PostNcDestroy();
}

bool DialogWindowSide::OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    return CGraphicDlg::OnChildNotify(message, wParam, lParam, result);
}

bool DialogWindowSide::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    return CGraphicDlg::OnMessage(message, wParam, lParam, result);
}

int DialogWindowSide::OnCreate(CREATESTRUCTA* create) {
    return CGraphicDlg::OnCreate(create);
}

void DialogWindowSide::OnDestroy() {
    CGraphicDlg::OnDestroy();
}

void DialogWindowSide::OnSize(UINT type, int cx, int cy) {
    CGraphicDlg::OnSize(type, cx, cy);
}

void DialogWindowSide::OnPaint() {
    CGraphicDlg::OnPaint();
}

BOOL DialogWindowSide::OnEraseBkgnd(HDC dc) {
    return CGraphicDlg::OnEraseBkgnd(dc);
}

void DialogWindowSide::OnLButtonDown(UINT flags, POINT point) {
    CGraphicDlg::OnLButtonDown(flags, point);
}

void DialogWindowSide::OnLButtonUp(UINT flags, POINT point) {
    CGraphicDlg::OnLButtonUp(flags, point);
}

void DialogWindowSide::OnLButtonDblClk(UINT flags, POINT point) {
    CGraphicDlg::OnLButtonDblClk(flags, point);
}

void DialogWindowSide::OnRButtonDown(UINT flags, POINT point) {
    CGraphicDlg::OnRButtonDown(flags, point);
}

void DialogWindowSide::OnRButtonUp(UINT flags, POINT point) {
    CGraphicDlg::OnRButtonUp(flags, point);
}

void DialogWindowSide::OnMouseMove(UINT flags, POINT point) {
    CGraphicDlg::OnMouseMove(flags, point);
}

BOOL DialogWindowSide::OnMouseWheel(UINT flags, short delta, POINT screenPoint) {
    return CGraphicDlg::OnMouseWheel(flags, delta, screenPoint);
}

void DialogWindowSide::OnVScroll(UINT code, UINT pos, HWND scrollBar) {
    CGraphicDlg::OnVScroll(code, pos, scrollBar);
}

void DialogWindowSide::OnHScroll(UINT code, UINT pos, HWND scrollBar) {
    CGraphicDlg::OnHScroll(code, pos, scrollBar);
}

void DialogWindowSide::OnTimer(UINT_PTR id) {
    CGraphicDlg::OnTimer(id);
}

BOOL DialogWindowSide::OnSetCursor(HWND window, UINT hitTest, UINT message) {
    return CGraphicDlg::OnSetCursor(window, hitTest, message);
}

void DialogWindowSide::OnEnable(BOOL enable) {
    CGraphicDlg::OnEnable(enable);
}

void DialogWindowSide::OnSetFocus(HWND previous) {
    CGraphicDlg::OnSetFocus(previous);
}

void DialogWindowSide::OnKillFocus(HWND next) {
    CGraphicDlg::OnKillFocus(next);
}

void DialogWindowSide::OnKeyDown(UINT key, UINT repeat, UINT flags) {
    CGraphicDlg::OnKeyDown(key, repeat, flags);
}

void DialogWindowSide::OnChar(UINT key, UINT repeat, UINT flags) {
    CGraphicDlg::OnChar(key, repeat, flags);
}

void DialogWindowSide::OnCaptureChanged(HWND window) {
    CGraphicDlg::OnCaptureChanged(window);
}

void DialogWindowSide::OnGetMinMaxInfo(MINMAXINFO* info) {
    CGraphicDlg::OnGetMinMaxInfo(info);
}

void DialogWindowSide::OnClose() {
    CGraphicDlg::OnClose();
}

BOOL DialogWindowSide::OnCommand(WPARAM wParam, LPARAM lParam) {
    return CGraphicDlg::OnCommand(wParam, lParam);
}

BOOL DialogWindowSide::OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* result) {
    return CGraphicDlg::OnNotify(wParam, lParam, result);
}

bool DialogWindowSide::OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) {
    return CGraphicDlg::OnCmdMsg(id, code, extra, handlerInfo);
}

LRESULT DialogWindowSide::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    return CGraphicDlg::WindowProc(message, wParam, lParam);
}

}  // namespace control

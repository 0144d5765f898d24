// The two windows of the control object, kept apart.
//
// CLumbrelCtrl derives from the OLE control, whose window the host embeds,
// and from the browser dialog, the child window that fills it. Each of the
// two bases is a framework Window with a window of its own, so the object
// holds two Window subobjects, and a handler that CLumbrelCtrl declared with
// the signature of a Window virtual would override it in both: the dialog's
// WM_SIZE would run the control's size rule instead of moving the dialog's
// anchored children, the dialog's WM_CREATE would run the control's creation
// of the dialog, and the PreTranslateMessage walk from a focused child up
// through its parents would run the control's keyboard map once for the
// dialog and once more for the control.
//
// The two sides below shut that out. Each overrides every Window virtual,
// `final`:
//   ControlWindowSide hands them on to OleControl, except three that the
//     control needs, which it renames: OnControlCreate, OnControlSize and
//     PreTranslateControlMessage;
//   DialogWindowSide hands them on to CGraphicDlg.
// A class that derives from both can then override no Window virtual at all
// (the compiler refuses), and hears its own window only through the renamed
// hooks. A handler added to Window must be sealed on both sides as well.
#pragma once

#include <windows.h>

#include "browser/GraphicDlg.h"
#include "framework/ole/OleControl.h"
#include "framework/win32/Window.h"

namespace control {

class ControlWindowSide : public framework::ole::OleControl {
public:
    explicit ControlWindowSide(const framework::ole::ControlClass& controlClass) : OleControl(controlClass) {}

    // The control's own window object, as the framework finds it from the
    // control's window handle.
    framework::win32::Window& ControlWindow() { return *this; }
    const framework::win32::Window& ControlWindow() const { return *this; }

    // The message loop's walk through the parents and TranslateAccelerator
    // come here. A message that the thread's message filter has already
    // offered to the control is not offered again: a host whose loop walks
    // the parents as well would otherwise run the keyboard map twice for
    // every key that the map lets go on.
    BOOL PreTranslateMessage(MSG* msg) final;
    bool OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) final;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) final;

protected:
    // The control's WM_CREATE, WM_SIZE and keyboard map. The base versions
    // are OleControl's.
    virtual int OnControlCreate(CREATESTRUCTA* create);
    virtual void OnControlSize(UINT type, int cx, int cy);
    virtual BOOL PreTranslateControlMessage(MSG* msg);

    // The filter's offer goes straight to the map.
    bool FilterMessage(MSG* msg) final;

private:
    void PostNcDestroy() final;
    bool OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) final;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) final;
    int OnCreate(CREATESTRUCTA* create) final;
    void OnDestroy() final;
    void OnSize(UINT type, int cx, int cy) final;
    void OnPaint() final;
    BOOL OnEraseBkgnd(HDC dc) final;
    void OnLButtonDown(UINT flags, POINT point) final;
    void OnLButtonUp(UINT flags, POINT point) final;
    void OnLButtonDblClk(UINT flags, POINT point) final;
    void OnRButtonDown(UINT flags, POINT point) final;
    void OnRButtonUp(UINT flags, POINT point) final;
    void OnMouseMove(UINT flags, POINT point) final;
    BOOL OnMouseWheel(UINT flags, short delta, POINT screenPoint) final;
    void OnVScroll(UINT code, UINT pos, HWND scrollBar) final;
    void OnHScroll(UINT code, UINT pos, HWND scrollBar) final;
    void OnTimer(UINT_PTR id) final;
    BOOL OnSetCursor(HWND window, UINT hitTest, UINT message) final;
    void OnEnable(BOOL enable) final;
    void OnSetFocus(HWND previous) final;
    void OnKillFocus(HWND next) final;
    void OnKeyDown(UINT key, UINT repeat, UINT flags) final;
    void OnChar(UINT key, UINT repeat, UINT flags) final;
    void OnCaptureChanged(HWND window) final;
    void OnGetMinMaxInfo(MINMAXINFO* info) final;
    void OnClose() final;
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) final;
    BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* result) final;
};

class DialogWindowSide : public browser::CGraphicDlg {
public:
    // The control passes no parent: it gives its window when it makes the
    // dialog in its WM_CREATE.
    DialogWindowSide() : CGraphicDlg(nullptr) {}

    // The dialog's window object, as the framework finds it from the
    // dialog's window handle.
    framework::win32::Window& DialogWindow() { return *this; }
    const framework::win32::Window& DialogWindow() const { return *this; }

    BOOL PreTranslateMessage(MSG* msg) final;
    bool OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) final;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) final;

private:
    void PostNcDestroy() final;
    bool OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) final;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) final;
    int OnCreate(CREATESTRUCTA* create) final;
    void OnDestroy() final;
    void OnSize(UINT type, int cx, int cy) final;
    void OnPaint() final;
    BOOL OnEraseBkgnd(HDC dc) final;
    void OnLButtonDown(UINT flags, POINT point) final;
    void OnLButtonUp(UINT flags, POINT point) final;
    void OnLButtonDblClk(UINT flags, POINT point) final;
    void OnRButtonDown(UINT flags, POINT point) final;
    void OnRButtonUp(UINT flags, POINT point) final;
    void OnMouseMove(UINT flags, POINT point) final;
    BOOL OnMouseWheel(UINT flags, short delta, POINT screenPoint) final;
    void OnVScroll(UINT code, UINT pos, HWND scrollBar) final;
    void OnHScroll(UINT code, UINT pos, HWND scrollBar) final;
    void OnTimer(UINT_PTR id) final;
    BOOL OnSetCursor(HWND window, UINT hitTest, UINT message) final;
    void OnEnable(BOOL enable) final;
    void OnSetFocus(HWND previous) final;
    void OnKillFocus(HWND next) final;
    void OnKeyDown(UINT key, UINT repeat, UINT flags) final;
    void OnChar(UINT key, UINT repeat, UINT flags) final;
    void OnCaptureChanged(HWND window) final;
    void OnGetMinMaxInfo(MINMAXINFO* info) final;
    void OnClose() final;
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) final;
    BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* result) final;
};

}  // namespace control

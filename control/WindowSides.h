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

// Every Window handler that each side hands on to its base unchanged:
// result, name, parameters, arguments. OnCreate and OnSize are sealed by
// hand, since the control side renames them, and so are the public ones.
#define LUMBREL_WINDOW_HANDLERS_HANDED_ON(X)                                                         \
    X(void, PostNcDestroy, (), ())                                                                   \
    X(bool, OnChildNotify, (UINT message, WPARAM wParam, LPARAM lParam, LRESULT * result),           \
      (message, wParam, lParam, result))                                                             \
    X(bool, OnMessage, (UINT message, WPARAM wParam, LPARAM lParam, LRESULT * result),               \
      (message, wParam, lParam, result))                                                             \
    X(void, OnDestroy, (), ())                                                                       \
    X(void, OnPaint, (), ())                                                                         \
    X(BOOL, OnEraseBkgnd, (HDC dc), (dc))                                                            \
    X(void, OnLButtonDown, (UINT flags, POINT point), (flags, point))                                \
    X(void, OnLButtonUp, (UINT flags, POINT point), (flags, point))                                  \
    X(void, OnLButtonDblClk, (UINT flags, POINT point), (flags, point))                              \
    X(void, OnRButtonDown, (UINT flags, POINT point), (flags, point))                                \
    X(void, OnRButtonUp, (UINT flags, POINT point), (flags, point))                                  \
    X(void, OnMouseMove, (UINT flags, POINT point), (flags, point))                                  \
    X(BOOL, OnMouseWheel, (UINT flags, short delta, POINT screenPoint), (flags, delta, screenPoint)) \
    X(void, OnVScroll, (UINT code, UINT pos, HWND scrollBar), (code, pos, scrollBar))                \
    X(void, OnHScroll, (UINT code, UINT pos, HWND scrollBar), (code, pos, scrollBar))                \
    X(void, OnTimer, (UINT_PTR id), (id))                                                            \
    X(BOOL, OnSetCursor, (HWND window, UINT hitTest, UINT message), (window, hitTest, message))      \
    X(void, OnEnable, (BOOL enable), (enable))                                                       \
    X(void, OnSetFocus, (HWND previous), (previous))                                                 \
    X(void, OnKillFocus, (HWND next), (next))                                                        \
    X(void, OnKeyDown, (UINT key, UINT repeat, UINT flags), (key, repeat, flags))                    \
    X(void, OnChar, (UINT key, UINT repeat, UINT flags), (key, repeat, flags))                       \
    X(void, OnCaptureChanged, (HWND window), (window))                                               \
    X(void, OnGetMinMaxInfo, (MINMAXINFO * info), (info))                                            \
    X(void, OnClose, (), ())                                                                         \
    X(BOOL, OnCommand, (WPARAM wParam, LPARAM lParam), (wParam, lParam))                             \
    X(BOOL, OnNotify, (WPARAM wParam, LPARAM lParam, LRESULT * result), (wParam, lParam, result))

#define LUMBREL_SEAL_WINDOW_HANDLER(Result, Name, Parameters, Arguments) Result Name Parameters final;

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
    int OnCreate(CREATESTRUCTA* create) final;
    void OnSize(UINT type, int cx, int cy) final;
    LUMBREL_WINDOW_HANDLERS_HANDED_ON(LUMBREL_SEAL_WINDOW_HANDLER)
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
    int OnCreate(CREATESTRUCTA* create) final;
    void OnSize(UINT type, int cx, int cy) final;
    LUMBREL_WINDOW_HANDLERS_HANDED_ON(LUMBREL_SEAL_WINDOW_HANDLER)
};

}  // namespace control

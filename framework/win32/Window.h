// A window object bound to its handle, with one typed handler per message.
//
// A class derives from Window and overrides the handlers of the messages it
// cares about; every handler's base version does what the window would have
// done anyway (Default()). Messages without a typed handler reach
// OnMessage(). Commands travel through OnCmdMsg(id, code): WM_COMMAND and
// WM_NOTIFY from a child are first offered back to the child (reflection),
// then to the window's own OnCmdMsg.
//
//   class Counter : public framework::win32::Window {
//   protected:
//       void OnLButtonDown(UINT, POINT) override { ++clicks_; Invalidate(true); }
//       void OnPaint() override { PaintDc dc(*this); ... }
//   };
//   Counter counter;
//   counter.CreateEx(0, Window::RegisterWindowClass(CS_DBLCLKS, arrow, brush), "", WS_CHILD | WS_VISIBLE,
//                    rect, parent, 1000);
//
// The object's address lives in the window: in its extra bytes for classes
// registered here, in a window property for windows subclassed after the
// fact; it is cleared at WM_NCDESTROY, after which PostNcDestroy runs. No
// exception leaves a window procedure: each is caught at the procedure and
// handed to the exception reporter of Application.h.
#pragma once

#include <windows.h>

#include <string>

#include "framework/RuntimeClass.h"

namespace framework::win32 {

class CommandTarget : public framework::Object {
    LUMBREL_DECLARE_RUNTIME_CLASS(CommandTarget)

public:
    // Handles command `id` with notification `code`; true when handled.
    virtual bool OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo);
};

class Window : public CommandTarget {
    LUMBREL_DECLARE_RUNTIME_CLASS(Window)

public:
    Window() = default;
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    HWND Handle() const { return hwnd_; }
    bool IsAlive() const { return hwnd_ != nullptr && ::IsWindow(hwnd_); }

    // The object bound to `hwnd`, or null for a window not made by this
    // framework.
    static Window* FromHandle(HWND hwnd);

    // A window class of this framework with the given style, cursor,
    // background and icon; registered once per combination, like the classic
    // framework's generated class names.
    static std::string RegisterWindowClass(UINT classStyle, HCURSOR cursor = nullptr,
                                           HBRUSH background = nullptr, HICON icon = nullptr);
    // Unregisters every class that RegisterWindowClass has given out in this
    // module. The system keeps a module's classes after the module is
    // unloaded, with procedures that point where its code was: a module
    // calls this as it unloads, so that a later load makes its own.
    static void UnregisterWindowClasses();

    bool CreateEx(DWORD exStyle, const std::string& className, const char* text, DWORD style,
                  const RECT& rect, HWND parent, UINT id);
    // Takes over a window made elsewhere (a dialog's control, a dialog).
    bool SubclassWindow(HWND hwnd);
    // Gives the window back to its original procedure and unbinds it.
    HWND UnsubclassWindow();
    void DestroyWindow();

    // Called by the message loop, innermost window first, before a message is
    // dispatched; true when the message has been dealt with.
    virtual BOOL PreTranslateMessage(MSG* msg);

    // Sends `message` through this window's procedure, as SendMessage does.
    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    BOOL Post(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;

    // Small helpers over the handle.
    UINT GetDlgCtrlID() const;
    HWND GetParent() const;
    RECT GetClientRect() const;
    RECT GetWindowRect() const;
    void Invalidate(bool erase = true) const;
    void InvalidateRect(const RECT& rect, bool erase) const;
    void UpdateWindow() const;
    int GetScrollPos(int bar) const;
    int SetScrollPos(int bar, int pos, bool redraw) const;
    bool GetScrollInfo(int bar, SCROLLINFO* info, UINT mask) const;
    bool SetScrollInfo(int bar, SCROLLINFO* info, bool redraw) const;
    UINT_PTR SetTimer(UINT_PTR id, UINT elapse) const;
    bool KillTimer(UINT_PTR id) const;

    // Dispatches one message; public so that tests and subclasses chaining
    // messages can drive it directly.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);

protected:
    // The original behaviour for the message being handled: the subclassed
    // procedure, the dialog procedure, or DefWindowProc.
    LRESULT Default();
    // Called after the last message; the window handle is gone. An object
    // that allocates itself per window may delete itself here.
    virtual void PostNcDestroy() {}

    // Reflection: a control sees its own WM_COMMAND or WM_NOTIFY before its
    // parent does. True with *result set when handled.
    virtual bool OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result);
    // Messages without a typed handler; true with *result set when handled.
    virtual bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result);

    virtual int OnCreate(CREATESTRUCTA* create);
    virtual void OnDestroy();
    virtual void OnSize(UINT type, int cx, int cy);
    virtual void OnPaint();
    virtual BOOL OnEraseBkgnd(HDC dc);
    virtual void OnLButtonDown(UINT flags, POINT point);
    virtual void OnLButtonUp(UINT flags, POINT point);
    virtual void OnLButtonDblClk(UINT flags, POINT point);
    virtual void OnRButtonDown(UINT flags, POINT point);
    virtual void OnRButtonUp(UINT flags, POINT point);
    virtual void OnMouseMove(UINT flags, POINT point);
    virtual BOOL OnMouseWheel(UINT flags, short delta, POINT screenPoint);
    virtual void OnVScroll(UINT code, UINT pos, HWND scrollBar);
    virtual void OnHScroll(UINT code, UINT pos, HWND scrollBar);
    virtual void OnTimer(UINT_PTR id);
    virtual BOOL OnSetCursor(HWND window, UINT hitTest, UINT message);
    virtual void OnEnable(BOOL enable);
    virtual void OnSetFocus(HWND previous);
    virtual void OnKillFocus(HWND next);
    virtual void OnKeyDown(UINT key, UINT repeat, UINT flags);
    virtual void OnChar(UINT key, UINT repeat, UINT flags);
    virtual void OnCaptureChanged(HWND window);
    virtual void OnGetMinMaxInfo(MINMAXINFO* info);
    virtual void OnClose();
    // WM_COMMAND: reflection to a child control, then OnCmdMsg(id, code).
    virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);
    // WM_NOTIFY: reflection to the sending control, then OnCmdMsg.
    virtual BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* result);

    HWND hwnd_ = nullptr;

private:
    friend LRESULT CALLBACK WindowProcThunk(HWND, UINT, WPARAM, LPARAM);
    friend class Dialog;
    void Bind(HWND hwnd, WNDPROC superProc, bool viaProperty);
    void Unbind();
    LRESULT Dispatch(UINT message, WPARAM wParam, LPARAM lParam);

    WNDPROC superProc_ = nullptr;
    bool boundViaProperty_ = false;
};

LRESULT CALLBACK WindowProcThunk(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

// The instance whose resources (dialog templates, strings, bitmaps) this
// framework loads: the module that holds them.
HINSTANCE ResourceModule();
void SetResourceModule(HINSTANCE module);

}  // namespace framework::win32

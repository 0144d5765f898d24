// The Lumbrel control: the object that the host embeds. Its window is filled
// by the browser dialog; the host drives it through the eight members of
// _DLumbrel and hears of selections through ItemSel and ItemDBClick. The
// control takes the keyboard (and the double click) before the dialog does,
// because the dialog navigation of an embedded dialog does not work.
//
// Its bases, in this order, are the OLE control and the browser dialog
// CGraphicDlg, so the browser lives and dies with the control: the OLE side
// is made first, then the dialog side with no parent window (the control
// gives its own window when WM_CREATE makes the dialog). It holds no field of
// its own; every state is the dialog's. It reaches the browser through the
// BrowserSurface virtuals that it inherits (browser/BrowserSurface.h), which
// a test's subclass may replace, and hears from it as its ItemEventSink.
//
// Both bases are framework Windows: the two sides of WindowSides.h keep
// each window's messages to its own handlers, and the control sees its
// window through OnControlCreate, OnControlSize and
// PreTranslateControlMessage.
#pragma once

#include <string>

#include "browser/BrowserSurface.h"
#include "control/LumbrelIds.h"
#include "control/WindowSides.h"

class CLumbrelCtrl : public control::ControlWindowSide,
                     public control::DialogWindowSide,
                     protected browser::ItemEventSink,
                     protected browser::LifetimeAnchor {
public:
    CLumbrelCtrl();
    ~CLumbrelCtrl() override;

    // The class description: identifiers, misc status, pages, user type name.
    static const framework::ole::ControlClass& ControlClass();
    // The dispatch table of _DLumbrel.
    static const framework::ole::DispatchMember* Members(size_t* count);

    // _DLumbrel.
    BOOL GetAspectRatio() const;
    void SetAspectRatio(BOOL value);
    BOOL GetThumbNailState() const;
    void SetThumbNailState(BOOL value);
    void RefreshCombo(const std::string& drive, BOOL insert);
    // Hides CGraphicDlg::SetItemPath, the storing step it begins with.
    void SetItemPath(const std::string& path, long imageCount);
    void DoubleClickFlag(BOOL doubleClick);
    void RefreshControl();
    void RedrawBitmaps();
    void AboutBox();

    // The text of a BSTR argument: the ANSI conversion of all of it, up to
    // its first NUL, since everything downstream takes it as a C string.
    static std::string TextArgument(BSTR text);

protected:
    const framework::ole::DispatchMember* DispatchMembers(size_t* count) const override;
    HRESULT InvokeMember(framework::ole::DispatchCall& call, VARIANT* result) override;
    void OnDraw(HDC dc, const RECT& bounds, const RECT& invalid) override;

    int OnControlCreate(CREATESTRUCTA* create) override;
    void OnControlSize(UINT type, int cx, int cy) override;
    // The keyboard map and the double click, before dispatch.
    BOOL PreTranslateControlMessage(MSG* msg) override;

    // browser::ItemEventSink: the events on the control's connection point.
    // They hide CGraphicDlg::FireItemSel, which is not virtual and reaches
    // them through the sink that the constructor attaches.
    void FireItemSel(browser::GraphicItemInfo& info) override;
    void FireItemDBClick() override;
    // The drive prompt: the container's frame keeps its modeless windows
    // off while it is open.
    void BeginModalQuestion() override;
    void EndModalQuestion() override;

    // browser::LifetimeAnchor: a reference of the control's own, so that a
    // host's last release inside an event ends the control only when the
    // road that fired it has returned.
    void Hold() override;
    void Unhold() override;

private:
    HWND ControlHandle() const { return ControlWindow().Handle(); }
    // Whether the browser's window still exists: a host may destroy it
    // inside any event.
    bool BrowserAlive() const;
    HWND DialogItem(int id) const;
    LRESULT SendToItem(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    void FocusItem(int id) const;

    // A double click in gallery or tree fires its events and lets the
    // message go on (true); anywhere else the map stops at once (false).
    bool PreTranslateDoubleClick(const MSG& msg);
    // True when a key row has handled the key.
    bool PreTranslateKeyDown(const MSG& msg);
    bool PreTranslateSysKeyDown(const MSG& msg);
    // F6 or Tab on the tree: the gallery takes the focus at its first cell.
    void FocusGalleryFromTree();
    // An arrow key's move to cell `index`.
    void MoveGalleryTo(int index);
    // The member of `call`, without the barrier that InvokeMember puts
    // around it.
    HRESULT RunMember(framework::ole::DispatchCall& call, VARIANT* result);
};

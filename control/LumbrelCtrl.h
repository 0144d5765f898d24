// The Lumbrel control: the object that the host embeds. Its window is filled
// by the browser dialog; the host drives it through the eight members of
// _DLumbrel and hears of selections through ItemSel and ItemDBClick. The
// control takes the keyboard (and the double click) before the dialog does,
// because the dialog navigation of an embedded dialog does not work.
//
// Everything of the browser is reached through browser::BrowserSurface
// (browser/BrowserSurface.h), which the control owns: the module's control
// owns a browser::CGraphicDlg. Without one the members that need the browser
// do nothing and the window stays empty.
#pragma once

#include <memory>
#include <string>

#include "browser/BrowserSurface.h"
#include "control/LumbrelIds.h"
#include "framework/ole/OleControl.h"

class CLumbrelCtrl : public framework::ole::OleControl, private browser::ItemEventSink {
public:
    explicit CLumbrelCtrl(std::unique_ptr<browser::BrowserSurface> browser = nullptr);
    // The control as the module makes it: with the browser dialog.
    static CLumbrelCtrl* CreateWithBrowser();
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
    void SetItemPath(const std::string& path, long imageCount);
    void DoubleClickFlag(BOOL doubleClick);
    void RefreshControl();
    void RedrawBitmaps();
    void AboutBox();

    // The keyboard map and the double click, before dispatch.
    BOOL PreTranslateMessage(MSG* msg) override;

    browser::BrowserSurface* GetBrowser() const { return browser_.get(); }

    // The text of a BSTR argument: the ANSI conversion of all of it, up to
    // its first NUL, since everything downstream takes it as a C string.
    static std::string TextArgument(BSTR text);

protected:
    const framework::ole::DispatchMember* DispatchMembers(size_t* count) const override;
    HRESULT InvokeMember(framework::ole::DispatchCall& call, VARIANT* result) override;
    void OnDraw(HDC dc, const RECT& bounds, const RECT& invalid) override;

    int OnCreate(CREATESTRUCTA* create) override;
    void OnSize(UINT type, int cx, int cy) override;

private:
    // browser::ItemEventSink
    void FireItemSel(browser::GraphicItemInfo& info) override;
    void FireItemDBClick() override;

    HWND BrowserWindow() const;
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

    std::unique_ptr<browser::BrowserSurface> browser_;
};

// The real control as a host has it: created, given a site in a frame window
// of the test's own, activated in place and UI-active, its events advised to
// a recording sink whose reaction a test may set; and the user's input as a
// host's message loop delivers it (posted mouse and key messages, given out
// by a plain PeekMessage loop, so that the control's message filter sees
// them first). The reference the test holds is the host's only one.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <string>
#include <vector>

#include "BrowserTestSupport.h"
#include "OleTestSupport.h"
#include "control/LumbrelCtrl.h"

namespace browsertest {

class EmbeddedControl {
public:
    // `activate` false leaves the control created, with its sink advised,
    // but without a site until Embed. A UI-active control is also held by
    // the host's frame (its active object); one only active in place is
    // held by nothing but the host's reference.
    explicit EmbeddedControl(bool activate = true, LONG verb = OLEIVERB_UIACTIVATE);
    ~EmbeddedControl();
    // The site and the first activation.
    bool Embed();
    EmbeddedControl(const EmbeddedControl&) = delete;
    EmbeddedControl& operator=(const EmbeddedControl&) = delete;

    // Whether creation, embedding and advising all worked.
    bool Ok() const { return ok_; }
    IUnknown* Unknown() const { return static_cast<IOleObject*>(control_); }
    // Null once the host has let go of the control.
    CLumbrelCtrl* Control() const { return control_; }
    browser::CGraphicDlg& Dialog() const { return *control_; }
    controltest::TestSite& Site() const { return *site_; }
    HWND Item(int id) const;

    // ---- The host's side
    // The events so far, and the host's reaction to each, run after it is
    // recorded (the event's number from 0 is events().size() - 1).
    std::vector<controltest::RecordedEvent>& Events() { return events_; }
    const std::vector<controltest::RecordedEvent>& Events() const { return events_; }
    std::vector<GraphicItemInfo> Records() const;
    std::vector<DISPID> Kinds() const;
    std::function<void()> onEvent;

    // The host's last reference goes (inside an event, as a picker closes):
    // its own pointer, and the one its frame keeps to the control while the
    // control is active in its user interface (a click or the focus makes it
    // so).
    void Release();
    // What a host does to close a picker: stop listening, close, take the
    // site back, release.
    void CloseAndRelease();
    // The host is done: CloseAndRelease, then its site and sink go too, and
    // with the site its frame window. Nothing of the host's side works after.
    void Close();
    // The host's frame window, and with it the control's windows, goes.
    void DestroyHostWindow();
    // In-place deactivation and a new activation, as a hidden and shown form.
    HRESULT Deactivate();
    HRESULT Activate();
    // The members as a host calls them, through IDispatch.
    HRESULT SetItemPath(const std::string& path, long position);
    HRESULT RefreshControl();
    // SetObjectRects with the site's position grown by dx, dy.
    HRESULT Grow(int dx, int dy);

    // ---- The user's input
    // The top-level node with this text, or the child of `parent`.
    HTREEITEM TreeItem(const std::string& text, HTREEITEM parent = TVI_ROOT) const;
    void ClickTreeItem(HTREEITEM item);
    void DoubleClickTreeItem(HTREEITEM item);
    void ClickGalleryCell(int index);
    void DoubleClickGalleryCell(int index);
    // The focus to `id`, then a key pressed and let go there.
    void PressKey(int id, UINT key);
    // A press and release on the child `id` of the dialog (a radio button).
    void ClickItem(int id);
    // The gallery's cell `index` as laid out now, in its client coordinates.
    POINT GalleryCellCentre(int index) const;

private:
    static void Reaction(controltest::EventRecorder*, void* context);
    void Click(HWND window, POINT point, bool twice);

    CLumbrelCtrl* control_ = nullptr;
    controltest::TestSite* site_ = nullptr;
    controltest::EventRecorder* sink_ = nullptr;
    DWORD cookie_ = 0;
    bool ok_ = false;
    LONG verb_;
    std::vector<controltest::RecordedEvent> events_;
};

// Every heap of the process passes the platform's check. Under Wine's heap
// checking (WINEDEBUG=warn+heap) a freed block is filled with a pattern and
// kept back for a while, and this check finds a freed block that was
// written to; without it the check sees only the heaps' structure.
bool HeapsAreIntact();

// Handles, windows and GDI objects of the process. Where the platform does
// not count them (Wine answers 0), the open handles, the windows of the
// process and the live entries of the GDI handle table are counted instead.
struct ResourceCounts {
    DWORD handles = 0;
    DWORD userObjects = 0;
    DWORD gdiObjects = 0;
};
ResourceCounts CountResources();
std::string Describe(const ResourceCounts& counts);

}  // namespace browsertest

// The seam between the control and the browser dialog that fills it.
//
// CLumbrelCtrl derives from CGraphicDlg, so the browser is the control's own
// second base; the control still reaches every operation of it through these
// virtuals, which CGraphicDlg implements and a test's subclass of the control
// may replace: the dialog's window, the fields that the host sets, the
// navigation and refresh operations, the selection record and the gallery
// facts that the keyboard map moves through. The browser speaks back through
// `ItemEventSink`, which the control implements: ItemSel and ItemDBClick.
//
// What the control does itself, without asking the browser: converting the
// automation arguments, the check boxes and radio buttons of the dialog
// (addressed by their identifiers), focus changes between tree and gallery,
// the gallery's scroll bar reset, the order of the steps of each member and
// keyboard row, and firing the events.
//
// No virtual here may share a name and signature with a member of the
// control: in the derived control it would be overridden by that member.
// That is why storing the host's path is no virtual of this seam: the
// control's automation member SetItemPath(path, count) would take it over.
// The control stores through CGraphicDlg::SetItemPath instead.
#pragma once

#include <windows.h>

#include <string>

#include "browser/GraphicItemInfo.h"

namespace browser {

class ItemEventSink {
public:
    // ItemSel with a VARIANT of type VT_BYREF alone whose reference is
    // `info`: the record itself, valid for the duration of the call.
    virtual void FireItemSel(GraphicItemInfo& info) = 0;
    virtual void FireItemDBClick() = 0;
    // A modal question to the user (the drive prompt) opens and has closed:
    // the host keeps its own modeless windows off in between.
    virtual void BeginModalQuestion() {}
    virtual void EndModalQuestion() {}

protected:
    ~ItemEventSink() = default;
};

// The gallery's numbers that the keyboard map reads.
struct GalleryPosition {
    int itemCount = 0;
    int selectedIndex = -1;
    int currentIndex = -1;
    int totalRows = 0;
    int columns = 0;
};

class BrowserSurface {
public:
    virtual ~BrowserSurface() = default;

    // Where the browser fires its events; null detaches.
    virtual void AttachEvents(ItemEventSink* sink) = 0;

    // Makes the dialog (template 202) as the child of the control's window.
    virtual bool CreateBrowserWindow(HWND parent) = 0;
    // The dialog window; null while it does not exist.
    virtual HWND BrowserWindow() const = 0;

    // Fields set by the host. They are kept whether or not the dialog
    // exists.
    virtual void SetDoubleClickFlag(BOOL flag) = 0;
    virtual void SetLargeThumbnails(BOOL large) = 0;

    // Navigation and refreshing.
    virtual void NavigateToPath(const std::string& path, long position) = 0;
    // Clears the combo's `populated` flag, empties it and gives it the one
    // entry `text` (SetSingleEntry). RefreshCombo calls it whether or not the
    // dialog exists yet.
    virtual void ResetDriveCombo(const std::string& text) = 0;
    // The combo's OnSelChange: rebuilds the tree from the entry shown.
    virtual void RebuildFromDriveCombo() = 0;
    // Gives the gallery a cell size of 0 x 0 and empties it.
    virtual void ClearGallery() = 0;
    virtual void RedrawThumbnails() = 0;
    virtual void OnLargeThumbnails() = 0;
    virtual void OnSmallThumbnails() = 0;

    // The last record sent (`itemInfo`).
    virtual GraphicItemInfo& ItemInfo() = 0;
    // The path of the tree's selected node; false when there is none.
    virtual bool GetSelectedPath(std::string* path) = 0;
    // Fills `itemInfo` for a double click on the tree's node at `path`, the
    // path that GetSelectedPath has just given.
    virtual void PrepareDoubleClick(const std::string& path) = 0;

    // The gallery, for the keyboard map.
    virtual GalleryPosition GetGalleryPosition() const = 0;
    virtual void SetGalleryCurrentIndex(int index) = 0;
    virtual void SetGallerySelection(int index) = 0;
    virtual bool IsGalleryCellVisible(int index) const = 0;
    virtual void EnsureGalleryCellVisible(int index) = 0;
    virtual void SetGalleryTopRow(int row, bool repaint) = 0;
    // Tells the host about the gallery's current item (ItemSel).
    virtual void OnGalleryCommand() = 0;
};

}  // namespace browser

// The browser: the child dialog (template 202) that fills the control. It
// owns what the user sees — the drive list, the tree of folders, containers
// and pictures, the gallery, the two size radio buttons and the aspect box —
// and the state that ties them together, and it tells the host of every
// selection through the ItemEventSink it is given.
//
// Its work is spread over one file per concern:
//   GraphicDlg.cpp         fields, start-up, teardown, message routing, the
//                          surface the control drives
//   GraphicDlgTree.cpp     the tree: paths, levels, placeholders, expansion
//   DriveComboBox.cpp      the drive list and the views it chooses
//   GalleryPopulation.cpp  filling the gallery from a container or a picture
//   Navigation.cpp         tree selection, the size switch, NavigateToPath
//   ItemDelivery.cpp       gallery clicks, double clicks, ItemSel
//
// Each browser has its own thumbnail library (ThumbnailLibrary): its gallery's
// cells point at that library's items, and no other browser in the process
// empties or frees them.
//
// One thread, the host's user-interface thread; no message pump runs inside
// long work, which runs under a wait cursor. Messages that the dialog sends
// itself (tree selections, user message 0x405) are handled before the call
// that sends them returns.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "browser/BrowserIds.h"
#include "browser/BrowserSurface.h"
#include "browser/DriveComboBox.h"
#include "browser/GraphicItemInfo.h"
#include "browser/LifetimeHold.h"
#include "browser/TreeControl.h"
#include "foundation/ResizableDialog.h"
#include "foundation/resstr.h"
#include "gallery/BrowserGalleryWindow.h"

namespace thumbnails {
class CThumbnailLibrary;
}

namespace browser {

struct PreviewRequest;

// The gallery as the dialog keeps it: the browser's gallery, whose row
// count the keyboard map reads. A click in it tells the host before the
// gallery has finished with the click, so each of its messages holds the
// dialog's owner.
class BrowserGallery final : public gallery::CBrowserGalleryWindow {
public:
    BrowserGallery(const SIZE& cell, BOOL withPopupMenu, int kindOfOwner, LifetimeAnchor* owner)
        : CBrowserGalleryWindow(cell, withPopupMenu, kindOfOwner), owner_(owner) {}
    int TotalRows() const { return totalRows; }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        const LifetimeHold hold(owner_);
        return CBrowserGalleryWindow::WindowProc(message, wParam, lParam);
    }

private:
    LifetimeAnchor* owner_;
};

// The system's small-icon list as the tree shows it. The shell owns the list:
// this object only names it and never destroys it.
class SharedImageList {
public:
    void Attach(HIMAGELIST list) { handle_ = list; }
    HIMAGELIST Detach() {
        const HIMAGELIST list = handle_;
        handle_ = nullptr;
        return list;
    }
    HIMAGELIST Get() const { return handle_; }

private:
    HIMAGELIST handle_ = nullptr;
};

// Cell sizes of the gallery, in pixels. The small cell of a single picture
// is larger than a container's on purpose.
constexpr SIZE kLargeCell = {145, 179};
constexpr SIZE kSmallContainerCell = {72, 90};
constexpr SIZE kSmallPictureCell = {77, 108};

// Rendition kinds asked of a container for large and small cells.
constexpr int32_t kLargeRendition = 0x80;
constexpr int32_t kSmallRendition = 0x40;

// The size correction sends a gallery of this height as this height.
constexpr int kCorrectedGalleryHeight = 362;
constexpr int kCorrectionHeight = 358;

// The names of folders and containers at the top of a view that belong to
// the host and are not offered.
bool IsHiddenTopLevelFolder(const std::string& name);
bool IsHiddenTopLevelContainer(const std::string& name);
// Whether a found file name counts as a container: ".qlt", in any case,
// first found at position 1 or later ("a.qlt.txt" counts, ".qlt" does not).
bool IsContainerFileName(const std::string& name);
// A found file's title: its name without the last extension.
std::string FoundFileTitle(const std::string& name);
// The file-name part that a preview request carries: from behind the last
// "\" of the path, at most (index of the path's first "." + 1) characters, so
// a dot early in a folder name shortens it.
std::string PreviewFileNamePart(const std::string& path);
// The pseudo-path of a container's item in the thumbnail library: the
// container path up to its first ".", a "\" and the file-name part of the
// item's own path.
std::string ContainerItemPath(const std::string& containerPath, const std::string& itemPath);
// A thumbnail's target size in a cell: the source size fitted by the cell's
// rule, truncating (see OnPreviewReady).
SIZE LargePreviewSize(int width, int height);
SIZE SmallPreviewSize(int width, int height);
// WM_SIZE's lParam of the size correction for a gallery window of this size.
LPARAM SizeCorrectionParam(int width, int height);
// Whether two texts are equal, case-insensitively, by the user's locale.
bool EqualsNoCase(const std::string& left, const std::string& right);

class CGraphicDlg : public foundation::CResizableDialog, public BrowserSurface {
public:
    // `parent` is where CreateBrowserWindow puts the dialog when it is given
    // none; the control passes null and gives its window at creation.
    explicit CGraphicDlg(HWND parent = nullptr);
    ~CGraphicDlg() override;

    // ---- BrowserSurface ---------------------------------------------------
    void AttachEvents(ItemEventSink* sink) override { events_ = sink; }
    // The object the dialog lives in, held while the dialog works (see
    // LifetimeHold.h); null for a dialog that nothing owns.
    void AttachLifetime(LifetimeAnchor* owner) { lifetime_ = owner; }
    bool CreateBrowserWindow(HWND parent) override;
    HWND BrowserWindow() const override { return hwnd_; }
    // Not virtual: the control's own SetItemPath hides it (BrowserSurface.h).
    void SetItemPath(const std::string& path, long position);
    void SetDoubleClickFlag(BOOL flag) override { doubleClickFlag = flag != FALSE ? 1 : 0; }
    void SetLargeThumbnails(BOOL large) override { largeThumbnails = large != FALSE ? 1 : 0; }
    void NavigateToPath(const std::string& path, long position) override;
    void ResetDriveCombo(const std::string& text) override;
    void RebuildFromDriveCombo() override;
    void ClearGallery() override;
    void RedrawThumbnails() override;
    void OnLargeThumbnails() override;
    void OnSmallThumbnails() override;
    GraphicItemInfo& ItemInfo() override { return itemInfo; }
    bool GetSelectedPath(std::string* path) override;
    void PrepareDoubleClick(const std::string& path) override;
    GalleryPosition GetGalleryPosition() const override;
    void SetGalleryCurrentIndex(int index) override;
    void SetGallerySelection(int index) override;
    bool IsGalleryCellVisible(int index) const override;
    void EnsureGalleryCellVisible(int index) override;
    void SetGalleryTopRow(int row, bool repaint) override;
    void OnGalleryCommand() override;

    // ---- The tree (GraphicDlgTree.cpp) ------------------------------------
    // The path of the tree's caret item, rebuilt from the item texts and the
    // combo's entry; the empty text when nothing is selected. Throws the
    // convention's integer when the Desktop's path cannot be had.
    std::string GetSelectedPath();
    // The path of `item` as expansion uses it: as GetSelectedPath, but a
    // drive of the "MyComputer" view keeps one backslash more. Empty for no item.
    std::string GetExpansionPath(HTREEITEM item);
    // Enumerates one directory under `item`, replacing what it had. Returns 1.
    int FillTreeChildren(const std::string& directoryPath, HTREEITEM item);
    // The top level of a view: the host's folders and containers left out,
    // and a placeholder under each folder that names its first content.
    void FillTreeRoot(const std::string& directoryPath);
    // The drives as roots of the "MyComputer" view; false when the system
    // gives no drive.
    bool InsertDriveRoots();
    void ExpandTreeItem(HTREEITEM item);
    void OnTreeItemExpanding(NMHDR* notification, LRESULT* result);

    // The drive prompt (DrivePrompt.h) for `path`, in DriveComboBox.cpp:
    // the host hears that a modal question is open for its length. Returns
    // the button chosen.
    int PromptDriveNotReady(const std::string& path);

    // ---- The gallery (GalleryPopulation.cpp) ------------------------------
    // This browser's thumbnail library, made at its first use: the items its
    // gallery shows. Both fill routes empty it first, and teardown empties it
    // before the gallery goes.
    thumbnails::CThumbnailLibrary& ThumbnailLibrary();
    // Clears and refills the gallery with the thumbnails of the container at
    // `path` (its full path with extension). Selects nothing, tells nothing.
    void ShowContainer(const std::string& path);
    // User message 0x405: one picture, sized for its cell. Answers 1 when
    // the picture's pixels now belong to the thumbnail library. The message
    // reaches it only while RenderPicture hands a preview over (see
    // OnMessage).
    LRESULT OnPreviewReady(WPARAM wParam, LPARAM lParam);

    // ---- Navigation (Navigation.cpp) --------------------------------------
    void OnTreeSelChanged(NMHDR* notification, LRESULT* result);
    // The first steps of the single-picture route: the file whole in memory
    // (a buffer of four times its length) and the request around it. False
    // when the file will not open; other failures throw.
    bool ReadPictureRequest(const std::string& path, PreviewRequest& request, std::vector<uint8_t>& buffer);

    // ---- Delivery (ItemDelivery.cpp) --------------------------------------
    // A double click in the tree: renders the selected picture (which tells
    // the host with item number 0) and leaves its record, item number 1 and
    // name filled, in itemInfo.
    void PrepareDoubleClick();
    // ItemSel with `info`, when the control has attached itself.
    void FireItemSel(GraphicItemInfo& info);

    // ---- Small steps shared by the routes ----------------------------------
    // The gallery's vertical bar back to nothing: range, page and position 0.
    void ResetGalleryScrollBar();
    // Cell size 0 x 0, no items, the bar reset.
    void EmptyGallery();
    // WM_SIZE to the gallery with its own size, a height of 362 sent as 358.
    void SendSizeCorrection();
    RECT GalleryWindowRect() const;

    // The texts of the string table that the views are named by.
    const std::string& MyComputerText();
    const std::string& DesktopText();
    const std::string& ProductEntryText();

    // ---- Fields, in the order of the dialog's record -----------------------
    int treeNotifyEnabled = 1;
    int largeThumbnails = 1;
    int doubleClickFlag = 0;
    int reservedOne = 1;
    int lastPosition = -1;
    int reservedSix = 6;
    int initialPosition = 0;
    std::string itemPath;
    std::string primaryFolder;
    std::unique_ptr<SharedImageList> systemImageList;
    std::string currentPath;
    HTREEITEM currentTreeItem = nullptr;
    HWND parentWindow = nullptr;
    int folderIconIndex = 0;
    std::unique_ptr<BrowserGallery> gallery;
    GraphicItemInfo itemInfo = EmptyItemInfo();
    CDriveComboBox driveCombo;
    TreeControl tree;

    // Every message holds the dialog's owner for its length.
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

protected:
    BOOL OnInitDialog() override;
    void OnDestroy() override;
    bool OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override;
    // False once the dialog's window is gone: a host may destroy it inside
    // any event, and a road that fired one stops there.
    bool WindowSurvived() const { return IsAlive(); }

private:
    // Binds the combo and the tree to their controls.
    void DoDataExchange();
    // Lets go of everything that was made with the window: the image list,
    // the thumbnails, the gallery, the tree's items, the record of what the
    // window showed. What the host gave the control (its path and position,
    // the size and double-click settings) stays. Runs when the window goes
    // and again at teardown, where it finds nothing left to do.
    void ReleaseWindowState();
    // Reads the primary folder and fills the tree, or navigates to the
    // host's path; FALSE when the registry has no primary folder.
    BOOL FinishStartUp();
    // The steps of one size: cell size, gallery refill or picture re-render.
    void SwitchThumbnailSize(int large);
    // The directory enumeration under a new folder node that decides its
    // button: TEMP placeholders below, as FillTreeChildren makes them.
    void AddChildPlaceholders(const std::string& directoryPath, HTREEITEM node);
    void AddTopLevelPlaceholder(const std::string& directoryPath, HTREEITEM node);
    // A picture's small shell icon at the top of a view: index 1 when the
    // shell gives nothing.
    int TopLevelPictureIcon(const std::string& path);
    // Steps of the single-picture route after reading: render, which calls
    // OnPreviewReady before it returns.
    void RenderPicture(const std::string& path, PreviewRequest& request);

    HWND constructionParent_ = nullptr;
    ItemEventSink* events_ = nullptr;
    std::unique_ptr<thumbnails::CThumbnailLibrary> thumbnailLibrary_;
    LifetimeAnchor* lifetime_ = nullptr;
    // Set while RenderPicture hands a preview over. Any process may send the
    // dialog user message 0x405, whose lParam is a pointer: it is read only
    // while this is set, only when sent from the dialog's own thread, and
    // only once.
    bool previewExpected_ = false;
    foundation::CResString myComputerString_{IDS_MY_COMPUTER};
    foundation::CResString desktopString_{IDS_DESKTOP};
    foundation::CResString productEntryString_{IDS_PRODUCT_ENTRY};
};

}  // namespace browser

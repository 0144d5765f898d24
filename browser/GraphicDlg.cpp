#include "browser/GraphicDlg.h"

#include <climits>

#include "browser/PreviewRender.h"
#include "browser/ShellAccess.h"
#include "foundation/AnchorLayout.h"
#include "foundation/ReportError.h"
#include "thumbnails/ThumbnailLibrary.h"

namespace browser {

namespace {

// The rectangle of a child control in the dialog's client coordinates; empty
// when the control is missing.
RECT ChildRect(HWND dialog, int id) {
    RECT rect = {};
    const HWND child = ::GetDlgItem(dialog, id);
    if (child == nullptr) return rect;
    ::GetWindowRect(child, &rect);
    ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

}  // namespace

bool EqualsNoCase(const std::string& left, const std::string& right) {
    // The user's locale decides, as it does for the file system's names and
    // the tree's sorting: letters beyond ASCII match their other case too.
    // Lengths are passed, so a text stops neither at an embedded NUL nor
    // after it; texts past what an int can count are told apart by size.
    const size_t limit = static_cast<size_t>(INT_MAX);
    if (left.size() > limit || right.size() > limit) return left.size() == right.size() && left == right;
    return ::CompareStringA(LOCALE_USER_DEFAULT, NORM_IGNORECASE, left.data(), static_cast<int>(left.size()),
                            right.data(), static_cast<int>(right.size())) == CSTR_EQUAL;
}

CGraphicDlg::CGraphicDlg(HWND parent) : CResizableDialog(IDD_GRAPHIC_DIALOG), constructionParent_(parent) {}

CGraphicDlg::~CGraphicDlg() {
    // Nothing holds an object that is going.
    lifetime_ = nullptr;
    // The window goes first: its WM_DESTROY lets go of the image list, the
    // library and the gallery, in that order, while the object and the child
    // windows are still whole; then the children go.
    if (IsAlive()) DestroyWindow();
    ReleaseWindowState();
}

void CGraphicDlg::ReleaseWindowState() {
    currentTreeItem = nullptr;
    if (systemImageList) {
        // The list is the shell's: let go of it without destroying it.
        systemImageList->Detach();
        systemImageList.reset();
    }
    // The cells point at the library's items: the library is emptied first.
    if (thumbnailLibrary_) thumbnailLibrary_->ClearItems();
    if (gallery) {
        gallery->RemoveAllItems();
        gallery.reset();
    }
    currentPath.clear();
    itemInfo = EmptyItemInfo();
    parentWindow = nullptr;
    // A tree that reports a selection as it goes must not fill the gallery
    // again; the next window's start turns the notifications back on.
    treeNotifyEnabled = 0;
    tree.Detach();
}

void CGraphicDlg::OnDestroy() {
    ReleaseWindowState();
    CResizableDialog::OnDestroy();
}

LRESULT CGraphicDlg::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const LifetimeHold hold(lifetime_);
    return CResizableDialog::WindowProc(message, wParam, lParam);
}

// ---- Start-up --------------------------------------------------------------------

bool CGraphicDlg::CreateBrowserWindow(HWND parent) {
    return Create(parent != nullptr ? parent : constructionParent_);
}

void CGraphicDlg::DoDataExchange() {
    if (driveCombo.Handle() == nullptr) driveCombo.SubclassWindow(GetDlgItem(IDC_DRIVE_COMBO));
    tree.Attach(GetDlgItem(IDC_FOLDER_TREE));
}

BOOL CGraphicDlg::OnInitDialog() {
    CResizableDialog::OnInitDialog();
    // A window made again after its predecessor went hears its tree again.
    treeNotifyEnabled = 1;
    DoDataExchange();
    parentWindow = ::GetParent(hwnd_);
    if (parentWindow == nullptr) return FALSE;
    try {
        systemImageList = std::make_unique<SharedImageList>();
        if (::SendMessageA(tree.Handle(), TVM_GETIMAGELIST, TVSIL_NORMAL, 0) != 0) systemImageList->Detach();
        const HIMAGELIST list = SystemSmallImageList("c:\\");
        systemImageList->Attach(list);
        ::SendMessageA(tree.Handle(), TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(list));

        char windows[MAX_PATH + 1] = {};
        ::GetWindowsDirectoryA(windows, MAX_PATH);
        folderIconIndex = ShellIconIndex(windows, kSystemSmallIconIndex);

        const HCURSOR arrow = ::LoadCursor(nullptr, IDC_ARROW);
        const RECT placeholder = ChildRect(hwnd_, IDC_GALLERY_PLACEHOLDER);
        gallery = std::make_unique<BrowserGallery>(kLargeCell, FALSE, 3, lifetime_);
        gallery->Create(placeholder, hwnd_, IDC_GALLERY, arrow, 0, 0);
        if (gallery->Handle() != nullptr) ::ShowWindow(gallery->Handle(), SW_SHOW);
        gallery->SetDragEnabled(FALSE);

        using foundation::kAnchorMove;
        using foundation::kAnchorStay;
        using foundation::kAnchorStretch;
        AddAnchor(IDC_DRIVE_COMBO, kAnchorStay, kAnchorStay, true);
        AddAnchor(IDC_FOLDER_TREE, kAnchorStay, kAnchorStretch, true);
        AddAnchor(IDC_PRESERVE_ASPECT, kAnchorStay, kAnchorMove, true);
        AddAnchor(IDC_LARGE_THUMBNAILS, kAnchorStay, kAnchorMove, true);
        AddAnchor(IDC_SMALL_THUMBNAILS, kAnchorStay, kAnchorMove, true);
        AddAnchor(IDC_GALLERY_PLACEHOLDER, kAnchorStretch, kAnchorStretch, true);
        AddAnchor(IDC_GALLERY, kAnchorStretch, kAnchorStretch, true);

        ::SendMessageA(GetDlgItem(IDC_LARGE_THUMBNAILS), BM_SETCHECK, BST_CHECKED, 0);
        return FinishStartUp();
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
    if (systemImageList) systemImageList->Detach();
    systemImageList.reset();
    return FALSE;
}

// ---- Messages --------------------------------------------------------------------

bool CGraphicDlg::OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) {
    if (id == IDC_FOLDER_TREE && extra != nullptr) {
        auto* header = static_cast<NMHDR*>(extra);
        auto* result = static_cast<LRESULT*>(handlerInfo);
        LRESULT ignored = 0;
        if (result == nullptr) result = &ignored;
        switch (header->code) {
            case TVN_SELCHANGEDA:
            case TVN_SELCHANGEDW: OnTreeSelChanged(header, result); return true;
            case TVN_ITEMEXPANDINGA:
            case TVN_ITEMEXPANDINGW: OnTreeItemExpanding(header, result); return true;
            default: break;
        }
    }
    if (extra == nullptr && code == BN_CLICKED) {
        switch (id) {
            case IDC_LARGE_THUMBNAILS: OnLargeThumbnails(); return true;
            case IDC_SMALL_THUMBNAILS: OnSmallThumbnails(); return true;
            case IDC_GALLERY: OnGalleryCommand(); return true;
            default: break;
        }
    }
    return CResizableDialog::OnCmdMsg(id, code, extra, handlerInfo);
}

bool CGraphicDlg::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    if (message == kPreviewReadyMessage) {
        // Another thread's or process's message (InSendMessage), or one that
        // comes while no preview is under way, carries a pointer of nobody
        // knows what: it is answered 0 and not read.
        if (!previewExpected_ || ::InSendMessage()) {
            *result = 0;
            return true;
        }
        previewExpected_ = false;
        *result = OnPreviewReady(wParam, lParam);
        return true;
    }
    return CResizableDialog::OnMessage(message, wParam, lParam, result);
}

// ---- Shared steps ----------------------------------------------------------------

const std::string& CGraphicDlg::MyComputerText() {
    return myComputerString_.GetText();
}

const std::string& CGraphicDlg::DesktopText() {
    return desktopString_.GetText();
}

const std::string& CGraphicDlg::ProductEntryText() {
    return productEntryString_.GetText();
}

RECT CGraphicDlg::GalleryWindowRect() const {
    RECT rect = {};
    if (gallery && gallery->Handle() != nullptr) ::GetWindowRect(gallery->Handle(), &rect);
    return rect;
}

void CGraphicDlg::ResetGalleryScrollBar() {
    if (!gallery || gallery->Handle() == nullptr) return;
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_DISABLENOSCROLL;
    ::SetScrollInfo(gallery->Handle(), SB_VERT, &info, TRUE);
}

void CGraphicDlg::EmptyGallery() {
    if (!gallery) return;
    gallery->SetCellSize(0, 0);
    gallery->RemoveAllItems();
    ResetGalleryScrollBar();
}

LPARAM SizeCorrectionParam(int width, int height) {
    const int sentHeight = height == kCorrectedGalleryHeight ? kCorrectionHeight : height;
    return MAKELPARAM(static_cast<WORD>(width), static_cast<WORD>(sentHeight));
}

void CGraphicDlg::SendSizeCorrection() {
    if (!gallery || gallery->Handle() == nullptr) return;
    const RECT rect = GalleryWindowRect();
    ::SendMessageA(gallery->Handle(), WM_SIZE, 0,
                   SizeCorrectionParam(rect.right - rect.left, rect.bottom - rect.top));
}

// ---- The surface the control drives --------------------------------------------------

void CGraphicDlg::SetItemPath(const std::string& path, long position) {
    itemPath = path;
    initialPosition = static_cast<int>(position);
}

void CGraphicDlg::ResetDriveCombo(const std::string& text) {
    driveCombo.populated = false;
    if (driveCombo.Handle() == nullptr) return;
    driveCombo.ResetContent();
    driveCombo.SetSingleEntry(text);
}

void CGraphicDlg::RebuildFromDriveCombo() {
    if (driveCombo.Handle() != nullptr) driveCombo.OnSelChange();
}

void CGraphicDlg::ClearGallery() {
    if (!gallery) return;
    gallery->SetCellSize(0, 0);
    gallery->RemoveAllItems();
}

void CGraphicDlg::RedrawThumbnails() {
    if (largeThumbnails == 1)
        OnLargeThumbnails();
    else
        OnSmallThumbnails();
}

bool CGraphicDlg::GetSelectedPath(std::string* path) {
    if (path == nullptr) return false;
    try {
        *path = GetSelectedPath();
    } catch (...) {
        path->clear();
        return false;
    }
    return !path->empty();
}

GalleryPosition CGraphicDlg::GetGalleryPosition() const {
    GalleryPosition position;
    if (!gallery) return position;
    position.itemCount = gallery->GetItemCount();
    position.selectedIndex = gallery->SelectedIndex();
    position.currentIndex = gallery->CurrentIndex();
    position.totalRows = gallery->TotalRows();
    position.columns = gallery->Columns();
    return position;
}

void CGraphicDlg::SetGalleryCurrentIndex(int index) {
    if (gallery) gallery->SetCurrentIndex(index);
}

void CGraphicDlg::SetGallerySelection(int index) {
    if (gallery) gallery->SetSelection(index);
}

bool CGraphicDlg::IsGalleryCellVisible(int index) const {
    return gallery && gallery->IsCellVisible(index) != FALSE;
}

void CGraphicDlg::EnsureGalleryCellVisible(int index) {
    if (gallery) gallery->EnsureVisible(index);
}

void CGraphicDlg::SetGalleryTopRow(int row, bool repaint) {
    if (gallery) gallery->SetTopRow(row, repaint ? TRUE : FALSE);
}

}  // namespace browser

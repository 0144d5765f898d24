#include "control/LumbrelCtrl.h"

#include <iterator>

#include "browser/PathExists.h"
#include "control/resource.h"
#include "foundation/ReportError.h"
#include "framework/ole/Strings.h"
#include "framework/win32/Dialog.h"

using framework::ole::DispatchCall;
using framework::ole::DispatchMember;

namespace {

const CLSID kPages[] = {control::kLumbrelPropPageClassId};

const framework::ole::ControlClass kLumbrelClass = {
    CLSID_Lumbrel,
    DIID__DLumbrel,
    DIID__DLumbrelEvents,
    LIBID_LUMBRELLib,
    control::kTypeLibMajor,
    control::kTypeLibMinor,
    control::kMiscStatus,
    IDS_LUMBREL,
    kPages,
    static_cast<UINT>(std::size(kPages)),
    1,
    0,
};

const DispatchMember kMembers[] = {
    {control::kDispidAspectRatio, L"AspectRatio", DispatchMember::kProperty, VT_BOOL, {}, 0},
    {control::kDispidThumbNailState, L"thumbNailState", DispatchMember::kProperty, VT_BOOL, {}, 0},
    {control::kDispidRefreshCombo, L"RefreshCombo", DispatchMember::kMethod, VT_EMPTY, {VT_BSTR, VT_BOOL}, 2},
    {control::kDispidSetItemPath, L"SetItemPath", DispatchMember::kMethod, VT_EMPTY, {VT_BSTR, VT_I4}, 2},
    {control::kDispidDoubleClickFlag, L"DoubleClickFlag", DispatchMember::kMethod, VT_EMPTY, {VT_BOOL}, 1},
    {control::kDispidRefreshControl, L"RefreshControl", DispatchMember::kMethod, VT_EMPTY, {}, 0},
    {control::kDispidRedrawBitmaps, L"RedrawBitmaps", DispatchMember::kMethod, VT_EMPTY, {}, 0},
    {control::kDispidAboutBox, L"AboutBox", DispatchMember::kMethod, VT_EMPTY, {}, 0},
};

BOOL BoolArgument(const framework::ole::Variant& value) {
    return value.Get()->boolVal != VARIANT_FALSE ? TRUE : FALSE;
}

bool PointInWindow(HWND window, POINT point) {
    if (window == nullptr) return false;
    RECT rect = {};
    return ::GetWindowRect(window, &rect) && ::PtInRect(&rect, point);
}

}  // namespace

CLumbrelCtrl::CLumbrelCtrl() : ControlWindowSide(kLumbrelClass) {
    SetInitialSize(control::kInitialWidth, control::kInitialHeight);
    AttachEvents(this);
    AttachLifetime(this);
}

CLumbrelCtrl::~CLumbrelCtrl() {
    // The object is going whatever its windows are sent on the way out.
    AttachLifetime(nullptr);
    // The windows go while both sides are whole: what the dialog and its
    // children are sent on the way out still finds the browser's state.
    const HWND window = ControlHandle();
    if (window != nullptr && ::IsWindow(window)) ::DestroyWindow(window);
    browser::CGraphicDlg::AttachEvents(nullptr);
}

const framework::ole::ControlClass& CLumbrelCtrl::ControlClass() {
    return kLumbrelClass;
}

const DispatchMember* CLumbrelCtrl::Members(size_t* count) {
    if (count != nullptr) *count = std::size(kMembers);
    return kMembers;
}

const DispatchMember* CLumbrelCtrl::DispatchMembers(size_t* count) const {
    return Members(count);
}

std::string CLumbrelCtrl::TextArgument(BSTR text) {
    std::string converted = framework::ole::BstrToAnsi(text);
    const size_t end = converted.find('\0');
    if (end != std::string::npos) converted.resize(end);
    return converted;
}

HRESULT CLumbrelCtrl::InvokeMember(DispatchCall& call, VARIANT* result) {
    if (call.propertyGet) {
        result->vt = VT_BOOL;
        result->boolVal = VARIANT_FALSE;
    }
    // What a member meets on its way stays inside the control: the host's
    // call succeeds and the browser is left as the member left it.
    try {
        return RunMember(call, result);
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
    return S_OK;
}

HRESULT CLumbrelCtrl::RunMember(DispatchCall& call, VARIANT* result) {
    const auto& arguments = call.arguments;
    switch (call.member->id) {
        case control::kDispidAspectRatio:
            if (call.propertyGet) {
                result->vt = VT_BOOL;
                result->boolVal = GetAspectRatio() ? VARIANT_TRUE : VARIANT_FALSE;
            } else {
                SetAspectRatio(BoolArgument(arguments[0]));
            }
            return S_OK;
        case control::kDispidThumbNailState:
            if (call.propertyGet) {
                result->vt = VT_BOOL;
                result->boolVal = GetThumbNailState() ? VARIANT_TRUE : VARIANT_FALSE;
            } else {
                SetThumbNailState(BoolArgument(arguments[0]));
            }
            return S_OK;
        case control::kDispidRefreshCombo:
            RefreshCombo(TextArgument(arguments[0].Get()->bstrVal), BoolArgument(arguments[1]));
            return S_OK;
        case control::kDispidSetItemPath:
            SetItemPath(TextArgument(arguments[0].Get()->bstrVal), arguments[1].Get()->lVal);
            return S_OK;
        case control::kDispidDoubleClickFlag: DoubleClickFlag(BoolArgument(arguments[0])); return S_OK;
        case control::kDispidRefreshControl: RefreshControl(); return S_OK;
        case control::kDispidRedrawBitmaps: RedrawBitmaps(); return S_OK;
        case control::kDispidAboutBox: AboutBox(); return S_OK;
        default: return DISP_E_MEMBERNOTFOUND;
    }
}

// ---- The browser's dialog -------------------------------------------------------------

bool CLumbrelCtrl::BrowserAlive() const {
    const HWND dialog = BrowserWindow();
    return dialog != nullptr && ::IsWindow(dialog);
}

HWND CLumbrelCtrl::DialogItem(int id) const {
    const HWND dialog = BrowserWindow();
    return dialog != nullptr ? ::GetDlgItem(dialog, id) : nullptr;
}

LRESULT CLumbrelCtrl::SendToItem(int id, UINT message, WPARAM wParam, LPARAM lParam) const {
    const HWND item = DialogItem(id);
    return item != nullptr ? ::SendMessageA(item, message, wParam, lParam) : 0;
}

void CLumbrelCtrl::FocusItem(int id) const {
    // Never SetFocus(null): that would take the focus from every window.
    if (const HWND item = DialogItem(id)) ::SetFocus(item);
}

// ---- Members ----------------------------------------------------------------------------

BOOL CLumbrelCtrl::GetAspectRatio() const {
    return static_cast<BOOL>(SendToItem(control::kAspectRatioBox, BM_GETCHECK));
}

void CLumbrelCtrl::SetAspectRatio(BOOL value) {
    SendToItem(control::kAspectRatioBox, BM_SETCHECK, static_cast<WPARAM>(value));
}

BOOL CLumbrelCtrl::GetThumbNailState() const {
    return static_cast<BOOL>(SendToItem(control::kLargeThumbnailsRadio, BM_GETCHECK));
}

void CLumbrelCtrl::SetThumbNailState(BOOL value) {
    if (value == FALSE) {
        SendToItem(control::kSmallThumbnailsRadio, BM_SETCHECK, BST_CHECKED);
        SendToItem(control::kLargeThumbnailsRadio, BM_SETCHECK, BST_UNCHECKED);
        SetLargeThumbnails(FALSE);
    } else {
        SendToItem(control::kLargeThumbnailsRadio, BM_SETCHECK, static_cast<WPARAM>(value));
        SendToItem(control::kSmallThumbnailsRadio, BM_SETCHECK, BST_UNCHECKED);
        SetLargeThumbnails(TRUE);
    }
    RedrawThumbnails();
    SetModifiedFlag(true);
}

void CLumbrelCtrl::RefreshCombo(const std::string& drive, BOOL insert) {
    if (insert == FALSE) return;
    ResetDriveCombo(drive);
    // Navigation needs the dialog's tree and combo; before they exist there
    // is nothing to navigate.
    if (BrowserWindow() != nullptr) NavigateToPath(drive, 0);
}

void CLumbrelCtrl::SetItemPath(const std::string& path, long imageCount) {
    CGraphicDlg::SetItemPath(path, imageCount);
    // Before the dialog exists the stored path is all there is to do:
    // OnInitDialog navigates to it.
    if (BrowserWindow() != nullptr) NavigateToPath(path, imageCount);
}

void CLumbrelCtrl::DoubleClickFlag(BOOL doubleClick) {
    SetDoubleClickFlag(doubleClick);
}

void CLumbrelCtrl::RefreshControl() {
    RebuildFromDriveCombo();
    ClearGallery();
    if (const HWND galleryWindow = DialogItem(control::kGalleryId)) {
        // An empty range with no page; the bar is disabled, not hidden, so
        // that the gallery's client area keeps its width for the next fill.
        SCROLLINFO info = {};
        info.cbSize = sizeof info;
        info.fMask = SIF_RANGE | SIF_PAGE | SIF_DISABLENOSCROLL;
        ::SetScrollInfo(galleryWindow, SB_VERT, &info, TRUE);
    }
}

void CLumbrelCtrl::RedrawBitmaps() {
    RedrawThumbnails();
}

void CLumbrelCtrl::AboutBox() {
    framework::win32::Dialog about(IDD_ABOUTBOX_LUMBREL);
    const HWND window = ControlHandle();
    const ModalScope modal(*this);
    about.DoModal(window != nullptr ? window : ::GetActiveWindow());
}

// ---- Events -----------------------------------------------------------------------------

void CLumbrelCtrl::FireItemSel(browser::GraphicItemInfo& info) {
    VARIANT argument;
    argument.vt = VT_BYREF;
    argument.byref = &info;
    FireEvent(control::kDispidItemSel, &argument, 1);
}

void CLumbrelCtrl::FireItemDBClick() {
    FireEvent(control::kDispidItemDBClick, nullptr, 0);
}

void CLumbrelCtrl::Hold() {
    static_cast<IOleObject*>(this)->AddRef();
}

void CLumbrelCtrl::Unhold() {
    static_cast<IOleObject*>(this)->Release();
}

void CLumbrelCtrl::BeginModalQuestion() {
    BeginModal();
}

void CLumbrelCtrl::EndModalQuestion() {
    EndModal();
}

// ---- Window -------------------------------------------------------------------------------

int CLumbrelCtrl::OnControlCreate(CREATESTRUCTA* create) {
    if (ControlWindowSide::OnControlCreate(create) == -1) return -1;
    // A dialog that cannot be made leaves the control's window empty, not
    // missing.
    CreateBrowserWindow(ControlHandle());
    return 0;
}

void CLumbrelCtrl::OnControlSize(UINT type, int cx, int cy) {
    ControlWindowSide::OnControlSize(type, cx, cy);
    const HWND dialog = BrowserWindow();
    // The size type is compared with the dialog's identifier, which is 0:
    // only SIZE_RESTORED moves the dialog.
    if (dialog == nullptr || type != static_cast<UINT>(::GetDlgCtrlID(dialog))) return;
    RECT rect = ControlWindow().GetWindowRect();
    ::MapWindowPoints(nullptr, ControlHandle(), reinterpret_cast<POINT*>(&rect), 2);
    ::MoveWindow(dialog, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, TRUE);
    SetControlSize(cx, cy);
}

void CLumbrelCtrl::OnDraw(HDC, const RECT&, const RECT&) {
    // The dialog covers the whole control.
}

// ---- The keyboard map ------------------------------------------------------------------------

BOOL CLumbrelCtrl::PreTranslateControlMessage(MSG* msg) {
    if (msg == nullptr) return FALSE;
    switch (msg->message) {
        case WM_LBUTTONDBLCLK:
            if (!PreTranslateDoubleClick(*msg)) return FALSE;
            break;
        case WM_KEYDOWN:
            if (PreTranslateKeyDown(*msg)) return TRUE;
            break;
        case WM_SYSKEYDOWN:
            if (PreTranslateSysKeyDown(*msg)) return TRUE;
            break;
        default: break;
    }
    return ControlWindowSide::PreTranslateControlMessage(msg);
}

bool CLumbrelCtrl::PreTranslateDoubleClick(const MSG& msg) {
    const HWND galleryWindow = DialogItem(control::kGalleryId);
    const HWND treeWindow = DialogItem(control::kTreeId);
    // A host that ends the browser inside ItemSel hears no ItemDBClick.
    if (PointInWindow(galleryWindow, msg.pt)) {
        if (GetGalleryPosition().currentIndex != -1) {
            FireItemSel(ItemInfo());
            if (BrowserAlive()) FireItemDBClick();
        }
        return true;
    }
    if (PointInWindow(treeWindow, msg.pt)) {
        std::string path;
        if (GetSelectedPath(&path) && browser::PathExistsOnDisk(path)) {
            PrepareDoubleClick(path);
            if (BrowserAlive() && ItemInfo().itemNumber > 0) {
                FireItemSel(ItemInfo());
                if (BrowserAlive()) FireItemDBClick();
            }
        }
        return true;
    }
    return false;
}

void CLumbrelCtrl::FocusGalleryFromTree() {
    FocusItem(control::kGalleryId);
    SetGallerySelection(0);
    if (!IsGalleryCellVisible(0)) EnsureGalleryCellVisible(0);
    SetGalleryTopRow(0, true);
}

void CLumbrelCtrl::MoveGalleryTo(int index) {
    SetGalleryCurrentIndex(index);
    SetGallerySelection(index);
    if (!IsGalleryCellVisible(index)) EnsureGalleryCellVisible(index);
    // The move has happened whatever telling the host meets: the key stays
    // handled and never reaches the gallery.
    try {
        OnGalleryCommand();
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
    }
}

bool CLumbrelCtrl::PreTranslateKeyDown(const MSG& msg) {
    const int focus = ::GetDlgCtrlID(::GetFocus());
    const bool onGallery = focus == control::kGalleryId;
    const bool onTree = focus == control::kTreeId;
    switch (msg.wParam) {
        case VK_F6:
            if (onGallery)
                FocusItem(control::kTreeId);
            else if (onTree)
                FocusGalleryFromTree();
            else
                FocusItem(control::kTreeId);
            return false;
        case VK_TAB:
            if (onTree) {
                FocusGalleryFromTree();
                return true;
            }
            if (onGallery) {
                FocusItem(control::kTreeId);
                return true;
            }
            return false;
        case VK_RIGHT:
        case VK_LEFT:
        case VK_DOWN:
        case VK_UP: {
            if (!onGallery) return false;
            const browser::GalleryPosition cells = GetGalleryPosition();
            const int i = cells.selectedIndex;
            int next = -1;
            bool move = false;
            if (msg.wParam == VK_RIGHT) {
                next = i + 1;
                // The row count divides: a gallery without rows moves nowhere.
                move =
                    next < cells.itemCount && cells.totalRows > 0 && next / cells.totalRows < cells.columns;
            } else if (msg.wParam == VK_LEFT) {
                next = i - 1;
                move = next >= 0;
            } else if (msg.wParam == VK_DOWN) {
                next = i + cells.columns;
                move = next < cells.itemCount;
            } else {
                next = i - cells.columns;
                move = next >= 0;
            }
            if (move) MoveGalleryTo(next);
            return true;
        }
        case VK_F5: RefreshControl(); return true;
        default: return false;
    }
}

bool CLumbrelCtrl::PreTranslateSysKeyDown(const MSG& msg) {
    switch (msg.wParam) {
        case 'A':
            if (SendToItem(control::kAspectRatioBox, BM_GETCHECK) == BST_UNCHECKED)
                SendToItem(control::kAspectRatioBox, BM_SETCHECK, BST_CHECKED);
            else
                SendToItem(control::kAspectRatioBox, BM_SETCHECK, BST_UNCHECKED);
            return true;
        case 'L':
            SendToItem(control::kLargeThumbnailsRadio, BM_SETCHECK, BST_CHECKED);
            OnLargeThumbnails();
            SendToItem(control::kSmallThumbnailsRadio, BM_SETCHECK, BST_UNCHECKED);
            return true;
        case 'R': RefreshControl(); return true;
        case 'S':
            SendToItem(control::kSmallThumbnailsRadio, BM_SETCHECK, BST_CHECKED);
            OnSmallThumbnails();
            SendToItem(control::kLargeThumbnailsRadio, BM_SETCHECK, BST_UNCHECKED);
            return true;
        default: return false;
    }
}

#include "EmbeddedControl.h"

#include <oleauto.h>

#include <cstdio>
#include <cstring>

#include "control/LumbrelIds.h"
#include "framework/win32/ComPtr.h"

namespace browsertest {

using controltest::ComPtr;

EmbeddedControl::EmbeddedControl(bool activate, LONG verb) : verb_(verb) {
    control_ = new CLumbrelCtrl();
    site_ = new controltest::TestSite();
    sink_ = new controltest::EventRecorder(&events_, "host");
    sink_->onEvent = &EmbeddedControl::Reaction;
    sink_->context = this;
    cookie_ = controltest::AdviseEvents(Unknown(), sink_);
    ok_ = cookie_ != 0 && (!activate || Embed());
}

bool EmbeddedControl::Embed() {
    return controltest::Embed(Unknown(), site_, verb_) == S_OK && control_->BrowserWindow() != nullptr;
}

EmbeddedControl::~EmbeddedControl() {
    Close();
}

void EmbeddedControl::Close() {
    onEvent = nullptr;
    if (control_ != nullptr) CloseAndRelease();
    if (sink_ != nullptr) sink_->Release();
    sink_ = nullptr;
    if (site_ != nullptr) site_->Release();
    site_ = nullptr;
}

void EmbeddedControl::Reaction(controltest::EventRecorder*, void* context) {
    auto* self = static_cast<EmbeddedControl*>(context);
    if (self->onEvent) self->onEvent();
}

HWND EmbeddedControl::Item(int id) const {
    if (control_ == nullptr || control_->BrowserWindow() == nullptr) return nullptr;
    return ::GetDlgItem(control_->BrowserWindow(), id);
}

std::vector<GraphicItemInfo> EmbeddedControl::Records() const {
    std::vector<GraphicItemInfo> records;
    for (const controltest::RecordedEvent& event : events_)
        if (event.dispid == control::kDispidItemSel) records.push_back(event.record);
    return records;
}

std::vector<DISPID> EmbeddedControl::Kinds() const {
    std::vector<DISPID> kinds;
    for (const controltest::RecordedEvent& event : events_) kinds.push_back(event.dispid);
    return kinds;
}

// ---- The host's side ----------------------------------------------------------------

void EmbeddedControl::Release() {
    CLumbrelCtrl* control = control_;
    control_ = nullptr;
    if (site_ != nullptr) site_->activeObject.Reset();
    if (control != nullptr) static_cast<IOleObject*>(control)->Release();
}

void EmbeddedControl::CloseAndRelease() {
    if (control_ == nullptr) return;
    if (cookie_ != 0) controltest::UnadviseEvents(Unknown(), cookie_);
    cookie_ = 0;
    controltest::Unembed(Unknown());
    Release();
}

void EmbeddedControl::DestroyHostWindow() {
    ::DestroyWindow(site_->Frame());
}

HRESULT EmbeddedControl::Deactivate() {
    ComPtr<IOleInPlaceObject> inPlace;
    HRESULT hr = Unknown()->QueryInterface(IID_IOleInPlaceObject, inPlace.PutVoid());
    return SUCCEEDED(hr) ? inPlace->InPlaceDeactivate() : hr;
}

HRESULT EmbeddedControl::Activate() {
    ComPtr<IOleObject> ole;
    HRESULT hr = Unknown()->QueryInterface(IID_IOleObject, ole.PutVoid());
    if (FAILED(hr)) return hr;
    RECT rect = site_->position;
    return ole->DoVerb(verb_, nullptr, site_, 0, site_->Frame(), &rect);
}

HRESULT EmbeddedControl::SetItemPath(const std::string& path, long position) {
    ComPtr<IDispatch> dispatch;
    HRESULT hr = Unknown()->QueryInterface(IID_IDispatch, dispatch.PutVoid());
    if (FAILED(hr)) return hr;
    const std::wstring wide(path.begin(), path.end());
    VARIANT arguments[2];
    ::VariantInit(&arguments[0]);
    ::VariantInit(&arguments[1]);
    arguments[1].vt = VT_BSTR;
    arguments[1].bstrVal = ::SysAllocString(wide.c_str());
    arguments[0].vt = VT_I4;
    arguments[0].lVal = position;
    DISPPARAMS params = {arguments, nullptr, 2, 0};
    hr = dispatch->Invoke(control::kDispidSetItemPath, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr,
                          nullptr, nullptr);
    ::VariantClear(&arguments[1]);
    return hr;
}

HRESULT EmbeddedControl::RefreshControl() {
    ComPtr<IDispatch> dispatch;
    HRESULT hr = Unknown()->QueryInterface(IID_IDispatch, dispatch.PutVoid());
    if (FAILED(hr)) return hr;
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    return dispatch->Invoke(control::kDispidRefreshControl, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr,
                            nullptr, nullptr);
}

HRESULT EmbeddedControl::Grow(int dx, int dy) {
    ComPtr<IOleInPlaceObject> inPlace;
    HRESULT hr = Unknown()->QueryInterface(IID_IOleInPlaceObject, inPlace.PutVoid());
    if (FAILED(hr)) return hr;
    RECT position = site_->position;
    position.right += dx;
    position.bottom += dy;
    return inPlace->SetObjectRects(&position, &position);
}

// ---- The user's input --------------------------------------------------------------------

HTREEITEM EmbeddedControl::TreeItem(const std::string& text, HTREEITEM parent) const {
    const browser::TreeControl& tree = Dialog().tree;
    for (HTREEITEM item = parent == TVI_ROOT ? tree.GetRootItem() : tree.GetChildItem(parent);
         item != nullptr; item = tree.GetNextSiblingItem(item))
        if (tree.GetItemText(item) == text) return item;
    return nullptr;
}

void EmbeddedControl::Click(HWND window, POINT point, bool twice) {
    POINT screen = point;
    ::ClientToScreen(window, &screen);
    ::SetCursorPos(screen.x, screen.y);
    // The move that the pointer makes reaches the window before the press,
    // as it would for a user: a tree takes a move after a press for a drag.
    controltest::PumpMessages();
    const LPARAM where = MAKELPARAM(point.x, point.y);
    ::PostMessageA(window, WM_LBUTTONDOWN, MK_LBUTTON, where);
    ::PostMessageA(window, WM_LBUTTONUP, 0, where);
    if (twice) {
        ::PostMessageA(window, WM_LBUTTONDBLCLK, MK_LBUTTON, where);
        ::PostMessageA(window, WM_LBUTTONUP, 0, where);
    }
    controltest::PumpMessages();
}

namespace {

POINT TreeItemCentre(HWND tree, HTREEITEM item) {
    // TVM_GETITEMRECT takes the item in the rectangle's first bytes.
    RECT rect = {};
    static_assert(sizeof rect >= sizeof item, "the item fits");
    std::memcpy(&rect, &item, sizeof item);
    ::SendMessageA(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&rect));
    return POINT{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

}  // namespace

void EmbeddedControl::ClickTreeItem(HTREEITEM item) {
    const HWND tree = Item(control::kTreeId);
    Click(tree, TreeItemCentre(tree, item), false);
}

void EmbeddedControl::DoubleClickTreeItem(HTREEITEM item) {
    const HWND tree = Item(control::kTreeId);
    Click(tree, TreeItemCentre(tree, item), true);
}

POINT EmbeddedControl::GalleryCellCentre(int index) const {
    const browser::BrowserGallery& gallery = *Dialog().gallery;
    const SIZE cell = gallery.GetCellSize();
    const int columns = gallery.Columns() > 0 ? gallery.Columns() : 1;
    const int row = index / columns - gallery.GetScrollPos(SB_VERT);
    return POINT{(index % columns) * cell.cx + cell.cx / 2, row * cell.cy + cell.cy / 2};
}

void EmbeddedControl::ClickGalleryCell(int index) {
    Click(Item(control::kGalleryId), GalleryCellCentre(index), false);
}

void EmbeddedControl::DoubleClickGalleryCell(int index) {
    Click(Item(control::kGalleryId), GalleryCellCentre(index), true);
}

void EmbeddedControl::PressKey(int id, UINT key) {
    const HWND target = Item(id);
    ::SetFocus(target);
    const LPARAM down = 1 | static_cast<LPARAM>(::MapVirtualKeyA(key, MAPVK_VK_TO_VSC) << 16);
    ::PostMessageA(target, WM_KEYDOWN, key, down);
    ::PostMessageA(target, WM_KEYUP, key, down | (static_cast<LPARAM>(3) << 30));
    controltest::PumpMessages();
}

void EmbeddedControl::ClickItem(int id) {
    const HWND item = Item(id);
    RECT rect = {};
    ::GetClientRect(item, &rect);
    Click(item, POINT{rect.right / 2, rect.bottom / 2}, false);
}

// ---- Checks ---------------------------------------------------------------------------

bool HeapsAreIntact() {
    HANDLE heaps[64] = {};
    const DWORD count = ::GetProcessHeaps(64, heaps);
    bool intact = true;
    for (DWORD i = 0; i < count && i < 64; ++i)
        if (!::HeapValidate(heaps[i], 0, nullptr)) intact = false;
    return intact;
}

namespace {

BOOL CALLBACK CountChild(HWND, LPARAM counter) {
    ++*reinterpret_cast<DWORD*>(counter);
    return TRUE;
}

BOOL CALLBACK CountTopLevel(HWND window, LPARAM counter) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process != ::GetCurrentProcessId()) return TRUE;
    ++*reinterpret_cast<DWORD*>(counter);
    ::EnumChildWindows(window, &CountChild, counter);
    return TRUE;
}

DWORD CountOwnWindows() {
    DWORD count = 0;
    ::EnumWindows(&CountTopLevel, reinterpret_cast<LPARAM>(&count));
    for (HWND window = ::FindWindowExA(HWND_MESSAGE, nullptr, nullptr, nullptr); window != nullptr;
         window = ::FindWindowExA(HWND_MESSAGE, window, nullptr, nullptr))
        CountTopLevel(window, reinterpret_cast<LPARAM>(&count));
    return count;
}

// Wine's GDI handles carry their table index in the low word and accept a
// handle without its generation in the high word.
DWORD CountLiveGdiEntries() {
    DWORD count = 0;
    for (ULONG_PTR index = 1; index < 0x10000; ++index)
        if (::GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0) ++count;
    return count;
}

// Kernel handles are multiples of 4 from 4 on; Wine gives them out from the
// bottom of the process's table.
DWORD CountOpenHandles() {
    DWORD count = 0;
    for (ULONG_PTR value = 4; value < 0x10000; value += 4) {
        DWORD flags = 0;
        if (::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++count;
    }
    return count;
}

}  // namespace

ResourceCounts CountResources() {
    ResourceCounts counts;
    if (!::GetProcessHandleCount(::GetCurrentProcess(), &counts.handles) || counts.handles == 0)
        counts.handles = CountOpenHandles();
    counts.userObjects = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS);
    if (counts.userObjects == 0) counts.userObjects = CountOwnWindows();
    counts.gdiObjects = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    if (counts.gdiObjects == 0) counts.gdiObjects = CountLiveGdiEntries();
    return counts;
}

std::string Describe(const ResourceCounts& counts) {
    char text[96];
    std::snprintf(text, sizeof text, "handles %lu, USER %lu, GDI %lu",
                  static_cast<unsigned long>(counts.handles), static_cast<unsigned long>(counts.userObjects),
                  static_cast<unsigned long>(counts.gdiObjects));
    return text;
}

}  // namespace browsertest

#include "framework/ole/OleControl.h"

#include <ole2.h>
#include <oleauto.h>

#include <cstring>
#include <mutex>
#include <vector>

#include "framework/ole/Barrier.h"
#include "framework/ole/Strings.h"
#include "framework/win32/GdiHandles.h"

namespace framework::ole {

using framework::win32::ComPtr;

namespace {

constexpr wchar_t kVersionProperty[] = L"_Version";
constexpr wchar_t kExtentXProperty[] = L"_ExtentX";
constexpr wchar_t kExtentYProperty[] = L"_ExtentY";
// What the stream holds: the version, then the extent's width and height.
constexpr ULONG kStateBytes = 3 * sizeof(DWORD);
// HIMETRIC of the largest window the system makes (32767 pixels at 96 dpi
// is 866,957): anything above that is no control's extent.
constexpr LONG kLargestExtent = 1000000;

bool IsPlausibleExtent(LONG cx, LONG cy) {
    return cx >= 0 && cy >= 0 && cx <= kLargestExtent && cy <= kLargestExtent;
}

// The registered message in which the control's window hears that the focus
// has crossed the edge of its windows.
UINT FocusChangedMessage() {
    static const UINT message = ::RegisterWindowMessageA("Lumbrel.OleControl.FocusChanged");
    return message;
}
constexpr int kHimetricPerInch = 2540;

std::wstring ModuleFileName(HMODULE module) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(module, &path[0], static_cast<DWORD>(path.size()));
        if (length == 0) return std::wstring();
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

SIZE ScreenPixelsPerInch() {
    SIZE dpi = {96, 96};
    if (HDC screen = ::GetDC(nullptr)) {
        dpi.cx = ::GetDeviceCaps(screen, LOGPIXELSX);
        dpi.cy = ::GetDeviceCaps(screen, LOGPIXELSY);
        ::ReleaseDC(nullptr, screen);
    }
    if (dpi.cx <= 0) dpi.cx = 96;
    if (dpi.cy <= 0) dpi.cy = 96;
    return dpi;
}

HMODULE FrameworkModule() {
    HMODULE module = nullptr;
    ::GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCSTR>(&framework::win32::WindowProcThunk), &module);
    return module;
}

std::string& RegisteredClassName() {
    static std::string name;
    return name;
}

// Controls are made on any user-interface thread; the name is written under
// this lock.
std::mutex& ClassNameLock() {
    static std::mutex lock;
    return lock;
}

}  // namespace

std::string ControlWindowClass() {
    const std::lock_guard<std::mutex> hold(ClassNameLock());
    std::string& name = RegisteredClassName();
    name = framework::win32::Window::RegisterWindowClass(CS_DBLCLKS, ::LoadCursor(nullptr, IDC_ARROW),
                                                         reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1));
    return name;
}

void UnregisterControlWindowClass() {
    const std::lock_guard<std::mutex> hold(ClassNameLock());
    std::string& name = RegisteredClassName();
    if (name.empty()) return;
    ::UnregisterClassA(name.c_str(), FrameworkModule());
    name.clear();
}

OleControl::OleControl(const ControlClass& controlClass)
    : class_(controlClass), events_(static_cast<IConnectionPointContainer*>(this), controlClass.eventsId) {}

OleControl::~OleControl() {
    events_.DisconnectAll();
    RemoveFromMessageFilter(this);
    if (hwnd_ != nullptr && ::IsWindow(hwnd_)) ::DestroyWindow(hwnd_);
}

// ---- IUnknown -----------------------------------------------------------------

HRESULT OleControl::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IOleObject)
        *object = static_cast<IOleObject*>(this);
    else if (iid == IID_IOleWindow || iid == IID_IOleInPlaceObject)
        *object = static_cast<IOleInPlaceObject*>(this);
    else if (iid == IID_IOleInPlaceActiveObject)
        *object = static_cast<IOleInPlaceActiveObject*>(this);
    else if (iid == IID_IOleControl)
        *object = static_cast<IOleControl*>(this);
    else if (iid == IID_IViewObject || iid == IID_IViewObject2)
        *object = static_cast<IViewObject2*>(this);
    else if (iid == IID_IPersist || iid == IID_IPersistStreamInit)
        *object = static_cast<IPersistStreamInit*>(this);
    else if (iid == IID_IPersistPropertyBag)
        *object = static_cast<IPersistPropertyBag*>(this);
    else if (iid == IID_IDispatch || iid == class_.dispatchId)
        *object = static_cast<IDispatch*>(this);
    else if (iid == IID_IConnectionPointContainer)
        *object = static_cast<IConnectionPointContainer*>(this);
    else if (iid == IID_IProvideClassInfo || iid == IID_IProvideClassInfo2)
        *object = static_cast<IProvideClassInfo2*>(this);
    else if (iid == IID_ISpecifyPropertyPages)
        *object = static_cast<ISpecifyPropertyPages*>(this);
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

ULONG OleControl::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG OleControl::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left != 0) return static_cast<ULONG>(left);
    // Held while the window and the sites go, so that their calls back into
    // the object cannot release it a second time.
    references_ = 1;
    try {
        InPlaceDeactivate();
        clientSite_.Reset();
    } catch (...) {
        // The object goes all the same.
    }
    delete this;
    return 0;
}

// ---- IOleObject -----------------------------------------------------------------

HRESULT OleControl::SetClientSite(IOleClientSite* site) {
    return ComBarrier([&] {
        if (site == nullptr && inPlaceActive_) InPlaceDeactivate();
        clientSite_ = ShareComPtr(site);
        return S_OK;
    });
}

HRESULT OleControl::GetClientSite(IOleClientSite** site) {
    return ComBarrier([&]() -> HRESULT {
        if (site == nullptr) return E_POINTER;
        *site = ShareComPtr(clientSite_.Get()).Detach();
        return S_OK;
    });
}

HRESULT OleControl::SetHostNames(LPCOLESTR, LPCOLESTR) {
    return S_OK;
}

HRESULT OleControl::Close(DWORD saveOption) {
    return ComBarrier([&] {
        InPlaceDeactivate();
        if ((saveOption == OLECLOSE_SAVEIFDIRTY || saveOption == OLECLOSE_PROMPTSAVE) && modified_ &&
            clientSite_)
            clientSite_->SaveObject();
        if (adviseHolder_) adviseHolder_->SendOnClose();
        return S_OK;
    });
}

HRESULT OleControl::SetMoniker(DWORD, IMoniker*) {
    return E_NOTIMPL;
}

HRESULT OleControl::GetMoniker(DWORD assign, DWORD, IMoniker** moniker) {
    return ComBarrier([&] {
        if (moniker == nullptr) return E_POINTER;
        *moniker = nullptr;
        if (!clientSite_) return E_UNEXPECTED;
        return clientSite_->GetMoniker(assign, OLEWHICHMK_OBJFULL, moniker);
    });
}

HRESULT OleControl::InitFromData(IDataObject*, BOOL, DWORD) {
    return E_NOTIMPL;
}

HRESULT OleControl::GetClipboardData(DWORD, IDataObject** data) {
    return ComBarrier([&]() -> HRESULT {
        if (data != nullptr) *data = nullptr;
        return E_NOTIMPL;
    });
}

HRESULT OleControl::DoVerb(LONG verb, LPMSG, IOleClientSite*, LONG, HWND parent, LPCRECT) {
    return ComBarrier([&]() -> HRESULT {
        switch (verb) {
            case OLEIVERB_PRIMARY:
            case OLEIVERB_SHOW:
            case OLEIVERB_UIACTIVATE: return InPlaceActivate(true);
            case OLEIVERB_INPLACEACTIVATE: return InPlaceActivate(false);
            case OLEIVERB_HIDE:
                UIDeactivate();
                if (hwnd_ != nullptr) ::ShowWindow(hwnd_, SW_HIDE);
                return S_OK;
            case OLEIVERB_PROPERTIES: return OnProperties(parent);
            default:
                if (verb < 0) return E_NOTIMPL;
                // Verbs that the control does not list are taken as the primary one.
                {
                    const HRESULT hr = InPlaceActivate(true);
                    return FAILED(hr) ? hr : OLEOBJ_S_INVALIDVERB;
                }
        }
    });
}

HRESULT OleControl::EnumVerbs(IEnumOLEVERB** verbs) {
    return ComBarrier([&]() -> HRESULT {
        if (verbs != nullptr) *verbs = nullptr;
        return E_NOTIMPL;
    });
}

HRESULT OleControl::Update() {
    return S_OK;
}

HRESULT OleControl::IsUpToDate() {
    return S_OK;
}

HRESULT OleControl::GetUserClassID(CLSID* classId) {
    return ComBarrier([&]() -> HRESULT {
        if (classId == nullptr) return E_POINTER;
        *classId = class_.classId;
        return S_OK;
    });
}

HRESULT OleControl::GetUserType(DWORD, LPOLESTR* userType) {
    return ComBarrier([&] {
        if (userType == nullptr) return E_POINTER;
        *userType = CoTaskStringFromAnsi(UserTypeName());
        return *userType != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT OleControl::SetExtent(DWORD aspect, SIZEL* size) {
    return ComBarrier([&] {
        if (size == nullptr) return E_POINTER;
        if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
        if (size->cx < 0 || size->cy < 0) return E_INVALIDARG;
        if (size->cx != extent_.cx || size->cy != extent_.cy) {
            extent_ = *size;
            SendViewChange();
        }
        return S_OK;
    });
}

HRESULT OleControl::GetExtent(DWORD aspect, SIZEL* size) {
    return ComBarrier([&]() -> HRESULT {
        if (size == nullptr) return E_POINTER;
        if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
        *size = extent_;
        return S_OK;
    });
}

HRESULT OleControl::Advise(IAdviseSink* sink, DWORD* connection) {
    return ComBarrier([&] {
        if (connection == nullptr) return E_POINTER;
        *connection = 0;
        if (sink == nullptr) return E_INVALIDARG;
        if (!adviseHolder_) {
            const HRESULT hr = ::CreateOleAdviseHolder(adviseHolder_.Put());
            if (FAILED(hr)) return hr;
        }
        return adviseHolder_->Advise(sink, connection);
    });
}

HRESULT OleControl::Unadvise(DWORD connection) {
    return ComBarrier([&] {
        if (!adviseHolder_) return static_cast<HRESULT>(OLE_E_NOCONNECTION);
        return adviseHolder_->Unadvise(connection);
    });
}

HRESULT OleControl::EnumAdvise(IEnumSTATDATA** advise) {
    return ComBarrier([&] {
        if (advise == nullptr) return E_POINTER;
        *advise = nullptr;
        if (!adviseHolder_) {
            const HRESULT hr = ::CreateOleAdviseHolder(adviseHolder_.Put());
            if (FAILED(hr)) return hr;
        }
        return adviseHolder_->EnumAdvise(advise);
    });
}

HRESULT OleControl::GetMiscStatus(DWORD, DWORD* status) {
    return ComBarrier([&]() -> HRESULT {
        if (status == nullptr) return E_POINTER;
        *status = class_.miscStatus;
        return S_OK;
    });
}

HRESULT OleControl::SetColorScheme(LOGPALETTE*) {
    return E_NOTIMPL;
}

// ---- IOleWindow, IOleInPlaceObject, IOleInPlaceActiveObject -------------------------

HRESULT OleControl::GetWindow(HWND* window) {
    return ComBarrier([&]() -> HRESULT {
        if (window == nullptr) return E_POINTER;
        *window = hwnd_;
        return hwnd_ != nullptr ? S_OK : E_FAIL;
    });
}

HRESULT OleControl::ContextSensitiveHelp(BOOL) {
    return E_NOTIMPL;
}

HRESULT OleControl::InPlaceActivate(bool uiActivate) {
    if (!clientSite_) return E_UNEXPECTED;
    if (!inPlaceActive_) {
        ComPtr<IOleInPlaceSite> site;
        if (FAILED(clientSite_.As(&site))) return E_NOINTERFACE;
        if (site->CanInPlaceActivate() != S_OK) return E_FAIL;
        HRESULT hr = site->OnInPlaceActivate();
        if (FAILED(hr)) return hr;
        inPlaceSite_ = std::move(site);
        inPlaceActive_ = true;

        HWND parent = nullptr;
        RECT position = {};
        RECT clip = {};
        OLEINPLACEFRAMEINFO frameInfo = {};
        frameInfo.cb = sizeof frameInfo;
        hr = inPlaceSite_->GetWindow(&parent);
        if (SUCCEEDED(hr))
            hr = inPlaceSite_->GetWindowContext(frame_.Put(), uiWindow_.Put(), &position, &clip, &frameInfo);
        bool made = SUCCEEDED(hr) && parent != nullptr;
        if (made) {
            position_ = position;
            if (hwnd_ == nullptr) {
                made =
                    CreateEx(0, ControlWindowClass(), "",
                             WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_CLIPCHILDREN, position, parent, 0);
            } else {
                ::SetParent(hwnd_, parent);
                ::MoveWindow(hwnd_, position.left, position.top, position.right - position.left,
                             position.bottom - position.top, TRUE);
                ::ShowWindow(hwnd_, SW_SHOW);
            }
            if (made) ApplyClip(position, &clip);
        }
        if (!made) {
            inPlaceActive_ = false;
            frame_.Reset();
            uiWindow_.Reset();
            ComPtr<IOleInPlaceSite> failed = std::move(inPlaceSite_);
            failed->OnInPlaceDeactivate();
            return FAILED(hr) ? hr : E_FAIL;
        }
    }
    if (uiActivate) return ActivateUI();
    return S_OK;
}

HRESULT OleControl::ActivateUI() {
    if (!uiActive_) {
        if (inPlaceSite_) inPlaceSite_->OnUIActivate();
        uiActive_ = true;
        const std::wstring name = AnsiToWide(UserTypeName());
        auto* active = static_cast<IOleInPlaceActiveObject*>(this);
        if (frame_) {
            frame_->SetActiveObject(active, name.c_str());
            frame_->SetBorderSpace(nullptr);
        }
        if (uiWindow_) {
            uiWindow_->SetActiveObject(active, name.c_str());
            uiWindow_->SetBorderSpace(nullptr);
        }
    }
    if (hwnd_ != nullptr) {
        const HWND focus = ::GetFocus();
        if (focus != hwnd_ && !::IsChild(hwnd_, focus)) ::SetFocus(hwnd_);
    }
    return S_OK;
}

HRESULT OleControl::InPlaceDeactivate() {
    return ComBarrier([&] {
        if (!inPlaceActive_) return S_OK;
        UIDeactivate();
        inPlaceActive_ = false;
        // The focus goes with the window; the site hears of it now, since
        // a report queued to the window would die with it.
        if (focusReported_) {
            focusReported_ = false;
            ComPtr<IOleControlSite> controlSite;
            if (clientSite_ && SUCCEEDED(clientSite_.As(&controlSite))) controlSite->OnFocus(FALSE);
        }
        if (hwnd_ != nullptr) ::DestroyWindow(hwnd_);
        frame_.Reset();
        uiWindow_.Reset();
        ComPtr<IOleInPlaceSite> site = std::move(inPlaceSite_);
        if (site) site->OnInPlaceDeactivate();
        return S_OK;
    });
}

HRESULT OleControl::UIDeactivate() {
    return ComBarrier([&] {
        if (!uiActive_) return S_OK;
        uiActive_ = false;
        if (frame_) frame_->SetActiveObject(nullptr, nullptr);
        if (uiWindow_) uiWindow_->SetActiveObject(nullptr, nullptr);
        if (inPlaceSite_) inPlaceSite_->OnUIDeactivate(FALSE);
        return S_OK;
    });
}

HRESULT OleControl::SetObjectRects(LPCRECT position, LPCRECT clip) {
    return ComBarrier([&] {
        if (position == nullptr) return E_INVALIDARG;
        position_ = *position;
        if (hwnd_ != nullptr) {
            ::MoveWindow(hwnd_, position->left, position->top, position->right - position->left,
                         position->bottom - position->top, TRUE);
            ApplyClip(*position, clip);
        }
        return S_OK;
    });
}

void OleControl::ApplyClip(const RECT& position, const RECT* clip) {
    if (hwnd_ == nullptr) return;
    RECT visible = {};
    const bool overlaps = clip != nullptr && ::IntersectRect(&visible, &position, clip) != FALSE;
    // A clip that leaves the whole window visible needs no region; a window
    // of no size has nothing to clip.
    if (clip == nullptr || ::IsRectEmpty(&position) || (overlaps && ::EqualRect(&visible, &position))) {
        ::SetWindowRgn(hwnd_, nullptr, TRUE);
        return;
    }
    if (overlaps)
        ::OffsetRect(&visible, -position.left, -position.top);
    else
        visible = RECT{0, 0, 0, 0};
    framework::win32::UniqueGdiObject region(::CreateRectRgnIndirect(&visible));
    if (!region) return;
    // The system owns the region once the window has it.
    if (::SetWindowRgn(hwnd_, static_cast<HRGN>(region.Get()), TRUE) != 0) region.Release();
}

HRESULT OleControl::ReactivateAndUndo() {
    return INPLACE_E_NOTUNDOABLE;
}

HRESULT OleControl::TranslateAccelerator(LPMSG msg) {
    return ComBarrier([&] {
        if (msg == nullptr) return E_INVALIDARG;
        if (hwnd_ == nullptr) return S_FALSE;
        // The filter has offered this very message already, and passed it on.
        if (WasOfferedByMessageFilter(*msg)) return S_FALSE;
        ComPtr<IOleObject> keepAlive = ShareComPtr(static_cast<IOleObject*>(this));
        return PreTranslateMessage(msg) ? S_OK : S_FALSE;
    });
}

HRESULT OleControl::OnFrameWindowActivate(BOOL) {
    return S_OK;
}

HRESULT OleControl::OnDocWindowActivate(BOOL) {
    return S_OK;
}

HRESULT OleControl::ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) {
    return S_OK;
}

HRESULT OleControl::EnableModeless(BOOL) {
    return S_OK;
}

// ---- IOleControl -------------------------------------------------------------------

HRESULT OleControl::GetControlInfo(CONTROLINFO* info) {
    return ComBarrier([&]() -> HRESULT {
        if (info == nullptr) return E_POINTER;
        info->cb = sizeof(CONTROLINFO);
        info->hAccel = nullptr;
        info->cAccel = 0;
        info->dwFlags = 0;
        return S_OK;
    });
}

HRESULT OleControl::OnMnemonic(MSG*) {
    return S_OK;
}

HRESULT OleControl::OnAmbientPropertyChange(DISPID) {
    return S_OK;
}

HRESULT OleControl::FreezeEvents(BOOL freeze) {
    return ComBarrier([&]() -> HRESULT {
        if (freeze)
            ++freezeCount_;
        else if (freezeCount_ > 0)
            --freezeCount_;
        return S_OK;
    });
}

// ---- IViewObject2 ------------------------------------------------------------------

HRESULT OleControl::Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC dc, LPCRECTL bounds, LPCRECTL,
                         WINBOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) {
    return ComBarrier([&] {
        if (dc == nullptr) return E_INVALIDARG;
        if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
        RECT rect = {};
        if (bounds != nullptr)
            rect = RECT{bounds->left, bounds->top, bounds->right, bounds->bottom};
        else if (hwnd_ != nullptr)
            rect = GetClientRect();
        else
            return E_INVALIDARG;
        OnDraw(dc, rect, rect);
        return S_OK;
    });
}

HRESULT OleControl::GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE** colors) {
    return ComBarrier([&]() -> HRESULT {
        if (colors == nullptr) return E_POINTER;
        *colors = nullptr;
        return S_FALSE;
    });
}

HRESULT OleControl::Freeze(DWORD, LONG, void*, DWORD* freeze) {
    return ComBarrier([&]() -> HRESULT {
        if (freeze != nullptr) *freeze = 0;
        return E_NOTIMPL;
    });
}

HRESULT OleControl::Unfreeze(DWORD) {
    return E_NOTIMPL;
}

HRESULT OleControl::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
    return ComBarrier([&] {
        viewSink_ = ShareComPtr(sink);
        viewAspects_ = aspects;
        viewAdviseFlags_ = flags;
        if (viewSink_ && (flags & ADVF_PRIMEFIRST)) viewSink_->OnViewChange(DVASPECT_CONTENT, -1);
        return S_OK;
    });
}

HRESULT OleControl::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
    return ComBarrier([&]() -> HRESULT {
        if (aspects != nullptr) *aspects = viewAspects_;
        if (flags != nullptr) *flags = viewAdviseFlags_;
        if (sink != nullptr) *sink = ShareComPtr(viewSink_.Get()).Detach();
        return S_OK;
    });
}

HRESULT OleControl::GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) {
    return ComBarrier([&]() -> HRESULT { return GetExtent(aspect, size); });
}

void OleControl::SendViewChange() {
    if (viewSink_ && (viewAspects_ & DVASPECT_CONTENT)) viewSink_->OnViewChange(DVASPECT_CONTENT, -1);
}

// ---- Persistence -------------------------------------------------------------------

HRESULT OleControl::GetClassID(CLSID* classId) {
    return ComBarrier([&]() -> HRESULT {
        if (classId == nullptr) return E_POINTER;
        *classId = class_.classId;
        return S_OK;
    });
}

HRESULT OleControl::InitNew() {
    return ComBarrier([&] {
        OnResetState();
        modified_ = false;
        return S_OK;
    });
}

HRESULT OleControl::IsDirty() {
    return ComBarrier([&]() -> HRESULT { return modified_ ? S_OK : S_FALSE; });
}

HRESULT OleControl::Load(LPSTREAM stream) {
    return ComBarrier([&] {
        if (stream == nullptr) return E_POINTER;
        DWORD state[3] = {};
        ULONG read = 0;
        const HRESULT hr = stream->Read(state, kStateBytes, &read);
        if (FAILED(hr)) return hr;
        if (read < sizeof(DWORD)) return E_FAIL;
        OnResetState();
        // A stream of the version alone was written before the extent was
        // kept; one whose extent no control can have keeps the extent too.
        if (read == kStateBytes) {
            const auto cx = static_cast<LONG>(state[1]);
            const auto cy = static_cast<LONG>(state[2]);
            if (IsPlausibleExtent(cx, cy)) extent_ = SIZEL{cx, cy};
        }
        modified_ = false;
        return S_OK;
    });
}

HRESULT OleControl::Save(LPSTREAM stream, BOOL clearDirty) {
    return ComBarrier([&] {
        if (stream == nullptr) return E_POINTER;
        const DWORD state[3] = {MAKELONG(class_.stateVersionMinor, class_.stateVersionMajor),
                                static_cast<DWORD>(extent_.cx), static_cast<DWORD>(extent_.cy)};
        ULONG written = 0;
        const HRESULT hr = stream->Write(state, kStateBytes, &written);
        if (FAILED(hr)) return hr;
        if (written != kStateBytes) return STG_E_WRITEFAULT;
        if (clearDirty) modified_ = false;
        return S_OK;
    });
}

HRESULT OleControl::GetSizeMax(ULARGE_INTEGER* size) {
    return ComBarrier([&]() -> HRESULT {
        if (size == nullptr) return E_POINTER;
        size->QuadPart = kStateBytes;
        return S_OK;
    });
}

HRESULT OleControl::Load(IPropertyBag* bag, IErrorLog* log) {
    return ComBarrier([&] {
        if (bag == nullptr) return E_POINTER;
        Variant version;
        version.Get()->vt = VT_I4;
        // A bag without the version is one written before there was any
        // state: the defaults stand.
        bag->Read(kVersionProperty, version.Get(), log);
        OnResetState();
        // Bags hold text as often as numbers: each value is asked for as a
        // 32-bit integer, and one that is missing or cannot be one leaves
        // the extent as it is.
        Variant cx;
        Variant cy;
        cx.Get()->vt = VT_I4;
        cy.Get()->vt = VT_I4;
        if (SUCCEEDED(bag->Read(kExtentXProperty, cx.Get(), log)) &&
            SUCCEEDED(bag->Read(kExtentYProperty, cy.Get(), log)) &&
            SUCCEEDED(::VariantChangeType(cx.Get(), cx.Get(), 0, VT_I4)) &&
            SUCCEEDED(::VariantChangeType(cy.Get(), cy.Get(), 0, VT_I4)) &&
            IsPlausibleExtent(cx.Get()->lVal, cy.Get()->lVal))
            extent_ = SIZEL{cx.Get()->lVal, cy.Get()->lVal};
        modified_ = false;
        return S_OK;
    });
}

HRESULT OleControl::Save(IPropertyBag* bag, BOOL clearDirty, BOOL) {
    return ComBarrier([&] {
        if (bag == nullptr) return E_POINTER;
        Variant version;
        version.Get()->vt = VT_I4;
        version.Get()->lVal = static_cast<LONG>(MAKELONG(class_.stateVersionMinor, class_.stateVersionMajor));
        HRESULT hr = bag->Write(kVersionProperty, version.Get());
        if (FAILED(hr)) return hr;
        Variant cx;
        cx.Get()->vt = VT_I4;
        cx.Get()->lVal = extent_.cx;
        hr = bag->Write(kExtentXProperty, cx.Get());
        if (FAILED(hr)) return hr;
        Variant cy;
        cy.Get()->vt = VT_I4;
        cy.Get()->lVal = extent_.cy;
        hr = bag->Write(kExtentYProperty, cy.Get());
        if (FAILED(hr)) return hr;
        if (clearDirty) modified_ = false;
        return S_OK;
    });
}

// ---- IDispatch ---------------------------------------------------------------------

HRESULT OleControl::GetTypeLib(LCID locale, ITypeLib** library) {
    if (library == nullptr) return E_POINTER;
    *library = nullptr;
    if (!typeLib_) {
        HRESULT hr = ::LoadRegTypeLib(class_.typeLibId, class_.typeLibMajor, class_.typeLibMinor, locale,
                                      typeLib_.Put());
        if (FAILED(hr)) {
            const std::wstring path = ModuleFileName(framework::win32::ResourceModule());
            if (path.empty()) return TYPE_E_CANTLOADLIBRARY;
            hr = ::LoadTypeLibEx(path.c_str(), REGKIND_NONE, typeLib_.Put());
            if (FAILED(hr)) return hr;
        }
    }
    *library = ShareComPtr(typeLib_.Get()).Detach();
    return S_OK;
}

HRESULT OleControl::LoadTypeInfo(ITypeInfo** info, const GUID& guid) {
    ComPtr<ITypeLib> library;
    HRESULT hr = GetTypeLib(LOCALE_USER_DEFAULT, library.Put());
    if (FAILED(hr)) return hr;
    return library->GetTypeInfoOfGuid(guid, info);
}

HRESULT OleControl::GetTypeInfoCount(UINT* count) {
    return ComBarrier([&]() -> HRESULT {
        if (count == nullptr) return E_POINTER;
        *count = 1;
        return S_OK;
    });
}

HRESULT OleControl::GetTypeInfo(UINT index, LCID, ITypeInfo** info) {
    return ComBarrier([&] {
        if (info == nullptr) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        if (!dispatchInfo_) {
            const HRESULT hr = LoadTypeInfo(dispatchInfo_.Put(), class_.dispatchId);
            if (FAILED(hr)) return hr;
        }
        *info = ShareComPtr(dispatchInfo_.Get()).Detach();
        return S_OK;
    });
}

HRESULT OleControl::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) {
    return ComBarrier([&] {
        if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        if (names == nullptr || ids == nullptr) return E_POINTER;
        ComPtr<ITypeInfo> info;
        const HRESULT hr = GetTypeInfo(0, locale, info.Put());
        if (FAILED(hr)) return hr;
        return ::DispGetIDsOfNames(info.Get(), names, count, ids);
    });
}

HRESULT OleControl::Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                           EXCEPINFO*, UINT* argError) {
    return ComBarrier([&] {
        if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        if (params == nullptr) return E_INVALIDARG;
        size_t count = 0;
        const DispatchMember* members = DispatchMembers(&count);
        const DispatchMember* member = FindDispatchMember(members, count, id);
        if (member == nullptr) return DISP_E_MEMBERNOTFOUND;
        DispatchCall call;
        HRESULT hr = PrepareDispatchCall(*member, flags, params, &call, argError);
        if (FAILED(hr)) return hr;
        Variant discarded;
        VARIANT* out = result != nullptr ? result : discarded.Get();
        ::VariantInit(out);
        // The call may end in the last Release of a sink or a site.
        ComPtr<IDispatch> keepAlive = ShareComPtr(static_cast<IDispatch*>(this));
        return InvokeMember(call, out);
    });
}

// ---- Connection points, class information, property pages --------------------------

HRESULT OleControl::EnumConnectionPoints(IEnumConnectionPoints** points) {
    return ComBarrier([&] {
        if (points == nullptr) return E_POINTER;
        return CreateConnectionPointEnumerator({&events_}, points);
    });
}

HRESULT OleControl::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
    return ComBarrier([&]() -> HRESULT {
        if (point == nullptr) return E_POINTER;
        *point = nullptr;
        if (iid != class_.eventsId) return CONNECT_E_NOCONNECTION;
        events_.AddRef();
        *point = &events_;
        return S_OK;
    });
}

HRESULT OleControl::GetClassInfo(ITypeInfo** info) {
    return ComBarrier([&] {
        if (info == nullptr) return E_POINTER;
        *info = nullptr;
        return LoadTypeInfo(info, class_.classId);
    });
}

HRESULT OleControl::GetGUID(DWORD kind, GUID* guid) {
    return ComBarrier([&]() -> HRESULT {
        if (guid == nullptr) return E_POINTER;
        if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) return E_INVALIDARG;
        *guid = class_.eventsId;
        return S_OK;
    });
}

HRESULT OleControl::GetPages(CAUUID* pages) {
    return ComBarrier([&]() -> HRESULT {
        if (pages == nullptr) return E_POINTER;
        pages->cElems = 0;
        pages->pElems = nullptr;
        if (class_.pageCount == 0) return S_OK;
        auto* list = static_cast<GUID*>(::CoTaskMemAlloc(sizeof(GUID) * class_.pageCount));
        if (list == nullptr) return E_OUTOFMEMORY;
        for (UINT i = 0; i < class_.pageCount; ++i) list[i] = class_.pages[i];
        pages->cElems = class_.pageCount;
        pages->pElems = list;
        return S_OK;
    });
}

// ---- The control's own operations ------------------------------------------------------

std::string OleControl::UserTypeName() const {
    char text[512] = {};
    const int length = ::LoadStringA(framework::win32::ResourceModule(), class_.userTypeNameId, text,
                                     static_cast<int>(sizeof text));
    return std::string(text, length > 0 ? static_cast<size_t>(length) : 0);
}

SIZEL OleControl::PixelsToHimetric(int cx, int cy) {
    const SIZE dpi = ScreenPixelsPerInch();
    return SIZEL{::MulDiv(cx, kHimetricPerInch, dpi.cx), ::MulDiv(cy, kHimetricPerInch, dpi.cy)};
}

SIZE OleControl::HimetricToPixels(const SIZEL& size) {
    const SIZE dpi = ScreenPixelsPerInch();
    return SIZE{::MulDiv(size.cx, dpi.cx, kHimetricPerInch), ::MulDiv(size.cy, dpi.cy, kHimetricPerInch)};
}

void OleControl::SetInitialSize(int cx, int cy) {
    extent_ = PixelsToHimetric(cx, cy);
}

bool OleControl::SetControlSize(int cx, int cy) {
    if (cx < 0 || cy < 0) return false;
    const SIZEL extent = PixelsToHimetric(cx, cy);
    if (extent.cx != extent_.cx || extent.cy != extent_.cy) {
        extent_ = extent;
        SendViewChange();
    }
    return true;
}

void OleControl::FireEvent(DISPID id, VARIANT* arguments, UINT count) {
    if (freezeCount_ > 0) return;
    DISPPARAMS params = {arguments, nullptr, count, 0};
    events_.Fire(id, &params);
}

void OleControl::BeginModal() {
    if (modalDepth_++ > 0) return;
    // The frame of now is the one told again at the end, even if the control
    // is deactivated while the window is open.
    modalFrame_ = ShareComPtr(frame_.Get());
    if (modalFrame_) modalFrame_->EnableModeless(FALSE);
}

void OleControl::EndModal() {
    if (modalDepth_ == 0 || --modalDepth_ > 0) return;
    const ComPtr<IOleInPlaceFrame> frame = std::move(modalFrame_);
    if (frame) frame->EnableModeless(TRUE);
}

void OleControl::OnDraw(HDC, const RECT&, const RECT&) {}

void OleControl::OnResetState() {}

HRESULT OleControl::OnProperties(HWND parent) {
    ComPtr<IOleControlSite> controlSite;
    if (clientSite_ && SUCCEEDED(clientSite_.As(&controlSite)) && controlSite->ShowPropertyFrame() == S_OK)
        return S_OK;
    IUnknown* self = static_cast<IOleObject*>(this);
    const std::wstring caption = AnsiToWide(UserTypeName());
    std::vector<CLSID> pages(class_.pages, class_.pages + class_.pageCount);
    return ::OleCreatePropertyFrame(parent != nullptr ? parent : hwnd_, 0, 0, caption.c_str(), 1, &self,
                                    static_cast<ULONG>(pages.size()), pages.empty() ? nullptr : pages.data(),
                                    LOCALE_USER_DEFAULT, 0, nullptr);
}

int OleControl::OnCreate(CREATESTRUCTA* create) {
    const int result = Window::OnCreate(create);
    if (result != -1) AddToMessageFilter(this);
    return result;
}

void OleControl::OnDestroy() {
    RemoveFromMessageFilter(this);
    // A report still queued dies with the window; the next window starts
    // with the focus outside.
    focusReportPending_ = false;
    focusReported_ = false;
    Window::OnDestroy();
}

void OleControl::OnPaint() {
    PAINTSTRUCT paint = {};
    HDC dc = ::BeginPaint(hwnd_, &paint);
    if (dc == nullptr) return;
    const RECT client = GetClientRect();
    OnDraw(dc, client, paint.rcPaint);
    ::EndPaint(hwnd_, &paint);
}

bool OleControl::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    if (message == WM_PRINTCLIENT && wParam != 0) {
        const RECT client = GetClientRect();
        OnDraw(reinterpret_cast<HDC>(wParam), client, client);
        *result = 0;
        return true;
    }
    if (message == WM_MOUSEACTIVATE) {
        *result = OnMouseActivate(wParam, lParam);
        return true;
    }
    if (message == FocusChangedMessage()) {
        focusReportPending_ = false;
        ReportFocus();
        *result = 0;
        return true;
    }
    return Window::OnMessage(message, wParam, lParam, result);
}

LRESULT OleControl::OnMouseActivate(WPARAM wParam, LPARAM lParam) {
    // The host hears of the click first, as from any child window.
    const LRESULT answer = ::DefWindowProcA(hwnd_, WM_MOUSEACTIVATE, wParam, lParam);
    if (answer == MA_NOACTIVATE || answer == MA_NOACTIVATEANDEAT) return answer;
    if (inPlaceActive_ && !uiActive_) {
        ComPtr<IOleObject> keepAlive = ShareComPtr(static_cast<IOleObject*>(this));
        ActivateUI();
    }
    return answer;
}

void OleControl::OnFilteredFocusChange() {
    if (focusReportPending_ || hwnd_ == nullptr) return;
    // The focus is still moving; the report waits until it has arrived.
    if (::PostMessageA(hwnd_, FocusChangedMessage(), 0, 0)) focusReportPending_ = true;
}

void OleControl::ReportFocus() {
    if (hwnd_ == nullptr) return;
    const HWND focus = ::GetFocus();
    const bool inside = focus != nullptr && (focus == hwnd_ || ::IsChild(hwnd_, focus));
    if (inside == focusReported_) return;
    ComPtr<IOleObject> keepAlive = ShareComPtr(static_cast<IOleObject*>(this));
    focusReported_ = inside;
    if (inside && inPlaceActive_ && !uiActive_) ActivateUI();
    ComPtr<IOleControlSite> controlSite;
    if (clientSite_ && SUCCEEDED(clientSite_.As(&controlSite))) controlSite->OnFocus(inside ? TRUE : FALSE);
}

bool OleControl::FilterMessage(MSG* msg) {
    ComPtr<IOleObject> keepAlive = ShareComPtr(static_cast<IOleObject*>(this));
    return PreTranslateMessage(msg) != FALSE;
}

}  // namespace framework::ole

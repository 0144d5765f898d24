#include "OleTestSupport.h"

#include <cstring>

#include "control/LumbrelIds.h"

namespace controltest {

namespace {

HWND MakeFrame() {
    // The frame is a plain window of the platform's making: the control
    // must not rely on its container being one of ours.
    WNDCLASSA existing = {};
    if (!::GetClassInfoA(::GetModuleHandleA(nullptr), "LumbrelTestFrame", &existing)) {
        WNDCLASSA frameClass = {};
        frameClass.lpfnWndProc = &::DefWindowProcA;
        frameClass.hInstance = ::GetModuleHandleA(nullptr);
        frameClass.hCursor = ::LoadCursor(nullptr, IDC_ARROW);
        frameClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
        frameClass.lpszClassName = "LumbrelTestFrame";
        ::RegisterClassA(&frameClass);
    }
    HWND frame = ::CreateWindowExA(0, "LumbrelTestFrame", "Test container", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                   0, 0, 700, 500, nullptr, nullptr, ::GetModuleHandleA(nullptr), nullptr);
    ::SetForegroundWindow(frame);
    ::SetActiveWindow(frame);
    return frame;
}

}  // namespace

TestSite::TestSite() : frame_(MakeFrame()) {}

TestSite::~TestSite() {
    if (frame_ != nullptr) ::DestroyWindow(frame_);
}

HRESULT TestSite::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IOleClientSite)
        *object = static_cast<IOleClientSite*>(this);
    else if (iid == IID_IOleWindow || iid == IID_IOleInPlaceSite)
        *object = static_cast<IOleInPlaceSite*>(this);
    else if (iid == IID_IOleInPlaceUIWindow || iid == IID_IOleInPlaceFrame)
        *object = static_cast<IOleInPlaceFrame*>(this);
    else if (iid == IID_IOleControlSite)
        *object = static_cast<IOleControlSite*>(this);
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

ULONG TestSite::AddRef() {
    return static_cast<ULONG>(++references_);
}

ULONG TestSite::Release() {
    const LONG left = --references_;
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

HRESULT TestSite::SaveObject() {
    calls.push_back("SaveObject");
    return S_OK;
}
HRESULT TestSite::GetMoniker(DWORD, DWORD, IMoniker** moniker) {
    if (moniker != nullptr) *moniker = nullptr;
    return E_NOTIMPL;
}
HRESULT TestSite::GetContainer(IOleContainer** container) {
    if (container != nullptr) *container = nullptr;
    return E_NOINTERFACE;
}
HRESULT TestSite::ShowObject() {
    return S_OK;
}
HRESULT TestSite::OnShowWindow(BOOL) {
    return S_OK;
}
HRESULT TestSite::RequestNewObjectLayout() {
    return E_NOTIMPL;
}
HRESULT TestSite::GetWindow(HWND* window) {
    if (window == nullptr) return E_POINTER;
    *window = frame_;
    return S_OK;
}
HRESULT TestSite::ContextSensitiveHelp(BOOL) {
    return E_NOTIMPL;
}
HRESULT TestSite::CanInPlaceActivate() {
    calls.push_back("CanInPlaceActivate");
    return refuseActivation ? S_FALSE : S_OK;
}
HRESULT TestSite::OnInPlaceActivate() {
    calls.push_back("OnInPlaceActivate");
    return S_OK;
}
HRESULT TestSite::OnUIActivate() {
    calls.push_back("OnUIActivate");
    return S_OK;
}
HRESULT TestSite::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                   LPRECT positionRect, LPRECT clipRect, LPOLEINPLACEFRAMEINFO info) {
    calls.push_back("GetWindowContext");
    if (frame == nullptr || document == nullptr || positionRect == nullptr || clipRect == nullptr ||
        info == nullptr)
        return E_POINTER;
    *frame = static_cast<IOleInPlaceFrame*>(this);
    AddRef();
    *document = nullptr;
    *positionRect = position;
    *clipRect = ::IsRectEmpty(&clip) ? position : clip;
    info->fMDIApp = FALSE;
    info->hwndFrame = frame_;
    info->haccel = nullptr;
    info->cAccelEntries = 0;
    return S_OK;
}
HRESULT TestSite::Scroll(SIZE) {
    return E_NOTIMPL;
}
HRESULT TestSite::OnUIDeactivate(BOOL) {
    calls.push_back("OnUIDeactivate");
    return S_OK;
}
HRESULT TestSite::OnInPlaceDeactivate() {
    calls.push_back("OnInPlaceDeactivate");
    return S_OK;
}
HRESULT TestSite::DiscardUndoState() {
    return E_NOTIMPL;
}
HRESULT TestSite::DeactivateAndUndo() {
    return E_NOTIMPL;
}
HRESULT TestSite::OnPosRectChange(LPCRECT) {
    calls.push_back("OnPosRectChange");
    return S_OK;
}
HRESULT TestSite::GetBorder(LPRECT) {
    return INPLACE_E_NOTOOLSPACE;
}
HRESULT TestSite::RequestBorderSpace(LPCBORDERWIDTHS) {
    return INPLACE_E_NOTOOLSPACE;
}
HRESULT TestSite::SetBorderSpace(LPCBORDERWIDTHS) {
    return S_OK;
}
HRESULT TestSite::SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR name) {
    calls.push_back(object != nullptr ? "SetActiveObject" : "SetActiveObject(null)");
    if (object != nullptr) object->AddRef();
    activeObject = ComPtr<IOleInPlaceActiveObject>(object);
    activeObjectName = name != nullptr ? name : L"";
    return S_OK;
}
HRESULT TestSite::InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) {
    return E_NOTIMPL;
}
HRESULT TestSite::SetMenu(HMENU, HOLEMENU, HWND) {
    return S_OK;
}
HRESULT TestSite::RemoveMenus(HMENU) {
    return S_OK;
}
HRESULT TestSite::SetStatusText(LPCOLESTR) {
    return S_OK;
}
HRESULT TestSite::EnableModeless(BOOL enable) {
    modalCalls.push_back("EnableModeless(" + std::to_string(enable) + ")");
    return S_OK;
}
HRESULT TestSite::TranslateAccelerator(LPMSG, WORD) {
    return S_FALSE;
}
HRESULT TestSite::OnControlInfoChanged() {
    return S_OK;
}
HRESULT TestSite::LockInPlaceActive(BOOL) {
    return S_OK;
}
HRESULT TestSite::GetExtendedControl(IDispatch** control) {
    if (control != nullptr) *control = nullptr;
    return E_NOTIMPL;
}
HRESULT TestSite::TransformCoords(POINTL*, POINTF*, DWORD) {
    return E_NOTIMPL;
}
HRESULT TestSite::TranslateAccelerator(MSG*, DWORD) {
    return S_FALSE;
}
HRESULT TestSite::OnFocus(BOOL gotFocus) {
    focusCalls.push_back("OnFocus(" + std::to_string(gotFocus) + ")");
    return S_OK;
}
HRESULT TestSite::ShowPropertyFrame() {
    // The control shows its own frame.
    return E_NOTIMPL;
}

HRESULT Embed(IUnknown* object, TestSite* site, LONG verb) {
    ComPtr<IOleObject> ole;
    HRESULT hr = object->QueryInterface(IID_IOleObject, ole.PutVoid());
    if (FAILED(hr)) return hr;
    hr = ole->SetClientSite(site);
    if (FAILED(hr)) return hr;
    RECT rect = site->position;
    return ole->DoVerb(verb, nullptr, site, 0, site->Frame(), &rect);
}

void Unembed(IUnknown* object) {
    ComPtr<IOleObject> ole;
    if (FAILED(object->QueryInterface(IID_IOleObject, ole.PutVoid()))) return;
    ole->Close(OLECLOSE_NOSAVE);
    ole->SetClientSite(nullptr);
}

EventRecorder::EventRecorder(std::vector<RecordedEvent>* events, std::string name)
    : events_(events), name_(std::move(name)) {}

HRESULT EventRecorder::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch && iid != DIID__DLumbrelEvents) return E_NOINTERFACE;
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}
ULONG EventRecorder::AddRef() {
    return static_cast<ULONG>(++references_);
}
ULONG EventRecorder::Release() {
    const LONG left = --references_;
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}
HRESULT EventRecorder::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}
HRESULT EventRecorder::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
    *info = nullptr;
    return E_NOTIMPL;
}
HRESULT EventRecorder::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) {
    return E_NOTIMPL;
}
HRESULT EventRecorder::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*,
                              UINT*) {
    RecordedEvent event;
    event.dispid = id;
    event.sink = name_;
    if (params != nullptr) {
        event.argumentCount = params->cArgs;
        if (params->cArgs > 0) {
            event.argumentType = params->rgvarg[0].vt;
            event.reference = params->rgvarg[0].byref;
            if (event.argumentType == VT_BYREF && event.reference != nullptr)
                std::memcpy(&event.record, event.reference, sizeof event.record);
        }
    }
    events_->push_back(event);
    if (onEvent != nullptr) onEvent(this, context);
    return S_OK;
}

DWORD AdviseEvents(IUnknown* object, IUnknown* sink, HRESULT* result) {
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IConnectionPoint> point;
    HRESULT hr = object->QueryInterface(IID_IConnectionPointContainer, container.PutVoid());
    if (SUCCEEDED(hr)) hr = container->FindConnectionPoint(DIID__DLumbrelEvents, point.Put());
    DWORD cookie = 0;
    if (SUCCEEDED(hr)) hr = point->Advise(sink, &cookie);
    if (result != nullptr) *result = hr;
    return SUCCEEDED(hr) ? cookie : 0;
}

HRESULT UnadviseEvents(IUnknown* object, DWORD cookie) {
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IConnectionPoint> point;
    HRESULT hr = object->QueryInterface(IID_IConnectionPointContainer, container.PutVoid());
    if (SUCCEEDED(hr)) hr = container->FindConnectionPoint(DIID__DLumbrelEvents, point.Put());
    if (SUCCEEDED(hr)) hr = point->Unadvise(cookie);
    return hr;
}

void PumpMessages() {
    MSG msg;
    while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageA(&msg);
    }
}

browser::GraphicItemInfo SampleRecord() {
    browser::GraphicItemInfo record = browser::MakeItemInfo(1, 3, "C:\\art\\cats.QLT", "tabby.jpg");
    // Bytes after the texts' NULs too, so that a copy of fewer than all 532
    // bytes shows.
    record.path[258] = 'P';
    record.name[262] = 'N';
    return record;
}

}  // namespace controltest

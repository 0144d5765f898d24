// A minimal OLE container for the control tests, written here so that the
// tests do not depend on any host: a frame window and a site that speaks
// IOleClientSite, IOleInPlaceSite, IOleInPlaceFrame and IOleControlSite and
// records what the control asks of it; and an event sink that records each event with a copy
// of the record that ItemSel points to.
#pragma once

#include <windows.h>

#include <ocidl.h>
#include <oleidl.h>

#include <string>
#include <vector>

#include "browser/GraphicItemInfo.h"
#include "framework/ole/ComClass.h"
#include "framework/win32/ComPtr.h"

namespace controltest {

using framework::win32::ComPtr;

LUMBREL_COM_CLASS_BEGIN
class TestSite : public IOleClientSite,
                 public IOleInPlaceSite,
                 public IOleInPlaceFrame,
                 public IOleControlSite {
public:
    TestSite();
    virtual ~TestSite();

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    // IOleClientSite
    HRESULT STDMETHODCALLTYPE SaveObject() override;
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker** moniker) override;
    HRESULT STDMETHODCALLTYPE GetContainer(IOleContainer** container) override;
    HRESULT STDMETHODCALLTYPE ShowObject() override;
    HRESULT STDMETHODCALLTYPE OnShowWindow(BOOL) override;
    HRESULT STDMETHODCALLTYPE RequestNewObjectLayout() override;
    // IOleWindow
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override;
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override;
    // IOleInPlaceSite
    HRESULT STDMETHODCALLTYPE CanInPlaceActivate() override;
    HRESULT STDMETHODCALLTYPE OnInPlaceActivate() override;
    HRESULT STDMETHODCALLTYPE OnUIActivate() override;
    HRESULT STDMETHODCALLTYPE GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                               LPRECT position, LPRECT clip,
                                               LPOLEINPLACEFRAMEINFO info) override;
    HRESULT STDMETHODCALLTYPE Scroll(SIZE) override;
    HRESULT STDMETHODCALLTYPE OnUIDeactivate(BOOL) override;
    HRESULT STDMETHODCALLTYPE OnInPlaceDeactivate() override;
    HRESULT STDMETHODCALLTYPE DiscardUndoState() override;
    HRESULT STDMETHODCALLTYPE DeactivateAndUndo() override;
    HRESULT STDMETHODCALLTYPE OnPosRectChange(LPCRECT) override;
    // IOleInPlaceUIWindow, IOleInPlaceFrame
    HRESULT STDMETHODCALLTYPE GetBorder(LPRECT) override;
    HRESULT STDMETHODCALLTYPE RequestBorderSpace(LPCBORDERWIDTHS) override;
    HRESULT STDMETHODCALLTYPE SetBorderSpace(LPCBORDERWIDTHS) override;
    HRESULT STDMETHODCALLTYPE SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR name) override;
    HRESULT STDMETHODCALLTYPE InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override;
    HRESULT STDMETHODCALLTYPE SetMenu(HMENU, HOLEMENU, HWND) override;
    HRESULT STDMETHODCALLTYPE RemoveMenus(HMENU) override;
    HRESULT STDMETHODCALLTYPE SetStatusText(LPCOLESTR) override;
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override;
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG, WORD) override;
    // IOleControlSite
    HRESULT STDMETHODCALLTYPE OnControlInfoChanged() override;
    HRESULT STDMETHODCALLTYPE LockInPlaceActive(BOOL) override;
    HRESULT STDMETHODCALLTYPE GetExtendedControl(IDispatch** control) override;
    HRESULT STDMETHODCALLTYPE TransformCoords(POINTL*, POINTF*, DWORD) override;
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG*, DWORD) override;
    HRESULT STDMETHODCALLTYPE OnFocus(BOOL gotFocus) override;
    HRESULT STDMETHODCALLTYPE ShowPropertyFrame() override;

    HWND Frame() const { return frame_; }
    // What the container gives the control as its place, and the part of
    // it that the container shows (the whole place when it is empty).
    RECT position = {10, 10, 550, 364};
    RECT clip = {0, 0, 0, 0};
    // IOleInPlaceFrame::EnableModeless and IOleControlSite::OnFocus, in
    // order ("EnableModeless(0)", "OnFocus(1)"), kept apart from `calls` so
    // that a test may add its own marks between them.
    std::vector<std::string> modalCalls;
    std::vector<std::string> focusCalls;
    bool refuseActivation = false;
    std::vector<std::string> calls;
    ComPtr<IOleInPlaceActiveObject> activeObject;
    std::wstring activeObjectName;

private:
    LONG references_ = 1;
    HWND frame_ = nullptr;
};
LUMBREL_COM_CLASS_END

// Gives `object` the site and activates it in place with DoVerb.
HRESULT Embed(IUnknown* object, TestSite* site, LONG verb = OLEIVERB_INPLACEACTIVATE);
// Closes it and takes the site back, as a container does before letting go.
void Unembed(IUnknown* object);

struct RecordedEvent {
    DISPID dispid = 0;
    UINT argumentCount = 0;
    VARTYPE argumentType = VT_EMPTY;
    void* reference = nullptr;
    browser::GraphicItemInfo record = {};
    std::string sink;
};

LUMBREL_COM_CLASS_BEGIN
class EventRecorder : public IDispatch {
public:
    // Every recorder of a test may share one list, so that the order across
    // sinks shows; `name` tells them apart.
    EventRecorder(std::vector<RecordedEvent>* events, std::string name);
    virtual ~EventRecorder() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*,
                                     UINT*) override;

    LONG References() const { return references_; }
    // Called from inside Invoke, after the event is recorded.
    void (*onEvent)(EventRecorder* self, void* context) = nullptr;
    void* context = nullptr;

private:
    LONG references_ = 1;
    std::vector<RecordedEvent>* events_;
    std::string name_;
};
LUMBREL_COM_CLASS_END

// Advises `sink` on the control's events; the cookie, or 0 on failure.
DWORD AdviseEvents(IUnknown* object, IUnknown* sink, HRESULT* result = nullptr);
HRESULT UnadviseEvents(IUnknown* object, DWORD cookie);

// Gives every waiting message to the hooks and the window procedures,
// without TranslateAccelerator, as a host that knows nothing of controls.
void PumpMessages();

// A record with recognisable bytes in every field.
browser::GraphicItemInfo SampleRecord();

}  // namespace controltest

// A windowed ActiveX control written by hand: the OLE embedding, in-place
// activation, view, persistence, automation and connection-point interfaces
// that containers ask of a control, around one framework window. A concrete
// control derives from OleControl, describes itself with a ControlClass and
// supplies its dispatch table, its drawing and its message handlers.
//
// Lifetime: the object is reference counted and deletes itself at the last
// Release. Its window exists while it is in-place active: DoVerb makes it as
// the child of the site's window (WM_CREATE reaches the derived class's
// OnCreate), and InPlaceDeactivate or Close destroys it.
//
// Keyboard and mouse: while the window exists it is registered with the
// thread's message filter, so its PreTranslateMessage sees the input of its
// own windows before any host's dispatch; TranslateAccelerator offers what
// the filter has not already seen.
//
// Activation, as a windowed control owes its container: a click into any of
// its windows (WM_MOUSEACTIVATE) UI-activates it, and so does the focus
// arriving in any of them; IOleControlSite::OnFocus tells the site when the
// focus comes into the control's windows (TRUE) and when it leaves (FALSE).
// The clip rectangle of InPlaceActivate and SetObjectRects becomes a window
// region (none when the clip covers the whole control). Modal windows of the
// control run inside a ModalScope, which turns the frame's modeless windows
// off (IOleInPlaceFrame::EnableModeless) for their length.
//
// Every COM method is an exception barrier: nothing thrown inside leaves it;
// the caller gets E_UNEXPECTED (E_OUTOFMEMORY for std::bad_alloc).
//
// Persistence: the stream and the property bag carry the version of the
// control's state ("_Version", major in the high word) and then the
// control's extent in HIMETRIC ("_ExtentX", "_ExtentY"; in the stream two
// 32-bit values after the version). Data written before the extent was
// kept, or an extent that no control can have, leaves the extent as it is.
#pragma once

#include <windows.h>

#include <ocidl.h>
#include <olectl.h>

#include <string>

#include "framework/ole/ComClass.h"
#include "framework/ole/ConnectionPoint.h"
#include "framework/ole/Dispatch.h"
#include "framework/ole/MessageFilter.h"
#include "framework/ole/ModuleLock.h"
#include "framework/win32/ComPtr.h"
#include "framework/win32/Window.h"

namespace framework::ole {

struct ControlClass {
    CLSID classId;
    IID dispatchId;  // the primary dispinterface
    IID eventsId;    // the default source dispinterface
    GUID typeLibId;
    WORD typeLibMajor;
    WORD typeLibMinor;
    DWORD miscStatus;
    UINT userTypeNameId;  // string resource of the user type name
    const CLSID* pages;   // property pages, in order
    UINT pageCount;
    WORD stateVersionMajor;  // what persistence writes as "_Version"
    WORD stateVersionMinor;
};

LUMBREL_COM_CLASS_BEGIN
class OleControl : public framework::win32::Window,
                   public FilteredWindow,
                   public IOleObject,
                   public IOleInPlaceObject,
                   public IOleInPlaceActiveObject,
                   public IOleControl,
                   public IViewObject2,
                   public IPersistStreamInit,
                   public IPersistPropertyBag,
                   public IDispatch,
                   public IConnectionPointContainer,
                   public IProvideClassInfo2,
                   public ISpecifyPropertyPages {
public:
    explicit OleControl(const ControlClass& controlClass);
    ~OleControl() override;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IOleObject
    HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* site) override;
    HRESULT STDMETHODCALLTYPE GetClientSite(IOleClientSite** site) override;
    HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR containerApp, LPCOLESTR containerObject) override;
    HRESULT STDMETHODCALLTYPE Close(DWORD saveOption) override;
    HRESULT STDMETHODCALLTYPE SetMoniker(DWORD which, IMoniker* moniker) override;
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) override;
    HRESULT STDMETHODCALLTYPE InitFromData(IDataObject* data, BOOL creation, DWORD reserved) override;
    HRESULT STDMETHODCALLTYPE GetClipboardData(DWORD reserved, IDataObject** data) override;
    HRESULT STDMETHODCALLTYPE DoVerb(LONG verb, LPMSG msg, IOleClientSite* site, LONG index, HWND parent,
                                     LPCRECT position) override;
    HRESULT STDMETHODCALLTYPE EnumVerbs(IEnumOLEVERB** verbs) override;
    HRESULT STDMETHODCALLTYPE Update() override;
    HRESULT STDMETHODCALLTYPE IsUpToDate() override;
    HRESULT STDMETHODCALLTYPE GetUserClassID(CLSID* classId) override;
    HRESULT STDMETHODCALLTYPE GetUserType(DWORD form, LPOLESTR* userType) override;
    HRESULT STDMETHODCALLTYPE SetExtent(DWORD aspect, SIZEL* size) override;
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD aspect, SIZEL* size) override;
    HRESULT STDMETHODCALLTYPE Advise(IAdviseSink* sink, DWORD* connection) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD connection) override;
    HRESULT STDMETHODCALLTYPE EnumAdvise(IEnumSTATDATA** advise) override;
    HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD aspect, DWORD* status) override;
    HRESULT STDMETHODCALLTYPE SetColorScheme(LOGPALETTE* palette) override;

    // IOleWindow, through IOleInPlaceObject and IOleInPlaceActiveObject
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override;
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL enterMode) override;

    // IOleInPlaceObject
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override;
    HRESULT STDMETHODCALLTYPE UIDeactivate() override;
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT position, LPCRECT clip) override;
    HRESULT STDMETHODCALLTYPE ReactivateAndUndo() override;

    // IOleInPlaceActiveObject
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG msg) override;
    HRESULT STDMETHODCALLTYPE OnFrameWindowActivate(BOOL activate) override;
    HRESULT STDMETHODCALLTYPE OnDocWindowActivate(BOOL activate) override;
    HRESULT STDMETHODCALLTYPE ResizeBorder(LPCRECT border, IOleInPlaceUIWindow* window, BOOL frame) override;
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL enable) override;

    // IOleControl
    HRESULT STDMETHODCALLTYPE GetControlInfo(CONTROLINFO* info) override;
    HRESULT STDMETHODCALLTYPE OnMnemonic(MSG* msg) override;
    HRESULT STDMETHODCALLTYPE OnAmbientPropertyChange(DISPID dispid) override;
    HRESULT STDMETHODCALLTYPE FreezeEvents(BOOL freeze) override;

    // IViewObject2
    HRESULT STDMETHODCALLTYPE Draw(DWORD aspect, LONG index, void* aspectInfo, DVTARGETDEVICE* target,
                                   HDC targetDevice, HDC dc, LPCRECTL bounds, LPCRECTL metafileBounds,
                                   WINBOOL(STDMETHODCALLTYPE* keepGoing)(ULONG_PTR),
                                   ULONG_PTR keepGoingArg) override;
    HRESULT STDMETHODCALLTYPE GetColorSet(DWORD aspect, LONG index, void* aspectInfo, DVTARGETDEVICE* target,
                                          HDC targetDevice, LOGPALETTE** colors) override;
    HRESULT STDMETHODCALLTYPE Freeze(DWORD aspect, LONG index, void* aspectInfo, DWORD* freeze) override;
    HRESULT STDMETHODCALLTYPE Unfreeze(DWORD freeze) override;
    HRESULT STDMETHODCALLTYPE SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
    HRESULT STDMETHODCALLTYPE GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD aspect, LONG index, DVTARGETDEVICE* target,
                                        LPSIZEL size) override;

    // IPersist, through IPersistStreamInit and IPersistPropertyBag
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* classId) override;
    HRESULT STDMETHODCALLTYPE InitNew() override;

    // IPersistStreamInit
    HRESULT STDMETHODCALLTYPE IsDirty() override;
    HRESULT STDMETHODCALLTYPE Load(LPSTREAM stream) override;
    HRESULT STDMETHODCALLTYPE Save(LPSTREAM stream, BOOL clearDirty) override;
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) override;

    // IPersistPropertyBag
    HRESULT STDMETHODCALLTYPE Load(IPropertyBag* bag, IErrorLog* log) override;
    HRESULT STDMETHODCALLTYPE Save(IPropertyBag* bag, BOOL clearDirty, BOOL saveAll) override;

    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argError) override;

    // IConnectionPointContainer
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** points) override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

    // IProvideClassInfo2
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetGUID(DWORD kind, GUID* guid) override;

    // ISpecifyPropertyPages
    HRESULT STDMETHODCALLTYPE GetPages(CAUUID* pages) override;

    const ControlClass& Class() const { return class_; }
    bool IsInPlaceActive() const { return inPlaceActive_; }
    bool IsUIActive() const { return uiActive_; }
    bool IsModified() const { return modified_; }
    bool AreEventsFrozen() const { return freezeCount_ > 0; }
    // The extent in HIMETRIC.
    SIZEL Extent() const { return extent_; }
    // The user type name, from the string table.
    std::string UserTypeName() const;

    // Marks the state as changed (or saved).
    void SetModifiedFlag(bool modified = true) { modified_ = modified; }
    // Sets the extent from a size in pixels of the screen.
    void SetInitialSize(int cx, int cy);
    // Records a new size of the control window, in pixels, as its extent.
    bool SetControlSize(int cx, int cy);
    // Calls every connected sink of the events interface with `arguments`,
    // which are in DISPPARAMS order (last argument first). Nothing is fired
    // while the container has frozen the events.
    void FireEvent(DISPID id, VARIANT* arguments, UINT count);
    ConnectionPoint& EventsPoint() { return events_; }

    // The library of the control's types: the registered one of the
    // version in the ControlClass, or else the one in the module itself.
    HRESULT GetTypeLib(LCID locale, ITypeLib** library);

    // Pixels of the screen to HIMETRIC and back.
    static SIZEL PixelsToHimetric(int cx, int cy);
    static SIZE HimetricToPixels(const SIZEL& size);

    // A modal window of the control opens and has closed: the frame's
    // modeless windows are off in between (IOleInPlaceFrame::EnableModeless
    // FALSE at the first of nested ones, TRUE after the last, on the same
    // frame). Without a frame (the control is not in-place active) nothing
    // is said; the modal window disables its owner itself.
    void BeginModal();
    void EndModal();
    class ModalScope {
    public:
        explicit ModalScope(OleControl& control) : control_(control) { control_.BeginModal(); }
        ~ModalScope() { control_.EndModal(); }
        ModalScope(const ModalScope&) = delete;
        ModalScope& operator=(const ModalScope&) = delete;

    private:
        OleControl& control_;
    };

protected:
    // The dispatch table of the primary dispinterface.
    virtual const DispatchMember* DispatchMembers(size_t* count) const = 0;
    // Carries out a call that PrepareDispatchCall has checked. Returns the
    // HRESULT of Invoke; a property get stores its value in `result`.
    virtual HRESULT InvokeMember(DispatchCall& call, VARIANT* result) = 0;
    // Paints the control into `dc` within `bounds`.
    virtual void OnDraw(HDC dc, const RECT& bounds, const RECT& invalid);
    // Puts the state back to that of a new control (InitNew).
    virtual void OnResetState();
    // The Properties verb: the container's property frame, or ours.
    virtual HRESULT OnProperties(HWND parent);

    int OnCreate(CREATESTRUCTA* create) override;
    void OnDestroy() override;
    void OnPaint() override;
    // WM_PRINTCLIENT draws as WM_PAINT does, into the given device context.
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override;

    // FilteredWindow
    HWND FilterRoot() const override { return hwnd_; }
    bool FilterMessage(MSG* msg) override;

    IOleClientSite* ClientSite() const { return clientSite_.Get(); }

private:
    HRESULT InPlaceActivate(bool uiActivate);
    HRESULT ActivateUI();
    // The part of the window inside `clip` (null: all of it) as its region.
    void ApplyClip(const RECT& position, const RECT* clip);
    // WM_MOUSEACTIVATE: the host's answer, after UI activation.
    LRESULT OnMouseActivate(WPARAM wParam, LPARAM lParam);
    // The message filter saw the focus cross the edge of the control's
    // windows; the site hears of it once the change is complete.
    void OnFilteredFocusChange() override;
    // Tells the site whether the focus is in the control's windows now, if
    // that differs from what it was told last; focus arriving UI-activates.
    void ReportFocus();
    HRESULT LoadTypeInfo(ITypeInfo** info, const GUID& guid);
    void SendViewChange();

    ControlClass class_;
    ObjectCounter counter_;
    LONG references_ = 1;
    bool inPlaceActive_ = false;
    bool uiActive_ = false;
    bool modified_ = false;
    // What IOleControlSite::OnFocus said last, and whether a report of a
    // change is waiting in the window's queue.
    bool focusReported_ = false;
    bool focusReportPending_ = false;
    int modalDepth_ = 0;
    framework::win32::ComPtr<IOleInPlaceFrame> modalFrame_;
    long freezeCount_ = 0;
    SIZEL extent_ = {0, 0};
    RECT position_ = {0, 0, 0, 0};
    framework::win32::ComPtr<IOleClientSite> clientSite_;
    framework::win32::ComPtr<IOleInPlaceSite> inPlaceSite_;
    framework::win32::ComPtr<IOleInPlaceFrame> frame_;
    framework::win32::ComPtr<IOleInPlaceUIWindow> uiWindow_;
    framework::win32::ComPtr<IOleAdviseHolder> adviseHolder_;
    framework::win32::ComPtr<IAdviseSink> viewSink_;
    DWORD viewAspects_ = 0;
    DWORD viewAdviseFlags_ = 0;
    framework::win32::ComPtr<ITypeLib> typeLib_;
    framework::win32::ComPtr<ITypeInfo> dispatchInfo_;
    ConnectionPoint events_;
};
LUMBREL_COM_CLASS_END

// The window class of controls: double clicks, arrow cursor, button-face
// background. Registered in the module of the framework on first use.
std::string ControlWindowClass();
// Unregisters it; a module calls this when it is unloaded, so that a later
// load does not find a class whose procedure is gone.
void UnregisterControlWindowClass();

}  // namespace framework::ole

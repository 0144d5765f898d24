// The test container's sink of _DLumbrelEvents: it decodes each event and
// hands it on, ItemSel with the GraphicItemInfo that its VARIANT leads to.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <functional>
#include <string>

#include "browser/GraphicItemInfo.h"
#include "framework/ole/ComClass.h"

namespace host {

struct ControlEvent {
    enum Kind { kItemSel, kItemDBClick, kUnknown } kind = kUnknown;
    DISPID dispid = 0;
    // ItemSel: whether the argument was a VARIANT of type VT_BYREF alone with
    // a non-null reference, and the record it pointed to then.
    bool recordValid = false;
    VARTYPE argumentType = VT_EMPTY;
    browser::GraphicItemInfo record = {};
};

// "ItemSel valid=1 itemNumber=3 path=... name=..." for the log pane.
std::string DescribeEvent(const ControlEvent& event);
// {"event":"ItemSel","valid":1,...} for the script mode.
std::string EventJson(const ControlEvent& event);

LUMBREL_COM_CLASS_BEGIN
class EventSink : public IDispatch {
public:
    using Handler = std::function<void(const ControlEvent&)>;
    explicit EventSink(Handler handler) : handler_(std::move(handler)) {}
    virtual ~EventSink() = default;
    EventSink(const EventSink&) = delete;
    EventSink& operator=(const EventSink&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argError) override;

private:
    LONG references_ = 1;
    Handler handler_;
};
LUMBREL_COM_CLASS_END

}  // namespace host

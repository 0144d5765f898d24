#include "host/EventSink.h"

#include <cstdio>
#include <cstring>

#include "control/LumbrelIds.h"
#include "framework/ole/Barrier.h"
#include "host/Json.h"

namespace host {

namespace {

std::string Field(const char* field, size_t size) {
    // A field without its NUL is read to its end, never beyond.
    size_t length = 0;
    while (length < size && field[length] != '\0') ++length;
    return std::string(field, length);
}

}  // namespace

std::string DescribeEvent(const ControlEvent& event) {
    switch (event.kind) {
        case ControlEvent::kItemDBClick: return "ItemDBClick";
        case ControlEvent::kItemSel: {
            if (!event.recordValid) {
                char text[80];
                std::snprintf(text, sizeof text, "ItemSel with a VARIANT of type 0x%04X, no record",
                              event.argumentType);
                return text;
            }
            const auto& r = event.record;
            return "ItemSel valid=" + std::to_string(r.valid) +
                   " itemNumber=" + std::to_string(r.itemNumber) + " path=" + Field(r.path, sizeof r.path) +
                   " name=" + Field(r.name, sizeof r.name);
        }
        default: return "event " + std::to_string(event.dispid);
    }
}

std::string EventJson(const ControlEvent& event) {
    switch (event.kind) {
        case ControlEvent::kItemDBClick: return "{\"event\":\"ItemDBClick\"}";
        case ControlEvent::kItemSel: {
            if (!event.recordValid)
                return "{\"event\":\"ItemSel\",\"error\":\"argument of type " +
                       std::to_string(event.argumentType) + " carries no record\"}";
            const auto& r = event.record;
            return "{\"event\":\"ItemSel\",\"valid\":" + std::to_string(r.valid) +
                   ",\"itemNumber\":" + std::to_string(r.itemNumber) +
                   ",\"path\":" + JsonString(Field(r.path, sizeof r.path)) +
                   ",\"name\":" + JsonString(Field(r.name, sizeof r.name)) + "}";
        }
        default: return "{\"event\":\"unknown\",\"dispid\":" + std::to_string(event.dispid) + "}";
    }
}

HRESULT EventSink::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch && iid != DIID__DLumbrelEvents) return E_NOINTERFACE;
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

ULONG EventSink::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG EventSink::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
}

HRESULT EventSink::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT EventSink::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
    if (info != nullptr) *info = nullptr;
    return E_NOTIMPL;
}

HRESULT EventSink::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) {
    return E_NOTIMPL;
}

HRESULT EventSink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, UINT*) {
    return framework::ole::ComBarrier([&] {
        if (params == nullptr) return E_INVALIDARG;
        ControlEvent event;
        event.dispid = id;
        if (id == control::kDispidItemSel) {
            event.kind = ControlEvent::kItemSel;
            if (params->cArgs == 1 && params->rgvarg != nullptr) {
                const VARIANT& argument = params->rgvarg[0];
                event.argumentType = argument.vt;
                if (argument.vt == VT_BYREF && argument.byref != nullptr) {
                    // The record is the control's, valid only during this call.
                    std::memcpy(&event.record, argument.byref, sizeof event.record);
                    event.recordValid = true;
                }
            }
        } else if (id == control::kDispidItemDBClick) {
            event.kind = ControlEvent::kItemDBClick;
        }
        if (handler_) handler_(event);
        return S_OK;
    });
}

}  // namespace host

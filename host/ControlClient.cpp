#include "host/ControlClient.h"

#include <cstdio>

#include "framework/ole/Dispatch.h"
#include "framework/ole/Strings.h"

namespace host {

using framework::ole::Bstr;
using framework::ole::Variant;

ControlClient::ControlClient(IUnknown* control) {
    if (control != nullptr) control->QueryInterface(IID_IDispatch, dispatch_.PutVoid());
}

HRESULT ControlClient::Id(const wchar_t* name, DISPID* id) {
    if (!dispatch_) return E_NOINTERFACE;
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    return dispatch_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, id);
}

HRESULT ControlClient::Invoke(const wchar_t* name, WORD flags, VARIANT* arguments, UINT count,
                              VARIANT* result) {
    DISPID id = 0;
    HRESULT hr = Id(name, &id);
    if (FAILED(hr)) return hr;
    DISPID putId = DISPID_PROPERTYPUT;
    DISPPARAMS params = {arguments, nullptr, count, 0};
    if (flags & DISPATCH_PROPERTYPUT) {
        params.rgdispidNamedArgs = &putId;
        params.cNamedArgs = 1;
    }
    EXCEPINFO exception = {};
    UINT argError = 0;
    hr = dispatch_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result, &exception, &argError);
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrHelpFile);
    return hr;
}

HRESULT ControlClient::Get(const wchar_t* property, int* value) {
    Variant result;
    const HRESULT hr = Invoke(property, DISPATCH_PROPERTYGET, nullptr, 0, result.Get());
    if (FAILED(hr)) return hr;
    Variant converted;
    const HRESULT conversion = ::VariantChangeType(converted.Get(), result.Get(), 0, VT_BOOL);
    if (FAILED(conversion)) return conversion;
    *value = converted.Get()->boolVal != VARIANT_FALSE ? 1 : 0;
    return S_OK;
}

HRESULT ControlClient::Put(const wchar_t* property, bool value) {
    VARIANT argument;
    argument.vt = VT_BOOL;
    argument.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return Invoke(property, DISPATCH_PROPERTYPUT, &argument, 1, nullptr);
}

HRESULT ControlClient::RefreshCombo(const std::string& drive, bool insert) {
    Bstr text = Bstr::FromAnsi(drive);
    VARIANT arguments[2];
    arguments[1].vt = VT_BSTR;
    arguments[1].bstrVal = text.Get();
    arguments[0].vt = VT_BOOL;
    arguments[0].boolVal = insert ? VARIANT_TRUE : VARIANT_FALSE;
    return Invoke(L"RefreshCombo", DISPATCH_METHOD, arguments, 2, nullptr);
}

HRESULT ControlClient::SetItemPath(const std::string& path, long imageCount) {
    Bstr text = Bstr::FromAnsi(path);
    VARIANT arguments[2];
    arguments[1].vt = VT_BSTR;
    arguments[1].bstrVal = text.Get();
    arguments[0].vt = VT_I4;
    arguments[0].lVal = imageCount;
    return Invoke(L"SetItemPath", DISPATCH_METHOD, arguments, 2, nullptr);
}

HRESULT ControlClient::DoubleClickFlag(bool doubleClick) {
    VARIANT argument;
    argument.vt = VT_BOOL;
    argument.boolVal = doubleClick ? VARIANT_TRUE : VARIANT_FALSE;
    return Invoke(L"DoubleClickFlag", DISPATCH_METHOD, &argument, 1, nullptr);
}

HRESULT ControlClient::Call(const wchar_t* method) {
    return Invoke(method, DISPATCH_METHOD, nullptr, 0, nullptr);
}

std::string ControlClient::Describe(const wchar_t* member, HRESULT hr) {
    const std::wstring name(member);
    char text[64];
    std::snprintf(text, sizeof text, " failed with 0x%08lX", static_cast<unsigned long>(hr));
    return framework::ole::WideToAnsi(name.data(), name.size()) + text;
}

}  // namespace host

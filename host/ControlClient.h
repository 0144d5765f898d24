// The container's side of the control's automation: members called by name,
// as a host that knows only the names would call them.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <string>

#include "framework/win32/ComPtr.h"

namespace host {

class ControlClient {
public:
    explicit ControlClient(IUnknown* control = nullptr);

    bool IsConnected() const { return static_cast<bool>(dispatch_); }

    // Reads a property; *value is 0 or 1.
    HRESULT Get(const wchar_t* property, int* value);
    HRESULT Put(const wchar_t* property, bool value);
    HRESULT RefreshCombo(const std::string& drive, bool insert);
    HRESULT SetItemPath(const std::string& path, long imageCount);
    HRESULT DoubleClickFlag(bool doubleClick);
    // RefreshControl, RedrawBitmaps, AboutBox: members without arguments.
    HRESULT Call(const wchar_t* method);

    // "SetItemPath failed with 0x80020006" and the like.
    static std::string Describe(const wchar_t* member, HRESULT hr);

private:
    HRESULT Id(const wchar_t* name, DISPID* id);
    // Invokes `name` with `arguments` in DISPPARAMS order (last first).
    HRESULT Invoke(const wchar_t* name, WORD flags, VARIANT* arguments, UINT count, VARIANT* result);

    framework::win32::ComPtr<IDispatch> dispatch_;
};

}  // namespace host

// The platform's ActiveX host window: atl.dll's AtlAxWin class, loaded at
// run time (MinGW has no import library for atl.dll). A control is made by
// ProgID inside a window of that class with AtlAxCreateControlEx, which
// creates it, initialises it (InitNew), gives it the window's client site
// and activates it in place. The host keeps the site (the "container"
// object) for as long as the window lives.
#pragma once

#include <windows.h>

#include <string>

#include "framework/win32/ComPtr.h"

namespace host {

class AtlHost {
public:
    AtlHost() = default;
    ~AtlHost();
    AtlHost(const AtlHost&) = delete;
    AtlHost& operator=(const AtlHost&) = delete;

    // Loads atl.dll and registers its window classes; false with `error` set
    // when that fails.
    bool Initialize(std::string* error);

    // A child window of class AtlAxWin holding the control of `progId`.
    // Returns the window, or null with `error` set.
    HWND CreateControl(HWND parent, const wchar_t* progId, const RECT& rect, UINT id, std::string* error);

    // The control's IUnknown, while it lives.
    IUnknown* Control() const { return control_.Get(); }
    HWND HostWindow() const { return window_; }

    // Releases the control and destroys the host window (which closes the
    // control and takes back its site).
    void Destroy();

private:
    using AxWinInitFunction = BOOL(WINAPI*)();
    using AxCreateControlExFunction = HRESULT(WINAPI*)(LPCOLESTR, HWND, IStream*, IUnknown**, IUnknown**,
                                                       REFIID, IUnknown*);
    HMODULE atl_ = nullptr;
    AxCreateControlExFunction createControlEx_ = nullptr;
    HWND window_ = nullptr;
    framework::win32::ComPtr<IUnknown> container_;
    framework::win32::ComPtr<IUnknown> control_;
};

}  // namespace host

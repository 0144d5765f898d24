#include "host/AtlHost.h"

#include <cstdio>

namespace host {

namespace {

std::string HresultText(const char* what, HRESULT hr) {
    char text[160];
    std::snprintf(text, sizeof text, "%s failed with 0x%08lX", what, static_cast<unsigned long>(hr));
    return text;
}

}  // namespace

AtlHost::~AtlHost() {
    Destroy();
    // atl.dll stays loaded: the window class it registered may still be in use.
}

bool AtlHost::Initialize(std::string* error) {
    if (createControlEx_ != nullptr) return true;
    atl_ = ::LoadLibraryA("atl.dll");
    if (atl_ == nullptr) {
        *error = "atl.dll could not be loaded";
        return false;
    }
    auto init =
        reinterpret_cast<AxWinInitFunction>(reinterpret_cast<void*>(::GetProcAddress(atl_, "AtlAxWinInit")));
    createControlEx_ = reinterpret_cast<AxCreateControlExFunction>(
        reinterpret_cast<void*>(::GetProcAddress(atl_, "AtlAxCreateControlEx")));
    if (init == nullptr || createControlEx_ == nullptr) {
        *error = "atl.dll lacks AtlAxWinInit or AtlAxCreateControlEx";
        createControlEx_ = nullptr;
        return false;
    }
    if (!init()) {
        *error = "AtlAxWinInit failed";
        createControlEx_ = nullptr;
        return false;
    }
    return true;
}

HWND AtlHost::CreateControl(HWND parent, const wchar_t* progId, const RECT& rect, UINT id,
                            std::string* error) {
    if (createControlEx_ == nullptr) {
        *error = "the ActiveX host is not initialised";
        return nullptr;
    }
    Destroy();
    // An empty window text: the class's own WM_CREATE then makes nothing,
    // and the control is made below, where its site can be kept.
    window_ = ::CreateWindowExW(0, L"AtlAxWin", L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, rect.left,
                                rect.top, rect.right - rect.left, rect.bottom - rect.top, parent,
                                reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)),
                                ::GetModuleHandleW(nullptr), nullptr);
    if (window_ == nullptr) {
        *error = "no window of class AtlAxWin could be made";
        return nullptr;
    }
    const HRESULT hr =
        createControlEx_(progId, window_, nullptr, container_.Put(), control_.Put(), IID_NULL, nullptr);
    if (FAILED(hr) || !control_) {
        *error = HresultText("AtlAxCreateControlEx", FAILED(hr) ? hr : E_NOINTERFACE);
        Destroy();
        return nullptr;
    }
    return window_;
}

void AtlHost::Destroy() {
    control_.Reset();
    if (window_ != nullptr) {
        ::DestroyWindow(window_);
        window_ = nullptr;
    }
    container_.Reset();
}

}  // namespace host

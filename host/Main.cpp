// The Lumbrel Test Container: a Windows application that embeds the control
// the way many hosts do, through atl.dll's AtlAxWin window.
//
//   LumbrelTestContainer.exe                   the window, with its menus
//   LumbrelTestContainer.exe --item-path PATH  the window, after SetItemPath(PATH, 1),
//                                              as a host that restores its last pick
//   LumbrelTestContainer.exe --script FILE     runs FILE, prints JSON lines
#include <windows.h>

#include <shellapi.h>

#include <string>

#include "framework/ole/Strings.h"
#include "framework/win32/Application.h"
#include "host/ContainerWindow.h"
#include "host/Script.h"

namespace {

void ErrorLine(const std::string& text) {
    const HANDLE handle = ::GetStdHandle(STD_ERROR_HANDLE);
    DWORD written = 0;
    const std::string line = text + "\n";
    if (handle != nullptr && handle != INVALID_HANDLE_VALUE)
        ::WriteFile(handle, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

class OleSession {
public:
    OleSession() : result_(::OleInitialize(nullptr)) {}
    ~OleSession() {
        if (SUCCEEDED(result_)) ::OleUninitialize();
    }
    OleSession(const OleSession&) = delete;
    OleSession& operator=(const OleSession&) = delete;
    bool Usable() const { return SUCCEEDED(result_); }

private:
    HRESULT result_;
};

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int showCommand) {
    int count = 0;
    LPWSTR* arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::string script;
    std::string itemPath;
    bool scriptMode = false;
    for (int i = 1; arguments != nullptr && i < count; ++i) {
        const std::wstring argument = arguments[i];
        if (argument == L"--script" && i + 1 < count) {
            scriptMode = true;
            const std::wstring file = arguments[++i];
            script = framework::ole::WideToAnsi(file.data(), file.size());
        } else if (argument == L"--item-path" && i + 1 < count) {
            const std::wstring path = arguments[++i];
            itemPath = framework::ole::WideToAnsi(path.data(), path.size());
        } else {
            ErrorLine("usage: LumbrelTestContainer [--item-path PATH] [--script FILE]");
            ::LocalFree(arguments);
            return 2;
        }
    }
    if (arguments != nullptr) ::LocalFree(arguments);

    OleSession ole;
    if (!ole.Usable()) {
        ErrorLine("OLE could not be initialised");
        return 1;
    }
    int status = 0;
    {
        host::ContainerWindow window;
        std::string error;
        if (!window.Create(scriptMode ? SW_SHOWNOACTIVATE : showCommand, &error)) {
            ErrorLine("Lumbrel Test Container: " + error);
            if (!scriptMode) ::MessageBoxA(nullptr, error.c_str(), "Lumbrel Test Container", MB_ICONERROR);
            return 1;
        }
        if (!itemPath.empty()) {
            const HRESULT hr = window.Client().SetItemPath(itemPath, 1);
            if (FAILED(hr)) window.Log(host::ControlClient::Describe(L"SetItemPath", hr));
        }
        if (scriptMode) {
            status = host::RunScript(window, script);
            window.DestroyWindow();
        } else {
            status = framework::win32::RunMessageLoop();
        }
    }
    return status;
}

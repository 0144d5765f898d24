// The main window of the Lumbrel Test Container: the control, hosted by
// atl.dll's AtlAxWin window, above a log pane that shows each event with
// its decoded GraphicItemInfo. The Control menu calls the eight members.
#pragma once

#include <windows.h>

#include <ocidl.h>

#include <functional>
#include <string>

#include "framework/win32/ComPtr.h"
#include "framework/win32/Window.h"
#include "host/AtlHost.h"
#include "host/ControlClient.h"
#include "host/EventSink.h"

namespace host {

class ContainerWindow : public framework::win32::Window {
public:
    ContainerWindow() = default;
    ~ContainerWindow() override;

    // Makes the window and the control in it; false with `error` set when
    // the control cannot be made (for instance, when it is not registered).
    bool Create(int showCommand, std::string* error);

    ControlClient& Client() { return client_; }
    // The control's own window (IOleWindow), null while it has none.
    HWND ControlWindow() const;
    IUnknown* Control() const { return atl_.Control(); }

    // Adds a line to the log pane.
    void Log(const std::string& line);
    // Also hands every event to `observer` (the script mode's printer).
    void SetEventObserver(std::function<void(const ControlEvent&)> observer) {
        observer_ = std::move(observer);
    }

protected:
    bool OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) override;
    void OnSize(UINT type, int cx, int cy) override;
    void OnDestroy() override;
    void OnClose() override;

private:
    void Layout(int cx, int cy);
    void OnEvent(const ControlEvent& event);
    void Report(const wchar_t* member, HRESULT hr);
    void ToggleProperty(const wchar_t* property);
    void ReadProperty(const wchar_t* property);
    void AskAndCall(UINT command);
    void ShowProperties();
    void Disconnect();

    AtlHost atl_;
    ControlClient client_;
    framework::win32::ComPtr<IConnectionPoint> eventsPoint_;
    DWORD eventsCookie_ = 0;
    HWND log_ = nullptr;
    std::function<void(const ControlEvent&)> observer_;
};

}  // namespace host

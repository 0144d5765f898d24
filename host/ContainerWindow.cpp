#include "host/ContainerWindow.h"

#include <olectl.h>

#include <cstdio>
#include <cstdlib>

#include "control/LumbrelIds.h"
#include "framework/win32/Application.h"
#include "framework/win32/Dialog.h"
#include "host/HostResources.h"

namespace host {

namespace {

constexpr int kControlAreaHeight = 380;
constexpr UINT kAxWindowId = 1;
constexpr UINT kLogId = 2;

// The dialog that asks for the arguments of RefreshCombo, SetItemPath and
// DoubleClickFlag.
class ArgumentsDialog : public framework::win32::Dialog {
public:
    ArgumentsDialog(const char* caption, const char* textLabel, const char* numberLabel, bool wantsText)
        : Dialog(IDD_ARGUMENTS),
          caption_(caption),
          textLabel_(textLabel),
          numberLabel_(numberLabel),
          wantsText_(wantsText) {}

    std::string text;
    long number = 0;

protected:
    BOOL OnInitDialog() override {
        ::SetWindowTextA(hwnd_, caption_);
        ::SetDlgItemTextA(hwnd_, IDC_ARGUMENT_TEXT_LABEL, textLabel_);
        ::SetDlgItemTextA(hwnd_, IDC_ARGUMENT_NUMBER_LABEL, numberLabel_);
        ::SetDlgItemTextA(hwnd_, IDC_ARGUMENT_NUMBER, "1");
        if (!wantsText_) {
            ::EnableWindow(GetDlgItem(IDC_ARGUMENT_TEXT), FALSE);
            ::EnableWindow(GetDlgItem(IDC_ARGUMENT_TEXT_LABEL), FALSE);
        }
        return TRUE;
    }
    void OnOK() override {
        const int length = ::GetWindowTextLengthA(GetDlgItem(IDC_ARGUMENT_TEXT));
        std::string buffer(static_cast<size_t>(length > 0 ? length : 0) + 1, '\0');
        ::GetDlgItemTextA(hwnd_, IDC_ARGUMENT_TEXT, &buffer[0], static_cast<int>(buffer.size()));
        text = buffer.c_str();
        char digits[32] = {};
        ::GetDlgItemTextA(hwnd_, IDC_ARGUMENT_NUMBER, digits, static_cast<int>(sizeof digits));
        number = std::strtol(digits, nullptr, 10);
        Dialog::OnOK();
    }

private:
    const char* caption_;
    const char* textLabel_;
    const char* numberLabel_;
    bool wantsText_;
};

}  // namespace

ContainerWindow::~ContainerWindow() {
    Disconnect();
    atl_.Destroy();
}

bool ContainerWindow::Create(int showCommand, std::string* error) {
    const HINSTANCE instance = ::GetModuleHandleW(nullptr);
    const std::string windowClass =
        RegisterWindowClass(0, ::LoadCursor(nullptr, IDC_ARROW), reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1),
                            ::LoadIconA(instance, MAKEINTRESOURCEA(IDI_CONTAINER)));
    RECT frame = {0, 0, 600, kControlAreaHeight + 160};
    ::AdjustWindowRect(&frame, WS_OVERLAPPEDWINDOW, TRUE);
    const RECT rect = {CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT + frame.right - frame.left,
                       CW_USEDEFAULT + frame.bottom - frame.top};
    if (!CreateEx(0, windowClass, "Lumbrel Test Container", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, rect,
                  nullptr, 0)) {
        *error = "the main window could not be made";
        return false;
    }
    ::SetMenu(hwnd_, ::LoadMenuA(instance, MAKEINTRESOURCEA(IDM_CONTAINER)));
    log_ =
        ::CreateWindowExA(WS_EX_CLIENTEDGE, "LISTBOX", "",
                          WS_CHILD | WS_VISIBLE | WS_VSCROLL | LBS_NOINTEGRALHEIGHT | LBS_NOSEL, 0, 0, 10, 10,
                          hwnd_, reinterpret_cast<HMENU>(static_cast<UINT_PTR>(kLogId)), instance, nullptr);
    ::SendMessageA(log_, WM_SETFONT, reinterpret_cast<WPARAM>(::GetStockObject(DEFAULT_GUI_FONT)), FALSE);

    if (!atl_.Initialize(error)) return false;
    const RECT client = GetClientRect();
    const RECT area = {0, 0, client.right, kControlAreaHeight};
    wchar_t progId[64];
    ::MultiByteToWideChar(CP_ACP, 0, control::kControlProgId, -1, progId, 64);
    if (atl_.CreateControl(hwnd_, progId, area, kAxWindowId, error) == nullptr) return false;
    client_ = ControlClient(atl_.Control());

    framework::win32::ComPtr<IConnectionPointContainer> points;
    if (SUCCEEDED(atl_.Control()->QueryInterface(IID_IConnectionPointContainer, points.PutVoid())) &&
        SUCCEEDED(points->FindConnectionPoint(DIID__DLumbrelEvents, eventsPoint_.Put()))) {
        auto* sink = new EventSink([this](const ControlEvent& event) { OnEvent(event); });
        const HRESULT hr = eventsPoint_->Advise(sink, &eventsCookie_);
        sink->Release();
        if (FAILED(hr)) Report(L"Advise", hr);
    } else {
        Log("The control offers no connection point for _DLumbrelEvents.");
    }
    Layout(client.right, client.bottom);
    ::ShowWindow(hwnd_, showCommand);
    ::UpdateWindow(hwnd_);
    Log("Lumbrel Control created by ProgID LUMBREL.LumbrelCtrl.1; events advised.");
    return true;
}

HWND ContainerWindow::ControlWindow() const {
    framework::win32::ComPtr<IOleWindow> window;
    HWND handle = nullptr;
    if (atl_.Control() != nullptr &&
        SUCCEEDED(atl_.Control()->QueryInterface(IID_IOleWindow, window.PutVoid())))
        window->GetWindow(&handle);
    return handle;
}

void ContainerWindow::Log(const std::string& line) {
    if (log_ == nullptr) return;
    const LRESULT index = ::SendMessageA(log_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
    if (index >= 0) ::SendMessageA(log_, LB_SETTOPINDEX, static_cast<WPARAM>(index), 0);
}

void ContainerWindow::OnEvent(const ControlEvent& event) {
    Log(DescribeEvent(event));
    if (observer_) observer_(event);
}

void ContainerWindow::Report(const wchar_t* member, HRESULT hr) {
    Log(ControlClient::Describe(member, hr));
}

void ContainerWindow::Layout(int cx, int cy) {
    if (atl_.HostWindow() != nullptr) ::MoveWindow(atl_.HostWindow(), 0, 0, cx, kControlAreaHeight, TRUE);
    if (log_ != nullptr)
        ::MoveWindow(log_, 0, kControlAreaHeight, cx, cy > kControlAreaHeight ? cy - kControlAreaHeight : 0,
                     TRUE);
}

void ContainerWindow::OnSize(UINT type, int cx, int cy) {
    Window::OnSize(type, cx, cy);
    Layout(cx, cy);
}

void ContainerWindow::ToggleProperty(const wchar_t* property) {
    int value = 0;
    HRESULT hr = client_.Get(property, &value);
    if (SUCCEEDED(hr)) hr = client_.Put(property, value == 0);
    if (FAILED(hr)) return Report(property, hr);
    ReadProperty(property);
}

void ContainerWindow::ReadProperty(const wchar_t* property) {
    int value = 0;
    const HRESULT hr = client_.Get(property, &value);
    if (FAILED(hr)) return Report(property, hr);
    char name[64] = {};
    ::WideCharToMultiByte(CP_ACP, 0, property, -1, name, sizeof name, nullptr, nullptr);
    Log(std::string(name) + " = " + std::to_string(value));
}

void ContainerWindow::AskAndCall(UINT command) {
    HRESULT hr = S_OK;
    if (command == ID_REFRESH_COMBO) {
        ArgumentsDialog ask("RefreshCombo", "szDrive:", "bInsert:", true);
        if (ask.DoModal(hwnd_) != IDOK) return;
        hr = client_.RefreshCombo(ask.text, ask.number != 0);
        Log("RefreshCombo(\"" + ask.text + "\", " + std::to_string(ask.number) + ")");
    } else if (command == ID_SET_ITEM_PATH) {
        ArgumentsDialog ask("SetItemPath", "szPath:", "lImageCount:", true);
        if (ask.DoModal(hwnd_) != IDOK) return;
        hr = client_.SetItemPath(ask.text, ask.number);
        Log("SetItemPath(\"" + ask.text + "\", " + std::to_string(ask.number) + ")");
    } else {
        ArgumentsDialog ask("DoubleClickFlag", "", "bDbClick:", false);
        if (ask.DoModal(hwnd_) != IDOK) return;
        hr = client_.DoubleClickFlag(ask.number != 0);
        Log("DoubleClickFlag(" + std::to_string(ask.number) + ")");
    }
    if (FAILED(hr)) Report(L"call", hr);
}

void ContainerWindow::ShowProperties() {
    framework::win32::ComPtr<IOleObject> object;
    if (atl_.Control() == nullptr || FAILED(atl_.Control()->QueryInterface(IID_IOleObject, object.PutVoid())))
        return;
    RECT rect = GetClientRect();
    const HRESULT hr = object->DoVerb(OLEIVERB_PROPERTIES, nullptr, nullptr, 0, hwnd_, &rect);
    if (FAILED(hr)) Report(L"the Properties verb", hr);
}

bool ContainerWindow::OnCmdMsg(UINT id, int code, void* extra, void* handlerInfo) {
    switch (id) {
        case ID_FILE_EXIT: ::PostMessageA(hwnd_, WM_CLOSE, 0, 0); return true;
        case ID_ASPECT_RATIO_TOGGLE: ToggleProperty(L"AspectRatio"); return true;
        case ID_ASPECT_RATIO_GET: ReadProperty(L"AspectRatio"); return true;
        case ID_THUMBNAIL_STATE_TOGGLE: ToggleProperty(L"thumbNailState"); return true;
        case ID_THUMBNAIL_STATE_GET: ReadProperty(L"thumbNailState"); return true;
        case ID_REFRESH_COMBO:
        case ID_SET_ITEM_PATH:
        case ID_DOUBLE_CLICK_FLAG: AskAndCall(id); return true;
        case ID_REFRESH_CONTROL:
            if (FAILED(client_.Call(L"RefreshControl"))) Log("RefreshControl failed");
            return true;
        case ID_REDRAW_BITMAPS:
            if (FAILED(client_.Call(L"RedrawBitmaps"))) Log("RedrawBitmaps failed");
            return true;
        case ID_ABOUT_BOX:
            if (FAILED(client_.Call(L"AboutBox"))) Log("AboutBox failed");
            return true;
        case ID_PROPERTIES: ShowProperties(); return true;
        case ID_LOG_CLEAR: ::SendMessageA(log_, LB_RESETCONTENT, 0, 0); return true;
        default: return Window::OnCmdMsg(id, code, extra, handlerInfo);
    }
}

void ContainerWindow::Disconnect() {
    if (eventsPoint_ && eventsCookie_ != 0) eventsPoint_->Unadvise(eventsCookie_);
    eventsCookie_ = 0;
    eventsPoint_.Reset();
    client_ = ControlClient();
}

void ContainerWindow::OnClose() {
    DestroyWindow();
}

void ContainerWindow::OnDestroy() {
    Disconnect();
    atl_.Destroy();
    log_ = nullptr;
    ::PostQuitMessage(0);
    Window::OnDestroy();
}

}  // namespace host

#include "framework/win32/Dialog.h"

#include "framework/win32/Application.h"

namespace framework::win32 {

namespace {

// The dialog whose window is being made on this thread, and the hook that
// binds it: a creation hook sees the new dialog window before its first
// message (WM_SETFONT comes even before WM_INITDIALOG), so every message of
// its life reaches the object.
thread_local Dialog* t_creatingDialog = nullptr;
thread_local HHOOK t_creationHook = nullptr;

LRESULT CALLBACK CreationHook(int code, WPARAM wParam, LPARAM lParam) {
    const HHOOK hook = t_creationHook;
    if (code == HCBT_CREATEWND && t_creatingDialog != nullptr) {
        Dialog* dialog = t_creatingDialog;
        t_creatingDialog = nullptr;
        dialog->SubclassWindow(reinterpret_cast<HWND>(wParam));
        // The dialog comes before its controls; nothing later is of interest.
        ::UnhookWindowsHookEx(hook);
        t_creationHook = nullptr;
        return 0;
    }
    return ::CallNextHookEx(hook, code, wParam, lParam);
}

// Binds the next window made on this thread to `dialog` for as long as it lives.
class CreationBinding {
public:
    explicit CreationBinding(Dialog* dialog) : previous_(t_creatingDialog), previousHook_(t_creationHook) {
        t_creatingDialog = dialog;
        t_creationHook = ::SetWindowsHookExA(WH_CBT, &CreationHook, nullptr, ::GetCurrentThreadId());
    }
    ~CreationBinding() {
        if (t_creationHook != nullptr) ::UnhookWindowsHookEx(t_creationHook);
        t_creatingDialog = previous_;
        t_creationHook = previousHook_;
    }
    CreationBinding(const CreationBinding&) = delete;
    CreationBinding& operator=(const CreationBinding&) = delete;

private:
    Dialog* previous_;
    HHOOK previousHook_;
};

}  // namespace

INT_PTR CALLBACK Dialog::DialogProc(HWND hwnd, UINT message, WPARAM, LPARAM) {
    if (message != WM_INITDIALOG) return FALSE;
    auto* dialog = dynamic_cast<Dialog*>(Window::FromHandle(hwnd));
    if (dialog == nullptr) return TRUE;
    // Our window procedure passed WM_INITDIALOG on to the platform's dialog
    // procedure, which asks us here; an exception must not cross it.
    try {
        return dialog->OnInitDialog();
    } catch (...) {
        ReportWindowException(hwnd, message);
        return TRUE;
    }
}

bool Dialog::Create(HWND parent) {
    if (hwnd_ != nullptr) return false;
    modal_ = false;
    HWND hwnd = nullptr;
    {
        CreationBinding binding(this);
        hwnd = ::CreateDialogParamA(ResourceModule(), MAKEINTRESOURCEA(templateId_), parent, &DialogProc, 0);
    }
    if (hwnd == nullptr) {
        if (hwnd_ != nullptr) UnsubclassWindow();
        return false;
    }
    return true;
}

INT_PTR Dialog::DoModal(HWND parent) {
    if (hwnd_ != nullptr) return -1;
    modal_ = true;
    CreationBinding binding(this);
    const INT_PTR result =
        ::DialogBoxParamA(ResourceModule(), MAKEINTRESOURCEA(templateId_), parent, &DialogProc, 0);
    if (hwnd_ != nullptr) UnsubclassWindow();
    return result;
}

void Dialog::EndDialog(INT_PTR result) {
    if (hwnd_ == nullptr) return;
    if (modal_)
        ::EndDialog(hwnd_, result);
    else
        ::DestroyWindow(hwnd_);
}

BOOL Dialog::OnInitDialog() {
    return TRUE;
}

void Dialog::OnOK() {
    EndDialog(IDOK);
}

void Dialog::OnCancel() {
    EndDialog(IDCANCEL);
}

BOOL Dialog::OnCommand(WPARAM wParam, LPARAM lParam) {
    if (Window::OnCommand(wParam, lParam)) return TRUE;
    switch (LOWORD(wParam)) {
        case IDOK: OnOK(); return TRUE;
        case IDCANCEL: OnCancel(); return TRUE;
        default: return FALSE;
    }
}

}  // namespace framework::win32

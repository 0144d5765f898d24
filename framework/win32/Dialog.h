// A dialog made from a template in the resource module, modeless (Create) or
// modal (DoModal). The dialog window is subclassed as soon as it exists, so
// its messages reach the typed handlers of Window first; what they leave goes
// on to the platform's dialog procedure.
#pragma once

#include "framework/win32/Window.h"

namespace framework::win32 {

class Dialog : public Window {
public:
    explicit Dialog(UINT templateId) : templateId_(templateId) {}

    UINT TemplateId() const { return templateId_; }

    // A modeless dialog, the child or owned window of `parent`.
    bool Create(HWND parent);
    // Runs the dialog modally; the value given to EndDialog, or -1.
    INT_PTR DoModal(HWND parent);
    void EndDialog(INT_PTR result);

    HWND GetDlgItem(int id) const { return ::GetDlgItem(hwnd_, id); }

protected:
    // WM_INITDIALOG: TRUE to let the platform set the focus.
    virtual BOOL OnInitDialog();
    // IDOK and IDCANCEL: end a modal dialog; a modeless one is destroyed.
    virtual void OnOK();
    virtual void OnCancel();
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;

private:
    static INT_PTR CALLBACK DialogProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    UINT templateId_;
    bool modal_ = false;
};

}  // namespace framework::win32

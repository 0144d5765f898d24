#include "framework/win32/Dialog.h"

#include <gtest/gtest.h>

#include "TestDialogs.h"
#include "support/MessageSequence.h"

using framework::win32::Dialog;
using framework::win32::Window;
using testsupport::MessageSequence;

namespace {

class TestDialog : public Dialog {
public:
    explicit TestDialog(MessageSequence& sequence) : Dialog(IDD_TEST_DIALOG), sequence_(sequence) {}

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        sequence_.Add({message, wParam, lParam, "dialog"});
        return Dialog::WindowProc(message, wParam, lParam);
    }

    int initCalls = 0;
    bool endAtOnce = false;
    std::vector<std::pair<UINT, int>> commands;

protected:
    BOOL OnInitDialog() override {
        ++initCalls;
        EXPECT_NE(GetDlgItem(IDC_TEST_EDIT), nullptr) << "controls exist at WM_INITDIALOG";
        if (endAtOnce) ::PostMessageA(hwnd_, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
        return TRUE;
    }
    bool OnCmdMsg(UINT id, int code, void*, void*) override {
        commands.emplace_back(id, code);
        return id == IDC_TEST_BUTTON;
    }

private:
    MessageSequence& sequence_;
};

}  // namespace

TEST(Dialog, ModelessDialogIsBoundBeforeItsFirstMessage) {
    MessageSequence sequence;
    TestDialog dialog(sequence);
    ASSERT_TRUE(dialog.Create(nullptr));
    EXPECT_EQ(dialog.initCalls, 1);
    EXPECT_EQ(Window::FromHandle(dialog.Handle()), &dialog);
    auto early = sequence.Filtered([](const testsupport::MessageRecord& r) {
        return r.message == WM_SETFONT || r.message == WM_INITDIALOG;
    });
    EXPECT_TRUE(early.Matches({{WM_SETFONT}, {WM_INITDIALOG}}));
}

TEST(Dialog, ControlCommandsReachTheDialogsCommandRoute) {
    MessageSequence sequence;
    TestDialog dialog(sequence);
    ASSERT_TRUE(dialog.Create(nullptr));
    ::SendMessageA(dialog.GetDlgItem(IDC_TEST_BUTTON), BM_CLICK, 0, 0);
    ASSERT_FALSE(dialog.commands.empty());
    EXPECT_EQ(dialog.commands.back(), std::make_pair(static_cast<UINT>(IDC_TEST_BUTTON), BN_CLICKED));
}

TEST(Dialog, CancelDestroysAModelessDialog) {
    MessageSequence sequence;
    TestDialog dialog(sequence);
    ASSERT_TRUE(dialog.Create(nullptr));
    HWND hwnd = dialog.Handle();
    dialog.Send(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    EXPECT_FALSE(::IsWindow(hwnd));
    EXPECT_EQ(dialog.Handle(), nullptr);
}

TEST(Dialog, ModalDialogReturnsWhatEndedIt) {
    MessageSequence sequence;
    TestDialog dialog(sequence);
    dialog.endAtOnce = true;
    EXPECT_EQ(dialog.DoModal(nullptr), IDOK);
    EXPECT_EQ(dialog.initCalls, 1);
    EXPECT_EQ(dialog.Handle(), nullptr);
}

TEST(Dialog, MissingTemplateFailsCleanly) {
    class Missing : public Dialog {
    public:
        Missing() : Dialog(4242) {}
    } missing;
    EXPECT_FALSE(missing.Create(nullptr));
    EXPECT_EQ(missing.DoModal(nullptr), -1);
    EXPECT_EQ(missing.Handle(), nullptr);
}

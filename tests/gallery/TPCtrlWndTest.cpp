#include "gallery/TPCtrlWnd.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <string>

#include "GalleryTestResources.h"
#include "framework/win32/Application.h"

using framework::win32::Window;
using gallery::CTPCtrlWnd;

namespace {

// The serial number the first control of this process will get, taken
// before any test makes one.
int g_firstUniqueId = 0;

class RecordFirstUniqueId : public ::testing::Environment {
public:
    void SetUp() override { g_firstUniqueId = gallery::PeekNextUniqueId(); }
};
const auto* const kRecordFirstUniqueId = ::testing::AddGlobalTestEnvironment(new RecordFirstUniqueId);

struct Command {
    UINT id;
    int code;
    Window* notifying;
    LPARAM lParam;  // of a WM_COMMAND; 0 for a direct call
};

// A window that records the commands it receives through its command route.
class Owner : public Window {
public:
    explicit Owner(HWND parent = nullptr) {
        RECT rect = {0, 0, 300, 200};
        const DWORD style = parent != nullptr ? WS_CHILD | WS_VISIBLE : WS_OVERLAPPEDWINDOW;
        EXPECT_TRUE(CreateEx(0, RegisterWindowClass(0), "owner", style, rect, parent, 50));
    }
    std::vector<Command> commands;
    std::function<void()> onCommand;

    bool OnCmdMsg(UINT id, int code, void*, void*) override {
        commands.push_back({id, code, gallery::GetNotifyingControl(), commandLParam_});
        if (onCommand) onCommand();
        return true;
    }

protected:
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override {
        commandLParam_ = lParam;
        const BOOL handled = Window::OnCommand(wParam, lParam);
        commandLParam_ = 0;
        return handled;
    }

private:
    LPARAM commandLParam_ = 0;
};

class Control : public CTPCtrlWnd {
public:
    explicit Control(int kind) : CTPCtrlWnd(kind) {}
    bool Create(HWND parent, UINT id, RECT rect = {10, 20, 60, 50}) {
        return CreateEx(0, RegisterWindowClass(0), "", WS_CHILD | WS_VISIBLE, rect, parent, id);
    }
    std::string tipDuringCreate = "unset";

protected:
    int OnCreate(CREATESTRUCTA* create) override {
        tipDuringCreate = GetToolTipText(0, 0);
        return CTPCtrlWnd::OnCreate(create);
    }
};

}  // namespace

TEST(CTPCtrlWnd, SerialNumbersCountDownFromMinusThree) {
    EXPECT_EQ(g_firstUniqueId, -3);
    Control first(3);
    Control second(3);
    EXPECT_EQ(second.GetUniqueId(), first.GetUniqueId() - 1);
    EXPECT_EQ(gallery::PeekNextUniqueId(), second.GetUniqueId() - 1);
}

TEST(CTPCtrlWnd, KindThreeNotifiesItsParentAtOnce) {
    Owner owner;
    Control control(3);
    ASSERT_TRUE(control.Create(owner.Handle(), 1000));
    control.NotifyOwner(nullptr, 1000, 4);
    ASSERT_EQ(owner.commands.size(), 1u);
    EXPECT_EQ(owner.commands[0].id, 1000u);
    EXPECT_EQ(owner.commands[0].code, 4);
    EXPECT_EQ(owner.commands[0].notifying, &control) << "the control is known during the call";
    EXPECT_EQ(gallery::GetNotifyingControl(), nullptr) << "and forgotten afterwards";
}

TEST(CTPCtrlWnd, KindZeroNotifiesTheMainWindow) {
    Owner parent;
    Owner main;
    Control control(0);
    ASSERT_TRUE(control.Create(parent.Handle(), 1000));
    framework::win32::SetMainWindow(&main);
    control.NotifyOwner(nullptr, 1000, 2);
    framework::win32::SetMainWindow(nullptr);
    EXPECT_TRUE(parent.commands.empty());
    ASSERT_EQ(main.commands.size(), 1u);
    EXPECT_EQ(main.commands[0].code, 2);
}

TEST(CTPCtrlWnd, KindZeroWithoutAMainWindowTellsNobody) {
    Owner parent;
    Control control(0);
    ASSERT_TRUE(control.Create(parent.Handle(), 1000));
    ASSERT_EQ(framework::win32::MainWindow(), nullptr);
    control.NotifyOwner(nullptr, 1000, 2);
    EXPECT_TRUE(parent.commands.empty());
}

TEST(CTPCtrlWnd, ExplicitTargetWins) {
    Owner parent;
    Owner other;
    Control control(3);
    ASSERT_TRUE(control.Create(parent.Handle(), 1000));
    control.NotifyOwner(&other, 1000, 6);
    EXPECT_TRUE(parent.commands.empty());
    ASSERT_EQ(other.commands.size(), 1u);
}

TEST(CTPCtrlWnd, NestedNotificationsUnwind) {
    Owner owner;
    Control outer(3);
    Control inner(3);
    ASSERT_TRUE(outer.Create(owner.Handle(), 1000));
    ASSERT_TRUE(inner.Create(owner.Handle(), 1001, {70, 20, 120, 50}));
    Window* seenAfterInner = reinterpret_cast<Window*>(1);
    owner.onCommand = [&] {
        if (owner.commands.size() == 1) {
            inner.NotifyOwner(nullptr, 1001, 1);
            seenAfterInner = gallery::GetNotifyingControl();
        }
    };
    outer.NotifyOwner(nullptr, 1000, 1);
    ASSERT_EQ(owner.commands.size(), 2u);
    EXPECT_EQ(owner.commands[1].notifying, &inner);
    EXPECT_EQ(seenAfterInner, &outer) << "the inner call put the outer control back";
    EXPECT_EQ(gallery::GetNotifyingControl(), nullptr);
}

TEST(CTPCtrlWnd, PostedNotificationArrivesLaterAsACommand) {
    Owner owner;
    Control control(3);
    ASSERT_TRUE(control.Create(owner.Handle(), 1000));
    control.PostNotifyOwner(nullptr, 1000, 5);
    EXPECT_TRUE(owner.commands.empty()) << "nothing happens before the message loop runs";
    framework::win32::PumpWaitingMessages();
    ASSERT_EQ(owner.commands.size(), 1u);
    EXPECT_EQ(owner.commands[0].id, 1000u);
    EXPECT_EQ(owner.commands[0].code, 5);
    EXPECT_EQ(owner.commands[0].notifying, nullptr) << "the bracket does not cover a posted command";
    EXPECT_EQ(owner.commands[0].lParam, reinterpret_cast<LPARAM>(control.Handle()))
        << "the command names the control's window";
}

// Which window each kind tells when it is given no target: the main window
// for kinds 0, 1, 2 and 4, the parent for kinds 3 and 5; directly or posted.
TEST(CTPCtrlWnd, EachKindNotifiesItsDefaultTarget) {
    struct Expected {
        int kind;
        bool parent;
    };
    const Expected table[] = {{0, false}, {1, false}, {2, false}, {3, true}, {4, false}, {5, true}};
    for (const Expected& expected : table) {
        SCOPED_TRACE("kind " + std::to_string(expected.kind));
        Owner main;
        Owner parent;
        Control control(expected.kind);
        ASSERT_TRUE(control.Create(parent.Handle(), 1000));
        framework::win32::SetMainWindow(&main);
        control.NotifyOwner(nullptr, 1000, 3);
        control.PostNotifyOwner(nullptr, 1000, 4);
        framework::win32::PumpWaitingMessages();
        framework::win32::SetMainWindow(nullptr);
        Owner& told = expected.parent ? parent : main;
        Owner& untold = expected.parent ? main : parent;
        EXPECT_TRUE(untold.commands.empty());
        ASSERT_EQ(told.commands.size(), 2u);
        EXPECT_EQ(told.commands[0].code, 3);
        EXPECT_EQ(told.commands[0].notifying, &control);
        EXPECT_EQ(told.commands[1].code, 4);
        EXPECT_EQ(told.commands[1].lParam, reinterpret_cast<LPARAM>(control.Handle()));
    }
}

namespace {
class Frame : public Owner, public gallery::ActiveViewSite {
public:
    Window* view = nullptr;
    Window* GetActiveView() const override { return view; }
};
}  // namespace

// Kinds 0 and 3 give no focus back, even where a frame with an active view
// stands where the lookup of kind 3 finds one.
TEST(CTPCtrlWnd, ReturnFocusOfKindsZeroAndThreeDoesNothing) {
    for (const int kind : {0, 3}) {
        SCOPED_TRACE("kind " + std::to_string(kind));
        Frame frame;
        Owner view(frame.Handle());
        frame.view = &view;
        // Kind 3 looks for the frame as the owner of the control's parent's
        // parent, or failing that that window's parent.
        Owner middle(frame.Handle());
        Owner holder(middle.Handle());
        Control control(kind);
        ASSERT_TRUE(control.Create(holder.Handle(), 1000));
        EXPECT_EQ(control.FindActiveView(), kind == 3 ? &view : nullptr)
            << "kind 3 finds the view above its parent's parent";
        ::SetFocus(control.Handle());
        ASSERT_EQ(::GetFocus(), control.Handle());
        control.ReturnFocus();
        EXPECT_EQ(::GetFocus(), control.Handle());
    }
}

TEST(CTPCtrlWnd, KindOneGivesTheFocusToTheFramesActiveView) {
    Frame frame;
    Owner view(frame.Handle());
    frame.view = &view;
    Control control(1);
    ASSERT_TRUE(control.Create(frame.Handle(), 1000));
    // Kind 1 looks for the frame as the owner of the control's parent, or
    // failing that the parent's parent: put the control one level deeper.
    Owner holder(frame.Handle());
    ::SetParent(control.Handle(), holder.Handle());
    EXPECT_EQ(control.FindActiveView(), &view);
    ::SetFocus(holder.Handle());
    control.ReturnFocus();
    EXPECT_EQ(::GetFocus(), view.Handle());
}

TEST(CTPCtrlWnd, TextsFromTheStringOfTheControlsId) {
    Owner owner;
    Control tipped(3);
    ASSERT_TRUE(tipped.Create(owner.Handle(), IDC_CONTROL_WITH_TIP));
    EXPECT_EQ(tipped.GetPromptText(), "Shows the pictures");
    EXPECT_EQ(tipped.GetToolTipText(5, 5), "Picture gallery");
    Control whole(3);
    ASSERT_TRUE(whole.Create(owner.Handle(), IDC_CONTROL_WHOLE_TEXT));
    EXPECT_EQ(whole.GetPromptText(), "Whole text");
    EXPECT_EQ(whole.GetToolTipText(0, 0), "Whole text");
    Control none(3);
    ASSERT_TRUE(none.Create(owner.Handle(), IDC_CONTROL_NO_TEXT));
    EXPECT_EQ(none.GetPromptText(), "");
    EXPECT_EQ(none.GetToolTipText(0, 0), "");
}

TEST(CTPCtrlWnd, ToolTipTextIsEmptyUntilCreationIsOver) {
    Owner owner;
    Control control(3);
    EXPECT_EQ(control.GetToolTipText(0, 0), "");
    ASSERT_TRUE(control.Create(owner.Handle(), IDC_CONTROL_WITH_TIP));
    EXPECT_EQ(control.tipDuringCreate, "") << "asked inside WM_CREATE";
    EXPECT_TRUE(control.IsCreated());
    EXPECT_EQ(control.GetToolTipText(0, 0), "Picture gallery");
}

TEST(CTPCtrlWnd, ToolRectIsTheWindowOnTheScreen) {
    Owner owner;
    Control control(3);
    ASSERT_TRUE(control.Create(owner.Handle(), 1000));
    RECT tool = {};
    control.GetToolRect(7, &tool);
    RECT window = {};
    ::GetWindowRect(control.Handle(), &window);
    EXPECT_TRUE(::EqualRect(&tool, &window));
    EXPECT_EQ(control.GetToolRectCount(), 1);
}

namespace {
// A palette page: records tool registrations and owns a tool tip control
// that records what is relayed to it.
class Page : public Owner, public gallery::ToolTipSite {
public:
    Page() {
        toolTip = ::CreateWindowExA(0, TOOLTIPS_CLASSA, nullptr, WS_POPUP, 0, 0, 0, 0, Handle(), nullptr,
                                    nullptr, nullptr);
        ::SetPropA(toolTip, "page", this);
        original = reinterpret_cast<WNDPROC>(
            ::SetWindowLongPtrA(toolTip, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ToolTipProc)));
    }
    HWND ToolTipWindow() const override { return toolTip; }
    void RegisterTool(UINT id, const RECT& rect) override { tools.emplace_back(id, rect); }

    static LRESULT CALLBACK ToolTipProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* page = static_cast<Page*>(::GetPropA(hwnd, "page"));
        if (message == TTM_RELAYEVENT) {
            const MSG* relayed = reinterpret_cast<const MSG*>(lParam);
            page->relayed.push_back(*relayed);
        }
        return ::CallWindowProcA(page->original, hwnd, message, wParam, lParam);
    }

    HWND toolTip = nullptr;
    WNDPROC original = nullptr;
    std::vector<std::pair<UINT, RECT>> tools;
    std::vector<MSG> relayed;
};
}  // namespace

TEST(CTPCtrlWnd, ControlOnAPalettePageRegistersItsToolInPageCoordinates) {
    Page page;
    Control control(2);
    ASSERT_TRUE(control.Create(page.Handle(), 1000, {10, 20, 60, 50}));
    ASSERT_EQ(page.tools.size(), 1u);
    EXPECT_EQ(page.tools[0].first, 1000u);
    const RECT expected = {10, 20, 60, 50};
    EXPECT_TRUE(::EqualRect(&page.tools[0].second, &expected));
    Control kindThree(3);
    ASSERT_TRUE(kindThree.Create(page.Handle(), 1001));
    EXPECT_EQ(page.tools.size(), 1u) << "only controls on palette pages register";
}

TEST(CTPCtrlWnd, MouseMessagesAreRelayedInPageCoordinatesAndLeftAsTheyWere) {
    Page page;
    Control control(5);
    ASSERT_TRUE(control.Create(page.Handle(), 1000, {10, 20, 60, 50}));
    POINT screen = {15, 25};
    ::ClientToScreen(page.Handle(), &screen);
    MSG msg = {control.Handle(), WM_MOUSEMOVE, 0, MAKELPARAM(5, 5), 0, screen};
    control.PreTranslateMessage(&msg);
    ASSERT_EQ(page.relayed.size(), 1u);
    EXPECT_EQ(LOWORD(page.relayed[0].lParam), 15);
    EXPECT_EQ(HIWORD(page.relayed[0].lParam), 25);
    EXPECT_EQ(msg.lParam, MAKELPARAM(5, 5)) << "the caller's message is restored";
    MSG key = {control.Handle(), WM_KEYDOWN, VK_F5, 0, 0, screen};
    control.PreTranslateMessage(&key);
    EXPECT_EQ(page.relayed.size(), 1u) << "only mouse messages are relayed";
}

namespace {
struct Attachment : framework::Object {
    explicit Attachment(bool& deleted) : deleted_(deleted) {}
    ~Attachment() override { deleted_ = true; }
    bool& deleted_;
};
}  // namespace

TEST(CTPCtrlWnd, OwnedAttachmentAndBlocksGoWithTheControl) {
    bool deleted = false;
    {
        Control control(3);
        control.SetAttachment(std::make_unique<Attachment>(deleted));
        control.AddBlock(::operator new(16));
        control.AddBlock(::operator new(32));
    }
    EXPECT_TRUE(deleted);
}

TEST(CTPCtrlWnd, DynamicCreationMakesAPaletteControl) {
    auto made = framework::CreateObjectByName("CTPCtrlWnd");
    ASSERT_NE(made, nullptr);
    auto* control = dynamic_cast<CTPCtrlWnd*>(made.get());
    ASSERT_NE(control, nullptr);
    EXPECT_EQ(control->GetOwnerLink().OwnerKind(), 2);
}

TEST(ControlFont, MadeOnceAndShared) {
    HFONT font = gallery::GetControlFont();
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(gallery::GetControlFont(), font);
    LOGFONTA description = {};
    ASSERT_NE(::GetObjectA(font, sizeof description, &description), 0);
    EXPECT_EQ(description.lfHeight, -12);
    EXPECT_EQ(description.lfWeight, 400);
}

TEST(DefaultGuiFont, AttachedOnceByTheFirstPage) {
    EXPECT_EQ(gallery::GetDefaultGuiFont(), nullptr);
    gallery::AttachDefaultGuiFont();
    EXPECT_EQ(gallery::GetDefaultGuiFont(), static_cast<HFONT>(::GetStockObject(DEFAULT_GUI_FONT)));
}

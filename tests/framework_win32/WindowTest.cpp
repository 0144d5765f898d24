#include "framework/win32/Window.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "framework/win32/Application.h"
#include "support/MessageSequence.h"

using framework::win32::Window;
using testsupport::ExpectedMessage;
using testsupport::MessageSequence;

namespace {

// A top-level window that owns the children of a test.
class HostWindow : public Window {
public:
    HostWindow() {
        RECT rect = {0, 0, 400, 300};
        EXPECT_TRUE(CreateEx(0, RegisterWindowClass(0), "host", WS_OVERLAPPEDWINDOW, rect, nullptr, 0));
    }
    std::vector<std::pair<UINT, int>> commands;
    bool handleCommands = true;
    int preTranslated = 0;
    bool takePreTranslate = false;

    bool OnCmdMsg(UINT id, int code, void*, void*) override {
        commands.emplace_back(id, code);
        return handleCommands;
    }
    BOOL PreTranslateMessage(MSG*) override {
        ++preTranslated;
        return takePreTranslate ? TRUE : FALSE;
    }
};

// A child that records every message it sees.
class RecordingWindow : public Window {
public:
    explicit RecordingWindow(MessageSequence& sequence, const char* who = "child")
        : sequence_(sequence), who_(who) {}

    bool Create(HWND parent, UINT id = 7) {
        RECT rect = {10, 10, 110, 60};
        return CreateEx(0, RegisterWindowClass(CS_DBLCLKS), "", WS_CHILD | WS_VISIBLE, rect, parent, id);
    }

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        sequence_.Add({message, wParam, lParam, who_});
        return Window::WindowProc(message, wParam, lParam);
    }

    int createCalls = 0;
    SIZE lastSize = {-1, -1};
    int postNcDestroyCalls = 0;
    bool reflectCommands = false;
    bool throwOnTimer = false;
    int preTranslated = 0;
    std::vector<UINT> customMessages;

protected:
    int OnCreate(CREATESTRUCTA* create) override {
        ++createCalls;
        EXPECT_EQ(Window::FromHandle(hwnd_), this) << "bound before WM_CREATE";
        return Window::OnCreate(create);
    }
    void OnSize(UINT, int cx, int cy) override { lastSize = {cx, cy}; }
    void PostNcDestroy() override { ++postNcDestroyCalls; }
    bool OnChildNotify(UINT, WPARAM, LPARAM, LRESULT* result) override {
        *result = 0;
        return reflectCommands;
    }
    void OnTimer(UINT_PTR id) override {
        if (throwOnTimer) throw std::runtime_error("handler failure");
        Window::OnTimer(id);
    }
    bool OnMessage(UINT message, WPARAM, LPARAM, LRESULT* result) override {
        if (message < WM_USER) return false;
        customMessages.push_back(message);
        *result = 0x1234;
        return true;
    }
    BOOL PreTranslateMessage(MSG*) override {
        ++preTranslated;
        return FALSE;
    }

private:
    MessageSequence& sequence_;
    const char* who_;
};

}  // namespace

TEST(Window, FirstMessagesOfANewWindowReachItsObject) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle()));
    EXPECT_EQ(child.createCalls, 1);
    ASSERT_FALSE(sequence.Records().empty());
    EXPECT_EQ(sequence.Records().front().message, static_cast<UINT>(WM_NCCREATE));
    auto creation = sequence.Filtered([](const testsupport::MessageRecord& r) {
        return r.message == WM_NCCREATE || r.message == WM_CREATE || r.message == WM_SIZE;
    });
    EXPECT_TRUE(creation.Matches({{WM_NCCREATE}, {WM_CREATE}, {WM_SIZE}}));
    EXPECT_EQ(Window::FromHandle(child.Handle()), &child);
}

TEST(Window, TypedHandlersGetCrackedArguments) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle()));
    ::MoveWindow(child.Handle(), 0, 0, 123, 45, TRUE);
    EXPECT_EQ(child.lastSize.cx, 123);
    EXPECT_EQ(child.lastSize.cy, 45);
}

TEST(Window, UnlistedMessagesReachOnMessageAndOthersTheDefault) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle()));
    EXPECT_EQ(child.Send(WM_USER + 5, 1, 2), 0x1234);
    EXPECT_EQ(child.customMessages, std::vector<UINT>{WM_USER + 5});
    ::SetWindowTextA(child.Handle(), "abc");
    char text[8] = {};
    EXPECT_EQ(child.Send(WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text)), 3)
        << "DefWindowProc answered";
    EXPECT_STREQ(text, "abc");
}

TEST(Window, DestructionUnbindsThenCallsPostNcDestroy) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle()));
    HWND hwnd = child.Handle();
    sequence.Clear();
    child.DestroyWindow();
    EXPECT_EQ(child.postNcDestroyCalls, 1);
    EXPECT_EQ(child.Handle(), nullptr);
    EXPECT_FALSE(::IsWindow(hwnd));
    EXPECT_EQ(Window::FromHandle(hwnd), nullptr);
    EXPECT_TRUE(sequence
                    .Filtered([](const testsupport::MessageRecord& r) {
                        return r.message == WM_DESTROY || r.message == WM_NCDESTROY;
                    })
                    .Matches({{WM_DESTROY}, {WM_NCDESTROY}}));
}

TEST(Window, ObjectGoingAwayDestroysItsWindow) {
    HostWindow host;
    MessageSequence sequence;
    HWND hwnd = nullptr;
    {
        RecordingWindow child(sequence);
        ASSERT_TRUE(child.Create(host.Handle()));
        hwnd = child.Handle();
    }
    EXPECT_FALSE(::IsWindow(hwnd));
}

TEST(Window, ChildCommandReachesTheParentsCommandRoute) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle(), 1000));
    host.Send(WM_COMMAND, MAKEWPARAM(1000, 3), reinterpret_cast<LPARAM>(child.Handle()));
    ASSERT_EQ(host.commands.size(), 1u);
    EXPECT_EQ(host.commands[0], std::make_pair(1000u, 3));
}

TEST(Window, ReflectedCommandStaysWithTheChild) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle(), 1000));
    child.reflectCommands = true;
    host.Send(WM_COMMAND, MAKEWPARAM(1000, 3), reinterpret_cast<LPARAM>(child.Handle()));
    EXPECT_TRUE(host.commands.empty());
}

TEST(Window, NotificationReachesTheCommandRouteWithItsCode) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle(), 1000));
    NMHDR header = {child.Handle(), 1000, static_cast<UINT>(NM_CLICK)};
    host.Send(WM_NOTIFY, 1000, reinterpret_cast<LPARAM>(&header));
    ASSERT_EQ(host.commands.size(), 1u);
    EXPECT_EQ(host.commands[0], std::make_pair(1000u, static_cast<int>(NM_CLICK)));
}

TEST(Window, ExceptionInAHandlerIsCaughtAtTheProcedure) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle()));
    std::vector<std::pair<HWND, UINT>> reports;
    framework::win32::SetWindowExceptionReporter(
        [&](HWND hwnd, UINT message) { reports.emplace_back(hwnd, message); });
    child.throwOnTimer = true;
    EXPECT_EQ(child.Send(WM_TIMER, 1, 0), 0);
    framework::win32::SetWindowExceptionReporter(nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].first, child.Handle());
    EXPECT_EQ(reports[0].second, static_cast<UINT>(WM_TIMER));
    EXPECT_TRUE(::IsWindow(child.Handle()));
}

TEST(Window, SubclassedControlReachesTypedHandlersAndCanBeGivenBack) {
    HostWindow host;
    HWND button = ::CreateWindowExA(0, "BUTTON", "b", WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON, 0, 0, 50, 20,
                                    host.Handle(), reinterpret_cast<HMENU>(5), nullptr, nullptr);
    ASSERT_NE(button, nullptr);
    const LONG_PTR originalProc = ::GetWindowLongPtrA(button, GWLP_WNDPROC);
    MessageSequence sequence;
    RecordingWindow wrapper(sequence, "button");
    ASSERT_TRUE(wrapper.SubclassWindow(button));
    EXPECT_FALSE(wrapper.SubclassWindow(button)) << "a window is bound once";
    EXPECT_EQ(Window::FromHandle(button), &wrapper);
    ::MoveWindow(button, 0, 0, 77, 21, TRUE);
    EXPECT_EQ(wrapper.lastSize.cx, 77);
    char text[4] = {};
    ::GetWindowTextA(button, text, sizeof text);
    EXPECT_STREQ(text, "b") << "the control's own procedure still answers";
    EXPECT_EQ(wrapper.UnsubclassWindow(), button);
    EXPECT_EQ(::GetWindowLongPtrA(button, GWLP_WNDPROC), originalProc);
    EXPECT_EQ(Window::FromHandle(button), nullptr);
    ::DestroyWindow(button);
}

// A program and a control module each carry a copy of this framework; a
// window that the other copy bound (by its own property) is not ours.
TEST(Window, AWindowBoundByAnotherModulesCopyIsNotFound) {
    HostWindow host;
    HWND button = ::CreateWindowExA(0, "BUTTON", "b", WS_CHILD, 0, 0, 50, 20, host.Handle(),
                                    reinterpret_cast<HMENU>(6), nullptr, nullptr);
    ASSERT_NE(button, nullptr);
    int foreignObject = 0;
    for (const char* name : {"Lumbrel.Window", "Lumbrel.Window.0000000012340000"})
        ASSERT_TRUE(::SetPropA(button, name, &foreignObject));
    EXPECT_EQ(Window::FromHandle(button), nullptr);

    MessageSequence sequence;
    RecordingWindow wrapper(sequence, "button");
    ASSERT_TRUE(wrapper.SubclassWindow(button)) << "the other copy's binding does not stop ours";
    EXPECT_EQ(Window::FromHandle(button), &wrapper);
    EXPECT_EQ(wrapper.UnsubclassWindow(), button);
    EXPECT_EQ(::GetPropA(button, "Lumbrel.Window.0000000012340000"), &foreignObject)
        << "theirs is left alone";
    ::DestroyWindow(button);
}

TEST(Window, PreTranslateWalksFromTheWindowUpToItsParents) {
    HostWindow host;
    MessageSequence sequence;
    RecordingWindow child(sequence);
    ASSERT_TRUE(child.Create(host.Handle()));
    MSG msg = {child.Handle(), WM_KEYDOWN, VK_F5, 0, 0, {0, 0}};
    EXPECT_FALSE(framework::win32::PreTranslateThroughParents(&msg));
    EXPECT_EQ(child.preTranslated, 1);
    EXPECT_EQ(host.preTranslated, 1);
    host.takePreTranslate = true;
    EXPECT_TRUE(framework::win32::PreTranslateThroughParents(&msg));
}

TEST(Window, ClassRegistrationIsSharedPerStyle) {
    const std::string a = Window::RegisterWindowClass(CS_DBLCLKS, ::LoadCursor(nullptr, IDC_ARROW));
    const std::string b = Window::RegisterWindowClass(CS_DBLCLKS, ::LoadCursor(nullptr, IDC_ARROW));
    const std::string c = Window::RegisterWindowClass(0, ::LoadCursor(nullptr, IDC_ARROW));
    EXPECT_FALSE(a.empty());
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
}

TEST(Window, ThreadsRegisteringOneClassAtOnceAllGetIt) {
    // Each round a class nobody has registered yet (its background value is
    // new), asked for by several threads at the same moment.
    constexpr int kThreads = 4;
    for (int round = 0; round < 40; ++round) {
        const auto background = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(0x7000 + round));
        std::vector<std::string> names(kThreads);
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i)
            threads.emplace_back([&, i] {
                ++ready;
                while (ready.load() < kThreads) std::this_thread::yield();
                names[static_cast<size_t>(i)] = Window::RegisterWindowClass(CS_HREDRAW, nullptr, background);
            });
        for (std::thread& thread : threads) thread.join();
        for (const std::string& name : names) {
            EXPECT_FALSE(name.empty()) << "round " << round;
            EXPECT_EQ(name, names[0]);
        }
        if (!names[0].empty()) ::UnregisterClassA(names[0].c_str(), ::GetModuleHandleA(nullptr));
    }
}

TEST(Window, MainWindowIsWhatTheApplicationSet) {
    EXPECT_EQ(framework::win32::MainWindow(), nullptr);
    HostWindow host;
    framework::win32::SetMainWindow(&host);
    EXPECT_EQ(framework::win32::MainWindow(), &host);
    framework::win32::SetMainWindow(nullptr);
}

TEST(Window, EachThreadHasItsOwnMainWindow) {
    HostWindow host;
    framework::win32::SetMainWindow(&host);
    Window* seenOnAnotherThread = &host;
    std::thread([&seenOnAnotherThread] {
        seenOnAnotherThread = framework::win32::MainWindow();
        HostWindow own;
        framework::win32::SetMainWindow(&own);
    }).join();
    EXPECT_EQ(seenOnAnotherThread, nullptr) << "another thread starts with no main window";
    EXPECT_EQ(framework::win32::MainWindow(), &host) << "and setting its own left this thread's";
    framework::win32::SetMainWindow(nullptr);
}

TEST(Window, RuntimeClassOfWindows) {
    HostWindow host;
    EXPECT_TRUE(host.IsKindOf(Window::StaticRuntimeClass()));
    auto made = framework::CreateObjectByName("Window");
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->IsKindOf(framework::win32::CommandTarget::StaticRuntimeClass()));
}

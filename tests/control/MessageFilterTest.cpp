// The per-thread message filter on its own: which messages it offers, to
// whom, what a handled message becomes, and the life of its hook.
#include <gtest/gtest.h>

#include <vector>

#include "framework/ole/MessageFilter.h"
#include "framework/win32/Window.h"

namespace {

class Recorder : public framework::ole::FilteredWindow {
public:
    explicit Recorder(HWND root) : root_(root) {}
    virtual ~Recorder() = default;
    HWND FilterRoot() const override { return root_; }
    bool FilterMessage(MSG* msg) override {
        offered.push_back(*msg);
        return msg->wParam == handledKey;
    }
    std::vector<MSG> offered;
    WPARAM handledKey = VK_F5;

private:
    HWND root_;
};

class Target : public framework::win32::Window {
public:
    std::vector<UINT> received;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_KEYDOWN || message == WM_LBUTTONDBLCLK || message == WM_NULL || message == WM_APP)
            received.push_back(message);
        return Window::WindowProc(message, wParam, lParam);
    }
};

class MessageFilterTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string windowClass = framework::win32::Window::RegisterWindowClass(CS_DBLCLKS);
        ASSERT_TRUE(root.CreateEx(0, windowClass, "root", WS_POPUP, RECT{0, 0, 100, 100}, nullptr, 0));
        ASSERT_TRUE(child.CreateEx(0, windowClass, "child", WS_CHILD, RECT{0, 0, 50, 50}, root.Handle(), 7));
        ASSERT_TRUE(other.CreateEx(0, windowClass, "other", WS_POPUP, RECT{0, 0, 10, 10}, nullptr, 0));
    }
    static void Pump() {
        MSG msg;
        while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageA(&msg);
    }
    Target root, child, other;
};

TEST_F(MessageFilterTest, OffersInputOfTheRootAndItsDescendantsOnly) {
    Recorder recorder(root.Handle());
    framework::ole::AddToMessageFilter(&recorder);
    ::PostMessageA(child.Handle(), WM_KEYDOWN, 'A', 1);
    ::PostMessageA(root.Handle(), WM_LBUTTONDBLCLK, 0, 0);
    ::PostMessageA(other.Handle(), WM_KEYDOWN, 'B', 1);
    ::PostMessageA(child.Handle(), WM_APP, 0, 0);  // not input: never offered
    Pump();
    framework::ole::RemoveFromMessageFilter(&recorder);
    ASSERT_EQ(2u, recorder.offered.size());
    EXPECT_EQ(child.Handle(), recorder.offered[0].hwnd);
    EXPECT_EQ(static_cast<WPARAM>('A'), recorder.offered[0].wParam);
    EXPECT_EQ(static_cast<UINT>(WM_LBUTTONDBLCLK), recorder.offered[1].message);
    EXPECT_EQ(std::vector<UINT>({WM_KEYDOWN, WM_APP}), child.received);
    EXPECT_EQ(std::vector<UINT>({WM_KEYDOWN}), other.received);
}

TEST_F(MessageFilterTest, AHandledMessageIsNotDispatched) {
    Recorder recorder(root.Handle());
    framework::ole::AddToMessageFilter(&recorder);
    ::PostMessageA(child.Handle(), WM_KEYDOWN, VK_F5, 1);
    Pump();
    framework::ole::RemoveFromMessageFilter(&recorder);
    ASSERT_EQ(1u, recorder.offered.size());
    // What the window gets is WM_NULL, not the key.
    EXPECT_EQ(std::vector<UINT>({WM_NULL}), child.received);
}

TEST_F(MessageFilterTest, PeekingWithoutRemovingOffersNothing) {
    Recorder recorder(root.Handle());
    framework::ole::AddToMessageFilter(&recorder);
    ::PostMessageA(child.Handle(), WM_KEYDOWN, 'A', 1);
    MSG msg;
    ASSERT_TRUE(::PeekMessageA(&msg, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_NOREMOVE));
    EXPECT_TRUE(recorder.offered.empty());
    ASSERT_TRUE(::PeekMessageA(&msg, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE));
    EXPECT_EQ(1u, recorder.offered.size());
    EXPECT_TRUE(framework::ole::WasOfferedByMessageFilter(msg));
    MSG different = msg;
    different.wParam = 'Z';
    EXPECT_FALSE(framework::ole::WasOfferedByMessageFilter(different));
    framework::ole::RemoveFromMessageFilter(&recorder);
}

TEST_F(MessageFilterTest, TheHookLivesWhileAWindowIsRegistered) {
    Recorder first(root.Handle());
    Recorder second(other.Handle());
    EXPECT_FALSE(framework::ole::IsMessageFilterInstalled());
    framework::ole::AddToMessageFilter(&first);
    framework::ole::AddToMessageFilter(&second);
    framework::ole::AddToMessageFilter(&second);  // once is enough
    EXPECT_TRUE(framework::ole::IsMessageFilterInstalled());
    framework::ole::RemoveFromMessageFilter(&first);
    EXPECT_TRUE(framework::ole::IsMessageFilterInstalled());
    ::PostMessageA(other.Handle(), WM_KEYDOWN, 'C', 1);
    Pump();
    EXPECT_EQ(1u, second.offered.size());
    EXPECT_TRUE(first.offered.empty());
    framework::ole::RemoveFromMessageFilter(&second);
    EXPECT_FALSE(framework::ole::IsMessageFilterInstalled());
}

}  // namespace

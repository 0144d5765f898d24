// An owner may end the gallery inside the notification it hears: destroy the
// gallery object, or only its window, while the gallery's button release is
// still on the stack. From then on the gallery touches nothing of itself and
// tells no drag listener.
#include <cstring>
#include <new>

#include "GalleryTestSupport.h"

namespace gallerytest {
namespace {

void Press(Window& g, int x, int y) {
    g.Send(WM_LBUTTONDOWN, MK_LBUTTON, Point(x, y));
}
void Release(HWND g, int x, int y) {
    ::SendMessageA(g, WM_LBUTTONUP, 0, Point(x, y));
}
void Move(Window& g, int x, int y) {
    g.Send(WM_MOUSEMOVE, MK_LBUTTON, Point(x, y));
}

constexpr unsigned char kGone = 0xA5;

// A gallery in storage of the test's own: the owner ends it by running its
// destructor and filling the storage with a pattern, so that any write the
// gallery makes afterwards shows, with or without the platform's heap checks.
class GalleryInStorage {
public:
    GalleryInStorage() { gallery_ = new (storage_) BrowserGallery(kLargeCell, FALSE, 3); }
    ~GalleryInStorage() { End(); }
    GalleryInStorage(const GalleryInStorage&) = delete;
    GalleryInStorage& operator=(const GalleryInStorage&) = delete;

    BrowserGallery* Get() const { return gallery_; }
    void End() {
        if (gallery_ == nullptr) return;
        gallery_->~BrowserGallery();
        gallery_ = nullptr;
        std::memset(storage_, kGone, sizeof storage_);
    }
    bool UntouchedSinceEnd() const {
        for (unsigned char byte : storage_)
            if (byte != kGone) return false;
        return true;
    }

private:
    alignas(BrowserGallery) unsigned char storage_[sizeof(BrowserGallery)];
    BrowserGallery* gallery_ = nullptr;
};

struct ListenerCall {
    UINT message;
};

class Listener : public gallery::GalleryDragListener {
public:
    std::vector<ListenerCall> calls;
    void OnDragMessage(UINT message, WPARAM, LPARAM) override { calls.push_back({message}); }
};

// The drag draws on a canvas instead of the screen, and a drop finds only
// this process's windows under the pointer.
class PrivateScreen {
public:
    PrivateScreen() : canvas_(1024, 768) {
        current_ = this;
        gallery::GalleryDrawingFunctions functions;
        functions.getScreenDc = [] { return current_->canvas_.Dc(); };
        functions.releaseScreenDc = [](HDC) {};
        functions.windowFromPoint = [](POINT screen) -> HWND {
            for (HWND top = ::GetTopWindow(nullptr); top != nullptr; top = ::GetWindow(top, GW_HWNDNEXT)) {
                DWORD process = 0;
                ::GetWindowThreadProcessId(top, &process);
                RECT rect{};
                if (process != ::GetCurrentProcessId() || !::IsWindowVisible(top) ||
                    !::GetWindowRect(top, &rect) || !::PtInRect(&rect, screen))
                    continue;
                return top;
            }
            return nullptr;
        };
        scope_ = std::make_unique<DrawingFunctionsScope>(functions);
    }
    ~PrivateScreen() { current_ = nullptr; }
    PrivateScreen(const PrivateScreen&) = delete;
    PrivateScreen& operator=(const PrivateScreen&) = delete;

private:
    static PrivateScreen* current_;
    Canvas canvas_;
    std::unique_ptr<DrawingFunctionsScope> scope_;
};
PrivateScreen* PrivateScreen::current_ = nullptr;

TEST(GalleryNotifyExit, AnOwnerThatEndsTheGalleryInsideASelectionFindsNothingWrittenAfterwards) {
    Host host;
    GalleryInStorage storage;
    BrowserGallery& gallery = *storage.Get();
    host.gallery = &gallery;
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(500, 400, 10, 10)));
    gallery.Fill(4);
    const HWND window = gallery.Handle();
    host.onCommand = [&](const Command&) {
        host.gallery = nullptr;
        storage.End();
    };
    Press(gallery, 160, 30);
    Release(window, 160, 30);
    ASSERT_EQ(1u, host.commands.size());
    EXPECT_EQ(1, host.commands[0].lastAction);
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_TRUE(storage.UntouchedSinceEnd()) << "the gallery wrote to itself after it was gone";
}

// A drag from cell 1 that ends on the drop target, whose owner reacts to
// the drop's notification with `react`.
template <class React>
void DropOnTheTarget(Host& host, BrowserGallery& gallery, Listener& listener, React react) {
    Host target(RECT{850, 100, 1020, 300});
    CThumbnailGalleryWindow::SetDropTarget(&target);
    gallery.SetDragListener(&listener);
    host.onCommand = [&](const Command&) { react(); };
    PrivateScreen screen;
    const HWND window = gallery.Handle();
    Press(gallery, 160, 30);
    Move(gallery, 20, 30);
    const RECT targetRect = target.GetWindowRect();
    POINT drop = {(targetRect.left + targetRect.right) / 2, (targetRect.top + targetRect.bottom) / 2};
    ::ScreenToClient(window, &drop);
    Move(gallery, drop.x, drop.y);
    Release(window, drop.x, drop.y);
    CThumbnailGalleryWindow::SetDropTarget(nullptr);
}

TEST(GalleryNotifyExit, AnOwnerThatEndsTheGalleryAtADropLeavesTheListenerUntold) {
    Host host;
    GalleryInStorage storage;
    BrowserGallery& gallery = *storage.Get();
    host.gallery = &gallery;
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(500, 400, 10, 10)));
    gallery.Fill(4);
    Listener listener;
    DropOnTheTarget(host, gallery, listener, [&] {
        host.gallery = nullptr;
        storage.End();
    });
    ASSERT_EQ(1u, host.commands.size());
    EXPECT_EQ(2, host.commands[0].lastAction);
    for (const ListenerCall& call : listener.calls)
        EXPECT_NE(static_cast<UINT>(WM_LBUTTONUP), call.message)
            << "the listener heard of a drop on a gallery that was gone";
    EXPECT_TRUE(storage.UntouchedSinceEnd()) << "the gallery wrote to itself after it was gone";
}

TEST(GalleryNotifyExit, AnOwnerThatDestroysTheWindowAtADropLeavesTheListenerUntold) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    Listener listener;
    DropOnTheTarget(f.host, f.gallery, listener, [&] { f.gallery.DestroyWindow(); });
    ASSERT_EQ(1u, f.host.commands.size());
    EXPECT_EQ(2, f.host.commands[0].lastAction);
    for (const ListenerCall& call : listener.calls) EXPECT_NE(static_cast<UINT>(WM_LBUTTONUP), call.message);
}

TEST(GalleryNotifyExit, AnOwnerThatKeepsTheGalleryStillHearsTheDropBeforeTheListener) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    Listener listener;
    size_t callsAtNotification = 0;
    DropOnTheTarget(f.host, f.gallery, listener, [&] { callsAtNotification = listener.calls.size(); });
    ASSERT_EQ(1u, f.host.commands.size());
    ASSERT_EQ(callsAtNotification + 1, listener.calls.size());
    EXPECT_EQ(static_cast<UINT>(WM_LBUTTONUP), listener.calls.back().message);
    EXPECT_EQ(0, f.gallery.mouseState);
}

}  // namespace
}  // namespace gallerytest

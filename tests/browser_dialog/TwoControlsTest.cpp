// Two controls in one process, as a page-design application shows them (two
// browsers side by side, or a picker dialog over a docked browser), and two
// controls on two user-interface threads, each with its own message loop.
// Each control's gallery shows its own thumbnails whatever the other one
// fills or however it ends: seen in the library each browser works with, in
// the cells that point into it, in the pixels the gallery paints, and in
// what a click tells each host.
#include <ole2.h>

#include <condition_variable>
#include <cstdint>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "EmbeddedControl.h"
#include "OleTestSupport.h"
#include "browser/GraphicDlg.h"
#include "control/LumbrelCtrl.h"
#include "control/LumbrelIds.h"
#include "framework/ole/ModuleLock.h"
#include "gallery/ThumbnailGalleryItem.h"
#include "support/Canvas.h"
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/ThumbnailLibrary.h"

namespace browsertest {
namespace {

using controltest::RecordedEvent;

// The colours of Patchy.qlt's two readable pictures, in cell order.
constexpr uint32_t kPatchyColours[2] = {0x112233, 0x445566};

// One control embedded as a host embeds it, with its own site and event
// sink, on the thread that makes it, its browser showing the primary folder.
class HostedBrowser : public EmbeddedControl {
public:
    HostedBrowser() {
        dialog = &Dialog();
        if (!Ok()) return;
        dialog->ResetDriveCombo("");
        dialog->RebuildFromDriveCombo();
        events.clear();
    }

    // The host lets go of the control: its browser, gallery and library go,
    // and so do its windows and the site's.
    void Close() {
        if (Control() == nullptr) return;
        windows = {Site().Frame(), Control()->ControlWindow().Handle(), dialog->Handle()};
        dialog = nullptr;
        EmbeddedControl::Close();
    }

    HTREEITEM Find(const std::string& text) const { return TreeItem(text); }
    // The top-level node selected through the tree control, which tells the
    // browser as a user's click would.
    bool Select(const std::string& text) {
        const HTREEITEM item = Find(text);
        if (item == nullptr) return false;
        dialog->tree.SelectItem(item);
        controltest::PumpMessages();
        return true;
    }
    // A press and a release at the centre of cell `index`, posted to the
    // gallery and given out by the thread's message loop.
    void ClickCell(int index) {
        const browser::BrowserGallery& gallery = *dialog->gallery;
        const SIZE cell = gallery.GetCellSize();
        const int columns = gallery.Columns() > 0 ? gallery.Columns() : 1;
        const int x = (index % columns) * cell.cx + cell.cx / 2;
        const int y = (index / columns - gallery.GetTopRow()) * cell.cy + cell.cy / 2;
        const LPARAM at = MAKELPARAM(x, y);
        const HWND window = gallery.Handle();
        ::PostMessageA(window, WM_LBUTTONDOWN, MK_LBUTTON, at);
        ::PostMessageA(window, WM_LBUTTONUP, 0, at);
        controltest::PumpMessages();
    }
    // The gallery as it paints itself now, drawn into a picture of its own.
    std::vector<uint32_t> Paint() const {
        const HWND gallery = dialog->gallery->Handle();
        ::InvalidateRect(gallery, nullptr, TRUE);
        ::UpdateWindow(gallery);
        RECT client = {};
        ::GetClientRect(gallery, &client);
        testsupport::Canvas canvas(client.right, client.bottom, RGB(255, 255, 255));
        if (!canvas.Ok()) return {};
        ::SendMessageA(gallery, WM_PRINT, reinterpret_cast<WPARAM>(canvas.Dc()), PRF_CLIENT | PRF_ERASEBKGND);
        ::GdiFlush();
        const uint32_t* pixels = canvas.Pixels();
        return std::vector<uint32_t>(pixels, pixels + static_cast<size_t>(client.right) * client.bottom);
    }

    // Whether each of the gallery's cells shows the item at its own position
    // in this browser's library, and every such item still has its pixels.
    ::testing::AssertionResult CellsShowOwnLibrary(int expectedCells) const {
        thumbnails::CThumbnailLibrary& library = dialog->ThumbnailLibrary();
        if (dialog->gallery->GetItemCount() != expectedCells)
            return ::testing::AssertionFailure() << dialog->gallery->GetItemCount() << " cells";
        if (library.GetItemCount() != expectedCells)
            return ::testing::AssertionFailure()
                   << "the library holds " << library.GetItemCount() << " items";
        for (int i = 0; i < expectedCells; ++i) {
            const auto* cell =
                dynamic_cast<const gallery::CThumbnailGalleryItem*>(dialog->gallery->GetItem(i));
            if (cell == nullptr || cell->Thumbnail() != library.GetItem(i))
                return ::testing::AssertionFailure() << "cell " << i << " points outside its library";
            if (imaging::kernel::CheckBitmap(&library.GetItem(i)->bitmap) != imaging::kSuccess)
                return ::testing::AssertionFailure() << "item " << i << " lost its pixels";
        }
        return ::testing::AssertionSuccess();
    }

    browser::CGraphicDlg* dialog = nullptr;
    std::vector<RecordedEvent>& events = Events();
    // The frame, the control's window and the browser's, once closed.
    std::vector<HWND> windows;
};

// How many pixels of a painted gallery have `colour` (0x00BBGGRR).
int CountColour(const std::vector<uint32_t>& pixels, uint32_t colour) {
    const uint32_t bgrx = ((colour & 0xFF) << 16) | (colour & 0xFF00) | ((colour >> 16) & 0xFF);
    int count = 0;
    for (uint32_t pixel : pixels)
        if ((pixel & 0xFFFFFF) == bgrx) ++count;
    return count;
}

class TwoControlsTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(0, framework::ole::ObjectCount()); }

    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
};

TEST_F(TwoControlsTest, EachControlKeepsItsOwnThumbnailsWhateverTheOtherFillsOrHowItEnds) {
    const std::string animals = layout.Path("Animals.QLT");
    HostedBrowser a;
    ASSERT_TRUE(a.Ok());
    auto b = std::make_unique<HostedBrowser>();
    ASSERT_TRUE(b->Ok());

    ASSERT_TRUE(a.Select("Animals"));
    ASSERT_TRUE(a.CellsShowOwnLibrary(5));
    const std::vector<uint32_t> filled = a.Paint();
    ASSERT_FALSE(filled.empty());
    for (int i = 0; i < 3; ++i) EXPECT_GT(CountColour(filled, kAnimalColours[i]), 1000) << "cell " << i;

    // B fills its gallery: first a container, then a single picture.
    ASSERT_TRUE(b->Select("Patchy"));
    EXPECT_TRUE(b->CellsShowOwnLibrary(2));
    EXPECT_TRUE(a.CellsShowOwnLibrary(5)) << "B's container fill left A's thumbnails alone";
    ASSERT_TRUE(b->Select("single.bmp"));
    EXPECT_TRUE(b->CellsShowOwnLibrary(1));
    EXPECT_TRUE(a.CellsShowOwnLibrary(5)) << "B's picture fill left A's thumbnails alone";
    EXPECT_NE(&a.dialog->ThumbnailLibrary(), &b->dialog->ThumbnailLibrary());

    // A repaints as it painted before.
    EXPECT_TRUE(a.Paint() == filled) << "A's gallery paints its own pictures after B filled";

    // A click in A tells A's host of A's container, and B's host of nothing.
    a.events.clear();
    b->events.clear();
    a.ClickCell(2);
    EXPECT_TRUE(SameRecords({Record(1, 3, animals)}, a.Records()));
    EXPECT_TRUE(b->events.empty());
    const std::vector<uint32_t> clicked = a.Paint();
    EXPECT_GT(CountColour(clicked, kAnimalColours[2]), 1000);

    // B goes; A's thumbnails stay, and so do its pixels.
    b->Close();
    for (HWND window : b->windows) EXPECT_FALSE(::IsWindow(window));
    b.reset();
    EXPECT_TRUE(a.CellsShowOwnLibrary(5)) << "B's teardown left A's thumbnails alone";
    EXPECT_TRUE(a.Paint() == clicked) << "A's gallery paints its own pictures after B went";
    a.events.clear();
    a.ClickCell(3);
    EXPECT_TRUE(SameRecords({Record(1, 4, animals)}, a.Records()));
    EXPECT_EQ(3, a.dialog->gallery->SelectedIndex());
}

TEST_F(TwoControlsTest, EachBrowserEmptiesItsOwnLibraryAtEveryFillAndAtTeardown) {
    const size_t live = imaging::kernel::LiveStorageCount();
    {
        HostedBrowser a;
        HostedBrowser b;
        ASSERT_TRUE(a.Ok());
        ASSERT_TRUE(b.Ok());
        ASSERT_TRUE(a.Select("Animals"));
        ASSERT_TRUE(b.Select("Animals"));
        EXPECT_EQ(live + 10, imaging::kernel::LiveStorageCount()) << "two libraries of five";
        // A's next fill empties A's library first, and only A's.
        ASSERT_TRUE(a.Select("Patchy"));
        EXPECT_TRUE(a.CellsShowOwnLibrary(2));
        EXPECT_TRUE(b.CellsShowOwnLibrary(5));
        EXPECT_EQ(live + 7, imaging::kernel::LiveStorageCount());
        a.Close();
        EXPECT_EQ(live + 5, imaging::kernel::LiveStorageCount()) << "A's teardown gave back A's pixels";
        EXPECT_TRUE(b.CellsShowOwnLibrary(5));
    }
    EXPECT_EQ(live, imaging::kernel::LiveStorageCount());
}

// ---- Two user-interface threads ------------------------------------------------------

// Lets a number of threads go on only when all have arrived.
class Gate {
public:
    explicit Gate(int count) : waiting_(count) {}
    void ArriveAndWait() {
        std::unique_lock<std::mutex> hold(lock_);
        if (--waiting_ == 0) {
            open_.notify_all();
            return;
        }
        open_.wait(hold, [this] { return waiting_ <= 0; });
    }

private:
    std::mutex lock_;
    std::condition_variable open_;
    int waiting_;
};

struct Browsing {
    std::string container;  // the top-level node
    std::string containerPath;
    int cells = 0;
    // The colours of the cells that the gallery shows without scrolling.
    std::vector<uint32_t> colours;
    // Filled in by the thread.
    int rounds = 0;
    std::vector<std::string> failures;
    DWORD threadId = 0;
    size_t windowsLeft = 0;
};

// One user-interface thread as a host runs it: OLE, one control, its own
// message loop; rounds of a container, a click in it and a single picture.
void BrowseOnOwnThread(Browsing* work, Gate* start, int rounds) {
    work->threadId = ::GetCurrentThreadId();
    auto fail = [work](const std::string& what) { work->failures.push_back(what); };
    if (FAILED(::OleInitialize(nullptr))) {
        fail("OleInitialize");
        start->ArriveAndWait();
        return;
    }
    {
        HostedBrowser browser;
        // Both controls exist before either browses.
        start->ArriveAndWait();
        if (!browser.Ok()) fail("embedding");
        const int cells = work->cells;
        for (int round = 0; browser.Ok() && round < rounds; ++round) {
            const std::string at = " (round " + std::to_string(round) + ")";
            if (!browser.Select(work->container)) {
                fail("no node " + work->container);
                break;
            }
            const ::testing::AssertionResult own = browser.CellsShowOwnLibrary(cells);
            if (!own) fail(std::string("after the fill: ") + own.message() + at);
            const std::vector<uint32_t> painted = browser.Paint();
            for (uint32_t colour : work->colours)
                if (CountColour(painted, colour) < 1000) fail("a colour missing from the paint" + at);
            browser.events.clear();
            const int index = round % static_cast<int>(work->colours.size());
            browser.ClickCell(index);
            if (!SameRecords({Record(1, index + 1, work->containerPath)}, browser.Records()))
                fail("the click's record" + at);
            const ::testing::AssertionResult still = browser.CellsShowOwnLibrary(cells);
            if (!still) fail(std::string("after the click: ") + still.message() + at);
            browser.Select("single.bmp");
            const ::testing::AssertionResult single = browser.CellsShowOwnLibrary(1);
            if (!single) fail(std::string("after the picture: ") + single.message() + at);
            ++work->rounds;
        }
        browser.Close();
        for (HWND window : browser.windows)
            if (::IsWindow(window)) ++work->windowsLeft;
    }
    controltest::PumpMessages();
    ::OleUninitialize();
}

TEST_F(TwoControlsTest, TwoThreadsEachWithItsOwnControlBrowseAtOnce) {
    constexpr int kRounds = 12;
    Browsing first;
    first.container = "Animals";
    first.containerPath = layout.Path("Animals.QLT");
    first.cells = 5;
    first.colours.assign(std::begin(kAnimalColours), std::begin(kAnimalColours) + 3);
    Browsing second;
    second.container = "Patchy";
    second.containerPath = layout.Path("Patchy.QLT");
    second.cells = 2;
    second.colours.assign(std::begin(kPatchyColours), std::end(kPatchyColours));
    {
        Gate start(2);
        std::thread one(&BrowseOnOwnThread, &first, &start, kRounds);
        std::thread two(&BrowseOnOwnThread, &second, &start, kRounds);
        one.join();
        two.join();
    }
    for (const Browsing* work : {&first, &second}) {
        SCOPED_TRACE(work->container);
        EXPECT_NE(0u, work->threadId);
        EXPECT_EQ(kRounds, work->rounds);
        EXPECT_TRUE(work->failures.empty())
            << work->failures.size()
            << " failures, the first: " << (work->failures.empty() ? "" : work->failures.front());
        EXPECT_EQ(0u, work->windowsLeft) << "the thread's windows all went";
    }
    EXPECT_NE(first.threadId, second.threadId);
}

}  // namespace
}  // namespace browsertest

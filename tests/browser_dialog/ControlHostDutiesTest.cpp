// The browser inside the real control, as its container meets it: the
// drive prompt turns the frame's modeless windows off while it asks, and
// user message 0x405, whose lParam is a pointer, is read only when it is
// the preview that the dialog itself is handing over.
#include <ole2.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "EmbeddedControlTest.h"
#include "OleTestSupport.h"
#include "browser/GraphicDlg.h"
#include "browser/PreviewRender.h"
#include "control/LumbrelCtrl.h"
#include "framework/ole/ModuleLock.h"
#include "gallery/ThumbnailGalleryItem.h"
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/ThumbnailItem.h"

namespace browsertest {
namespace {

using controltest::TestSite;

// Activated UI-active, its browser showing the primary folder, and the
// frame's record of modeless calls empty.
class ControlHostDutiesTest : public EmbeddedControlTest {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(EmbeddedControlTest::SetUp());
        site = &host->Site();
        dialog->ResetDriveCombo("");
        dialog->RebuildFromDriveCombo();
        site->modalCalls.clear();
    }
    void TearDown() override {
        // Messages the test left behind are given out before the count.
        ReleaseHost();
        controltest::PumpMessages();
        EmbeddedControlTest::TearDown();
    }

    HTREEITEM Find(HTREEITEM parent, const std::string& text) const { return host->TreeItem(text, parent); }
    // The picture photo.jpg shown through the real road: the tree selects it
    // and the renderer hands its preview over in 0x405.
    void ShowPhoto() {
        const HTREEITEM types = Find(TVI_ROOT, "Types");
        ASSERT_NE(nullptr, types);
        dialog->tree.Expand(types, TVE_EXPAND);
        const HTREEITEM photo = Find(types, "photo.jpg");
        ASSERT_NE(nullptr, photo);
        dialog->tree.SelectItem(photo);
        ASSERT_EQ(1, dialog->gallery->GetItemCount()) << "the dialog's own preview is taken";
    }
    const imaging::BitmapDescriptor* CellBitmap() const {
        const auto* item = dynamic_cast<const gallery::CThumbnailGalleryItem*>(dialog->gallery->GetItem(0));
        return item != nullptr && item->Thumbnail() != nullptr ? &item->Thumbnail()->bitmap : nullptr;
    }

    TestSite* site = nullptr;
};

// ---- The drive prompt -------------------------------------------------------------------

TEST_F(ControlHostDutiesTest, TheDrivePromptTurnsTheFramesModelessWindowsOffWhileItAsks) {
    Disk disk;
    disk.File("cd\\Art\\a.jpg", JpegPicture(8, 8));
    ScopedDrive drive(FreeDriveLetter(), disk.Path("cd"), DRIVE_CDROM);
    ASSERT_TRUE(drive.Ok()) << "Wine's mount manager makes the drive";
    drive.Eject();
    // Each question notes what the frame had been told when it was asked;
    // the disc goes in at the second.
    PromptAnswers answers({IDRETRY, IDRETRY}, [&](size_t question) {
        site->modalCalls.push_back("question " + std::to_string(question));
        if (question == 1) drive.Insert();
    });
    dialog->ResetDriveCombo(drive.Text());
    dialog->RebuildFromDriveCombo();
    ASSERT_EQ(2u, answers.texts.size());
    EXPECT_EQ((std::vector<std::string>{"EnableModeless(0)", "question 0", "EnableModeless(1)",
                                        "EnableModeless(0)", "question 1", "EnableModeless(1)"}),
              site->modalCalls);
    EXPECT_NE(nullptr, Find(TVI_ROOT, "Art")) << "the disc was read once it was in";
}

TEST_F(ControlHostDutiesTest, ACancelledDrivePromptStillTurnsTheModelessWindowsBackOn) {
    Disk disk;
    disk.File("cd\\Art\\a.jpg", JpegPicture(8, 8));
    ScopedDrive drive(FreeDriveLetter(), disk.Path("cd"), DRIVE_CDROM);
    ASSERT_TRUE(drive.Ok()) << "Wine's mount manager makes the drive";
    drive.Eject();
    PromptAnswers answers({IDCANCEL}, [&](size_t) { site->modalCalls.push_back("question"); });
    dialog->ResetDriveCombo(drive.Text());
    dialog->RebuildFromDriveCombo();
    EXPECT_EQ((std::vector<std::string>{"EnableModeless(0)", "question", "EnableModeless(1)"}),
              site->modalCalls);
}

// ---- User message 0x405 -----------------------------------------------------------------

// A record that looks like a preview: a real picture of 300 x 200.
struct ForeignPreview {
    ForeignPreview() {
        ok = imaging::CreateBitmap(&record.bitmap, imaging::kMemoryConventional, 300, 200, 24,
                                   imaging::kColorOrderBgr, nullptr, imaging::kViewTopLeft, nullptr,
                                   0) == imaging::kSuccess;
    }
    ~ForeignPreview() { imaging::FreeBitmap(&record.bitmap); }
    browser::PreviewBitmapRecord record = {};
    bool ok = false;
};

TEST_F(ControlHostDutiesTest, APreviewSentFromAnotherThreadIsNotRead) {
    ShowPhoto();
    const imaging::BitmapDescriptor* before = CellBitmap();
    ASSERT_NE(nullptr, before);
    const imaging::BitmapDescriptor shown = *before;
    ForeignPreview foreign;
    ASSERT_TRUE(foreign.ok);
    const size_t storage = imaging::kernel::LiveStorageCount();

    // Any process may send the dialog the message; another thread stands in.
    std::atomic<LRESULT> answer{-1};
    const HWND target = dialog->Handle();
    std::thread sender([&] {
        answer = ::SendMessageA(target, browser::kPreviewReadyMessage, 0,
                                reinterpret_cast<LPARAM>(&foreign.record));
    });
    // The sent message is delivered while this thread waits for messages.
    while (::MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT | QS_SENDMESSAGE) != WAIT_FAILED &&
           answer == -1)
        controltest::PumpMessages();
    sender.join();
    EXPECT_EQ(0, answer);
    ASSERT_EQ(1, dialog->gallery->GetItemCount());
    ASSERT_NE(nullptr, CellBitmap());
    EXPECT_EQ(0, std::memcmp(&shown, CellBitmap(), sizeof shown)) << "the gallery still shows the photo";
    EXPECT_EQ(storage, imaging::kernel::LiveStorageCount()) << "the foreign pixels were not taken";
}

// Another thread's 0x405 that arrives while the dialog's own preview is
// being handed over: a WH_CALLWNDPROC hook sees the dialog's own message
// before the dialog does and lets the foreign one in first, as a wait that
// takes sent messages would.
struct RaceDuringRender {
    static RaceDuringRender* current;
    HWND dialog = nullptr;
    browser::PreviewBitmapRecord* foreign = nullptr;
    HHOOK hook = nullptr;
    bool raced = false;
    LRESULT foreignAnswer = -1;

    static LRESULT CALLBACK Hook(int code, WPARAM sent, LPARAM lParam) {
        RaceDuringRender* self = current;
        const auto* call = reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (code == HC_ACTION && self != nullptr && !self->raced && call->hwnd == self->dialog &&
            call->message == browser::kPreviewReadyMessage &&
            call->lParam != reinterpret_cast<LPARAM>(self->foreign)) {
            self->raced = true;
            std::atomic<LRESULT> answer{-1};
            const HWND target = self->dialog;
            const LPARAM record = reinterpret_cast<LPARAM>(self->foreign);
            std::thread sender(
                [&] { answer = ::SendMessageA(target, browser::kPreviewReadyMessage, 0, record); });
            while (answer == -1) {
                ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_SENDMESSAGE);
                MSG msg;
                ::PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
            }
            sender.join();
            self->foreignAnswer = answer;
        }
        return ::CallNextHookEx(self != nullptr ? self->hook : nullptr, code, sent, lParam);
    }
};
RaceDuringRender* RaceDuringRender::current = nullptr;

TEST_F(ControlHostDutiesTest, AnotherThreadsPreviewDuringTheDialogsOwnRenderIsNotRead) {
    ShowPhoto();
    const imaging::BitmapDescriptor shown = *CellBitmap();
    // Away and back: the same picture is rendered again.
    dialog->tree.SelectItem(Find(TVI_ROOT, "Types"));
    ForeignPreview foreign;
    ASSERT_TRUE(foreign.ok);
    const size_t storage = imaging::kernel::LiveStorageCount();

    RaceDuringRender race;
    race.dialog = dialog->Handle();
    race.foreign = &foreign.record;
    RaceDuringRender::current = &race;
    race.hook = ::SetWindowsHookExA(WH_CALLWNDPROC, &RaceDuringRender::Hook, nullptr, ::GetCurrentThreadId());
    ASSERT_NE(nullptr, race.hook);
    dialog->tree.SelectItem(Find(Find(TVI_ROOT, "Types"), "photo.jpg"));
    ::UnhookWindowsHookEx(race.hook);
    RaceDuringRender::current = nullptr;

    ASSERT_TRUE(race.raced) << "the dialog rendered its own preview";
    EXPECT_EQ(0, race.foreignAnswer);
    ASSERT_EQ(1, dialog->gallery->GetItemCount());
    ASSERT_NE(nullptr, CellBitmap());
    EXPECT_EQ(shown.width, CellBitmap()->width) << "the dialog's own preview is the one shown";
    EXPECT_EQ(shown.height, CellBitmap()->height);
    EXPECT_EQ(storage, imaging::kernel::LiveStorageCount())
        << "the new photo's pixels took the old one's place; the foreign ones stayed the test's";
}

TEST_F(ControlHostDutiesTest, APreviewOutsideARenderingIsNotReadWhetherSentOrPosted) {
    ShowPhoto();
    const imaging::BitmapDescriptor shown = *CellBitmap();
    ForeignPreview foreign;
    ASSERT_TRUE(foreign.ok);
    const size_t storage = imaging::kernel::LiveStorageCount();

    EXPECT_EQ(0, ::SendMessageA(dialog->Handle(), browser::kPreviewReadyMessage, 0,
                                reinterpret_cast<LPARAM>(&foreign.record)));
    // A posted one arrives through the loop; its pointer points nowhere.
    ::PostMessageA(dialog->Handle(), browser::kPreviewReadyMessage, 0, static_cast<LPARAM>(0x1234));
    ::PostMessageA(dialog->Handle(), browser::kPreviewReadyMessage, 0, 0);
    controltest::PumpMessages();
    ASSERT_EQ(1, dialog->gallery->GetItemCount());
    EXPECT_EQ(0, std::memcmp(&shown, CellBitmap(), sizeof shown));
    EXPECT_EQ(storage, imaging::kernel::LiveStorageCount());

    // The dialog's own previews still arrive.
    const HTREEITEM types = Find(TVI_ROOT, "Types");
    dialog->tree.SelectItem(Find(types, "image.png"));
    EXPECT_EQ(1, dialog->gallery->GetItemCount());
    EXPECT_NE(0, std::memcmp(&shown, CellBitmap(), sizeof shown)) << "the placeholder replaced the photo";
}

}  // namespace
}  // namespace browsertest

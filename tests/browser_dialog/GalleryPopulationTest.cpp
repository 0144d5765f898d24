// Filling the gallery: a container's ready-made thumbnails, one cell per
// readable rendition, and a single picture sized by the cell's rule; both
// routes empty the thumbnail library and the gallery first.
#include <cstddef>
#include <cstring>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "browser/NoPreviewPicture.h"
#include "browser/PreviewRender.h"
#include "framework/win32/MemoryHandles.h"
#include "gallery/ThumbnailGalleryItem.h"
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ThumbnailLibrary.h"

namespace browsertest {
namespace {

// The colour of a pixel as 0x00BBGGRR, whatever the bitmap's order.
uint32_t PixelAt(const imaging::BitmapDescriptor& bitmap, int x, int y) {
    const auto* row =
        static_cast<const uint8_t*>(bitmap.storage) + static_cast<size_t>(y) * bitmap.bytesPerLine;
    const uint8_t* pixel = row + static_cast<size_t>(x) * (bitmap.bitsPerPixel / 8);
    const uint8_t first = pixel[0], second = pixel[1], third = pixel[2];
    const bool bgr = bitmap.colorOrder == imaging::kColorOrderBgr;
    const uint8_t red = bgr ? third : first;
    const uint8_t blue = bgr ? first : third;
    return static_cast<uint32_t>(red) | static_cast<uint32_t>(second) << 8 |
           static_cast<uint32_t>(blue) << 16;
}

SIZE CellSizeOf(DialogHarness& harness, int index) {
    const auto* item = dynamic_cast<const gallery::CThumbnailGalleryItem*>(harness.Gallery().GetItem(index));
    return item != nullptr ? item->CellSize() : SIZE{-1, -1};
}

SIZE BitmapSize(const imaging::BitmapDescriptor* bitmap) {
    return bitmap != nullptr ? SIZE{bitmap->width, bitmap->height} : SIZE{-1, -1};
}

bool operator==(const SIZE& a, const SIZE& b) {
    return a.cx == b.cx && a.cy == b.cy;
}

bool IsDark(uint32_t colour) {
    return (colour & 0xFF) < 0x40 && (colour >> 8 & 0xFF) < 0x40 && (colour >> 16 & 0xFF) < 0x40;
}

// The share of the picture's pixels that are dark, in percent.
int DarkPercent(const imaging::BitmapDescriptor& bitmap) {
    int dark = 0;
    for (int y = 0; y < bitmap.height; ++y)
        for (int x = 0; x < bitmap.width; ++x)
            if (IsDark(PixelAt(bitmap, x, y))) ++dark;
    return bitmap.width * bitmap.height > 0 ? dark * 100 / (bitmap.width * bitmap.height) : 0;
}

// The no-preview picture of `side` as the dialog must show it: made on its
// own and sized by the cell's rule.
struct ExpectedPlaceholder {
    explicit ExpectedPlaceholder(int side, SIZE target) {
        ok = browser::MakeNoPreviewPicture(side, &bitmap) == imaging::kSuccess &&
             imaging::SizeBitmap(&bitmap, target.cx, target.cy, imaging::kSizeResample) == imaging::kSuccess;
    }
    ~ExpectedPlaceholder() { imaging::FreeBitmap(&bitmap); }
    ExpectedPlaceholder(const ExpectedPlaceholder&) = delete;
    ExpectedPlaceholder& operator=(const ExpectedPlaceholder&) = delete;
    imaging::BitmapDescriptor bitmap = {};
    bool ok = false;
};

::testing::AssertionResult SamePixels(const imaging::BitmapDescriptor& expected,
                                      const imaging::BitmapDescriptor& actual) {
    if (expected.width != actual.width || expected.height != actual.height)
        return ::testing::AssertionFailure() << "sizes differ";
    for (int y = 0; y < expected.height; ++y)
        for (int x = 0; x < expected.width; ++x)
            if (PixelAt(expected, x, y) != PixelAt(actual, x, y))
                return ::testing::AssertionFailure() << "pixel (" << x << ", " << y << ") differs";
    return ::testing::AssertionSuccess();
}

int32_t LoadLong(const Bytes& bytes, size_t at) {
    return static_cast<int32_t>(static_cast<uint32_t>(bytes[at]) | static_cast<uint32_t>(bytes[at + 1]) << 8 |
                                static_cast<uint32_t>(bytes[at + 2]) << 16 |
                                static_cast<uint32_t>(bytes[at + 3]) << 24);
}

void StoreLong(Bytes& bytes, size_t at, int32_t value) {
    for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<uint8_t>(static_cast<uint32_t>(value) >> (8 * i));
}

// Where a container keeps its item count and the offset of its entry table.
constexpr size_t kItemCountField = 280;
constexpr size_t kEntryTableField = 312;
constexpr size_t kEntryRecordBytes = 540;

class GalleryPopulationTest : public ProductViewTest {
protected:
    void SelectSmall() { harness.ClickRadio(IDC_SMALL_THUMBNAILS); }
    HTREEITEM TypesItem(const std::string& name) {
        // The first expansion reads the folder; later ones change nothing.
        return Below("Types", name);
    }
    // The dialog's own library, which its gallery's cells point into.
    thumbnails::CThumbnailLibrary& Library() { return harness.Dialog().ThumbnailLibrary(); }
};

TEST_F(GalleryPopulationTest, AContainerFillsOneCellPerItemInOrder) {
    harness.Select(harness.At({"Animals"}));
    ASSERT_EQ(5, harness.Gallery().GetItemCount());
    ASSERT_EQ(5, Library().GetItemCount());
    const char* const names[] = {"cat.jpg", "dog.jpg", "owl.jpg", "fox.jpg", "elk.jpg"};
    for (int i = 0; i < 5; ++i) {
        SCOPED_TRACE(names[i]);
        const imaging::BitmapDescriptor* bitmap = harness.CellBitmap(i);
        ASSERT_NE(nullptr, bitmap);
        EXPECT_TRUE(BitmapSize(bitmap) == (SIZE{120, 90})) << "the large rendition, as it is stored";
        EXPECT_EQ(kAnimalColours[i], PixelAt(*bitmap, 60, 45));
        EXPECT_TRUE(CellSizeOf(harness, i) == (SIZE{145, 179}));
        // The library's item is the cell's, in the same order.
        const auto* cell = dynamic_cast<const gallery::CThumbnailGalleryItem*>(harness.Gallery().GetItem(i));
        EXPECT_EQ(Library().GetItem(i), cell->Thumbnail());
        EXPECT_EQ(layout.Primary() + "\\Animals\\" + names[i], Library().GetItem(i)->filePath.path)
            << "the container's path up to its first dot, then the item's file name";
        EXPECT_EQ("", *harness.Gallery().GetItem(i)->GetName());
        // The item's own path overlays the start of the picture's memory.
        const std::string path = std::string("C:\\Artwork\\") + names[i];
        EXPECT_EQ(0, std::memcmp(bitmap->storage, path.c_str(), path.size() + 1));
    }
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kLargeCell);
}

TEST_F(GalleryPopulationTest, SmallCellsOfAContainerAreSeventyTwoByNinety) {
    SelectSmall();
    harness.Select(harness.At({"Animals"}));
    ASSERT_EQ(5, harness.Gallery().GetItemCount());
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(BitmapSize(harness.CellBitmap(i)) == (SIZE{60, 45})) << "the small rendition";
        EXPECT_TRUE(CellSizeOf(harness, i) == (SIZE{72, 90}));
        EXPECT_EQ(kAnimalColours[i], PixelAt(*harness.CellBitmap(i), 30, 30));
    }
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kSmallContainerCell);
    EXPECT_EQ(0, harness.Dialog().largeThumbnails);
}

TEST_F(GalleryPopulationTest, AnUnreadableRenditionIsSkippedAndTheCellsAfterItMoveUp) {
    harness.Select(harness.At({"Patchy"}));
    ASSERT_EQ(2, harness.Gallery().GetItemCount());
    EXPECT_EQ(0x112233u, PixelAt(*harness.CellBitmap(0), 60, 45));
    EXPECT_EQ(0x445566u, PixelAt(*harness.CellBitmap(1), 60, 45));
    EXPECT_EQ(layout.Primary() + "\\Patchy\\three.jpg", Library().GetItem(1)->filePath.path);
}

TEST_F(GalleryPopulationTest, AContainerWithNoReadableRenditionShowsNothingAndStillTellsTheHost) {
    harness.Select(harness.At({"Blank"}));
    EXPECT_EQ(0, harness.Gallery().GetItemCount());
    EXPECT_EQ(0, Library().GetItemCount());
    EXPECT_EQ(0, harness.Gallery().SelectedIndex()) << "item 0 is selected all the same";
    EXPECT_TRUE(
        SameRecords({NothingSelected(), Record(1, 1, layout.Path("Blank.QLT"))}, harness.sink.Records()));
}

TEST_F(GalleryPopulationTest, AContainerThatWillNotOpenToldTheUserAndShowsNothing) {
    Disk disk;
    disk.File("P\\Locked.qlt", ContainerFile({PictureEntry("l.jpg", 0x010203)}));
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.CreateInProductView());
    const framework::win32::UniqueFile lock(::CreateFileA(disk.Path("P\\Locked.qlt").c_str(), GENERIC_READ, 0,
                                                          nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(lock);
    ShownMessages messages;
    fresh.sink.Clear();
    fresh.Select(fresh.At({"Locked"}));
    EXPECT_EQ(1u, messages.texts.size()) << "the system's text for a container that will not open";
    EXPECT_EQ(0, fresh.Gallery().GetItemCount());
    EXPECT_TRUE(
        SameRecords({NothingSelected(), Record(1, 1, disk.Path("P\\Locked.QLT"))}, fresh.sink.Records()));
}

TEST_F(GalleryPopulationTest, ALargePictureIsSizedByTheLargeCellsRule) {
    harness.Select(TypesItem("big.bmp"));
    ASSERT_EQ(1, harness.Gallery().GetItemCount());
    // 1000 x 800: 1000 * 179 > 800 * 145, so 135 wide and (800 - 30) * 135 / 1000 high.
    EXPECT_TRUE(BitmapSize(harness.CellBitmap(0)) == (SIZE{135, 103}));
    EXPECT_TRUE(CellSizeOf(harness, 0) == (SIZE{145, 179}));
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kLargeCell);
    EXPECT_EQ(1, Library().GetItemCount());
    EXPECT_EQ(layout.Path("Types\\big.bmp"), Library().GetItem(0)->filePath.path);
    EXPECT_EQ(0x336699u, PixelAt(*harness.CellBitmap(0), 60, 50));
}

TEST_F(GalleryPopulationTest, ATallPictureKeepsItsHeightRule) {
    harness.Select(TypesItem("PIC.Jpeg"));
    // 100 x 200: 100 * 179 <= 200 * 145, so 140 high and 100 * 140 / 200 wide.
    EXPECT_TRUE(BitmapSize(harness.CellBitmap(0)) == (SIZE{70, 140}));
    SelectSmall();
    // 100 * 108 <= 200 * 77: 78 high and 100 * 78 / 200 wide.
    EXPECT_TRUE(BitmapSize(harness.CellBitmap(0)) == (SIZE{39, 78}));
}

TEST_F(GalleryPopulationTest, SmallCellsOfAPictureAreSeventySevenByOneHundredAndEight) {
    SelectSmall();
    harness.Select(TypesItem("photo.jpg"));
    ASSERT_EQ(1, harness.Gallery().GetItemCount());
    // 200 x 100: 57 wide and (100 - 20) * 57 / 200 high.
    EXPECT_TRUE(BitmapSize(harness.CellBitmap(0)) == (SIZE{57, 22}));
    EXPECT_TRUE(CellSizeOf(harness, 0) == (SIZE{77, 108}));
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kSmallPictureCell);
}

TEST_F(GalleryPopulationTest, TheNoPreviewPictureIsSizedLikeAnyOther) {
    for (const char* name : {"image.png", "scan.tif", "page.eps", "clip.cmp"}) {
        SCOPED_TRACE(name);
        harness.Select(TypesItem(name));
        ASSERT_EQ(1, harness.Gallery().GetItemCount());
        // 128 x 128 becomes 135 x (128 - 30) * 135 / 128.
        EXPECT_TRUE(BitmapSize(harness.CellBitmap(0)) == (SIZE{135, 103}));
    }
    SelectSmall();
    harness.Select(TypesItem("image.png"));
    // 64 x 64 becomes 57 x (64 - 20) * 57 / 64.
    EXPECT_TRUE(BitmapSize(harness.CellBitmap(0)) == (SIZE{57, 39}));
    EXPECT_TRUE(CellSizeOf(harness, 0) == (SIZE{77, 108}));
}

TEST_F(GalleryPopulationTest, MetafilesArriveAtOneHundredAndTwentyEightSquare) {
    for (const char* name : {"plain.wmf", "placeable.wmf"}) {
        SCOPED_TRACE(name);
        harness.sink.Clear();
        harness.Select(TypesItem(name));
        ASSERT_EQ(1, harness.Gallery().GetItemCount());
        EXPECT_TRUE(BitmapSize(harness.CellBitmap(0)) == (SIZE{135, 103}));
        // The no-preview picture has the same size: what tells them apart is
        // the metafile's black half, far more ink than three lines of text.
        EXPECT_GT(DarkPercent(*harness.CellBitmap(0)), 30) << "the metafile itself, not the placeholder";
        EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 0, layout.Path(std::string("Types\\") + name))},
                                harness.sink.Records()));
    }
}

TEST_F(GalleryPopulationTest, EachFillEmptiesTheLibraryAndTheGalleryFirst) {
    harness.Select(harness.At({"Animals"}));
    ASSERT_EQ(5, Library().GetItemCount());
    harness.Select(TypesItem("photo.jpg"));
    EXPECT_EQ(1, Library().GetItemCount());
    EXPECT_EQ(1, harness.Gallery().GetItemCount());
    harness.Select(harness.At({"Patchy"}));
    EXPECT_EQ(2, Library().GetItemCount());
    EXPECT_EQ(2, harness.Gallery().GetItemCount());
}

// The handler of user message 0x405 itself: the message reaches it only
// with the dialog's own preview (ControlHostDutiesTest), so the record that
// a test makes is handed to it directly.
TEST_F(GalleryPopulationTest, APreviewWithoutARecordClearsTheGalleryAndTellsNothing) {
    harness.Select(harness.At({"Animals"}));
    harness.sink.Clear();
    const LRESULT taken = harness.Dialog().OnPreviewReady(0, 0);
    EXPECT_EQ(0, taken);
    EXPECT_EQ(0, harness.Gallery().GetItemCount());
    EXPECT_EQ(0, Library().GetItemCount());
    EXPECT_EQ(-1, harness.Gallery().SelectedIndex());
    EXPECT_TRUE(harness.Gallery().GetCellSize() == browser::kLargeCell)
        << "set directly before the record is looked at";
    EXPECT_TRUE(harness.sink.events.empty());
}

TEST_F(GalleryPopulationTest, APreviewRecordsPixelsBelongToTheLibraryOnceTaken) {
    harness.Select(harness.At({"Empty"}));
    const size_t before = imaging::kernel::LiveStorageCount();
    browser::PreviewBitmapRecord record = {};
    ASSERT_EQ(imaging::kSuccess,
              imaging::CreateBitmap(&record.bitmap, imaging::kMemoryConventional, 300, 200, 24,
                                    imaging::kColorOrderBgr, nullptr, imaging::kViewTopLeft, nullptr, 0));
    const LRESULT taken = harness.Dialog().OnPreviewReady(0, reinterpret_cast<LPARAM>(&record));
    EXPECT_EQ(browser::kPreviewTaken, taken);
    ASSERT_EQ(1, harness.Gallery().GetItemCount());
    // 300 x 200: 135 wide and (200 - 30) * 135 / 300 high.
    EXPECT_TRUE(BitmapSize(harness.CellBitmap(0)) == (SIZE{135, 76}));
    EXPECT_EQ(before + 1, imaging::kernel::LiveStorageCount());
    Library().ClearItems();
    EXPECT_EQ(before, imaging::kernel::LiveStorageCount()) << "the library gave the pixels back";
    harness.Gallery().RemoveAllItems();
}

TEST_F(GalleryPopulationTest, TheTypesThatAlwaysGetThePlaceholderShowItPixelForPixel) {
    ExpectedPlaceholder large(128, SIZE{135, 103});
    ASSERT_TRUE(large.ok);
    for (const char* name : {"image.png", "scan.tif", "page.eps", "clip.cmp"}) {
        SCOPED_TRACE(name);
        harness.Select(TypesItem(name));
        ASSERT_NE(nullptr, harness.CellBitmap(0));
        EXPECT_TRUE(SamePixels(large.bitmap, *harness.CellBitmap(0)));
    }
    SelectSmall();
    ExpectedPlaceholder small(64, SIZE{57, 39});
    ASSERT_TRUE(small.ok);
    harness.Select(TypesItem("scan.tif"));
    ASSERT_NE(nullptr, harness.CellBitmap(0));
    EXPECT_TRUE(SamePixels(small.bitmap, *harness.CellBitmap(0)));
}

TEST_F(GalleryPopulationTest, PicturesTheImagingLayerReadsAreNotThePlaceholder) {
    ExpectedPlaceholder large(128, SIZE{135, 103});
    ASSERT_TRUE(large.ok);
    for (const char* name : {"big.bmp", "photo.jpg", "PIC.Jpeg", "emf.emf"}) {
        SCOPED_TRACE(name);
        harness.sink.Clear();
        harness.Select(TypesItem(name));
        ASSERT_NE(nullptr, harness.CellBitmap(0));
        EXPECT_FALSE(SamePixels(large.bitmap, *harness.CellBitmap(0)));
        EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 0, layout.Path(std::string("Types\\") + name))},
                                harness.sink.Records()));
    }
}

TEST_F(GalleryPopulationTest, AnEntryRecordCutShortByTheEndOfTheFileStillShowsItsThumbnail) {
    // The entry table moved to the end of the file, its one record missing
    // its last field (the data offset); the rendition offsets are all there.
    Bytes bytes = ContainerFile({PictureEntry("cut.jpg", 0x3366CC)});
    const auto table = static_cast<size_t>(LoadLong(bytes, kEntryTableField));
    const Bytes record(bytes.begin() + static_cast<std::ptrdiff_t>(table),
                       bytes.begin() + static_cast<std::ptrdiff_t>(table + kEntryRecordBytes - 4));
    StoreLong(bytes, kEntryTableField, static_cast<int32_t>(bytes.size()));
    bytes.insert(bytes.end(), record.begin(), record.end());
    Disk disk;
    disk.File("P\\Cut.qlt", bytes);
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.CreateInProductView());
    fresh.Select(fresh.At({"Cut"}));
    ASSERT_EQ(1, fresh.Gallery().GetItemCount());
    EXPECT_EQ(0x3366CCu, PixelAt(*fresh.CellBitmap(0), 60, 45));
    EXPECT_EQ(disk.Path("P\\Cut\\cut.jpg"), fresh.Dialog().ThumbnailLibrary().GetItem(0)->filePath.path);
}

TEST_F(GalleryPopulationTest, AnItemCountBeyondWhatTheFileHoldsEndsWithTheFile) {
    Bytes bytes = ContainerFile({PictureEntry("a.jpg", 0x0000FF), PictureEntry("b.jpg", 0x00FF00)});
    StoreLong(bytes, kItemCountField, 0x7FFFFFFF);
    Disk disk;
    disk.File("P\\Huge.qlt", bytes);
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.CreateInProductView());
    fresh.sink.Clear();
    fresh.Select(fresh.At({"Huge"}));
    ASSERT_EQ(2, fresh.Gallery().GetItemCount());
    EXPECT_EQ(0x0000FFu, PixelAt(*fresh.CellBitmap(0), 60, 45));
    EXPECT_EQ(0x00FF00u, PixelAt(*fresh.CellBitmap(1), 60, 45));
    EXPECT_TRUE(
        SameRecords({NothingSelected(), Record(1, 1, disk.Path("P\\Huge.QLT"))}, fresh.sink.Records()));
}

TEST_F(GalleryPopulationTest, AnItemPathLongerThanItsPicturesMemoryIsCutToThatMemory) {
    // A 1 x 1 rendition has a few bytes of pixels; the item's path is far longer.
    const std::string longPath = "C:\\Artwork\\" + std::string(200, 'x') + ".jpg";
    ContainerEntry entry{"tiny.jpg", longPath, BmpPicture(1, 1, 0x0000FF), BmpPicture(1, 1, 0x0000FF)};
    Disk disk;
    disk.File("P\\Tiny.qlt", ContainerFile({entry, PictureEntry("next.jpg", 0x00FF00)}));
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.CreateInProductView());
    fresh.Select(fresh.At({"Tiny"}));
    ASSERT_EQ(2, fresh.Gallery().GetItemCount());
    const imaging::BitmapDescriptor& tiny = *fresh.CellBitmap(0);
    ASSERT_NE(nullptr, tiny.storage);
    ASSERT_GT(tiny.storageSize, 0u);
    ASSERT_LT(tiny.storageSize, longPath.size());
    const auto* bytes = static_cast<const char*>(tiny.storage);
    EXPECT_EQ(0, std::memcmp(bytes, longPath.data(), tiny.storageSize - 1));
    EXPECT_EQ('\0', bytes[tiny.storageSize - 1]) << "the text ends inside the picture's memory";
    EXPECT_EQ(0x00FF00u, PixelAt(*fresh.CellBitmap(1), 60, 45)) << "the next item is whole";
    EXPECT_EQ(disk.Path("P\\Tiny\\") + std::string(200, 'x') + ".jpg",
              fresh.Dialog().ThumbnailLibrary().GetItem(0)->filePath.path);
}

TEST_F(GalleryPopulationTest, AFilledGalleryDrawsAgainWithTheScrollRangeOfAllItsItems) {
    harness.Select(harness.At({"Animals"}));
    const HWND window = harness.Gallery().Handle();
    EXPECT_TRUE(::IsWindowVisible(window)) << "drawing is back on after the fill";
    SCROLLINFO filled = {};
    filled.cbSize = sizeof filled;
    filled.fMask = SIF_RANGE | SIF_PAGE;
    ASSERT_TRUE(::GetScrollInfo(window, SB_VERT, &filled));
    // Setting the range again for the items the gallery holds changes nothing.
    harness.Gallery().UpdateScrollRange();
    SCROLLINFO again = filled;
    ASSERT_TRUE(::GetScrollInfo(window, SB_VERT, &again));
    EXPECT_EQ(again.nMin, filled.nMin);
    EXPECT_EQ(again.nMax, filled.nMax);
    EXPECT_EQ(again.nPage, filled.nPage);
    EXPECT_GT(harness.Gallery().TotalRows(), 1) << "five cells take more than one row here";
}

}  // namespace
}  // namespace browsertest

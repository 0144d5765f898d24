// What the host is told from the gallery and on a double click: the record
// of a gallery click (the container first, the plain path otherwise), the
// record that PrepareDoubleClick leaves for the double-click events, and the
// surface through which the control's keyboard map reaches the gallery.
#include <cstring>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "framework/win32/MemoryHandles.h"

namespace browsertest {
namespace {

class DeliveryTest : public ProductViewTest {};

TEST_F(DeliveryTest, TheThirdCellOfAContainerIsItemThree) {
    harness.Select(harness.At({"Animals"}));
    harness.sink.Clear();
    harness.ClickCell(2);
    const GraphicItemInfo expected = Record(1, 3, layout.Path("Animals.QLT"));
    EXPECT_TRUE(SameRecords({expected}, harness.sink.Records()));
    EXPECT_TRUE(SameRecords({expected}, {harness.Dialog().itemInfo}));
    EXPECT_EQ(harness.Gallery().Handle(), ::GetFocus()) << "the gallery takes the keyboard";
    EXPECT_NE(static_cast<const void*>(&harness.Dialog().itemInfo), harness.sink.events[0].reference)
        << "the event carries a copy; itemInfo keeps its own";

    harness.ClickCell(0);
    harness.ClickCell(3);
    EXPECT_TRUE(SameRecords(
        {expected, Record(1, 1, layout.Path("Animals.QLT")), Record(1, 4, layout.Path("Animals.QLT"))},
        harness.sink.Records()));
}

TEST_F(DeliveryTest, ACellAfterASkippedRenditionCarriesItsPositionNotTheEntrysNumber) {
    harness.Select(harness.At({"Patchy"}));
    harness.sink.Clear();
    harness.ClickCell(1);
    EXPECT_TRUE(SameRecords({Record(1, 2, layout.Path("Patchy.QLT"))}, harness.sink.Records()))
        << "the entry is number 3 in the container";
}

TEST_F(DeliveryTest, AClickOnASinglePictureIsItemOneOfThePlainPath) {
    harness.Select(Below("Types", "photo.jpg"));
    harness.sink.Clear();
    harness.ClickCell(0);
    EXPECT_TRUE(SameRecords({Record(1, 1, layout.Path("Types\\photo.jpg"))}, harness.sink.Records()));
}

TEST_F(DeliveryTest, APictureWithAContainerBesideItIsAPictureToTheTreeAndAContainerToTheGallery) {
    harness.Select(Below("Twins", "twin.jpg"));
    const std::string plain = layout.Path("Twins\\twin.jpg");
    EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 0, plain)}, harness.sink.Records()));
    harness.sink.Clear();
    harness.ClickCell(0);
    EXPECT_TRUE(SameRecords({Record(1, 1, plain + ".QLT")}, harness.sink.Records()));
}

TEST_F(DeliveryTest, BelowADriveOfMyComputerThePathCarriesTwoBackslashes) {
    ScopedDrive drive(FreeDriveLetter(), layout.Primary(), DRIVE_FIXED);
    if (!drive.Ok()) GTEST_SKIP() << "no mount manager to make a drive with";
    harness.DropDown();
    harness.Choose("MyComputer");
    const HTREEITEM root = harness.At({drive.Text() + "\\"});
    ASSERT_NE(nullptr, root);
    harness.Expand(root);
    harness.sink.Clear();
    harness.Select(harness.At({drive.Text() + "\\", "Animals"}));
    const std::string container = drive.Text() + "\\\\Animals.QLT";
    EXPECT_TRUE(SameRecords({NothingSelected(), Record(1, 1, container)}, harness.sink.Records()));
    harness.sink.Clear();
    harness.ClickCell(1);
    EXPECT_TRUE(SameRecords({Record(1, 2, container)}, harness.sink.Records()));
}

TEST_F(DeliveryTest, ADoubleClickOnAPictureRendersItAndLeavesItemOneWithItsName) {
    const HTREEITEM picture = Below("Types", "photo.jpg");
    harness.Select(picture);
    harness.sink.Clear();
    harness.Dialog().PrepareDoubleClick();
    const std::string path = layout.Path("Types\\photo.jpg");
    EXPECT_TRUE(SameRecords({Record(1, 0, path)}, harness.sink.Records()))
        << "the render tells the host first";
    EXPECT_TRUE(SameRecords({Record(1, 1, path, "photo.jpg")}, {harness.Dialog().itemInfo}));
    EXPECT_EQ(0, harness.Gallery().SelectedIndex());
    EXPECT_EQ(path, harness.Dialog().currentPath);
}

TEST_F(DeliveryTest, ADoubleClickOnAFolderLeavesNothingSelected) {
    harness.Select(harness.At({"Animals"}));
    ASSERT_EQ(1, harness.Dialog().itemInfo.valid);
    harness.Select(harness.At({"Empty"}));
    harness.sink.Clear();
    harness.Dialog().PrepareDoubleClick();
    EXPECT_TRUE(harness.sink.events.empty());
    EXPECT_TRUE(SameRecords({NothingSelected()}, {harness.Dialog().itemInfo}));
}

TEST_F(DeliveryTest, ADoubleClickOnAContainerDeliversNothingByItself) {
    harness.Select(harness.At({"Animals"}));
    const GraphicItemInfo before = harness.Dialog().itemInfo;
    harness.sink.Clear();
    harness.Dialog().PrepareDoubleClick();
    EXPECT_TRUE(harness.sink.events.empty());
    EXPECT_TRUE(SameRecords({before}, {harness.Dialog().itemInfo})) << "the record stays as it was";
}

TEST_F(DeliveryTest, TheSurfaceReportsTheSelectedPathAndGalleryPosition) {
    std::string path;
    EXPECT_FALSE(harness.Dialog().GetSelectedPath(&path)) << "nothing is selected in a fresh view";
    harness.Select(harness.At({"Animals"}));
    ASSERT_TRUE(harness.Dialog().GetSelectedPath(&path));
    EXPECT_EQ(layout.Path("Animals"), path);
    const browser::GalleryPosition position = harness.Dialog().GetGalleryPosition();
    EXPECT_EQ(5, position.itemCount);
    EXPECT_EQ(0, position.selectedIndex);
    EXPECT_EQ(0, position.currentIndex);
    EXPECT_EQ(harness.Gallery().Columns(), position.columns);
    EXPECT_EQ(harness.Gallery().TotalRows(), position.totalRows);
    EXPECT_EQ((5 + position.columns - 1) / position.columns, position.totalRows);

    // The keyboard's move: current index, selection, then the command.
    harness.sink.Clear();
    harness.Dialog().SetGalleryCurrentIndex(3);
    harness.Dialog().SetGallerySelection(3);
    harness.Dialog().OnGalleryCommand();
    EXPECT_TRUE(SameRecords({Record(1, 4, layout.Path("Animals.QLT"))}, harness.sink.Records()));
    EXPECT_EQ(3, harness.Dialog().GetGalleryPosition().selectedIndex);
}

TEST_F(DeliveryTest, ALongPathIsCutToTheRecordsFieldAndNeverSpillsIntoTheName) {
    // A folder name long enough that a picture in it has a path beyond the
    // record's 260 bytes, while the folder itself can still be listed.
    Disk disk;
    disk.Folder("P");
    const std::string folder = "P\\" + std::string(250 - disk.Path("P").size(), 'f');
    disk.Folder(folder);
    const std::string picture = disk.Path(folder) + "\\a_picture_with_a_long_name.jpg";
    ASSERT_GT(picture.size(), 270u);
    const std::wstring wide = L"\\\\?\\" + std::wstring(picture.begin(), picture.end());
    {
        const framework::win32::UniqueFile file(::CreateFileW(wide.c_str(), GENERIC_WRITE, 0, nullptr,
                                                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file) GTEST_SKIP() << "the file system takes no path this long";
        const Bytes jpeg = JpegPicture(8, 8);
        DWORD written = 0;
        ASSERT_TRUE(::WriteFile(file.Get(), jpeg.data(), static_cast<DWORD>(jpeg.size()), &written, nullptr));
    }
    ScopedPrimaryFolder own(disk.Path("P"));
    DialogHarness fresh;
    ASSERT_TRUE(fresh.CreateInProductView());
    const HTREEITEM parent = fresh.Tree().GetRootItem();
    ASSERT_NE(nullptr, parent);
    fresh.Expand(parent);
    const HTREEITEM leaf = fresh.Find(parent, "a_picture_with_a_long_name.jpg");
    ASSERT_NE(nullptr, leaf);
    fresh.Select(leaf);
    ASSERT_EQ(picture, fresh.Dialog().GetSelectedPath());
    fresh.sink.Clear();
    // The gallery's command takes the path as it stands when no container is there.
    fresh.Dialog().OnGalleryCommand();
    const std::vector<GraphicItemInfo> records = fresh.sink.Records();
    ASSERT_EQ(1u, records.size());
    EXPECT_EQ(1, records[0].valid);
    EXPECT_EQ(1, records[0].itemNumber);
    EXPECT_EQ(0, std::memcmp(records[0].path, picture.data(), 259));
    EXPECT_EQ('\0', records[0].path[259]) << "the text ends inside its field";
    for (char c : records[0].name) EXPECT_EQ('\0', c);
    EXPECT_EQ(0, std::memcmp(&records[0], &fresh.Dialog().itemInfo, sizeof records[0]));
}

}  // namespace
}  // namespace browsertest

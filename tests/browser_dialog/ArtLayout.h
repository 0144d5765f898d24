// The disk that most browser tests look at: a primary graphics folder with
// what the top of a view hides and shows, folders of every kind one level
// down, containers with readable, unreadable and missing renditions, and
// pictures of every type with the names that the rules single out.
#pragma once

#include <memory>
#include <string>

#include "BrowserTestSupport.h"

namespace browsertest {

// The colours of the five pictures of Animals.qlt, in item order.
constexpr uint32_t kAnimalColours[5] = {0x0000FF, 0x00FF00, 0xFF0000, 0x00FFFF, 0xFF00FF};

// Builds, under a fresh temporary folder:
//
// Art\                            the primary graphics folder
//   Animals.qlt                   cat, dog, owl, fox, elk (readable renditions)
//   Patchy.qlt                    one, (two unreadable), three
//   Blank.qlt                     two items without renditions
//   Textures\t.jpg  Borders\b.jpg  Backgrounds\   BORDERS.QLT  backgrounds.qlt
//   Empty\                        nothing in it
//   Others\notes.txt data.bin     only other files
//   TopPicture\x.jpg              a folder of one picture
//   TopContainer\inner.qlt        a folder of one container
//   TopFolder\sub\                a folder of one folder
//   Gallery\                      one level down:
//     Pictures\p1.jpg p2.bmp p3.png   pictures only
//     Empty\  Others\notes.txt
//     Textures\t.jpg  Borders\  Backgrounds\  Edges\BORDERS.QLT
//     Deeper\Deepest\         nested folders
//     Boxed\k.qlt
//   Types\                        a picture of every type:
//     big.bmp (1000 x 800)  photo.jpg  PIC.Jpeg  emf.emf  plain.wmf  placeable.wmf
//     image.png  scan.tif  page.eps  clip.cmp
//   Names\ holiday.2000.jpg  pic.jpe  a.qlt.txt  .qlt  ok.jpg
//   Twins\ twin.jpg  twin.QLT     a picture and a container under one title
//   Twins\ both  both.qlt         a plain file hiding a container
//   lower\ cats.qlt               a container named in lower case
//   single.bmp                    a picture at the top
class ArtLayout {
public:
    ArtLayout();

    const Disk& DiskOf() const { return disk; }
    std::string Primary() const { return disk.Path("Art"); }
    std::string Path(const std::string& relative) const { return disk.Path("Art\\" + relative); }

    Disk disk;
};

// One layout for a whole test suite; made at the first request.
ArtLayout& SharedLayout();

// A dialog over the shared layout with the product's view chosen in the
// combo, and the events of getting there forgotten.
class ProductViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(harness.CreateInProductView());
        harness.sink.Clear();
    }
    // The node `name` below the top-level `folder`, which is expanded first.
    HTREEITEM Below(const std::string& folder, const std::string& name) {
        const HTREEITEM parent = harness.At({folder});
        harness.Expand(parent);
        return harness.Find(parent, name);
    }

    ArtLayout& layout = SharedLayout();
    ScopedPrimaryFolder primary{layout.Primary()};
    DialogHarness harness;
};

}  // namespace browsertest

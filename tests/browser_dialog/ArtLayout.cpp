#include "ArtLayout.h"

namespace browsertest {

ArtLayout::ArtLayout() {
    const Bytes jpeg = JpegPicture(64, 48);
    disk.Folder("Art");
    disk.File(
        "Art\\Animals.qlt",
        ContainerFile({PictureEntry("cat.jpg", kAnimalColours[0]), PictureEntry("dog.jpg", kAnimalColours[1]),
                       PictureEntry("owl.jpg", kAnimalColours[2]), PictureEntry("fox.jpg", kAnimalColours[3]),
                       PictureEntry("elk.jpg", kAnimalColours[4])}));
    disk.File("Art\\Patchy.qlt", ContainerFile({PictureEntry("one.jpg", 0x112233), UnreadableEntry("two.jpg"),
                                                PictureEntry("three.jpg", 0x445566)}));
    disk.File("Art\\Blank.qlt", ContainerFile({BareEntry("none1.jpg"), BareEntry("none2.jpg")}));
    disk.File("Art\\Textures\\t.jpg", jpeg);
    disk.File("Art\\Borders\\b.jpg", jpeg);
    disk.Folder("Art\\Backgrounds");
    disk.File("Art\\BORDERS.QLT", ContainerFile({PictureEntry("edge.jpg", 0x808080)}));
    disk.File("Art\\backgrounds.qlt", ContainerFile({PictureEntry("sky.jpg", 0xC08040)}));
    disk.Folder("Art\\Empty");
    disk.File("Art\\Others\\notes.txt", Bytes{'h', 'i'});
    disk.File("Art\\Others\\data.bin", JunkBytes(64));
    disk.File("Art\\TopPicture\\x.jpg", jpeg);
    disk.File("Art\\TopContainer\\inner.qlt", ContainerFile({PictureEntry("in.jpg", 0x202020)}));
    disk.Folder("Art\\TopFolder\\sub");

    disk.File("Art\\Gallery\\Pictures\\p1.jpg", jpeg);
    disk.File("Art\\Gallery\\Pictures\\p2.bmp", BmpPicture(40, 30, 0x00FF00));
    disk.File("Art\\Gallery\\Pictures\\p3.png", PngPicture(40, 30));
    disk.Folder("Art\\Gallery\\Empty");
    disk.File("Art\\Gallery\\Others\\notes.txt", Bytes{'h', 'i'});
    disk.File("Art\\Gallery\\Textures\\t.jpg", jpeg);
    disk.Folder("Art\\Gallery\\Borders");
    disk.Folder("Art\\Gallery\\Backgrounds");
    disk.File("Art\\Gallery\\Edges\\BORDERS.QLT", ContainerFile({PictureEntry("edge.jpg", 0x808080)}));
    disk.Folder("Art\\Gallery\\Deeper\\Deepest");
    disk.File("Art\\Gallery\\Boxed\\k.qlt", ContainerFile({PictureEntry("k.jpg", 0x303030)}));

    disk.File("Art\\Types\\big.bmp", BmpPicture(1000, 800, 0x336699));
    disk.File("Art\\Types\\photo.jpg", JpegPicture(200, 100));
    disk.File("Art\\Types\\PIC.Jpeg", JpegPicture(100, 200));
    disk.File("Art\\Types\\emf.emf", EmfPicture());
    disk.File("Art\\Types\\plain.wmf", WmfPicture(false));
    disk.File("Art\\Types\\placeable.wmf", WmfPicture(true));
    disk.File("Art\\Types\\image.png", PngPicture(90, 60));
    disk.File("Art\\Types\\scan.tif", TiffPicture(90, 60));
    disk.File("Art\\Types\\page.eps", Bytes{'%', '!', 'P', 'S'});
    disk.File("Art\\Types\\clip.cmp", JunkBytes(100));

    disk.File("Art\\Names\\holiday.2000.jpg", jpeg);
    disk.File("Art\\Names\\pic.jpe", jpeg);
    disk.File("Art\\Names\\a.qlt.txt", ContainerFile({PictureEntry("a.jpg", 0x010101)}));
    disk.File("Art\\Names\\.qlt", ContainerFile({PictureEntry("dot.jpg", 0x020202)}));
    disk.File("Art\\Names\\ok.jpg", jpeg);

    disk.File("Art\\Twins\\twin.jpg", jpeg);
    disk.File("Art\\Twins\\twin.jpg.QLT",
              ContainerFile({PictureEntry("t1.jpg", 0x0000AA), PictureEntry("t2.jpg", 0x00AA00)}));
    disk.File("Art\\Twins\\both", Bytes{'x'});
    disk.File("Art\\Twins\\both.qlt", ContainerFile({PictureEntry("b1.jpg", 0xAA0000)}));
    disk.File("Art\\lower\\cats.qlt",
              ContainerFile({PictureEntry("tabby.jpg", 0x123456), PictureEntry("siamese.jpg", 0x654321),
                             PictureEntry("manx.jpg", 0x224466)}));
    disk.File("Art\\single.bmp", BmpPicture(50, 50, 0x0000FF));
}

ArtLayout& SharedLayout() {
    static ArtLayout layout;
    return layout;
}

}  // namespace browsertest

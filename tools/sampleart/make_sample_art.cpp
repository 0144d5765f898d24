// Generated artwork for the demo and for hand testing.
//
//   make_sample_art DIR
//       pictures (24-bit BMP files) of five artworks in DIR, 64- and
//       128-pixel thumbnails of each, and DIR/manifest.txt for the qlt tool:
//       make_sample_art art && qlt create art.qlt --manifest art/manifest.txt
//
//   make_sample_art --library LIBRARY SOURCES
//       a sample art library: in LIBRARY nested folders and pictures of every
//       type the browser shows; in SOURCES, for every container the library
//       should hold, a folder with its pictures, thumbnails and manifest.txt,
//       at the container's place relative to LIBRARY (SOURCES/Nature/Stone/
//       stands for LIBRARY/Nature/Stone.qlt). Prints one line per container:
//       MANIFEST<TAB>CONTAINER, for a loop of qlt create.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Artwork.h"
#include "PictureFiles.h"

namespace fs = std::filesystem;
using namespace sampleart;

namespace {

constexpr int kWidth = 400;
constexpr int kHeight = 300;

bool Write(const fs::path& path, const Bytes& bytes) {
    if (bytes.empty() || !WriteFile(path.string(), bytes)) {
        std::fprintf(stderr, "make_sample_art: cannot write %s\n", path.string().c_str());
        return false;
    }
    return true;
}

// The pictures, thumbnails and manifest of one container from `stems`.
bool WriteContainerSource(const fs::path& dir, const std::string& title,
                          const std::vector<std::string>& stems) {
    fs::create_directories(dir / "thumbs");
    std::ofstream manifest(dir / "manifest.txt", std::ios::binary);
    manifest << "# Generated sample artwork: " << title << "\nnotice Lumbrel sample art\n";
    bool ok = true;
    for (const std::string& stem : stems) {
        const Artwork& art = ArtworkNamed(stem);
        ok = Write(dir / (stem + ".bmp"), BmpFile(Render(art.paint, kWidth, kHeight), kWidth, kHeight)) && ok;
        ok = Write(dir / "thumbs" / (stem + "-64.bmp"), BmpFile(Render(art.paint, 64, 48), 64, 48)) && ok;
        ok = Write(dir / "thumbs" / (stem + "-128.bmp"), BmpFile(Render(art.paint, 128, 96), 128, 96)) && ok;
        manifest << "\nitem " << art.name << "\npath C:\\Art\\" << title << "\\" << stem << ".bmp\ndata "
                 << stem << ".bmp\nmethod " << art.method << "\nrendition 0x40 thumbs/" << stem
                 << "-64.bmp\nrendition 0x80 thumbs/" << stem << "-128.bmp\nkeywords " << art.keywords
                 << "\n";
    }
    return ok && static_cast<bool>(manifest);
}

int SimpleSet(const fs::path& dir) {
    const std::vector<std::string> stems = {"sunset", "checker", "rings", "marble", "night"};
    if (!WriteContainerSource(dir, "Samples", stems)) return 1;
    std::printf("%zu pictures and %s\n", stems.size(), (dir / "manifest.txt").string().c_str());
    return 0;
}

// A little house and sun, as metafile shapes in a 200 x 150 window.
std::vector<Shape> HouseShapes() {
    return {{Shape::kRectangle, 0, 0, 200, 110, 0x9CD2F0},   {Shape::kRectangle, 0, 110, 200, 150, 0x3C9A3C},
            {Shape::kEllipse, 145, 12, 185, 52, 0xFFD820},   {Shape::kRectangle, 50, 70, 130, 125, 0xC8503C},
            {Shape::kRectangle, 80, 95, 100, 125, 0x5A3214}, {Shape::kRectangle, 58, 80, 74, 96, 0xF0F0FF}};
}

std::vector<Shape> TargetShapes() {
    std::vector<Shape> shapes = {{Shape::kRectangle, 0, 0, 160, 160, 0xFFFFFF}};
    const uint32_t colours[] = {0xD02030, 0xFFFFFF, 0x2050C0, 0xFFFFFF, 0xF0C020};
    for (int i = 0; i < 5; ++i)
        shapes.push_back({Shape::kEllipse, 10 + 14 * i, 10 + 14 * i, 150 - 14 * i, 150 - 14 * i, colours[i]});
    return shapes;
}

bool WritePictures(const fs::path& dir) {
    fs::create_directories(dir);
    const auto picture = [](const char* stem, int w, int h) {
        return Render(ArtworkNamed(stem).paint, w, h);
    };
    bool ok = true;
    ok = Write(dir / "sunflower.bmp", BmpFile(picture("sunflower", kWidth, kHeight), kWidth, kHeight)) && ok;
    ok = Write(dir / "forest.jpg", JpegFile(picture("forest", kWidth, kHeight), kWidth, kHeight, 90)) && ok;
    ok = Write(dir / "Dawn.JPEG", JpegFile(picture("dawn", 300, 400), 300, 400, 90)) && ok;
    ok = Write(dir / "house.emf", EmfFile(HouseShapes(), 200, 150)) && ok;
    ok = Write(dir / "target.wmf", WmfFile(TargetShapes(), 160, 160, true)) && ok;
    ok = Write(dir / "house.wmf", WmfFile(HouseShapes(), 200, 150, false)) && ok;
    ok = Write(dir / "dots.png", PngFile(picture("dots", 240, 180), 240, 180)) && ok;
    ok = Write(dir / "granite.tif", TiffFile(picture("granite", 240, 180), 240, 180)) && ok;
    // The types that the browser always shows as "no preview".
    const std::string eps =
        "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 100 100\n"
        "newpath 50 50 40 0 360 arc 0.2 0.4 0.8 setrgbcolor fill\nshowpage\n%%EOF\n";
    ok = Write(dir / "badge.eps", Bytes(eps.begin(), eps.end())) && ok;
    Bytes cmp = {'C', 'M', 'P', 0};
    for (int i = 0; i < 252; ++i) cmp.push_back(static_cast<uint8_t>(i * 37));
    ok = Write(dir / "scan.cmp", cmp) && ok;
    return ok;
}

int Library(const fs::path& library, const fs::path& sources) {
    struct Container {
        const char* place;  // relative to the library, without ".qlt"
        std::vector<std::string> stems;
    };
    const std::vector<Container> containers = {
        {"Skies", {"sunset", "night", "dawn", "storm"}},
        {"Patterns",
         {"checker", "rings", "stripes", "plaid", "dots", "marble", "granite", "waves", "sunflower"}},
        {"Nature/Stone", {"marble", "granite"}},
        {"Nature/Plants", {"forest", "sunflower"}},
        {"Nature/Water/Sea", {"waves", "deep", "sunset"}},
    };
    std::error_code error;
    fs::create_directories(library / "Nature" / "Water", error);
    if (error) {
        std::fprintf(stderr, "make_sample_art: cannot make %s: %s\n", library.string().c_str(),
                     error.message().c_str());
        return 2;
    }
    bool ok = WritePictures(library / "Pictures");
    ok = Write(library / "Welcome.jpg",
               JpegFile(Render(ArtworkNamed("sunset").paint, kWidth, kHeight), kWidth, kHeight, 90)) &&
         ok;
    for (const Container& container : containers) {
        const fs::path source = sources / container.place;
        ok = WriteContainerSource(source, fs::path(container.place).filename().string(), container.stems) &&
             ok;
        std::printf("%s\t%s\n", (source / "manifest.txt").string().c_str(),
                    (library / (std::string(container.place) + ".qlt")).string().c_str());
    }
    return ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && argv[1][0] != '-') return SimpleSet(argv[1]);
    if (argc == 4 && std::string(argv[1]) == "--library") return Library(argv[2], argv[3]);
    std::fprintf(stderr, "usage: make_sample_art DIR\n       make_sample_art --library LIBRARY SOURCES\n");
    return 2;
}

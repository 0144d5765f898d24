// make_sample_art DIR: writes generated pictures (24-bit BMP files) into DIR,
// with 64- and 128-pixel thumbnails of each, and DIR/manifest.txt that the
// qlt tool turns into a container:
//   make_sample_art art && qlt create art.qlt --manifest art/manifest.txt
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

struct Rgb {
    uint8_t r, g, b;
};

using Painter = std::function<Rgb(double x, double y)>;  // x, y in [0, 1)

void Put16(std::vector<uint8_t>& out, uint32_t v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
}
void Put32(std::vector<uint8_t>& out, uint32_t v) {
    Put16(out, v & 0xFFFF);
    Put16(out, v >> 16);
}

// A bottom-up 24-bit BMP file of the painter's picture.
std::vector<uint8_t> Bmp(int width, int height, const Painter& paint) {
    const uint32_t rowSize = static_cast<uint32_t>((width * 3 + 3) & ~3);
    const uint32_t pixels = rowSize * static_cast<uint32_t>(height);
    std::vector<uint8_t> out;
    out.push_back('B');
    out.push_back('M');
    Put32(out, 54 + pixels);
    Put32(out, 0);
    Put32(out, 54);
    Put32(out, 40);
    Put32(out, static_cast<uint32_t>(width));
    Put32(out, static_cast<uint32_t>(height));
    Put16(out, 1);
    Put16(out, 24);
    Put32(out, 0);
    Put32(out, pixels);
    Put32(out, 2835);
    Put32(out, 2835);
    Put32(out, 0);
    Put32(out, 0);
    for (int y = height - 1; y >= 0; --y) {
        for (int x = 0; x < width; ++x) {
            Rgb c = paint((x + 0.5) / width, (y + 0.5) / height);
            out.push_back(c.b);
            out.push_back(c.g);
            out.push_back(c.r);
        }
        for (uint32_t pad = static_cast<uint32_t>(width * 3); pad < rowSize; ++pad) out.push_back(0);
    }
    return out;
}

uint8_t Clamp(double v) {
    return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}

struct Artwork {
    const char* name;
    const char* file;
    int method;
    const char* keywords;
    Painter paint;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_sample_art DIR\n");
        return 2;
    }
    const std::filesystem::path dir = argv[1];
    std::error_code error;
    std::filesystem::create_directories(dir / "thumbs", error);
    if (error) {
        std::fprintf(stderr, "make_sample_art: cannot make %s: %s\n", dir.string().c_str(),
                     error.message().c_str());
        return 2;
    }
    const double pi = 3.14159265358979;
    const std::vector<Artwork> artworks = {
        {"Sunset over the bay", "sunset.bmp", 1, "sky, sea, evening",
         [](double, double y) {
             return Rgb{255, Clamp(200 * (1 - y) + 40), Clamp(120 * y)};
         }},
        {"Checker border", "checker.bmp", 2, "border, pattern",
         [](double x, double y) {
             bool dark = (static_cast<int>(x * 8) + static_cast<int>(y * 8)) % 2 == 0;
             return dark ? Rgb{30, 30, 90} : Rgb{240, 230, 200};
         }},
        {"Green rings", "rings.bmp", 0, "pattern, green",
         [pi](double x, double y) {
             double r = std::hypot(x - 0.5, y - 0.5);
             return Rgb{20, Clamp(128 + 127 * std::cos(r * 40 * pi / 4)), 60};
         }},
        {"Marble texture", "marble.bmp", 1, "texture, stone",
         [](double x, double y) {
             double v = 0.5 + 0.5 * std::sin(12 * x + 4 * std::sin(9 * y) + 2 * std::sin(23 * x * y));
             return Rgb{Clamp(180 + 60 * v), Clamp(170 + 60 * v), Clamp(160 + 70 * v)};
         }},
        {"Night sky", "night.bmp", 2, "sky, evening, stars",
         [](double x, double y) {
             unsigned h = static_cast<unsigned>(x * 9973) * 31u + static_cast<unsigned>(y * 7919) * 17u;
             bool star = (h * 2654435761u) % 97u == 0;
             return star ? Rgb{255, 255, 220} : Rgb{10, 10, Clamp(40 + 60 * y)};
         }},
    };

    std::ofstream manifest(dir / "manifest.txt", std::ios::binary);
    manifest << "# Generated sample artwork\nnotice Lumbrel sample art\n";
    for (const Artwork& art : artworks) {
        const std::string stem = std::filesystem::path(art.file).stem().string();
        auto write = [&](const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
            std::ofstream out(path, std::ios::binary);
            out.write(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::streamsize>(bytes.size()));
        };
        write(dir / art.file, Bmp(400, 300, art.paint));
        write(dir / "thumbs" / (stem + "-64.bmp"), Bmp(64, 48, art.paint));
        write(dir / "thumbs" / (stem + "-128.bmp"), Bmp(128, 96, art.paint));
        manifest << "\nitem " << art.name << "\npath C:\\Art\\Samples\\" << art.file << "\ndata " << art.file
                 << "\nmethod " << art.method << "\nrendition 0x40 thumbs/" << stem
                 << "-64.bmp\nrendition 0x80 thumbs/" << stem << "-128.bmp\nkeywords " << art.keywords
                 << "\n";
    }
    std::printf("%zu pictures and %s\n", artworks.size(), (dir / "manifest.txt").string().c_str());
    return 0;
}

#include "Artwork.h"

#include <cmath>
#include <stdexcept>

namespace sampleart {

namespace {

constexpr double kPi = 3.14159265358979;

uint8_t Clamp(double v) {
    return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}

Rgb Mix(Rgb a, Rgb b, double t) {
    return Rgb{Clamp(a.r + (b.r - a.r) * t), Clamp(a.g + (b.g - a.g) * t), Clamp(a.b + (b.b - a.b) * t)};
}

// A repeatable pseudo-random value in [0, 1) for a grid point.
double Noise(int x, int y) {
    uint32_t h = static_cast<uint32_t>(x) * 374761393u + static_cast<uint32_t>(y) * 668265263u;
    h = (h ^ (h >> 13)) * 1274126177u;
    return static_cast<double>((h ^ (h >> 16)) & 0xFFFF) / 65536.0;
}

// Smooth value noise at a scale of `cells` per side.
double Smooth(double x, double y, int cells) {
    const double fx = x * cells, fy = y * cells;
    const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
    const double tx = fx - ix, ty = fy - iy;
    const double sx = tx * tx * (3 - 2 * tx), sy = ty * ty * (3 - 2 * ty);
    const double top = Noise(ix, iy) + (Noise(ix + 1, iy) - Noise(ix, iy)) * sx;
    const double bottom = Noise(ix, iy + 1) + (Noise(ix + 1, iy + 1) - Noise(ix, iy + 1)) * sx;
    return top + (bottom - top) * sy;
}

std::vector<Artwork> MakeArtworks() {
    return {
        {"Sunset over the bay", "sunset", 1, "sky, sea, evening",
         [](double x, double y) {
             const double sun = std::hypot(x - 0.5, y - 0.62);
             if (y > 0.7)
                 return Mix(Rgb{40, 60, 120}, Rgb{250, 160, 80}, 0.5 + 0.5 * std::sin(60 * y) * (1 - y));
             if (sun < 0.12) return Rgb{255, 240, 150};
             return Mix(Rgb{255, 200, 60}, Rgb{200, 40, 110}, y / 0.7);
         }},
        {"Night sky", "night", 2, "sky, evening, stars",
         [](double x, double y) {
             const bool star = Noise(static_cast<int>(x * 160), static_cast<int>(y * 120)) > 0.985;
             const bool moon = std::hypot(x - 0.75, y - 0.25) < 0.08 && std::hypot(x - 0.72, y - 0.22) > 0.07;
             if (moon) return Rgb{250, 245, 200};
             return star ? Rgb{255, 255, 220} : Mix(Rgb{5, 5, 30}, Rgb{30, 40, 110}, y);
         }},
        {"Dawn", "dawn", 0, "sky, morning",
         [](double x, double y) {
             const double glow = std::exp(-8 * std::hypot(x - 0.3, y - 0.8));
             return Mix(Mix(Rgb{120, 160, 230}, Rgb{255, 190, 170}, y), Rgb{255, 250, 210}, glow);
         }},
        {"Storm clouds", "storm", 1, "sky, weather",
         [](double x, double y) {
             const double cloud = 0.6 * Smooth(x, y, 4) + 0.3 * Smooth(x, y, 9) + 0.1 * Smooth(x, y, 23);
             const bool bolt = std::fabs(x - 0.55 - 0.08 * std::sin(y * 18)) < 0.01 && y > 0.35;
             return bolt ? Rgb{255, 255, 200} : Mix(Rgb{40, 45, 60}, Rgb{170, 175, 190}, cloud);
         }},
        {"Checker border", "checker", 2, "border, pattern",
         [](double x, double y) {
             const bool dark = (static_cast<int>(x * 8) + static_cast<int>(y * 8)) % 2 == 0;
             return dark ? Rgb{30, 30, 90} : Rgb{240, 230, 200};
         }},
        {"Green rings", "rings", 0, "pattern, green",
         [](double x, double y) {
             const double r = std::hypot(x - 0.5, y - 0.5);
             return Rgb{20, Clamp(128 + 127 * std::cos(r * 10 * kPi)), 60};
         }},
        {"Candy stripes", "stripes", 1, "pattern, red",
         [](double x, double y) {
             const int band = static_cast<int>((x + y) * 10) % 3;
             return band == 0 ? Rgb{220, 30, 50} : band == 1 ? Rgb{255, 255, 255} : Rgb{250, 180, 190};
         }},
        {"Tartan", "plaid", 2, "pattern, fabric",
         [](double x, double y) {
             const double v = 0.5 + 0.5 * std::sin(x * 12 * kPi), h = 0.5 + 0.5 * std::sin(y * 12 * kPi);
             const bool thread = (static_cast<int>(x * 48) + static_cast<int>(y * 48)) % 2 == 0;
             return Mix(Rgb{20, 80, 40}, Rgb{180, 20, 30}, thread ? v : h);
         }},
        {"Polka dots", "dots", 0, "pattern, fun",
         [](double x, double y) {
             const double cx = std::fmod(x * 6, 1.0) - 0.5, cy = std::fmod(y * 6, 1.0) - 0.5;
             return std::hypot(cx, cy) < 0.3 ? Rgb{250, 210, 40} : Rgb{40, 110, 200};
         }},
        {"Marble texture", "marble", 1, "texture, stone",
         [](double x, double y) {
             const double v = 0.5 + 0.5 * std::sin(12 * x + 6 * Smooth(x, y, 5) + 3 * Smooth(x, y, 13));
             return Rgb{Clamp(180 + 70 * v), Clamp(170 + 70 * v), Clamp(165 + 75 * v)};
         }},
        {"Granite", "granite", 2, "texture, stone",
         [](double x, double y) {
             const double n = Noise(static_cast<int>(x * 200), static_cast<int>(y * 150));
             const double s = Smooth(x, y, 7);
             return n > 0.8 ? Rgb{30, 30, 30}
                            : Mix(Rgb{150, 110, 100}, Rgb{210, 190, 180}, 0.5 * s + 0.5 * n);
         }},
        {"Ocean waves", "waves", 1, "sea, water, blue",
         [](double x, double y) {
             const double wave = std::sin(x * 14 + std::sin(y * 9) * 2 + y * 30);
             return Mix(Rgb{10, 60, 130}, Rgb{120, 200, 230}, 0.5 + 0.5 * wave * (0.3 + 0.7 * y));
         }},
        {"Deep water", "deep", 0, "sea, water",
         [](double x, double y) {
             const double caustic = std::pow(Smooth(x, y, 11), 3);
             return Mix(Mix(Rgb{0, 120, 140}, Rgb{0, 20, 50}, y), Rgb{180, 255, 250}, caustic * (1 - y));
         }},
        {"Forest", "forest", 2, "green, trees",
         [](double x, double y) {
             const double ridge = 0.45 + 0.1 * std::sin(x * 40) * Smooth(x, 0.5, 6);
             if (y < ridge) return Mix(Rgb{170, 210, 240}, Rgb{230, 240, 250}, y / ridge);
             return Mix(Rgb{30, 100, 40}, Rgb{10, 50, 20},
                        (y - ridge) / (1 - ridge) + 0.2 * Smooth(x, y, 30));
         }},
        {"Sunflower", "sunflower", 1, "flower, yellow",
         [](double x, double y) {
             const double dx = x - 0.5, dy = y - 0.5, r = std::hypot(dx, dy);
             const double petals = 0.33 + 0.06 * std::cos(14 * std::atan2(dy, dx));
             if (r < 0.14) return Rgb{90, 50, 20};
             if (r < petals) return Rgb{250, 200, 20};
             return Rgb{120, 180, 240};
         }},
    };
}

}  // namespace

const std::vector<Artwork>& AllArtworks() {
    static const std::vector<Artwork> artworks = MakeArtworks();
    return artworks;
}

const Artwork& ArtworkNamed(const std::string& stem) {
    for (const Artwork& art : AllArtworks())
        if (art.stem == stem) return art;
    throw std::invalid_argument("no artwork " + stem);
}

std::vector<uint8_t> Render(const Painter& paint, int width, int height) {
    std::vector<uint8_t> rgb;
    rgb.reserve(static_cast<size_t>(width) * static_cast<size_t>(height) * 3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Rgb c = paint((x + 0.5) / width, (y + 0.5) / height);
            rgb.push_back(c.r);
            rgb.push_back(c.g);
            rgb.push_back(c.b);
        }
    return rgb;
}

}  // namespace sampleart

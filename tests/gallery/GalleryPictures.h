// Thumbnails made here, for the snapshot and the benchmark: small pictures
// with gradients, stripes and discs, of varied shapes, and titles of varied
// length. Windows only (the imaging layer).
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

#include "thumbnails/Imaging.h"
#include "thumbnails/ThumbnailItem.h"

namespace gallerypictures {

inline const char* const kTitles[] = {
    "Harbour",     "Evening light over the old town",
    "Rock & Roll", "Tall Ships",
    "Meadow",      "Supercalifragilisticexpialidocious",
    "Lighthouse",  "Snow",
    "Market day",  "Orchard in bloom",
    "Bridge",      "Kites",
    "Red barn",    "Sailing boats at the pier",
    "Dunes",       "Aurora",
};

// A picture of `width` x `height` in style `seed`: sky and ground, a sun,
// some stripes, all from the seed.
inline std::unique_ptr<thumbnails::CThumbnailItem> MakeThumbnail(int width, int height, int seed) {
    auto item = std::make_unique<thumbnails::CThumbnailItem>();
    if (imaging::CreateBitmap(&item->bitmap, imaging::kMemoryConventional, width, height, 24,
                              imaging::kColorOrderBgr, nullptr, 0, nullptr, 0) != imaging::kSuccess)
        return item;
    const double hue = (seed * 47 % 360) * 3.14159265 / 180.0;
    const double horizon = 0.45 + 0.2 * std::sin(seed * 1.7);
    const double sunX = 0.2 + 0.6 * (0.5 + 0.5 * std::sin(seed * 2.3));
    for (int y = 0; y < height; ++y) {
        uint8_t* row = imaging::kernel::Row(item->bitmap, y);
        const double v = static_cast<double>(y) / height;
        for (int x = 0; x < width; ++x) {
            const double u = static_cast<double>(x) / width;
            double r, g, b;
            if (v < horizon + 0.05 * std::sin(u * 9 + seed)) {
                r = 90 + 120 * v;
                g = 140 + 80 * v;
                b = 230 - 40 * v;
                const double dx = (u - sunX) * width, dy = (v - 0.22) * height;
                if (dx * dx + dy * dy < 0.012 * width * height) {
                    r = 255;
                    g = 215;
                    b = 90;
                }
            } else {
                const double stripe = (static_cast<int>((u + v * 0.7) * 12 + seed) % 2) ? 1.0 : 0.8;
                r = (110 + 90 * std::cos(hue)) * stripe;
                g = (120 + 70 * std::sin(hue)) * stripe;
                b = (60 + 40 * std::cos(hue * 2)) * stripe;
            }
            row[3 * x] = static_cast<uint8_t>(std::fmin(255, std::fmax(0, b)));
            row[3 * x + 1] = static_cast<uint8_t>(std::fmin(255, std::fmax(0, g)));
            row[3 * x + 2] = static_cast<uint8_t>(std::fmin(255, std::fmax(0, r)));
        }
    }
    item->filePath = foundation::CFilePath(std::string("c:\\art\\") + kTitles[seed % 16] + ".jpg");
    return item;
}

// The picture's size fitted into a box, as the browser fits thumbnails to
// a cell: landscape, portrait and square pictures by turns.
inline void FittedSize(int seed, int boxWidth, int boxHeight, int* width, int* height) {
    static const double kAspects[] = {4.0 / 3.0, 3.0 / 4.0, 1.0, 16.0 / 9.0, 2.0 / 3.0};
    const double aspect = kAspects[seed % 5];
    if (aspect * boxHeight > boxWidth) {
        *width = boxWidth;
        *height = static_cast<int>(boxWidth / aspect);
    } else {
        *height = boxHeight;
        *width = static_cast<int>(boxHeight * aspect);
    }
}

}  // namespace gallerypictures

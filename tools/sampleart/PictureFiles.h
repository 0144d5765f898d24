// Picture files of every type the browser shows, written from RGB rows (top
// row first) or, for the metafiles, from a few drawing records.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sampleart {

using Bytes = std::vector<uint8_t>;

// A bottom-up 24-bit BMP file.
Bytes BmpFile(const std::vector<uint8_t>& rgb, int width, int height);
// An 8-bit RGB PNG file, deflated with zlib.
Bytes PngFile(const std::vector<uint8_t>& rgb, int width, int height);
// An uncompressed little-endian RGB TIFF file, one strip.
Bytes TiffFile(const std::vector<uint8_t>& rgb, int width, int height);
// A baseline JPEG file; empty when this build has no JPEG encoder.
Bytes JpegFile(const std::vector<uint8_t>& rgb, int width, int height, int quality);

// A shape of a metafile: filled with `colour` (0xRRGGBB).
struct Shape {
    enum Kind { kRectangle, kEllipse } kind;
    int left, top, right, bottom;
    uint32_t colour;
};
// A Windows metafile of the shapes in a `width` x `height` window; with
// `placeable`, behind the 22-byte header that gives its size in inches.
Bytes WmfFile(const std::vector<Shape>& shapes, int width, int height, bool placeable);
// An enhanced metafile of the shapes, in device units of a 96 dpi screen.
Bytes EmfFile(const std::vector<Shape>& shapes, int width, int height);

bool WriteFile(const std::string& path, const Bytes& bytes);

}  // namespace sampleart

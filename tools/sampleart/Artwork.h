// The generated artwork of the sample library: each picture is a function of
// the position in the unit square, so it can be drawn at any size.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace sampleart {

struct Rgb {
    uint8_t r, g, b;
};

using Painter = std::function<Rgb(double x, double y)>;  // x, y in [0, 1)

struct Artwork {
    std::string name;      // the item's name in a container
    std::string stem;      // the file name without extension
    int method;            // the data chunk's compression: 0 stored, 1 zlib, 2 implode
    std::string keywords;  // comma-separated
    Painter paint;
};

// Every artwork, by stem.
const std::vector<Artwork>& AllArtworks();
const Artwork& ArtworkNamed(const std::string& stem);

// The painter's picture as rows of RGB, top row first.
std::vector<uint8_t> Render(const Painter& paint, int width, int height);

}  // namespace sampleart

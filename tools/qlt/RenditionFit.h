// The size of the rendition that `qlt create --from` makes of a picture for
// one kind: the picture fitted into the kind's square box with its aspect
// kept. Portable, so that the rule is tested on every build.
#pragma once

#include <cstdint>

namespace qlt {

struct RenditionSize {
    int32_t width = 0;
    int32_t height = 0;
};

// The edge of the square box that a rendition kind fills: the kind's own
// value (0x10 is 16 pixels, 0x80 is 128), or 0 for a value that is no kind.
int32_t RenditionBoxEdge(int32_t kind);

// Scales width x height so that the longer side is exactly `box` and the
// shorter keeps the proportion, rounded to the nearest pixel (halves up) and
// at least 1. Small pictures are enlarged, as the gallery shows every
// thumbnail at its box's size. A side or box below 1 gives 0 x 0, which no
// resize accepts.
RenditionSize FitIntoBox(int32_t width, int32_t height, int32_t box);

}  // namespace qlt

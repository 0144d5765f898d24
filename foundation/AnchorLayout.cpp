#include "foundation/AnchorLayout.h"

#include <cmath>
#include <limits>

namespace foundation {

namespace {

// Truncates like a cast to int, but a value no int can hold (a ratio near
// -1 makes P unbounded) is clamped instead of being undefined.
int TruncateToInt(double value) {
    if (std::isnan(value)) return 0;
    if (value >= static_cast<double>(std::numeric_limits<int>::max())) return std::numeric_limits<int>::max();
    if (value <= static_cast<double>(std::numeric_limits<int>::min())) return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

int ClampToInt(long long value) {
    if (value > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    if (value < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

int ProportionalPosition(int newSize, double ratio) {
    const double denominator = 1.0 + ratio;
    if (denominator == 0.0) return 0;
    return TruncateToInt(newSize * ratio / denominator);
}

}  // namespace

AnchorEdges ApplyAnchorMode(AnchorEdges edges, int mode, int delta, int newSize, double ratio) {
    // Sums are taken in 64 bits and clamped, so extreme sizes cannot overflow.
    long long nearEdge = edges.nearEdge;
    long long farEdge = edges.farEdge;
    switch (mode) {
        case kAnchorStretch: farEdge += delta; break;
        case kAnchorMove:
            nearEdge += delta;
            farEdge += delta;
            break;
        case kAnchorProportionalMove:
            nearEdge = ProportionalPosition(newSize, ratio);
            farEdge = nearEdge + (static_cast<long long>(edges.farEdge) - edges.nearEdge);
            break;
        case kAnchorProportionalStretch:
            nearEdge = ProportionalPosition(newSize, ratio);
            farEdge += delta;
            break;
        default: break;
    }
    return AnchorEdges{ClampToInt(nearEdge), ClampToInt(farEdge)};
}

double ProportionalRatio(int nearEdge, int size) {
    const int room = size - nearEdge;
    if (room == 0) return 0.0;
    return static_cast<double>(nearEdge) / static_cast<double>(room);
}

}  // namespace foundation

// Where an anchored child goes when its dialog changes size. Each axis has
// one mode; with d the change of the dialog's size along the axis:
//   0 stay                  both edges stay
//   1 stretch               the far edge moves by d
//   2 move                  both edges move by d
//   3 proportional move     the near edge goes to P, the size stays
//   4 proportional stretch  the near edge goes to P, the far edge moves by d
// where P = new dialog size * ratio / (1 + ratio), truncated.
#pragma once

namespace foundation {

enum AnchorMode : int {
    kAnchorStay = 0,
    kAnchorStretch = 1,
    kAnchorMove = 2,
    kAnchorProportionalMove = 3,
    kAnchorProportionalStretch = 4,
};

struct AnchorEdges {
    int nearEdge;
    int farEdge;
};

// The edges along one axis after a change of `delta` to a dialog whose size
// along that axis is now `newSize`. Unknown modes stay.
AnchorEdges ApplyAnchorMode(AnchorEdges edges, int mode, int delta, int newSize, double ratio);

// The ratio of proportional placement: the near edge over the room beyond
// it, near / (size - near). A child with no room beyond it gets 0.
double ProportionalRatio(int nearEdge, int size);

}  // namespace foundation

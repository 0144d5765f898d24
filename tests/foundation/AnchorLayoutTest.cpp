#include "foundation/AnchorLayout.h"

#include <gtest/gtest.h>

#include <limits>

using namespace foundation;

namespace {
bool Same(AnchorEdges a, AnchorEdges b) {
    return a.nearEdge == b.nearEdge && a.farEdge == b.farEdge;
}
}  // namespace

TEST(AnchorLayout, StayKeepsBothEdges) {
    EXPECT_TRUE(Same(ApplyAnchorMode({10, 50}, kAnchorStay, 30, 300, 0), {10, 50}));
}

TEST(AnchorLayout, StretchMovesTheFarEdge) {
    EXPECT_TRUE(Same(ApplyAnchorMode({10, 50}, kAnchorStretch, 30, 300, 0), {10, 80}));
    EXPECT_TRUE(Same(ApplyAnchorMode({10, 50}, kAnchorStretch, -70, 200, 0), {10, -20}))
        << "sizes may go negative";
}

TEST(AnchorLayout, MoveMovesBothEdges) {
    EXPECT_TRUE(Same(ApplyAnchorMode({10, 50}, kAnchorMove, 30, 300, 0), {40, 80}));
}

TEST(AnchorLayout, ProportionalMoveKeepsTheSize) {
    // Near edge 100 in a dialog 300 wide: ratio 100 / 200 = 0.5; in a dialog
    // now 600 wide, P = 600 * 0.5 / 1.5 = 200.
    const double ratio = ProportionalRatio(100, 300);
    EXPECT_DOUBLE_EQ(ratio, 0.5);
    EXPECT_TRUE(Same(ApplyAnchorMode({100, 140}, kAnchorProportionalMove, 300, 600, ratio), {200, 240}));
}

TEST(AnchorLayout, ProportionalPositionIsTruncated) {
    // 301 * 0.5 / 1.5 = 100.33...
    EXPECT_TRUE(Same(ApplyAnchorMode({100, 140}, kAnchorProportionalMove, 1, 301, 0.5), {100, 140}));
    EXPECT_TRUE(Same(ApplyAnchorMode({100, 140}, kAnchorProportionalStretch, 1, 305, 0.5), {101, 141}));
}

TEST(AnchorLayout, ProportionalStretchMovesTheFarEdgeByTheChange) {
    EXPECT_TRUE(Same(ApplyAnchorMode({100, 140}, kAnchorProportionalStretch, 300, 600, 0.5), {200, 440}));
}

TEST(AnchorLayout, UnknownModeStays) {
    EXPECT_TRUE(Same(ApplyAnchorMode({1, 2}, 9, 30, 300, 0), {1, 2}));
}

TEST(AnchorLayout, RatiosThatWouldDivideByZeroAreGuarded) {
    EXPECT_DOUBLE_EQ(ProportionalRatio(300, 300), 0.0) << "no room beyond the child";
    // A ratio of -1 would make P infinite; a huge one must not overflow int.
    EXPECT_TRUE(Same(ApplyAnchorMode({0, 10}, kAnchorProportionalMove, 0, 100, -1.0), {0, 10}));
    const AnchorEdges huge = ApplyAnchorMode({0, 10}, kAnchorProportionalMove, 0, 100, -1.00000001);
    EXPECT_EQ(huge.nearEdge, std::numeric_limits<int>::max());
    EXPECT_EQ(huge.farEdge, std::numeric_limits<int>::max());
    const AnchorEdges far = ApplyAnchorMode({0, std::numeric_limits<int>::max()}, kAnchorStretch, 5, 100, 0);
    EXPECT_EQ(far.farEdge, std::numeric_limits<int>::max());
}

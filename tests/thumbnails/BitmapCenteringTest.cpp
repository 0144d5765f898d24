// The centring arithmetic on raw bitmap bytes: margins, shifts, the pixel
// rounding and the moves themselves.
#include <gtest/gtest.h>

#include <vector>

#include "thumbnails/BitmapCentering.h"

using thumbnails::CenteringPlan;
using thumbnails::PlanCentering;
using thumbnails::RoundColumnShift;
using thumbnails::ShiftColumns;
using thumbnails::ShiftRows;

namespace {

using Bytes = std::vector<uint8_t>;

// A white picture of `width` bytes by `height` rows with the bytes of the
// rectangle [left, right) x [top, bottom) drawn (0x00).
Bytes Picture(int32_t width, int32_t height, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    Bytes bytes(static_cast<size_t>(width * height), 0xFF);
    for (int32_t y = top; y < bottom; ++y)
        for (int32_t x = left; x < right; ++x) bytes[static_cast<size_t>(y * width + x)] = 0x00;
    return bytes;
}

}  // namespace

TEST(BitmapCentering, AnAllWhiteBitmapIsBlank) {
    const Bytes white(24 * 10, 0xFF);
    const CenteringPlan plan = PlanCentering(white.data(), 24, 10, 24);
    EXPECT_TRUE(plan.blank);
    EXPECT_EQ(plan.top, 10);
    EXPECT_FALSE(plan.MovesVertically());
    EXPECT_FALSE(plan.MovesHorizontally());
}

TEST(BitmapCentering, ADrawingTwoRowsTooHighMovesTwoRowsDown) {
    // Rows 1 and 2 drawn in 8 rows: top 1, bottom 5.
    const Bytes source = Picture(6, 8, 0, 1, 6, 3);
    const CenteringPlan plan = PlanCentering(source.data(), 6, 8, 8);
    EXPECT_EQ(plan.top, 1);
    EXPECT_EQ(plan.bottom, 5);
    EXPECT_EQ(plan.shiftY, -2);
    EXPECT_TRUE(plan.MovesVertically());
    Bytes target(source.size(), 0x11);
    ShiftRows(source.data(), target.data(), 6, 8, plan.shiftY);
    EXPECT_EQ(target, Picture(6, 8, 0, 3, 6, 5));
}

TEST(BitmapCentering, AShiftOfOneNeverMoves) {
    // top 3, bottom 0.
    const Bytes source = Picture(6, 8, 0, 3, 6, 8);
    const CenteringPlan plan = PlanCentering(source.data(), 6, 8, 8);
    EXPECT_EQ(plan.top, 3);
    EXPECT_EQ(plan.bottom, 0);
    EXPECT_EQ(plan.shiftY, 1);
    EXPECT_FALSE(plan.MovesVertically());
    // Columns likewise: left 2, right 0 gives 1 at 8 bits.
    const Bytes columns = Picture(6, 4, 2, 0, 6, 4);
    const CenteringPlan columnPlan = PlanCentering(columns.data(), 6, 4, 8);
    EXPECT_EQ(columnPlan.shiftX, 1);
    EXPECT_FALSE(columnPlan.MovesHorizontally());
}

TEST(BitmapCentering, ADrawingToTheRightMovesWholePixelsLeft) {
    // 24 bits: left 9, right 0 gives 4, less R = 1: 3 bytes to the left.
    const Bytes source = Picture(12, 2, 9, 0, 12, 2);
    const CenteringPlan plan = PlanCentering(source.data(), 12, 2, 24);
    EXPECT_EQ(plan.left, 9);
    EXPECT_EQ(plan.right, 0);
    EXPECT_EQ(plan.shiftX, 3);
    Bytes target(source.size(), 0x11);
    ShiftColumns(source.data(), target.data(), 12, 2, plan.shiftX);
    EXPECT_EQ(target, Picture(12, 2, 6, 0, 9, 2));
}

TEST(BitmapCentering, ADrawingToTheLeftMovesFiveBytesRightSplittingPixels) {
    // 24 bits: left 0, right 9 gives -4, plus R = -1: 5 bytes to the right.
    const Bytes source = Picture(12, 2, 0, 0, 3, 2);
    const CenteringPlan plan = PlanCentering(source.data(), 12, 2, 24);
    EXPECT_EQ(plan.left, 0);
    EXPECT_EQ(plan.right, 9);
    EXPECT_EQ(plan.shiftX, -5);
    Bytes target(source.size(), 0x11);
    ShiftColumns(source.data(), target.data(), 12, 2, plan.shiftX);
    EXPECT_EQ(target, Picture(12, 2, 5, 0, 8, 2));
}

TEST(BitmapCentering, PixelRoundingByDepth) {
    EXPECT_EQ(RoundColumnShift(4, 24), 3);
    EXPECT_EQ(RoundColumnShift(-4, 24), -5);
    EXPECT_EQ(RoundColumnShift(6, 24), 6);
    EXPECT_EQ(RoundColumnShift(-6, 24), -6);
    EXPECT_EQ(RoundColumnShift(6, 32), 4);
    EXPECT_EQ(RoundColumnShift(-6, 32), -8);
    EXPECT_EQ(RoundColumnShift(5, 16), 4);
    EXPECT_EQ(RoundColumnShift(-5, 16), -6);
    EXPECT_EQ(RoundColumnShift(-5, 8), -5);
    EXPECT_EQ(RoundColumnShift(7, 1), 7) << "below 8 bits a pixel counts as one byte";
    EXPECT_EQ(RoundColumnShift(7, 0), 7);
    EXPECT_EQ(RoundColumnShift(1, 32), 0) << "a positive shift rounds down to whole pixels";
}

TEST(BitmapCentering, MarginsOfADrawingNeedingBothMoves) {
    // Drawn at the top left: both shifts, each more than one.
    const Bytes source = Picture(16, 16, 0, 0, 4, 4);
    const CenteringPlan plan = PlanCentering(source.data(), 16, 16, 8);
    EXPECT_EQ(plan.top, 0);
    EXPECT_EQ(plan.bottom, 12);
    EXPECT_EQ(plan.left, 0);
    EXPECT_EQ(plan.right, 12);
    EXPECT_EQ(plan.shiftY, -6);
    EXPECT_EQ(plan.shiftX, -6);
    EXPECT_TRUE(plan.MovesVertically());
    EXPECT_TRUE(plan.MovesHorizontally());
}

TEST(BitmapCentering, UpwardMoveFillsTheBottom) {
    const Bytes source = Picture(4, 8, 0, 6, 4, 8);
    const CenteringPlan plan = PlanCentering(source.data(), 4, 8, 8);
    EXPECT_EQ(plan.shiftY, 3);
    Bytes target(source.size(), 0x11);
    ShiftRows(source.data(), target.data(), 4, 8, plan.shiftY);
    EXPECT_EQ(target, Picture(4, 8, 0, 3, 4, 5));
}

TEST(BitmapCentering, ShiftsBeyondTheBitmapBlankItWithoutOverrun) {
    const Bytes source = Picture(4, 3, 0, 0, 4, 3);
    const Bytes white(source.size(), 0xFF);
    for (int32_t shift : {-3, 3, -100, 100, -2147483647 - 1, 2147483647}) {
        Bytes target(source.size(), 0x11);
        ShiftRows(source.data(), target.data(), 4, 3, shift);
        EXPECT_EQ(target, white) << "rows " << shift;
    }
    for (int32_t shift : {-4, 4, -100, 100, -2147483647 - 1, 2147483647}) {
        Bytes target(source.size(), 0x11);
        ShiftColumns(source.data(), target.data(), 4, 3, shift);
        EXPECT_EQ(target, white) << "columns " << shift;
    }
}

TEST(BitmapCentering, ZeroShiftsCopy) {
    const Bytes source = Picture(4, 3, 1, 1, 2, 2);
    Bytes target(source.size(), 0x11);
    ShiftRows(source.data(), target.data(), 4, 3, 0);
    EXPECT_EQ(target, source);
    target.assign(source.size(), 0x11);
    ShiftColumns(source.data(), target.data(), 4, 3, 0);
    EXPECT_EQ(target, source);
}

TEST(BitmapCentering, NoBytesNoWork) {
    EXPECT_TRUE(PlanCentering(nullptr, 4, 4, 8).blank);
    const Bytes one(1, 0);
    EXPECT_TRUE(PlanCentering(one.data(), 0, 1, 8).blank);
    EXPECT_TRUE(PlanCentering(one.data(), 1, -1, 8).blank);
    Bytes target(1, 0x11);
    ShiftRows(one.data(), target.data(), 0, 5, -2);
    ShiftColumns(one.data(), target.data(), -3, 1, 2);
    EXPECT_EQ(target[0], 0x11) << "nothing written for an empty size";
}

TEST(BitmapCentering, ASingleDrawnByteIsFoundAnywhere) {
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 7; ++x) {
            const Bytes source = Picture(7, 5, x, y, x + 1, y + 1);
            const CenteringPlan plan = PlanCentering(source.data(), 7, 5, 8);
            EXPECT_FALSE(plan.blank);
            EXPECT_EQ(plan.top, y);
            EXPECT_EQ(plan.bottom, 4 - y);
            EXPECT_EQ(plan.left, x);
            EXPECT_EQ(plan.right, 6 - x);
        }
}

#include "thumbnails/Resampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

using imaging::ConstPixelPlane;
using imaging::FootprintSpan;
using imaging::PixelPlane;
using imaging::Resample;
using imaging::ResampleFavourDark;
using imaging::ResampleStatus;

namespace {

constexpr double kPi = 3.14159265358979323846;

struct Image {
    int32_t width = 0;
    int32_t height = 0;
    int channels = 1;
    std::vector<uint8_t> pixels;

    Image(int32_t w, int32_t h, int c, uint8_t fill = 0)
        : width(w), height(h), channels(c), pixels(static_cast<size_t>(w) * h * c, fill) {}
    size_t Stride() const { return static_cast<size_t>(width) * channels; }
    uint8_t& At(int32_t x, int32_t y, int c = 0) { return pixels[Offset(x, y, c)]; }
    uint8_t At(int32_t x, int32_t y, int c = 0) const { return pixels[Offset(x, y, c)]; }
    size_t Offset(int32_t x, int32_t y, int c) const {
        return y * Stride() + static_cast<size_t>(x) * channels + c;
    }
    ConstPixelPlane In() const { return ConstPixelPlane{pixels.data(), width, height, Stride()}; }
    PixelPlane Out() { return PixelPlane{pixels.data(), width, height, Stride()}; }
};

Image Scaled(const Image& source, int32_t width, int32_t height) {
    Image target(width, height, source.channels);
    EXPECT_EQ(Resample(source.In(), target.Out(), source.channels), ResampleStatus::kOk);
    return target;
}

// Straightforward references in double precision: exact area coverage when
// shrinking, centre-aligned linear interpolation when enlarging.
std::vector<std::vector<double>> AxisWeights(int32_t source, int32_t target) {
    std::vector<std::vector<double>> weights(static_cast<size_t>(target), std::vector<double>(source, 0.0));
    for (int32_t i = 0; i < target; ++i) {
        if (target <= source) {
            const double low = static_cast<double>(i) * source / target;
            const double high = static_cast<double>(i + 1) * source / target;
            for (int32_t k = 0; k < source; ++k) {
                const double overlap = std::min<double>(high, k + 1) - std::max<double>(low, k);
                if (overlap > 0) weights[i][k] = overlap / (high - low);
            }
        } else {
            const double centre = (i + 0.5) * source / target - 0.5;
            const double clamped = std::clamp(centre, 0.0, static_cast<double>(source - 1));
            const int32_t k0 = static_cast<int32_t>(std::floor(clamped));
            const int32_t k1 = std::min(k0 + 1, source - 1);
            const double t = clamped - k0;
            weights[i][k0] += 1.0 - t;
            weights[i][k1] += t;
        }
    }
    return weights;
}

Image Reference(const Image& source, int32_t width, int32_t height) {
    const auto across = AxisWeights(source.width, width);
    const auto down = AxisWeights(source.height, height);
    Image target(width, height, source.channels);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            for (int c = 0; c < source.channels; ++c) {
                double sum = 0.0;
                for (int32_t sy = 0; sy < source.height; ++sy) {
                    if (down[y][sy] == 0.0) continue;
                    for (int32_t sx = 0; sx < source.width; ++sx) {
                        if (across[x][sx] == 0.0) continue;
                        sum +=
                            down[y][sy] * across[x][sx] *
                            source
                                .pixels[sy * source.Stride() + static_cast<size_t>(sx) * source.channels + c];
                    }
                }
                target.At(x, y, c) = static_cast<uint8_t>(std::lround(sum));
            }
    return target;
}

int MaxDifference(const Image& a, const Image& b) {
    int worst = 0;
    for (size_t i = 0; i < a.pixels.size(); ++i) worst = std::max(worst, std::abs(a.pixels[i] - b.pixels[i]));
    return worst;
}

// 1-bit planes, leftmost pixel in the high bit.
struct BitImage {
    int32_t width;
    int32_t height;
    size_t stride;
    std::vector<uint8_t> bits;

    BitImage(int32_t w, int32_t h, bool set = false)
        : width(w),
          height(h),
          stride((static_cast<size_t>(w) + 7) / 8 + 1),
          bits(stride * h, set ? 0xFF : 0x00) {}
    bool Get(int32_t x, int32_t y) const { return (bits[y * stride + x / 8] >> (7 - x % 8)) & 1; }
    void Set(int32_t x, int32_t y, bool on) {
        uint8_t& byte = bits[y * stride + x / 8];
        const uint8_t mask = static_cast<uint8_t>(0x80 >> (x % 8));
        byte = static_cast<uint8_t>(on ? byte | mask : byte & ~mask);
    }
    ConstPixelPlane In() const { return ConstPixelPlane{bits.data(), width, height, stride}; }
    PixelPlane Out() { return PixelPlane{bits.data(), width, height, stride}; }
};

}  // namespace

TEST(Resampler, HalvingAveragesEachTwoByTwoBlock) {
    Image source(4, 4, 1);
    const uint8_t values[16] = {10, 20, 30, 40, 50, 60, 70, 80, 0, 255, 3, 5, 255, 255, 1, 1};
    std::copy(values, values + 16, source.pixels.begin());
    const Image target = Scaled(source, 2, 2);
    EXPECT_EQ(target.At(0, 0), 35);   // (10 + 20 + 50 + 60) / 4
    EXPECT_EQ(target.At(1, 0), 55);   // (30 + 40 + 70 + 80) / 4
    EXPECT_EQ(target.At(0, 1), 191);  // (0 + 255 + 255 + 255) / 4 = 191.25
    EXPECT_EQ(target.At(1, 1), 3);    // (3 + 5 + 1 + 1) / 4 = 2.5, halves round up
}

TEST(Resampler, ChannelsAreAveragedSeparately) {
    Image source(2, 2, 3);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 2; ++x) {
            source.At(x, y, 0) = static_cast<uint8_t>(x * 100);  // 0, 100
            source.At(x, y, 1) = static_cast<uint8_t>(y * 200);  // 0, 200
            source.At(x, y, 2) = 77;
        }
    const Image target = Scaled(source, 1, 1);
    EXPECT_EQ(target.At(0, 0, 0), 50);
    EXPECT_EQ(target.At(0, 0, 1), 100);
    EXPECT_EQ(target.At(0, 0, 2), 77);
}

TEST(Resampler, FractionalFootprintsCountByTheirOverlap) {
    // 3 -> 2: the middle pixel is shared half and half.
    Image source(3, 1, 1);
    source.At(0, 0) = 0;
    source.At(1, 0) = 90;
    source.At(2, 0) = 180;
    const Image target = Scaled(source, 2, 1);
    EXPECT_EQ(target.At(0, 0), 30);   // (1 * 0 + 0.5 * 90) / 1.5
    EXPECT_EQ(target.At(1, 0), 150);  // (0.5 * 90 + 1 * 180) / 1.5
}

TEST(Resampler, KeepingTheSizeKeepsEveryPixel) {
    std::mt19937 random(7);
    Image source(13, 7, 4);
    for (uint8_t& p : source.pixels) p = static_cast<uint8_t>(random());
    const Image target = Scaled(source, 13, 7);
    EXPECT_EQ(target.pixels, source.pixels);
}

TEST(Resampler, EnlargingInterpolatesBetweenPixelCentres) {
    Image source(2, 1, 1);
    source.At(0, 0) = 0;
    source.At(1, 0) = 255;
    const Image target = Scaled(source, 4, 1);
    EXPECT_EQ(target.At(0, 0), 0);    // beyond the first centre: held
    EXPECT_EQ(target.At(1, 0), 64);   // a quarter of the way: 63.75
    EXPECT_EQ(target.At(2, 0), 191);  // three quarters: 191.25
    EXPECT_EQ(target.At(3, 0), 255);
}

TEST(Resampler, MatchesTheReferenceOnRandomPicturesAndSizes) {
    std::mt19937 random(12345);
    for (int round = 0; round < 40; ++round) {
        const int channels = 1 + round % 4;
        Image source(1 + static_cast<int32_t>(random() % 37), 1 + static_cast<int32_t>(random() % 29),
                     channels);
        for (uint8_t& p : source.pixels) p = static_cast<uint8_t>(random());
        const int32_t width = 1 + static_cast<int32_t>(random() % 50);
        const int32_t height = 1 + static_cast<int32_t>(random() % 40);
        const Image ours = Scaled(source, width, height);
        const Image reference = Reference(source, width, height);
        EXPECT_LE(MaxDifference(ours, reference), 1) << source.width << "x" << source.height << " -> "
                                                     << width << "x" << height << ", " << channels << " ch";
    }
}

TEST(Resampler, OneColumnAndOneRowPictures) {
    Image column(1, 10, 1);
    for (int32_t y = 0; y < 10; ++y) column.At(0, y) = static_cast<uint8_t>(y * 20);
    const Image halved = Scaled(column, 1, 5);
    for (int32_t y = 0; y < 5; ++y) EXPECT_EQ(halved.At(0, y), y * 40 + 10);

    Image row(10, 1, 1);
    for (int32_t x = 0; x < 10; ++x) row.At(x, 0) = static_cast<uint8_t>(x * 20);
    EXPECT_EQ(MaxDifference(Scaled(row, 3, 1), Reference(row, 3, 1)), 0);
    const Image tall = Scaled(row, 1, 4);  // the whole row averaged, repeated down
    for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(tall.At(0, y), 90);
}

TEST(Resampler, AFineCheckerboardShrinksToEvenGrey) {
    // One-pixel checkerboard shrunk by 3.7: sampling would give black and
    // white patterns (aliasing); averaging gives grey everywhere.
    Image source(370, 370, 1);
    for (int32_t y = 0; y < 370; ++y)
        for (int32_t x = 0; x < 370; ++x) source.At(x, y) = (x + y) % 2 == 0 ? 255 : 0;
    const Image target = Scaled(source, 100, 100);
    int low = 255, high = 0;
    for (uint8_t p : target.pixels) {
        low = std::min<int>(low, p);
        high = std::max<int>(high, p);
    }
    EXPECT_GE(low, 124);
    EXPECT_LE(high, 131);
}

TEST(Resampler, StripesBeyondTheNewResolutionAreDamped) {
    // A sine with a period of 3 pixels cannot be shown at a quarter of the
    // size; point sampling would keep its full amplitude of 127.
    Image source(400, 8, 1);
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 400; ++x)
            source.At(x, y) = static_cast<uint8_t>(std::lround(127.5 + 127.0 * std::sin(2 * kPi * x / 3.0)));
    const Image target = Scaled(source, 100, 2);
    int low = 255, high = 0;
    for (uint8_t p : target.pixels) {
        low = std::min<int>(low, p);
        high = std::max<int>(high, p);
    }
    EXPECT_LE(high - low, 2 * 30);
}

TEST(Resampler, ZonePlateEnergyAboveTheNewNyquistLimitIsRemoved) {
    // cos(k r^2): local frequency grows with the radius. After shrinking by 4
    // the outer rings, finer than 1/8 cycle per source pixel, must not come
    // back as coarse rings: the outer band must be flatter than the inner.
    const int32_t size = 512;
    Image source(size, size, 1);
    const double k = kPi / size;  // frequency r / size cycles per pixel at radius r
    for (int32_t y = 0; y < size; ++y)
        for (int32_t x = 0; x < size; ++x) {
            const double dx = x - size / 2.0, dy = y - size / 2.0;
            source.At(x, y) =
                static_cast<uint8_t>(std::lround(127.5 + 127.0 * std::cos(k * (dx * dx + dy * dy))));
        }
    const Image target = Scaled(source, size / 4, size / 4);
    // Radii in target pixels: the source frequency there is 4r/size cycles per
    // source pixel; beyond r = size/16 it exceeds the new limit of 1/8.
    double inner = 0, outer = 0;
    int innerCount = 0, outerCount = 0;
    for (int32_t y = 0; y < size / 4; ++y)
        for (int32_t x = 0; x < size / 4; ++x) {
            const double r = std::hypot(x + 0.5 - size / 8.0, y + 0.5 - size / 8.0);
            const double deviation = std::abs(target.At(x, y) - 127.5);
            if (r < size / 64.0) {
                inner += deviation;
                ++innerCount;
            } else if (r > size / 10.0 && r < size / 8.0) {
                outer += deviation;
                ++outerCount;
            }
        }
    ASSERT_GT(innerCount, 0);
    ASSERT_GT(outerCount, 0);
    EXPECT_GT(inner / innerCount, 50.0) << "low frequencies pass";
    EXPECT_LT(outer / outerCount, 25.0) << "high frequencies are averaged away, not aliased";
}

TEST(Resampler, RefusesDegenerateArguments) {
    Image source(4, 4, 3);
    Image target(2, 2, 3);
    PixelPlane out = target.Out();
    ConstPixelPlane in = source.In();
    EXPECT_EQ(Resample(in, out, 0), ResampleStatus::kInvalidArgument);
    EXPECT_EQ(Resample(in, out, 5), ResampleStatus::kInvalidArgument);
    PixelPlane zeroWidth = out;
    zeroWidth.width = 0;
    EXPECT_EQ(Resample(in, zeroWidth, 3), ResampleStatus::kInvalidArgument);
    ConstPixelPlane negative = in;
    negative.height = -1;
    EXPECT_EQ(Resample(negative, out, 3), ResampleStatus::kInvalidArgument);
    ConstPixelPlane narrowStride = in;
    narrowStride.stride = 11;
    EXPECT_EQ(Resample(narrowStride, out, 3), ResampleStatus::kInvalidArgument);
    ConstPixelPlane noPixels = in;
    noPixels.pixels = nullptr;
    EXPECT_EQ(Resample(noPixels, out, 3), ResampleStatus::kInvalidArgument);
}

TEST(Resampler, RefusesHugeSidesBeforeTouchingMemory) {
    uint8_t pixel[4] = {};
    const ConstPixelPlane tiny{pixel, 1, 1, 4};
    // The planes claim more than the buffers hold: only the size check may
    // stop the call, before any pixel is read or written.
    const PixelPlane wide{pixel, imaging::kResampleMaxSide + 1, 1, SIZE_MAX / 2};
    EXPECT_EQ(Resample(tiny, wide, 1), ResampleStatus::kTooLarge);
    const ConstPixelPlane tall{pixel, 1, imaging::kResampleMaxSide + 1, 4};
    PixelPlane one{pixel, 1, 1, 4};
    EXPECT_EQ(Resample(tall, one, 1), ResampleStatus::kTooLarge);
    EXPECT_EQ(ResampleFavourDark(tall, one, 1), ResampleStatus::kTooLarge);
}

TEST(ResamplerFootprint, SpansCoverTheTargetPixelExactly) {
    // 10 -> 4: footprints of 2.5 pixels.
    EXPECT_EQ(FootprintSpan(0, 10, 4).first, 0);
    EXPECT_EQ(FootprintSpan(0, 10, 4).last, 2);  // [0, 2.5)
    EXPECT_EQ(FootprintSpan(1, 10, 4).first, 2);
    EXPECT_EQ(FootprintSpan(1, 10, 4).last, 4);  // [2.5, 5)
    EXPECT_EQ(FootprintSpan(3, 10, 4).last, 9);
    // 4 -> 2: whole pixels, no overlap between neighbours.
    EXPECT_EQ(FootprintSpan(1, 4, 2).first, 2);
    EXPECT_EQ(FootprintSpan(1, 4, 2).last, 3);
    // Enlarging 2 -> 3: the middle target pixel straddles both.
    EXPECT_EQ(FootprintSpan(1, 2, 3).first, 0);
    EXPECT_EQ(FootprintSpan(1, 2, 3).last, 1);
    EXPECT_EQ(FootprintSpan(2, 2, 3).first, 1);
    EXPECT_EQ(FootprintSpan(5, 2, 3).last, -1) << "outside the target: an empty span";
}

TEST(ResamplerFavourDark, ASingleDarkPixelDarkensOnlyItsBlock) {
    BitImage source(4, 4, true);  // all 1 = white; dark is 0 here
    source.Set(3, 3, false);
    BitImage target(2, 2);
    ASSERT_EQ(ResampleFavourDark(source.In(), target.Out(), 0), ResampleStatus::kOk);
    EXPECT_TRUE(target.Get(0, 0));
    EXPECT_TRUE(target.Get(1, 0));
    EXPECT_TRUE(target.Get(0, 1));
    EXPECT_FALSE(target.Get(1, 1));
}

TEST(ResamplerFavourDark, ThinLinesSurviveAnyShrink) {
    // A one-pixel dark line in white, shrunk by 10 across: averaging would
    // make it 10% grey and a threshold would drop it.
    BitImage source(100, 10);  // 0 = white, dark is 1
    for (int32_t y = 0; y < 10; ++y) source.Set(57, y, true);
    BitImage target(10, 10);
    ASSERT_EQ(ResampleFavourDark(source.In(), target.Out(), 1), ResampleStatus::kOk);
    for (int32_t y = 0; y < 10; ++y)
        for (int32_t x = 0; x < 10; ++x) EXPECT_EQ(target.Get(x, y), x == 5) << x << "," << y;
}

TEST(ResamplerFavourDark, EnlargingMakesStraddlingPixelsDark) {
    BitImage source(2, 2);
    source.Set(0, 0, true);
    BitImage target(3, 3);
    ASSERT_EQ(ResampleFavourDark(source.In(), target.Out(), 1), ResampleStatus::kOk);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 3; ++x) EXPECT_EQ(target.Get(x, y), x < 2 && y < 2) << x << "," << y;
}

TEST(ResamplerFavourDark, AllLightStaysLightAndPaddingIsCleared) {
    BitImage source(9, 3, false);
    BitImage target(5, 2, true);  // every bit set beforehand, padding included
    ASSERT_EQ(ResampleFavourDark(source.In(), target.Out(), 1), ResampleStatus::kOk);
    for (int32_t y = 0; y < 2; ++y) {
        for (int32_t x = 0; x < 5; ++x) EXPECT_FALSE(target.Get(x, y));
        EXPECT_EQ(target.bits[y * target.stride] & 0x07, 0) << "padding bits of the row";
    }
}

TEST(ResamplerFavourDark, OneRowAndOneColumn) {
    BitImage row(20, 1);
    row.Set(19, 0, true);
    BitImage single(1, 1);
    ASSERT_EQ(ResampleFavourDark(row.In(), single.Out(), 1), ResampleStatus::kOk);
    EXPECT_TRUE(single.Get(0, 0));
    BitImage column(1, 7);
    BitImage tall(1, 14);
    column.Set(0, 3, true);
    ASSERT_EQ(ResampleFavourDark(column.In(), tall.Out(), 1), ResampleStatus::kOk);
    for (int32_t y = 0; y < 14; ++y) EXPECT_EQ(tall.Get(0, y), y == 6 || y == 7) << y;
}

TEST(ResamplerFavourDark, RefusesDegenerateArguments) {
    BitImage source(8, 8);
    BitImage target(4, 4);
    EXPECT_EQ(ResampleFavourDark(source.In(), target.Out(), 2), ResampleStatus::kInvalidArgument);
    PixelPlane empty = target.Out();
    empty.height = 0;
    EXPECT_EQ(ResampleFavourDark(source.In(), empty, 1), ResampleStatus::kInvalidArgument);
    ConstPixelPlane narrow = source.In();
    narrow.stride = 0;
    EXPECT_EQ(ResampleFavourDark(narrow, target.Out(), 1), ResampleStatus::kInvalidArgument);
}

#include "foundation/ColorMath.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using foundation::ColorRef;
using foundation::MakeColorRef;

struct Hls {
    int hue;
    int saturation;
    int luminance;
};

Hls ToHls(int red, int green, int blue) {
    Hls hls{-1, -1, -1};
    foundation::RgbToHls(&hls.hue, &hls.saturation, &hls.luminance, red, green, blue);
    return hls;
}

ColorRef ToRgb(int hue, int luminance, int saturation) {
    int red = -1, green = -1, blue = -1;
    foundation::HlsToRgb(&red, &green, &blue, hue, luminance, saturation);
    return MakeColorRef(red, green, blue);
}

}  // namespace

TEST(ColorRef, PacksRedLowAndBlueHigh) {
    EXPECT_EQ(MakeColorRef(0x12, 0x34, 0x56), 0x00563412u);
    EXPECT_EQ(foundation::RedOf(0xFF563412u), 0x12);
    EXPECT_EQ(foundation::GreenOf(0xFF563412u), 0x34);
    EXPECT_EQ(foundation::BlueOf(0xFF563412u), 0x56);
    EXPECT_EQ(MakeColorRef(256 + 7, -1, 0), 0x0000FF07u) << "like RGB(), a channel keeps its low byte";
}

TEST(MulDivRound, RoundsHalfAwayFromZero) {
    EXPECT_EQ(foundation::MulDivRound(255, 1, 2), 128);
    EXPECT_EQ(foundation::MulDivRound(-255, 1, 2), -128);
    EXPECT_EQ(foundation::MulDivRound(254, 1, 2), 127);
    EXPECT_EQ(foundation::MulDivRound(10, 1, 3), 3);
    EXPECT_EQ(foundation::MulDivRound(20, 1, 3), 7);
    EXPECT_EQ(foundation::MulDivRound(-20, 1, 3), -7);
    EXPECT_EQ(foundation::MulDivRound(20, -1, 3), -7);
    EXPECT_EQ(foundation::MulDivRound(20, 1, -3), -7);
    EXPECT_EQ(foundation::MulDivRound(-20, -1, -3), -7);
    EXPECT_EQ(foundation::MulDivRound(-20, 1, -3), 7);
}

TEST(MulDivRound, UsesSixtyFourBitsInBetween) {
    EXPECT_EQ(foundation::MulDivRound(2000000000, 3, 4), 1500000000);
    EXPECT_EQ(foundation::MulDivRound(INT_MIN, 1, 2), -1073741824);
    EXPECT_EQ(foundation::MulDivRound(INT_MIN, -1, 2), 1073741824);
}

TEST(MulDivRound, FailsWithMinusOne) {
    EXPECT_EQ(foundation::MulDivRound(5, 5, 0), -1) << "zero denominator";
    EXPECT_EQ(foundation::MulDivRound(INT_MAX, 2, 1), -1) << "overflow";
    EXPECT_EQ(foundation::MulDivRound(INT_MIN, 1, 1), -1) << "-2147483648 is out of range";
    EXPECT_EQ(foundation::MulDivRound(INT_MIN, -1, 1), -1);
    EXPECT_EQ(foundation::MulDivRound(INT_MIN, INT_MIN, -1), -1);
    EXPECT_EQ(foundation::MulDivRound(-2147483647, 1, 1), -2147483647);
}

TEST(ShiftColor, MinusOneOfRangeOneGivesBlack) {
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(255, 255, 255), -1, 1), MakeColorRef(0, 0, 0));
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(10, 128, 250), -1, 1), MakeColorRef(0, 0, 0));
}

TEST(ShiftColor, AddsTheSameStepToEachChannelClamped) {
    // 1 x 255 / 10 = 25 (truncated).
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(10, 100, 240), 1, 10), MakeColorRef(35, 125, 255));
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(10, 100, 240), -1, 10), MakeColorRef(0, 75, 215));
    // 2 x 255 / 3 = 170, and -170 for the negative amount: the same quantity.
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(50, 60, 70), 2, 3), MakeColorRef(220, 230, 240));
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(200, 210, 220), -2, 3), MakeColorRef(30, 40, 50));
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(0, 0, 0), 1, 1), MakeColorRef(255, 255, 255));
}

TEST(ShiftColor, AmountZeroReturnsTheColourUntouched) {
    EXPECT_EQ(foundation::ShiftColor(0x7F123456u, 0, 10), 0x7F123456u);
}

TEST(ShiftColor, ExtremeArgumentsStayInRange) {
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(1, 2, 3), 5, 0), MakeColorRef(1, 2, 3)) << "range 0";
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(1, 2, 3), INT_MAX, 1), MakeColorRef(255, 255, 255));
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(1, 2, 3), INT_MIN, 1), MakeColorRef(0, 0, 0));
    EXPECT_EQ(foundation::ShiftColor(MakeColorRef(100, 100, 100), 1, INT_MIN), MakeColorRef(100, 100, 100));
}

TEST(TintColor, MovesEachChannelTowardsWhite) {
    // MulDiv(-255, 1, 2) = -128, MulDiv(-155, 1, 2) = -78, MulDiv(-55, 1, 2) = -28.
    EXPECT_EQ(foundation::TintColor(MakeColorRef(0, 100, 200), 1, 2), MakeColorRef(127, 177, 227));
    EXPECT_EQ(foundation::TintColor(MakeColorRef(0, 100, 200), 0, 5), MakeColorRef(255, 255, 255));
    EXPECT_EQ(foundation::TintColor(MakeColorRef(40, 100, 200), 2, 1), MakeColorRef(0, 0, 145))
        << "past black is black";
}

TEST(TintColor, EqualNumeratorAndDenominatorReturnTheColour) {
    EXPECT_EQ(foundation::TintColor(0x01020304u, 7, 7), 0x01020304u);
    EXPECT_EQ(foundation::TintColor(0x01020304u, 0, 0), 0x01020304u);
}

TEST(TintColor, ZeroDenominatorGivesMulDivFailureAsChannel) {
    // MulDiv fails with -1, and -1 + 255 is what each channel becomes.
    EXPECT_EQ(foundation::TintColor(MakeColorRef(0, 50, 100), 3, 0), MakeColorRef(254, 254, 254));
}

TEST(ScaleColor, ScalesEachChannel) {
    EXPECT_EQ(foundation::ScaleColor(MakeColorRef(100, 50, 255), 50, 100), MakeColorRef(50, 25, 128));
    EXPECT_EQ(foundation::ScaleColor(MakeColorRef(100, 50, 255), 0, 100), MakeColorRef(0, 0, 0));
    EXPECT_EQ(foundation::ScaleColor(MakeColorRef(100, 50, 200), 150, 100), MakeColorRef(150, 75, 255));
    EXPECT_EQ(foundation::ScaleColor(MakeColorRef(100, 50, 200), -1, 1), MakeColorRef(0, 0, 0));
}

TEST(ScaleColor, NumeratorHundredReturnsTheColourWhateverTheDenominator) {
    EXPECT_EQ(foundation::ScaleColor(0x01204060u, 100, 100), 0x01204060u);
    EXPECT_EQ(foundation::ScaleColor(0x01204060u, 100, 50), 0x01204060u);
    EXPECT_EQ(foundation::ScaleColor(0x01204060u, 100, 0), 0x01204060u);
    EXPECT_EQ(foundation::ScaleColor(0x01204060u, 200, 200), MakeColorRef(0x60, 0x40, 0x20))
        << "an equal ratio other than 100 is computed, and loses the top byte";
}

TEST(ScaleColor, ZeroDenominatorGivesBlack) {
    EXPECT_EQ(foundation::ScaleColor(MakeColorRef(10, 20, 30), 50, 0), MakeColorRef(0, 0, 0));
}

TEST(BlendColors, MovesFromFirstTowardsSecond) {
    EXPECT_EQ(foundation::BlendColors(MakeColorRef(200, 100, 0), MakeColorRef(0, 100, 200), 1, 4),
              MakeColorRef(150, 100, 50));
    EXPECT_EQ(foundation::BlendColors(MakeColorRef(0, 0, 0), MakeColorRef(255, 255, 255), 1, 2),
              MakeColorRef(128, 128, 128));
    EXPECT_EQ(foundation::BlendColors(MakeColorRef(10, 20, 30), MakeColorRef(70, 80, 90), 1, 1),
              MakeColorRef(70, 80, 90));
    EXPECT_EQ(foundation::BlendColors(MakeColorRef(10, 20, 30), MakeColorRef(70, 80, 90), 0, 1),
              MakeColorRef(10, 20, 30));
}

TEST(BlendColors, KeepsTheFirstColoursTopByte) {
    EXPECT_EQ(foundation::BlendColors(0x02000000u, 0x01FFFFFFu, 1, 2), 0x02808080u);
    EXPECT_EQ(foundation::BlendColors(0x00000000u, 0xFFFFFFFFu, 1, 2), 0x00808080u);
}

TEST(BlendColors, OutOfRangeRatiosAreClamped) {
    EXPECT_EQ(foundation::BlendColors(MakeColorRef(100, 100, 100), MakeColorRef(200, 0, 100), 3, 1),
              MakeColorRef(255, 0, 100));
    // MulDiv fails with -1 for a zero denominator.
    EXPECT_EQ(foundation::BlendColors(MakeColorRef(100, 0, 100), MakeColorRef(200, 0, 100), 1, 0),
              MakeColorRef(99, 0, 99));
}

TEST(RgbToHls, KnownColours) {
    const Hls red = ToHls(255, 0, 0);
    EXPECT_EQ(red.hue, 0);
    EXPECT_EQ(red.saturation, 240);
    EXPECT_EQ(red.luminance, 120);

    const Hls green = ToHls(0, 255, 0);
    EXPECT_EQ(green.hue, 80);  // 2000 units x 239 / 6000 = 79.67
    EXPECT_EQ(green.saturation, 240);
    EXPECT_EQ(green.luminance, 120);

    const Hls blue = ToHls(0, 0, 255);
    EXPECT_EQ(blue.hue, 159);  // 4000 units x 239 / 6000 = 159.33
    EXPECT_EQ(blue.saturation, 240);

    const Hls orange = ToHls(255, 128, 0);
    EXPECT_EQ(orange.hue, 20);  // 502 units
    EXPECT_EQ(orange.saturation, 240);
    EXPECT_EQ(orange.luminance, 120);

    const Hls brown = ToHls(200, 100, 50);
    EXPECT_EQ(brown.hue, 13);          // 333 units
    EXPECT_EQ(brown.luminance, 118);   // 250 x 240 / 510 = 117.6
    EXPECT_EQ(brown.saturation, 144);  // 150 x 240 / 250

    const Hls teal = ToHls(0, 128, 128);
    EXPECT_EQ(teal.hue, 120);  // 3000 units, 119.5 rounded up
    EXPECT_EQ(teal.luminance, 60);
    EXPECT_EQ(teal.saturation, 240);

    const Hls magentaRed = ToHls(255, 0, 128);
    EXPECT_EQ(magentaRed.hue, 219);  // 5498 units
}

TEST(RgbToHls, SaturationUsesTheLightFormulaFromLuminance121) {
    const Hls pink = ToHls(255, 200, 200);
    EXPECT_EQ(pink.luminance, 214);
    EXPECT_EQ(pink.saturation, 240);  // 55 x 240 / (510 - 455)
    EXPECT_EQ(pink.hue, 0);

    const Hls light = ToHls(200, 150, 120);
    EXPECT_EQ(light.luminance, 151);   // 320 x 240 / 510 = 150.6
    EXPECT_EQ(light.saturation, 101);  // 80 x 240 / 190 = 101.05
    EXPECT_EQ(light.hue, 15);          // 375 units x 239 / 6000 = 14.9
}

TEST(RgbToHls, GreysHaveNoHueOrSaturation) {
    for (int level : {0, 1, 64, 128, 192, 255}) {
        const Hls grey = ToHls(level, level, level);
        EXPECT_EQ(grey.hue, 0) << level;
        EXPECT_EQ(grey.saturation, 0) << level;
    }
    EXPECT_EQ(ToHls(0, 0, 0).luminance, 0);
    EXPECT_EQ(ToHls(128, 128, 128).luminance, 120);
    EXPECT_EQ(ToHls(192, 192, 192).luminance, 181);
    EXPECT_EQ(ToHls(255, 255, 255).luminance, 240);
}

TEST(RgbToHls, NeighbouringSectorsMeetAtTheirBorders) {
    EXPECT_EQ(ToHls(255, 255, 0).hue, 40);   // yellow: 1000 units, from both sides
    EXPECT_EQ(ToHls(0, 255, 255).hue, 120);  // cyan
    EXPECT_EQ(ToHls(255, 0, 255).hue, 199);  // magenta: 5000 units
    EXPECT_EQ(ToHls(255, 1, 0).hue, 0);      // just past red
    EXPECT_EQ(ToHls(255, 0, 1).hue, 239);    // just before red
}

TEST(RgbToHls, OutOfRangeChannelsAndNullOutputsAreSafe) {
    const Hls clamped = ToHls(300, -5, 0);
    EXPECT_EQ(clamped.hue, 0);
    EXPECT_EQ(clamped.luminance, 120);
    foundation::RgbToHls(nullptr, nullptr, nullptr, 1, 2, 3);
}

TEST(HlsToRgb, KnownColours) {
    EXPECT_EQ(ToRgb(0, 120, 240), MakeColorRef(255, 0, 0));
    EXPECT_EQ(ToRgb(0, 240, 0), MakeColorRef(255, 255, 255));
    EXPECT_EQ(ToRgb(0, 0, 240), MakeColorRef(0, 0, 0));
    EXPECT_EQ(ToRgb(0, 120, 0), MakeColorRef(128, 128, 128));  // 120 x 240 x 255 / 57600 = 127.5
    EXPECT_EQ(ToRgb(0, 60, 240), MakeColorRef(128, 0, 0));
    // Hue 80 is 2008 units back on the circle, so blue rises a little.
    EXPECT_EQ(ToRgb(80, 120, 240), MakeColorRef(0, 255, 2));
    EXPECT_EQ(ToRgb(120, 60, 240), MakeColorRef(0, 126, 128));
    // Above luminance 120 the bright product is (240 - L) x S + L x 240.
    EXPECT_EQ(ToRgb(0, 180, 120), MakeColorRef(223, 159, 159));
}

TEST(HlsToRgb, RoundTripStaysClose) {
    for (int red = 0; red <= 255; red += 17) {
        for (int green = 0; green <= 255; green += 17) {
            for (int blue = 0; blue <= 255; blue += 17) {
                const Hls hls = ToHls(red, green, blue);
                const ColorRef back = ToRgb(hls.hue, hls.luminance, hls.saturation);
                EXPECT_NEAR(foundation::RedOf(back), red, 4) << red << "," << green << "," << blue;
                EXPECT_NEAR(foundation::GreenOf(back), green, 4) << red << "," << green << "," << blue;
                EXPECT_NEAR(foundation::BlueOf(back), blue, 4) << red << "," << green << "," << blue;
            }
        }
    }
}

TEST(HlsToRgb, OutOfRangeArgumentsGiveChannels) {
    EXPECT_EQ(ToRgb(0, 1000, 240), MakeColorRef(255, 255, 255));
    EXPECT_EQ(ToRgb(-5, -5, -5), MakeColorRef(0, 0, 0));
    EXPECT_EQ(ToRgb(INT_MAX, 120, INT_MAX), ToRgb(239, 120, 240));
    foundation::HlsToRgb(nullptr, nullptr, nullptr, 1, 2, 3);
}

TEST(RecolorShade, TargetMinusThreeReturnsTheColour) {
    EXPECT_EQ(foundation::RecolorShade(0x05102030u, 0x05102030u, foundation::kKeepColor), 0x05102030u);
    EXPECT_EQ(foundation::kKeepColor, 0xFFFFFFFDu);
}

TEST(RecolorShade, DarkerShadeScalesTheTargetsLuminance) {
    // Grey 64 has luminance 60, half the reference's 120; red has 120, so
    // the result is red at luminance 60.
    EXPECT_EQ(foundation::RecolorShade(MakeColorRef(64, 64, 64), MakeColorRef(128, 128, 128),
                                       MakeColorRef(255, 0, 0)),
              MakeColorRef(128, 0, 0));
    EXPECT_EQ(foundation::RecolorShade(MakeColorRef(128, 128, 128), MakeColorRef(128, 128, 128),
                                       MakeColorRef(255, 0, 0)),
              MakeColorRef(255, 0, 0));
    EXPECT_EQ(
        foundation::RecolorShade(MakeColorRef(0, 0, 0), MakeColorRef(128, 128, 128), MakeColorRef(255, 0, 0)),
        MakeColorRef(0, 0, 0));
}

TEST(RecolorShade, LighterShadeAddsToTheTargetsLuminance) {
    // Lc 181 above Lr 120: MulDiv(240 - 120, 181, 240 - 120) + 120 = 301,
    // past white.
    EXPECT_EQ(foundation::RecolorShade(MakeColorRef(192, 192, 192), MakeColorRef(128, 128, 128),
                                       MakeColorRef(255, 0, 0)),
              MakeColorRef(255, 255, 255));
    // Reference grey 64 (Lr 60), colour grey 80 (Lc 75), dark red target
    // (0,60,240 -> Lt 60): MulDiv(180, 75, 180) + 60 = 135.
    EXPECT_EQ(
        foundation::RecolorShade(MakeColorRef(80, 80, 80), MakeColorRef(64, 64, 64), MakeColorRef(128, 0, 0)),
        ToRgb(0, 135, 240));
}

TEST(RecolorShade, OtherHuesAreLeftAlone) {
    EXPECT_EQ(foundation::RecolorShade(0x010000FFu, MakeColorRef(128, 128, 128), MakeColorRef(0, 0, 255)),
              0x010000FFu);
    EXPECT_EQ(foundation::RecolorShade(MakeColorRef(200, 100, 50), MakeColorRef(200, 100, 60),
                                       MakeColorRef(0, 0, 255)),
              MakeColorRef(200, 100, 50));
}

TEST(RecolorShade, WhiteReferenceDoesNotDivideByZero) {
    // Lr 240: a lighter shade cannot exist, and an equal one divides by 0 in
    // no branch; a darker one scales.
    EXPECT_EQ(foundation::RecolorShade(MakeColorRef(255, 255, 255), MakeColorRef(255, 255, 255),
                                       MakeColorRef(255, 0, 0)),
              MakeColorRef(255, 0, 0));
    // A black reference (Lr 0): only black matches, and MulDiv(0, Lt, 0)
    // fails with -1, which is taken as luminance 0.
    EXPECT_EQ(foundation::RecolorShade(MakeColorRef(0, 0, 0), MakeColorRef(0, 0, 0), MakeColorRef(255, 0, 0)),
              MakeColorRef(0, 0, 0));
}

TEST(ColorizeGray, LiftsTheTargetByTheGreyLevel) {
    EXPECT_EQ(foundation::ColorizeGray(MakeColorRef(0, 0, 0), MakeColorRef(10, 20, 30)),
              MakeColorRef(10, 20, 30));
    EXPECT_EQ(foundation::ColorizeGray(MakeColorRef(255, 255, 255), MakeColorRef(10, 20, 30)),
              MakeColorRef(255, 255, 255));
    // 21 x 128 = 2688; 255 x 2688 / 5355 = 128.0.
    EXPECT_EQ(foundation::ColorizeGray(MakeColorRef(128, 128, 128), MakeColorRef(0, 0, 255)),
              MakeColorRef(128, 128, 255));
    // Red weighs 6, green 10, blue 5: pure green at 255 is 2550.
    EXPECT_EQ(foundation::ColorizeGray(MakeColorRef(0, 255, 0), MakeColorRef(0, 0, 0)),
              MakeColorRef(121, 121, 121));
}

TEST(ColorizeGray, TargetMinusThreeReturnsTheColour) {
    EXPECT_EQ(foundation::ColorizeGray(0x0A0B0C0Du, foundation::kKeepColor), 0x0A0B0C0Du);
}

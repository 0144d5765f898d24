// Colour arithmetic of the drawing code, on integers only, so that a shade
// comes out the same on every machine and in every build. Colours are
// COLORREF values (0x00BBGGRR); the functions take and give the plain 32-bit
// number, so that they need no platform header.
//
// Hue, luminance and saturation use the ranges of the system's colour dialog:
// hue 0 to 239, luminance and saturation 0 to 240. A result that is built
// from channels has a top byte of 0 unless its entry says otherwise.
#pragma once

#include <cstdint>

namespace foundation {

// A COLORREF: red in the low byte, then green, then blue; the top byte is
// the caller's.
using ColorRef = std::uint32_t;

// The target that RecolorShade and ColorizeGray take for "leave the colour
// as it is".
inline constexpr ColorRef kKeepColor = static_cast<ColorRef>(-3);

inline constexpr int kHlsMaxHue = 239;
inline constexpr int kHlsMaxLuminance = 240;
inline constexpr int kHlsMaxSaturation = 240;

// RGB(): each channel is cut to its low byte, as the system's macro does.
constexpr ColorRef MakeColorRef(int red, int green, int blue) {
    return static_cast<ColorRef>(static_cast<std::uint8_t>(red)) |
           (static_cast<ColorRef>(static_cast<std::uint8_t>(green)) << 8) |
           (static_cast<ColorRef>(static_cast<std::uint8_t>(blue)) << 16);
}
constexpr int RedOf(ColorRef color) {
    return static_cast<int>(color & 0xFFu);
}
constexpr int GreenOf(ColorRef color) {
    return static_cast<int>((color >> 8) & 0xFFu);
}
constexpr int BlueOf(ColorRef color) {
    return static_cast<int>((color >> 16) & 0xFFu);
}

// The system's MulDiv: number x numerator / denominator through 64 bits,
// rounded half away from zero; -1 for a zero denominator or a result beyond
// +-2147483647.
int MulDivRound(int number, int numerator, int denominator);

// Adds amount x 255 / range to each channel, clamped to 0..255. Amount 0
// gives the colour back untouched; a zero range, which has no step, too.
ColorRef ShiftColor(ColorRef color, int amount, int range);

// Moves each channel towards white: MulDiv(channel - 255, numerator,
// denominator) + 255, clamped to 0..255. Equal numerator and denominator give
// the colour back untouched.
ColorRef TintColor(ColorRef color, int numerator, int denominator);

// Scales each channel: MulDiv(channel, numerator, denominator), clamped to
// 0..255. A numerator of 100 gives the colour back untouched, whatever the
// denominator: callers scale in percent.
ColorRef ScaleColor(ColorRef color, int numerator, int denominator);

// first + MulDiv(second - first, numerator, denominator) per channel,
// clamped to 0..255; the top byte is the first colour's.
ColorRef BlendColors(ColorRef first, ColorRef second, int numerator, int denominator);

// Gives a shade of `reference` the same place among the shades of `target`:
// when the colour has the reference's hue and saturation, the result has the
// target's hue and saturation and a luminance that maps the reference's
// luminance onto the target's (see the definition). Any other colour, and
// any colour for the target kKeepColor, comes back untouched.
ColorRef RecolorShade(ColorRef color, ColorRef reference, ColorRef target);

// Tints a grey picture: the grey level 6 x red + 10 x green + 5 x blue (0 to
// 5355) lifts each target channel towards white. kKeepColor as the target
// gives the colour back untouched.
ColorRef ColorizeGray(ColorRef color, ColorRef target);

// Channels 0..255 to hue 0..239, saturation and luminance 0..240. Channels
// outside 0..255 are taken as the nearest bound.
void RgbToHls(int* hue, int* saturation, int* luminance, int red, int green, int blue);

// The inverse of RgbToHls. Arguments outside their ranges are taken as the
// nearest bound, so every result is a channel of 0..255.
void HlsToRgb(int* red, int* green, int* blue, int hue, int luminance, int saturation);

}  // namespace foundation

#include "foundation/ColorMath.h"

#include <cstdint>

namespace foundation {

namespace {

constexpr int kChannelMax = 255;
// Six sectors of the colour circle, 1000 units each.
constexpr int kSectorUnits = 1000;
constexpr int kCircleUnits = 6 * kSectorUnits;
// The bright and dark products of HlsToRgb are kept at 240 x 240 scale.
constexpr int kProductScale = kHlsMaxLuminance * kHlsMaxSaturation;

int Clamp(std::int64_t value, int low, int high) {
    if (value < low) return low;
    if (value > high) return high;
    return static_cast<int>(value);
}

int ClampChannel(std::int64_t value) {
    return Clamp(value, 0, kChannelMax);
}

ColorRef FromChannels(std::int64_t red, std::int64_t green, std::int64_t blue) {
    return MakeColorRef(ClampChannel(red), ClampChannel(green), ClampChannel(blue));
}

// One channel's value at hue position `h` (0..5999 units), between the dark
// product m1 and the bright product m2.
int HueToProduct(int m1, int m2, int h) {
    if (h < kSectorUnits) return m1 + MulDivRound(m2 - m1, h, kSectorUnits);
    if (h < 3 * kSectorUnits) return m2;
    if (h < 4 * kSectorUnits) return m1 + MulDivRound(m2 - m1, 4 * kSectorUnits - h, kSectorUnits);
    return m1;
}

int WrapCircle(int h) {
    h %= kCircleUnits;
    return h < 0 ? h + kCircleUnits : h;
}

}  // namespace

int MulDivRound(int number, int numerator, int denominator) {
    if (denominator == 0) return -1;
    // In 64 bits the product and the half divisor cannot overflow, also for
    // INT_MIN, whose negation an int cannot hold.
    std::int64_t product = static_cast<std::int64_t>(number) * numerator;
    std::int64_t divisor = denominator;
    if (divisor < 0) {
        divisor = -divisor;
        product = -product;
    }
    const std::int64_t half = divisor / 2;
    const std::int64_t result = product >= 0 ? (product + half) / divisor : (product - half) / divisor;
    if (result > 2147483647 || result < -2147483647) return -1;
    return static_cast<int>(result);
}

ColorRef ShiftColor(ColorRef color, int amount, int range) {
    if (amount == 0 || range == 0) return color;
    // Division truncates towards zero, so a negative amount takes off exactly
    // what the positive one adds.
    const std::int64_t delta = static_cast<std::int64_t>(amount) * kChannelMax / range;
    return FromChannels(RedOf(color) + delta, GreenOf(color) + delta, BlueOf(color) + delta);
}

ColorRef TintColor(ColorRef color, int numerator, int denominator) {
    if (numerator == denominator) return color;
    auto tint = [&](int channel) {
        return static_cast<std::int64_t>(MulDivRound(channel - kChannelMax, numerator, denominator)) +
               kChannelMax;
    };
    return FromChannels(tint(RedOf(color)), tint(GreenOf(color)), tint(BlueOf(color)));
}

ColorRef ScaleColor(ColorRef color, int numerator, int denominator) {
    if (numerator == 100) return color;
    auto scale = [&](int channel) { return MulDivRound(channel, numerator, denominator); };
    return FromChannels(scale(RedOf(color)), scale(GreenOf(color)), scale(BlueOf(color)));
}

ColorRef BlendColors(ColorRef first, ColorRef second, int numerator, int denominator) {
    auto blend = [&](int a, int b) {
        return static_cast<std::int64_t>(a) + MulDivRound(b - a, numerator, denominator);
    };
    const ColorRef channels =
        FromChannels(blend(RedOf(first), RedOf(second)), blend(GreenOf(first), GreenOf(second)),
                     blend(BlueOf(first), BlueOf(second)));
    return (first & 0xFF000000u) | channels;
}

ColorRef RecolorShade(ColorRef color, ColorRef reference, ColorRef target) {
    if (target == kKeepColor) return color;
    int hc = 0, sc = 0, lc = 0;
    int hr = 0, sr = 0, lr = 0;
    RgbToHls(&hc, &sc, &lc, RedOf(color), GreenOf(color), BlueOf(color));
    RgbToHls(&hr, &sr, &lr, RedOf(reference), GreenOf(reference), BlueOf(reference));
    if (hc != hr || sc != sr) return color;
    int ht = 0, st = 0, lt = 0;
    RgbToHls(&ht, &st, &lt, RedOf(target), GreenOf(target), BlueOf(target));
    // Shades darker than the reference scale the target's luminance down;
    // lighter ones add to it, and may run past white, where HlsToRgb stops.
    const int luminance = lc <= lr ? MulDivRound(lc, lt, lr)
                                   : MulDivRound(kHlsMaxLuminance - lt, lc, kHlsMaxLuminance - lr) + lt;
    int red = 0, green = 0, blue = 0;
    HlsToRgb(&red, &green, &blue, ht, luminance, st);
    return MakeColorRef(red, green, blue);
}

ColorRef ColorizeGray(ColorRef color, ColorRef target) {
    if (target == kKeepColor) return color;
    constexpr int kFullGray = 21 * kChannelMax;  // 5355: white
    const int gray = 6 * RedOf(color) + 10 * GreenOf(color) + 5 * BlueOf(color);
    auto lift = [&](int channel) {
        return static_cast<std::int64_t>(channel) + MulDivRound(kChannelMax - channel, gray, kFullGray);
    };
    return FromChannels(lift(RedOf(target)), lift(GreenOf(target)), lift(BlueOf(target)));
}

void RgbToHls(int* hue, int* saturation, int* luminance, int red, int green, int blue) {
    const int r = ClampChannel(red);
    const int g = ClampChannel(green);
    const int b = ClampChannel(blue);
    int max = r > g ? r : g;
    if (b > max) max = b;
    int min = r < g ? r : g;
    if (b < min) min = b;

    const int l = MulDivRound(max + min, kHlsMaxLuminance, 2 * kChannelMax);
    int h = 0;
    int s = 0;
    if (l != 0 && max != min) {
        const int d = max - min;
        const int sum = l < 121 ? max + min : 2 * kChannelMax - max - min;
        s = MulDivRound(d, kHlsMaxSaturation, sum);
        // The highest and the lowest channel choose the sector; the middle
        // one says how far through it the colour is.
        int units = 0;
        if (max == r) {
            units = g >= b ? MulDivRound(g - b, kSectorUnits, d)                      // red to yellow
                           : 5 * kSectorUnits + MulDivRound(r - b, kSectorUnits, d);  // magenta to red
        } else if (max == g) {
            units = r >= b ? kSectorUnits + MulDivRound(g - r, kSectorUnits, d)       // yellow to green
                           : 2 * kSectorUnits + MulDivRound(b - r, kSectorUnits, d);  // green to cyan
        } else {
            units = g >= r ? 3 * kSectorUnits + MulDivRound(b - g, kSectorUnits, d)   // cyan to blue
                           : 4 * kSectorUnits + MulDivRound(r - g, kSectorUnits, d);  // blue to magenta
        }
        h = MulDivRound(units, kHlsMaxHue, kCircleUnits);
    }
    if (hue != nullptr) *hue = h;
    if (saturation != nullptr) *saturation = s;
    if (luminance != nullptr) *luminance = l;
}

void HlsToRgb(int* red, int* green, int* blue, int hue, int luminance, int saturation) {
    const int h = MulDivRound(Clamp(hue, 0, kHlsMaxHue), kCircleUnits, kHlsMaxHue);
    const int l = Clamp(luminance, 0, kHlsMaxLuminance);
    const int s = Clamp(saturation, 0, kHlsMaxSaturation);
    const int m2 = l < 121 ? (kHlsMaxSaturation + s) * l : (kHlsMaxLuminance - l) * s + l * kHlsMaxSaturation;
    const int m1 = 2 * l * kHlsMaxSaturation - m2;
    auto channel = [&](int offset) {
        return ClampChannel(
            MulDivRound(HueToProduct(m1, m2, WrapCircle(h + offset)), kChannelMax, kProductScale));
    };
    if (red != nullptr) *red = channel(2 * kSectorUnits);
    if (green != nullptr) *green = channel(0);
    if (blue != nullptr) *blue = channel(-2 * kSectorUnits);
}

}  // namespace foundation

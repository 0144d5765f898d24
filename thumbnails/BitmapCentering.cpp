#include "thumbnails/BitmapCentering.h"

#include <algorithm>
#include <cstring>

namespace thumbnails {

namespace {

constexpr uint8_t kBlank = 0xFF;

size_t Bytes(int32_t count) {
    return count > 0 ? static_cast<size_t>(count) : 0;
}

bool RowIsBlank(const uint8_t* row, size_t widthBytes) {
    for (size_t x = 0; x < widthBytes; ++x)
        if (row[x] != kBlank) return false;
    return true;
}

bool ColumnIsBlank(const uint8_t* bytes, size_t column, size_t widthBytes, size_t height) {
    for (size_t y = 0; y < height; ++y)
        if (bytes[y * widthBytes + column] != kBlank) return false;
    return true;
}

}  // namespace

CenteringPlan PlanCentering(const uint8_t* bytes, int32_t widthBytes, int32_t height, int32_t bitsPerPixel) {
    CenteringPlan plan;
    const size_t b = Bytes(widthBytes);
    const size_t h = Bytes(height);
    if (bytes == nullptr || b == 0 || h == 0) {
        plan.blank = true;
        plan.top = static_cast<int32_t>(h);
        return plan;
    }

    size_t top = 0;
    while (top < h && RowIsBlank(bytes + top * b, b)) ++top;
    plan.top = static_cast<int32_t>(top);
    if (top == h) {
        plan.blank = true;
        return plan;
    }
    size_t bottom = 0;
    while (bottom < h && RowIsBlank(bytes + (h - 1 - bottom) * b, b)) ++bottom;
    plan.bottom = static_cast<int32_t>(bottom);
    plan.shiftY = (plan.top - plan.bottom) / 2;

    size_t left = 0;
    while (left < b && ColumnIsBlank(bytes, left, b, h)) ++left;
    size_t right = 0;
    while (right < b && ColumnIsBlank(bytes, b - 1 - right, b, h)) ++right;
    plan.left = static_cast<int32_t>(left);
    plan.right = static_cast<int32_t>(right);
    plan.shiftX = RoundColumnShift((plan.left - plan.right) / 2, bitsPerPixel);
    return plan;
}

int32_t RoundColumnShift(int32_t shiftX, int32_t bitsPerPixel) {
    const int32_t pixelBytes = std::max(bitsPerPixel / 8, 1);
    const int32_t remainder = shiftX % pixelBytes;
    if (remainder == 0) return shiftX;
    return shiftX < 1 ? shiftX + remainder : shiftX - remainder;
}

void ShiftRows(const uint8_t* source, uint8_t* target, int32_t widthBytes, int32_t height, int32_t shiftY) {
    const size_t b = Bytes(widthBytes);
    const size_t h = Bytes(height);
    const size_t total = b * h;
    if (total == 0) return;
    const int64_t magnitude = shiftY < 0 ? -static_cast<int64_t>(shiftY) : shiftY;
    const size_t moved = static_cast<size_t>(std::min<int64_t>(magnitude, static_cast<int64_t>(h))) * b;
    if (shiftY < 0) {
        std::memset(target, kBlank, moved);
        std::memcpy(target + moved, source, total - moved);
    } else {
        std::memcpy(target, source + moved, total - moved);
        std::memset(target + (total - moved), kBlank, moved);
    }
}

void ShiftColumns(const uint8_t* source, uint8_t* target, int32_t widthBytes, int32_t height,
                  int32_t shiftX) {
    const size_t b = Bytes(widthBytes);
    const size_t h = Bytes(height);
    const int64_t magnitude = shiftX < 0 ? -static_cast<int64_t>(shiftX) : shiftX;
    const size_t n = static_cast<size_t>(std::min<int64_t>(magnitude, static_cast<int64_t>(b)));
    for (size_t y = 0; y < h; ++y) {
        const uint8_t* from = source + y * b;
        uint8_t* to = target + y * b;
        if (shiftX < 0) {
            std::memset(to, kBlank, n);
            std::memcpy(to + n, from, b - n);
        } else {
            std::memcpy(to, from + n, b - n);
            std::memset(to + (b - n), kBlank, n);
        }
    }
}

}  // namespace thumbnails

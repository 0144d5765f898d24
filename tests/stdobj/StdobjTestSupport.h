// Helpers of the tests of the shared drawing objects: a canvas of known
// pixels, captured error reports, and a clean set of tables per test.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/ReportError.h"
#include "foundation/Stdobj.h"
#include "support/Canvas.h"

namespace stdobjtest {

// A canvas of known pixels, white unless told otherwise.
class DibCanvas : public testsupport::Canvas {
public:
    DibCanvas(int width, int height, COLORREF fill = RGB(255, 255, 255)) : Canvas(width, height, fill) {}

    using Canvas::Count;
    // How many pixels of the whole canvas have `color`.
    int Count(COLORREF color) const { return Count(RECT{0, 0, Width(), Height()}, color); }

    // A picture of the canvas, one character a pixel: `mark` where the pixel
    // has `color`, '.' elsewhere; rows end with '\n'.
    std::string Map(COLORREF color, char mark = '#') const {
        std::string map;
        for (int y = 0; y < Height(); ++y) {
            for (int x = 0; x < Width(); ++x) map += Pixel(x, y) == color ? mark : '.';
            map += '\n';
        }
        return map;
    }
};

// Every line handed to the error log while it lives.
class CapturedReports {
public:
    CapturedReports() : scope_([this](const std::string& line) { lines.push_back(line); }) {}
    std::vector<std::string> lines;

private:
    foundation::ScopedErrorLineHandler scope_;
};

// Each test starts and ends with empty tables.
class FreshStdObjects : public ::testing::Test {
protected:
    void SetUp() override { foundation::ReleaseStdObjects(); }
    void TearDown() override { foundation::ReleaseStdObjects(); }
};

// Sets system colours for the lifetime of the object, then puts the old ones
// back.
class SysColorsOverride {
public:
    SysColorsOverride(std::vector<int> indices, std::vector<COLORREF> colors) : indices_(std::move(indices)) {
        for (int index : indices_) saved_.push_back(::GetSysColor(index));
        succeeded_ =
            ::SetSysColors(static_cast<int>(indices_.size()), indices_.data(), colors.data()) != FALSE;
    }
    ~SysColorsOverride() {
        ::SetSysColors(static_cast<int>(indices_.size()), indices_.data(), saved_.data());
    }
    SysColorsOverride(const SysColorsOverride&) = delete;
    SysColorsOverride& operator=(const SysColorsOverride&) = delete;

    bool Succeeded() const { return succeeded_; }

private:
    std::vector<int> indices_;
    std::vector<COLORREF> saved_;
    bool succeeded_ = false;
};

}  // namespace stdobjtest

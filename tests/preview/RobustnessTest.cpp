// Truncated and damaged files of every route: each one ends in exactly one
// message, a picture or the no-preview picture, never in a crash, and no
// pixels are left behind. A bounded, deterministic run.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "PreviewTestSupport.h"
#include "browser/PreviewRender.h"

namespace {

using previewtest::Bytes;
using previewtest::LogCapture;
using previewtest::MakeRequest;
using previewtest::PreviewReceiver;

struct Sample {
    std::string name;
    Bytes data;
};

std::vector<Sample> Samples() {
    const Bytes wmf = previewtest::BlackSquareMetafile();
    return {
        {"clip.wmf", wmf},
        {"clip.wmf", previewtest::Placeable(wmf)},
        {"photo.bmp", previewtest::HalfBlackPicture(GUID_ContainerFormatBmp, 9, 7)},
        {"photo.jpg", previewtest::HalfBlackPicture(GUID_ContainerFormatJpeg, 16, 8)},
        {"drawing.emf", previewtest::BlackLeftHalfEmf(12, 10)},
        {"scan.cmp", previewtest::HalfBlackPicture(GUID_ContainerFormatJpeg, 8, 8)},
        {"line.bmp", previewtest::OneBitBmp(13, 5, 0, 0xFFFFFF)},
    };
}

class RobustnessTest : public ::testing::Test {
protected:
    void TearDown() override {
        receiver_.FreeAll();
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), live_) << "pixels were leaked";
    }

    // Renders and checks that exactly one usable picture went out.
    void RenderOnce(const std::string& name, const Bytes& data, const std::string& what) {
        receiver_.FreeAll();
        // The data in a buffer of its own size, so that a read past it is a
        // read past the allocation.
        std::vector<uint8_t> exact(data);
        const int result = browser::RenderPreview(MakeRequest(name, exact, 64, receiver_.Handle()));
        ASSERT_TRUE(result == 0 || result == 1) << what;
        ASSERT_EQ(receiver_.Count(), 1u) << what;
        const imaging::BitmapDescriptor& bitmap = receiver_.LastPixels();
        ASSERT_EQ(imaging::kernel::CheckBitmap(&bitmap), imaging::kSuccess) << what;
        ASSERT_GT(bitmap.width, 0) << what;
        ASSERT_GT(bitmap.height, 0) << what;
        if (result == 1) {
            ASSERT_EQ(bitmap.width, 64) << what;
            ASSERT_EQ(bitmap.height, 64) << what;
        }
    }

    size_t live_ = imaging::kernel::LiveStorageCount();
    PreviewReceiver receiver_;
    LogCapture log_;  // keeps the expected failure entries out of any real log
};

TEST_F(RobustnessTest, TheSamplesThemselvesArePictures) {
    for (const Sample& sample : Samples()) {
        ASSERT_FALSE(sample.data.empty()) << sample.name;
        receiver_.FreeAll();
        EXPECT_EQ(browser::RenderPreview(MakeRequest(sample.name, sample.data, 64, receiver_.Handle())), 0)
            << sample.name;
    }
}

TEST_F(RobustnessTest, EveryTruncationEndsInOneMessage) {
    for (const Sample& sample : Samples()) {
        ASSERT_FALSE(sample.data.empty()) << sample.name;
        const size_t step = sample.data.size() > 400 ? sample.data.size() / 200 : 1;
        for (size_t length = 0; length < sample.data.size(); length += step) {
            const Bytes cut(sample.data.begin(), sample.data.begin() + static_cast<std::ptrdiff_t>(length));
            RenderOnce(sample.name, cut, sample.name + " cut to " + std::to_string(length));
            if (HasFatalFailure()) return;
        }
    }
}

TEST_F(RobustnessTest, DamagedBytesEndInOneMessage) {
    std::mt19937 random(20240611u);
    for (const Sample& sample : Samples()) {
        ASSERT_FALSE(sample.data.empty()) << sample.name;
        std::uniform_int_distribution<size_t> position(0, sample.data.size() - 1);
        std::uniform_int_distribution<int> value(0, 255);
        std::uniform_int_distribution<int> count(1, 4);
        for (int round = 0; round < 150; ++round) {
            Bytes damaged = sample.data;
            const int changes = count(random);
            for (int i = 0; i < changes; ++i) damaged[position(random)] = static_cast<uint8_t>(value(random));
            RenderOnce(sample.name, damaged, sample.name + " round " + std::to_string(round));
            if (HasFatalFailure()) return;
        }
    }
}

TEST_F(RobustnessTest, BoundaryValuesInMetafileHeadersEndInOneMessage) {
    const Bytes wmf = previewtest::BlackSquareMetafile();
    ASSERT_GT(wmf.size(), 24u);
    const uint8_t extremes[] = {0x00, 0x01, 0x7F, 0x80, 0xFF};
    // Every byte of the header and the first record, set to each extreme.
    for (size_t at = 0; at < 24; ++at)
        for (const uint8_t extreme : extremes) {
            Bytes damaged = wmf;
            damaged[at] = extreme;
            RenderOnce("clip.wmf", damaged, "byte " + std::to_string(at) + " = " + std::to_string(extreme));
            if (HasFatalFailure()) return;
            RenderOnce("clip.wmf", previewtest::Placeable(damaged), "placeable, byte " + std::to_string(at));
            if (HasFatalFailure()) return;
        }
}

}  // namespace

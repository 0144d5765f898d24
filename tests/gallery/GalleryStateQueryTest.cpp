// The gallery's registered state query, through which a container reads what
// the gallery shows without knowing its window object.
#include <gtest/gtest.h>

#include "GalleryTestSupport.h"
#include "gallery/GalleryStateQuery.h"

using namespace gallerytest;

namespace {

LRESULT Ask(const Window& window, WPARAM field) {
    return ::SendMessageA(window.Handle(), gallery::GalleryStateMessage(), field, 0);
}

}  // namespace

TEST(GalleryStateQuery, TheMessageIsRegisteredUnderItsName) {
    const UINT message = gallery::GalleryStateMessage();
    EXPECT_GE(message, 0xC000u);
    EXPECT_EQ(message, ::RegisterWindowMessageA("Lumbrel.GalleryState"));
}

TEST(GalleryStateQuery, AnswersEachFieldAsTheGalleryStands) {
    Fixture<Gallery> f(500, 400);
    f.gallery.Fill(20);
    f.gallery.UpdateScrollRange();
    f.gallery.SetSelection(4);
    f.gallery.SetCurrentIndex(7);
    ASSERT_GE(f.gallery.SetTopRow(2, FALSE), 0);

    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateSignatureField), gallery::kGalleryStateSignature);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateCells), 20);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateSelectedIndex), 4);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateCurrentIndex), 7);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateCellWidth), kLargeCell.cx);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateCellHeight), kLargeCell.cy);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateColumns), f.gallery.Columns());
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateColumns), 3);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateTopRow), 2);
}

TEST(GalleryStateQuery, AnEmptyGalleryAndAnUnknownField) {
    Fixture<Gallery> f(500, 400);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateCells), 0);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateSelectedIndex), -1);
    EXPECT_EQ(Ask(f.gallery, gallery::kGalleryStateTopRow), 0);
    EXPECT_EQ(Ask(f.gallery, 99), 0);
    EXPECT_EQ(Ask(f.gallery, static_cast<WPARAM>(-1)), 0);
}
